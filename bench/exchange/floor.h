// A whole export and a whole import by hand, on the bare libraries: what the work itself costs.
#pragma once

#include <libxml/tree.h>
#include <libxslt/transform.h>
#include <libxslt/xsltutils.h>
#include <sqlite3.h>

#include <string>

namespace talvex::bench {

// Each ends the process when something fails, with a word on why.
void Export(const std::string& site, const std::string& from, const std::string& to,
            const std::string& target);
void Import(const std::string& site, const std::string& workbook);

[[noreturn]] void Fail(const std::string& why);

inline const xmlChar* Chars(const std::string& text) {
  return reinterpret_cast<const xmlChar*>(text.c_str());
}
inline const char* Text(const xmlChar* text) {
  return text == nullptr ? "" : reinterpret_cast<const char*>(text);
}

// The document that the stylesheet makes of another.
[[nodiscard]] xmlDoc* Transformed(xmlDoc* document, const std::string& stylesheet);

// The first child element of that name, or the next one after a node; null without one.
[[nodiscard]] xmlNode* Element(xmlNode* first, const char* name);

// One prepared statement.
class Statement {
 public:
  Statement(sqlite3* database, const char* sql);
  ~Statement() { sqlite3_finalize(statement_); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  // Null for an empty text.
  void Bind(int at, const std::string& text);
  void Bind(int at, double number) { sqlite3_bind_double(statement_, at, number); }
  void BindWhole(int at, int number) { sqlite3_bind_int(statement_, at, number); }
  // Whether there is a row (or another one).
  bool Step();
  void Reset() { sqlite3_reset(statement_); }
  [[nodiscard]] std::string Text(int column) const;
  [[nodiscard]] double Number(int column) const { return sqlite3_column_double(statement_, column); }

 private:
  sqlite3_stmt* statement_ = nullptr;
};

[[nodiscard]] sqlite3* OpenDatabase(const std::string& site);

}  // namespace talvex::bench
