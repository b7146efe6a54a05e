#include "exchange/budget_excel.h"
#include "exchange/failure.h"
#include "exchange/opening_workbooks.h"
#include "exchange/workbook_xml.h"

namespace talvex {

using platform::spreadsheet::Workbook;
using platform::xml::XmlDocument;
using platform::xml::XmlDocumentRef;

void BudgetExcel::TransformExcelToXML(const std::string& i_sExcelFileLocation, XmlDocumentRef& o_oXml,
                                      std::string& o_sError, const std::string& i_sUser) {
  constexpr std::string_view kMethod = "Talvex.BudgetExcel.TransformExcelToXML";
  const bool is_read = Collecting(kMethod, failure_label::kReading, i_sUser, o_sError, [&] {
    std::shared_ptr<Workbook> book = WorkbookOf(OpenWorkbook(i_sExcelFileLocation, WorkbookKind::Either));
    const std::string xml = WorkbookXml(*book);
    CloseWorkBook(book);
    if (o_oXml == nullptr) o_oXml = std::make_shared<XmlDocument>();
    if (!o_oXml->LoadXml(xml)) throw Failure(failure_label::kReading, o_oXml->Error().reason);
  });
  // So that the caller sees that there is no document.
  if (!is_read) o_oXml = nullptr;
}

}  // namespace talvex
