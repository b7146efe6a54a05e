#include "host/installer.h"

#include <filesystem>
#include <string_view>
#include <vector>

#include "adapters/posix/system_files.h"
#include "adapters/sqlite/driver.h"
#include "automation/error.h"
#include "host/resources.h"
#include "platform/database/fault.h"
#include "platform/database/literals.h"

namespace talvex::host {

namespace {

using automation::Error;

std::string_view FileContent(std::string_view path) {
  for (const Resource& resource : InstallationFiles()) {
    if (resource.path == path) return resource.content;
  }
  throw Error(automation::error_number::kFileNotFound, "Talvex.Host",
              "The program was built without the installation file " + std::string(path));
}

// Cuts off and returns the first line, without its end.
std::string_view NextLine(std::string_view& rest) {
  const std::size_t end = rest.find('\n');
  const std::string_view line = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  return line;
}

std::vector<std::string_view> Cells(std::string_view line) {
  std::vector<std::string_view> cells;
  for (std::size_t tab = line.find('\t'); tab != std::string_view::npos; tab = line.find('\t')) {
    cells.push_back(line.substr(0, tab));
    line.remove_prefix(tab + 1);
  }
  cells.push_back(line);
  return cells;
}

// The statements that fill the table of texts from the table of labels: a head line with the locale ids, then
// a line for each label with its text in each locale.
std::string LabelScript(std::string_view table) {
  using platform::database::TextLiteral;
  std::string script;
  const std::vector<std::string_view> locales = Cells(NextLine(table));
  while (!table.empty()) {
    const std::vector<std::string_view> cells = Cells(NextLine(table));
    for (std::size_t i = 1; i < cells.size() && i < locales.size(); ++i) {
      script += "INSERT INTO I18NTEXT (LOCALEID, LABEL, Text) VALUES (" + std::string(locales[i]) + ", " +
                TextLiteral(cells[0]) + ", " + TextLiteral(cells[i]) + ");\n";
    }
  }
  return script;
}

std::string DatabaseScript(bool with_sample) {
  std::string script(FileContent("schema/sqlite.sql"));
  script += "BEGIN;\n" + LabelScript(FileContent("config/labels.tsv"));
  if (with_sample) script += FileContent("config/sample.sql");
  return script + "COMMIT;\n";
}

void Fill(const std::string& directory, bool with_sample) {
  adapters::posix::SystemFiles files;
  for (const auto* folder : {"talvex/XSL", "talvex/XLT", "talvex/XSD", "talvex/exportedbudgets",
                             "talvex/errorlog", "log", "outbox"}) {
    files.MakeFolder(directory + "/" + folder);
  }
  files.WriteNew(directory + "/siteconfiguration.xml", FileContent("config/siteconfiguration.xml"));
  constexpr std::string_view kConfig = "config/";
  for (const Resource& resource : InstallationFiles()) {
    if (!resource.path.starts_with("config/talvex/")) continue;
    files.WriteNew(directory + "/" + std::string(resource.path.substr(kConfig.size())), resource.content);
  }
  adapters::sqlite::CreateDatabase(directory + "/talvex.db", DatabaseScript(with_sample));
}

// Takes away everything in a directory that was empty before, and the directory itself when it was not there.
void TakeAway(const std::string& directory, bool was_there) {
  std::error_code ignored;
  if (!was_there) {
    std::filesystem::remove_all(directory, ignored);
    return;
  }
  for (const auto& entry : std::filesystem::directory_iterator(directory, ignored)) {
    std::filesystem::remove_all(entry.path(), ignored);
  }
}

}  // namespace

void MakeInstallation(const std::string& directory, bool with_sample) {
  std::error_code status;
  const bool was_there = std::filesystem::exists(directory, status);
  if (was_there && !std::filesystem::is_empty(directory, status)) {
    throw Error(automation::error_number::kFileAlreadyExists, "Talvex.Host",
                "The directory " + directory + " is in use");
  }
  try {
    Fill(directory, with_sample);
  } catch (const platform::database::Fault& fault) {
    TakeAway(directory, was_there);
    RaiseAsError(fault);
  } catch (...) {
    TakeAway(directory, was_there);
    throw;
  }
}

}  // namespace talvex::host
