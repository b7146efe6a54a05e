// The part of BudgetManager that maintains accounting rules and their lines.
#include "accounting/budget_manager.h"
#include "accounting/row_access.h"
#include "platform/database/literals.h"

namespace talvex {

using automation::Variant;
using Lib_General::Gen_EmptyToNull;
using Lib_General::Gen_EmptyToNullDate;
using Lib_General::Gen_NullToString;
using platform::database::Connection;
using platform::database::NumberLiteral;
using platform::database::Recordset;

namespace {

std::string OfRule(std::int32_t rule) { return "ACCRULEID=" + NumberLiteral(rule); }

std::string OfLine(std::int32_t rule, std::int32_t line) {
  return OfRule(rule) + " AND LINENUMBER=" + NumberLiteral(line);
}

std::string SelectRule(std::int32_t rule) { return "SELECT * FROM ACCOUNTINGRULE WHERE " + OfRule(rule); }

std::string SelectLine(std::int32_t rule, std::int32_t line) {
  return "SELECT * FROM ACCOUNTINGRULELINE WHERE " + OfLine(rule, line);
}

std::shared_ptr<AccountingRule> ReadRule(const Recordset& row) {
  auto rule = std::make_shared<AccountingRule>();
  rule->ACCRULEID = automation::ToInt32(row.Value("ACCRULEID"));
  rule->RuleDescription = Gen_NullToString(row.Value("RULEDESCRIPTION"));
  rule->SequenceNumber = Int16Of(row.Value("SEQUENCENUMBER"));
  rule->LedgerAccount = Gen_NullToString(row.Value("LEDGERACCOUNT"));
  rule->DateFrom = DateOrEmpty(row.Value("DATEFROM"));
  rule->DateTo = DateOrEmpty(row.Value("DATETO"));
  return rule;
}

void WriteRule(const AccountingRule& rule, Recordset& row) {
  row.SetValue("LEDGERACCOUNT", rule.LedgerAccount);
  row.SetValue("RULEDESCRIPTION", Gen_EmptyToNull(rule.RuleDescription));
  row.SetValue("DATEFROM", Gen_EmptyToNullDate(rule.DateFrom));
  row.SetValue("DATETO", Gen_EmptyToNullDate(rule.DateTo));
  row.SetValue("SEQUENCENUMBER", rule.SequenceNumber);
  row.Update(std::nullopt, std::nullopt);
}

std::shared_ptr<AccountingRuleLine> ReadLine(const Recordset& row) {
  auto line = std::make_shared<AccountingRuleLine>();
  line->ACCRULEID = automation::ToInt32(row.Value("ACCRULEID"));
  line->LINENUMBER = automation::ToInt32(row.Value("LINENUMBER"));
  line->LineDescription = Gen_NullToString(row.Value("LINEDESCRIPTION"));
  line->Operator = Int16Of(row.Value("OPERATOR"));
  line->FieldValue = row.Value("FIELDVALUE");
  return line;
}

std::int32_t NewLineNumber(const AccountingRuleLine& line, const std::shared_ptr<Connection>& connection) {
  if (line.LINENUMBER > 0) return line.LINENUMBER;
  const auto highest = connection->Execute(
      "SELECT MAX(LINENUMBER) AS HIGHEST FROM ACCOUNTINGRULELINE WHERE " + OfRule(line.ACCRULEID), nullptr,
      platform::database::kOptionsUnspecified);
  return automation::RoundToInt32(Lib_General::Gen_NullToDouble(highest->Value("HIGHEST")) + 1);
}

// The table keeps texts; a number or a date is stored as its text. Neither is trimmed.
Variant StoredFieldValue(const Variant& value) {
  if (value.IsNull() || value.IsEmpty()) return automation::kNull;
  return automation::ToText(value);
}

void WriteLine(const AccountingRuleLine& line, Recordset& row) {
  row.SetValue("ACCRULEID", line.ACCRULEID);
  row.SetValue("FIELDVALUE", StoredFieldValue(line.FieldValue));
  row.SetValue("LINEDESCRIPTION", Gen_EmptyToNull(line.LineDescription));
  row.SetValue("OPERATOR", line.Operator);
  row.Update(std::nullopt, std::nullopt);
}

}  // namespace

Variant BudgetManager::GetAccountingRuleDetails(std::int32_t i_lAccRuleID) {
  return Reads("Talvex.BudgetManager.GetAccountingRuleDetails", [&]() -> Variant {
    const auto connection = Lib_General::getConnection();
    const auto rules = Lib_SQL::Sql_GetReadonlyRecordset(SelectRule(i_lAccRuleID), connection);
    if (rules->Eof()) return {};
    return ReadRule(*rules);
  });
}

bool BudgetManager::UpdateAccountingRule(const std::shared_ptr<AccountingRule>& i_objAccountingRule,
                                         Variant* o_lAccountingRuleID) {
  return ChangesRows("Talvex.BudgetManager.UpdateAccountingRule", [&](const auto& connection) {
    const AccountingRule& rule = Given(i_objAccountingRule);
    auto row = RowToWrite(SelectRule(rule.ACCRULEID), connection);
    WriteRule(rule, *row);
    if (o_lAccountingRuleID != nullptr) *o_lAccountingRuleID = automation::ToInt32(row->Value("ACCRULEID"));
    Lib_SQL::CloseRecordset(row);
  });
}

bool BudgetManager::DeleteAccountingRule(std::int32_t i_lAccRuleID) {
  return Writes("Talvex.BudgetManager.DeleteAccountingRule", [&] {
    return ExecuteStatement("DELETE ACCOUNTINGRULELINE WHERE " + OfRule(i_lAccRuleID)) &&
           ExecuteStatement("DELETE ACCOUNTINGRULE WHERE " + OfRule(i_lAccRuleID));
  });
}

Variant BudgetManager::GetAccountingRuleLineDetails(std::int32_t i_lAccRuleID,
                                                    std::int32_t i_lRuleLineNumber) {
  return Reads("Talvex.BudgetManager.GetAccountingRuleLineDetails", [&]() -> Variant {
    const auto connection = Lib_General::getConnection();
    const auto lines =
        Lib_SQL::Sql_GetReadonlyRecordset(SelectLine(i_lAccRuleID, i_lRuleLineNumber), connection);
    if (lines->Eof()) return {};
    return ReadLine(*lines);
  });
}

bool BudgetManager::UpdateAccountingRuleLine(const std::shared_ptr<AccountingRuleLine>& i_objAccRuleLine) {
  return ChangesRows("Talvex.BudgetManager.UpdateAccountingRuleLine", [&](const auto& connection) {
    const AccountingRuleLine& line = Given(i_objAccRuleLine);
    auto row = RowToWrite(SelectLine(line.ACCRULEID, line.LINENUMBER), connection);
    if (row->EditMode() == platform::database::EditMode::Add)
      row->SetValue("LINENUMBER", NewLineNumber(line, connection));
    WriteLine(line, *row);
    Lib_SQL::CloseRecordset(row);
  });
}

bool BudgetManager::DeleteAccountingRuleLine(std::int32_t i_lAccRuleID, std::int32_t i_lAccRuleLineNumber) {
  return Writes("Talvex.BudgetManager.DeleteAccountingRuleLine", [&] {
    return ExecuteStatement("DELETE ACCOUNTINGRULELINE WHERE " + OfLine(i_lAccRuleID, i_lAccRuleLineNumber));
  });
}

}  // namespace talvex
