#include <gtest/gtest.h>

#include "automation/error.h"
#include "automation/transaction_context.h"
#include "services/lib_general.h"
#include "services/lib_sql.h"
#include "support/stood_in_test.h"

namespace talvex::test {

namespace {

using automation::ErrorState;
using automation::TransactionContext;
using automation::Variant;
using platform::database::Connection;
using platform::database::CursorType;
using platform::database::EditMode;
using platform::database::LockType;
using platform::database::ObjectState;
using platform::database::Recordset;
using namespace Lib_SQL;  // NOLINT(google-build-using-namespace)

constexpr const char* kBudgets = "SELECT BUDGETCODE, BUDGETTYPE FROM BUDGET ORDER BY BUDGETCODE";

void TwoBudgets(StoodIn& test) {
  test.Site().Sql("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE) VALUES ('A', 1)");
  test.Site().Sql("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE) VALUES ('B', 2)");
}

std::string TraceOf(const std::string& method, const std::string& description,
                    const std::string& information) {
  return "\r\nERROR 0x80040E14\r\n METHOD: " + method + "\r\n DESC: " + description + ".\r\n" +
         (information.empty() ? "" : " INFO: " + information + ".\r\n");
}

TEST(SqlExecuteSql, RunsAStatementAndClosesItsConnection) {
  WithStandIns([](StoodIn& test) {
    TwoBudgets(test);
    const auto result = Sql_ExecuteSQL("DELETE FROM BUDGET WHERE BUDGETCODE='A'");
    EXPECT_EQ(result->State(), ObjectState::Closed);
    EXPECT_EQ(test.Site().Rows(kBudgets), std::vector<std::string>{"B | 2"});
  });
}

TEST(SqlExecuteSql, NamesTheStatementThatFailed) {
  WithStandIns([](StoodIn&) {
    const ErrorState raised = ErrorOf([] { Sql_ExecuteSQL("DELETE FROM NOWHERE"); });
    EXPECT_EQ(raised.description,
              TraceOf("Lib_SQL.Sql_ExecuteSQL", "no such table: NOWHERE", "Executing: DELETE FROM NOWHERE"));
  });
}

TEST(SqlGetDisconnectedRecordset, WithoutAConnectionGivesDetachedRows) {
  WithStandIns([](StoodIn& test) {
    TwoBudgets(test);
    const auto rows = Sql_GetDisconnectedRecordset(kBudgets, nullptr);
    EXPECT_EQ(rows->ActiveConnection(), nullptr);
    EXPECT_EQ(rows->LockType(), LockType::ReadOnly);
    EXPECT_EQ(rows->RecordCount(), 2);
    EXPECT_EQ(rows->Value("BUDGETCODE"), Variant("A"));
  });
}

TEST(SqlGetDisconnectedRecordset, LeavesAConnectionThatItWasGivenOpen) {
  WithStandIns([](StoodIn& test) {
    TwoBudgets(test);
    const auto connection = Lib_General::getConnection();
    const auto rows = Sql_GetDisconnectedRecordset(kBudgets, connection);
    EXPECT_EQ(connection->State(), ObjectState::Open);
    connection->Close();
    EXPECT_EQ(rows->RecordCount(), 2);
  });
}

TEST(SqlGetDisconnectedRecordset, PutsTheProviderErrorsBeforeTheStatement) {
  WithStandIns([](StoodIn&) {
    const std::string information =
        "Error(s) from connection object:  (1)no such table: NOWHERE[-2147217900] executing: 'SELECT * FROM "
        "NOWHERE'";
    const ErrorState raised =
        ErrorOf([] { static_cast<void>(Sql_GetDisconnectedRecordset("SELECT * FROM NOWHERE", nullptr)); });
    EXPECT_EQ(raised.description,
              TraceOf("Lib_SQL.Sql_GetDisconnectedRecordset", "no such table: NOWHERE", information));
  });
}

TEST(SqlGetDisconnectedRecordset, LeavesAGivenConnectionOpenAfterAFailureToo) {
  WithStandIns([](StoodIn&) {
    const auto connection = Lib_General::getConnection();
    ErrorOf([&] { static_cast<void>(Sql_GetDisconnectedRecordset("SELECT * FROM NOWHERE", connection)); });
    EXPECT_EQ(connection->State(), ObjectState::Open);
  });
}

TEST(SqlGetReadonlyRecordset, GivesConnectedKeysetRows) {
  WithStandIns([](StoodIn& test) {
    TwoBudgets(test);
    const auto connection = Lib_General::getConnection();
    const auto rows = Sql_GetReadonlyRecordset(kBudgets, connection);
    EXPECT_EQ(rows->ActiveConnection(), connection);
    EXPECT_EQ(rows->CursorType(), CursorType::Keyset);
    EXPECT_EQ(rows->LockType(), LockType::ReadOnly);
    EXPECT_EQ(rows->CursorLocation, 3);
  });
}

struct FailureRow {
  const char* method;
  std::function<void(const std::shared_ptr<Connection>&)> call;
};

TEST(LibSql, EveryOpeningProcedureFailsUnderItsName) {
  const std::string sql = "SELECT * FROM NOWHERE";
  const std::string information =
      "Error(s) from connection object:  (1)no such table: NOWHERE[-2147217900] executing: '" + sql + "'";
  const FailureRow rows[] = {
      {"Lib_SQL.Sql_GetReadonlyRecordset",
       [&](const auto& connection) { static_cast<void>(Sql_GetReadonlyRecordset(sql, connection)); }},
      {"Lib_SQL.SQL_GetWritableRecordset",
       [&](const auto& connection) {
         static_cast<void>(SQL_GetWritableRecordset(sql, connection, LockType::BatchOptimistic));
       }},
      {"Lib_SQL.Sql_GetUpdateableRecordset",
       [&](const auto& connection) {
         static_cast<void>(Sql_GetUpdateableRecordset(sql, connection, LockType::Optimistic));
       }},
  };
  for (const FailureRow& row : rows) {
    WithStandIns([&](StoodIn&) {
      const auto connection = Lib_General::getConnection();
      const ErrorState raised = ErrorOf([&] { row.call(connection); });
      EXPECT_EQ(raised.description, TraceOf(row.method, "no such table: NOWHERE", information));
    });
  }
}

TEST(SqlGetWritableRecordset, GivesDetachedRowsThatAreWrittenThroughAnotherConnection) {
  WithStandIns([](StoodIn& test) {
    TwoBudgets(test);
    const auto rows = SQL_GetWritableRecordset(kBudgets, nullptr, LockType::BatchOptimistic);
    EXPECT_EQ(rows->ActiveConnection(), nullptr);
    rows->SetValue("BUDGETTYPE", 7);
    const auto connection = Lib_General::getConnection();
    // The string with which the component opens its connections is the same for all of them.
    rows->SetActiveConnection(connection);
    rows->UpdateBatch(platform::database::Affect::All);
    EXPECT_EQ(test.Site().Rows(kBudgets), (std::vector<std::string>{"A | 7", "B | 2"}));
  });
}

TEST(SqlGetUpdateableRecordset, WritesOnTheCallersConnection) {
  WithStandIns([](StoodIn& test) {
    TwoBudgets(test);
    const auto connection = Lib_General::getConnection();
    const auto rows = Sql_GetUpdateableRecordset(kBudgets, connection, LockType::Optimistic);
    rows->SetValue("BUDGETTYPE", 7);
    rows->Update(std::nullopt, std::nullopt);
    EXPECT_EQ(test.Site().Rows(kBudgets), (std::vector<std::string>{"A | 7", "B | 2"}));
  });
}

TEST(SqlGetRecordsAsDictionary, ReadsTheFirstColumnAsKeyAndTheSecondAsItem) {
  WithStandIns([](StoodIn& test) {
    TwoBudgets(test);
    const auto dictionary = Sql_GetRecordsAsDictionary(kBudgets, Lib_General::Gen_GetConnectionString());
    EXPECT_EQ(dictionary->Count(), 2);
    EXPECT_EQ(dictionary->Item("A"), Variant(1));
    EXPECT_EQ(dictionary->Item("B"), Variant(2));
  });
}

TEST(LibSql, AnEmptyResultIsAnEmptyDictionaryFromBothReaders) {
  WithStandIns([](StoodIn&) {
    EXPECT_EQ(Sql_GetRecordsAsDictionary(kBudgets, Lib_General::Gen_GetConnectionString())->Count(), 0);
    auto connection = Lib_General::getConnection();
    EXPECT_EQ(Sql_getRecords(connection, kBudgets, "BUDGETCODE", "BUDGETTYPE")->Count(), 0);
  });
}

TEST(SqlGetRecordsAsDictionary, AKeyThatComesTwiceFailsWithTheStatementInTheMethodName) {
  WithStandIns([](StoodIn& test) {
    TwoBudgets(test);
    const std::string sql = "SELECT 'same', BUDGETCODE FROM BUDGET";
    const ErrorState raised = ErrorOf(
        [&] { static_cast<void>(Sql_GetRecordsAsDictionary(sql, Lib_General::Gen_GetConnectionString())); });
    EXPECT_EQ(raised.number, 457);
    EXPECT_TRUE(raised.description.starts_with(
        "\r\nERROR 0x1C9\r\n METHOD: Lib_SQL.Sql_GetRecordsAsDictionary. SQL: '" + sql + "'\r\n DESC: "))
        << raised.description;
    EXPECT_EQ(raised.description.find("INFO:"), std::string::npos);
  });
}

TEST(SqlGetRecords, ReadsTheNamedColumnsAndConsumesTheConnection) {
  WithStandIns([](StoodIn& test) {
    TwoBudgets(test);
    auto connection = Lib_General::getConnection();
    const auto kept = connection;
    const auto dictionary = Sql_getRecords(connection, kBudgets, "budgetcode", "BUDGETCODE");
    EXPECT_EQ(dictionary->Item("B"), Variant("B"));
    EXPECT_EQ(connection, nullptr);
    EXPECT_EQ(kept->State(), ObjectState::Closed);
  });
}

TEST(SqlGetRecords, FailsWithTheStatementInItsMethodNameVotesAbortAndClosesTheConnection) {
  WithStandIns([](StoodIn& test) {
    TwoBudgets(test);
    const auto context = test.Site().Host().Transactions().Begin();
    auto connection = Lib_General::getConnection();
    const auto kept = connection;
    const std::string sql = "SELECT 'same' AS K, BUDGETCODE FROM BUDGET";
    const ErrorState raised =
        ErrorOf([&] { static_cast<void>(Sql_getRecords(connection, sql, "K", "BUDGETCODE")); });
    EXPECT_TRUE(raised.description.starts_with(
        "\r\nERROR 0x1C9\r\n METHOD: Lib_Sql.Sql_getRecords SQL:" + sql + "\r\n"))
        << raised.description;
    EXPECT_EQ(kept->State(), ObjectState::Closed);
    EXPECT_TRUE(context->Aborted());
  });
}

TEST(CloseRecordset, OnlyReleasesAnEmptyOrAClosedOne) {
  WithStandIns([](StoodIn&) {
    std::shared_ptr<Recordset> recordset;
    EXPECT_NO_THROW(CloseRecordset(recordset));
    recordset = std::make_shared<Recordset>();
    EXPECT_NO_THROW(CloseRecordset(recordset));
    EXPECT_EQ(recordset, nullptr);
  });
}

TEST(CloseRecordset, AbandonsAPendingEditOfEitherKind) {
  for (const LockType lock_type : {LockType::Optimistic, LockType::BatchOptimistic}) {
    WithStandIns([&](StoodIn& test) {
      TwoBudgets(test);
      const auto connection = Lib_General::getConnection();
      auto recordset = Sql_GetUpdateableRecordset(kBudgets, connection, lock_type);
      const auto kept = recordset;
      recordset->SetValue("BUDGETTYPE", 7);
      ASSERT_NE(recordset->EditMode(), EditMode::None);
      CloseRecordset(recordset);
      EXPECT_EQ(recordset, nullptr);
      EXPECT_EQ(kept->State(), ObjectState::Closed);
      EXPECT_EQ(test.Site().Rows(kBudgets), (std::vector<std::string>{"A | 1", "B | 2"}));
    });
  }
}

TEST(CloseRecordset, LeavesThePendingErrorOfAHandlerAsItIs) {
  WithStandIns([](StoodIn& test) {
    TwoBudgets(test);
    const auto connection = Lib_General::getConnection();
    auto recordset = Sql_GetReadonlyRecordset(kBudgets, connection);
    const automation::PendingErrorScope pending({13, "Source", "first", "", 0});
    CloseRecordset(recordset);
    EXPECT_EQ(recordset, nullptr);
    EXPECT_EQ(automation::PendingError().description, "first");
  });
}

TEST(SqlCloseRecordsetAndConnection, ClosesBoth) {
  WithStandIns([](StoodIn& test) {
    TwoBudgets(test);
    const auto connection = Lib_General::getConnection();
    auto recordset = Sql_GetReadonlyRecordset(kBudgets, connection);
    Sql_CloseRecordsetAndConnection(recordset);
    EXPECT_EQ(recordset, nullptr);
    EXPECT_EQ(connection->State(), ObjectState::Closed);
    EXPECT_NO_THROW(Sql_CloseRecordsetAndConnection(recordset));
  });
}

TEST(SqlCloseRecordsetAndConnection, TakesTheConnectionOffTheSetForEveryHolder) {
  WithStandIns([](StoodIn& test) {
    TwoBudgets(test);
    const auto connection = Lib_General::getConnection();
    auto recordset = Sql_GetReadonlyRecordset(kBudgets, connection);
    const auto other_holder = recordset;
    Sql_CloseRecordsetAndConnection(recordset);
    EXPECT_EQ(other_holder->State(), ObjectState::Closed);
    EXPECT_EQ(other_holder->ActiveConnection(), nullptr);
    // A closed set still lets go of the connection that it was opened on.
    auto closed = Sql_GetReadonlyRecordset(kBudgets, Lib_General::getConnection());
    const auto holder_of_closed = closed;
    const auto its_connection = closed->ActiveConnection();
    closed->Close();
    Sql_CloseRecordsetAndConnection(closed);
    EXPECT_EQ(its_connection->State(), ObjectState::Closed);
    EXPECT_EQ(holder_of_closed->ActiveConnection(), nullptr);
  });
}

}  // namespace

}  // namespace talvex::test
