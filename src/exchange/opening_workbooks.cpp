#include "exchange/opening_workbooks.h"

#include "automation/text.h"
#include "exchange/failure.h"

namespace talvex {

using automation::SameFolded;
using platform::spreadsheet::Application;
using platform::spreadsheet::Workbook;

namespace {

std::string_view ExtensionOf(std::string_view path) {
  const std::string_view name = path.substr(path.find_last_of("\\/") + 1);
  const std::size_t point = name.rfind('.');
  return point == std::string_view::npos ? std::string_view() : name.substr(point + 1);
}

WorkbookKind KindOf(const std::string& path, WorkbookKind wanted) {
  const std::string_view extension = ExtensionOf(path);
  if (wanted != WorkbookKind::Workbook && SameFolded(extension, "XLT")) return WorkbookKind::Template;
  if (wanted != WorkbookKind::Template && SameFolded(extension, "xls")) return WorkbookKind::Workbook;
  throw Failure(failure_label::kNoWorkbook, "The workbook " + path + " has another extension than is wanted");
}

}  // namespace

TECollExcelObject OpenWorkbook(const std::string& path, WorkbookKind wanted) {
  const bool is_template = KindOf(path, wanted) == WorkbookKind::Template;
  const auto excel = std::make_shared<Application>();
  try {
    return {excel, is_template ? excel->FromTemplate(path) : excel->Open(path)};
  } catch (...) {
    const automation::ErrorState error = automation::CurrentExceptionState();
    if (error.number == automation::error_number::kInvalidFileFormat) {
      throw Failure(failure_label::kNoWorkbook, error);
    }
    throw Failure(is_template ? failure_label::kTemplate : failure_label::kOpening, error);
  }
}

std::shared_ptr<Workbook> WorkbookOf(const TECollExcelObject& excel) {
  return std::dynamic_pointer_cast<Workbook>(excel.oWorkBook);
}

}  // namespace talvex
