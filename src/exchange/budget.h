// The exchange of budgets with workbooks.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "automation/class_info.h"
#include "automation/dictionary.h"
#include "platform/database/recordset.h"
#include "platform/xml/xml_document.h"

namespace talvex {

// The labels of the texts by which an exported workbook names the types of budgets.
namespace type_label {
inline constexpr const char* kStandard = "SLBBU0357";
inline constexpr const char* kAggregate = "SLBBU0358";
}  // namespace type_label

// The public class "Talvex.Budget". It keeps no state between calls.
class Budget final : public automation::Object {
  TALVEX_CLASS(Budget, "Talvex.Budget", "Export and import of budgets as workbooks, by way of XML.");

 public:
  // Export and import

  TALVEX_METHOD(
      std::string, CreateXMLforExport,
      (const std::string& i_sFromBudget, const std::string& i_sToBudget, const std::string& i_sUser),
      "Exports the budgets of a range of codes, both ends included, with their lines and children to "
      "a new workbook in the configuration directory, its texts in the language of i_sUser. Returns "
      "\"^-^<file>^-^EXPORTED\", the file relative to that directory, or \"<error log>^-^FAILED\": "
      "what is wrong is never raised but stands in the error log.");

  TALVEX_METHOD(
      bool, CreateXMLforImport,
      (const std::string& i_sExcelfile, const std::string& i_sUser, automation::Variant& o_sResultFile),
      "Imports the budgets, lines and relations of an .xls workbook. True when the workbook could be "
      "read as an import, even if budgets were rejected. o_sResultFile receives the name of the "
      "error log, relative to the configuration directory, or stays Empty when all was well. False "
      "when it could not be read, and when something broke inside a transaction, which is undone "
      "then. Writes BUDGET, BUDGETLINES and BUDGETRELATIONS.");

  TALVEX_METHOD(
      std::string, CreateErrorLog,
      (const std::string& i_sError, const std::optional<std::string>& i_sExcelfile = {}),
      "Adds a text, as it stands, to the error log of that moment (named after the workbook, or "
      "Budgets_Export without one) in Windows-1252, \"?\" for what that lacks. Returns the log's "
      "name relative to the configuration directory, with forward slashes. Failures are not logged.");

  TALVEX_METHOD(bool, ValidateFields,
                (const std::string& i_sUser, const std::shared_ptr<platform::xml::XmlNode>& i_oBudgetnode,
                 const std::shared_ptr<platform::xml::XmlDocument>& i_oXML,
                 const std::shared_ptr<automation::Dictionary>& i_oAdminDict,
                 const std::shared_ptr<automation::Dictionary>& i_oChargeTypeDict,
                 const std::shared_ptr<automation::Dictionary>& i_oCurrencyDict, std::string& o_sError),
                "Whether a BudgetHeader element and the BudgetLine elements of its code may be loaded. The "
                "dictionaries hold the known offices, charge types and currencies as keys. What is wrong is "
                "added to o_sError in the language of i_sUser.");

  TALVEX_METHOD(bool, ValidateBudgetRelations,
                (const std::string& i_sUser, const std::shared_ptr<platform::xml::XmlNode>& i_oBudgetnode,
                 std::string& o_sError),
                "Whether a BudgetRelation element names an aggregate budget and children that exist. What is "
                "wrong is added to o_sError in the language of i_sUser. Only reads.");

  TALVEX_METHOD(std::shared_ptr<automation::Dictionary>, getBudgetTypeDict, (),
                "The type of every budget: 1 standard, 2 aggregate. Only reads.");

  TALVEX_METHOD(std::shared_ptr<automation::Dictionary>, getChargeTypeCodes, (),
                "The codes of all charge types, as keys and items. Only reads.");

  TALVEX_METHOD(std::shared_ptr<automation::Dictionary>, GetAllChargeTypes, (),
                "The codes of all charge types, as Talvex.BudgetT lists them; its failures pass through.");

  // XML

