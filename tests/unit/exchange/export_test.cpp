#include <gtest/gtest.h>

#include "automation/text.h"
#include "platform/xml/xml_document.h"
#include "unit/exchange/exchange_world.h"

namespace talvex::test {

namespace {

// What the export document looks like, with a stylesheet that changes nothing.
std::string DocumentOf(ExchangeWorld& world, const std::string& from = "A", const std::string& to = "Z",
                       const std::string& user = "anna") {
  world.Replace("talvex/XSL/Budgets_Export.xsl", kIdentity);
  Budget().CreateXMLforExport(from, to, user);
  return world.Excel().written.empty() ? std::string() : world.Excel().written.back();
}

void AddUser(const TestInstallation& site, const std::string& user, int locale) {
  site.Sql("INSERT INTO SUITEUSER (USERID, FULLNAME, EMAIL, LOCALEID) VALUES ('" + user + "', '" + user +
           "', 'x@example.com', " + std::to_string(locale) + ")");
}

const std::string kRoot =
    "<Budgets xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
    "xsi:noNamespaceSchemaLocation=\"";

// The document without its root, whose schema path is the installation's.
std::string Inside(const std::string& document) {
  EXPECT_TRUE(document.starts_with(kRoot)) << document;
  const std::size_t begin = document.find('>') + 1;
  const std::size_t end = document.rfind("</Budgets>");
  return end == std::string::npos ? std::string() : document.substr(begin, end - begin);
}

TEST(Export, WritesEveryElementInItsOrder) {
  WithExchange([](ExchangeWorld& world) {
    AddUser(world.Site(), "anna", 1033);
    world.Site().Sql(
        "INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE, OFFICEDESCRIPTION, CHARGETYPECODE, "
        "USERID, APPROVEINBUDGET, BUDGETWARNING) VALUES ('A', 1, 'EUR', ' Lyon ', 'IT', 'anna', 1, 12.5), "
        "('P', 2, 'EUR', NULL, NULL, NULL, 0, NULL)");
    world.Site().Sql(
        "INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT, USEDNOTAPPROVEDAMNT, "
        "USEDAPPROVEDAMNT, USEDSENDAMNT, USEDRECEIVEDAMNT, USEDCLOSEDAMNT, AVAILABLEAMNT) VALUES ('A', "
        "'2026-01-01T00:00:00', NULL, 1000.5, 1, NULL, 3, 4, 5, 987.5)");
    world.Site().Sql("INSERT INTO BUDGETRELATIONS (PARENTBUDGET, CHILDBUDGET) VALUES ('P', 'A')");
    EXPECT_EQ(
        Inside(DocumentOf(world)),
        "<Budget><BudgetHeader><BudgetCode>A</BudgetCode><BudgetType>Standard</BudgetType><Currency>EUR"
        "</Currency><AdministrativeOffice>Lyon</AdministrativeOffice><ChargeType>IT</"
        "ChargeType><BudgetHolder>"
        "anna</BudgetHolder><ApprovalReqd>Yes</ApprovalReqd><WarnMultiples>12.5</WarnMultiples></"
        "BudgetHeader>"
        "<BudgetLines><BudgetLine><EffectiveDate>1/1/2026</EffectiveDate><ExpiryDate/><BudgetAmount>1000.5"
        "</BudgetAmount><NotApprovedAmount>1</NotApprovedAmount><ApprovedAmount>0</"
        "ApprovedAmount><SentAmount>3"
        "</SentAmount><ClosedAmount>5</ClosedAmount><ReceivedAmount>4</ReceivedAmount><BalanceAvailable>987.5"
        "</BalanceAvailable></BudgetLine></BudgetLines><ChildBudgets/></Budget>"
        "<Budget><BudgetHeader><BudgetCode>P</BudgetCode><BudgetType>Aggregate</BudgetType><Currency>EUR"
        "</Currency><AdministrativeOffice/><ChargeType/><BudgetHolder/><ApprovalReqd>No</ApprovalReqd>"
        "<WarnMultiples/></BudgetHeader><BudgetLines/><ChildBudgets><ChildBudget><BudgetCode>A</BudgetCode>"
        "<BudgetType>Standard</BudgetType></ChildBudget></ChildBudgets></Budget>");
  });
}

TEST(Export, AChildThatIsNoBudgetRepeatsTheTypeWrittenBefore) {
  WithExchange([](ExchangeWorld& world) {
    AddUser(world.Site(), "anna", 1033);
    world.Site().Sql("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE) VALUES ('P', 2), ('C', 1)");
    world.Site().Sql(
        "INSERT INTO BUDGETRELATIONS (PARENTBUDGET, CHILDBUDGET) VALUES ('P', 'BEFORE'), ('P', 'C'), ('P', "
        "'DBEHIND')");
    const std::string document = DocumentOf(world, "P", "P");
    EXPECT_NE(document.find("<BudgetCode>BEFORE</BudgetCode><BudgetType>Aggregate</BudgetType>"),
              std::string::npos)
        << document;
    EXPECT_NE(document.find("<BudgetCode>C</BudgetCode><BudgetType>Standard</BudgetType>"),
              std::string::npos);
    EXPECT_NE(document.find("<BudgetCode>DBEHIND</BudgetCode><BudgetType>Standard</BudgetType>"),
              std::string::npos);
  });
}

TEST(Export, TakesTheRangeWithBothItsEndsAndCodesWithQuotes) {
  WithExchange([](ExchangeWorld& world) {
    AddUser(world.Site(), "anna", 1033);
    world.Site().Sql("INSERT INTO BUDGET (BUDGETCODE) VALUES ('A'), ('B'), ('O''N'), ('P')");
    world.Site().Sql("INSERT INTO BUDGETLINES (BUDGETCODE, BUDGETAMNT) VALUES ('O''N', 7)");
    const std::string document = DocumentOf(world, "B", "O'N");
    EXPECT_EQ(document.find("<BudgetCode>A<"), std::string::npos);
    EXPECT_NE(document.find("<BudgetCode>B<"), std::string::npos);
    EXPECT_NE(document.find("<BudgetCode>O'N<"), std::string::npos);
    EXPECT_NE(document.find("<BudgetAmount>7<"), std::string::npos);
    EXPECT_EQ(document.find("<BudgetCode>P<"), std::string::npos);
  });
}

TEST(Export, OfNothingStillMakesAWorkbook) {
  WithExchange([](ExchangeWorld& world) {
    AddUser(world.Site(), "anna", 1033);
    EXPECT_EQ(Inside(DocumentOf(world)), "");
    EXPECT_EQ(world.Excel().written.size(), 1U);
  });
}

TEST(Export, NamesTheWorkbookByTheClockAndSavesIt) {
  WithExchange([](ExchangeWorld& world) {
    AddUser(world.Site(), "anna", 1033);
    EXPECT_EQ(Budget().CreateXMLforExport("A", "Z", "anna"),
              "^-^talvex\\exportedbudgets\\Export_Budgets_152026_090703.xls^-^EXPORTED");
    const std::string directory = world.Site().Path("");
    const std::string site = directory.substr(0, directory.size() - 1);
    EXPECT_EQ(
        world.Excel().calls,
        (std::vector<std::string>{"20 0 template anna " + site + "\\talvex\\XLT\\Budgets_Export.XLT " + site +
                                      "\\talvex\\exportedbudgets\\Export_Budgets_152026_090703.xls",
                                  "Save", "Close"}));
    EXPECT_EQ(world.File("talvex/errorlog/Budgets_Export152026-090703.txt"), "");
  });
}

// Every reading is a second later than the one before.
class TickingClock final : public platform::Clock {
 public:
  explicit TickingClock(automation::Date first) : next_(first) {}
  [[nodiscard]] automation::Date Now() const override {
    const automation::Date now = next_;
    next_ = automation::Date::FromSeconds(now.Seconds() + 1);
    return now;
  }

