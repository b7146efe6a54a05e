#include "unit/exchange/workbook_world.h"

namespace talvex::test {
namespace {

namespace edit = platform::spreadsheet::edit;
using platform::spreadsheet::Edit;

// A block in row 5 with a code, an amount and a formula.
std::string Block(const std::string& records, const std::string& attributes = "",
                  const std::string& search = "") {
  return OnLines("<b B2BBLOCK='A5' " + attributes +
                 ">"
                 "<Code B2BVALUEPOS='A5' " +
                 search +
                 "/><Amount B2BVALUEPOS='B5' B2BVALUETYPE='number'/>"
                 "<Twice B2BVALUEPOS='C5' B2BVALUETYPE='formula' B2BVALUE='=B[%ROW%]*2'/>" +
                 records + "</b>");
}

std::string Record(const std::string& code, const std::string& amount) {
  return "<r><Code>" + code + "</Code><Amount>" + amount + "</Amount></r>";
}

const std::vector<CellText> kTemplate = {{"A4", "Code"}, {"F5", "=A5"}, {"G5", "EUR"}, {"A7", "Total"}};

struct Row {
  const char* what;
  std::string markup;
  std::vector<CellText> before;
  std::string after;
};

void Check(const std::vector<Row>& rows, EWriteMode mode) {
  WithWorkbooks([&](WorkbookWorld& world) {
    for (const Row& row : rows) {
      EXPECT_EQ(world.Written(row.markup, row.before, mode), row.after) << row.what;
    }
  });
}

TEST(MarkupBlocks, CreateFillsTheTemplateAndMovesWhatStandsBelow) {
  Check(
      {
          {"none", Block(""), kTemplate, "A4 \"Code\" | F5 =A5 | G5 \"EUR\" | A7 \"Total\""},
          {"one", Block(Record("a", "1")), kTemplate,
           "A4 \"Code\" | A5 \"a\" | B5 1 | C5 =B5*2 | F5 =A5 | G5 \"EUR\" | A7 \"Total\""},
          {"three", Block(Record("a", "1") + Record("=b", "2.5") + Record("c", "")), kTemplate,
           "A4 \"Code\" | A5 \"a\" | B5 1 | C5 =B5*2 | F5 =A5 | G5 \"EUR\" | "
           "A6 \"=b\" | B6 2.5 | C6 =B6*2 | F6 =A5 | G6 \"EUR\" | "
           "A7 \"c\" | C7 =B7*2 | F7 =A5 | G7 \"EUR\" | A9 \"Total\""},
          {"an element in another place, and none",
           Block("<r><Amount>1</Amount><Code>a</Code></r><r/>"),
           {},
           "A5 \"a\" | B5 1 | C5 =B5*2 | C6 =B6*2"},
          {"what the template has in a field's place goes",
           Block("<r/>"),
           {{"A5", "sample"}, {"B5", 9.0}},
           "C5 =B5*2"},
          {"records that are there count for nothing",
           Block(Record("new", "1")),
           {{"A5", "old"}, {"A6", "old"}},
           "A5 \"new\" | B5 1 | C5 =B5*2 | A6 \"old\""},
      },
      EWriteMode::Create);
}

// Each record begins as a copy of the first one; how often is copied grows with the logarithm.
TEST(MarkupBlocks, RoomIsMadeWithFewEdits) {
  WithWorkbooks([](WorkbookWorld& world) {
    std::string records;
    for (int count = 0; count < 8; ++count) records += Record("x", "1");
    const auto book = world.Write(Block(records), kTemplate);
    ASSERT_NE(book, nullptr) << world.Error();
    book->SaveAs(world.Path("out.xls"), true);
    std::vector<std::string> edits;
    for (const Edit& one : world.Engine().rewrites.at(0)) {
      if (const auto* inserted = std::get_if<edit::InsertRows>(&one)) {
        edits.push_back(std::to_string(inserted->count) + " before " + std::to_string(inserted->row));
      } else if (const auto* copied = std::get_if<edit::CopyRows>(&one)) {
        EXPECT_FALSE(copied->only_styles);
        edits.push_back(std::to_string(copied->count) + " of " + std::to_string(copied->row) + " to " +
                        std::to_string(copied->target));
      } else {
        edits.push_back("cells");
      }
    }
    EXPECT_EQ(edits, (std::vector<std::string>{"7 before 6", "1 of 5 to 6", "1 of 6 to 7", "2 of 6 to 8",
                                               "3 of 6 to 10", "cells"}));
  });
}

TEST(MarkupBlocks, PositionsAreThoseBeforeRoomWasMade) {
  const std::string two = "<r><x>1</x></r><r><x>2</x></r>";
  const std::string upper = "<b B2BBLOCK='A2'><x B2BVALUEPOS='A2'/>" + two + two + "</b>";
  const std::string lower =
      "<b B2BBLOCK='B5'><x B2BVALUEPOS='B5' B2BVALUE='[%VALUE%]@[%ADDRESS%]'/>" + two + "</b>";
  const std::string total =
      "<t B2BVALUEPOS='C7' B2BVALUE='[%ADDRESS%]' B2BLABEL='[%ROW%]' B2BLABELPOS='D1'/>";
  const std::string after =
      "D1 \"1\" | A2 \"1\" | A3 \"2\" | A4 \"1\" | A5 \"2\" | A6 \"below\" | B8 \"1@B8\" | B9 \"2@B9\" | "
      "C11 \"C11\"";
  Check(
      {
          {"downwards", OnLines(upper + lower + total), {{"A3", "below"}}, after},
          {"upwards", OnLines(total + lower + upper), {{"A3", "below"}}, after},
      },
      EWriteMode::Create);
}

TEST(MarkupBlocks, ABlockOfSeveralRowsRepeatsThemAll) {
  const std::string card =
      "<b B2BBLOCK='A2:C3'><n B2BVALUEPOS='B2' B2BLABEL='No. [%VALUE%]' B2BLABELPOS='A2'/>"
      "<a B2BVALUEPOS='B3' B2BVALUETYPE='number' B2BLABEL='Amounts' B2BLABELPOS='A1'/>"
      "<r><n>one</n><a>1</a></r><r><n>two</n><a>2</a></r></b>";
  Check({{"cards",
          OnLines(card),
          {{"A3", "Amount:"}, {"A4", "below"}},
          "A1 \"Amounts\" | A2 \"No. one\" | B2 \"one\" | A3 \"Amount:\" | B3 1 | "
          "A4 \"No. two\" | B4 \"two\" | A5 \"Amount:\" | B5 2 | A6 \"below\""}},
        EWriteMode::Create);
}

TEST(MarkupBlocks, ScatteredRecordsStandWhereTheySay) {
  const std::string fields =
      "<x B2BVALUEPOS='B2'/><y B2BVALUEPOS='C3' B2BVALUETYPE='formula' B2BVALUE='=B[%ROW%]'/>";
  const std::string block = "<b B2BBLOCK='B2:C3' B2BINDEXMODE='Scattered'>" + fields;
  const std::string two = "<r B2BBLOCK='B2'><x>1</x></r><r B2BBLOCK='e7'><x>2</x></r>";
  const std::string after = "B2 \"1\" | C3 =B3 | D3 \"kept\" | E7 \"2\" | F8 =B8";
  const std::vector<CellText> before = {{"D3", "kept"}};
  for (const EWriteMode mode : {EWriteMode::Create, EWriteMode::Append, EWriteMode::Update}) {
    Check({{"scattered", OnLines(block + two + "</b>"), before, after}}, mode);
  }
  Check(
      {
          {"by number",
           OnLines("<b B2BBLOCK='A1' B2BINDEXMODE='20'><x B2BVALUEPOS='A1'/>"
                   "<r B2BBLOCK='C9'><x>1</x></r></b>"),
           {},
           "C9 \"1\""},
          {"no place", OnLines(block + "<r><x>1</x></r></b>"), {}, kNoPosition},
          {"off the sheet", OnLines(block + "<r B2BBLOCK='A65536'/></b>"), {}, kNoPosition},
          {"a place in a sequence", Block("<r B2BBLOCK='A9'/>"), {}, kNoPosition},
          {"unknown mode", Block("", "B2BINDEXMODE='30'"), {}, kNotWritten},
      },
      EWriteMode::Create);
}

TEST(MarkupBlocks, AppendGoesBelowWhatIsThere) {
  const std::string two = Record("c", "3") + Record("d", "4");
  Check(
      {
          {"nothing there", Block(two), kTemplate,
           "A4 \"Code\" | A5 \"c\" | B5 3 | C5 =B5*2 | F5 =A5 | G5 \"EUR\" | "
           "A6 \"d\" | B6 4 | C6 =B6*2 | F6 =A5 | G6 \"EUR\" | A8 \"Total\""},
          {"two there",
           Block(two),
           {{"A5", "a"}, {"B5", 1.0}, {"C5", "=B5*2"}, {"B6", 2.0}, {"A8", "Total"}},
           "A5 \"a\" | B5 1 | C5 =B5*2 | B6 2 | A7 \"c\" | B7 3 | C7 =B7*2 | "
           "A8 \"d\" | B8 4 | C8 =B8*2 | A10 \"Total\""},
          {"a formula alone is no record",
           Block(Record("c", "3")),
           {{"C5", "=B5*2"}},
           "A5 \"c\" | B5 3 | C5 =B5*2"},
          {"no records", Block(""), {{"A5", "a"}}, "A5 \"a\""},
      },
      EWriteMode::Append);
}

TEST(MarkupBlocks, UpdateReplacesTheRecordsThatAreFound) {
  const std::vector<CellText> three = {{"A5", "a"}, {"B5", 1.0}, {"A6", "b"},    {"B6", 2.0},
                                       {"A7", "B"}, {"B7", 3.0}, {"A9", "Total"}};
  const auto on_code = [](const std::string& records) {
    return Block(records, "", "B2BSEARCHOPTION='Equals'");
  };
  const auto on_amount = [](const std::string& option, const std::string& record) {
    return OnLines(
        "<b B2BBLOCK='A5'><Code B2BVALUEPOS='A5'/><Amount B2BVALUEPOS='B5' "
        "B2BVALUETYPE='number' B2BSEARCHOPTION='" +
        option + "'/>" + record + "</b>");
  };
  Check(
      {
          {"one", on_code(Record("A", "9")), three,
           "A5 \"A\" | B5 9 | A6 \"b\" | B6 2 | A7 \"B\" | B7 3 | A9 \"Total\""},
          {"several", on_code("<r><Code>b</Code><Amount/></r>"), three,
           "A5 \"a\" | B5 1 | A6 \"b\" | A7 \"b\" | A9 \"Total\""},
          {"what the record lacks stays", on_code("<r><Code>a</Code></r>"), three,
           "A5 \"a\" | B5 1 | A6 \"b\" | B6 2 | A7 \"B\" | B7 3 | A9 \"Total\""},
          {"none is appended", on_code(Record("c", "4")), three,
           "A5 \"a\" | B5 1 | A6 \"b\" | B6 2 | A7 \"B\" | B7 3 | A8 \"c\" | B8 4 | C8 =B8*2 | A10 "
           "\"Total\""},
          {"what is appended is not found",
           on_code(Record("c", "4") + Record("c", "5")),
           {},
           "A5 \"c\" | B5 4 | C5 =B5*2 | A6 \"c\" | B6 5 | C6 =B6*2"},
          {"greater", on_amount("GreaterThan", "<r><Code>x</Code><Amount>1</Amount></r>"), three,
           "A5 \"a\" | B5 1 | A6 \"x\" | B6 1 | A7 \"x\" | B7 1 | A9 \"Total\""},
          {"less", on_amount("20", "<r><Code>x</Code><Amount>3</Amount></r>"), three,
           "A5 \"x\" | B5 3 | A6 \"x\" | B6 3 | A7 \"B\" | B7 3 | A9 \"Total\""},
          {"equal numbers", on_amount("equals", "<r><Code>x</Code><Amount>2.0</Amount></r>"), three,
           "A5 \"a\" | B5 1 | A6 \"x\" | B6 2 | A7 \"B\" | B7 3 | A9 \"Total\""},
          {"a text is no number",
           on_amount("Equals", "<r><Amount>2</Amount></r>"),
           {{"B5", "2"}},
           "B5 \"2\" | B6 2"},
          {"an empty value finds nothing",
           on_code("<r><Code/><Amount>7</Amount></r>"),
           {{"B5", 1.0}},
           "B5 1 | B6 7 | C6 =B6*2"},
          {"no field to search by", Block(Record("a", "1")), three, kNotWritten},
          {"unknown option", on_amount("Near", ""), three, kNotWritten},
          {"an option without a field",
           OnLines("<b B2BBLOCK='A5'><x B2BSEARCHOPTION='Equals'/></b>"),
           {},
           kNoPosition},
          {"a formula holds no data",
           OnLines(
               "<b B2BBLOCK='A5'><x B2BVALUEPOS='A5' B2BVALUETYPE='formula' B2BSEARCHOPTION='Equals'/></b>"),
           {},
           kNotWritten},
      },
      EWriteMode::Update);
}

TEST(MarkupBlocks, SeveralFieldsToSearchByMustAllAgree) {
  const std::string block =
      "<b B2BBLOCK='A5'><Code B2BVALUEPOS='A5' B2BSEARCHOPTION='Equals'/>"
      "<Day B2BVALUEPOS='B5' B2BVALUETYPE='date' B2BSEARCHOPTION='LessThan'/>"
      "<Open B2BVALUEPOS='C5' B2BVALUETYPE='boolean' B2BSEARCHOPTION='Equals'/>"
      "<Note B2BVALUEPOS='D5'/>"
      "<r><Code>a</Code><Day>6/1/2026</Day><Open>yes</Open><Note>hit</Note></r></b>";
  const automation::Date early = automation::Date::Civil(2026, 1, 1);
  const automation::Date late = automation::Date::Civil(2026, 6, 1);
  Check({{"three keys",
          OnLines(block),
          {{"A5", "a"},
           {"B5", early},
           {"C5", true},
           {"A6", "a"},
           {"B6", late},
           {"C6", true},
           {"A7", "a"},
           {"B7", early},
           {"C7", false},
           {"A8", "b"},
           {"B8", early},
           {"C8", true}},
          "A5 \"a\" | B5 6/1/2026 | C5 True | D5 \"hit\" | A6 \"a\" | B6 6/1/2026 | C6 True | "
          "A7 \"a\" | B7 1/1/2026 | C7 False | A8 \"b\" | B8 1/1/2026 | C8 True"}},
        EWriteMode::Update);
}

TEST(MarkupBlocks, BlocksThatDoNotFitAreRefused) {
  const std::string one = "<x B2BVALUEPOS='A5'/><r><x>1</x></r>";
  std::string beyond = "<b B2BBLOCK='A65535'><x B2BVALUEPOS='A65535'/>";
  for (int count = 0; count < 3; ++count) beyond += "<r><x>1</x></r>";
  Check(
      {
          {"no address", OnLines("<b B2BBLOCK=''>" + one + "</b>"), {}, kNoPosition},
          {"a range backwards", OnLines("<b B2BBLOCK='A5:A4'>" + one + "</b>"), {}, kNoPosition},
          {"a field above", OnLines("<b B2BBLOCK='A6'>" + one + "</b>"), {}, kNoPosition},
          {"a field below", OnLines("<b B2BBLOCK='A3:A4'>" + one + "</b>"), {}, kNoPosition},
          {"an unknown element", Block("<r><Cod>a</Cod></r>"), {}, kNotWritten},
          {"two fields of a name",
           OnLines("<b B2BBLOCK='A5'><x B2BVALUEPOS='B5'/>" + one + "</b>"),
           {},
           kNotWritten},
          {"a value of another type", Block(Record("a", "b")), {}, kNotWritten},
          {"row 65,537", OnLines(beyond + "</b>"), {}, kNoPosition},
          {"pushed off the sheet",
           Block(Record("a", "1") + Record("b", "2")),
           {{"A65536", "last"}},
           kNoPosition},
          {"shared rows",
           OnLines("<b B2BBLOCK='A4:A5'><y B2BVALUEPOS='A4'/></b><b B2BBLOCK='A5'>" + one + "</b>"),
           {},
           kNoPosition},
      },
      EWriteMode::Create);
}

TEST(MarkupBlocks, TheLastRowOfASheetCanBeFilled) {
  const std::string block =
      "<b B2BBLOCK='A65535'><x B2BVALUEPOS='A65535'/><r><x>1</x></r><r><x>2</x></r></b>";
  Check({{"two", OnLines(block), {}, "A65535 \"1\" | A65536 \"2\""}}, EWriteMode::Create);
}

}  // namespace
}  // namespace talvex::test
