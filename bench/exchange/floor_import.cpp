#include <libxml/xmlschemas.h>

#include <cmath>
#include <cstdlib>
#include <string>

#include "exchange/floor.h"
#include "workbooks/library.h"

// clang-format off
#include <gnm-format.h>
#include <ranges.h>
// clang-format on

namespace talvex::bench {

namespace {

const xmlChar* Name(const char* name) { return reinterpret_cast<const xmlChar*>(name); }

std::string CellText(const GnmCell* cell) {
  const GnmValue* value = cell->value;
  if (VALUE_IS_STRING(value)) return value_peek_string(value);
  if (!VALUE_IS_FLOAT(value)) return {};
  const auto number = static_cast<double>(value_get_as_float(value));
  char text[32];
  if (gnm_format_is_date_for_value(gnm_cell_get_format(cell), value) > 0) {
    GDate date;
    g_date_clear(&date, 1);
    go_date_serial_to_g(&date, static_cast<int>(std::lround(number)), nullptr);
    std::snprintf(text, sizeof text, "%d/%d/%d", static_cast<int>(g_date_get_month(&date)),
                  static_cast<int>(g_date_get_day(&date)), static_cast<int>(g_date_get_year(&date)));
  } else {
    std::snprintf(text, sizeof text, "%.15g", number);
  }
  return text;
}

GnmValue* AddCell(const GnmCellIter* at, gpointer parent) {
  const std::string text = CellText(at->cell);
  if (text.empty()) return nullptr;
  xmlNode* element = xmlNewTextChild(static_cast<xmlNode*>(parent), nullptr, Name("Cell"), Chars(text));
  xmlNewProp(element, Name("Row"), Chars(std::to_string(at->pp.eval.row + 1)));
  xmlNewProp(element, Name("Column"), Chars(std::to_string(at->pp.eval.col + 1)));
  return nullptr;
}

xmlDoc* Document(const std::string& workbook) {
  WorkbookView* view = OpenBook(workbook, StartLibrary());
  if (view == nullptr) Fail("no workbook");
  Workbook* book = wb_view_get_workbook(view);
  xmlDoc* document = xmlNewDoc(nullptr);
  xmlNode* root = xmlNewNode(nullptr, Name("B2BEXCEL"));
  xmlDocSetRootElement(document, root);
  for (int index = 0; index < workbook_sheet_count(book); ++index) {
    Sheet* sheet = workbook_sheet_by_index(book, index);
    xmlNode* element = xmlNewChild(root, nullptr, Name("WorkSheet"), nullptr);
    xmlNewProp(element, Name("Name"), Name(sheet->name_unquoted));
    const GnmRange used = sheet_get_cells_extent(sheet);
    sheet_foreach_cell_in_range(sheet, CELL_ITER_IGNORE_BLANK, &used, &AddCell, element);
  }
  return document;
}

void Validate(xmlDoc* document, const std::string& path) {
  xmlSchemaParserCtxt* parser = xmlSchemaNewParserCtxt(path.c_str());
  xmlSchema* schema = xmlSchemaParse(parser);
  if (schema == nullptr) Fail("no schema");
  if (xmlSchemaValidateDoc(xmlSchemaNewValidCtxt(schema), document) != 0) Fail("no import document");
}

std::string ChildText(const xmlNode* element, const char* name) {
  const xmlNode* child = Element(element->children, name);
  if (child == nullptr || child->children == nullptr) return {};
  return Text(child->children->content);
}

std::string CodeOf(const xmlNode* element) { return Text(element->properties->children->content); }

// "3/15/2026" as it is stored.
std::string Stored(const std::string& date) {
  int month = 0;
  int day = 0;
  int year = 0;
  if (std::sscanf(date.c_str(), "%d/%d/%d", &month, &day, &year) != 3) return {};
  char text[40];
  std::snprintf(text, sizeof text, "%04d-%02d-%02dT00:00:00", year, month, day);
  return text;
}

double Number(const std::string& text) { return std::strtod(text.c_str(), nullptr); }

// Each kind of row is looked for; one that is there is changed, another one added.
class Rows {
 public:
  explicit Rows(sqlite3* database) : database_(database) {}

  void WriteBudget(const xmlNode* header) {
    const std::string code = CodeOf(header);
    find_budget_.Bind(1, code);
    const bool known = find_budget_.Step();
    find_budget_.Reset();
    Statement& write = known ? change_budget_ : add_budget_;
    write.Bind(1, ChildText(header, "ChargeType"));
    write.Bind(2, ChildText(header, "BudgetHolder"));
    const std::string warning = ChildText(header, "WarnMultiples");
    if (warning.empty()) {
      write.Bind(3, std::string());
    } else {
      write.Bind(3, Number(warning));
    }
    write.Bind(4, code);
    if (!known) {
      const std::string type = ChildText(header, "BudgetType");
      write.Bind(5, ChildText(header, "Currency"));
      write.Bind(6, ChildText(header, "AdministrativeOffice"));
      write.BindWhole(7, ChildText(header, "ApprovalReqd") == "Yes" ? 1 : 0);
      write.BindWhole(8, type == "STANDARD" ? 1 : 2);
    }
    write.Step();
  }

