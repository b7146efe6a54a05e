// Deleting budgets and lines, and what other components may ask before they delete.
#include <array>
#include <utility>

#include "automation/conversions.h"
#include "automation/text.h"
#include "ledger/budget_t.h"
#include "platform/database/literals.h"
#include "services/frame.h"
#include "services/lib_general.h"

namespace talvex {

using automation::Array;
using automation::Variant;
using Lib_General::getConnection;
using platform::database::kOptionsUnspecified;
using platform::database::TextLiteral;

namespace {

// By the column that other components refer to: where the ledger holds a row with such a value.
constexpr std::array<std::pair<std::string_view, std::string_view>, 5> kReferences = {{
    {"BUDGETCODE", "SELECT * FROM BUDGET WHERE BUDGETCODE="},
    {"USERID", "SELECT * FROM BUDGET WHERE USERID = "},
    {"CURRENCYCODE", "SELECT * FROM BUDGET WHERE CURRENCYCODE = "},
    {"OFFICEDESCRIPTION", "SELECT * FROM BUDGETDIMENSIONTYPE WHERE OFFICEDESCRIPTION = "},
    {"CHARGETYPECODE", "SELECT * FROM CHARGETYPES WHERE CHARGETYPECODE = "},
}};

// The query for a column; empty for one that nobody refers to the ledger by.
std::string_view QueryFor(std::string_view name) {
  for (const auto& [column, query] : kReferences) {
    if (automation::SameFolded(column, name)) return query;
  }
  return {};
}

}  // namespace

void BudgetT::Delete(const std::string& iBudgetCode) {
  Writes("Talvex.BudgetT.Delete", [&] {
    const auto connection = getConnection();
    const std::string code = TextLiteral(iBudgetCode);
    const auto lines = connection->Execute("SELECT ID, BUDGETCODE FROM BUDGETLINES WHERE BUDGETCODE=" + code,
                                           nullptr, kOptionsUnspecified);
    for (; !lines->Eof(); lines->MoveNext()) DeleteLine(iBudgetCode, automation::ToInt32(lines->Value("ID")));
    connection->Execute("DELETE FROM BUDGETRELATIONS WHERE PARENTBUDGET=" + code + " OR CHILDBUDGET=" + code,
                        nullptr, kOptionsUnspecified);
    connection->Execute("DELETE FROM BUDGET WHERE BUDGETCODE=" + code, nullptr, kOptionsUnspecified);
  });
}

void BudgetT::DeleteLine(const std::string& iBudgetCode, std::int32_t iID) {
  Writes("Talvex.BudgetT.DeleteLine", [&] {
    Variant affected;
    getConnection()->Execute("DELETE FROM BUDGETLINES WHERE BUDGETCODE=" + TextLiteral(iBudgetCode) +
                                 " AND ID=" + std::to_string(iID),
                             &affected, kOptionsUnspecified);
    if (automation::ToInt32(affected) > 0) return;
    throw automation::Error(static_cast<std::int32_t>(TalvexErrors::BudgetNotFound),
                            "Talvex.Budget.Line.Delete", "Budget Line doesn't exist");
  });
}

bool BudgetT::IReferentialIntegrity_Exists(const Array& iFields, const Array& iValues) {
  return Reads("Talvex.BudgetT.Exists", [&] {
    for (std::int32_t i = iFields.Lower(); i <= iFields.Upper(); ++i) {
      const std::string_view query = QueryFor(automation::ToText(iFields.At(i)));
      if (query.empty()) continue;
      const std::string value = TextLiteral(Lib_General::Gen_NullToString(iValues.At(i)));
      return !getConnection()->Execute(std::string(query) + value, nullptr, kOptionsUnspecified)->Eof();
    }
    return false;
  });
}

bool BudgetT::IReferentialIntegrity_BeforeDelete(const std::string& /*iEntity*/, const Array& /*iFields*/,
                                                 const Array& /*iValues*/) {
  return true;
}

}  // namespace talvex
