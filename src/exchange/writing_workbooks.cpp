#include <algorithm>

#include "automation/text.h"
#include "exchange/budget_excel.h"
#include "exchange/failure.h"
#include "exchange/markup_writer.h"
#include "exchange/opening_workbooks.h"
#include "services/frame.h"
#include "services/required.h"

namespace talvex {

using platform::spreadsheet::Workbook;

namespace {

void RequireMember(EWriteMode mode) {
  const auto& members = DescribeEnumeration(mode).Members();
  const auto number = static_cast<std::int32_t>(mode);
  if (std::any_of(members.begin(), members.end(), [&](const auto& one) { return one.second == number; }))
    return;
  throw Failure(failure_label::kWriting, "There is no write mode " + std::to_string(number));
}

void Close(std::shared_ptr<Workbook>& book) {
  if (book != nullptr) book->Close();
  book = nullptr;
}

}  // namespace

std::shared_ptr<Workbook> BudgetExcel::TransformXMLToExcel(
    const std::string& i_sXml, EWriteMode i_nWriteMode, std::int32_t /*i_lDocID*/, bool i_bTemplateUsed,
    std::string& o_sError, const std::string& i_sUser, const std::optional<std::string>& i_sFilePath,
    const std::optional<std::string>& i_sFilePathDest) {
  constexpr std::string_view kMethod = "Talvex.BudgetExcel.TransformXMLToExcel";
  std::shared_ptr<Workbook> written;
  Collecting(kMethod, failure_label::kWriting, i_sUser, o_sError, [&] {
    RequireMember(i_nWriteMode);
    const auto kind = i_bTemplateUsed ? WorkbookKind::Template : WorkbookKind::Workbook;
    const auto book = WorkbookOf(OpenWorkbook(i_sFilePath.value_or(""), kind));
    ApplyMarkup(i_sXml, i_nWriteMode, *book);
    const std::string destination = i_sFilePathDest.value_or("");
    if (automation::Trimmed(destination).empty()) {
      // What the file could not hold is found here, and not by whoever saves the workbook later.
      book->Calculate();
    } else {
      book->SaveAs(destination, false);
    }
    written = book;
  });
  return written;
}

void BudgetExcel::CloseWorkBook(std::shared_ptr<Workbook>& i_oExcelBook) {
  Reads("Talvex.BudgetExcel.CloseWorkBook", [&] { Close(i_oExcelBook); });
}

void BudgetExcel::WriteExcelObjectToFile(std::shared_ptr<Workbook>& i_oExcelWorkBook,
                                         const std::string& i_sFileLocation, bool i_bCloseWorkBook) {
  Reads("Talvex.BudgetExcel.WriteExcelObjectToFile", [&] {
    Required(i_oExcelWorkBook, "the workbook").SaveAs(i_sFileLocation, false);
    if (i_bCloseWorkBook) Close(i_oExcelWorkBook);
  });
}

}  // namespace talvex