  TALVEX_METHOD(
      std::shared_ptr<platform::xml::XmlNode>, AddXMLNode,
      (std::shared_ptr<platform::xml::XmlDocument> & io_oDOMXML,
       std::shared_ptr<platform::xml::XmlNode>& io_oParent, const std::string& i_sName,
       const std::string& i_sValue, const std::optional<std::string>& i_sNameSpace = {}),
      "Makes an element of the document the last child of io_oParent and returns it. Its text is "
      "i_sValue without the blanks around it; an empty i_sValue leaves it without any text, so that "
      "it is written as an empty element. Without a namespace the element is a plain one. Raises 5 "
      "for a name or a character that XML does not allow and for a parent of another document, and "
      "91 without a document or a parent.");

  TALVEX_METHOD(std::shared_ptr<platform::xml::XmlNode>, AddXMLAttribute,
                (std::shared_ptr<platform::xml::XmlDocument> & io_oDOMXML,
                 std::shared_ptr<platform::xml::XmlNode>& io_oNode, const std::string& i_sAttributeName,
                 const std::string& i_sAttributeValue, std::string& o_sError,
                 const std::optional<std::string>& i_sNameSpace = {}),
                "Sets an attribute of the element io_oNode, in place of one of the same name, to "
                "i_sAttributeValue without the blanks around it, and returns it. The namespace is ignored: "
                "the attribute has none but the one that a declared prefix in its name stands for. The "
                "attribute xmlns:p declares the prefix p. A failure is not raised: its description is added "
                "to o_sError as one more line, and no attribute is returned.");

  TALVEX_METHOD(std::string, GetXMLTagValue,
                (const std::shared_ptr<platform::xml::XmlDocument>& i_oXMLDOM, const std::string& i_sTagName),
                "The text, as it stands, of the document's only element of that name; the empty text when "
                "there is none, when there are several, and when the document could not be parsed. Raises 91 "
                "without a document; failures are not logged.");

  // What is told of the elements of an import: what was added to the error text over one, nothing when it
  // passed. An element may be told of more than once: a line when it is checked with its header, and again
  // among the lines.
  using ImportObserver =
      std::function<void(platform::xml::XmlNode& element, const std::string& code, std::string_view errors)>;
  // As CreateXMLforImport and CreateXMLforExport, without an error log: `error` receives what would stand in
  // it. Exporting returns the workbook's name, relative to the configuration directory.
  bool Import(const std::string& workbook, const std::string& user, std::string& error,
              const ImportObserver& observer);
  std::string Export(const std::string& from, const std::string& to, const std::string& user,
                     std::string& error);

 private:
  struct ImportRun;

  bool BuildExportDocument(const std::string& from, const std::string& to, std::string& document,
                           const std::string& user);
  void WriteExportWorkbook(const std::string& document, std::string& file, std::string& error,
                           const std::string& user);
  void FillTemplate(const std::string& workbook_xml, const std::string& directory, std::string& file,
                    std::string& error, const std::string& user);
  static std::string MakeExportFileName(const std::string& config_dir);
  // Raises 75 for a workbook that no error log can be named after: what is wrong with it could not be told.
  static void RequireErrorLog(const std::string& workbook);

  // The import document of a workbook; null, with the reason in `error`, when there is none.
  std::shared_ptr<platform::xml::XmlDocument> ConvertWorkbookToImportXml(const std::string& workbook,
                                                                         std::string& error,
                                                                         const std::string& user);
  std::shared_ptr<platform::xml::XmlDocument> ReadImport(const std::string& workbook, ImportRun& run);
  static void LoadHeaders(ImportRun& run);
  static void LoadLines(ImportRun& run);
  static void LoadRelations(ImportRun& run);
  // Against a record set of all budgets, whose filter it sets.
  static bool CheckRelation(const std::string& user, const platform::xml::XmlNode& relation,
                            platform::database::Recordset& budgets, std::string& error);
  // The header's own fields, without its lines.
  static bool CheckHeaderNode(const std::string& user, const platform::xml::XmlNode& header,
                              const std::shared_ptr<automation::Dictionary>& offices,
                              const std::shared_ptr<automation::Dictionary>& charge_types,
                              const std::shared_ptr<automation::Dictionary>& currencies, std::string& error);
  // All lines of a budget in the document; `told` hears of each.
  static bool CheckLinesOf(const std::string& user, const std::string& code,
                           platform::xml::XmlDocument& document, std::string& error,
                           const std::function<void(platform::xml::XmlNode& line)>& told);
  static bool CheckBudgetLineNode(const std::string& user, const platform::xml::XmlNode& line,
                                  std::string& error);
};

}  // namespace talvex
