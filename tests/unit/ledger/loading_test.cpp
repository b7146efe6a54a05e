// Loading from nodes that are not just the element that is wanted.
#include <gtest/gtest.h>

#include "ledger/budget_t.h"
#include "platform/xml/xml_document.h"
#include "support/error_of.h"
#include "support/test_installation.h"

namespace talvex::test {

namespace {

using platform::xml::XmlDocument;

struct Loaded {
  automation::ErrorState raised;
  std::string errors;
  std::vector<std::string> rows;
};

// What comes of a relation that is read from the first node that an expression selects.
Loaded RelationFrom(const std::string& xml, const std::string& xpath) {
  Loaded loaded;
  OnOwnThread([&] {
    const TestInstallation site;
    auto document = std::make_shared<XmlDocument>();
    EXPECT_TRUE(document->LoadXml(xml));
    loaded.raised = ErrorOf(
        [&] { BudgetT().InsertBudgetRelations("A", document->SelectSingleNode(xpath), "", loaded.errors); });
    loaded.rows = site.Rows("SELECT PARENTBUDGET, CHILDBUDGET FROM BUDGETRELATIONS");
  });
  return loaded;
}

constexpr const char* kRelation =
    "<BudgetRelation budgetCode='P'><ChildBudget>C</ChildBudget></BudgetRelation>";

TEST(Loading, TakesTheFirstElementOfItsNameInTheNode) {
  const std::string two = std::string("<I>") + kRelation + "<BudgetRelation budgetCode='Q'/></I>";
  for (const char* xpath : {"/I", "/I/BudgetRelation"}) {
    const Loaded loaded = RelationFrom(two, xpath);
    EXPECT_EQ(loaded.raised.number, 0) << loaded.raised.description;
    EXPECT_EQ(loaded.rows, std::vector<std::string>{"P | C"}) << xpath;
  }
}

TEST(Loading, ATextThatStandsThereTwiceIsNone) {
  const Loaded loaded = RelationFrom(
      "<BudgetRelation budgetCode='P'><ChildBudget>C</ChildBudget><ChildBudget>D</ChildBudget>"
      "</BudgetRelation>",
      "/BudgetRelation");
  EXPECT_NE(loaded.errors, "");
  EXPECT_TRUE(loaded.rows.empty());
}

TEST(Loading, ANodeThatCannotStandAloneIsRefused) {
  const Loaded loaded = RelationFrom(kRelation, "//@budgetCode");
  EXPECT_EQ(loaded.raised.number, automation::error_number::kInvalidCall);
  EXPECT_NE(loaded.raised.description.find("The element cannot be read: "), std::string::npos);
  EXPECT_TRUE(loaded.rows.empty());
}

TEST(Loading, NoNodeAtAllIsError91) {
  const Loaded loaded = RelationFrom(kRelation, "/nothing");
  EXPECT_EQ(loaded.raised.number, automation::error_number::kObjectNotSet);
  EXPECT_NE(loaded.raised.description.find("the relation"), std::string::npos);
}

}  // namespace

}  // namespace talvex::test
