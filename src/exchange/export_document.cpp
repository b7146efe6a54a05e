// The export document: budgets with their lines and children.
#include <algorithm>

#include "automation/decimal.h"
#include "automation/text.h"
#include "exchange/budget.h"
#include "platform/database/literals.h"
#include "services/filter_literal.h"
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

// Whether a text can stand in XML, as far as a look at its bytes tells.
bool IsPlain(std::string_view text) {
  constexpr std::string_view kNoCharacters = "\xEF\xBF";  // U+FFFE and U+FFFF begin so.
  const bool has_control = std::any_of(text.begin(), text.end(), [](char c) {
    return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r';
  });
  return !has_control && automation::IsUtf8(text) && text.find(kNoCharacters) == std::string_view::npos;
}

// Elements as AddXMLNode makes them, but written straight into the text: there are hundreds of thousands, and
// nothing else would be asked of the tree that they would be put into.
class ElementWriter {
 public:
  explicit ElementWriter(Budget& exchange) : exchange_(exchange) {}

  // An element around what `inside` writes; an empty one when that is nothing.
  template <class Inside>
  void Around(std::string_view name, Inside&& inside) {
    text_.append("<").append(name).append(">");
    const std::size_t start = text_.size();
    inside();
    if (text_.size() == start) {
      text_.back() = '/';
      text_.append(">");
    } else {
      text_.append("</").append(name).append(">");
    }
  }

  void Add(std::string_view name, std::string_view value) {
    if (!IsPlain(value)) RaiseAsAddXMLNode(std::string(name), std::string(value));
    if (value.empty()) return Around(name, [] {});
    text_.append("<").append(name).append(">");
    for (const char c : automation::Trimmed(value)) AppendCharacter(c);
    text_.append("</").append(name).append(">");
  }

  [[nodiscard]] std::string Take() { return std::move(text_); }

 private:
  void AppendCharacter(char c) {
    switch (c) {
      case '&':
        text_.append("&amp;");
        break;
      case '<':
        text_.append("&lt;");
        break;
      case '>':
        text_.append("&gt;");
        break;
      case '\r':
        text_.append("&#13;");
        break;
      default:
        text_.push_back(c);
    }
  }

  // A value that XML does not allow is that method's to refuse and to log.
  void RaiseAsAddXMLNode(const std::string& name, const std::string& value) {
    auto document = std::make_shared<platform::xml::XmlDocument>();
    XmlNodeRef parent = document->CreateElement("Budgets");
    exchange_.AddXMLNode(document, parent, name, value);
  }

  Budget& exchange_;
  std::string text_;
};

struct TypeTexts {
  std::string standard;
  std::string aggregate;
};

// Writes the budgets of one document.
class DocumentWriter {
 public:
  DocumentWriter(Budget& exchange, const std::string& user)
      : writer_(exchange), user_(user), types_(exchange.getBudgetTypeDict()) {}

  [[nodiscard]] std::string Write(Recordset& budgets, Recordset& lines, Recordset& relations) {
    writer_.Around("Budgets", [&] {
      for (; !budgets.Eof(); budgets.MoveNext())
        writer_.Around("Budget", [&] { AddBudget(budgets, lines, relations); });
    });
    return writer_.Take();
  }

 private:
  static void Filter(Recordset& rows, const std::string& column, const std::string& code) {
    rows.SetFilter(column + "=" + FilterLiteral(code));
  }

  void AddBudget(const Recordset& budget, Recordset& lines, Recordset& relations) {
    const std::string code = Gen_NullToString(budget.Value("BUDGETCODE"));
    writer_.Around("BudgetHeader", [&] { AddHeader(budget); });
    writer_.Around("BudgetLines", [&] {
      for (Filter(lines, "BUDGETCODE", code); !lines.Eof(); lines.MoveNext())
        writer_.Around("BudgetLine", [&] { AddLine(lines); });
    });
    writer_.Around("ChildBudgets", [&] {
      for (Filter(relations, "PARENTBUDGET", code); !relations.Eof(); relations.MoveNext())
        writer_.Around("ChildBudget", [&] { AddChild(Gen_NullToString(relations.Value("CHILDBUDGET"))); });
    });
  }

  // Looked up for the first budget: an export of nothing needs no language.
  const TypeTexts& Texts() {
    if (!texts_) {
      texts_ = {Lib_General::Gen_GetI18N(user_, type_label::kStandard),
                Lib_General::Gen_GetI18N(user_, type_label::kAggregate)};
    }
    return *texts_;
  }

  void AddType(const Variant& type) {
    type_text_ = Gen_NullToDouble(type) == 1 ? Texts().standard : Texts().aggregate;
    writer_.Add("BudgetType", type_text_);
  }

  void AddHeader(const Recordset& budget) {
    const auto add = [&](const char* element, const char* column) {
      writer_.Add(element, Gen_NullToString(budget.Value(column)));
    };
    add("BudgetCode", "BUDGETCODE");
    AddType(budget.Value("BUDGETTYPE"));
    add("Currency", "CURRENCYCODE");
    add("AdministrativeOffice", "OFFICEDESCRIPTION");
    add("ChargeType", "CHARGETYPECODE");
    add("BudgetHolder", "USERID");
    writer_.Add("ApprovalReqd", Gen_NullToDouble(budget.Value("APPROVEINBUDGET")) == 0 ? "No" : "Yes");
    add("WarnMultiples", "BUDGETWARNING");
  }

  void AddLine(const Recordset& line) {
    writer_.Add("EffectiveDate", Gen_NullToString(line.Value("STARTDATE")));
    writer_.Add("ExpiryDate", Gen_NullToString(line.Value("ENDDATE")));
    for (const auto& [name, column] : kLineAmounts)
      writer_.Add(name, automation::NumberText(Gen_NullToDouble(line.Value(column))));
  }

  void AddChild(const std::string& code) {
    writer_.Add("BudgetCode", code);
    if (types_->Exists(code)) {
      AddType(types_->Item(code));
    } else {
      // Of a budget that does not exist the type written last is repeated.
      writer_.Add("BudgetType", type_text_);
    }
  }

  ElementWriter writer_;
  const std::string& user_;
  std::optional<TypeTexts> texts_;
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
    document = writer.Write(*budgets, *lines, *relations);
    return true;
  } catch (...) {
    return false;  // The services that fail log why; the entry that the caller makes of it is empty.
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
