// The part of BudgetManager that maintains ledger accounts.
#include <array>

#include "accounting/budget_manager.h"
#include "accounting/row_access.h"
#include "platform/database/literals.h"

namespace talvex {

using automation::Variant;
using Lib_General::Gen_EmptyToNull;
using Lib_General::Gen_EmptyToNullDate;
using Lib_General::Gen_NullToString;
using platform::database::Recordset;
using platform::database::TextLiteral;

namespace {

struct DimensionColumn {
  std::string_view column;
  std::int16_t LedgerAccount::*usage;
};
constexpr std::array<DimensionColumn, 5> kDimensions = {{
    {"DIMENSION1", &LedgerAccount::Dimension1},
    {"DIMENSION2", &LedgerAccount::Dimension2},
    {"DIMENSION3", &LedgerAccount::Dimension3},
    {"DIMENSION4", &LedgerAccount::Dimension4},
    {"DIMENSION5", &LedgerAccount::Dimension5},
}};

std::string SelectAccount(const std::string& code) {
  return "SELECT * FROM LEDGERACCOUNT WHERE LEDGERACCOUNT=" + TextLiteral(code);
}

std::shared_ptr<LedgerAccount> ReadAccount(const Recordset& row) {
  auto account = std::make_shared<LedgerAccount>();
  account->Code = Gen_NullToString(row.Value("LEDGERACCOUNT"));
  account->LedgerAccountDesc = Gen_NullToString(row.Value("DESCRIPTION"));
  account->DateFrom = DateOrEmpty(row.Value("DATEFROM"));
  account->DateTo = DateOrEmpty(row.Value("DATETO"));
  account->AccountType = Int16Of(row.Value("ACCOUNTTYPE"));
  for (const auto& [column, usage] : kDimensions) (*account).*usage = Int16Of(row.Value(column));
  return account;
}

void WriteAccount(const LedgerAccount& account, Recordset& row) {
  row.SetValue("LEDGERACCOUNT", account.Code);
  row.SetValue("DESCRIPTION", Gen_EmptyToNull(account.LedgerAccountDesc));
  row.SetValue("ACCOUNTTYPE", account.AccountType);
  row.SetValue("DATEFROM", Gen_EmptyToNullDate(account.DateFrom));
  row.SetValue("DATETO", Gen_EmptyToNullDate(account.DateTo));
  for (const auto& [column, usage] : kDimensions) row.SetValue(column, account.*usage);
  row.Update(std::nullopt, std::nullopt);
}

}  // namespace

Variant BudgetManager::GetLedgerAccountDetails(const std::string& i_sLedgerAccount) {
  return Reads("Talvex.BudgetManager.GetLedgerAccountDetails", [&]() -> Variant {
    const auto connection = Lib_General::getConnection();
    auto accounts = Lib_SQL::Sql_GetReadonlyRecordset(SelectAccount(i_sLedgerAccount), connection);
    if (accounts->Eof()) return {};
    return ReadAccount(*accounts);
  });
}

bool BudgetManager::UpdateLedgerAccount(const std::shared_ptr<LedgerAccount>& i_objLedgerAccount) {
  return ChangesRows("Talvex.BudgetManager.UpdateLedgerAccount", [&](const auto& connection) {
    const LedgerAccount& account = Given(i_objLedgerAccount);
    auto row = RowToWrite(SelectAccount(account.Code), connection);
    WriteAccount(account, *row);
    Lib_SQL::CloseRecordset(row);
  });
}

bool BudgetManager::DeleteLedgerAccount(const std::string& i_sLedgerAccount) {
  return Writes("Talvex.BudgetManager.DeleteLedgerAccount", [&] {
    return ExecuteStatement("DELETE LEDGERACCOUNT WHERE LEDGERACCOUNT=" + TextLiteral(i_sLedgerAccount));
  });
}

void BudgetManager::GetAllLedgerAccounts(Variant& io_objSD) {
  Reads("Talvex.BudgetManager.GetAllLedgerAccounts", [&] {
    io_objSD = Lib_SQL::Sql_GetRecordsAsDictionary("SELECT LEDGERACCOUNT, DESCRIPTION FROM LEDGERACCOUNT",
                                                   Lib_General::Gen_GetConnectionString());
  });
}

bool BudgetManager::ExecuteStatement(const std::string& sql) {
  return ChangesRows("Talvex.BudgetManager.ExecuteStatement", [&](const auto& connection) {
    connection->Execute(sql, nullptr, platform::database::kOptionsUnspecified);
  });
}

}  // namespace talvex
