// Exporting a range of budgets to a workbook.
#include "automation/text.h"
#include "exchange/budget.h"
#include "exchange/installation_files.h"
#include "services/entries.h"
#include "services/frame.h"
#include "services/lib_general.h"
#include "types/exchange_types.h"

namespace talvex {

using automation::Trimmed;
using automation::Variant;
using Lib_ErrorHandling::Err_AppendLine;
using platform::xml::XmlDocument;

namespace {

constexpr std::string_view kWriting = "Talvex.Budget.WriteExportWorkbook";

// Fields of the result are told apart by it.
constexpr std::string_view kSeparator = "^-^";

void AppendText(std::string& error, const std::string& user, const std::string& label) {
  Err_AppendLine(error, EntryText(user, label), "");
}

}  // namespace

std::string Budget::CreateXMLforExport(const std::string& i_sFromBudget, const std::string& i_sToBudget,
                                       const std::string& i_sUser) {
  return Reads("Talvex.Budget.CreateXMLforExport", [&] {
    std::string error;
    const std::string file = Export(i_sFromBudget, i_sToBudget, i_sUser, error);
    // The two forms differ in their number of fields; callers look at the last one.
    if (Trimmed(error).empty()) return std::string(kSeparator) + file + std::string(kSeparator) + "EXPORTED";
    return CreateErrorLog(error) + std::string(kSeparator) + "FAILED";
  });
}

std::string Budget::Export(const std::string& from, const std::string& to, const std::string& user,
                           std::string& error) {
  std::string document;
  std::string file;
  if (BuildExportDocument(from, to, document, user)) {
    WriteExportWorkbook(document, file, error, user);
  } else {
    Err_AppendLine(error, "", "");
  }
  return file;
}

void Budget::WriteExportWorkbook(const std::string& document, std::string& file, std::string& error,
                                 const std::string& user) {
  if (Trimmed(document).empty()) return AppendText(error, user, "SLBBU0341");
  const std::string directory = ConfigurationDirectory();
  auto budgets = std::make_shared<XmlDocument>();
  if (!budgets->LoadXml(document)) {
    LogParseError(*budgets, "The export document", kWriting);
    return AppendText(error, user, "SLBBU0340");
  }
  // The schema is only named: it is there for whoever reads the document, and nothing is validated.
  auto root = budgets->DocumentElement();
  AddXMLAttribute(budgets, root, "xmlns:xsi", std::string(kSchemaInstance), error);
  AddXMLAttribute(budgets, root, "xsi:noNamespaceSchemaLocation",
                  directory + std::string(installation_file::kExportSchema), error);

  const std::string stylesheet_path = directory + std::string(installation_file::kExportStylesheet);
  XmlDocument stylesheet;
  if (!stylesheet.Load(stylesheet_path)) {
    LogParseError(stylesheet, "The stylesheet " + stylesheet_path, kWriting);
    return AppendText(error, user, "SLBBU0338");
  }
  if (Trimmed(directory).empty()) return AppendText(error, user, "SLBBU0339");
  try {
    const std::string workbook_xml = budgets->TransformedBy(stylesheet);
    // It need not stand in the memory beside the workbook that is made of it.
    root.reset();
    budgets.reset();
    FillTemplate(workbook_xml, directory, file, error, user);
  } catch (const automation::Error& failure) {
    LogCause(failure.State(), kWriting);
    Err_AppendLine(error, failure.Description(), "");
  }
}

void Budget::FillTemplate(const std::string& workbook_xml, const std::string& directory, std::string& file,
                          std::string& error, const std::string& user) {
  const std::string path = MakeExportFileName(directory);
  Variant error_text = error;
  const Variant workbook =
      Lib_General::gen_getComponent("Talvex.BudgetExcel")
          ->Call("TransformXMLToExcel", workbook_xml, static_cast<std::int32_t>(EWriteMode::Create), 0, true,
                 error_text, user, directory + std::string(installation_file::kExportTemplate), path);
  error = automation::ToText(error_text);
  if (!workbook.IsObject() || workbook.As<automation::ObjectRef>() == nullptr) return;
  const auto& book = workbook.As<automation::ObjectRef>();
  book->Call("Save");
  book->Call("Close");
  file = path.substr(directory.size() + 1);
}

std::string Budget::MakeExportFileName(const std::string& config_dir) {
  return config_dir + std::string(installation_file::kExportedBudgets) + "Export_Budgets_" +
         MomentInNames("_") + ".xls";
}

}  // namespace talvex
