// All budgets that a requisition line may be charged to, found by one query per level and combination.
#include "automation/text.h"
#include "ledger/budget_t.h"
#include "ledger/selection.h"
#include "platform/database/literals.h"
#include "services/frame.h"
#include "services/lib_general.h"
#include "services/lib_sql.h"
#include "services/required.h"

namespace talvex {

using automation::Collection;
using automation::Dictionary;
using Lib_SQL::Sql_GetReadonlyRecordset;
using platform::database::Connection;
using platform::database::TextLiteral;

namespace {

// A budget without office, or without charge type, is one that holds Null: the empty text is not found.
std::array<std::string, kSelectionLevels> LevelQueries(const std::string& office,
                                                       const std::string& charge_type) {
  const std::string select = "Select BudgetCode from Budget where ";
  const std::string office_literal = TextLiteral(office);
  const std::string charge_type_literal = TextLiteral(charge_type);
  const std::string standard = " AND BudgetType = 1";
  return {
      select + "OfficeDescription = " + office_literal + " AND chargetypeCode = " + charge_type_literal +
          standard,
      select + "OfficeDescription = " + office_literal + " AND ChargeTypeCode is NULL" + standard,
      select + "OfficeDescription is NULL AND ChargeTypeCode = " + charge_type_literal + standard,
      select + "OfficeDescription is NULL AND ChargeTypeCode is NULL" + standard,
  };
}

// The dimension types of the office, or else those of any office; at the end when there are neither.
std::shared_ptr<platform::database::Recordset> TypesOf(const std::string& office,
                                                       const std::shared_ptr<Connection>& connection) {
  const std::string select =
      "SELECT BUDGETDIMTYPE1, BUDGETDIMTYPE2,BUDGETDIMTYPE3 FROM BUDGETDIMENSIONTYPE WHERE "
      "OFFICEDESCRIPTION ";
  auto types = Sql_GetReadonlyRecordset(select + "=" + TextLiteral(office), connection);
  return types->Eof() ? Sql_GetReadonlyRecordset(select + "IS NULL", connection) : types;
}

}  // namespace

std::shared_ptr<Dictionary> BudgetT::GetRelevantBudget(std::shared_ptr<Collection> iDBLinks,
                                                       std::string& iAdminOffice, std::string& iChargeType) {
  // The failures of this operation carry the name of another one on purpose.
  return Reads("Talvex.BudgetT.getAllStandardBudgets", [&] {
    Collection& properties = Required(iDBLinks, "the requisition's properties", "Talvex.BudgetT");
    const auto connection = Lib_General::getConnection();
    const auto types = TypesOf(iAdminOffice, connection);
    const Dimensions dimensions = types->Eof() ? Dimensions() : DimensionValues(*types, properties);
    const Dimensions literals = {TextLiteral(dimensions[0]), TextLiteral(dimensions[1]),
                                 TextLiteral(dimensions[2])};
    const std::vector<std::size_t> combinations = CombinationsFor(dimensions);
    const std::string office(automation::Trimmed(iAdminOffice));
    const std::string charge_type(automation::Trimmed(iChargeType));
    auto relevant = std::make_shared<Dictionary>();
    const auto add = [&](const std::string& query) {
      auto budgets = Sql_GetReadonlyRecordset(query, connection);
      for (; !budgets->Eof(); budgets->MoveNext()) {
        const std::string code = Lib_General::Gen_NullToString(budgets->Value("BUDGETCODE"));
        if (HasCurrentLine(code)) relevant->Add(code, code);
      }
      Lib_SQL::CloseRecordset(budgets);
    };
    for (const std::string& query : LevelQueries(office, charge_type)) {
      for (const std::size_t combination : combinations)
        add(query + DimensionCriterion(combination, literals));
    }
    return relevant;
  });
}

}  // namespace talvex
