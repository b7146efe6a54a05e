// What must hold of an imported budget, line or relation before it is loaded.
#include "automation/conversions.h"
#include "automation/text.h"
#include "exchange/budget.h"
#include "exchange/import_elements.h"
#include "platform/suite.h"
#include "platform/xml/xpath_literal.h"
#include "services/entries.h"
#include "services/filter_literal.h"
#include "services/frame.h"
#include "services/lib_general.h"
#include "services/lib_sql.h"
#include "services/required.h"

namespace talvex {

using automation::Dictionary;
using automation::Trimmed;
using automation::Variant;
using Lib_ErrorHandling::Err_AppendLine;
using platform::database::Recordset;
using platform::xml::XmlNode;
using platform::xml::XmlNodeRef;

namespace {

constexpr std::int32_t kAggregate = 2;
// The longest code, and name of a user or an office, that the tables take.
constexpr std::size_t kLongest = 50;

// Collects what is wrong with one element.
class Findings {
 public:
  Findings(const std::string& user, const XmlNode& element, std::string& error)
      : user_(user), element_(element), code_(OwnKey(element).value_or("")), error_(error) {}

  [[nodiscard]] const std::string& Code() const noexcept { return code_; }
  void Add(const std::string& label) { AddText(Text(label)); }
  void AddText(const std::string& text) { AddFor(text, code_); }
  void AddFor(const std::string& text, const std::string& code) {
    Err_AppendLine(error_, text, code);
    any_ = true;
  }
  // Refuses a text that its column would refuse: that would undo the whole import, not just this element. The
  // entry tells the sheet and the row where the document does.
  void CheckLength(std::string_view field, const std::string& text) {
    const std::size_t length = automation::CharacterCount(text);
    if (length <= kLongest) return;
    const std::string place = PlaceOf(element_);
    AddText(Text("SLBBU0350") + ": " + place + (place.empty() ? "" : ", ") + std::string(field) + ", " +
            std::to_string(length) + " > " + std::to_string(kLongest));
  }
  [[nodiscard]] std::string Text(const std::string& label) const { return EntryText(user_, label); }
  [[nodiscard]] bool Any() const noexcept { return any_; }

