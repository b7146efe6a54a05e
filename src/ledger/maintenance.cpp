// Creating and changing budgets, their lines, and the dimension types of an office.
#include "automation/decimal.h"
#include "automation/text.h"
#include "ledger/budget_t.h"
#include "ledger/references.h"
#include "platform/database/literals.h"
#include "services/frame.h"
#include "services/lib_sql.h"

namespace talvex {

using automation::Array;
using automation::Error;
using automation::SameFolded;
using automation::ToText;
using automation::Variant;
using Lib_SQL::Sql_GetUpdateableRecordset;
using platform::database::LockType;
using platform::database::Recordset;
using platform::database::TextLiteral;

namespace {

constexpr int kWarningPlaces = 2;

// What a list's value becomes before it is stored: an empty reference is Null, a warning step has two
// decimals.
void Normalise(const std::string& name, Variant& value) {
  if (value.IsNull()) return;
  const bool reference = SameFolded(name, "CHARGETYPECODE") || SameFolded(name, "USERID") ||
                         SameFolded(name, "OFFICEDESCRIPTION");
  if (reference && ToText(value).empty()) value = automation::kNull;
  if (SameFolded(name, "BUDGETWARNING"))
    value = automation::Round(automation::ToDouble(value), kWarningPlaces);
}

// A charge type is deliberately not among the references that are checked.
void RequireValidReferences(const Recordset& budget) {
  const Array names({"CURRENCYCODE", "USERID", "OFFICEDESCRIPTION"});
  const Array values(
      {budget.Value("CURRENCYCODE"), budget.Value("USERID"), budget.Value("OFFICEDESCRIPTION")});
  if (NewReferentialChecker().HasValidReferences("BUDGET", names, values)) return;
  // "insert" stands here when a budget is changed, too.
  throw Error(kInvalidReference, "Talvex.BudgetT",
              "The budget record you are trying to insert has an invalid reference to another record");
}

void RequireRow(const Recordset& recordset, const std::string& what) {
  if (!recordset.Eof()) return;
  throw Error(automation::error_number::kNoCurrentRow, "Talvex.BudgetT", what + " does not exist");
}

// Without a header row a line would have neither currency nor holder, and belong to no budget.
void RequireHeader(const std::shared_ptr<platform::database::Connection>& connection,
                   const std::string& code) {
  const auto budget = Lib_SQL::Sql_GetReadonlyRecordset(
      "select * from BUDGET where BUDGETCODE=" + TextLiteral(code), connection);
  if (!budget->Eof()) return;
  throw Error(static_cast<std::int32_t>(TalvexErrors::BudgetNotFound), "Talvex.BudgetT",
              "Budget '" + code + "' does not exist: insert it before its lines");
}

}  // namespace

void BudgetT::Insert(const std::string& iBudgetCode, Array& iFields, Array& iValues) {
  InsertUpdate(iBudgetCode, iFields, iValues, Mode::Insert);
}

void BudgetT::Update(const std::string& iBudgetCode, Array& iFields, Array& iValues) {
  InsertUpdate(iBudgetCode, iFields, iValues, Mode::Update);
}

void BudgetT::InsertUpdate(const std::string& code, const Array& fields, Array& values, Mode mode) {
  Writes("Talvex.BudgetT.InsertUpdate", [&] {
    const auto connection = Lib_General::getConnection();
    const std::string which = mode == Mode::Insert ? "0=1" : "BUDGETCODE=" + TextLiteral(code);
    auto budget =
        Sql_GetUpdateableRecordset("select * from BUDGET where " + which, connection, LockType::Optimistic);
    if (mode == Mode::Insert) {
      budget->AddNew(std::nullopt, std::nullopt);
      budget->SetValue("BUDGETCODE", code);
    }
    RequireRow(*budget, "Budget '" + code + "'");
    for (std::int32_t i = fields.Lower(); i <= fields.Upper(); ++i) {
      const std::string name = ToText(fields.At(i));
      Normalise(name, values.At(i));
      if (!SameFolded(name, "BUDGETCODE")) budget->SetValue(name, values.At(i));
    }
    RequireValidReferences(*budget);
    budget->Update(std::nullopt, std::nullopt);
    Lib_SQL::CloseRecordset(budget);
  });
}

void BudgetT::InsertLine(const std::string& iBudgetCode, std::int32_t iID, const Array& iFields,
                         const Array& iValues) {
  InsertUpdateLine(iBudgetCode, iID, iFields, iValues, Mode::Insert);
}

void BudgetT::UpdateLine(const std::string& iBudgetCode, std::int32_t iID, const Array& iFields,
                         const Array& iValues) {
  InsertUpdateLine(iBudgetCode, iID, iFields, iValues, Mode::Update);
}

void BudgetT::InsertUpdateLine(const std::string& code, std::int32_t id, const Array& fields,
                               const Array& values, Mode mode) {
  Writes("Talvex.BudgetT.InsertUpdateLine", [&] {
    const auto connection = Lib_General::getConnection();
    const std::string number = std::to_string(id);
    const std::string which =
        mode == Mode::Insert ? "0=1" : "BUDGETCODE=" + TextLiteral(code) + " AND ID=" + number;
    auto line = Sql_GetUpdateableRecordset("select * from BUDGETLINES where " + which, connection,
                                           LockType::Optimistic);
    if (mode == Mode::Insert) {
      line->AddNew(std::nullopt, std::nullopt);
      line->SetValue("BUDGETCODE", code);
    }
    RequireRow(*line, "Line " + number + " of budget '" + code + "'");
    for (std::int32_t i = fields.Lower(); i <= fields.Upper(); ++i) {
      const std::string name = ToText(fields.At(i));
      // A new line goes to the budget that the lists name; a line that is there never moves to another one.
      const bool skipped = SameFolded(name, "ID") || (mode == Mode::Update && SameFolded(name, "BUDGETCODE"));
      if (!skipped) line->SetValue(name, values.At(i));
    }
    RequireHeader(connection, Lib_General::Gen_NullToString(line->Value("BUDGETCODE")));
    SetBudgetAvailable(line);
    line->Update(std::nullopt, std::nullopt);
    Lib_SQL::CloseRecordset(line);
  });
}

void BudgetT::InsertDimension(const std::string& iOfficeDescription, const Array& iFields,
                              const Array& iValues) {
  Writes("Talvex.BudgetT.InsertDimension", [&] {
    const auto connection = Lib_General::getConnection();
    auto types = Sql_GetUpdateableRecordset("select * from BUDGETDIMENSIONTYPE where 0=1", connection,
                                            LockType::Optimistic);
    types->AddNew(std::nullopt, std::nullopt);
    types->SetValue("OFFICEDESCRIPTION", iOfficeDescription);
    for (std::int32_t i = iFields.Lower(); i <= iFields.Upper(); ++i)
      types->SetValue(ToText(iFields.At(i)), iValues.At(i));
    types->Update(std::nullopt, std::nullopt);
    Lib_SQL::CloseRecordset(types);
  });
}

}  // namespace talvex
