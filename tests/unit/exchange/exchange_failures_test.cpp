// Exports and imports in a world that fails: what is told, and what is left behind.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "adapters/sqlite/driver.h"
#include "platform/database/session_pool.h"
#include "support/failing_driver.h"
#include "support/failing_files.h"
#include "support/temporary_folder.h"
#include "unit/exchange/exchange_world.h"

namespace talvex::test {

namespace {

using automation::Variant;
using platform::database::Fault;
using platform::database::FaultKind;

constexpr const char* kDocument =
    "<I><BudgetHeader budgetCode='P'><BudgetType>AGGREGATE</BudgetType><Currency>EUR</Currency>"
    "<ChargeType>IT</ChargeType></BudgetHeader><BudgetHeader budgetCode='A'><BudgetType>STANDARD</BudgetType>"
    "<Currency>EUR</Currency><ChargeType>IT</ChargeType><BudgetHolder>anna</BudgetHolder></BudgetHeader>"
    "<BudgetLine "
    "budgetCode='A'><EffectiveDate>1/1/2026</EffectiveDate><BudgetAmnt>5</BudgetAmnt></BudgetLine>"
    "<BudgetLine budgetCode='OLD'><EffectiveDate>1/1/2026</EffectiveDate><BudgetAmnt>7</BudgetAmnt>"
    "</BudgetLine><BudgetRelation budgetCode='P'><ChildBudget>A</ChildBudget></BudgetRelation></I>";

void Fill(ExchangeWorld& world) {
  for (const auto* statement :
       {"INSERT INTO SUITEUSER (USERID, FULLNAME, EMAIL, LOCALEID) VALUES ('anna', 'Anna', 'a@example.com', "
        "1033)",
        "INSERT INTO CURRENCY (CURRENCYCODE, DECIMALS) VALUES ('EUR', 2)",
        "INSERT INTO CHARGETYPES (CHARGETYPECODE) VALUES ('IT')",
        "INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE) VALUES ('OLD', 1, 'EUR')"}) {
    world.Site().Sql(statement);
  }
  world.Replace("talvex/XSL/Budgets_Import.xslt", kIdentity);
  world.Replace("talvex/XSD/Bugets_Import1.xsd",
                "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='I'/></xs:schema>");
  world.Excel().workbook_xml = kDocument;
}

// Sessions of which the `nth` statement fails.
std::shared_ptr<platform::database::SessionPool> FailingAt(std::size_t nth) {
  const auto driver = std::make_shared<FailingDriver>(
      std::make_shared<adapters::sqlite::SqliteDriver>([] { return automation::Date(); }));
  driver->Script().FailAt("", nth, Fault(FaultKind::Other, 50000, "HY000", "out of order"));
  auto sessions = std::make_shared<platform::database::SessionPool>();
  sessions->AddDriver("SQLite", driver);
  return sessions;
}

// Whether the import was kept.
bool ImportInTransaction(const ExchangeWorld& world) {
  bool imported = false;
  try {
    const auto outcome = world.Site().Host().Transactions().Run([&] {
      Variant log;
      imported = Budget().CreateXMLforImport("new.xls", "anna", log);
    });
    EXPECT_EQ(imported, outcome == host::Outcome::Committed);
    return outcome == host::Outcome::Committed;
  } catch (const automation::Error&) {
    return false;
  }
}

TEST(ExchangeFailures, WhicheverStatementFailsInATransactionNothingOfTheImportIsThere) {
  WithExchange([](ExchangeWorld& world) {
    Fill(world);
    const std::string before = world.Site().Snapshot();
    const auto sessions = world.Environment().sessions;
    std::size_t nth = 1;
    for (bool kept = false; !kept; ++nth) {
      ASSERT_LT(nth, 500U);
      world.Environment().sessions = FailingAt(nth);
      kept = ImportInTransaction(world);
      world.Environment().sessions = sessions;
      if (!kept) {
        ASSERT_EQ(world.Site().Snapshot(), before) << "statement " << nth;
      }
    }
    EXPECT_GT(nth, 20U);
    EXPECT_EQ(world.Site().Rows("SELECT BUDGETCODE, BUDGETAMNT FROM BUDGETLINES ORDER BY BUDGETCODE"),
              (std::vector<std::string>{"A | 5", "OLD | 7"}));
  });
}

TEST(ExchangeFailures, AnErrorLogThatCannotBeWrittenIsTheCallersBusiness) {
  WithExchange([](ExchangeWorld& world) {
    const auto files = std::make_shared<FailingFiles>(world.Environment().files);
    files->FailAt(FailingFiles::Call::Append, 1, automation::Error(61, "Files", "disk full"));
    world.Environment().files = files;
    const auto error = ErrorOf([] { Budget().CreateErrorLog("text"); });
    EXPECT_EQ(error.number, 61);
    EXPECT_EQ(error.source, "Files");
    EXPECT_EQ(error.description, "disk full");
    EXPECT_TRUE(world.Site().LogLines().empty());
  });
}

TEST(ExchangeFailures, AnExportOrImportWithoutItsErrorLogIsRaised) {
  WithExchange([](ExchangeWorld& world) {
    Fill(world);
    world.Replace("talvex/XSL/Budgets_Export.xsl", "");
    const auto real = world.Environment().files;
    const auto fail = [&](std::size_t nth, auto&& call) {
      const auto files = std::make_shared<FailingFiles>(real);
      files->FailAt(FailingFiles::Call::Append, nth, automation::Error(61, "Files", "disk full"));
      world.Environment().files = files;
      return ErrorOf(call);
    };
    // What is written first is the cause, to the log.
    const auto exporting = fail(2, [] { Budget().CreateXMLforExport("A", "Z", "anna"); });
    EXPECT_EQ(exporting.number, 61);
    EXPECT_NE(exporting.description.find("Talvex.Budget.CreateXMLforExport"), std::string::npos);
    const auto importing = fail(1, [] {
      Variant log;
      Budget().CreateXMLforImport("new.doc", "anna", log);
    });
    EXPECT_EQ(importing.number, 61);
    EXPECT_NE(importing.description.find("Talvex.Budget.CreateXMLforImport"), std::string::npos);
    EXPECT_TRUE(world.Excel().written.empty());
  });
}

TEST(ExchangeFailures, TheLogTellsWhyAWorkbookCouldNotBeSaved) {
  WithExchange([](ExchangeWorld& world) {
    Fill(world);
    world.Excel().save_error = "disk full";
    EXPECT_EQ(Budget().CreateXMLforExport("A", "Z", "anna"),
              "talvex/errorlog/Budgets_Export152026-090703.txt^-^FAILED");
    EXPECT_EQ(world.File("talvex/errorlog/Budgets_Export152026-090703.txt"), "\r\ndisk full-");
    ASSERT_EQ(world.Site().LogLines().size(), 1U);
    EXPECT_NE(world.Site().LogLines()[0].find("WriteExportWorkbook\\r\\n DESC: disk full."),
              std::string::npos)
        << world.Site().LogLines()[0];
  });
}

// A configuration that knows the database but whose directory has a blank for a name.
class BlankConfiguration final : public automation::Object {
  TALVEX_CLASS(BlankConfiguration, "Corvane.Configuration", "Knows no directory.");

