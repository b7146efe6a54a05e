#include <gtest/gtest.h>

#include "automation/error.h"
#include "ledger/budget_t.h"
#include "platform/database/fault.h"
#include "support/recorded_installation.h"
#include "support/stood_in_test.h"

namespace talvex::test {

namespace {

using automation::Date;
using automation::Error;
using platform::database::Fault;
using platform::database::FaultKind;

const Date kDay = Date::Civil(2026, 3, 15);

void OnRecordedInstallation(const std::function<void(RecordedInstallation&)>& body) {
  OnOwnThread([&] {
    RecordedInstallation installation;
    body(installation);
  });
}

std::int32_t Post(const std::string& code, double amount, TalvexType type = TalvexType::Approved) {
  return std::make_shared<BudgetT>()->PostToBudget(code, kDay, amount, "EUR", type);
}

void AddBudget(const TestInstallation& site, const std::string& code, const std::string& holder = "null") {
  site.Sql("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE, USERID, BUDGETWARNING) VALUES ('" +
           code + "', 1, 'EUR', " + holder + ", " + (holder == "null" ? "null" : "10") + ")");
  site.Sql(
      "INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT, AVAILABLEAMNT, AVAILABLEPERC) "
      "VALUES ('" +
      code + "', '2026-01-01T00:00:00', '2026-12-31T00:00:00', 1000, 1000, 1)");
}

void PutUnder(const TestInstallation& site, const std::string& parent, const std::string& child) {
  site.Sql("INSERT INTO BUDGETRELATIONS (PARENTBUDGET, CHILDBUDGET) VALUES ('" + parent + "', '" + child +
           "')");
}

// LEAF under TOP, both held by anna, with warning mails on.
void TwoLevels(const TestInstallation& site) {
  site.Sql("INSERT INTO CURRENCY (CURRENCYCODE, DECIMALS) VALUES ('EUR', 2)");
  site.Sql(
      "INSERT INTO SUITEUSER (USERID, FULLNAME, EMAIL, LOCALEID) VALUES ('anna', 'Anna', 'anna@example.com', "
      "1033)");
  site.Sql(
      "INSERT INTO REQUISITIONPARAMETER (PARAMNAME, PARAMVALUE) VALUES "
      "('SendEmailToBudgetHolderForBudgetWarning', 'True')");
  AddBudget(site, "LEAF", "'anna'");
  AddBudget(site, "TOP", "'anna'");
  PutUnder(site, "TOP", "LEAF");
}

TEST(Posting, SendsTheseStatementsInThisOrder) {
  OnRecordedInstallation([](RecordedInstallation& test) {
    TwoLevels(test.Site());
    test.Site().Sql("DELETE FROM BUDGETRELATIONS");
    test.Script().ForgetTexts();
    EXPECT_EQ(Post("LEAF", 1), 1);
    const std::string isolation = "set TRANSACTION ISOLATION LEVEL READ COMMITTED";
    std::vector<std::string> texts;
    for (const std::string& text : test.Script().Texts()) {
      if (text != isolation && text != "OPEN" && text != "BEGIN" && text != "COMMIT") texts.push_back(text);
    }
    EXPECT_EQ(
        texts,
        (std::vector<std::string>{
            "select * from BUDGET where BUDGETCODE='LEAF'",
            "select * from BUDGETLINES where BUDGETCODE='LEAF' and STARTDATE<='2026-03-15T00:00:00' AND "
            "ENDDATE>='2026-03-15T00:00:00'",
            "SELECT DECIMALS FROM CURRENCY WHERE CURRENCYCODE='EUR'",
            "SELECT BUDGETWARNING, USERID, CURRENCYCODE FROM BUDGET WHERE BUDGETCODE='LEAF'",
            "SELECT PARAMVALUE FROM REQUISITIONPARAMETER WHERE PARAMNAME = "
            "'SendEmailToBudgetHolderForBudgetWarning'",
            "UPDATE BUDGETLINES SET USEDAPPROVEDAMNT = ?, AVAILABLEAMNT = ?, AVAILABLEPERC = ? WHERE ID = ? "
            "AND USEDAPPROVEDAMNT IS NULL AND AVAILABLEAMNT = ? AND AVAILABLEPERC = ?",
            "SELECT PARENTBUDGET FROM BUDGETRELATIONS WHERE CHILDBUDGET='LEAF'"}));
    // Every connection that the component opens for itself asks for its isolation level.
    EXPECT_GE(test.Script().Count(isolation), 4U);
  });
}

TEST(Posting, ARepostReadsTheDateUnquotedInItsPlainForm) {
  OnRecordedInstallation([](RecordedInstallation& test) {
    test.Script().ForgetTexts();
    EXPECT_EQ(std::make_shared<BudgetT>()->RepostAllBudgets(), 0);
    EXPECT_EQ(test.Script().Count("select * from BUDGETLINES where ENDDATE>=3/16/2026"), 1U);
  });
}

TEST(Posting, AnEmptyCodeAsksForParentsOnly) {
  OnRecordedInstallation([](RecordedInstallation& test) {
    test.Script().ForgetTexts();
    EXPECT_EQ(Post("", 1), -1);
    EXPECT_EQ(test.Script().Count("BUDGETLINES"), 0U);
    EXPECT_EQ(test.Script().Count("WHERE CHILDBUDGET=''"), 1U);
  });
}

TEST(Posting, WithoutAWarningStepTheMailSwitchIsNotRead) {
  OnRecordedInstallation([](RecordedInstallation& test) {
    TwoLevels(test.Site());
    test.Site().Sql("UPDATE BUDGET SET BUDGETWARNING = NULL");
    test.Script().ForgetTexts();
    EXPECT_EQ(Post("LEAF", 500), 1);
    EXPECT_EQ(test.Script().Count("REQUISITIONPARAMETER"), 0U);
  });
}

TEST(Posting, CompilesNoStatementShapeTwice) {
  OnRecordedInstallation([](RecordedInstallation& test) {
    TwoLevels(test.Site());
    const auto post_many = [] {
      for (int i = 0; i < 100; ++i) Post(i % 2 == 0 ? "LEAF" : "TOP", 1 + 0.01 * i);
    };
    test.Site().Host().Transactions().Run([&] {
      post_many();  // Meets every shape: totals that are Null at first, percentages that change and others
                    // that do not.
      const auto compiled = test.Counters().compiled.load();
      const auto run = test.Counters().run.load();
      post_many();
      EXPECT_EQ(test.Counters().compiled.load(), compiled);
      EXPECT_LE(compiled, 20U);
      EXPECT_GE(test.Counters().run.load() - run, 1000U);
    });
  });
}

TEST(Posting, AFailureOfAnyStatementOfATransactionLeavesTheDatabaseAsItWas) {
  OnRecordedInstallation([](RecordedInstallation& test) {
    TwoLevels(test.Site());
    const std::string before = test.Site().Snapshot();
    const auto& transactions = test.Site().Host().Transactions();
    std::size_t failed = 0;
    for (;; ++failed) {
      test.Script().FailAt("", failed + 1, Fault(FaultKind::Other, 9999, "HY000", "pulled the plug"));
      try {
        // 950 uses the line up: both budgets send a mail as well.
        if (transactions.Run([] { Post("LEAF", 950); }) == host::Outcome::Committed) break;
        ADD_FAILURE() << "aborted without an error at statement " << failed + 1;
      } catch (const Error& error) {
        EXPECT_NE(error.Description().find("pulled the plug"), std::string::npos) << error.Description();
      }
      ASSERT_EQ(test.Site().Snapshot(), before) << "statement " << failed + 1;
      ASSERT_TRUE(test.Site().Mails().empty()) << "statement " << failed + 1;
    }
    test.Script().Heal();
    EXPECT_GT(failed, 20U);
    EXPECT_EQ(test.Site().Rows("SELECT USEDAPPROVEDAMNT FROM BUDGETLINES"),
              (std::vector<std::string>{"950", "950"}));
    EXPECT_EQ(test.Site().Mails().size(), 2U);
  });
}

TEST(Posting, AConflictAnywhereIsRetriedAndPostedOnce) {
  OnRecordedInstallation([](RecordedInstallation& test) {
    TwoLevels(test.Site());
    const auto& transactions = test.Site().Host().Transactions();
    int postings = 0;
    for (std::size_t nth = 1; nth <= 30; ++nth) {
      test.Script().FailAt("", nth, Fault(FaultKind::Conflict, 1205, "40001", "database is locked"));
      const auto outcome = transactions.RunWithRetry([] { Post("LEAF", 1); }, 2);
      ASSERT_EQ(outcome, host::Outcome::Committed) << "statement " << nth;
      test.Script().Heal();
      ++postings;
    }
    const std::string total = std::to_string(postings);
    EXPECT_EQ(test.Site().Rows("SELECT USEDAPPROVEDAMNT FROM BUDGETLINES"),
              (std::vector<std::string>{total, total}));
  });
}

TEST(Posting, WhatIsNoConflictIsNotRetried) {
  OnRecordedInstallation([](RecordedInstallation& test) {
    TwoLevels(test.Site());
    int runs = 0;
    EXPECT_EQ(ErrorOf([&] {
                test.Site().Host().Transactions().RunWithRetry(
                    [&] {
                      ++runs;
                      Post("LEAF", 1, static_cast<TalvexType>(6));
                    },
                    5);
              }).number,
              static_cast<std::int32_t>(TalvexErrors::BudgetTypeNotFound));
    EXPECT_EQ(runs, 1);
  });
}

// A currency service that lets somebody else change the line between the posting's reading and writing it.
class InterferingCurrency final : public automation::Object {
  TALVEX_CLASS(InterferingCurrency, "Mirelo.Currency", "Changes a line while it converts.");

