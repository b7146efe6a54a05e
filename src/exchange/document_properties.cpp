#include "exchange/document_properties.h"

#include "automation/conversions.h"
#include "automation/text.h"
#include "exchange/budget_excel.h"
#include "exchange/failure.h"
#include "services/frame.h"
#include "services/required.h"

namespace talvex {

using automation::Variant;
using platform::spreadsheet::Workbook;

namespace {

EMsoDocProperties TypeOf(const std::string& type) {
  const std::string folded = automation::Folded(type);
  if (folded == "number") return EMsoDocProperties::EMsoPropertyTypeNumber;
  if (folded == "date") return EMsoDocProperties::EMsoPropertyTypeDate;
  if (folded == "boolean") return EMsoDocProperties::EMsoPropertyTypeBoolean;
  return EMsoDocProperties::EMsoPropertyTypeString;
}

void Require(bool fits, const std::string& name, const char* what) {
  if (fits) return;
  throw automation::Error(automation::error_number::kTypeMismatch, "Talvex.BudgetExcel",
                          "Type mismatch: the value of the document property " + name + " is no " + what);
}

Variant PropertyValue(const std::string& name, const Variant& value, EMsoDocProperties type) {
  switch (type) {
    case EMsoDocProperties::EMsoPropertyTypeNumber:
      Require(automation::IsNumeric(value), name, "number");
      return automation::ToDouble(value);
    case EMsoDocProperties::EMsoPropertyTypeDate:
      Require(automation::IsDate(value), name, "date");
      return automation::ToDate(value);
    case EMsoDocProperties::EMsoPropertyTypeBoolean: {
      const std::string folded = automation::Folded(automation::ToText(value));
      return folded == "yes" || folded == "true";
    }
    default:
      return automation::ToText(value);
  }
}

}  // namespace

void SetDocumentProperty(Workbook& book, const std::string& name, const Variant& value,
                         const std::string& type) {
  book.SetProperty(name, PropertyValue(name, value, TypeOf(type)));
}

void BudgetExcel::SetCustomerPropertyInExcel(std::shared_ptr<Workbook>& i_uExcelBook,
                                             const std::string& i_sPropertyName,
                                             const Variant& i_vPropertyValue,
                                             const std::string& i_sPropertyType, std::string& o_sError) {
  constexpr std::string_view kMethod = "Talvex.BudgetExcel.SetCustomerPropertyInExcel";
  // Nobody says for which user the message is.
  Collecting(kMethod, failure_label::kWriting, std::nullopt, o_sError, [&] {
    SetDocumentProperty(Required(i_uExcelBook, "the workbook"), i_sPropertyName, i_vPropertyValue,
                        i_sPropertyType);
  });
}

Variant BudgetExcel::GetCustomerPropertyFromExcel(std::shared_ptr<Workbook>& i_uExcelBook,
                                                  const std::string& i_sPropertyName) {
  return Reads("Talvex.BudgetExcel.GetCustomerPropertyFromExcel",
               [&] { return Required(i_uExcelBook, "the workbook").Property(i_sPropertyName); });
}

}  // namespace talvex
