// Turning a workbook into the budget import document.
#include "automation/text.h"
#include "exchange/budget.h"
#include "exchange/installation_files.h"
#include "services/entries.h"
#include "services/frame.h"
#include "services/lib_general.h"

namespace talvex {

using automation::Replaced;
using automation::Variant;
using Lib_ErrorHandling::Err_AppendLine;
using platform::xml::XmlDocument;
using platform::xml::XmlDocumentRef;

namespace {

// Behind the last point of the file's name; the empty text without one.
std::string ExtensionOf(const std::string& path) {
  const std::string name = path.substr(path.find_last_of("\\/") + 1);
  const std::size_t point = name.rfind('.');
  return point == std::string::npos ? std::string() : name.substr(point + 1);
}

// The workbook as XML; null when it could not be read, the reasons in `error`.
XmlDocumentRef WorkbookXml(const std::string& workbook, std::string& error, const std::string& user) {
  Variant document = std::make_shared<XmlDocument>();
  Variant error_text = error;
  Lib_General::gen_getComponent("Talvex.BudgetExcel")
      ->Call("TransformExcelToXML", workbook, document, error_text, user);
  error = automation::ToText(error_text);
  auto read = automation::ValueOf<XmlDocumentRef>::From(document);
  return read == nullptr || read->DocumentElement() == nullptr ? nullptr : read;
}

}  // namespace

XmlDocumentRef Budget::ConvertWorkbookToImportXml(const std::string& workbook, std::string& error,
                                                  const std::string& user) {
  const auto refuse = [&](const char* label) -> XmlDocumentRef {
    Err_AppendLine(error, EntryText(user, label), "");
    return nullptr;
  };
  const auto refuse_unread = [&](const char* label, const XmlDocument& document) {
    LogParseError(document, "The import document", "Talvex.Budget.ConvertWorkbookToImportXml");
    return refuse(label);
  };
  if (automation::Trimmed(workbook).empty()) return refuse("SLBBU0317");
  if (automation::Raised(ExtensionOf(workbook)) != "XLS") return refuse("SLBBU0342");
  XmlDocumentRef workbook_xml = WorkbookXml(workbook, error, user);
  if (workbook_xml == nullptr) return refuse("SLBRE2897");

  const std::string directory = ConfigurationDirectory();
  XmlDocument stylesheet;
  if (!stylesheet.Load(directory + std::string(installation_file::kImportStylesheet)))
    Err_AppendLine(error, stylesheet.Error().reason, "");
  std::string text = workbook_xml->TransformedBy(stylesheet);
  // The largest of all documents here, which need not stand in the memory beside the others.
  workbook_xml.reset();
  text = Replaced(Replaced(text, "UTF-16", "UTF-8"), "\r\n", "");
  auto transformed = std::make_shared<XmlDocument>();
  if (!transformed->LoadXml(text)) return refuse_unread("SLBBU0340", *transformed);
  auto root = transformed->DocumentElement();
  AddXMLAttribute(transformed, root, "xmlns:xsi", std::string(kSchemaInstance), error);
  AddXMLAttribute(transformed, root, "xsi:noNamespaceSchemaLocation",
                  directory + std::string(installation_file::kImportSchema), error);
  // Loading it anew, now that it names its schema, is what validates it.
  auto validated = std::make_shared<XmlDocument>();
  return validated->LoadXml(transformed->Xml()) ? validated : refuse_unread("SLBBU0318", *validated);
}

}  // namespace talvex
