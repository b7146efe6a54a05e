// Changing rows of record sets on a real database: what is kept, what is refused, and how that is told.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/database/recordset.h"
#include "support/error_of.h"
#include "support/test_installation.h"

namespace talvex::test {

namespace {

using automation::Date;
using automation::kNull;
using automation::Variant;
using platform::database::Affect;
using platform::database::Connection;
using platform::database::CursorType;
using platform::database::LockType;
using platform::database::ProviderError;
using platform::database::Recordset;
using Lines = std::vector<std::string>;

constexpr std::int32_t kConstraint = -2147217873;
constexpr std::int32_t kRowChanged = -2147217864;

class StoredRecordset : public testing::Test {
 protected:
  [[nodiscard]] std::shared_ptr<Recordset> Open(const std::string& query,
                                                LockType lock = LockType::Optimistic) {
    auto set = std::make_shared<Recordset>();
    set->Open(query, connection_, CursorType::Keyset, lock, std::nullopt);
    return set;
  }
  static void Update(Recordset& set) { set.Update(std::nullopt, std::nullopt); }
  static void AddNew(Recordset& set) { set.AddNew(std::nullopt, std::nullopt); }

  // What the database itself said last.
  [[nodiscard]] std::int32_t NativeError() const {
    const auto errors = connection_->Errors();
    if (errors->Count() == 0) return 0;
    return std::static_pointer_cast<ProviderError>(errors->Item(1).As<automation::ObjectRef>())->NativeError;
  }

  TestInstallation site_;
  std::shared_ptr<Connection> connection_ = site_.Host().Connect();
};

TEST_F(StoredRecordset, AnAddedRowLearnsItsNumberAndCanBeChanged) {
  const auto lines = Open("SELECT * FROM BUDGETLINES");
  for (int number = 1; number <= 2; ++number) {
    AddNew(*lines);
    lines->SetValue("BUDGETCODE", "A");
    lines->SetValue("STARTDATE", Date::Civil(2026, 1, 1));
    lines->SetValue("BUDGETAMNT", 0.1 + 0.2);
    Update(*lines);
    EXPECT_EQ(lines->Value("ID"), Variant(number));
  }
  lines->SetValue("BUDGETAMNT", 12.5);
  lines->SetValue("ENDDATE", Date::Civil(2026, 12, 31, 23, 59, 59));
  Update(*lines);
  lines->SetValue("STARTDATE", kNull);
  Update(*lines);
  EXPECT_EQ(
      site_.Rows("SELECT ID, BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT, USEDSENDAMNT FROM BUDGETLINES"),
      (Lines{"1 | A | 2026-01-01 | null | 0.3 | null", "2 | A | null | 2026-12-31T23:59:59 | 12.5 | null"}));
}

TEST_F(StoredRecordset, ARowThatSomebodyElseChangedIsNotWritten) {
  site_.Sql("INSERT INTO BUDGETLINES (BUDGETCODE, BUDGETAMNT, USEDSENDAMNT) VALUES ('A', 100, 0.1)");
  const auto lines = Open("SELECT * FROM BUDGETLINES");
  site_.Sql("UPDATE BUDGETLINES SET USEDSENDAMNT = 7");
  lines->SetValue("USEDSENDAMNT", 8);
  EXPECT_EQ(ErrorNumberOf([&] { Update(*lines); }), kRowChanged);
  EXPECT_EQ(site_.Rows("SELECT USEDSENDAMNT FROM BUDGETLINES"), Lines{"7"});
  // Columns that are not written are not looked at.
  lines->CancelUpdate();
  lines->SetValue("BUDGETAMNT", 50);
  Update(*lines);
  EXPECT_EQ(site_.Rows("SELECT BUDGETAMNT, USEDSENDAMNT FROM BUDGETLINES"), Lines{"50 | 7"});
}

TEST_F(StoredRecordset, WhatTheTablesRefuseHasTheServersNumber) {
  site_.Sql("INSERT INTO LEDGERACCOUNT (LEDGERACCOUNT) VALUES ('A')");
  const auto accounts = Open("SELECT * FROM LEDGERACCOUNT");
  AddNew(*accounts);
  accounts->SetValue("LEDGERACCOUNT", "a");
  EXPECT_EQ(ErrorNumberOf([&] { Update(*accounts); }), kConstraint);
  EXPECT_EQ(NativeError(), 2627);
  accounts->SetValue("LEDGERACCOUNT", kNull);
  EXPECT_EQ(ErrorNumberOf([&] { Update(*accounts); }), kConstraint);
  EXPECT_EQ(NativeError(), 515);
  accounts->SetValue("LEDGERACCOUNT", std::string(51, 'x'));
  EXPECT_EQ(ErrorNumberOf([&] { Update(*accounts); }), -2147217887);
  accounts->SetValue("LEDGERACCOUNT", "B");
  Update(*accounts);
  const auto rules = Open("SELECT * FROM ACCOUNTINGRULE");
  AddNew(*rules);
  rules->SetValue("LEDGERACCOUNT", "NOWHERE");
  const automation::ErrorState error = ErrorOf([&] { Update(*rules); });
  EXPECT_EQ(error.number, kConstraint);
  EXPECT_NE(error.description.find("FK_ACCOUNTINGRULE_LEDGERACCOUNT"), std::string::npos)
      << error.description;
  EXPECT_EQ(NativeError(), 547);
  EXPECT_EQ(site_.Rows("SELECT LEDGERACCOUNT FROM LEDGERACCOUNT"), (Lines{"A", "B"}));
}

TEST_F(StoredRecordset, ABatchIsWrittenWholeOrNotAtAll) {
  site_.Sql("INSERT INTO LEDGERACCOUNT (LEDGERACCOUNT, ACCOUNTTYPE) VALUES ('A', 1), ('B', 2)");
  const auto accounts = Open("SELECT * FROM LEDGERACCOUNT ORDER BY LEDGERACCOUNT", LockType::BatchOptimistic);
  accounts->SetActiveConnection(nullptr);
  accounts->SetValue("ACCOUNTTYPE", 4);
  accounts->MoveNext();
  accounts->SetValue("ACCOUNTTYPE", 3);
  AddNew(*accounts);
  accounts->SetValue("LEDGERACCOUNT", "b");
  Update(*accounts);
  accounts->SetActiveConnection(connection_);
  EXPECT_EQ(ErrorNumberOf([&] { accounts->UpdateBatch(Affect::All); }), kConstraint);
  EXPECT_EQ(site_.Rows("SELECT LEDGERACCOUNT, ACCOUNTTYPE FROM LEDGERACCOUNT"), (Lines{"A | 1", "B | 2"}));
  accounts->SetValue("LEDGERACCOUNT", "C");
  Update(*accounts);
  accounts->UpdateBatch(Affect::All);
  EXPECT_EQ(site_.Rows("SELECT LEDGERACCOUNT, ACCOUNTTYPE FROM LEDGERACCOUNT"),
            (Lines{"A | 4", "B | 3", "C | null"}));
}

}  // namespace

}  // namespace talvex::test