 public:
  explicit BlankConfiguration(std::string database) : database_(std::move(database)) {}
  TALVEX_METHOD(void, SelectApplication, (const std::string& name, std::int32_t mode), "Does nothing.");
  TALVEX_METHOD(std::string, Value, (const std::string& section, const std::string& key), "The database.");
  TALVEX_READONLY(std::string, ConfigDir, "ConfigDir", "A blank.");

 private:
  std::string database_;
};
void BlankConfiguration::SelectApplication(const std::string& /*name*/, std::int32_t /*mode*/) {}
std::string BlankConfiguration::Value(const std::string& /*section*/, const std::string& /*key*/) {
  return "Driver=SQLite;Database=" + database_;
}
std::string BlankConfiguration::ConfigDir() const { return " "; }

TEST(ExchangeFailures, AnExportWithoutAConfigurationDirectoryIsTold) {
  WithExchange([](ExchangeWorld& world) {
    Fill(world);
    // The language of the user is known from then on.
    EXPECT_TRUE(Budget().CreateXMLforExport("A", "Z", "anna").ends_with("EXPORTED"));
    world.Excel().written.clear();
    world.Environment().classes->Register(BlankConfiguration::Info(), [path = world.Site().DatabasePath()] {
      return std::make_shared<BlankConfiguration>(path);
    });
    const TemporaryFolder folder;
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder.Path());
    std::filesystem::create_directories(" /talvex/XSL");
    std::filesystem::create_directories(" /talvex/errorlog");
    folder.Write(" /talvex/XSL/Budgets_Export.xsl", kIdentity);
    EXPECT_EQ(Budget().CreateXMLforExport("A", "Z", "anna"),
              "talvex/errorlog/Budgets_Export152026-090703.txt^-^FAILED");
    std::ifstream log(" /talvex/errorlog/Budgets_Export152026-090703.txt", std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(log), {}),
              "\r\nThe configuration directory or the path of the workbook template is not set-");
    std::filesystem::current_path(before);
    EXPECT_TRUE(world.Excel().written.empty());
  });
}

}  // namespace

}  // namespace talvex::test
