// The engine that reads and writes workbook files.
#pragma once

#include <string>
#include <vector>

#include "platform/spreadsheet/content.h"

namespace talvex::platform::spreadsheet {

// A workbook with the edits made.
struct Rewritten {
  std::string file;             // The bytes of the .xls file.
  std::vector<Sheet> formulas;  // Of every sheet the cells with a formula, calculated anew.
};

// Reads .xls workbooks and templates. It keeps nothing between calls and never writes to the file system.
// Both operations raise 53 (no such file), 75 (a directory, or not to be read), 321 (no workbook: empty, of
// another kind, protected by a password, or damaged), 7 (the file wants more memory or time than is allowed)
// or 51 (the engine itself failed), naming the path.
class Engine {
 public:
  virtual ~Engine() = default;

  [[nodiscard]] virtual Content Read(const std::string& path) const = 0;

  // The workbook of that file with the edits, in their order, and every formula calculated anew. Raises 5
  // beside those above for an edit that cannot be made, such as a formula that cannot be read.
  [[nodiscard]] virtual Rewritten Rewrite(const std::string& path, const std::vector<Edit>& edits) const = 0;
};

}  // namespace talvex::platform::spreadsheet
