// Workbooks as Talvex.BudgetExcel reads and writes them, with all that it needs around it.
//
//   talvex_workbook_budget_excel read FILE                     turns the workbook into XML
//   talvex_workbook_budget_excel markup ROWS                   prints what the next one writes
//   talvex_workbook_budget_excel write TEMPLATE TARGET MARKUP  fills the rows from marked-up XML and saves
//   them

#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "adapters/libxml2/xml_engine.h"
#include "adapters/posix/system_files.h"
#include "adapters/spreadsheet/sheet_engine.h"
#include "automation/conversions.h"
#include "exchange/budget_excel.h"
#include "platform/environment.h"
#include "workbooks/work.h"

namespace {

using namespace talvex;

void SetUp() {
  auto environment = std::make_shared<platform::Environment>();
  environment->files = std::make_shared<adapters::posix::SystemFiles>();
  environment->xml = std::make_shared<adapters::libxml2::XmlEngine>();
  environment->spreadsheets = std::make_shared<adapters::spreadsheet::SheetEngine>(
      (std::filesystem::read_symlink("/proc/self/exe").parent_path() / "talvex-sheet").string());
  platform::Environment::SetForProcess(environment);
}

std::string Markup(int rows) {
  std::string xml = "<x B2BWORKSHEET=\"Lines\"><b B2BBLOCK=\"A2\">";
  for (int column = 0; column < bench::kColumns; ++column) {
    const std::string letter(1, static_cast<char>('A' + column));
    xml += "<c" + std::to_string(column) + " B2BVALUEPOS=\"" + letter + "2\" B2BVALUETYPE=\"" +
           (bench::IsText(column) ? "text" : "number") + "\"/>";
  }
  for (int row = 0; row < rows; ++row) {
    xml += "<r>";
    for (int column = 0; column < bench::kColumns; ++column) {
      const std::string name = "c" + std::to_string(column);
      const std::string text = bench::IsText(column) ? bench::TextOf(row, column)
                                                     : automation::ToText(bench::NumberOf(row, column));
      xml.append("<").append(name).append(">").append(text).append("</").append(name).append(">");
    }
    xml += "</r>";
  }
  return xml + "</b></x>";
}

// The error text; empty when it went well.
std::string Read(const char* path) {
  std::shared_ptr<platform::xml::XmlDocument> document;
  std::string error;
  BudgetExcel().TransformExcelToXML(path, document, error, "");
  if (error.empty()) std::printf("%s\n", document->DocumentElement()->Name().c_str());
  return error;
}

std::string Write(const char* template_path, const char* target, const char* markup) {
  const std::string xml = platform::Environment::Current().files->Read(markup);
  std::string error;
  BudgetExcel().TransformXMLToExcel(xml, EWriteMode::Create, 0, true, error, "", template_path, target);
  return error;
}

}  // namespace

int main(int count, char** words) {
  mallopt(M_MXFAST, 0);  // As the program talvex does.
  const std::string_view work = count > 1 ? words[1] : "";
  SetUp();
  std::string error = "The source says how to call this program";
  if (work == "markup" && count == 3) {
    error.clear();
    std::printf("%s", Markup(std::atoi(words[2])).c_str());
  }
  if (work == "read" && count == 3) error = Read(words[2]);
  if (work == "write" && count == 5) error = Write(words[2], words[3], words[4]);
  if (!error.empty()) std::fprintf(stderr, "%s\n", error.c_str());
  return error.empty() ? 0 : 1;
}
