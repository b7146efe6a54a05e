// The budget ledger.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "automation/class_info.h"
#include "automation/collection.h"
#include "automation/dictionary.h"
#include "platform/database/recordset.h"
#include "platform/suite.h"
#include "platform/xml/xml_document.h"
#include "types/talvex_types.h"

namespace talvex {

struct Posting;
class BudgetWalk;

// The public class "Talvex.BudgetT". It keeps no state between calls: every method opens what it needs, works
// inside the caller's transaction when there is one, and releases everything before it returns. Failures are
// logged, vote abort, and are raised with the chain of calls in their description; those of GetAllBudgets,
// GetAllChargeTypes and GetXMLTagValue pass through as they are.
class BudgetT final : public automation::Object {
  TALVEX_CLASS(BudgetT, "Talvex.BudgetT",
               "The budget ledger: budgets, their lines and running totals, and their hierarchy.");

 public:
  TALVEX_METHOD(
      automation::Variant, GetBudgetLine, (const std::string& iBudgetCode, automation::Date& iDate),
      "The number (ID) of the budget's line in force on a date; a line without an end date is in force from "
      "its first day on. Null when the code is blank or no line is in force. iDate is not changed. Only "
      "reads.");

  TALVEX_METHOD(
      std::int32_t, PostToBudget,
      (const std::string& iBudgetCode, automation::Date iDate, double iAmount,
       const std::string& iCurrencyCode, TalvexType iBudgetType),
      "Posts an amount, in currency iCurrencyCode as of iDate, to the budget and to every ancestor once: "
      "adds it, converted into each budget's currency, to the running total that iBudgetType selects, "
      "recomputes what is available, and mails the budget holder when a warning step is crossed. A negative "
      "amount takes back. Returns the ID of the budget's own line, or -1 when it has none that takes "
      "postings on the date (a line without an end date takes none, nor does one whose budget has no header "
      "row); the ancestors are posted all the same. Writes BUDGETLINES. Raises BudgetTypeNotFound for an "
      "unknown type, and 28 for a loop in the hierarchy or one deeper than 10,000 levels.");

  TALVEX_METHOD(
      std::int16_t, RepostAllBudgets, (),
      "Sets the totals of every line that has an end date to 0, long-expired ones too, the closed total "
      "excepted: closed amounts survive a reset. Lines without an end date are left as they are. Recomputes "
      "what is available, which may mail budget holders. Returns how many lines were reset; more than 32767 "
      "raise 6. Writes BUDGETLINES.");

  TALVEX_METHOD(void, SetBudgetAvailable, (std::shared_ptr<platform::database::Recordset> & iRS),
                "Recomputes AVAILABLEAMNT and AVAILABLEPERC of the current row of a BUDGETLINES record set, "
                "and mails the budget holder when a warning step is crossed. Does not write the row: the "
                "caller updates the record set.");

  // Checks

  TALVEX_METHOD(
      void, CheckBudgetStructure,
      (const std::string& iBudgetCode, automation::Date iDate, double iNewAmnt, std::string& iCurrencyCode,
       std::shared_ptr<automation::Dictionary>& iBudgetHolders),
      "Who must approve a new amount, in currency iCurrencyCode as of iDate: the holder of the budget, "
      "and of every ancestor, that the amount would overspend or that always requires approval. Each "
      "holder is added to iBudgetHolders once (a new dictionary when none is given) under the user's "
      "id, with the code of the budget that was met first: the budget itself before its parents, a "
      "parent's ancestors before the next parent. A budget without a line in force on the date, without "
      "a header row or without a holder needs no approval. Only reads. Raises 28 for a loop in the "
      "hierarchy or one deeper than 10,000 levels, and 6 for a new amount that is no currency amount.");

  TALVEX_METHOD(
      void, SimCheckBudgetStructure,
      (const std::string& iBudgetCode, automation::Date iDate, double iNewAmnt, std::string& iCurrencyCode,
       std::shared_ptr<automation::Dictionary>& iBudgetHolders),
      "As CheckBudgetStructure, with the situation shown: the item of a holder is an array of the "
      "budget's code, the amount that was available on its line before, and the new amount, both in "
      "the budget's currency. An amount available that is no currency amount raises 6.");

