#include <string>

#include "automation/transaction_context.h"
#include "exchange/budget_excel.h"
#include "support/stood_in_test.h"
#include "support/xml_world.h"

namespace talvex::test {
namespace {

using automation::Variant;
using platform::xml::XmlDocument;
using platform::xml::XmlDocumentRef;
using platform::xml::XmlNodeList;
using ::testing::HasSubstr;

struct PatternRow {
  const char* pattern;
  const char* text;
};

TEST(ExecuteXSLPattern, GivesTheTrimmedTextOfTheFirstMatchOrNothing) {
  const PatternRow rows[] = {
      {"//a", "x"},        {"//b", "1"}, {"//b[2]", "2"}, {"//@k", "v"},         {"//b/text()", "1"},
      {"//none", ""},      {"", ""},     {"//a[", ""},    {"nosuch()", ""},      {"count(//a)", ""},
      {"//p:a", ""},       {"  ", ""},   {"//tab", "\t"}, {"/r/c[@k='v']", "3"}, {"//c[@k='v']", "3"},
      {"//c[@k='w']", ""}, {"r/a", "x"}, {"r/*", "x"},    {"*/b[2]", "2"},       {"b", ""},
  };
  WithStandIns([&](StoodIn& test) {
    BudgetExcel excel;
    XmlDocumentRef document =
        LoadedDocument("<r><a> x </a><b>1</b><b>2</b><c k=' v '/><c k='v'>3</c><tab>\t </tab></r>");
    for (const PatternRow& row : rows) {
      std::string pattern = row.pattern;
      EXPECT_EQ(excel.ExecuteXSLPattern(document, pattern), row.text) << row.pattern;
      EXPECT_EQ(pattern, row.pattern);
    }
    EXPECT_TRUE(test.Record().log.empty()) << "a wrong pattern is passed over in silence";
  });
}

TEST(ExecuteXSLPattern, DoesNotTouchTheDocumentForAnEmptyPattern) {
  WithStandIns([](StoodIn& test) {
    BudgetExcel excel;
    XmlDocumentRef none;
    std::string pattern;
    EXPECT_EQ(excel.ExecuteXSLPattern(none, pattern), "");
    EXPECT_TRUE(test.Record().log.empty());
  });
}

TEST(ExecuteXSLPattern, LogsAndRaisesAnyOtherFailure) {
  WithStandIns([](StoodIn& test) {
    BudgetExcel excel;
    XmlDocumentRef none;
    std::string pattern = "//a";
    const auto context = test.Site().Host().Transactions().Begin();
    const auto error = ErrorOf([&] { static_cast<void>(excel.ExecuteXSLPattern(none, pattern)); });
    EXPECT_FALSE(context->Commit());
    EXPECT_EQ(error.number, 91);
    EXPECT_EQ(error.description,
              "\r\nERROR 0x5B\r\n METHOD: Talvex.BudgetExcel.ExecuteXSLPattern\r\n"
              " DESC: Object not set: the document.\r\n");
    ASSERT_EQ(test.Record().log.size(), 1U);
    EXPECT_THAT(test.Record().log[0].text, HasSubstr("Talvex.BudgetExcel.ExecuteXSLPattern"));
  });
}

TEST(ExecuteXSLPattern, OfADocumentThatDidNotParseIsEmpty) {
  WithStandIns([](StoodIn&) {
    BudgetExcel excel;
    auto document = std::make_shared<XmlDocument>();
    ASSERT_FALSE(document->LoadXml("<a>x"));
    std::string pattern = "//a";
    EXPECT_EQ(excel.ExecuteXSLPattern(document, pattern), "");
  });
}

TEST(ExecuteXSLPatternReturnAllNodes, GivesTheListAsItComes) {
  WithStandIns([](StoodIn&) {
    BudgetExcel excel;
    XmlDocumentRef document = LoadedDocument("<r><b> 1 </b><b>2</b></r>");
    std::string pattern = "//b";
    const auto nodes = excel.ExecuteXSLPatternReturnAllNodes(document, pattern);
    ASSERT_EQ(nodes->Count(), 2);
    EXPECT_EQ(nodes->Item(0)->Text(), " 1 ");
    EXPECT_EQ(nodes->Item(1)->Text(), "2");
    pattern = "r/*";
    EXPECT_EQ(excel.ExecuteXSLPatternReturnAllNodes(document, pattern)->Count(), 2);
    pattern = "//none";
    const auto none = excel.ExecuteXSLPatternReturnAllNodes(document, pattern);
    ASSERT_NE(none, nullptr) << "an empty list is a list";
    EXPECT_EQ(none->Count(), 0);
  });
}

TEST(ExecuteXSLPatternReturnAllNodes, GivesNoListForAFailureAndLogsNothing) {
  WithStandIns([](StoodIn& test) {
    BudgetExcel excel;
    XmlDocumentRef document = LoadedDocument("<r/>");
    XmlDocumentRef none;
    const auto context = test.Site().Host().Transactions().Begin();
    for (std::string pattern : {"//b[", "", "count(//b)"}) {
      EXPECT_EQ(excel.ExecuteXSLPatternReturnAllNodes(document, pattern), nullptr) << pattern;
    }
    std::string pattern = "//b";
    EXPECT_EQ(excel.ExecuteXSLPatternReturnAllNodes(none, pattern), nullptr);
    EXPECT_TRUE(context->Commit()) << "no vote for abort";
    EXPECT_TRUE(test.Record().log.empty());
  });
}

TEST(XmlPatterns, AreCalledByName) {
  WithStandIns([](StoodIn& test) {
    const auto excel = test.Environment().classes->Create("Talvex.BudgetExcel");
    Variant document = LoadedDocument("<r><b>1</b></r>");
    Variant pattern = "//b";
    EXPECT_EQ(excel->Call("ExecuteXSLPattern", document, pattern), Variant("1"));
    const Variant nodes = excel->Call("ExecuteXSLPatternReturnAllNodes", document, pattern);
    ASSERT_TRUE(nodes.IsObject());
    EXPECT_EQ(nodes.As<automation::ObjectRef>()->Get("Count"), Variant(1));
    pattern = "//b[";
    EXPECT_TRUE(excel->Call("ExecuteXSLPatternReturnAllNodes", document, pattern).IsEmpty());
  });
}

}  // namespace
}  // namespace talvex::test
