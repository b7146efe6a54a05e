// The workbook library in the calling process, as the floors use it: opened, and written to a file.
#pragma once

// gnumeric.h comes first: the library's other headers need it.
#include <gnumeric.h>
// clang-format off
#include <cell.h>
#include <sheet.h>
#include <value.h>
#include <workbook-view.h>
#include <workbook.h>
#include <goffice/app/io-context.h>
// clang-format on

#include <string>

namespace talvex::bench {

// Starts the library with the plug-ins that the workbooks of the benchmarks need.
[[nodiscard]] GOIOContext* StartLibrary();
// Null for a file that is no workbook.
[[nodiscard]] WorkbookView* OpenBook(const std::string& path, GOIOContext* io);
void WriteBook(WorkbookView* view, const std::string& target, GOIOContext* io);

}  // namespace talvex::bench