  // Selection

  TALVEX_METHOD(
      void, GetBudget,
      (std::shared_ptr<automation::Collection> & iDBLinks, std::string& oBudgetCode,
       const std::optional<automation::Variant>& iReqId),
      "The standard budget that a requisition line is charged to, by the line's properties: office "
      "(RequisitionRequisitionerOffice), charge type (RequisitionChargeType), and the properties that "
      "the dimension types of the office name. The most specific match with a line in force today "
      "wins; where several budgets match alike, the one whose line began first, and of lines that "
      "began together the one with the least ID. oBudgetCode is the "
      "empty text when no budget qualifies. A property that is missing raises 5. iReqId has no "
      "influence. Only reads.");

  TALVEX_METHOD(
      std::shared_ptr<automation::Dictionary>, GetRelevantBudget,
      (std::shared_ptr<automation::Collection> iDBLinks, std::string& iAdminOffice, std::string& iChargeType),
      "Every standard budget with a line in force today that an office and a charge type can be "
      "charged to, at any level of precision, the most specific first: codes as keys and items. The "
      "dimension values are taken from the requisition's properties iDBLinks; one that is missing "
      "raises 5. Only reads.");

  // Maintenance. The lists hold column names and, at the same places, their values.

  TALVEX_METHOD(
      void, Insert, (const std::string& iBudgetCode, automation::Array& iFields, automation::Array& iValues),
      "Adds a budget. An empty charge type, holder or office is stored as Null, a warning step rounded "
      "to two decimals; both are changed in iValues too. A code in the lists is passed over. Writes "
      "BUDGET. Raises -2147221497 when currency, holder or office is unknown; nothing is written then.");

  TALVEX_METHOD(void, Update,
                (const std::string& iBudgetCode, automation::Array& iFields, automation::Array& iValues),
                "Changes a budget; otherwise as Insert. A budget that does not exist raises 3021.");

  TALVEX_METHOD(
      void, InsertLine,
      (const std::string& iBudgetCode, std::int32_t iID, const automation::Array& iFields,
       const automation::Array& iValues),
      "Adds a line to a budget and computes what is available, which may mail the budget holder. The "
      "database numbers the line: iID, and an ID in the lists, are passed over. A BUDGETCODE in the "
      "lists goes before iBudgetCode. Writes BUDGETLINES. A budget that does not exist raises "
      "BudgetNotFound, and nothing is written.");

  TALVEX_METHOD(void, UpdateLine,
                (const std::string& iBudgetCode, std::int32_t iID, const automation::Array& iFields,
                 const automation::Array& iValues),
                "Changes a line and computes what is available, which may mail the budget holder. An ID or a "
                "BUDGETCODE in the lists is passed over: a line never moves. Writes BUDGETLINES. A line that "
                "does not exist raises 3021, one whose budget does not exist BudgetNotFound; nothing is "
                "written then.");

  TALVEX_METHOD(void, Delete, (const std::string& iBudgetCode),
                "Deletes a budget, its lines, and its relations as parent and as child. Writes BUDGETLINES, "
                "BUDGETRELATIONS and BUDGET. A budget that does not exist is no error.");

  TALVEX_METHOD(
      void, DeleteLine, (const std::string& iBudgetCode, std::int32_t iID),
      "Deletes a line. Writes BUDGETLINES. Raises BudgetNotFound when the budget has no such line.");

  TALVEX_METHOD(void, InsertDimension,
                (const std::string& iOfficeDescription, const automation::Array& iFields,
                 const automation::Array& iValues),
                "Says what the dimensions of an office's budgets stand for. Writes BUDGETDIMENSIONTYPE.");

  TALVEX_METHOD(
      bool, IReferentialIntegrity_Exists,
      (const automation::Array& iFields, const automation::Array& iValues),
      "Whether the ledger holds a row with a value: of the first name that is BUDGETCODE, USERID, "
      "CURRENCYCODE, OFFICEDESCRIPTION or CHARGETYPECODE; the names after it are not looked at. False "
      "when there is no such name. Only reads.");

