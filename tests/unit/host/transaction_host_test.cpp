#include "host/transaction_host.h"

#include <gtest/gtest.h>

#include "automation/error.h"
#include "host/installer.h"
#include "services/lib_mts.h"
#include "support/stood_in_test.h"
#include "support/test_installation.h"

namespace talvex::test {

namespace {

using automation::Error;
using automation::TransactionContext;
using host::Outcome;

constexpr const char* kUsers = "SELECT USERID FROM SUITEUSER";

void AddUser(const TestInstallation& site, const std::string& id) {
  site.Sql("INSERT INTO SUITEUSER (USERID, FULLNAME, EMAIL, LOCALEID) VALUES ('" + id +
           "', 'x', 'x@example.com', 1033)");
}

void OnInstallation(const std::function<void(TestInstallation&)>& body) {
  OnOwnThread([&] {
    TestInstallation installation;
    body(installation);
  });
}

TEST(TransactionHost, KeepsTheWorkOfABodyThatReturns) {
  OnInstallation([](TestInstallation& site) {
    EXPECT_EQ(site.Host().Transactions().Run([&] { AddUser(site, "a"); }), Outcome::Committed);
    EXPECT_EQ(site.Rows(kUsers), std::vector<std::string>{"a"});
  });
}

TEST(TransactionHost, OneVoteForAbortUndoesEverything) {
  OnInstallation([](TestInstallation& site) {
    const auto outcome = site.Host().Transactions().Run([&] {
      AddUser(site, "a");
      Lib_MTS::MTS_SetAbort();
      Lib_MTS::MTS_SetComplete();
      AddUser(site, "b");
    });
    EXPECT_EQ(outcome, Outcome::Aborted);
    EXPECT_TRUE(site.Rows(kUsers).empty());
  });
}

TEST(TransactionHost, AnErrorOutOfTheBodyUndoesEverythingAndIsRaisedAgain) {
  OnInstallation([](TestInstallation& site) {
    const auto raised = ErrorOf([&] {
      site.Host().Transactions().Run([&] {
        AddUser(site, "a");
        throw Error(77, "Source", "enough");
      });
    });
    EXPECT_EQ(raised.number, 77);
    EXPECT_TRUE(site.Rows(kUsers).empty());
    EXPECT_EQ(TransactionContext::Current(), nullptr);
  });
}

TEST(TransactionHost, ATransactionThatIsLetGoIsUndone) {
  OnInstallation([](TestInstallation& site) {
    {
      const auto context = site.Host().Transactions().Begin();
      AddUser(site, "a");
    }
    EXPECT_TRUE(site.Rows(kUsers).empty());
  });
}

TEST(TransactionHost, ClosingAConnectionNeitherKeepsNorUndoesTheWork) {
  OnInstallation([](TestInstallation& site) {
    site.Host().Transactions().Run([&] {
      const auto first = site.Host().Connect();
      first->Execute("INSERT INTO SUITEOFFICE (OFFICEDESCRIPTION) VALUES ('Lyon')", nullptr, std::nullopt);
      first->Close();
      EXPECT_EQ(site.Rows("SELECT * FROM SUITEOFFICE"), std::vector<std::string>{"Lyon"});
      Lib_MTS::MTS_SetAbort();
    });
    EXPECT_TRUE(site.Rows("SELECT * FROM SUITEOFFICE").empty());
  });
}

TEST(TransactionHost, OffersTheSharedTexts) {
  OnInstallation([](TestInstallation& site) {
    const auto context = site.Host().Transactions().Begin();
    const auto messages = context->NamedObject("Application")->Call("Value", "I18NMessageManager");
    ASSERT_TRUE(messages.IsObject());
    EXPECT_EQ(messages.As<automation::ObjectRef>()->Call("GetText", "SLBBU0240", "1031"),
              automation::Variant("Budgetübersicht"));
  });
}

TEST(RunWithRetry, RepeatsTheBodyWhileThereIsAConflict) {
  OnInstallation([](TestInstallation& site) {
    int runs = 0;
    const auto outcome = site.Host().Transactions().RunWithRetry(
        [&] {
          AddUser(site, "a");
          if (++runs < 3) {
            TransactionContext::Current()->NoteConflict();
            Lib_MTS::MTS_SetAbort();
          }
        },
        5);
    EXPECT_EQ(outcome, Outcome::Committed);
    EXPECT_EQ(runs, 3);
    EXPECT_EQ(site.Rows(kUsers), std::vector<std::string>{"a"});
  });
}

TEST(RunWithRetry, GivesUpAfterItsAttempts) {
  OnInstallation([](TestInstallation& site) {
    int runs = 0;
    const auto raised = ErrorOf([&] {
      site.Host().Transactions().RunWithRetry(
          [&] {
            ++runs;
            TransactionContext::Current()->NoteConflict();
            throw Error(automation::error_number::kRowChanged, "Source", "changed");
          },
          3);
    });
    EXPECT_EQ(raised.number, automation::error_number::kRowChanged);
    EXPECT_EQ(runs, 3);
  });
}

TEST(RunReading, IsRepeatedAsOftenAsItIsToldWhileOthersStandInItsWay) {
  OnInstallation([](TestInstallation& site) {
    for (const int attempts : {1, 3}) {
      int runs = 0;
      const auto raised = ErrorOf([&] {
        site.Host().Transactions().RunReading(
            [&] {
              ++runs;
              TransactionContext::Current()->NoteConflict();
              throw Error(automation::error_number::kUnspecified, "Source", "deadlock");
            },
            attempts);
      });
      EXPECT_EQ(raised.description, "deadlock");
      EXPECT_EQ(runs, attempts);
    }
  });
}

TEST(RunWithRetry, RepeatsNothingElse) {
  OnInstallation([](TestInstallation& site) {
    int runs = 0;
    const auto outcome = site.Host().Transactions().RunWithRetry(
        [&] {
          ++runs;
          Lib_MTS::MTS_SetAbort();
        },
        5);
    EXPECT_EQ(outcome, Outcome::Aborted);
    EXPECT_EQ(runs, 1);
  });
}

TEST(Installer, RefusesADirectoryInUseAndLeavesItAsItIs) {
  OnInstallation([](TestInstallation& site) {
    AddUser(site, "a");
    EXPECT_EQ(ErrorOf([&] {
                host::MakeInstallation({site.Path("."), true, {}});
              }).number,
              automation::error_number::kFileAlreadyExists);
    EXPECT_EQ(site.Rows(kUsers), std::vector<std::string>{"a"});
  });
}

TEST(Host, ADirectoryThatIsNoInstallationIsAnErrorThatNamesIt) {
  OnInstallation([](TestInstallation& site) {
    const auto raised = ErrorOf([&] { const host::Host host({site.Path("log"), std::nullopt}); });
    EXPECT_EQ(raised.number, automation::error_number::kFileNotFound);
    EXPECT_NE(raised.description.find(site.Path("log")), std::string::npos) << raised.description;
  });
}

}  // namespace

}  // namespace talvex::test
