#include "automation/transaction_context.h"
#include "unit/exchange/workbook_world.h"

namespace talvex::test {
namespace {

using automation::Date;
using automation::Variant;
using platform::spreadsheet::Property;
using platform::xml::XmlDocument;
using platform::xml::XmlDocumentRef;
using ::testing::HasSubstr;
namespace number = automation::error_number;

// The workbook's XML; the error text when there is none.
std::string Read(const std::string& path, const std::string& user = "d.reed") {
  XmlDocumentRef document;
  std::string error;
  BudgetExcel().TransformExcelToXML(path, document, error, user);
  EXPECT_EQ(document == nullptr, !error.empty());
  return document == nullptr ? error : document->Xml();
}

TEST(TransformExcelToXML, WritesEveryUsedCellOfEverySheet) {
  WithWorkbooks([](WorkbookWorld& world) {
    Sheet first = MadeSheet("Lines & more", {{"B3", "IT <\"&>"},
                                             {"A3", 1234.5},
                                             {"C3", Date::Civil(2026, 3, 15)},
                                             {"D3", Date::Civil(2026, 3, 15, 14, 30, 5)},
                                             {"E3", true},
                                             {"F3", false},
                                             {"G3", 1e20},
                                             {"A10", " x "},
                                             {"B10", "   "},
                                             {"C10", "\t"},
                                             {"IV65536", "corner é\r\nbelow"}});
    first.cells.Set(ReadAddress("H3"), {750.0, "=A3-\"<\""});
    first.cells.Set(ReadAddress("H4"), {std::string(" "), "=\" \""});
    first.cells.Set(ReadAddress("H5"), {std::string("#DIV/0!"), "=1/0"});
    first.cells.Set(ReadAddress("H6"), {Variant(), "=A1"});
    const std::string path = world.Make("~budgets & co.xls", {{first, {"Empty", {}}}, {}});
    EXPECT_EQ(Read(path),
              "<B2BEXCEL WorkBook=\"budgets &amp; co.xls\"><WorkSheet Name=\"Lines &amp; more\">"
              "<Cell Row=\"3\" Column=\"1\">1234.5</Cell>"
              "<Cell Row=\"3\" Column=\"2\">IT &lt;\"&amp;&gt;</Cell>"
              "<Cell Row=\"3\" Column=\"3\">3/15/2026</Cell>"
              "<Cell Row=\"3\" Column=\"4\">3/15/2026 14:30:05</Cell>"
              "<Cell Row=\"3\" Column=\"5\">True</Cell>"
              "<Cell Row=\"3\" Column=\"6\">False</Cell>"
              "<Cell Row=\"3\" Column=\"7\">1E+20</Cell>"
              "<Cell Row=\"3\" Column=\"8\" Formula=\"=A3-&quot;&lt;&quot;\">750</Cell>"
              "<Cell Row=\"5\" Column=\"8\" Formula=\"=1/0\">#DIV/0!</Cell>"
              "<Cell Row=\"10\" Column=\"1\"> x </Cell>"
              "<Cell Row=\"10\" Column=\"3\">\t</Cell>"
              "<Cell Row=\"65536\" Column=\"256\">corner é&#13;\nbelow</Cell>"
              "</WorkSheet><WorkSheet Name=\"Empty\"/></B2BEXCEL>");
  });
}

struct NameRow {
  const char* file;
  const char* name;
};

TEST(TransformExcelToXML, NamesTheWorkbookWithoutALeadingTilde) {
  const NameRow rows[] = {{"~a.xls", "a.xls"},    {"~~a.xls", "~a.xls"}, {"a~.XLS", "a~.XLS"},
                          {"a.b.xls", "a.b.xls"}, {"t.XLT", "t.XLT"},    {"t.xlt", "t.xlt"}};
  WithWorkbooks([&](WorkbookWorld& world) {
    for (const NameRow& row : rows) {
      EXPECT_EQ(Read(world.Make(row.file, {})), std::string("<B2BEXCEL WorkBook=\"") + row.name + "\"/>");
    }
  });
}

struct PropertyRow {
  const char* name;
  Variant value;
  const char* elements;
};

TEST(TransformExcelToXML, CopiesTheKnownDocumentProperties) {
  const PropertyRow rows[] = {
      {"B2B-DOCTYPE-ID", "1", "<DOCTYPE-ID>1</DOCTYPE-ID>"},
      {"B2B-SENDER", "somebody", "<SENDER>somebody</SENDER>"},
      {"B2B-CONTACT", "a;b", "<CONTACT>a</CONTACT><CONTACT>b</CONTACT>"},
      {"B2B-SHOW", ";a;", "<SHOW/><SHOW>a</SHOW><SHOW/>"},
      {"B2B-RECEIVER", "a; <b>", "<RECEIVER>a</RECEIVER><RECEIVER> &lt;b&gt;</RECEIVER>"},
      {"B2B-BUSINESSPARTNER", "é", "<BUSINESSPARTNER>é</BUSINESSPARTNER>"},
      {"B2B-BUS-PART-C", 12.5, "<BUS-PART-C>12.5</BUS-PART-C>"},
      {"B2B-BUS-PART-S", Date::Civil(2026, 3, 15), "<BUS-PART-S>3/15/2026</BUS-PART-S>"},
      {"B2B-USESDISTLIST", "1", "<USESDISTLIST/>"},
      {"B2B-USESDISTLIST", 1.0, "<USESDISTLIST/>"},
      {"B2B-USESDISTLIST", "0", ""},
      {"B2B-USESDISTLIST", "1;1", ""},
      {"B2B-USESDISTLIST", true, ""},
      {"B2B-SENDER", "", ""},
      {"b2b-sender", "x", "<SENDER>x</SENDER>"},
      {"B2B-ORIGINALNAME", "x", ""},
      {"SENDER", "x", ""},
  };
  WithWorkbooks([&](WorkbookWorld& world) {
    for (const PropertyRow& row : rows) {
      const std::string elements = row.elements;
      const std::string path = world.Make("a.xls", {{}, {Property{row.name, row.value, false}}});
      EXPECT_EQ(Read(path), elements.empty() ? "<B2BEXCEL WorkBook=\"a.xls\"/>"
                                             : "<B2BEXCEL WorkBook=\"a.xls\">" + elements + "</B2BEXCEL>")
          << row.name;
    }
    const std::string path = world.Make(
        "b.xls",
        {{{"S", {}}}, {{"B2B-SHOW", std::string("1"), false}, {"B2B-CONTACT", std::string("2"), true}}});
    EXPECT_EQ(Read(path),
              "<B2BEXCEL WorkBook=\"b.xls\"><SHOW>1</SHOW><CONTACT>2</CONTACT><WorkSheet Name=\"S\"/>"
              "</B2BEXCEL>");
  });
}

struct FailureRow {
  const char* file;
  std::int32_t number;  // What opening raises; 0 when it opens.
  std::string error;
};

TEST(TransformExcelToXML, EachFailureAddsOneLine) {
  const FailureRow rows[] = {
      {"a.xls", number::kFileNotFound, kNotOpened},
      {"a.XLS", number::kFileAccess, kNotOpened},
      {"a.xls", number::kOutOfMemory, kNotOpened},
      {"a.xls", number::kInternalError, kNotOpened},
      {"a.xls", number::kInvalidFileFormat, kNoWorkbook},
      {"a.XLT", number::kFileNotFound, kNoTemplate},
      {"a.xlt", number::kOutOfMemory, kNoTemplate},
      {"a.XLT", number::kInvalidFileFormat, kNoWorkbook},
      {"a.xlsx", 0, kNoWorkbook},
      {"xls", 0, kNoWorkbook},
      {"a.xls.txt", 0, kNoWorkbook},
  };
  WithWorkbooks([&](WorkbookWorld& world) {
    for (const FailureRow& row : rows) {
      world.Engine().read_failure.reset();
      if (row.number != 0)
        world.Engine().read_failure = automation::Error(row.number, "Engine", "the reason");
      EXPECT_EQ(Read(world.Make(row.file, {})), row.error) << row.file << " " << row.number;
    }
    EXPECT_EQ(Read(""), kNoWorkbook);
    EXPECT_EQ(Read(world.Path("folder.xls/name")), kNoWorkbook);
  });
}

TEST(TransformExcelToXML, AWorkbookThatXmlCannotHoldIsNotRead) {
  WithWorkbooks([](WorkbookWorld& world) {
    const std::string path = world.Make("a.xls", {{MadeSheet("S", {{"A1", "\x01"}})}, {}});
    EXPECT_EQ(Read(path), kNotRead);
  });
}

TEST(TransformExcelToXML, AFailureIsALineInTheLanguageOfTheUserAndAnEntryInTheLog) {
  WithWorkbooks([](WorkbookWorld& world) {
    const auto context = world.Test().Site().Host().Transactions().Begin();
    std::string error = "first";
    XmlDocumentRef document = std::make_shared<XmlDocument>();
    world.Engine().read_failure = automation::Error(number::kFileNotFound, "Engine", "there is no such file");
    BudgetExcel().TransformExcelToXML("a.xls", document, error, "nadine");
    EXPECT_EQ(error, "first\r\nLe classeur n'a pas pu être ouvert-");
    EXPECT_EQ(document, nullptr);
    ASSERT_EQ(world.Test().Record().log.size(), 1U);
    const std::string& text = world.Test().Record().log[0].text;
    EXPECT_THAT(text, HasSubstr(" METHOD: Talvex.BudgetExcel.TransformExcelToXML\r\n"));
    EXPECT_THAT(text, HasSubstr("there is no such file"));
    EXPECT_TRUE(context->Commit()) << "a failure that is collected votes for nothing";
  });
}

// The user is unknown to the real service.
TEST(TransformExcelToXML, TheLabelStandsInForATextThatCannotBeHad) {
  WithStandIns([](StoodIn&) { EXPECT_EQ(Read("a.doc", "nobody"), "\r\nSLBBU0345-"); });
}

TEST(TransformExcelToXML, FillsTheDocumentThatItIsGiven) {
  WithWorkbooks([](WorkbookWorld& world) {
    const auto given = std::make_shared<XmlDocument>();
    given->LoadXml("<before/>");
    XmlDocumentRef document = given;
    std::string error;
    BudgetExcel().TransformExcelToXML(world.Make("a.xls", {}), document, error, "d.reed");
    EXPECT_EQ(error, "");
    EXPECT_EQ(document, given);
    EXPECT_EQ(given->Xml(), "<B2BEXCEL WorkBook=\"a.xls\"/>");
  });
}

}  // namespace
}  // namespace talvex::test