  TALVEX_METHOD(bool, IReferentialIntegrity_BeforeDelete,
                (const std::string& iEntity, const automation::Array& iFields,
                 const automation::Array& iValues),
                "Whether the ledger lets a record of another component be deleted: always.");

  // Charge lines and charge types

  TALVEX_METHOD(
      std::int32_t, createchargeline, (automation::Array & iChargeFields, automation::Array& iChargeValues),
      "Charges a requisition line to a budget: adds a row with the values under their column names. "
      "The first four values are the requisition's number, the line's number, the office and the "
      "budget. Returns 1; or 2 when the requisition line is charged to that office and budget "
      "already: then all its charge lines are deleted and none is added. Writes CHARGELINES.");

  TALVEX_METHOD(
      void, UpdateChargeline,
      (std::int32_t iReqId, std::int32_t iReqline, std::int32_t iRevId, automation::Array& iChargeadmin,
       automation::Array& iChargebudget, automation::Array& iChargepercentage),
      "Replaces the charge lines of a requisition line by a split: office, budget and percentage of "
      "each share at the same place of the three lists. Place 0 is not used, a share whose office is "
      "Empty is passed over. The percentages need not add up. Writes CHARGELINES.");

  TALVEX_METHOD(void, DeleteChargeline, (std::int32_t iReqId, std::int32_t iReqline),
                "Deletes the charge lines of a requisition line. Writes CHARGELINES.");

  TALVEX_METHOD(
      bool, DeleteChargeType, (const std::string& iChargeTypeCode),
      "Deletes a charge type that nothing refers to; True. Writes CHARGETYPES. Raises -2147221497 for "
      "one that is referred to and ChargeTypeNotFound for one that does not exist.");

  TALVEX_METHOD(std::string, getLedgerAccount, (const std::string& iChargeTypeCode),
                "The ledger account that is booked for a charge type; the empty text when the charge type is "
                "unknown or has none. Only reads.");

  TALVEX_METHOD(std::shared_ptr<automation::Dictionary>, GetAllChargeTypes, (),
                "The codes of all charge types, as keys and items. Only reads.");

  // Loading, from elements of the budget import document

  TALVEX_METHOD(
      bool, InsertBudgets,
      (const std::shared_ptr<platform::xml::XmlNode>& i_oHeaderXMLNode,
       const std::shared_ptr<platform::xml::XmlDocument>& i_oBudgetXML, std::string& o_sError,
       std::string& o_sUser),
      "Writes the budget of a BudgetHeader element and, from the document, the lines of the same "
      "budgetCode. Of a budget that exists only charge type, holder and warning step change, and its "
      "currency as long as it has no lines. What is wrong with a line is added to o_sError in the "
      "language of o_sUser, and the line is passed over. Where a period is stored more than once, each "
      "element has a line of its own: of those that are left, the one with its amount, else the first; "
      "when none is left, the first again. True. Writes BUDGET and BUDGETLINES.");

  TALVEX_METHOD(
      void, InsertBudgetLines,
      (const std::string& i_sBudgetCode, const std::shared_ptr<platform::xml::XmlNode>& i_oBudgetXMLNode,
       const std::string& i_sUser, std::string& o_sError, const std::optional<bool>& i_bFromHeader = {}),
      "Writes one BudgetLine element: the amount of the line of exactly that period, or a new line. A "
      "missing element, a budget that does not exist, a period that is stored more than once (both not "
      "asked when i_bFromHeader is set) and a period in conflict with every line are added to o_sError. "
      "Writes BUDGETLINES. Raises 13 for dates and amounts that are none.");

  TALVEX_METHOD(
      void, InsertBudgetRelations,
      (const std::string& i_sBudgetCode, const std::shared_ptr<platform::xml::XmlNode>& i_oXMLNode,
       const std::string& i_sUser, std::string& o_sError),
      "Puts the ChildBudget of a BudgetRelation element under the budget of its budgetCode, unless it "
      "stands there already. A relation without parent or child, and one by which a budget would end "
      "up above itself, is added to o_sError instead. Writes BUDGETRELATIONS.");

