// The error logs of exports and imports.
#include "automation/ansi.h"
#include "automation/text.h"
#include "exchange/budget.h"
#include "exchange/installation_files.h"
#include "platform/environment.h"

namespace talvex {

namespace {

constexpr std::size_t kExtension = 4;  // ".xls"

// The workbook's name without folders and extension; a name shorter than its extension leaves nothing.
std::string BaseName(std::string_view workbook) {
  const std::string_view name = workbook.substr(workbook.find_last_of("\\/") + 1);
  return std::string(name.substr(0, name.size() - std::min(name.size(), kExtension)));
}

// Failed imports that name no workbook are logged under the export's name, too.
std::string LogName(std::string_view workbook) {
  const std::string base = automation::Trimmed(workbook).empty() ? "Budgets_Export" : BaseName(workbook);
  return base + MomentInNames("-") + ".txt";
}

std::string LogPath(const std::string& name) {
  return ConfigurationDirectory() + std::string(installation_file::kErrorLogs) + name;
}

}  // namespace

std::string Budget::CreateErrorLog(const std::string& i_sError,
                                   const std::optional<std::string>& i_sExcelfile) {
  const std::string name = LogName(i_sExcelfile.value_or(""));
  platform::Environment::Current().files->Append(LogPath(name), automation::ToAnsi(i_sError));
  return "talvex/errorlog/" + name;
}

void Budget::RequireErrorLog(const std::string& workbook) {
  // The system refuses to look for a file whose name is too long to be one.
  static_cast<void>(platform::Environment::Current().files->Version(LogPath(LogName(workbook))));
}

}  // namespace talvex
