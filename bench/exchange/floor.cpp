// A whole export and a whole import of budgets by a program written for nothing else, on the same libraries
// and with the same stylesheets, template and schema; circle.py holds Talvex against it.
//
//   talvex_exchange_floor export SITE FROM TO TARGET   writes the budgets of the installation to a workbook
//   talvex_exchange_floor import SITE FILE             loads a workbook into the installation

#include "exchange/floor.h"

#include <libxml/parser.h>
#include <libxslt/xsltInternals.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace talvex::bench {

void Fail(const std::string& why) {
  std::fprintf(stderr, "%s\n", why.c_str());
  std::_Exit(1);
}

xmlDoc* Transformed(xmlDoc* document, const std::string& stylesheet) {
  xsltStylesheet* sheet = xsltParseStylesheetFile(Chars(stylesheet));
  if (sheet == nullptr) Fail("no stylesheet " + stylesheet);
  xmlDoc* result = xsltApplyStylesheet(sheet, document, nullptr);
  if (result == nullptr) Fail("no result of " + stylesheet);
  return result;
}

xmlNode* Element(xmlNode* first, const char* name) {
  for (xmlNode* node = first; node != nullptr; node = node->next) {
    if (node->type == XML_ELEMENT_NODE && std::strcmp(Text(node->name), name) == 0) return node;
  }
  return nullptr;
}

Statement::Statement(sqlite3* database, const char* sql) {
  if (sqlite3_prepare_v2(database, sql, -1, &statement_, nullptr) != SQLITE_OK)
    Fail(sqlite3_errmsg(database));
}

void Statement::Bind(int at, const std::string& text) {
  if (text.empty()) {
    sqlite3_bind_null(statement_, at);
  } else {
    sqlite3_bind_text(statement_, at, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
  }
}

bool Statement::Step() {
  const int outcome = sqlite3_step(statement_);
  if (outcome == SQLITE_ROW) return true;
  if (outcome != SQLITE_DONE) Fail(sqlite3_errmsg(sqlite3_db_handle(statement_)));
  sqlite3_reset(statement_);
  return false;
}

std::string Statement::Text(int column) const {
  const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
  return text == nullptr ? std::string() : text;
}

sqlite3* OpenDatabase(const std::string& site) {
  sqlite3* database = nullptr;
  if (sqlite3_open((site + "/talvex.db").c_str(), &database) != SQLITE_OK) Fail("no database in " + site);
  sqlite3_exec(database, "PRAGMA synchronous=FULL; PRAGMA foreign_keys=ON", nullptr, nullptr, nullptr);
  return database;
}

}  // namespace talvex::bench

int main(int count, char** words) {
  const std::string what = count < 2 ? "" : words[1];
  if (what == "export" && count == 6) {
    talvex::bench::Export(words[2], words[3], words[4], words[5]);
  } else if (what == "import" && count == 4) {
    talvex::bench::Import(words[2], words[3]);
  } else {
    return 2;
  }
  // Neither the trees nor the workbook need to be taken down.
  std::_Exit(0);
}