  TALVEX_METHOD(
      std::string, GetXMLTagValue,
      (const std::shared_ptr<platform::xml::XmlDocument>& i_oXMLDOM, const std::string& i_sTagName),
      "The text of the document's only element of that name; the empty text when there is none, when "
      "there are several, and when the document could not be parsed. Failures are not logged.");

  // Listings

  TALVEX_METHOD(std::shared_ptr<automation::Dictionary>, GetAllBudgets, (std::string & iUserID),
                "The codes of a holder's budgets, or, for a blank user, of all budgets, as keys and items in "
                "ascending order. Only reads.");

  TALVEX_METHOD(std::shared_ptr<automation::Dictionary>, GetAllStandardBudgets, (),
                "The codes of all standard budgets, as keys and items. Only reads.");

  TALVEX_METHOD(
      std::shared_ptr<automation::Dictionary>, CheckClosedLoop,
      (const std::string& iFromBudget, const std::string& iToBudget),
      "The loops through the standard budgets of a range of codes, both ends included, as keys and "
      "items: \"@@@A@@@C@@@A\" says that budget A is its own ancestor and that C stands right under "
      "it; a longer loop is not listed whole. Budgets outside the range are walked through but not "
      "reported. Only reads.");

 private:
  using RecordsetRef = std::shared_ptr<platform::database::Recordset>;

  // Posting. The walk knows which budgets were posted, and the path it is on.
  std::int32_t PostToBudgetStructure(const std::string& code, const Posting& posting, BudgetWalk& walk);
  void ParentPost(const std::string& code, const Posting& posting, BudgetWalk& walk);
  std::int32_t PostToLine(const std::string& code, const Posting& posting);
  static void AddToTotal(const Posting& posting, const RecordsetRef& budget, const RecordsetRef& line);
  [[nodiscard]] static double ConvertToBudgetCurrency(const platform::suite::CurrencyConverter& currency,
                                                      const std::string& currency_code,
                                                      const RecordsetRef& budget, double amount,
                                                      automation::Date date);

  // Checks. The holder who must approve, or the empty text; the simulated check also gives what was available
  // before and the new amount, both in the budget's currency.
  static std::string CheckBudget(const std::string& code, automation::Date date, automation::Currency amount,
                                 const std::string& currency_code);
  static std::string SimCheckBudget(const std::string& code, automation::Date date,
                                    automation::Currency amount, const std::string& currency_code,
                                    automation::Currency& available_before, automation::Currency& new_amount);

  // Selection.
  std::string SelectBudget(const std::string& office, const std::string& charge_type,
                           const std::array<std::string, 3>& dimensions);
  static std::string PickBudgetWithCurrentLine(const RecordsetRef& budgets);
  static RecordsetRef GetCurrentBudgetLines(const std::string& criterion, automation::Date date);
  bool HasCurrentLine(const std::string& code);

  // Maintenance. The modes differ in what an existing row is and in which columns may be set.
  enum class Mode { Insert, Update };
  static void InsertUpdate(const std::string& code, const automation::Array& fields,
                           automation::Array& values, Mode mode);
  void InsertUpdateLine(const std::string& code, std::int32_t id, const automation::Array& fields,
                        const automation::Array& values, Mode mode);

  // Loading. The rows of one header are paired with stored lines one to one: `claims` has the numbers (ID) of
  // those that earlier rows were paired with. Null for a row that comes without its header.
  using LineClaims = std::set<std::string>;
  void LoadLine(const std::string& budget_code, const std::shared_ptr<platform::xml::XmlNode>& node,
                const std::string& user, std::string& error, LineClaims* claims);

  // Warnings. The percentages are those before and after a change, 100 for a line with nothing used.
  static void checkbudgetwarning(double percentage_before, double percentage_after, const RecordsetRef& line);
  static void SendBudgetSummary(const RecordsetRef& budget, const RecordsetRef& line);
  [[nodiscard]] static std::string getI18N(const std::string& user, const std::string& label);
};

}  // namespace talvex
