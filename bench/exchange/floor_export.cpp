#include <cstdlib>
#include <cstring>
#include <unordered_map>
#include <vector>

#include "exchange/floor.h"
#include "workbooks/library.h"

// clang-format off
#include <mstyle.h>
#include <ranges.h>
#include <sheet-style.h>
// clang-format on

namespace talvex::bench {

namespace {

constexpr const char* kAmounts[] = {"BudgetAmount", "NotApprovedAmount", "ApprovedAmount",  "SentAmount",
                                    "ClosedAmount", "ReceivedAmount",    "BalanceAvailable"};
constexpr int kAmountCount = 7;

struct Line {
  std::string start;
  std::string end;
  double amounts[kAmountCount];
};

struct Tables {
  std::unordered_map<std::string, int> types;
  std::unordered_map<std::string, std::vector<Line>> lines;
  std::unordered_map<std::string, std::vector<std::string>> children;
};

Tables ReadTables(sqlite3* database) {
  Tables tables;
  Statement types(database, "SELECT BUDGETCODE, BUDGETTYPE FROM BUDGET");
  while (types.Step()) tables.types.emplace(types.Text(0), static_cast<int>(types.Number(1)));
  Statement lines(database,
                  "SELECT BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT, USEDNOTAPPROVEDAMNT, USEDAPPROVEDAMNT, "
                  "USEDSENDAMNT, USEDCLOSEDAMNT, USEDRECEIVEDAMNT, AVAILABLEAMNT FROM BUDGETLINES");
  while (lines.Step()) {
    Line line{lines.Text(1), lines.Text(2), {}};
    for (int i = 0; i < kAmountCount; ++i) line.amounts[i] = lines.Number(3 + i);
    tables.lines[lines.Text(0)].push_back(std::move(line));
  }
  Statement relations(database, "SELECT PARENTBUDGET, CHILDBUDGET FROM BUDGETRELATIONS");
  while (relations.Step()) tables.children[relations.Text(0)].push_back(relations.Text(1));
  return tables;
}

xmlNode* Add(xmlNode* parent, const char* name, const char* text = nullptr) {
  return xmlNewTextChild(parent, nullptr, reinterpret_cast<const xmlChar*>(name),
                         reinterpret_cast<const xmlChar*>(text));
}

std::string NumberText(double number) {
  char text[32];
  std::snprintf(text, sizeof text, "%.15g", number);
  return text;
}

// "2026-03-15T00:00:00" as 3/15/2026.
std::string DateText(const std::string& stored) {
  if (stored.size() < 10) return {};
  const auto part = [&](std::size_t at, std::size_t length) {
    return std::to_string(std::atoi(stored.substr(at, length).c_str()));
  };
  return part(5, 2) + "/" + part(8, 2) + "/" + part(0, 4);
}

const char* TypeText(int type) { return type == 1 ? "Standard" : "Aggregate"; }

void AddHeader(xmlNode* budget, const Statement& row) {
  xmlNode* header = Add(budget, "BudgetHeader");
  Add(header, "BudgetCode", row.Text(0).c_str());
  Add(header, "BudgetType", TypeText(static_cast<int>(row.Number(1))));
  Add(header, "Currency", row.Text(2).c_str());
  Add(header, "AdministrativeOffice", row.Text(3).c_str());
  Add(header, "ChargeType", row.Text(4).c_str());
  Add(header, "BudgetHolder", row.Text(5).c_str());
  Add(header, "ApprovalReqd", row.Number(6) == 0 ? "No" : "Yes");
  Add(header, "WarnMultiples", row.Text(7).c_str());
}

void AddLines(xmlNode* budget, const std::vector<Line>& lines) {
  xmlNode* list = Add(budget, "BudgetLines");
  for (const Line& line : lines) {
    xmlNode* element = Add(list, "BudgetLine");
    Add(element, "EffectiveDate", DateText(line.start).c_str());
    Add(element, "ExpiryDate", DateText(line.end).c_str());
    for (int i = 0; i < kAmountCount; ++i) Add(element, kAmounts[i], NumberText(line.amounts[i]).c_str());
  }
}

xmlDoc* Document(sqlite3* database, const std::string& from, const std::string& to) {
  Tables tables = ReadTables(database);
  xmlDoc* document = xmlNewDoc(nullptr);
  xmlNode* root = xmlNewNode(nullptr, reinterpret_cast<const xmlChar*>("Budgets"));
  xmlDocSetRootElement(document, root);
  Statement budgets(database,
                    "SELECT BUDGETCODE, BUDGETTYPE, CURRENCYCODE, OFFICEDESCRIPTION, CHARGETYPECODE, USERID, "
                    "APPROVEINBUDGET, BUDGETWARNING FROM BUDGET WHERE BUDGETCODE BETWEEN ? AND ?");
  budgets.Bind(1, from);
  budgets.Bind(2, to);
  while (budgets.Step()) {
    const std::string code = budgets.Text(0);
    xmlNode* budget = Add(root, "Budget");
    AddHeader(budget, budgets);
    AddLines(budget, tables.lines[code]);
    xmlNode* children = Add(budget, "ChildBudgets");
    for (const std::string& name : tables.children[code]) {
      xmlNode* child = Add(children, "ChildBudget");
      Add(child, "BudgetCode", name.c_str());
      Add(child, "BudgetType", TypeText(tables.types[name]));
    }
  }
  return document;
}

std::string AttributeOf(xmlNode* element, const char* name) {
  xmlChar* text = xmlGetProp(element, reinterpret_cast<const xmlChar*>(name));
  std::string copy = Text(text);
  xmlFree(text);
  return copy;
}

// What one field of the records becomes: a column, and how its text is read.
struct Column {
  int index;
  enum class Kind { Text, Number, Date } kind;
};

GnmValue* ValueOf(const char* text, Column::Kind kind) {
  if (kind == Column::Kind::Text) return value_new_string(text);
  if (kind == Column::Kind::Number) return value_new_float(std::strtod(text, nullptr));
  int month = 0;
  int day = 0;
  int year = 0;
  if (std::sscanf(text, "%d/%d/%d", &month, &day, &year) != 3) Fail("no date");
  const GDate date = [&] {
    GDate made;
    g_date_clear(&made, 1);
    g_date_set_dmy(&made, static_cast<GDateDay>(day), static_cast<GDateMonth>(month),
                   static_cast<GDateYear>(year));
    return made;
  }();
  return value_new_float(go_date_g_to_serial(&date, nullptr));
}

// The records of a page from row 2 on, each with the formats of that row.
void FillSheet(Sheet* sheet, xmlNode* block) {
  std::unordered_map<std::string, Column> columns;
  int row = 1;
  for (xmlNode* child = block->children; child != nullptr; child = child->next) {
    const std::string place = AttributeOf(child, "B2BVALUEPOS");
    if (!place.empty()) {
      const std::string type = AttributeOf(child, "B2BVALUETYPE");
      columns[Text(child->name)] = {place[0] - 'A', type == "number" ? Column::Kind::Number
                                                    : type == "date" ? Column::Kind::Date
                                                                     : Column::Kind::Text};
      continue;
    }
    for (xmlNode* field = child->children; field != nullptr; field = field->next) {
      if (field->children == nullptr) continue;
      const Column& column = columns.at(Text(field->name));
      gnm_cell_set_value(sheet_cell_fetch(sheet, column.index, row),
                         ValueOf(Text(field->children->content), column.kind));
    }
    ++row;
  }
  for (const auto& [name, column] : columns) {
    GnmRange below;
    range_init(&below, column.index, 2, column.index, row);
    GnmStyle* style = gnm_style_dup(sheet_style_get(sheet, column.index, 1));
    sheet_style_set_range(sheet, &below, style);
  }
}

}  // namespace

void Export(const std::string& site, const std::string& from, const std::string& to,
            const std::string& target) {
  sqlite3* database = OpenDatabase(site);
  xmlDoc* pages = Transformed(Document(database, from, to), site + "/talvex/XSL/Budgets_Export.xsl");
  GOIOContext* io = StartLibrary();
  WorkbookView* view = OpenBook(site + "/talvex/XLT/Budgets_Export.XLT", io);
  if (view == nullptr) Fail("no template");
  Workbook* book = wb_view_get_workbook(view);
  xmlNode* page = Element(xmlDocGetRootElement(pages)->children, "Page");
  for (; page != nullptr; page = Element(page->next, "Page")) {
    Sheet* sheet = workbook_sheet_by_name(book, AttributeOf(page, "B2BWORKSHEET").c_str());
    FillSheet(sheet, Element(page->children, "Block"));
  }
  workbook_recalc_all(book);
  WriteBook(view, target, io);
}

}  // namespace talvex::bench
