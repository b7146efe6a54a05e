// The export document: budgets with their lines and children.
#include "automation/decimal.h"
#include "automation/text.h"
#include "exchange/budget.h"
#include "platform/database/literals.h"
#include "services/frame.h"
#include "services/lib_general.h"
#include "services/lib_sql.h"

namespace talvex {

using automation::Dictionary;
using automation::Variant;
using Lib_General::Gen_NullToDouble;
using Lib_General::Gen_NullToString;
using Lib_SQL::Sql_GetReadonlyRecordset;
using platform::database::Recordset;
using platform::database::TextLiteral;
using platform::xml::XmlNodeRef;

namespace {

struct ElementOfColumn {
  const char* element;
  const char* column;
};
constexpr ElementOfColumn kLineAmounts[] = {
    {"BudgetAmount", "BUDGETAMNT"},         {"NotApprovedAmount", "USEDNOTAPPROVEDAMNT"},
    {"ApprovedAmount", "USEDAPPROVEDAMNT"}, {"SentAmount", "USEDSENDAMNT"},
    {"ClosedAmount", "USEDCLOSEDAMNT"},     {"ReceivedAmount", "USEDRECEIVEDAMNT"},
    {"BalanceAvailable", "AVAILABLEAMNT"}};

// Writes the elements of one document.
class DocumentWriter {
 public:
  DocumentWriter(Budget& exchange, const std::string& user)
      : exchange_(exchange),
        document_(std::make_shared<platform::xml::XmlDocument>()),
        root_(document_->CreateElement("Budgets")),
        standard_(Lib_General::Gen_GetI18N(user, "SLBBU0357")),
        aggregate_(Lib_General::Gen_GetI18N(user, "SLBBU0358")),
        types_(exchange.getBudgetTypeDict()) {}

  void AddBudget(const Recordset& budget, Recordset& lines, Recordset& relations) {
    const std::string code = Gen_NullToString(budget.Value("BUDGETCODE"));
    XmlNodeRef element = Add(root_, "Budget");
    AddHeader(element, budget);
    XmlNodeRef line_list = Add(element, "BudgetLines");
    for (Filter(lines, "BUDGETCODE", code); !lines.Eof(); lines.MoveNext()) AddLine(line_list, lines);
    XmlNodeRef children = Add(element, "ChildBudgets");
    for (Filter(relations, "PARENTBUDGET", code); !relations.Eof(); relations.MoveNext())
      AddChild(children, Gen_NullToString(relations.Value("CHILDBUDGET")));
  }

  [[nodiscard]] std::string Text() const { return root_->Xml(); }

 private:
  static void Filter(Recordset& rows, const std::string& column, const std::string& code) {
    rows.SetFilter(column + "='" + automation::Replaced(code, "'", "''") + "'");
  }

  XmlNodeRef Add(XmlNodeRef& parent, const std::string& name, const std::string& value = {}) {
    return exchange_.AddXMLNode(document_, parent, name, value);
  }

  void AddType(XmlNodeRef& parent, const Variant& type) {
    type_text_ = Gen_NullToDouble(type) == 1 ? standard_ : aggregate_;
    Add(parent, "BudgetType", type_text_);
  }

  void AddHeader(XmlNodeRef& parent, const Recordset& budget) {
    XmlNodeRef header = Add(parent, "BudgetHeader");
    const auto add = [&](const char* element, const char* column) {
      Add(header, element, Gen_NullToString(budget.Value(column)));
    };
    add("BudgetCode", "BUDGETCODE");
    AddType(header, budget.Value("BUDGETTYPE"));
    add("Currency", "CURRENCYCODE");
    add("AdministrativeOffice", "OFFICEDESCRIPTION");
    add("ChargeType", "CHARGETYPECODE");
    add("BudgetHolder", "USERID");
    Add(header, "ApprovalReqd", Gen_NullToDouble(budget.Value("APPROVEINBUDGET")) == 0 ? "No" : "Yes");
    add("WarnMultiples", "BUDGETWARNING");
  }

  void AddLine(XmlNodeRef& parent, const Recordset& line) {
    XmlNodeRef element = Add(parent, "BudgetLine");
    Add(element, "EffectiveDate", Gen_NullToString(line.Value("STARTDATE")));
    Add(element, "ExpiryDate", Gen_NullToString(line.Value("ENDDATE")));
    for (const auto& [name, column] : kLineAmounts)
      Add(element, name, automation::NumberText(Gen_NullToDouble(line.Value(column))));
  }

  void AddChild(XmlNodeRef& parent, const std::string& code) {
    XmlNodeRef child = Add(parent, "ChildBudget");
    Add(child, "BudgetCode", code);
    if (types_->Exists(code)) {
      AddType(child, types_->Item(code));
    } else {
      // Of a budget that does not exist the type written last is repeated.
      Add(child, "BudgetType", type_text_);
    }
  }

  Budget& exchange_;
  platform::xml::XmlDocumentRef document_;
  XmlNodeRef root_;
  std::string standard_;
  std::string aggregate_;
  std::shared_ptr<Dictionary> types_;
  std::string type_text_;
};

}  // namespace

bool Budget::BuildExportDocument(const std::string& from, const std::string& to, std::string& document,
                                 const std::string& user) {
  try {
    DocumentWriter writer(*this, user);
    const auto connection = Lib_General::getConnection();
    auto lines = Sql_GetReadonlyRecordset("SELECT * FROM BUDGETLINES", connection);
    auto relations = Sql_GetReadonlyRecordset("SELECT * FROM BUDGETRELATIONS", connection);
    auto budgets = Sql_GetReadonlyRecordset(
        "SELECT * FROM BUDGET WHERE BUDGETCODE BETWEEN " + TextLiteral(from) + " AND " + TextLiteral(to),
        connection);
    for (; !budgets->Eof(); budgets->MoveNext()) writer.AddBudget(*budgets, *lines, *relations);
    document = writer.Text();
    return true;
  } catch (...) {
    return false;  // What failed has been logged; the caller makes an error log of it.
  }
}

std::shared_ptr<Dictionary> Budget::getBudgetTypeDict() {
  return Reads("Talvex.Budget.getBudgetTypeDict", [] {
    auto connection = Lib_General::getConnection();
    return Lib_SQL::Sql_getRecords(connection, "SELECT BUDGETCODE,BUDGETTYPE FROM BUDGET", "BUDGETCODE",
                                   "BUDGETTYPE");
  });
}

}  // namespace talvex