 private:
  const std::string& user_;
  const XmlNode& element_;
  std::string code_;
  std::string& error_;
  bool any_ = false;
};

bool IsBlank(const std::string& text) { return Trimmed(text).empty(); }

// The text of the child element of that name in any case; the empty text when there is none.
std::string FieldOf(const XmlNode& header, std::string_view name) {
  for (const XmlNodeRef& child : header.Children("")) {
    if (automation::SameFolded(child->Name(), name)) return child->Text();
  }
  return {};
}

bool IsUser(const std::string& user) {
  return platform::suite::SuiteUser(Lib_General::gen_getComponent(platform::suite::class_name::kSuiteUser))
      .Exists(user);
}

void CheckWarningStep(const std::string& text, Findings& findings) {
  if (text.empty()) return;
  if (!automation::IsNumeric(Variant(text)))
    return findings.AddText("WARN MULTIPLES SHOULD BE NUMERIC VALUE");
  const double step = automation::ToDouble(Variant(text));
  if (step < 0 || step > 100) findings.Add("SLBBU0329");
}

void CheckHeader(const XmlNode& header, Dictionary& offices, Dictionary& charge_types, Dictionary& currencies,
                 Findings& findings) {
  const auto field = [&](std::string_view name) { return FieldOf(header, name); };
  if (IsBlank(findings.Code())) findings.Add("SLBBU0321");
  findings.CheckLength("BudgetCode", findings.Code());
  if (IsBlank(field("BUDGETTYPE"))) findings.Add("SLBBU0324");

  const std::string currency = field("CURRENCY");
  if (IsBlank(currency)) findings.Add("SLBBU0322");
  if (!currencies.Exists(currency)) findings.Add("SLBBU0323");
  findings.CheckLength("Currency", currency);

  const std::string office = field("ADMINISTRATIVEOFFICE");
  if (!office.empty() && !offices.Exists(office)) findings.Add("SLBBU0325");
  findings.CheckLength("AdministrativeOffice", office);

  const std::string charge_type = field("CHARGETYPE");
  if (IsBlank(charge_type)) findings.Add("SLBBU0326");
  if (!charge_types.Exists(charge_type)) findings.Add("SLBBU0327");
  findings.CheckLength("ChargeType", charge_type);

  const std::string holder = field("BUDGETHOLDER");
  if (!holder.empty() && !IsUser(holder)) findings.Add("SLBBU0328");
  findings.CheckLength("BudgetHolder", holder);

  const std::string approval = automation::Raised(field("APPROVALREQD"));
  if (!approval.empty() && approval != "YES" && approval != "NO")
    findings.AddText("APPROVAL REQUIRED SHOULD BE YES OR NO");
  CheckWarningStep(field("WARNMULTIPLES"), findings);
}

// The child element's text; nothing when there is none. Names are matched exactly.
std::optional<std::string> ChildText(const XmlNode& element, std::string_view name) {
  const auto children = element.Children(name);
  if (children.empty()) return std::nullopt;
  return children.front()->Text();
}

}  // namespace

bool Budget::ValidateFields(const std::string& i_sUser, const XmlNodeRef& i_oBudgetnode,
                            const platform::xml::XmlDocumentRef& i_oXML,
                            const std::shared_ptr<Dictionary>& i_oAdminDict,
                            const std::shared_ptr<Dictionary>& i_oChargeTypeDict,
                            const std::shared_ptr<Dictionary>& i_oCurrencyDict, std::string& o_sError) {
  return Reads("Talvex.Budget.ValidateFields", [&] {
    const XmlNode& header = Required(i_oBudgetnode, "the header");
    return CheckHeaderNode(i_sUser, header, i_oAdminDict, i_oChargeTypeDict, i_oCurrencyDict, o_sError) &&
           CheckLinesOf(i_sUser, OwnKey(header).value_or(""), Required(i_oXML, "the document"), o_sError, {});
  });
}

bool Budget::CheckHeaderNode(const std::string& user, const XmlNode& header,
                             const std::shared_ptr<Dictionary>& offices,
                             const std::shared_ptr<Dictionary>& charge_types,
                             const std::shared_ptr<Dictionary>& currencies, std::string& error) {
  Findings findings(user, header, error);
  CheckHeader(header, Required(offices, "the offices"), Required(charge_types, "the charge types"),
              Required(currencies, "the currencies"), findings);
  return !findings.Any();
}

bool Budget::CheckLinesOf(const std::string& user, const std::string& code,
                          platform::xml::XmlDocument& document, std::string& error,
                          const std::function<void(XmlNode& line)>& told) {
  // A header is loaded with its lines: a bad one keeps all of them out, so that nothing is half loaded.
  bool valid = true;
  const auto lines =
      document.SelectNodes("//BudgetLine[@budgetCode=" + platform::xml::XPathLiteral(code) + "]");
  for (const XmlNodeRef& line : lines->Nodes()) {
    valid = CheckBudgetLineNode(user, *line, error) && valid;
    if (told) told(*line);
  }
  return valid;
}

bool Budget::CheckBudgetLineNode(const std::string& user, const XmlNode& line, std::string& error) {
  Findings findings(user, line, error);
  if (IsBlank(findings.Code())) findings.Add("SLBBU0321");
  findings.CheckLength("BudgetCode", findings.Code());
  const auto start = automation::Date::Parse(ChildText(line, "EffectiveDate").value_or(""));
  if (!start) findings.Add("SLBBU0078");
  if (const auto expiry = ChildText(line, "ExpiryDate")) {
    const auto end = automation::Date::Parse(*expiry);
    if (!end) findings.Add("SLBBU0078");
    if (start && end && *end < *start) findings.Add("SLBBU0330");
  }
  const auto amount = automation::ParseNumber(ChildText(line, "BudgetAmnt").value_or(""));
  if (!amount || *amount < 0) findings.Add("SLBBU0331");
  return !findings.Any();
}

bool Budget::ValidateBudgetRelations(const std::string& i_sUser, const XmlNodeRef& i_oBudgetnode,
                                     std::string& o_sError) {
  return Reads("Talvex.Budget.ValidateBudgetRelations", [&] {
    const auto connection = Lib_General::getConnection();
    const auto budgets = Lib_SQL::Sql_GetReadonlyRecordset("SELECT * FROM BUDGET", connection);
    return CheckRelation(i_sUser, Required(i_oBudgetnode, "the relation"), *budgets, o_sError);
  });
}

bool Budget::CheckRelation(const std::string& user, const XmlNode& relation, Recordset& budgets,
                           std::string& error) {
  const auto find = [&](const std::string& before, const std::string& code) {
    budgets.SetFilter(before + "BUDGETCODE=" + FilterLiteral(code));
    return !budgets.Eof();
  };
  Findings findings(user, relation, error);
  const std::string& parent = findings.Code();
  if (IsBlank(parent)) {
    findings.Add("SLBBU0321");
  } else if (!find("", parent)) {
    findings.Add("SLBBU0334");
  } else if (Lib_General::Gen_NullToDouble(budgets.Value("BUDGETTYPE")) != kAggregate) {
    findings.Add("SLBBU0332");
  }
  findings.CheckLength("BudgetCode", parent);
  for (const XmlNodeRef& element : relation.Children("ChildBudget")) {
    const std::string child = element->Text();
    if (IsBlank(child)) {
      findings.Add("SLBBU0321");
    } else if (!find(" ", child)) {
      findings.AddFor(findings.Text("SLBBU0335") + ":" + child, child);
    }
    findings.CheckLength("ChildBudget", child);
  }
  return !findings.Any();
}

}  // namespace talvex
