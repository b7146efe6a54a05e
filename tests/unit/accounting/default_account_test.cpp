#include <gtest/gtest.h>

#include "support/stood_in_test.h"
#include "unit/accounting/accounting_world.h"

namespace talvex::test {

namespace {

using automation::kNull;
using automation::Variant;
using platform::database::Fault;
using platform::database::FaultKind;

// A rule that every requisition with a property P of "yes" meets.
RuleRow PlainRule(int id, int sequence, const std::string& account) {
  return {id, sequence, account, {{"P", 5, "yes"}}};
}

const Properties kYes = {{"P", "yes"}};

// What the component itself sent, without what a connection begins with.
std::vector<std::string> Statements(const DatabaseScript& script) {
  std::vector<std::string> texts;
  for (const std::string& text : script.Texts()) {
    if (text != "OPEN" && !text.starts_with("set TRANSACTION")) texts.push_back(text);
  }
  return texts;
}

const std::string kCandidates =
    "SELECT AR.ACCRULEID FROM ACCOUNTINGRULELINE ARL, ACCOUNTINGRULE AR, LEDGERACCOUNT LA WHERE "
    "ARL.ACCRULEID = AR.ACCRULEID AND (AR.DATEFROM IS NULL OR AR.DATEFROM <= GETDATE()) AND "
    "(AR.DATETO IS NULL OR AR.DATETO >= GETDATE()) AND AR.LEDGERACCOUNT=LA.LEDGERACCOUNT AND ";
const std::string kAccountValid =
    "(LA.DATEFROM IS NULL OR LA.DATEFROM<=GETDATE()) AND (LA.DATETO IS NULL OR LA.DATETO>= GETDATE()) ";

TEST(DefaultLedgerAccount, SendsTheseStatementsInThisOrder) {
  OnRecordedInstallation([](RecordedInstallation& test) {
    AddAccount(test.Site(), {"4310"});
    AddRule(test.Site(), PlainRule(3, 20, "4310"));
    AddRule(test.Site(), {7, 10, "4310", {{"P", 5, "no"}}});
    AddRule(test.Site(), PlainRule(12, 30, "4310"));
    test.Script().ForgetTexts();
    EXPECT_EQ(DefaultAccount(kYes, 4), "4310");
    EXPECT_EQ(Statements(test.Script()),
              (std::vector<std::string>{
                  kCandidates + " LA.ACCOUNTTYPE=4 AND " + kAccountValid + "GROUP BY AR.ACCRULEID",
                  "SELECT * FROM ACCOUNTINGRULELINE WHERE ACCRULEID IN (3,7,12)",
                  "SELECT AR.ACCRULEID, AR.RULEDESCRIPTION, AR.SEQUENCENUMBER, LA.* FROM ACCOUNTINGRULE AR, "
                  "LEDGERACCOUNT LA WHERE AR.ACCRULEID IN (3,12) AND AR.LEDGERACCOUNT=LA.LEDGERACCOUNT AND " +
                      kAccountValid + "ORDER BY SEQUENCENUMBER ASC",
                  "SELECT * FROM ACCOUNTINGPARAMETER"}));
  });
}

TEST(DefaultLedgerAccount, EachStatementIsSentOnlyWhenTheOneBeforeFoundSomething) {
  OnRecordedInstallation([](RecordedInstallation& test) {
    EXPECT_EQ(DefaultAccount({}, 0), "");
    EXPECT_EQ(Statements(test.Script()),
              (std::vector<std::string>{kCandidates + kAccountValid + "GROUP BY AR.ACCRULEID"}));
    AddAccount(test.Site(), {"4310"});
    AddRule(test.Site(), PlainRule(1, 10, "4310"));
    test.Script().ForgetTexts();
    EXPECT_EQ(DefaultAccount({{"P", "no"}}), "");
    EXPECT_EQ(Statements(test.Script()).size(), 2U);
  });
}

TEST(DefaultLedgerAccount, IsEmptyWhenNoRuleHoldsAndIsNoError) {
  OnInstallation([](TestInstallation& site) {
    EXPECT_EQ(DefaultAccount(kYes), "");
    AddAccount(site, {"4310"});
    AddRule(site, {1, 10, "4310", {{"P", 5, "yes"}, {"Q", 3, "100"}}});
    EXPECT_EQ(DefaultAccount({{"P", "yes"}, {"Q", "99"}}), "");
    EXPECT_EQ(DefaultAccount({{"P", "yes"}, {"Q", "101"}}), "4310");
    EXPECT_TRUE(site.LogLines().empty());
  });
}

TEST(DefaultLedgerAccount, TheLowestSequenceNumberDecides) {
  OnInstallation([](TestInstallation& site) {
    for (const auto* code : {"A", "B", "C"}) AddAccount(site, {code});
    AddRule(site, PlainRule(1, 20, "A"));
    AddRule(site, PlainRule(2, 10, "B"));
    AddRule(site, PlainRule(3, 15, "C"));
    EXPECT_EQ(DefaultAccount(kYes), "B");
  });
}

TEST(DefaultLedgerAccount, ARuleWithoutLinesIsNoCandidate) {
  OnInstallation([](TestInstallation& site) {
    AddAccount(site, {"A"});
    AddRule(site, {1, 10, "A", {}});
    EXPECT_EQ(DefaultAccount(kYes), "");
  });
}

TEST(DefaultLedgerAccount, ALineWithAnUnknownOperatorCountsAsTrueButWantsItsProperty) {
  OnInstallation([](TestInstallation& site) {
    AddAccount(site, {"A"});
    AddRule(site, {1, 10, "A", {{"P", 0, "no"}, {"P", 10, "no"}}});
    site.Sql("UPDATE ACCOUNTINGRULELINE SET OPERATOR = NULL WHERE LINENUMBER = 2");
    EXPECT_EQ(DefaultAccount(kYes), "A");
    EXPECT_EQ(ErrorNumberOf([] { DefaultAccount({}); }), 5);
  });
}

TEST(DefaultLedgerAccount, BlanksAroundNamesAndFieldValuesDoNotCount) {
  OnInstallation([](TestInstallation& site) {
    AddAccount(site, {"A"});
    AddRule(site, {1, 10, "A", {{"  P ", 5, "  yes "}, {"q", 5, "null"}}});
    EXPECT_EQ(DefaultAccount({{"p", "yes"}, {"Q", kNull}}), "A");
    EXPECT_EQ(DefaultAccount({{"p", " yes"}, {"Q", kNull}}), "");
    EXPECT_EQ(DefaultAccount({{"p", "yes"}, {"Q", " "}}), "");
  });
}

struct PeriodRow {
  const char* from;
  const char* to;
  bool valid;
};

// It is 16 March 2026, 10:00.
constexpr PeriodRow kPeriods[] = {
    {"null", "null", true},
    {"2026-03-16T10:00:00", "null", true},
    {"2026-03-16T10:00:01", "null", false},
    {"null", "2026-03-16T10:00:00", true},
    {"null", "2026-03-16T09:59:59", false},
    {"2026-03-16T10:00:00", "2026-03-16T10:00:00", true},
    {"2026-03-16T00:00:00", "null", true},
    // A day alone is its first moment.
    {"null", "2026-03-16T00:00:00", false},
    {"null", "2026-03-17T00:00:00", true},
    {"2027-01-01T00:00:00", "2025-01-01T00:00:00", false},
};

// Gives all rows of a table each period in turn.
void ExpectPeriodsToCount(const std::string& table) {
  OnInstallation([&](TestInstallation& site) {
    AddAccount(site, {"A"});
    AddRule(site, PlainRule(1, 10, "A"));
    for (const PeriodRow& row : kPeriods) {
      site.Sql("UPDATE " + table + " SET DATEFROM = " + SqlLiteral(row.from) +
               ", DATETO = " + SqlLiteral(row.to));
      EXPECT_EQ(DefaultAccount(kYes), row.valid ? "A" : "") << row.from << " to " << row.to;
    }
  });
}

TEST(DefaultLedgerAccount, ARuleMustBeValidNow) { ExpectPeriodsToCount("ACCOUNTINGRULE"); }

TEST(DefaultLedgerAccount, AnAccountMustBeValidNow) { ExpectPeriodsToCount("LEDGERACCOUNT"); }

TEST(DefaultLedgerAccount, AnAccountTypeOutsideOneToFourMeansEveryType) {
  OnInstallation([](TestInstallation& site) {
    for (int type = 1; type <= 4; ++type) {
      AddAccount(site, {"T" + std::to_string(type), type});
      AddRule(site, PlainRule(type, 50 - 10 * type, "T" + std::to_string(type)));
    }
    for (int type = 1; type <= 4; ++type) EXPECT_EQ(DefaultAccount(kYes, type), "T" + std::to_string(type));
    for (const int type : {0, 7, -1, 5}) EXPECT_EQ(DefaultAccount(kYes, type), "T4") << type;
    site.Sql("UPDATE LEDGERACCOUNT SET ACCOUNTTYPE = 7 WHERE LEDGERACCOUNT = 'T4'");
    EXPECT_EQ(DefaultAccount(kYes, 7), "T4");
    EXPECT_EQ(DefaultAccount(kYes, 4), "");
  });
}

TEST(DefaultLedgerAccount, WalksPastAccountsWhoseMandatoryDimensionsAreEmpty) {
  OnInstallation([](TestInstallation& site) {
    AddParameter(site, "DIMENSION1", " Department ");
    AddParameter(site, "DIMENSION5", "Project");
    AddAccount(site, {"BOTH", 4, "1,3,3,3,1"});
    AddAccount(site, {"FIFTH", 4, "2,3,3,3,1"});
    AddAccount(site, {"FIRST", 4, "1,2,2,2,2"});
    AddRule(site, PlainRule(1, 30, "FIRST"));
    AddRule(site, PlainRule(2, 20, "FIFTH"));
    AddRule(site, PlainRule(3, 10, "BOTH"));
    const auto account = [](const Variant& department, const Variant& project) {
      return DefaultAccount({{"P", "yes"}, {"Department", department}, {"Project", project}});
    };
    EXPECT_EQ(account("IT", "ERP"), "BOTH");
    EXPECT_EQ(account("", "ERP"), "FIFTH");
    EXPECT_EQ(account("IT", ""), "FIRST");
    EXPECT_EQ(account("", ""), "");
    // Null and a value that was never set are empty, a blank and the number 0 are not.
    EXPECT_EQ(account(kNull, "ERP"), "FIFTH");
    EXPECT_EQ(account("IT", Variant()), "FIRST");
    EXPECT_EQ(account(" ", "ERP"), "BOTH");
    EXPECT_EQ(account(0, "ERP"), "BOTH");
  });
}

TEST(DefaultLedgerAccount, AMandatoryDimensionWithoutANameIsNotChecked) {
  OnInstallation([](TestInstallation& site) {
    AddParameter(site, "DIMENSION2", " ");
    AddParameter(site, "DIMENSION3", "null");
    AddAccount(site, {"A", 4, "1,1,1,1,1"});
    AddRule(site, PlainRule(1, 10, "A"));
    EXPECT_EQ(DefaultAccount(kYes), "A");
  });
}

TEST(DefaultLedgerAccount, ThePropertyOfAMandatoryDimensionMustBeThere) {
  OnInstallation([](TestInstallation& site) {
    AddParameter(site, "DIMENSION1", "Department");
    AddAccount(site, {"A", 4, "1,3,3,3,3"});
    AddAccount(site, {"B", 4, "2,3,3,3,3"});
    AddRule(site, PlainRule(1, 10, "A"));
    EXPECT_EQ(ErrorNumberOf([] { DefaultAccount(kYes); }), 5);
    // Nobody asks for it while no account on the way declares it mandatory.
    AddRule(site, PlainRule(2, 5, "B"));
    EXPECT_EQ(DefaultAccount(kYes), "B");
  });
}

TEST(DefaultLedgerAccount, AMissingPropertyFailsTheWholeCall) {
  WithStandIns([](StoodIn& test) {
    AddAccount(test.Site(), {"A"});
    AddRule(test.Site(), {1, 10, "A", {{"P", 5, "yes"}}});
    AddRule(test.Site(), {2, 20, "A", {{"P", 5, "yes"}, {"Missing", 5, "x"}}});
    // The lines after the first false one are not looked at.
    EXPECT_EQ(DefaultAccount({{"P", "no"}}), "");
    const automation::ErrorState error = ErrorOf([] { DefaultAccount(kYes); });
    const std::string missing = "Invalid procedure call: the collection has no key 'Missing'";
    EXPECT_EQ(error.number, 5);
    EXPECT_EQ(error.source, "Talvex.Automation");
    const std::string description =
        "\r\nERROR 0x5\r\n METHOD: Talvex.BudgetManager.getDefaultLedgerAccount\r\n"
        " DESC: " +
        missing + ".\r\n";
    EXPECT_EQ(error.description, description);
    ASSERT_EQ(test.Record().log.size(), 1U);
    EXPECT_EQ(test.Record().log[0].text,
              "\r\nERROR 0x5\r\n METHOD: "
              "Talvex.BudgetManager.getDefaultLedgerAccount\r\n DESC: " +
                  description + ".\r\n");
  });
}

TEST(DefaultLedgerAccount, PropertiesThatAreNotSetRaiseAsSoonAsOneIsWanted) {
  OnInstallation([](TestInstallation& site) {
    const auto find = [] {
      return std::make_shared<BudgetManager>()->getDefaultLedgerAccount(nullptr, LedgerAccountType{});
    };
    EXPECT_EQ(find(), "");
    AddAccount(site, {"A"});
    AddRule(site, PlainRule(1, 10, "A"));
    EXPECT_EQ(ErrorNumberOf(find), 91);
  });
}

TEST(DefaultLedgerAccount, AValueThatCannotBeComparedFailsTheCall) {
  OnInstallation([](TestInstallation& site) {
    AddAccount(site, {"A"});
    AddRule(site, PlainRule(1, 10, "A"));
    EXPECT_EQ(ErrorNumberOf([] { DefaultAccount({{"P", automation::Array(std::vector<Variant>{1})}}); }), 13);
  });
}

TEST(DefaultLedgerAccount, VotesOnFailureOnly) {
  OnInstallation([](TestInstallation& site) {
    AddAccount(site, {"A"});
    AddRule(site, PlainRule(1, 10, "A"));
    const auto outcome = [&](const Properties& properties, std::int32_t error) {
      return site.Host().Transactions().Run([&] {
        AddParameter(site, "OTHER", "x");
        EXPECT_EQ(ErrorNumberOf([&] { DefaultAccount(properties); }), error);
      });
    };
    EXPECT_EQ(outcome(kYes, 0), host::Outcome::Committed);
    EXPECT_EQ(outcome({}, 5), host::Outcome::Aborted);
    EXPECT_EQ(site.Rows("SELECT COUNT(*) FROM ACCOUNTINGPARAMETER"), (std::vector<std::string>{"1"}));
  });
}

TEST(DefaultLedgerAccount, AFailureOfAnyStatementReachesTheCaller) {
  OnRecordedInstallation([](RecordedInstallation& test) {
    AddAccount(test.Site(), {"A"});
    AddRule(test.Site(), PlainRule(1, 10, "A"));
    for (const auto* part :
         {"GROUP BY", "SELECT * FROM ACCOUNTINGRULELINE", "ORDER BY", "ACCOUNTINGPARAMETER"}) {
      test.Script().FailAt(part, 1, Fault(FaultKind::Other, 4711, "HY000", "out of order"));
      const automation::ErrorState error = ErrorOf([] { DefaultAccount(kYes); });
      EXPECT_NE(error.number, 0) << part;
      EXPECT_TRUE(error.description.starts_with("\r\nERROR 0x")) << part;
      EXPECT_NE(error.description.find(" METHOD: Talvex.BudgetManager.getDefaultLedgerAccount\r\n"),
                std::string::npos);
      EXPECT_NE(error.description.find("out of order"), std::string::npos) << part;
      EXPECT_EQ(DefaultAccount(kYes), "A") << part;
    }
  });
}

TEST(DefaultLedgerAccount, TellsHowItWasDecided) {
  OnInstallation([](TestInstallation& site) {
    AddParameter(site, "DIMENSION2", "Project");
    AddAccount(site, {"A", 4, "3,1,3,3,3"});
    AddAccount(site, {"B"});
    AddRule(site, PlainRule(1, 30, "B"));
    AddRule(site, {2, 5, "B", {{"P", 5, "yes"}, {"Amount", 4, "5000"}}});
    AddRule(site, PlainRule(3, 10, "A"));
    AddRule(site, PlainRule(4, 20, "B"));
    AccountDecision decision;
    EXPECT_EQ(
        BudgetManager::DecideLedgerAccount(Requisition({{"P", "yes"}, {"Amount", 4999}, {"Project", ""}}),
                                           LedgerAccountType{}, &decision),
        "B");
    EXPECT_EQ(decision.account, "B");
    ASSERT_EQ(decision.compared.size(), 4U);
    for (int i = 0; i < 4; ++i) {
      EXPECT_EQ(decision.compared[static_cast<std::size_t>(i)].id, i + 1);
      EXPECT_EQ(decision.compared[static_cast<std::size_t>(i)].applies, i != 1);
    }
    const FailedLine& failed = decision.compared[1].failed.value();
    EXPECT_EQ(failed.number, 2);
    EXPECT_EQ(failed.property, "Amount");
    EXPECT_EQ(failed.value, "4999");
    EXPECT_EQ(failed.comparison, RuleOperators::GreaterEqual);
    EXPECT_EQ(failed.field_value, "5000");
    ASSERT_EQ(decision.walked.size(), 2U);
    EXPECT_EQ(decision.walked[0].id, 3);
    EXPECT_EQ(decision.walked[0].account, "A");
    EXPECT_EQ(decision.walked[0].empty.value().number, 2);
    EXPECT_EQ(decision.walked[0].empty.value().name, "Project");
    EXPECT_EQ(decision.walked[1].id, 4);
    EXPECT_FALSE(decision.walked[1].empty.has_value());
  });
}

}  // namespace

}  // namespace talvex::test
