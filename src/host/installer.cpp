#include "host/installer.h"

#include <filesystem>
#include <string_view>
#include <utility>
#include <vector>

#include "adapters/odbc/driver.h"
#include "adapters/posix/system_files.h"
#include "adapters/sqlite/driver.h"
#include "automation/error.h"
#include "automation/text.h"
#include "host/resources.h"
#include "platform/database/connection_string.h"
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

std::string TextScript() { return LabelScript(FileContent("config/labels.tsv")); }

std::string_view SampleScript(bool with_sample) {
  return with_sample ? FileContent("config/sample.sql") : std::string_view();
}

std::string EmbeddedScript(bool with_sample) {
  std::string script(FileContent("schema/sqlite.sql"));
  script.append("BEGIN;\n").append(TextScript()).append(SampleScript(with_sample));
  return script.append("COMMIT;\n");
}

void SetUpServer(const InstallationPlan& plan) {
  const std::string texts = TextScript();
  adapters::odbc::SetUpDatabase(platform::database::ConnectionString(plan.connection_string),
                                {.sql_server = FileContent("schema/sqlserver.sql"),
                                 .postgresql = FileContent("schema/postgresql.sql"),
                                 .texts = texts,
                                 .sample = SampleScript(plan.with_sample)});
}

std::string XmlText(std::string text) {
  for (const auto& [character, entity] : {std::pair("&", "&amp;"), {"<", "&lt;"}, {">", "&gt;"}})
    text = automation::Replaced(text, character, entity);
  return text;
}

// The configuration, with the connection string of a database server in place of the embedded database's.
std::string SiteConfiguration(const std::string& connection_string) {
  std::string content(FileContent("config/siteconfiguration.xml"));
  if (connection_string.empty()) return content;
  constexpr std::string_view kEmbedded = ">Driver=SQLite;Database={ConfigDir}/talvex.db<";
  return automation::Replaced(content, kEmbedded, ">" + XmlText(connection_string) + "<");
}

void Fill(const InstallationPlan& plan) {
  adapters::posix::SystemFiles files;
  for (const auto* folder : {"talvex/XSL", "talvex/XLT", "talvex/XSD", "talvex/exportedbudgets",
                             "talvex/errorlog", "log", "outbox"}) {
    files.MakeFolder(plan.directory + "/" + folder);
  }
  const std::string configuration = plan.directory + "/siteconfiguration.xml";
  const std::string settings = SiteConfiguration(plan.connection_string);
  if (plan.connection_string.empty()) {
    files.WriteNew(configuration, settings);
  } else {
    files.WriteNewForOwner(configuration, settings);
  }
  constexpr std::string_view kConfig = "config/";
  for (const Resource& resource : InstallationFiles()) {
    if (!resource.path.starts_with("config/talvex/")) continue;
    files.WriteNew(plan.directory + "/" + std::string(resource.path.substr(kConfig.size())),
                   resource.content);
  }
  if (plan.connection_string.empty()) {
    adapters::sqlite::CreateDatabase(plan.directory + "/talvex.db", EmbeddedScript(plan.with_sample));
  } else {
    SetUpServer(plan);
  }
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

std::string ReadFile(const std::string& path) { return adapters::posix::SystemFiles().Read(path); }

void MakeInstallation(const InstallationPlan& plan) {
  std::error_code status;
  const bool was_there = std::filesystem::exists(plan.directory, status);
  if (was_there && !std::filesystem::is_empty(plan.directory, status)) {
    throw Error(automation::error_number::kFileAlreadyExists, "Talvex.Host",
                "The directory " + plan.directory + " is in use");
  }
  try {
    Fill(plan);
  } catch (const platform::database::Fault& fault) {
    TakeAway(plan.directory, was_there);
    RaiseAsError(fault);
  } catch (...) {
    TakeAway(plan.directory, was_there);
    throw;
  }
}

}  // namespace talvex::host
