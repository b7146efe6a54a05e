#include "accounting/accounting_parameter.h"

#include <gtest/gtest.h>

#include "support/error_of.h"
#include "unit/accounting/accounting_world.h"

namespace talvex::test {

namespace {

using platform::database::Fault;
using platform::database::FaultKind;
using Lines = std::vector<std::string>;

// The five names as an object reads them, joined by "|".
std::string Names() {
  auto parameters = std::make_shared<AccountingParameter>();
  parameters->ReadParameters();
  return parameters->Dimension1 + "|" + parameters->Dimension2 + "|" + parameters->Dimension3 + "|" +
         parameters->Dimension4 + "|" + parameters->Dimension5;
}

void Update(const std::string& name, const std::string& value) {
  std::make_shared<AccountingParameter>()->UpdateAccountingParameters(name, value);
}

TEST(AccountingParameter, WithoutRowsAllNamesAreEmpty) {
  OnInstallation([](TestInstallation& site) {
    EXPECT_EQ(Names(), "||||");
    AddParameter(site, "DIMENSION6", "six");
    AddParameter(site, "DIMENSION", "none");
    AddParameter(site, " DIMENSION1", "blank before");
    AddParameter(site, "null", "nobody");
    EXPECT_EQ(Names(), "||||");
  });
}

TEST(AccountingParameter, RowsAreFoundInAnyCaseAndKeptUntrimmed) {
  OnInstallation([](TestInstallation& site) {
    AddParameter(site, "DIMENSION1", " Department ");
    AddParameter(site, "dimension3", "Project");
    AddParameter(site, "Dimension5", "null");
    EXPECT_EQ(Names(), " Department ||Project||");
  });
}

TEST(AccountingParameter, ALaterRowOfTheSameNameWins) {
  OnInstallation([](TestInstallation& site) {
    AddParameter(site, "DIMENSION2", "first");
    AddParameter(site, "DIMENSION1", "other");
    AddParameter(site, "dimension2", "second");
    EXPECT_EQ(Names(), "other|second|||");
  });
}

TEST(AccountingParameter, ReadingLeavesANameWithoutARowAsItIs) {
  OnInstallation([](TestInstallation& site) {
    AddParameter(site, "DIMENSION1", "read");
    auto parameters = std::make_shared<AccountingParameter>();
    parameters->Dimension1 = "set";
    parameters->Dimension2 = "set";
    parameters->ReadParameters();
    EXPECT_EQ(parameters->Dimension1, "read");
    EXPECT_EQ(parameters->Dimension2, "set");
  });
}

struct StoredRow {
  const char* value;
  const char* stored;
};

TEST(AccountingParameter, TheValueOneIsStoredAsABlank) {
  OnInstallation([](TestInstallation& site) {
    AddParameter(site, "DIMENSION2", "before");
    AddParameter(site, "DIMENSION3", "untouched");
    const StoredRow rows[] = {{"1", " "},      {" 1  ", " "}, {"11", "11"},
                              {"1.0", "1.0"},  {"", "\"\""},  {"O'Neil's 50%", "O'Neil's 50%"},
                              {"  x ", "  x "}};
    for (const StoredRow& row : rows) {
      Update("dimension2", row.value);
      EXPECT_EQ(site.Rows("SELECT * FROM ACCOUNTINGPARAMETER"),
                (Lines{std::string("DIMENSION2 | ") + row.stored, "DIMENSION3 | untouched"}));
    }
  });
}

TEST(AccountingParameter, UpdatingAnUnknownNameChangesNothing) {
  OnInstallation([](TestInstallation& site) {
    AddParameter(site, "DIMENSION1", "kept");
    const std::string before = site.Snapshot();
    Update("DIMENSION9", "x");
    Update("x' OR '1'='1", "x");
    Update("", "1");
    EXPECT_EQ(site.Snapshot(), before);
  });
}

TEST(AccountingParameter, UpdatingLeavesTheObjectAlone) {
  OnInstallation([](TestInstallation& site) {
    AddParameter(site, "DIMENSION1", "before");
    auto parameters = std::make_shared<AccountingParameter>();
    parameters->Dimension1 = "mine";
    parameters->UpdateAccountingParameters("DIMENSION1", "after");
    EXPECT_EQ(parameters->Dimension1, "mine");
    EXPECT_EQ(Names(), "after||||");
  });
}

TEST(AccountingParameter, SendsTheseStatements) {
  OnRecordedInstallation([](RecordedInstallation& test) {
    Names();
    Update("DIM'2", "1");
    Update("DIMENSION2", "O'Neil");
    EXPECT_EQ(test.Script().Count("SELECT * FROM ACCOUNTINGPARAMETER"), 1U);
    EXPECT_EQ(
        test.Script().Count("UPDATE ACCOUNTINGPARAMETER SET PARAMETERVALUE=' ' WHERE PARAMETERNAME='DIM''2'"),
        1U);
    EXPECT_EQ(test.Script().Count(
                  "UPDATE ACCOUNTINGPARAMETER SET PARAMETERVALUE='O''Neil' WHERE PARAMETERNAME='DIMENSION2'"),
              1U);
  });
}

TEST(AccountingParameter, FailuresCarryTheNameOfTheirMethod) {
  OnRecordedInstallation([](RecordedInstallation& test) {
    const Fault fault(FaultKind::Other, 4711, "HY000", "out of order");
    test.Script().FailAt("SELECT * FROM ACCOUNTINGPARAMETER", 1, fault);
    const auto read = ErrorOf([] { Names(); });
    EXPECT_NE(read.description.find(" METHOD: Talvex.AccountingParameter.ReadParameters\r\n DESC: \r\nERROR"),
              std::string::npos)
        << read.description;
    test.Script().FailAt("UPDATE ACCOUNTINGPARAMETER", 1, fault);
    const auto written = ErrorOf([] { Update("DIMENSION1", "x"); });
    EXPECT_NE(written.description.find(
                  " METHOD: Talvex.AccountingParameter.UpdateAccountingParameters\r\n DESC: \r\nERROR"),
              std::string::npos);
    EXPECT_NE(written.description.find(" INFO: Executing: UPDATE ACCOUNTINGPARAMETER SET PARAMETERVALUE='x' "
                                       "WHERE PARAMETERNAME='DIMENSION1'.\r\n"),
              std::string::npos)
        << written.description;
  });
}

}  // namespace

}  // namespace talvex::test
