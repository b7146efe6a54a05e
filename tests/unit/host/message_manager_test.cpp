#include "host/message_manager.h"

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/suite.h"
#include "unit/adapters/suite_database_world.h"

namespace talvex::host {
namespace {

using suite_test::ErrorOf;
namespace number = automation::error_number;

constexpr std::string_view kRows = R"(
INSERT INTO I18NTEXT (LOCALEID, LABEL, Text) VALUES
  (1033, 'SLBBU0050', 'Budget'), (1036, 'SLBBU0050', 'Budget prévu'), (1033, 'O''LABEL', 'Quoted'),
  (1033, 'NOTHING', NULL);
)";

class MessageManagerTest : public testing::Test {
 protected:
  [[nodiscard]] platform::suite::MessageManager Messages() {
    return platform::suite::MessageManager::Of(application_);
  }
  [[nodiscard]] std::size_t Reads() const { return world_.traffic->statements.size(); }

  suite_test::DatabaseWorld world_{kRows};
  automation::ClassRegistry classes_;
  Application application_{std::make_shared<MessageManager>([this] { return world_.connection_string; })};
};

TEST_F(MessageManagerTest, GivesTheTextOfALabelInALanguage) {
  EXPECT_EQ(Messages().GetText("SLBBU0050", "1033"), "Budget");
  EXPECT_EQ(Messages().GetText("SLBBU0050", "1036"), "Budget prévu");
  EXPECT_EQ(Messages().GetText("O'LABEL", "1033"), "Quoted");
  EXPECT_EQ(world_.traffic->statements.at(0).first,
            "SELECT Text FROM I18NTEXT WHERE LOCALEID=1033 AND LABEL='SLBBU0050'");
}

TEST_F(MessageManagerTest, SpeaksEnglishToNobodyInParticular) {
  EXPECT_EQ(Messages().GetText("SLBBU0050", "0"), "Budget");
  EXPECT_EQ(Messages().GetText("NOTHING", "0"), "");
  EXPECT_EQ(Messages().GetText("SLBBU0050", "7"), "");
}

TEST_F(MessageManagerTest, KeepsATextThatWasFound) {
  EXPECT_EQ(Messages().GetText("SLBBU0050", "1033"), "Budget");
  world_.Sql("UPDATE I18NTEXT SET Text='Changed' WHERE LABEL='SLBBU0050'");
  const auto reads = Reads();
  EXPECT_EQ(Messages().GetText("SLBBU0050", "1033"), "Budget");
  EXPECT_EQ(Reads(), reads);
}

TEST_F(MessageManagerTest, AsksAgainForATextThatWasNotFound) {
  EXPECT_EQ(Messages().GetText("NEW", "1033"), "");
  EXPECT_EQ(Messages().GetText("NOTHING", "1033"), "");
  world_.Sql("INSERT INTO I18NTEXT (LOCALEID, LABEL, Text) VALUES (1033, 'NEW', 'New text')");
  EXPECT_EQ(Messages().GetText("NEW", "1033"), "New text");
}

// What a transaction has read may be its own doing, and is nobody else's before it is kept.
TEST_F(MessageManagerTest, ATextReadInATransactionIsSharedOnlyWhenTheTransactionIsKept) {
  const auto read_in_transaction = [&](const std::string& text, bool keep) {
    automation::TransactionContext context(classes_);
    world_.Sql("UPDATE I18NTEXT SET Text='" + text + "' WHERE LOCALEID=1033 AND LABEL='SLBBU0050'");
    EXPECT_EQ(Messages().GetText("SLBBU0050", "1033"), text);
    const auto reads = Reads();
    EXPECT_EQ(Messages().GetText("SLBBU0050", "1033"), text);
    EXPECT_EQ(Reads(), reads) << "it is kept for the transaction itself";
    if (!keep) context.SetAbort();
    EXPECT_EQ(context.Commit(), keep);
  };
  read_in_transaction("Undone", false);
  EXPECT_EQ(ErrorOf([&] {
              const automation::TransactionContext let_go(classes_);
              world_.Sql("UPDATE I18NTEXT SET Text='Let go' WHERE LOCALEID=1033 AND LABEL='SLBBU0050'");
              EXPECT_EQ(Messages().GetText("SLBBU0050", "1033"), "Let go");
              throw automation::Error(77, "Source", "enough");
            }).number,
            77);
  read_in_transaction("Kept", true);
  const auto reads = Reads();
  EXPECT_EQ(Messages().GetText("SLBBU0050", "1033"), "Kept");
  EXPECT_EQ(Reads(), reads) << "it is shared";
}

TEST_F(MessageManagerTest, AnUndoneTextIsReadAnewByOthers) {
  {
    const automation::TransactionContext context(classes_);
    world_.Sql("UPDATE I18NTEXT SET Text='Undone' WHERE LOCALEID=1033 AND LABEL='SLBBU0050'");
    EXPECT_EQ(Messages().GetText("SLBBU0050", "1033"), "Undone");
  }
  EXPECT_EQ(Messages().GetText("SLBBU0050", "1033"), "Budget");
}

TEST_F(MessageManagerTest, ALocaleIdIsAWholeNumber) {
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(Messages().GetText("SLBBU0050", "English")); }).number,
            number::kTypeMismatch);
  EXPECT_EQ(Reads(), 0U);
}

TEST_F(MessageManagerTest, AFailureToReadIsRaisedAndNotKept) {
  std::string connection_string = "Driver=SQLite;Database=/nowhere/talvex.db";
  MessageManager messages([&] { return connection_string; });
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(messages.GetText("SLBBU0050", "1033")); }).number,
            number::kCannotOpenDatabase);
  connection_string = world_.connection_string;
  EXPECT_EQ(messages.GetText("SLBBU0050", "1033"), "Budget");
}

TEST_F(MessageManagerTest, ServesSeveralThreads) {
  const auto environment = std::make_shared<platform::Environment>(platform::Environment::Current());
  const auto object = std::make_shared<MessageManager>([this] { return world_.connection_string; });
  std::atomic<int> right = 0;
  const auto work = [&] {
    const platform::Environment::ForThread in_world(environment);
    for (int i = 0; i < 1000; ++i) {
      if (object->GetText("SLBBU0050", i % 2 == 0 ? "1036" : "1033") ==
          (i % 2 == 0 ? "Budget prévu" : "Budget"))
        ++right;
    }
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) threads.emplace_back(work);
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(right, 4000);
}

TEST_F(MessageManagerTest, TheApplicationSharesNothingElse) {
  EXPECT_NE(application_.Value("i18nmessagemanager"), nullptr);
  EXPECT_EQ(application_.Value("I18NMessageManager"), application_.Value("I18NMessageManager"));
  const auto error = ErrorOf([&] { static_cast<void>(application_.Value("Session")); });
  EXPECT_EQ(error.number, number::kInvalidCall);
  EXPECT_NE(error.description.find("'Session'"), std::string::npos);
}

}  // namespace
}  // namespace talvex::host
