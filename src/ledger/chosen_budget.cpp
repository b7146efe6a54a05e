// The one budget that a requisition line is charged to, found by filters on one reading of the budgets.
#include <tuple>

#include "automation/conversions.h"
#include "automation/text.h"
#include "ledger/budget_t.h"
#include "ledger/selection.h"
#include "platform/database/literals.h"
#include "platform/environment.h"
#include "services/filter_literal.h"
#include "services/frame.h"
#include "services/lib_general.h"
#include "services/lib_sql.h"
#include "services/required.h"

namespace talvex {

using automation::Collection;
using automation::Date;
using automation::Variant;
using Lib_General::Gen_NullToString;
using Lib_General::getConnection;
using Lib_SQL::Sql_GetReadonlyRecordset;
using platform::database::DateLiteral;
using platform::database::TextLiteral;

namespace {

// A budget without office, or without charge type, is one that holds the empty text: a Null is not found.
std::array<std::string, kSelectionLevels> LevelCriteria(const std::string& office,
                                                        const std::string& charge_type) {
  const std::string office_literal = FilterLiteral(office);
  const std::string charge_type_literal = FilterLiteral(charge_type);
  return {
      " OfficeDescription = " + office_literal + " AND chargetypeCode = " + charge_type_literal,
      "OfficeDescription = " + office_literal + " AND ChargeTypeCode = '' ",
      "OfficeDescription = '' AND ChargeTypeCode = " + charge_type_literal,
      "OfficeDescription = '' AND ChargeTypeCode = '' ",
  };
}

// Stands on the dimension types of the office, or else on those of any office; false when there are neither.
bool FindOffice(platform::database::Recordset& types, const std::string& office) {
  if (types.Eof()) return false;
  // The office stands in the filter as it is: one with an apostrophe is no condition and fails the call.
  types.SetFilter("OFFICEDESCRIPTION = '" + office + "'");
  if (types.Eof()) types.SetFilter("OFFICEDESCRIPTION IS NULL");
  return !types.Eof();
}

// How many budgets one statement asks for: a database limits how long a condition may be, and takes more than
// its share of time for one that is very long.
constexpr std::size_t kPortion = 500;

// The condition that a line belongs to one of the next budgets, which it passes.
std::string NextPortion(platform::database::Recordset& budgets) {
  constexpr std::string_view kOr = " OR ";
  std::string criterion = "(";
  for (std::size_t i = 0; i < kPortion && !budgets.Eof(); ++i, budgets.MoveNext()) {
    criterion.append(" BUDGETCODE = ")
        .append(TextLiteral(Gen_NullToString(budgets.Value("BUDGETCODE"))))
        .append(kOr);
  }
  criterion.resize(criterion.size() - kOr.size());
  return criterion + ")";
}

struct CurrentLine {
  Date start;
  std::int32_t id = 0;
  std::string code;

  [[nodiscard]] bool IsBefore(const CurrentLine& other) const {
    return std::tie(start, id) < std::tie(other.start, other.id);
  }
};

// Of lines in the order of their start dates, the first; of those that start together, the one with the least
// ID, in whichever order the database gives them.
std::optional<CurrentLine> FirstLine(platform::database::Recordset& lines) {
  std::optional<CurrentLine> first;
  for (; !lines.Eof(); lines.MoveNext()) {
    CurrentLine line = {automation::ToDate(lines.Value("STARTDATE")), automation::ToInt32(lines.Value("ID")),
                        Gen_NullToString(lines.Value("BUDGETCODE"))};
    if (first && line.start != first->start) break;
    if (!first || line.IsBefore(*first)) first = std::move(line);
  }
  return first;
}

}  // namespace

void BudgetT::GetBudget(std::shared_ptr<Collection>& iDBLinks, std::string& oBudgetCode,
                        const std::optional<Variant>& /*iReqId*/) {
  Reads("Talvex.BudgetT.GetBudget", [&] {
    oBudgetCode.clear();
    Collection& properties = Required(iDBLinks, "the requisition's properties", "Talvex.BudgetT");
    const auto connection = getConnection();
    const std::string charge_type = GetDimensionValue(properties, "RequisitionChargeType");
    const std::string office = GetDimensionValue(properties, "RequisitionRequisitionerOffice");
    auto types = Sql_GetReadonlyRecordset(
        "SELECT BUDGETDIMTYPE1, BUDGETDIMTYPE2, BUDGETDIMTYPE3, OFFICEDESCRIPTION "
        " FROM BUDGETDIMENSIONTYPE  WHERE OFFICEDESCRIPTION=" +
            TextLiteral(office) + " OR OFFICEDESCRIPTION IS NULL",
        connection);
    Dimensions dimensions;
    if (FindOffice(*types, office)) dimensions = DimensionValues(*types, properties);
    Lib_SQL::CloseRecordset(types);
    oBudgetCode = SelectBudget(office, charge_type, dimensions);
  });
}

std::string BudgetT::SelectBudget(const std::string& office, const std::string& charge_type,
                                  const std::array<std::string, 3>& dimensions) {
  const auto connection = getConnection();
  const auto budgets = Sql_GetReadonlyRecordset("SELECT * FROM BUDGET WHERE BUDGETTYPE=1", connection);
  if (budgets->Eof() && budgets->Bof()) return {};
  const Dimensions literals = {FilterLiteral(dimensions[0]), FilterLiteral(dimensions[1]),
                               FilterLiteral(dimensions[2])};
  const std::vector<std::size_t> combinations = CombinationsFor(dimensions);
  for (const std::string& level : LevelCriteria(office, charge_type)) {
    for (const std::size_t combination : combinations) {
      budgets->SetFilter(level + DimensionCriterion(combination, literals));
      const std::int32_t matches = budgets->RecordCount();
      // Several matches end the search, even when none of them has a line in force.
      if (matches > 1) return PickBudgetWithCurrentLine(budgets);
      if (matches == 0) continue;
      std::string code = Gen_NullToString(budgets->Value("BUDGETCODE"));
      if (HasCurrentLine(code)) return code;
    }
  }
  return {};
}

bool BudgetT::HasCurrentLine(const std::string& code) {
  Date today = platform::Environment::Current().clock->Now().DayOnly();
  const Variant line = GetBudgetLine(code, today);
  return !line.IsNull() && !line.IsEmpty();
}

std::string BudgetT::PickBudgetWithCurrentLine(const RecordsetRef& budgets) {
  const Date today = platform::Environment::Current().clock->Now().DayOnly();
  std::optional<CurrentLine> first;
  while (!budgets->Eof()) {
    const auto lines = GetCurrentBudgetLines(NextPortion(*budgets), today);
    const auto candidate = FirstLine(*lines);
    if (candidate && (!first || candidate->IsBefore(*first))) first = candidate;
  }
  return first ? first->code : std::string();
}

BudgetT::RecordsetRef BudgetT::GetCurrentBudgetLines(const std::string& criterion, Date date) {
  const std::string day = DateLiteral(date);
  return Sql_GetReadonlyRecordset("SELECT * FROM BUDGETLINES WHERE " + criterion + " and STARTDATE<=" + day +
                                      " AND (ENDDATE>=" + day + " OR ENDDATE IS NULL) ORDER BY STARTDATE ",
                                  getConnection());
}

}  // namespace talvex
