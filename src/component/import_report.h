// Importing a workbook, and telling row by row what came of it.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace talvex::component {

// One row of the workbook.
struct ImportedRow {
  enum class Kind { Budget, Line, Relation };
  enum class Outcome { Inserted, Changed, LeftAlone, Refused };

  Kind kind = Kind::Budget;
  std::string code;    // Of the budget; of a relation, the parent.
  std::string detail;  // A line's period, a relation's child; empty for a budget.
  std::string sheet;
  std::int32_t row = 0;  // 0 when the document does not tell.
  Outcome outcome = Outcome::LeftAlone;
  std::vector<std::string> messages;  // Why it was refused, and what was changed from what to what.
};

struct ImportReport {
  bool imported = false;  // As CreateXMLforImport answers.
  bool undone = false;    // Something voted to undo the transaction: no row is kept.
  std::string error;      // What stands in the error log.
  std::vector<ImportedRow> rows;
};

// Imports the workbook in the caller's transaction, as Talvex.Budget.CreateXMLforImport does, but writes no
// error log. `progress` is told the number of rows dealt with so far.
[[nodiscard]] ImportReport ImportWorkbook(const std::string& workbook, const std::string& user,
                                          const std::function<void(std::size_t)>& progress);

// The error log of an import, or of an export without a workbook's name; its name relative to the
// configuration directory.
[[nodiscard]] std::string WriteErrorLog(const std::string& error, const std::optional<std::string>& workbook);

struct ExportReport {
  std::string file;   // Relative to the configuration directory.
  std::string error;  // Empty when all went well.
};

// Exports the budgets of a range, as Talvex.Budget.CreateXMLforExport does, but writes no error log, and
// refuses, with a sentence in `error`, to write for a user in whose language the types of budgets have no
// names: such a workbook could not be imported again.
[[nodiscard]] ExportReport ExportBudgets(const std::string& from, const std::string& to,
                                         const std::string& user);

}  // namespace talvex::component
