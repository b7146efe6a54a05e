// Writing budgets, lines and relations that come as elements of the budget import document.
#include <algorithm>
#include <optional>
#include <set>

#include "automation/conversions.h"
#include "automation/text.h"
#include "ledger/budget_t.h"
#include "ledger/closed_loops.h"
#include "platform/database/literals.h"
#include "platform/xml/xpath_literal.h"
#include "services/entries.h"
#include "services/frame.h"
#include "services/lib_general.h"
#include "services/lib_sql.h"
#include "services/required.h"

namespace talvex {

using automation::Date;
using automation::SameFolded;
using automation::Variant;
using Lib_General::Gen_EmptyToNull;
using Lib_General::getConnection;
using Lib_SQL::Sql_GetReadonlyRecordset;
using Lib_SQL::Sql_GetUpdateableRecordset;
using platform::database::LockType;
using platform::database::Recordset;
using platform::database::TextLiteral;
using platform::xml::XmlDocumentRef;
using platform::xml::XmlNodeRef;

namespace {

constexpr std::string_view kSource = "Talvex.BudgetT";
constexpr std::int32_t kStandard = 1;
constexpr std::int32_t kAggregate = 2;

// One element, asked as if it stood in a document of its own: nothing strays into its neighbours. Such a
// document is not made, since there are tens of thousands of elements in an import.
class Element {
 public:
  // Error 91 without a node, naming what is missing; 5 for one that cannot stand alone, and for one without
  // the element or its attribute budgetCode, naming what was given.
  Element(const XmlNodeRef& node, std::string_view name, std::string_view what) : name_(name) {
    Required(node, what, kSource);
    Collect(node);
    const auto found = std::find_if(elements_.begin(), elements_.end(),
                                    [&](const auto& element) { return element.first == name; });
    if (found == elements_.end()) RaiseMissing(*node);
    const auto attributes = found->second->Attributes();
    const auto code = std::find_if(attributes.begin(), attributes.end(), [](const XmlNodeRef& attribute) {
      return attribute->Name() == "budgetCode";
    });
    if (code == attributes.end()) Raise("The element " + name_ + " has no attribute budgetCode");
    code_ = (*code)->Text();
  }

  [[nodiscard]] const std::string& Code() const noexcept { return code_; }
  // Error 5 for a code of blanks, naming the element.
  [[nodiscard]] const std::string& CodeToStore() const {
    if (automation::Trimmed(code_).empty())
      Raise("The attribute budgetCode of the element " + name_ + " holds no code");
    return code_;
  }
  // The text of the only child of that name; the empty text when there is none and when there are several.
  [[nodiscard]] std::string Text(std::string_view child) const {
    const platform::xml::XmlNode* only = nullptr;
    for (const auto& [name, element] : elements_) {
      if (name != child) continue;
      if (only != nullptr) return {};
      only = element.get();
    }
    return only == nullptr ? std::string() : only->Text();
  }
  // Nothing when there is no such child. 13 for one that is no date.
  [[nodiscard]] std::optional<Date> Day(std::string_view child) const {
    const bool there = std::any_of(elements_.begin(), elements_.end(),
                                   [&](const auto& element) { return element.first == child; });
    if (!there) return std::nullopt;
    return automation::ToDate(Variant(Text(child))).DayOnly();
  }

 private:
  [[noreturn]] static void Raise(const std::string& description) {
    throw automation::Error(automation::error_number::kInvalidCall, kSource, description);
  }
  [[noreturn]] void RaiseMissing(const platform::xml::XmlNode& node) const {
    platform::xml::XmlDocument document;
    if (!document.LoadXml(node.Xml())) Raise("The element cannot be read: " + document.Error().reason);
    Raise("The element " + node.Name() + " is no " + name_ + " and holds none");
  }

  // The element and all in it, in document order.
  void Collect(const XmlNodeRef& element) {
    elements_.emplace_back(element->Name(), element);
    for (const XmlNodeRef& child : element->Children("")) Collect(child);
  }

