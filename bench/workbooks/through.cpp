// Workbooks as the component reads and writes them: held in memory here, talvex-sheet started for every call.
//
//   talvex_workbook_through read FILE                   reads the workbook and looks at every cell
//   talvex_workbook_through write TEMPLATE TARGET ROWS  fills rows of 10 cells and writes the workbook

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "adapters/posix/system_files.h"
#include "adapters/spreadsheet/sheet_engine.h"
#include "platform/environment.h"
#include "platform/spreadsheet/workbook.h"
#include "workbooks/work.h"

namespace {

using namespace talvex;
using platform::spreadsheet::Workbook;

void SetUp() {
  auto environment = std::make_shared<platform::Environment>();
  environment->files = std::make_shared<adapters::posix::SystemFiles>();
  environment->spreadsheets = std::make_shared<adapters::spreadsheet::SheetEngine>(
      (std::filesystem::read_symlink("/proc/self/exe").parent_path() / "talvex-sheet").string());
  platform::Environment::SetForProcess(environment);
}

void Read(const char* path) {
  const auto book = Workbook::Open(path);
  std::size_t numbers = 0;
  std::size_t letters = 0;
  for (std::int32_t index = 1; index <= book->SheetCount(); ++index) {
    const auto sheet = book->Sheet(index);
    for (const auto& [row, cells] : sheet->UsedCells().ByRow()) {
      for (const auto& [column, cell] : cells) {
        if (!cell.value.IsString()) ++numbers;
        if (cell.value.IsString()) letters += cell.value.As<std::string>().size();
      }
    }
  }
  std::printf("%zu %zu\n", numbers, letters);
}

void Write(const char* template_path, const char* target, int rows) {
  const auto book = Workbook::FromTemplate(template_path);
  const auto sheet = book->Sheet(1);
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < bench::kColumns; ++column) {
      if (bench::IsText(column)) {
        sheet->SetValue(row + 2, column + 1, bench::TextOf(row, column));
      } else {
        sheet->SetValue(row + 2, column + 1, bench::NumberOf(row, column));
      }
    }
  }
  book->SaveAs(target, true);
}

}  // namespace

int main(int count, char** words) {
  if (count != 3 && count != 5) return 2;
  try {
    SetUp();
    if (count == 3) {
      Read(words[2]);
    } else {
      Write(words[2], words[3], std::atoi(words[4]));
    }
    return 0;
  } catch (const automation::Error& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
