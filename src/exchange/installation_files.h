// The files of an installation that exports and imports work with, below the configuration directory.
#pragma once

#include <string>
#include <string_view>

#include "platform/xml/xml_document.h"

namespace talvex {

namespace installation_file {
inline constexpr std::string_view kExportStylesheet = R"(\talvex\XSL\Budgets_Export.xsl)";
inline constexpr std::string_view kExportTemplate = R"(\talvex\XLT\Budgets_Export.XLT)";
inline constexpr std::string_view kExportSchema = R"(\talvex\XSD\Budgets_Export.xsd)";
inline constexpr std::string_view kExportedBudgets = R"(\talvex\exportedbudgets\)";
inline constexpr std::string_view kImportStylesheet = R"(\talvex\XSL\Budgets_Import.xslt)";
// Spelled so in every installation.
inline constexpr std::string_view kImportSchema = R"(\talvex\XSD\Bugets_Import1.xsd)";
inline constexpr std::string_view kErrorLogs = R"(\talvex\errorlog\)";
}  // namespace installation_file

inline constexpr std::string_view kSchemaInstance = "http://www.w3.org/2001/XMLSchema-instance";

// The configuration directory, as the suite's configuration tells it.
[[nodiscard]] std::string ConfigurationDirectory();

// The moment as it stands in names, from one reading of the clock: month, day and year one after the other
// without leading zeros, `between`, and the time of day as six digits. 15 March 2026 at 9:07:03 with "_" is
// 3152026_090703.
[[nodiscard]] std::string MomentInNames(std::string_view between);

// Writes to the log why `what`, which was to become the document, could not be read: the text of a label does
// not say. Raises nothing.
void LogParseError(const platform::xml::XmlDocument& document, const std::string& what,
                   std::string_view method);

}  // namespace talvex
