// Charge lines, which split a requisition line over budgets, and charge types.
#include "automation/conversions.h"
#include "automation/text.h"
#include "ledger/budget_t.h"
#include "ledger/references.h"
#include "platform/database/literals.h"
#include "services/frame.h"
#include "services/lib_sql.h"

namespace talvex {

using automation::Array;
using automation::Error;
using automation::Variant;
using Lib_General::getConnection;
using Lib_SQL::CloseRecordset;
using Lib_SQL::Sql_GetUpdateableRecordset;
using platform::database::kOptionsUnspecified;
using platform::database::LockType;
using platform::database::NumberLiteral;
using platform::database::Recordset;
using platform::database::TextLiteral;

namespace {

constexpr std::int32_t kAdded = 1;
constexpr std::int32_t kCleared = 2;

// Where createchargeline finds what identifies a charge, whatever the list of columns says.
constexpr std::int32_t kRequisition = 0;
constexpr std::int32_t kRequisitionLine = 1;
constexpr std::int32_t kOffice = 2;
constexpr std::int32_t kBudget = 3;

// Null is the same as nothing, not even as Null.
bool SameText(const Variant& stored, const Variant& given) {
  if (stored.IsNull() || given.IsNull()) return false;
  return automation::SameCode(automation::ToText(stored), automation::ToText(given));
}

bool HoldsCharge(Recordset& charges, const Variant& office, const Variant& budget) {
  for (; !charges.Eof(); charges.MoveNext()) {
    if (SameText(charges.Value("ADMINOFFICE"), office) && SameText(charges.Value("BUDGETCODE"), budget))
      return true;
  }
  return false;
}

// A record that is referred to must stay. The text speaks of an insert although this is a delete.
void RequireUnused(const std::string& charge_type) {
  if (NewReferentialChecker().MayDelete("CHARGETYPE", Array({"CHARGETYPECODE"}), Array({charge_type})))
    return;
  throw Error(kInvalidReference, "Talvex.BudgetT",
              "The record you are trying to insert has an invalid reference to another record");
}

}  // namespace

std::int32_t BudgetT::createchargeline(Array& iChargeFields, Array& iChargeValues) {
  return Writes("Talvex.BudgetT.Createchargeline", [&] {
    const auto connection = getConnection();
    auto all = Sql_GetUpdateableRecordset("SELECT * FROM CHARGELINES ORDER BY CHARGELINEID DESC", connection,
                                          LockType::Optimistic);
    if (!all->Eof()) {
      const Variant& requisition = iChargeValues.At(kRequisition);
      const Variant& line = iChargeValues.At(kRequisitionLine);
      const Variant& office = iChargeValues.At(kOffice);
      const Variant& budget = iChargeValues.At(kBudget);
      const auto charges = Lib_SQL::Sql_GetReadonlyRecordset(
          "SELECT * FROM CHARGELINES WHERE REQUISITIONLINEID=" + NumberLiteral(requisition) +
              " AND REQUISITIONLINENUMBER=" + NumberLiteral(line),
          connection);
      if (HoldsCharge(*charges, office, budget)) {
        // Charging the same office and budget twice takes back all charges of the requisition line.
        DeleteChargeline(automation::ToInt32(requisition), automation::ToInt32(line));
        return kCleared;
      }
    }
    all->AddNew(std::nullopt, std::nullopt);
    for (std::int32_t i = iChargeFields.Lower(); i <= iChargeFields.Upper(); ++i)
      all->SetValue(automation::ToText(iChargeFields.At(i)), iChargeValues.At(i));
    all->Update(std::nullopt, std::nullopt);
    CloseRecordset(all);
    return kAdded;
  });
}

void BudgetT::UpdateChargeline(std::int32_t iReqId, std::int32_t iReqline, std::int32_t iRevId,
                               Array& iChargeadmin, Array& iChargebudget, Array& iChargepercentage) {
  Writes("Talvex.BudgetT.UpdateChargeLine", [&] {
    const auto connection = getConnection();
    auto charges = Sql_GetUpdateableRecordset(
        "SELECT * FROM CHARGELINES WHERE REQUISITIONLINEID=" + NumberLiteral(iReqId) +
            " AND REQUISITIONLINENUMBER= " + NumberLiteral(iReqline),
        connection, LockType::BatchOptimistic);
    // The old lines go at once, not with the batch below.
    if (!charges->Eof()) DeleteChargeline(iReqId, iReqline);
    for (std::int32_t i = 1; i <= iChargeadmin.Upper(); ++i) {
      const Variant& office = iChargeadmin.At(i);
      if (office.IsEmpty()) continue;
      charges->AddNew(std::nullopt, std::nullopt);
      charges->SetValue("REQUISITIONLINEID", iReqId);
      charges->SetValue("REQUISITIONLINENUMBER", iReqline);
      charges->SetValue("REVISION", iRevId);
      charges->SetValue("ADMINOFFICE", office);
      charges->SetValue("BUDGETCODE", iChargebudget.At(i));
      charges->SetValue("PERCENTAGESPLIT", iChargepercentage.At(i));
    }
    charges->UpdateBatch(platform::database::Affect::All);
    CloseRecordset(charges);
  });
}

void BudgetT::DeleteChargeline(std::int32_t iReqId, std::int32_t iReqline) {
  Writes("Talvex.BudgetT.DeleteChargeline", [&] {
    getConnection()->Execute("DELETE FROM CHARGELINES WHERE REQUISITIONLINEID=" + NumberLiteral(iReqId) +
                                 " AND REQUISITIONLINENUMBER= " + NumberLiteral(iReqline),
                             nullptr, kOptionsUnspecified);
  });
}

bool BudgetT::DeleteChargeType(const std::string& iChargeTypeCode) {
  return Writes("Talvex.BudgetT.DeleteChargeType", [&] {
    RequireUnused(iChargeTypeCode);
    Variant affected;
    getConnection()->Execute("DELETE FROM CHARGETYPES WHERE CHARGETYPECODE=" + TextLiteral(iChargeTypeCode),
                             &affected, kOptionsUnspecified);
    if (automation::ToInt32(affected) > 0) return true;
    throw Error(static_cast<std::int32_t>(TalvexErrors::ChargeTypeNotFound), "Talvex.Charge.Type.Delete",
                "Charge Type doesn't exist");
  });
}

std::string BudgetT::getLedgerAccount(const std::string& iChargeTypeCode) {
  return Reads("Talvex.BudgetT.getLedgerAccount", [&] {
    const auto account = getConnection()->Execute(
        "SELECT LEDGERACCOUNTCODE FROM CHARGETYPES WHERE CHARGETYPECODE=" + TextLiteral(iChargeTypeCode),
        nullptr, kOptionsUnspecified);
    return account->Eof() ? std::string()
                          : Lib_General::Gen_NullToString(account->Value("LEDGERACCOUNTCODE"));
  });
}

}  // namespace talvex