  std::vector<std::pair<std::string, XmlNodeRef>> elements_;
  std::string name_;
  std::string code_;
};

Variant NumberOrNull(const std::string& text) {
  if (automation::Trimmed(text).empty()) return automation::kNull;
  return automation::ToDouble(Variant(text));
}

// Whether an export writes both numbers with the same digits: what comes back from one must not take away
// those that it could not show. Null reads as nothing.
bool ReadsTheSame(const Variant& stored, const Variant& given) {
  return Lib_General::Gen_NullToString(stored) == Lib_General::Gen_NullToString(given);
}

void SetNewBudget(Recordset& budget, const Element& header) {
  budget.AddNew(std::nullopt, std::nullopt);
  budget.SetValue("BUDGETCODE", header.Code());
  budget.SetValue("CURRENCYCODE", header.Text("Currency"));
  budget.SetValue("APPROVEINBUDGET", SameFolded(header.Text("ApprovalReqd"), "YES") ? 1 : 0);
  budget.SetValue("OFFICEDESCRIPTION", Gen_EmptyToNull(header.Text("AdministrativeOffice")));
  const std::string type = header.Text("BudgetType");
  if (SameFolded(type, "STANDARD")) budget.SetValue("BUDGETTYPE", kStandard);
  if (SameFolded(type, "AGGREGATE")) budget.SetValue("BUDGETTYPE", kAggregate);
}

// What an import changes in new and existing budgets alike.
void SetWhatMayChange(Recordset& budget, const Element& header) {
  budget.SetValue("CHARGETYPECODE", Gen_EmptyToNull(header.Text("ChargeType")));
  budget.SetValue("USERID", Gen_EmptyToNull(header.Text("BudgetHolder")));
  const Variant step = NumberOrNull(header.Text("WarnMultiples"));
  if (!ReadsTheSame(budget.Value("BUDGETWARNING"), step)) budget.SetValue("BUDGETWARNING", step);
}

std::string SelectLines(const std::string& code) {
  return "SELECT * FROM BUDGETLINES WHERE BUDGETCODE=" + TextLiteral(code);
}

struct Period {
  Date start;
  std::optional<Date> end;
};

// The day that a column of dates holds; nothing for Null.
std::optional<Date> DayIn(const Recordset& line, std::string_view column) {
  const Variant date = line.Value(column);
  if (date.IsNull()) return std::nullopt;
  return automation::ToDate(date).DayOnly();
}

// Stands on the first line that passes; false, behind the last one, when none does. Periods are compared by
// their days, which a filter, comparing stored times of day as well, would not do.
template <class Test>
bool StandOn(Recordset& lines, Test&& passes) {
  for (lines.MoveFirst(); !lines.Eof(); lines.MoveNext()) {
    if (passes()) return true;
  }
  return false;
}

bool HasAmount(const Recordset& line, double amount) {
  return ReadsTheSame(Lib_General::Gen_NullToDouble(line.Value("BUDGETAMNT")), amount);
}

bool HasPeriod(const Recordset& line, const Period& period) {
  return DayIn(line, "STARTDATE") == period.start && DayIn(line, "ENDDATE") == period.end;
}

std::string IdOf(const Recordset& line) { return automation::ToText(line.Value("ID")); }

// Stands on the line of exactly that period; false when there is none. Of several, one that no earlier row
// has claimed is meant, and of those the one that has the amount already: what was exported comes back to
// where it was. A period that the rows have more often than the store replaces what an earlier row has put
// there.
bool StandOnSame(Recordset& lines, const Period& period, double amount, const std::set<std::string>& claims) {
  const auto same = [&] { return HasPeriod(lines, period); };
  const auto free = [&] { return same() && !claims.contains(IdOf(lines)); };
  return StandOn(lines, [&] { return free() && HasAmount(lines, amount); }) || StandOn(lines, free) ||
         StandOn(lines, same);
}

bool IsStoredTwice(Recordset& lines, const Period& period) {
  int count = 0;
  return StandOn(lines, [&] { return HasPeriod(lines, period) && ++count > 1; });
}

// Whether every line conflicts with the period. One passes that starts by the period's end, or ends from its
// start on, or has another start and another end: so only open-ended lines that start behind the
// period fail, and what is turned round; one line that passes is enough. A period without an end is compared
// by its start alone.
bool Conflicts(Recordset& lines, const Period& period) {
  return !StandOn(lines, [&] {
    const auto start = DayIn(lines, "STARTDATE");
    const auto end = DayIn(lines, "ENDDATE");
    const bool other_start = start && *start != period.start;
    const bool ends_late_enough = end && *end >= period.start;
    if (!period.end) return ends_late_enough || other_start;
    const bool other_end = end && *end != *period.end;
    return (start && *start <= *period.end) || ends_late_enough || (other_start && other_end);
  });
}

void AddLine(Recordset& lines, const std::string& code, const Period& period, double amount) {
  lines.AddNew(std::nullopt, std::nullopt);
  lines.SetValue("BUDGETCODE", code);
  lines.SetValue("STARTDATE", period.start);
  lines.SetValue("ENDDATE", period.end ? Variant(*period.end) : Variant(automation::kNull));
  lines.SetValue("BUDGETAMNT", amount);
}

// Whether the parent is the child itself or stands below it already.
bool ClosesLoop(const std::string& parent, const std::string& child) {
  if (automation::SameCode(parent, child)) return true;
  const AncestorPairs ancestors = ParentBudgets().CollectAncestors(parent);
  const auto& pairs = ancestors.Pairs();
  return std::any_of(pairs.begin(), pairs.end(),
                     [&](const HoldParents& pair) { return automation::SameCode(pair.Parent, child); });
}

}  // namespace

bool BudgetT::InsertBudgets(const XmlNodeRef& i_oHeaderXMLNode, const XmlDocumentRef& i_oBudgetXML,
                            std::string& o_sError, std::string& o_sUser) {
  return Writes("Talvex.BudgetT.InsertBudgets", [&] {
    const Element header(i_oHeaderXMLNode, "BudgetHeader", "the header");
    const std::string& code = header.CodeToStore();
    const auto connection = getConnection();
    auto budget = Sql_GetUpdateableRecordset("SELECT * FROM BUDGET WHERE BUDGETCODE=" + TextLiteral(code),
                                             connection, LockType::Optimistic);
    if (budget->Eof()) {
      SetNewBudget(*budget, header);
    } else if (Sql_GetReadonlyRecordset(SelectLines(code), connection)->Eof()) {
      // Amounts are kept in the budget's currency, so that of a budget with lines stays.
      budget->SetValue("CURRENCYCODE", header.Text("Currency"));
    }
    SetWhatMayChange(*budget, header);
    budget->Update(std::nullopt, std::nullopt);
    Lib_SQL::CloseRecordset(budget);
    const auto lines =
        Required(i_oBudgetXML, "the document", kSource)
            .SelectNodes("//BudgetLine[@budgetCode=" + platform::xml::XPathLiteral(code) + "]");
    LineClaims claims;
    for (const XmlNodeRef& line : lines->Nodes()) LoadLine(code, line, o_sUser, o_sError, &claims);
    return true;
  });
}

void BudgetT::InsertBudgetLines(const std::string& i_sBudgetCode, const XmlNodeRef& i_oBudgetXMLNode,
                                const std::string& i_sUser, std::string& o_sError,
                                const std::optional<bool>& i_bFromHeader) {
  LineClaims none_yet;
  LoadLine(i_sBudgetCode, i_oBudgetXMLNode, i_sUser, o_sError,
           i_bFromHeader.value_or(false) ? &none_yet : nullptr);
}

void BudgetT::LoadLine(const std::string& budget_code, const XmlNodeRef& node, const std::string& user,
                       std::string& error, LineClaims* claims) {
  Writes("Talvex.BudgetT.InsertBudgetLines", [&] {
    const auto refuse = [&](const std::string& label) {
      Lib_ErrorHandling::Err_AppendLine(error, EntryText(user, label), budget_code);
    };
    if (node == nullptr) return refuse("SLBBU0341");
    const auto connection = getConnection();
    if (claims == nullptr) {
      const auto budget = Sql_GetReadonlyRecordset(
          "SELECT * FROM BUDGET  WHERE BUDGETCODE=" + TextLiteral(budget_code), connection);
      if (budget->Eof()) return refuse("SLBBU0356");
    }
    const Element element(node, "BudgetLine", "the line");
    const std::string& code = element.CodeToStore();
    const Period period = {automation::ToDate(Variant(element.Text("EffectiveDate"))).DayOnly(),
                           element.Day("ExpiryDate")};
    const double amount = automation::ToDouble(Variant(element.Text("BudgetAmnt")));

    auto lines = Sql_GetUpdateableRecordset(SelectLines(code), connection, LockType::Optimistic);
    // A row that comes without the others of its budget does not tell which of several lines it means.
    const bool is_first = lines->Eof();
    if (claims == nullptr && !is_first && IsStoredTwice(*lines, period)) return refuse("SLBBU0333");
    const LineClaims claimed = claims == nullptr ? LineClaims() : *claims;
    if (is_first) {
      AddLine(*lines, code, period, amount);
    } else {
      // An open-ended line that is there already has no end that could be compared.
      const bool known = !period.end && StandOnSame(*lines, period, amount, claimed);
      if (!known && Conflicts(*lines, period)) return refuse("SLBBU0333");
      if (!StandOnSame(*lines, period, amount, claimed)) {
        AddLine(*lines, code, period, amount);
      } else if (!HasAmount(*lines, amount)) {
        lines->SetValue("BUDGETAMNT", amount);
      }
    }
    SetBudgetAvailable(lines);
    lines->Update(std::nullopt, std::nullopt);
    if (claims != nullptr) claims->insert(IdOf(*lines));
    Lib_SQL::CloseRecordset(lines);
  });
}

void BudgetT::InsertBudgetRelations(const std::string& i_sBudgetCode, const XmlNodeRef& i_oXMLNode,
                                    const std::string& i_sUser, std::string& o_sError) {
  Writes("Talvex.BudgetT.InsertBudgetRelations", [&] {
    const Element relation(i_oXMLNode, "BudgetRelation", "the relation");
    const std::string& parent = relation.Code();
    const std::string child = relation.Text("ChildBudget");
    const auto refuse = [&] {
      Lib_ErrorHandling::Err_AppendLine(o_sError, EntryText(i_sUser, "SLBBU0336"), i_sBudgetCode);
    };
    if (automation::Trimmed(parent).empty() || automation::Trimmed(child).empty()) return refuse();
    const auto connection = getConnection();
    auto relations =
        Sql_GetUpdateableRecordset("SELECT * FROM BUDGETRELATIONS WHERE PARENTBUDGET=" + TextLiteral(parent) +
                                       " AND CHILDBUDGET=" + TextLiteral(child),
                                   connection, LockType::Optimistic);
    if (!relations->Eof()) return;
    if (ClosesLoop(parent, child)) return refuse();
    relations->AddNew(std::nullopt, std::nullopt);
    relations->SetValue("PARENTBUDGET", parent);
    relations->SetValue("CHILDBUDGET", child);
    relations->Update(std::nullopt, std::nullopt);
    Lib_SQL::CloseRecordset(relations);
  });
}

std::string BudgetT::GetXMLTagValue(const XmlDocumentRef& i_oXMLDOM, const std::string& i_sTagName) {
  return Required(i_oXMLDOM, "the document", kSource).TextOfOnly(i_sTagName);
}

}  // namespace talvex