 public:
  explicit InterferingCurrency(std::function<void()> interfere) : interfere_(std::move(interfere)) {}
  TALVEX_METHOD(automation::Currency, Convert,
                (const std::string& source, const std::string& target, automation::Currency amount,
                 Date date),
                "The amount as it is.");
  TALVEX_METHOD(std::int32_t, Decimals, (const std::string& code), "Two.");

 private:
  std::function<void()> interfere_;
};

automation::Currency InterferingCurrency::Convert(const std::string& /*source*/,
                                                  const std::string& /*target*/, automation::Currency amount,
                                                  Date /*date*/) {
  interfere_();
  return amount;
}

std::int32_t InterferingCurrency::Decimals(const std::string& /*code*/) { return 2; }

TEST(Posting, ALineThatSomebodyElseChangedMeanwhileIsAConflictAndLosesNothing) {
  WithStandIns([](StoodIn& test) {
    AddBudget(test.Site(), "A");
    test.Environment().classes->Register(InterferingCurrency::Info(), [&test] {
      return std::make_shared<InterferingCurrency>(
          [&test] { test.Site().Sql("UPDATE BUDGETLINES SET USEDAPPROVEDAMNT = 5, AVAILABLEAMNT = 995"); });
    });
    EXPECT_EQ(ErrorOf([] { Post("A", 10); }).number, automation::error_number::kRowChanged);
    EXPECT_EQ(test.Site().Rows("SELECT USEDAPPROVEDAMNT, AVAILABLEAMNT FROM BUDGETLINES"),
              std::vector<std::string>{"5 | 995"});
  });
}

TEST(Posting, AChainOfAThousandAncestorsWorks) {
  OnRecordedInstallation([](RecordedInstallation& test) {
    constexpr int kLevels = 1000;
    test.Site().Sql("INSERT INTO CURRENCY (CURRENCYCODE, DECIMALS) VALUES ('EUR', 2)");
    test.Site().Host().Transactions().Run([&] {
      for (int i = 0; i <= kLevels; ++i) {
        AddBudget(test.Site(), "B" + std::to_string(i));
        if (i > 0) PutUnder(test.Site(), "B" + std::to_string(i), "B" + std::to_string(i - 1));
      }
    });
    EXPECT_EQ(test.Site().Host().Transactions().Run([] { EXPECT_EQ(Post("B0", 1), 1); }),
              host::Outcome::Committed);
    EXPECT_EQ(test.Site().Rows(
                  "SELECT COUNT(*), SUM(USEDAPPROVEDAMNT) FROM BUDGETLINES WHERE USEDAPPROVEDAMNT = 1"),
              std::vector<std::string>{"1001 | 1001"});
  });
}

TEST(Posting, AWalkAboutToRunOutOfStackIsAnErrorThatSaysSo) {
  OnRecordedInstallation([](RecordedInstallation& test) {
    TwoLevels(test.Site());
    const std::string before = test.Site().Snapshot();
    test.Environment().stack_left = [calls = 0]() mutable {
      return ++calls > 1 ? std::size_t{1000} : std::size_t{1} << 30;
    };
    const auto raised = ErrorOf([&] { test.Site().Host().Transactions().Run([] { Post("LEAF", 1); }); });
    EXPECT_EQ(raised.number, 28);
    EXPECT_NE(raised.description.find("Out of stack space: the hierarchy above budget 'TOP' is too deep"),
              std::string::npos)
        << raised.description;
    EXPECT_EQ(test.Site().Snapshot(), before);
  });
}

TEST(Posting, StackedDiamondsCostOneStepForEachBudget) {
  OnRecordedInstallation([](RecordedInstallation& test) {
    // Forty diamonds on top of each other: 2^40 paths, 121 budgets.
    constexpr int kDiamonds = 40;
    test.Site().Sql("INSERT INTO CURRENCY (CURRENCYCODE, DECIMALS) VALUES ('EUR', 2)");
    test.Site().Host().Transactions().Run([&] {
      AddBudget(test.Site(), "D0");
      for (int i = 0; i < kDiamonds; ++i) {
        const std::string bottom = "D" + std::to_string(i);
        const std::string top = "D" + std::to_string(i + 1);
        AddBudget(test.Site(), top);
        for (const auto* side : {"L", "R"}) {
          AddBudget(test.Site(), side + std::to_string(i));
          PutUnder(test.Site(), side + std::to_string(i), bottom);
          PutUnder(test.Site(), top, side + std::to_string(i));
        }
      }
      test.Script().ForgetTexts();
      Post("D0", 1);
    });
    EXPECT_EQ(test.Script().Count("SELECT PARENTBUDGET"), 3U * kDiamonds + 1);
    EXPECT_EQ(test.Site().Rows("SELECT COUNT(*), SUM(USEDAPPROVEDAMNT) FROM BUDGETLINES"),
              std::vector<std::string>{"121 | 121"});
  });
}

TEST(RepostAllBudgets, MoreLinesThanASixteenBitCountAreAnOverflow) {
  OnRecordedInstallation([](RecordedInstallation& test) {
    test.Site().Sql(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 32768) INSERT INTO "
        "BUDGETLINES (BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT, USEDAPPROVEDAMNT, AVAILABLEAMNT, "
        "AVAILABLEPERC) SELECT 'A', '2026-01-01T00:00:00', '2026-12-31T00:00:00', 100, 0, 100, 1 FROM n");
    const auto raised = ErrorOf([&] {
      test.Site().Host().Transactions().Run([] { std::make_shared<BudgetT>()->RepostAllBudgets(); });
    });
    EXPECT_EQ(raised.number, 6);
    // One line less fits.
    test.Site().Sql("DELETE FROM BUDGETLINES WHERE ID = 1");
    test.Site().Host().Transactions().Run(
        [] { EXPECT_EQ(std::make_shared<BudgetT>()->RepostAllBudgets(), 32767); });
  });
}

TEST(SetBudgetAvailable, RecomputesTheRowAndLeavesTheWritingToTheCaller) {
  OnRecordedInstallation([](RecordedInstallation& test) {
    AddBudget(test.Site(), "A");
    const automation::ObjectRef budgets = test.Environment().classes->Create("Talvex.BudgetT");
    const automation::ObjectRef lines = test.Environment().classes->Create("Platform.Recordset");
    lines->Call("Open", "SELECT * FROM BUDGETLINES", test.Site().Host().Connect(), 1, 3, 1);
    auto& recordset = static_cast<platform::database::Recordset&>(*lines);
    recordset.SetValue("USEDSENDAMNT", 250);
    automation::Variant by_reference(lines);
    budgets->Call("SetBudgetAvailable", by_reference);
    EXPECT_EQ(recordset.Value("AVAILABLEAMNT"), automation::Variant(750.0));
    EXPECT_EQ(recordset.Value("AVAILABLEPERC"), automation::Variant(0.75));
    EXPECT_EQ(test.Site().Rows("SELECT AVAILABLEAMNT FROM BUDGETLINES"), std::vector<std::string>{"1000"});
    lines->Call("Update");
    EXPECT_EQ(test.Site().Rows("SELECT AVAILABLEAMNT, AVAILABLEPERC FROM BUDGETLINES"),
              std::vector<std::string>{"750 | 0.75"});
  });
}

TEST(SetBudgetAvailable, WithoutARecordSetOrARowIsAClearError) {
  OnRecordedInstallation([](RecordedInstallation& test) {
    const auto budgets = std::make_shared<BudgetT>();
    std::shared_ptr<platform::database::Recordset> lines;
    EXPECT_EQ(ErrorOf([&] { budgets->SetBudgetAvailable(lines); }).number,
              automation::error_number::kObjectNotSet);
    lines = std::make_shared<platform::database::Recordset>();
    EXPECT_EQ(ErrorOf([&] { budgets->SetBudgetAvailable(lines); }).number,
              automation::error_number::kObjectIsClosed);
    lines->Open("SELECT * FROM BUDGETLINES", test.Site().Host().Connect(), std::nullopt, std::nullopt,
                std::nullopt);
    EXPECT_EQ(ErrorOf([&] { budgets->SetBudgetAvailable(lines); }).number,
              automation::error_number::kNoCurrentRow);
  });
}

}  // namespace

}  // namespace talvex::test
