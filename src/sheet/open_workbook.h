// Opening workbook files.
#pragma once

#include "sheet/library.h"

// gnumeric.h comes first: the library's other headers need it.
#include <gnumeric.h>
// clang-format off
#include <workbook-view.h>
#include <workbook.h>
// clang-format on

#include <string>

namespace talvex::sheet {

class OpenWorkbook {
 public:
  // Reads the .xls file; raises Refusal for anything else.
  explicit OpenWorkbook(const std::string& path);

  [[nodiscard]] Workbook* Book() const { return wb_view_get_workbook(view_.get()); }
  [[nodiscard]] WorkbookView* View() const { return view_.get(); }

 private:
  Held<WorkbookView> view_;
};

}  // namespace talvex::sheet
