// The workbook engine: starts talvex-sheet for every call and speaks with it.
#pragma once

#include <string>
#include <vector>

#include "adapters/spreadsheet/child_process.h"
#include "platform/spreadsheet/engine.h"

namespace talvex::adapters::spreadsheet {

// Holds nothing but where the program is; may be used by any number of threads at once.
class SheetEngine final : public platform::spreadsheet::Engine {
 public:
  explicit SheetEngine(std::string program, Limits limits = {});

  [[nodiscard]] platform::spreadsheet::Content Read(const std::string& path) const override;
  [[nodiscard]] platform::spreadsheet::Rewritten Rewrite(
      const std::string& path, const std::vector<platform::spreadsheet::Edit>& edits) const override;

 private:
  std::string program_;
  Limits limits_;
};

}  // namespace talvex::adapters::spreadsheet