  void WriteLine(const xmlNode* line) {
    const std::string code = CodeOf(line);
    const std::string start = Stored(ChildText(line, "EffectiveDate"));
    const std::string end = Stored(ChildText(line, "ExpiryDate"));
    const double amount = Number(ChildText(line, "BudgetAmnt"));
    find_line_.Bind(1, code);
    find_line_.Bind(2, start);
    find_line_.Bind(3, end);
    if (find_line_.Step()) {
      const double available = amount - find_line_.Number(1);
      change_line_.Bind(1, amount);
      change_line_.Bind(2, available);
      change_line_.Bind(3, amount == 0 ? 0 : available / amount);
      change_line_.Bind(4, find_line_.Number(0));
      find_line_.Reset();
      change_line_.Step();
      return;
    }
    add_line_.Bind(1, code);
    add_line_.Bind(2, start);
    add_line_.Bind(3, end);
    add_line_.Bind(4, amount);
    add_line_.Bind(5, amount == 0 ? 0 : 1.0);
    add_line_.Step();
  }

  void WriteRelation(const xmlNode* relation) {
    const std::string parent = CodeOf(relation);
    const std::string child = ChildText(relation, "ChildBudget");
    find_relation_.Bind(1, parent);
    find_relation_.Bind(2, child);
    if (find_relation_.Step()) return find_relation_.Reset();
    add_relation_.Bind(1, parent);
    add_relation_.Bind(2, child);
    add_relation_.Step();
  }

 private:
  sqlite3* database_;
  Statement find_budget_{database_, "SELECT 1 FROM BUDGET WHERE BUDGETCODE = ?"};
  Statement change_budget_{
      database_, "UPDATE BUDGET SET CHARGETYPECODE = ?, USERID = ?, BUDGETWARNING = ? WHERE BUDGETCODE = ?"};
  Statement add_budget_{
      database_,
      "INSERT INTO BUDGET (CHARGETYPECODE, USERID, BUDGETWARNING, BUDGETCODE, CURRENCYCODE, "
      "OFFICEDESCRIPTION, APPROVEINBUDGET, BUDGETTYPE) VALUES (?, ?, ?, ?, ?, ?, ?, ?)"};
  Statement find_line_{
      database_,
      "SELECT ID, ifnull(USEDNOTAPPROVEDAMNT, 0) + ifnull(USEDAPPROVEDAMNT, 0) + ifnull(USEDSENDAMNT, 0) + "
      "ifnull(USEDRECEIVEDAMNT, 0) + ifnull(USEDCLOSEDAMNT, 0) FROM BUDGETLINES "
      "WHERE BUDGETCODE = ? AND STARTDATE = ? AND ENDDATE IS ?"};
  Statement change_line_{
      database_, "UPDATE BUDGETLINES SET BUDGETAMNT = ?, AVAILABLEAMNT = ?, AVAILABLEPERC = ? WHERE ID = ?"};
  Statement add_line_{database_,
                      "INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT, AVAILABLEAMNT, "
                      "AVAILABLEPERC) VALUES (?1, ?2, ?3, ?4, ?4, ?5)"};
  Statement find_relation_{database_,
                           "SELECT 1 FROM BUDGETRELATIONS WHERE PARENTBUDGET = ? AND CHILDBUDGET = ?"};
  Statement add_relation_{database_, "INSERT INTO BUDGETRELATIONS (PARENTBUDGET, CHILDBUDGET) VALUES (?, ?)"};
};

}  // namespace

void Import(const std::string& site, const std::string& workbook) {
  xmlDoc* document = Transformed(Document(workbook), site + "/talvex/XSL/Budgets_Import.xslt");
  Validate(document, site + "/talvex/XSD/Bugets_Import1.xsd");
  sqlite3* database = OpenDatabase(site);
  sqlite3_exec(database, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
  Rows rows(database);
  xmlNode* first = xmlDocGetRootElement(document)->children;
  const auto each = [&](const char* name, void (Rows::*write)(const xmlNode*)) {
    for (xmlNode* node = Element(first, name); node != nullptr; node = Element(node->next, name))
      (rows.*write)(node);
  };
  each("BudgetHeader", &Rows::WriteBudget);
  each("BudgetLine", &Rows::WriteLine);
  each("BudgetRelation", &Rows::WriteRelation);
  if (sqlite3_exec(database, "COMMIT", nullptr, nullptr, nullptr) != SQLITE_OK) Fail("no commit");
}

}  // namespace talvex::bench
