#include <gtest/gtest.h>

#include "platform/xml/xml_document.h"
#include "unit/exchange/exchange_world.h"

namespace talvex::test {

namespace {

using automation::Variant;

void Fill(const TestInstallation& site) {
  for (const auto* statement :
       {"INSERT INTO SUITEUSER (USERID, FULLNAME, EMAIL, LOCALEID) VALUES ('anna', 'Anna', 'a@example.com', "
        "1033)",
        "INSERT INTO SUITEOFFICE (OFFICEDESCRIPTION) VALUES ('Lyon')",
        "INSERT INTO CURRENCY (CURRENCYCODE, DECIMALS) VALUES ('EUR', 2)",
        "INSERT INTO CHARGETYPES (CHARGETYPECODE) VALUES ('IT')"}) {
    site.Sql(statement);
  }
}

// The import document itself stands in for the workbook: neither stylesheet nor schema change or refuse it.
void TakeAsItIs(ExchangeWorld& world) {
  world.Replace("talvex/XSL/Budgets_Import.xslt", kIdentity);
  world.Replace("talvex/XSD/Bugets_Import1.xsd",
                "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='I'/></xs:schema>");
}

constexpr const char* kFields =
    "<BudgetType>Standard</BudgetType><Currency>EUR</Currency><AdministrativeOffice/>"
    "<ChargeType>IT</ChargeType><BudgetHolder/><ApprovalReqd/><WarnMultiples/>";

std::string Header(const std::string& attributes, const std::string& fields = kFields) {
  return "<BudgetHeader " + attributes + ">" + fields + "</BudgetHeader>";
}

struct Answer {
  bool imported = false;
  std::string log;
};

Answer Import(ExchangeWorld& world, const std::string& document) {
  world.Excel().workbook_xml = document;
  Variant log = "before";
  const bool imported = Budget().CreateXMLforImport("C:\\in\\new.xls", "anna", log);
  if (log.IsEmpty()) return {imported, ""};
  EXPECT_EQ(log, Variant("talvex/errorlog/new152026-090703.txt"));
  return {imported, world.File("talvex/errorlog/new152026-090703.txt")};
}

TEST(Import, LeavesTheResultEmptyWhenAllIsWell) {
  WithExchange([](ExchangeWorld& world) {
    Fill(world.Site());
    TakeAsItIs(world);
    const Answer answer = Import(world, "<I>" + Header("budgetCode='A'") + "</I>");
    EXPECT_TRUE(answer.imported);
    EXPECT_EQ(answer.log, "");
    EXPECT_EQ(world.Site().Rows("SELECT BUDGETCODE, BUDGETTYPE FROM BUDGET"),
              std::vector<std::string>{"A | 1"});
  });
}

TEST(Import, AHeaderWhoseCodeIsNotItsFirstAttributeInheritsTheOneBefore) {
  WithExchange([](ExchangeWorld& world) {
    Fill(world.Site());
    TakeAsItIs(world);
    // The second header is refused for its missing code, under the code of the first: whose own line was
    // loaded with it, and whose other line, inheriting it in turn, stays out.
    const Answer answer = Import(
        world,
        "<I>" + Header("budgetCode='A'") + Header("row='2' budgetCode='B'") +
            "<BudgetLine budgetCode='A'><EffectiveDate>1/1/2026</EffectiveDate><BudgetAmnt>5</BudgetAmnt>"
            "</BudgetLine><BudgetLine row='9' budgetCode='B'><EffectiveDate>1/1/2027</EffectiveDate>"
            "<BudgetAmnt>6</BudgetAmnt></BudgetLine></I>");
    EXPECT_TRUE(answer.imported);
    EXPECT_EQ(answer.log, "\r\nThe budget code is missing-");
    EXPECT_EQ(world.Site().Rows("SELECT BUDGETCODE, BUDGETAMNT FROM BUDGETLINES"),
              std::vector<std::string>{"A | 5"});
  });
}

TEST(Import, ACodeIsTheFirstAttributeWithExactlyThatName) {
  WithExchange([](ExchangeWorld& world) {
    Fill(world.Site());
    TakeAsItIs(world);
    world.Site().Sql("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE) VALUES ('A', 2, 'EUR')");
    // The first line has no code and none before it; the third has that of the second, where its own name
    // does not count. A relation does not inherit from the lines.
    const Answer answer = Import(
        world,
        "<I><BudgetLine><EffectiveDate>1/1/2025</EffectiveDate><BudgetAmnt>1</BudgetAmnt></BudgetLine>"
        "<BudgetLine budgetCode='A'><EffectiveDate>1/1/2026</EffectiveDate><BudgetAmnt>2</BudgetAmnt>"
        "</BudgetLine><BudgetLine BudgetCode='B'><EffectiveDate>1/1/2027</EffectiveDate>"
        "<BudgetAmnt>3</BudgetAmnt></BudgetLine><BudgetRelation><ChildBudget>A</ChildBudget></BudgetRelation>"
        "</I>");
    EXPECT_TRUE(answer.imported);
    EXPECT_EQ(
        answer.log,
        "\r\nThe budget code is missing-\r\nThe budget code is missing-\r\nThe budget code is missing-");
    EXPECT_EQ(world.Site().Rows("SELECT BUDGETCODE, BUDGETAMNT FROM BUDGETLINES"),
              std::vector<std::string>{"A | 2"});
  });
}

TEST(Import, TheNameOfAnEncodingAndLineBreaksAreReplacedWhereverTheyStand) {
  WithExchange([](ExchangeWorld& world) {
    Fill(world.Site());
    TakeAsItIs(world);
    world.Replace("talvex/XSL/Budgets_Import.xslt",
                  "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>"
                  "<xsl:output encoding='UTF-16'/><xsl:template match='/'><I><BudgetHeader "
                  "budgetCode='UTF-16'><xsl:copy-of select='/I/*'/></BudgetHeader></I></xsl:template>"
                  "</xsl:stylesheet>");
    const Answer answer = Import(world, "<I>" + std::string(kFields) + "</I>");
    EXPECT_EQ(answer.log, "");
    EXPECT_EQ(world.Site().Rows("SELECT BUDGETCODE FROM BUDGET"), std::vector<std::string>{"UTF-8"});
  });
}

TEST(Import, AHeaderThatIsRefusedKeepsItsLinesOutButItsRelationIsTried) {
  WithExchange([](ExchangeWorld& world) {
    Fill(world.Site());
    TakeAsItIs(world);
    world.Site().Sql(
        "INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE) VALUES ('P', 2, 'EUR'), ('A', 1, 'EUR')");
    const Answer answer = Import(
        world,
        "<I>" +
            Header("budgetCode='A'",
                   "<BudgetType>Standard</BudgetType><Currency>GBP</Currency>"
                   "<ChargeType>IT</ChargeType>") +
            "<BudgetLine budgetCode='A'><EffectiveDate>1/1/2026</EffectiveDate><BudgetAmnt>5</BudgetAmnt>"
            "</BudgetLine><BudgetRelation budgetCode='P'><ChildBudget>A</ChildBudget></BudgetRelation></I>");
    EXPECT_TRUE(answer.imported);
    EXPECT_EQ(answer.log, "\r\nThe currency is unknown-A");
    EXPECT_EQ(world.Site().Rows("SELECT * FROM BUDGETLINES"), std::vector<std::string>{});
    EXPECT_EQ(world.Site().Rows("SELECT PARENTBUDGET, CHILDBUDGET FROM BUDGETRELATIONS"),
              std::vector<std::string>{"P | A"});
  });
}

TEST(Import, ALineWithoutAHeaderGoesToTheBudgetThatIsThere) {
  WithExchange([](ExchangeWorld& world) {
    Fill(world.Site());
    TakeAsItIs(world);
    world.Site().Sql("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE) VALUES ('A', 1, 'EUR')");
    const Answer answer = Import(
        world,
        "<I><BudgetLine budgetCode='A'><EffectiveDate>1/1/2026</EffectiveDate><BudgetAmnt>5</BudgetAmnt>"
        "</BudgetLine><BudgetLine budgetCode='GHOST'><EffectiveDate>1/1/2026</EffectiveDate><BudgetAmnt>5"
        "</BudgetAmnt></BudgetLine></I>");
    EXPECT_TRUE(answer.imported);
    EXPECT_EQ(answer.log, "\r\nThe budget does not exist-GHOST");
    EXPECT_EQ(world.Site().Rows("SELECT BUDGETCODE FROM BUDGETLINES"), std::vector<std::string>{"A"});
  });
}

TEST(Import, ARelationUnderAStandardBudgetHasItsChildrenLookedAtAllTheSame) {
  WithExchange([](ExchangeWorld& world) {
    Fill(world.Site());
    TakeAsItIs(world);
    world.Site().Sql("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE) VALUES ('A', 1)");
    const Answer answer =
        Import(world,
               "<I><BudgetRelation budgetCode='A'><ChildBudget>X</ChildBudget><ChildBudget/>"
               "</BudgetRelation></I>");
    EXPECT_TRUE(answer.imported);
    EXPECT_EQ(answer.log,
              "\r\nOnly an aggregate budget can have child budgets-A"
              "\r\nThe child budget does not exist:X-X\r\nThe budget code is missing-A");
  });
}

TEST(Import, WhatCannotBeReadIsFalseAndLogged) {
  const struct {
    const char* workbook;
    const char* log;
  } rows[] = {
      {"", "\r\nNo workbook has been selected for the import-\r\n-"},
      {"new.XLSX", "\r\nOnly a workbook with the extension .xls can be imported-\r\n-"},
      {"new", "\r\nOnly a workbook with the extension .xls can be imported-\r\n-"},
      {"new.XLS", "\r\nno workbook-\r\nThe workbook could not be converted for the import-\r\n-"},
  };
  for (const auto& row : rows) {
    WithExchange([&](ExchangeWorld& world) {
      Fill(world.Site());
      Variant log;
      EXPECT_FALSE(Budget().CreateXMLforImport(row.workbook, "anna", log));
      EXPECT_EQ(world.File(automation::ToText(log)), row.log);
    });
  }
}

TEST(Import, AWorkbookOfAnotherLayoutIsRefusedByTheSchema) {
  WithExchange([](ExchangeWorld& world) {
    Fill(world.Site());
    const Answer answer = Import(world, "<B2BEXCEL><WorkSheet Name='Budgets'/></B2BEXCEL>");
    EXPECT_FALSE(answer.imported);
    EXPECT_EQ(answer.log,
              "\r\nThe contents of the workbook do not match the layout required for a budget import-\r\n-");
  });
}

TEST(Import, SomethingThatBreaksInsideATransactionUndoesAllOfIt) {
  WithExchange([](ExchangeWorld& world) {
    Fill(world.Site());
    TakeAsItIs(world);
    // The store takes one budget and refuses the other.
    world.Site().Sql("CREATE UNIQUE INDEX ONE_OF_A_CURRENCY ON BUDGET (CURRENCYCODE)");
    const std::string before = world.Site().Snapshot();
    const auto outcome = world.Site().Host().Transactions().Run([&] {
      const Answer answer =
          Import(world, "<I>" + Header("budgetCode='A'") + Header("budgetCode='B'") + "</I>");
      EXPECT_FALSE(answer.imported);
      EXPECT_NE(answer.log.find("METHOD: Talvex.BudgetT.InsertBudgets"), std::string::npos) << answer.log;
    });
    EXPECT_EQ(outcome, host::Outcome::Aborted);
    EXPECT_EQ(world.Site().Snapshot(), before);
  });
}

TEST(Import, AnElementWithoutACodeIsAnEntryAndUndoesNothingElse) {
  WithExchange([](ExchangeWorld& world) {
    Fill(world.Site());
    TakeAsItIs(world);
    const std::string line = "<EffectiveDate>1/1/2026</EffectiveDate><BudgetAmnt>5</BudgetAmnt></BudgetLine>";
    const auto outcome = world.Site().Host().Transactions().Run([&] {
      const Answer answer = Import(
          world, "<I>" + Header("") + Header("budgetCode=' '") + Header("budgetCode='A'") + "<BudgetLine>" +
                     line + "<BudgetLine budgetCode=''>" + line + "<BudgetLine budgetCode='A'>" + line +
                     "<BudgetRelation><ChildBudget>A</ChildBudget></BudgetRelation></I>");
      EXPECT_TRUE(answer.imported);
      EXPECT_EQ(answer.log,
                "\r\nThe budget code is missing-\r\nThe budget code is missing- "
                "\r\nThe budget code is missing-");
    });
    EXPECT_EQ(outcome, host::Outcome::Committed);
    EXPECT_EQ(world.Site().Rows("SELECT BUDGETCODE FROM BUDGET"), std::vector<std::string>{"A"});
    EXPECT_EQ(world.Site().Rows("SELECT BUDGETCODE FROM BUDGETLINES"), std::vector<std::string>{"A"});
  });
}

TEST(Import, ATextThatIsTooLongIsToldWithoutAPlaceWhenTheDocumentHasNone) {
  WithExchange([](ExchangeWorld& world) {
    Fill(world.Site());
    TakeAsItIs(world);
    const std::string code(60, 'x');
    const Answer answer = Import(world, "<I>" + Header("budgetCode='" + code + "'") + "</I>");
    EXPECT_TRUE(answer.imported);
    EXPECT_EQ(answer.log, "\r\nThe text is too long: BudgetCode, 60 > 50-" + code);
  });
}

TEST(Import, OneReadingOfTheBudgetsServesAllRelations) {
  WithExchange([](ExchangeWorld& world) {
    Fill(world.Site());
    TakeAsItIs(world);
    std::string document = "<I>";
    world.Site().Host().Transactions().Run([&] {
      world.Site().Sql("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE) VALUES ('TOP', 2)");
      for (int i = 0; i < 300; ++i) {
        const std::string code = "B" + std::to_string(i);
        world.Site().Sql("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE) VALUES ('" + code + "', 1)");
        document +=
            "<BudgetRelation budgetCode='TOP'><ChildBudget>" + code + "</ChildBudget></BudgetRelation>";
      }
    });
    const Answer answer = Import(world, document + "</I>");
    EXPECT_TRUE(answer.imported);
    EXPECT_EQ(answer.log, "");
    EXPECT_EQ(world.Site().Rows("SELECT COUNT(*) FROM BUDGETRELATIONS"), std::vector<std::string>{"300"});
  });
}

TEST(Import, ListsChargeTypesAsTheLedgerDoes) {
  WithExchange([](ExchangeWorld& world) {
    Fill(world.Site());
    EXPECT_TRUE(Budget().getChargeTypeCodes()->Exists("IT"));
    EXPECT_TRUE(Budget().GetAllChargeTypes()->Exists("IT"));
    world.Site().Sql("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE) VALUES ('A', 2)");
    EXPECT_EQ(Budget().getBudgetTypeDict()->Item("A"), Variant(2));
  });
}

TEST(Import, TheLedgersListOfChargeTypesFailsUnderNoNameOfTheExchange) {
  WithExchange([](ExchangeWorld& world) {
    world.Site().Sql("DROP TABLE CHARGETYPES");
    const auto raised = ErrorOf([] { static_cast<void>(Budget().GetAllChargeTypes()); });
    EXPECT_NE(raised.description.find(
                  "\r\n METHOD: Lib_Sql.Sql_getRecords SQL:SELECT CHARGETYPECODE FROM CHARGETYPES\r\n"),
              std::string::npos)
        << raised.description;
    EXPECT_EQ(raised.description.find("Talvex.Budget"), std::string::npos) << raised.description;
  });
}

}  // namespace

}  // namespace talvex::test
