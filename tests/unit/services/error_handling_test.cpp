#include <gtest/gtest.h>

#include "automation/dictionary.h"
#include "automation/error.h"
#include "automation/transaction_context.h"
#include "platform/database/connection.h"
#include "services/frame.h"
#include "services/lib_error_handling.h"
#include "services/lib_general.h"
#include "support/stood_in_test.h"
#include "types/talvex_types.h"

namespace talvex::test {

namespace {

using automation::Error;
using automation::ErrorState;
using automation::PendingError;
using automation::PendingErrorScope;
using automation::TransactionContext;
using Lib_ErrorHandling::Err_AppendLine;
using Lib_ErrorHandling::Err_Capture;
using Lib_ErrorHandling::Err_ConnectionErrors;
using Lib_ErrorHandling::Err_FormatMessage;
using Lib_ErrorHandling::Err_Log;
using Lib_ErrorHandling::Err_MapDatabaseError;
using Lib_ErrorHandling::Err_Raise;
using Lib_ErrorHandling::Information;

struct FormatRow {
  const char* description;
  std::int32_t number;
  Information information;
  const char* text;
};

TEST(ErrFormatMessage, BuildsTheErrorTextLineByLine) {
  const FormatRow rows[] = {
      {"gone", -2147220604, std::nullopt,
       "\r\nERROR 0x80040384\r\n METHOD: Talvex.BudgetT.Delete\r\n DESC: gone.\r\n"},
      {"", 28, std::nullopt, "\r\nERROR 0x1C\r\n METHOD: Talvex.BudgetT.Delete\r\n DESC: .\r\n"},
      {"x", 0, std::nullopt, "\r\nERROR 0x0\r\n METHOD: Talvex.BudgetT.Delete\r\n DESC: x.\r\n"},
      {"x", 13, "code A",
       "\r\nERROR 0xD\r\n METHOD: Talvex.BudgetT.Delete\r\n DESC: x.\r\n INFO: code A.\r\n"},
      {"x", 13, "", "\r\nERROR 0xD\r\n METHOD: Talvex.BudgetT.Delete\r\n DESC: x.\r\n INFO: .\r\n"},
      {"x", 13, 42, "\r\nERROR 0xD\r\n METHOD: Talvex.BudgetT.Delete\r\n DESC: x.\r\n INFO: 42.\r\n"},
      {"x", -1, std::nullopt, "\r\nERROR 0xFFFFFFFF\r\n METHOD: Talvex.BudgetT.Delete\r\n DESC: x.\r\n"},
  };
  for (const FormatRow& row : rows) {
    EXPECT_EQ(Err_FormatMessage(row.description, row.number, "Talvex.BudgetT.Delete", row.information),
              row.text);
  }
}

TEST(ErrCapture, TakesThePendingErrorWithItsTextFormatted) {
  const PendingErrorScope pending({13, "Source", "bad", "help.chm", 7});
  const auto record = Err_Capture("M", "i");
  EXPECT_EQ(record.Number, 13);
  EXPECT_EQ(record.Source, "Source");
  EXPECT_EQ(record.Description, "\r\nERROR 0xD\r\n METHOD: M\r\n DESC: bad.\r\n INFO: i.\r\n");
  EXPECT_EQ(record.HelpFile, "help.chm");
  EXPECT_EQ(record.HelpContext, 7);
}

TEST(ErrRaise, RaisesThePendingErrorWithTheTextAsItsDescription) {
  WithStandIns([](StoodIn& test) {
    const PendingErrorScope pending({13, "Source", "bad", "help.chm", 7});
    const ErrorState raised = ErrorOf([] { Err_Raise("M"); });
    EXPECT_EQ(raised.number, 13);
    EXPECT_EQ(raised.source, "Source");
    EXPECT_EQ(raised.description, "\r\nERROR 0xD\r\n METHOD: M\r\n DESC: bad.\r\n");
    EXPECT_EQ(raised.help_file, "help.chm");
    EXPECT_EQ(raised.help_context, 7);
    EXPECT_EQ(test.Record().log.size(), 1U);
  });
}

TEST(ErrRaise, LogsTheDescriptionFormattedOnceMore) {
  WithStandIns([](StoodIn& test) {
    const PendingErrorScope pending({13, "Source", "bad", "", 0});
    ErrorOf([] { Err_Raise("M", "i"); });
    ASSERT_EQ(test.Record().log.size(), 1U);
    const LogEntry& entry = test.Record().log[0];
    EXPECT_EQ(entry.source, "Source");
    EXPECT_EQ(entry.level, 0);
    EXPECT_TRUE(entry.fourth_is_empty);
    EXPECT_EQ(entry.text,
              "\r\nERROR 0xD\r\n METHOD: M\r\n DESC: "
              "\r\nERROR 0xD\r\n METHOD: M\r\n DESC: bad.\r\n INFO: i.\r\n"
              ".\r\n INFO: i.\r\n");
  });
}

TEST(ErrRaise, NestsTheTextsOfAllLevelsOfAFailingCall) {
  WithStandIns([](StoodIn&) {
    const ErrorState raised =
        ErrorOf([] { Handled("Outer", [] { Handled("Inner", [] { throw Error(13, "Source", "bad"); }); }); });
    EXPECT_EQ(raised.description,
              "\r\nERROR 0xD\r\n METHOD: Outer\r\n DESC: "
              "\r\nERROR 0xD\r\n METHOD: Inner\r\n DESC: bad.\r\n"
              ".\r\n");
    EXPECT_EQ(raised.source, "Source");
  });
}

TEST(ErrRaise, WithoutAnErrorWritesANoteAndReturns) {
  WithStandIns([](StoodIn& test) {
    Err_Raise("M", "i");
    ASSERT_EQ(test.Record().log.size(), 1U);
    EXPECT_EQ(test.Record().log[0].source, "M");
    EXPECT_EQ(test.Record().log[0].text,
              "\r\nERROR 0x0\r\n METHOD: M\r\n DESC: Not an actual error.\r\n INFO: i.\r\n");
    EXPECT_EQ(PendingError().number, 0);
  });
}

TEST(ErrLog, PassesOverInSilenceANoteForWhichThereIsNoLog) {
  WithStandIns([](StoodIn& test) {
    test.Environment().classes->Register(RecordingLog::Info(),
                                         []() -> automation::ObjectRef { throw Error(429, "x", "no log"); });
    std::int32_t level = 0;
    EXPECT_NO_THROW(Err_Log(level, "M", std::nullopt));
  });
}

TEST(ErrLog, RaisesWhatTheLogRaisesWithTheFirstErrorAtItsEnd) {
  WithStandIns([](StoodIn& test) {
    test.Record().fail_in = "WriteError";
    const PendingErrorScope pending({13, "Source", "the first error", "", 0});
    std::int32_t level = 0;
    const ErrorState raised = ErrorOf([&] { Err_Log(level, "M", std::nullopt); });
    EXPECT_EQ(raised.number, 1000);
    EXPECT_TRUE(raised.description.starts_with("out of order")) << raised.description;
    EXPECT_TRUE(raised.description.ends_with("the first error")) << raised.description;
  });
}

TEST(ErrLog, ALogThatCannotBeCreatedForARealErrorIsRaised) {
  WithStandIns([](StoodIn& test) {
    int creations = 0;
    test.Environment().classes->Register(RecordingLog::Info(), [&creations]() -> automation::ObjectRef {
      ++creations;
      throw Error(429, "x", "no log");
    });
    const PendingErrorScope pending({13, "Source", "the first error", "", 0});
    std::int32_t level = 0;
    const ErrorState raised = ErrorOf([&] { Err_Log(level, "M", std::nullopt); });
    EXPECT_EQ(raised.number, 429);
    EXPECT_TRUE(raised.description.ends_with("the first error")) << raised.description;
    // The failing creation is an error itself, and must not be logged while the thread is busy with the log.
    EXPECT_EQ(creations, 1);
  });
}

TEST(ErrConnectionErrors, IsEmptyForWhatHasNone) {
  EXPECT_EQ(Err_ConnectionErrors({}), "");
  EXPECT_EQ(Err_ConnectionErrors("a text"), "");
  EXPECT_EQ(Err_ConnectionErrors(std::make_shared<automation::Dictionary>()), "");
  EXPECT_EQ(Err_ConnectionErrors(std::make_shared<platform::database::Connection>()), "");
}

TEST(ErrConnectionErrors, CountsTheErrorsWithTheirNumbers) {
  WithStandIns([](StoodIn& test) {
    const auto connection = test.Site().Host().Connect();
    ErrorOf([&] { connection->Execute("SELECT * FROM NOWHERE", nullptr, std::nullopt); });
    EXPECT_EQ(Err_ConnectionErrors(connection),
              "Error(s) from connection object:  (1)no such table: NOWHERE[-2147217900]");
  });
}

TEST(ErrAppendLine, AppendsALineBreakBothTextsAndADashBetween) {
  std::string text = "before";
  Err_AppendLine(text, "message", "CODE");
  Err_AppendLine(text, "", "");
  EXPECT_EQ(text, "before\r\nmessage-CODE\r\n-");
}

struct MapRow {
  const char* statement;
  const char* description;
  std::int32_t number;
};

TEST(ErrMapDatabaseError, GivesTheNumbersByWhichCallersTellFailures) {
  WithStandIns([](StoodIn& test) {
    const auto connection = test.Site().Host().Connect();
    test.Site().Sql("CREATE TABLE T (A INT PRIMARY KEY, B INT NOT NULL) WITHOUT ROWID");
    test.Site().Sql("INSERT INTO T (A, B) VALUES (1, 1)");
    test.Site().Sql("CREATE TABLE U (A INT REFERENCES T)");
    test.Site().Sql("INSERT INTO U (A) VALUES (1)");
    const MapRow rows[] = {
        {"INSERT INTO T (A, B) VALUES (1, 1)", "any", -2147216504},
        {"INSERT INTO T (A) VALUES (2)", "any", -2147216503},
        {"DELETE FROM T", "conflict in FK_ACCOUNTINGRULE_LEDGERACCOUNT", -2147216494},
        {"DELETE FROM T", "conflict in FK_REQUISITIONLINE_LEDGERACCOUNT", -2147216493},
        {"DELETE FROM T", "FK_REQUISITIONLINE_LEDGERACCOUNT and FK_ACCOUNTINGRULE_LEDGERACCOUNT",
         -2147216494},
        {"DELETE FROM T", "another constraint", 77},
        {"SELECT * FROM NOWHERE", "FK_ACCOUNTINGRULE_LEDGERACCOUNT", 77},
    };
    for (const MapRow& row : rows) {
      ErrorOf([&] { connection->Execute(row.statement, nullptr, std::nullopt); });
      const PendingErrorScope pending({77, "Source", row.description, "", 0});
      Err_MapDatabaseError(connection);
      EXPECT_EQ(PendingError().number, row.number) << row.statement;
      EXPECT_EQ(PendingError().description, row.description);
    }
  });
}

TEST(ErrMapDatabaseError, LeavesThePendingErrorWithoutAConnectionOrItsErrors) {
  const PendingErrorScope pending({77, "Source", "FK_ACCOUNTINGRULE_LEDGERACCOUNT", "", 0});
  Err_MapDatabaseError({});
  Err_MapDatabaseError(std::make_shared<platform::database::Connection>());
  EXPECT_EQ(PendingError().number, 77);
}

TEST(TalvexErrors, AreTheObjectErrorBaseAndTheirOffsets) {
  constexpr std::int64_t kBase = 0x80040000LL - (1LL << 32);
  EXPECT_EQ(static_cast<std::int32_t>(TalvexErrors::BudgetNotFound), kBase + 900);
  EXPECT_EQ(static_cast<std::int32_t>(TalvexErrors::BudgetTypeNotFound), kBase + 901);
  EXPECT_EQ(static_cast<std::int32_t>(TalvexErrors::ChargeTypeNotFound), kBase + 902);
}

TEST(Frame, AMethodThatFailsVotesAbortWhetherItReadsOrWrites) {
  WithStandIns([](StoodIn& test) {
    const auto fail = [] { throw Error(13, "Source", "bad"); };
    for (const bool writes : {true, false}) {
      TransactionContext context(*test.Environment().classes);
      ErrorOf([&] { writes ? Writes("M", fail) : Reads("M", fail); });
      EXPECT_TRUE(context.Aborted());
    }
  });
}

TEST(Frame, APrivateStepThatFailsCastsNoVote) {
  WithStandIns([](StoodIn& test) {
    TransactionContext context(*test.Environment().classes);
    ErrorOf([] { Handled("M", [] { throw Error(13, "Source", "bad"); }); });
    EXPECT_FALSE(context.Aborted());
  });
}

TEST(Frame, ASuccessGivesTheResultAndNoVoteForAbort) {
  WithStandIns([](StoodIn& test) {
    TransactionContext context(*test.Environment().classes);
    EXPECT_EQ(Writes("M", [] { return 7; }), 7);
    EXPECT_EQ(Reads("M", [] { return 8; }), 8);
    EXPECT_FALSE(context.Aborted());
    EXPECT_TRUE(test.Record().log.empty());
  });
}

TEST(Frame, WhatTheLanguageThrowsBecomesAnErrorWithANumber) {
  WithStandIns([](StoodIn&) {
    const ErrorState raised = ErrorOf([] { Reads("M", [] { throw std::runtime_error("broken"); }); });
    EXPECT_EQ(raised.number, automation::error_number::kInternalError);
    EXPECT_NE(raised.description.find("broken"), std::string::npos);
  });
}

TEST(Frame, WhatTheBodyOpenedIsClosedBeforeTheVote) {
  WithStandIns([](StoodIn& test) {
    TransactionContext context(*test.Environment().classes);
    bool aborted_when_closed = true;
    struct Closer {
      bool& aborted;
      TransactionContext& context;
      ~Closer() { aborted = context.Aborted(); }
    };
    ErrorOf([&] {
      Reads("M", [&] {
        const Closer closer{aborted_when_closed, context};
        throw Error(13, "Source", "bad");
      });
    });
    EXPECT_FALSE(aborted_when_closed);
    EXPECT_TRUE(context.Aborted());
  });
}

}  // namespace

}  // namespace talvex::test