 private:
  mutable automation::Date next_;
};

TEST(Export, ANameIsOfOneMomentAlthoughTheClockGoesOn) {
  WithExchange([](ExchangeWorld& world) {
    const auto midnight = automation::Date::Parse("2026-12-31T23:59:59");
    const auto clock = [&] { return std::make_shared<TickingClock>(*midnight); };
    world.Environment().clock = clock();
    EXPECT_EQ(Budget().CreateErrorLog("text"), "talvex/errorlog/Budgets_Export12312026-235959.txt");
    world.Environment().clock = clock();
    EXPECT_EQ(Budget().CreateXMLforExport("A", "Z", "anna"),
              "^-^talvex\\exportedbudgets\\Export_Budgets_12312026_235959.xls^-^EXPORTED");
  });
}

TEST(Export, OfNothingLooksNoTextUp) {
  WithExchange([](ExchangeWorld& world) {
    EXPECT_TRUE(Budget().CreateXMLforExport("A", "Z", "stranger").ends_with("EXPORTED"));
    EXPECT_TRUE(world.Site().LogLines().empty());
    world.Site().Sql("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE) VALUES ('A', 1)");
    EXPECT_TRUE(Budget().CreateXMLforExport("A", "Z", "stranger").ends_with("FAILED"));
    EXPECT_EQ(world.File("talvex/errorlog/Budgets_Export152026-090703.txt"), "\r\n-");
  });
}

TEST(Export, NamesAreMadeOfTheMomentWithoutLeadingZeros) {
  const struct {
    const char* now;
    const char* workbook;
    const char* log;
  } rows[] = {
      {"2026-03-15T14:30:05", "Export_Budgets_3152026_143005.xls", "Budgets_Export3152026-143005.txt"},
      {"2026-01-05T00:00:00", "Export_Budgets_152026_000000.xls", "Budgets_Export152026-000000.txt"},
      {"2026-11-01T23:59:59", "Export_Budgets_1112026_235959.xls", "Budgets_Export1112026-235959.txt"},
      {"2026-12-31T12:00:00", "Export_Budgets_12312026_120000.xls", "Budgets_Export12312026-120000.txt"},
  };
  for (const auto& row : rows) {
    WithExchange(
        [&](ExchangeWorld& world) {
          AddUser(world.Site(), "anna", 1033);
          EXPECT_EQ(Budget().CreateXMLforExport("A", "Z", "anna"),
                    "^-^talvex\\exportedbudgets\\" + std::string(row.workbook) + "^-^EXPORTED");
          world.Replace("talvex/XSL/Budgets_Export.xsl", "");
          EXPECT_EQ(Budget().CreateXMLforExport("A", "Z", "anna"),
                    "talvex/errorlog/" + std::string(row.log) + "^-^FAILED");
        },
        row.now);
  }
}

TEST(Export, WritesEveryCharacterAsAnXmlDocumentDoes) {
  WithExchange([](ExchangeWorld& world) {
    AddUser(world.Site(), "anna", 1033);
    const std::string value = "\t<a> & \"b\"\r\n'\xC3\xBC\xE2\x82\xAC\xEF\xBF\xBD ]]>";
    world.Site().Sql("INSERT INTO BUDGET (BUDGETCODE, OFFICEDESCRIPTION) VALUES ('A', '" +
                     automation::Replaced(value, "'", "''") + "')");
    platform::xml::XmlDocument document;
    ASSERT_TRUE(document.LoadXml(DocumentOf(world)));
    EXPECT_EQ(document.TextOfOnly("AdministrativeOffice"), value);
    auto made = std::make_shared<platform::xml::XmlDocument>();
    auto parent = made->CreateElement("P");
    Budget().AddXMLNode(made, parent, "AdministrativeOffice", value);
    const std::string text = parent->Xml();
    // Inside <P>.
    EXPECT_NE(DocumentOf(world).find(text.substr(3, text.size() - 7)), std::string::npos)
        << text << '\n'
        << DocumentOf(world);
  });
}

TEST(Export, ACharacterThatXmlDoesNotAllowFailsTheBuildAndIsLogged) {
  for (const std::string value : {"a\x01", "\xEF\xBF\xBE"}) {
    WithExchange([&](ExchangeWorld& world) {
      AddUser(world.Site(), "anna", 1033);
      world.Site().Sql("INSERT INTO BUDGET (BUDGETCODE, OFFICEDESCRIPTION) VALUES ('A', '" + value + "')");
      EXPECT_EQ(Budget().CreateXMLforExport("A", "Z", "anna"),
                "talvex/errorlog/Budgets_Export152026-090703.txt^-^FAILED");
      EXPECT_EQ(world.File("talvex/errorlog/Budgets_Export152026-090703.txt"), "\r\n-");
      ASSERT_EQ(world.Site().LogLines().size(), 1U);
      EXPECT_NE(world.Site().LogLines().front().find("Talvex.Budget.AddXMLNode"), std::string::npos);
    });
  }
}

TEST(Export, TellsInAnErrorLogWhatWentWrong) {
  WithExchange([](ExchangeWorld& world) {
    AddUser(world.Site(), "anna", 1033);
    const std::string failed = "talvex/errorlog/Budgets_Export152026-090703.txt^-^FAILED";
    const std::string log = "talvex/errorlog/Budgets_Export152026-090703.txt";
    world.Replace("talvex/XSL/Budgets_Export.xsl", "<not a stylesheet");
    EXPECT_EQ(Budget().CreateXMLforExport("A", "Z", "anna"), failed);
    EXPECT_EQ(world.File(log), "\r\nThe stylesheet for the budget export could not be loaded-");
    EXPECT_TRUE(world.Excel().written.empty());

    // The log of the same second grows.
    world.Replace("talvex/XSL/Budgets_Export.xsl", kIdentity);
    world.Excel().write_error = "\r\nno room \xE2\x82\xAC \xCE\xB5-";
    EXPECT_EQ(Budget().CreateXMLforExport("A", "Z", "anna"), failed);
    EXPECT_EQ(world.File(log),
              "\r\nThe stylesheet for the budget export could not be loaded-\r\nno room \x80 ?-");
  });
}

TEST(Export, AFailureToReadTheTablesIsAnEmptyEntry) {
  WithExchange([](ExchangeWorld& world) {
    AddUser(world.Site(), "anna", 1033);
    world.Site().Sql("DROP TABLE BUDGETRELATIONS");
    EXPECT_EQ(Budget().CreateXMLforExport("A", "Z", "anna"),
              "talvex/errorlog/Budgets_Export152026-090703.txt^-^FAILED");
    EXPECT_EQ(world.File("talvex/errorlog/Budgets_Export152026-090703.txt"), "\r\n-");
  });
}

TEST(ErrorLog, IsNamedAfterTheWorkbookAndTheMoment) {
  const struct {
    std::optional<std::string> workbook;
    const char* base;
  } rows[] = {
      {std::nullopt, "Budgets_Export"},
      {"  ", "Budgets_Export"},
      {"C:\\data\\my budgets.xls", "my budgets"},
      {"/data/My.Budgets.XLS", "My.Budgets"},
      {"C:\\mixed/path\\b.xls", "b"},
      {".xls", ""},
      {"xls", ""},
      {"abcde", "a"},
  };
  for (const auto& row : rows) {
    WithExchange(
        [&](ExchangeWorld& world) {
          const std::string name = "talvex/errorlog/" + std::string(row.base) + "3152026-143005.txt";
          EXPECT_EQ(Budget().CreateErrorLog("text", row.workbook), name);
          EXPECT_EQ(world.File(name), "text");
        },
        "2026-03-15T14:30:05");
  }
}

}  // namespace

}  // namespace talvex::test
