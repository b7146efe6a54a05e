#include "unit/exchange/workbook_world.h"

namespace talvex::test {
namespace {

struct ValueRow {
  const char* type;
  const char* text;
  std::string cell;  // Or the line of the failure.
};

TEST(MarkupValues, LandAsTheirTypes) {
  const ValueRow rows[] = {
      {"text", "IT-HW", "B2 \"IT-HW\""},
      {"TEXT", "12", "B2 \"12\""},
      {"text", "  x ", "B2 \"  x \""},
      {"text", "=1+1", "B2 \"=1+1\""},
      {"text", "+1+1", "B2 \"+1+1\""},
      {"text", "-1+1", "B2 \"-1+1\""},
      {"text", "@SUM(1)", "B2 \"@SUM(1)\""},
      {"text", "[%ROW%] [%nothing", "B2 \"[%ROW%] [%nothing\""},
      {"text", "", ""},
      {"number", "1234.5", "B2 1234.5"},
      {"number", " -1,234.5 ", "B2 -1234.5"},
      {"number", "1E3", "B2 1000"},
      {"number", "", ""},
      {"number", "12a", kNotWritten},
      {"number", "=1+1", kNotWritten},
      {"date", "3/15/2026", "B2 3/15/2026"},
      {"date", "2026-03-15T14:30:05", "B2 3/15/2026 14:30:05"},
      {"date", "2/30/2026", kNotWritten},
      {"boolean", "True", "B2 True"},
      {"boolean", "yes", "B2 True"},
      {"boolean", "FALSE", "B2 False"},
      {"boolean", "No", "B2 False"},
      {"boolean", "1", kNotWritten},
      {"formula", "=A1*2", "B2 =A1*2"},
      {"formula", "SUM(A1:A[%ROW%])", "B2 =SUM(A1:A2)"},
      {"formula", "", ""},
      {"formula", "=[%VALUE%]", kNotFilledIn},
      {"money", "1", kNotWritten},
      {"1", "1", kNotWritten},
  };
  WithWorkbooks([&](WorkbookWorld& world) {
    for (const ValueRow& row : rows) {
      const std::string xml =
          OnLines(std::string("<v B2BVALUEPOS='B2' B2BVALUETYPE='") + row.type + "'>" + row.text + "</v>");
      EXPECT_EQ(world.Written(xml), row.cell) << row.type << " " << row.text;
    }
  });
}

TEST(MarkupValues, AnEmptyTextEmptiesTheCell) {
  WithWorkbooks([](WorkbookWorld& world) {
    for (const char* type : {"text", "number", "date", "boolean", "formula"}) {
      const std::string xml = OnLines(std::string("<v B2BVALUEPOS='B2' B2BVALUETYPE='") + type + "'/>");
      EXPECT_EQ(world.Written(xml, {{"A1", "kept"}, {"B2", "gone"}}), "A1 \"kept\"") << type;
    }
  });
}

struct MarkupRow {
  const char* markup;  // On the sheet "Lines", which has "old" in A1.
  std::string cells;
};

TEST(MarkupValues, GoWhereTheMarkersSay) {
  const MarkupRow rows[] = {
      {"", "A1 \"old\""},
      {"<v B2BVALUEPOS='a1'>new</v>", "A1 \"new\""},
      {"<v B2BVALUEPOS='$IV$65536'>x</v>", "A1 \"old\" | IV65536 \"x\""},
      {"<v B2BVALUEPOS='B1' B2BVALUE='y'>x</v>", "A1 \"old\" | B1 \"y\""},
      {"<v B2BVALUEPOS='B1' B2BVALUE=''>x</v>", "A1 \"old\""},
      {"<v B2BVALUEPOS='B1'>x</v><v B2BVALUEPOS='B1'>later</v>", "A1 \"old\" | B1 \"later\""},
      {"<v B2BLABEL='=Title' B2BLABELPOS='B1'/>", "A1 \"old\" | B1 \"=Title\""},
      {"<v B2BLABEL='T' B2BLABELPOS='B1' B2BVALUEPOS='C1'>x</v>", "A1 \"old\" | B1 \"T\" | C1 \"x\""},
      {"<a><b><v B2BVALUEPOS='B1'>deep</v></b></a>", "A1 \"old\" | B1 \"deep\""},
      {"<o B2BWORKSHEET='LINES'><v B2BVALUEPOS='B1'>x</v></o>", "A1 \"old\" | B1 \"x\""},
      {"<o B2BWORKSHEET='Other'><v B2BVALUEPOS='B1'>x</v></o>", "A1 \"old\""},
  };
  WithWorkbooks([&](WorkbookWorld& world) {
    for (const MarkupRow& row : rows) {
      EXPECT_EQ(world.Written(OnLines(row.markup), {{"A1", "old"}}), row.cells) << row.markup;
    }
  });
}

TEST(MarkupValues, ASheetThatIsNotThereIsAdded) {
  WithWorkbooks([](WorkbookWorld& world) {
    const auto book = world.Write(
        "<m><a B2BWORKSHEET='New'><v B2BVALUEPOS='A1'>1</v></a>"
        "<a B2BWORKSHEET='NEW'><v B2BVALUEPOS='A2'>2</v></a></m>");
    ASSERT_NE(book, nullptr) << world.Error();
    EXPECT_EQ(book->SheetCount(), 2);
    EXPECT_EQ(Shown(*book, "New"), "A1 \"1\" | A2 \"2\"");
  });
}

TEST(MarkupValues, XmlWithoutMarkersChangesNothing) {
  const char* const rows[] = {
      "<a/>",
      "<a B2BWORKSHEET='Unknown'><b>text</b></a>",
      "<B2BEXCEL WorkBook='x.xls'><WorkSheet Name='Lines'><Cell Row='1' Column='1'>new</Cell></WorkSheet>"
      "</B2BEXCEL>",
  };
  WithWorkbooks([&](WorkbookWorld& world) {
    for (const char* xml : rows) {
      const auto book = world.Write(xml, {{"A1", "old"}});
      ASSERT_NE(book, nullptr) << world.Error();
      EXPECT_FALSE(book->Changed()) << xml;
      EXPECT_EQ(Shown(*book), "A1 \"old\"");
    }
  });
}

// Each with the failure of a position, unless it says otherwise.
TEST(MarkupValues, MisplacedMarkersAreRefused) {
  const MarkupRow rows[] = {
      {"<v B2BVALUEPOS=''>x</v>", kNoPosition},
      {"<v B2BVALUEPOS='1'>x</v>", kNoPosition},
      {"<v B2BVALUEPOS='A'>x</v>", kNoPosition},
      {"<v B2BVALUEPOS='A1B'>x</v>", kNoPosition},
      {"<v B2BVALUEPOS='A1:B2'>x</v>", kNoPosition},
      {"<v B2BVALUEPOS='A0'>x</v>", kNoPosition},
      {"<v B2BVALUEPOS='A65537'>x</v>", kNoPosition},
      {"<v B2BVALUEPOS='IW1'>x</v>", kNoPosition},
      {"<v B2BVALUEPOS='AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA1'>x</v>", kNoPosition},
      {"<v B2BVALUEPOS='A11111111111111111111111111111111111'>x</v>", kNoPosition},
      {"<v B2BVALUE='x'/>", kNoPosition},
      {"<v B2BTEMPVALUE='x'/>", kNoPosition},
      {"<v B2BLABEL='x'/>", kNoPosition},
      {"<v B2BLABELPOS='A1'/>", kNoPosition},
      {"<o B2BWORKSHEET=''><v B2BVALUEPOS='A1'>x</v></o>", kNoPosition},
      {"<o B2BWORKSHEET='a/b'><v B2BVALUEPOS='A1'>x</v></o>", kNoPosition},
      {"<v B2BVALUEPOS='A1' B2BVALUE='x' B2BTEMPVALUE='y'/>", kNotWritten},
      {"<v B2BVALUEPOS='A1' B2BVALUE='[%WHAT%]'/>", kNotFilledIn},
      {"<v B2BLABELPOS='A1' B2BLABEL='[%VALUE%]'/>", kNotFilledIn},
  };
  WithWorkbooks([&](WorkbookWorld& world) {
    for (const MarkupRow& row : rows) {
      EXPECT_EQ(world.Written(OnLines(row.markup)), row.cells) << row.markup;
    }
    EXPECT_EQ(world.Written("<v B2BVALUEPOS='A1'>no sheet</v>"), kNoPosition);
  });
}

struct PlaceholderRow {
  const char* type;
  const char* pattern;
  const char* data;
  std::string cell;
};

TEST(MarkupValues, PlaceholdersAreFilledIn) {
  const PlaceholderRow rows[] = {
      {"text", "[%COLUMN%]", "", "AB12 \"AB\""},
      {"text", "[%ROW%]", "", "AB12 \"12\""},
      {"text", "[%ADDRESS%]", "", "AB12 \"AB12\""},
      {"text", "[%VALUE%]", "x", "AB12 \"x\""},
      {"text", "<[%VALUE%]> [%VALUE%]", "[%ROW%]", "AB12 \"<[%ROW%]> [%ROW%]\""},
      {"text", "%] [ %ROW%", "", "AB12 \"%] [ %ROW%\""},
      {"number", "[%ROW%]", "", "AB12 12"},
      {"number", "[%VALUE%]0", "12", "AB12 120"},
      {"text", "[%row%]", "", kNotFilledIn},
      {"text", "[%ROW", "", kNotFilledIn},
      {"text", "[%%]", "", kNotFilledIn},
      {"formula", "=A[%ROW%]*[%VALUE%]", "12.5", "AB12 =A12*12.5"},
      {"formula", "=[%VALUE%]", "-7", "AB12 =-7"},
      {"formula", "=[%VALUE%]", "0.5", "AB12 =0.5"},
      {"formula", "=[%VALUE%]", "007", "AB12 =\"007\""},
      {"formula", "=[%VALUE%]", "1E5", "AB12 =\"1E5\""},
      {"formula", "=[%VALUE%]", "1.", "AB12 =\"1.\""},
      {"formula", "=[%VALUE%]", "-", "AB12 =\"-\""},
      {"formula", "=[%VALUE%]", "", "AB12 =\"\""},
      {"formula", "=[%VALUE%]", "A1+1", "AB12 =\"A1+1\""},
      {"formula", "=[%VALUE%]&\"!\"", "a\"&B1&\"", "AB12 =\"a\"\"&B1&\"\"\"&\"!\""},
      {"formula", "=\"<[%VALUE%]>\"", "a\"&B1&\"", "AB12 =\"<a\"\"&B1&\"\">\""},
      {"formula", "=\"<[%VALUE%]>\"&[%VALUE%]", "x", "AB12 =\"<x>\"&\"x\""},
      {"formula", "=[%WHAT%]", "", kNotFilledIn},
      {"formula", "=[%VALUE%]", "123456789012345", "AB12 =123456789012345"},
      {"formula", "=[%VALUE%]", "1234567890123456", "AB12 =\"1234567890123456\""},
      {"formula", "={1,[%VALUE%]}", "x", "AB12 ={1,\"x\"}"},
      {"formula", "=IF(A1=1, [%VALUE%] ,2)", "x", "AB12 =IF(A1=1, \"x\" ,2)"},
      {"formula", "=\"5\"\" [%VALUE%]\"", "\"x", "AB12 =\"5\"\" \"\"x\""},
      {"formula", "=\"5\\\"&[%VALUE%]", "\"x", "AB12 =\"5\\\"&\"\"\"x\""},
      {"formula", "='a\"b'!A1&[%VALUE%]", "x", "AB12 ='a\"b'!A1&\"x\""},
      {"formula", "='a\"b'!A1&\"'[%VALUE%]\"", "x", "AB12 ='a\"b'!A1&\"'x\""},
      {"formula", "='it''s'!A[%ROW%]&[%VALUE%]", "x", "AB12 ='it''s'!A12&\"x\""},
      {"formula", "='[%VALUE%]'!A1", "x", kNotFilledIn},
      {"formula", "=A[%VALUE%]", "7", kNotFilledIn},
      {"formula", "=1E+[%VALUE%]", "5", kNotFilledIn},
      {"formula", "=1E-[%VALUE%]", "5", kNotFilledIn},
      {"formula", "=A1*1.5e-[%VALUE%]", "5", kNotFilledIn},
      {"formula", "=Rate1E+[%VALUE%]", "5", "AB12 =Rate1E+5"},
      {"formula", "=E+[%VALUE%]", "5", "AB12 =E+5"},
      {"formula", "=SUM([%VALUE%] :9)", "7", kNotFilledIn},
      {"formula", "=[%VALUE%]!A1", "x", kNotFilledIn},
      {"formula", "=[%ROW%][%VALUE%]", "7", kNotFilledIn},
      {"formula", "=[%VALUE%][%VALUE%]", "7", kNotFilledIn},
  };
  WithWorkbooks([&](WorkbookWorld& world) {
    for (const PlaceholderRow& row : rows) {
      platform::xml::XmlDocument document;
      document.LoadXml("<m B2BWORKSHEET='Lines'><v B2BVALUEPOS='AB12'/></m>");
      const auto value = document.SelectSingleNode("//v");
      value->SetAttribute("B2BVALUE", row.pattern);
      value->SetAttribute("B2BVALUETYPE", row.type);
      value->SetText(row.data);
      EXPECT_EQ(world.Written(document.Xml()), row.cell) << row.pattern << " " << row.data;
    }
  });
}

TEST(MarkupValues, ResultsAreCalculatedWithTheTemporaryValuesWhichThenGo) {
  WithWorkbooks([](WorkbookWorld& world) {
    world.Engine().results = {{"=A2*Z1", 108.25}};
    const auto book = world.Write(OnLines("<v B2BVALUEPOS='Z1' B2BVALUETYPE='number' B2BTEMPVALUE='1.0825'/>"
                                          "<v B2BVALUEPOS='B2' B2BVALUETYPE='result' B2BVALUE='=A2*Z1'/>"),
                                  {{"A2", 100.0}});
    ASSERT_NE(book, nullptr) << world.Error();
    EXPECT_EQ(Shown(*book), "A2 100 | B2 108.25");
    ASSERT_EQ(world.Engine().rewrites.size(), 2U) << "once for the result, and once to see that all is well";
    const auto* cells = std::get_if<platform::spreadsheet::edit::SetCells>(&world.Engine().rewrites[0].at(0));
    ASSERT_NE(cells, nullptr);
    EXPECT_EQ(cells->cells.Find(ReadAddress("Z1"))->value, automation::Variant(1.0825));
    EXPECT_EQ(cells->cells.Find(ReadAddress("B2"))->formula, "=A2*Z1");
  });
}

// What the engine would not write is found before anybody gets the workbook, saved or not.
TEST(MarkupValues, WhatCannotBeSavedIsRefusedWhereItIsPlaced) {
  WithWorkbooks([](WorkbookWorld& world) {
    world.Engine().rewrite_failure = automation::Error(5, "Stand-in", "No formula");
    const std::string xml = OnLines("<v B2BVALUEPOS='A1' B2BVALUETYPE='formula'>=SUM(</v>");
    EXPECT_EQ(world.Write(xml), nullptr);
    EXPECT_EQ(world.Error(), kNotWritten);
    EXPECT_NE(world.Write("<nothing/>"), nullptr) << "nothing is asked of the engine without a change";
  });
}

TEST(MarkupValues, TemporaryValuesGoEvenWhenNothingIsCalculated) {
  WithWorkbooks([](WorkbookWorld& world) {
    const std::string xml = OnLines("<v B2BVALUEPOS='A1' B2BTEMPVALUE='there'/>");
    EXPECT_EQ(world.Written(xml, {{"A1", "old"}, {"A2", "kept"}}), "A2 \"kept\"");
    ASSERT_EQ(world.Engine().rewrites.size(), 1U);
    const auto* cells = std::get_if<platform::spreadsheet::edit::SetCells>(&world.Engine().rewrites[0].at(0));
    ASSERT_NE(cells, nullptr);
    EXPECT_TRUE(cells->cells.Find(ReadAddress("A1"))->value.IsEmpty());
  });
}

}  // namespace
}  // namespace talvex::test
