// Workbooks as XML and XML as workbooks.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "automation/class_info.h"
#include "platform/spreadsheet/workbook.h"
#include "platform/xml/xml_document.h"
#include "types/exchange_types.h"

namespace talvex {

// The public class "Talvex.BudgetExcel". It keeps no state between calls. docs/workbook-markup.md describes
// the XML that is read and written, and which label stands for which failure.
class BudgetExcel final : public automation::Object {
  TALVEX_CLASS(BudgetExcel, "Talvex.BudgetExcel", "Workbooks as XML and XML as workbooks.");

 public:
  TALVEX_METHOD(
      void, TransformExcelToXML,
      (const std::string& i_sExcelFileLocation, std::shared_ptr<platform::xml::XmlDocument>& o_oXml,
       std::string& o_sError, const std::string& i_sUser),
      "Reads every used cell of a workbook (extension xls) or a template (XLT), and its document properties, "
      "into the document, in place of what that held; without a document, into a new one. A failure is not "
      "raised: it adds one line to o_sError, in the language of the user, and there is no document then.");

  TALVEX_METHOD(
      std::shared_ptr<platform::spreadsheet::Workbook>, TransformXMLToExcel,
      (const std::string& i_sXml, EWriteMode i_nWriteMode, std::int32_t i_lDocID, bool i_bTemplateUsed,
       std::string& o_sError, const std::string& i_sUser, const std::optional<std::string>& i_sFilePath = {},
       const std::optional<std::string>& i_sFilePathDest = {}),
      "Writes marked-up XML into a workbook and returns it. The workbook is a new one of the template "
      "i_sFilePath (extension XLT) when i_bTemplateUsed, else the one at i_sFilePath (extension xls). It is "
      "saved as i_sFilePathDest, where there must be no file yet; without that name it is returned unsaved. "
      "The write mode says what becomes of records that are there. i_lDocID is not used. A failure is not "
      "raised: it adds one line to o_sError, in the language of the user, and neither a workbook nor a file "
      "comes of it.");

  TALVEX_METHOD(
      void, CloseWorkBook, (std::shared_ptr<platform::spreadsheet::Workbook> & i_oExcelBook),
      "Drops the workbook from memory, unsaved changes too, and lets go of it. Does nothing without "
      "a workbook.");

  TALVEX_METHOD(
      void, WriteExcelObjectToFile,
      (std::shared_ptr<platform::spreadsheet::Workbook> & i_oExcelWorkBook,
       const std::string& i_sFileLocation, bool i_bCloseWorkBook),
      "Saves the workbook as that file, which is its own from then on, and closes it if that is wanted. "
      "Raises 58 when another file has the name, 91 without a workbook, and what saving raises; nothing is "
      "closed then.");

  TALVEX_METHOD(
      void, SetCustomerPropertyInExcel,
      (std::shared_ptr<platform::spreadsheet::Workbook> & i_uExcelBook, const std::string& i_sPropertyName,
       const automation::Variant& i_vPropertyValue, const std::string& i_sPropertyType,
       std::string& o_sError),
      "Adds a document property, or replaces type and value of the one of that name in any case; it is "
      "linked to no cell. The type is number, date, boolean (a value of yes or true in any case is true, any "
      "other false) or else text. A failure, such as a value that is not of its type, is not raised: it adds "
      "one line to o_sError.");

  TALVEX_METHOD(
      automation::Variant, GetCustomerPropertyFromExcel,
      (std::shared_ptr<platform::spreadsheet::Workbook> & i_uExcelBook, const std::string& i_sPropertyName),
      "The value of the document property of that name in any case; Empty when there is none. Raises "
      "91 without a workbook.");

  TALVEX_METHOD(std::string, ExecuteXSLPattern,
                (std::shared_ptr<platform::xml::XmlDocument> & i_oXMLDoc, std::string& i_sXslPattern),
                "The text, without the blanks around it, of the first node that an XPath expression selects; "
                "the empty text when there is none, when the expression is wrong, and, without a look at the "
                "document, when it is empty. Raises 91 without a document. Changes neither argument.");

  TALVEX_METHOD(std::shared_ptr<platform::xml::XmlNodeList>, ExecuteXSLPatternReturnAllNodes,
                (std::shared_ptr<platform::xml::XmlDocument> & iXMLDoc, std::string& iXslPattern),
                "All nodes that an XPath expression selects, in document order; an empty list when there are "
                "none. A failure, such as a wrong expression or no document, gives no list and is neither "
                "raised nor logged. Changes neither argument.");
};

}  // namespace talvex
