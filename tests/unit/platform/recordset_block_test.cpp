// Sets that can be changed and that have read a first block of their rows only.
#include <gtest/gtest.h>

#include "automation/conversions.h"
#include "support/recordset_world.h"

namespace talvex::test {

namespace {

using automation::Variant;
using platform::database::Affect;
using platform::database::kAllRows;
using platform::database::LockType;
using platform::database::ObjectState;
using platform::database::Recordset;

constexpr std::size_t kBlock = 64;

std::string Code(int number) { return "B" + std::to_string(number); }

FakeRows Budgets(int count) {
  FakeRows rows{{"BUDGETCODE", "BUDGETTYPE", "USERID"}, {}};
  for (int i = 1; i <= count; ++i) rows.rows.push_back({Code(i), i, "carol"});
  return rows;
}

class RecordsetBlockTest : public ::testing::Test {
 protected:
  void SetUp() override { database_.queries[kBudgets] = Budgets(200); }

  std::shared_ptr<Recordset> Open(LockType lock_type = LockType::Optimistic) {
    return world_.Open(kBudgets, lock_type);
  }
  [[nodiscard]] std::size_t Reads() const { return database_.Count(kBudgets); }

  RecordsetWorld world_;
  FakeDatabase& database_ = *world_.database;
};

// The codes from the current row to the end, each of which must be there once, and in this order.
void ExpectCodes(Recordset& set, int from, int to) {
  for (int i = from; i <= to; ++i, set.MoveNext()) {
    ASSERT_FALSE(set.Eof()) << i;
    ASSERT_EQ(set.Value("BUDGETCODE"), Variant(Code(i)));
  }
}

TEST_F(RecordsetBlockTest, OpensWithABlockWhateverTheLock) {
  for (const LockType lock_type : {LockType::Pessimistic, LockType::Optimistic, LockType::BatchOptimistic}) {
    database_.Forget();
    static_cast<void>(Open(lock_type));
    ASSERT_EQ(Reads(), 1U);
    EXPECT_EQ(database_.statements[0].most_rows, kBlock);
  }
}

TEST_F(RecordsetBlockTest, AddingARowReadsNoFurther) {
  const auto set = Open();
  set->AddNew("BUDGETCODE", "NEW");
  EXPECT_EQ(set->Value("BUDGETCODE"), Variant("NEW"));
  set->Close();
  EXPECT_EQ(Reads(), 1U);
}

TEST_F(RecordsetBlockTest, ChangingRowsOfTheBlockReadsNoFurther) {
  const auto set = Open();
  for (std::size_t i = 1; i < kBlock; ++i, set->MoveNext()) set->Update("USERID", "dave");
  set->MoveFirst();
  EXPECT_EQ(Reads(), 1U);
  EXPECT_EQ(database_.Writes().size(), kBlock - 1);
}

TEST_F(RecordsetBlockTest, WalkingPastTheBlockShowsEveryRowOnce) {
  const auto set = Open();
  ExpectCodes(*set, 1, 200);
  EXPECT_TRUE(set->Eof());
  EXPECT_EQ(Reads(), 2U);
  EXPECT_EQ(database_.statements[1].most_rows, kAllRows);
}

TEST_F(RecordsetBlockTest, ASmallTableIsReadOnce) {
  database_.queries[kBudgets] = Budgets(64);
  const auto set = Open();
  ExpectCodes(*set, 1, 64);
  EXPECT_EQ(set->RecordCount(), 64);
  EXPECT_EQ(Reads(), 1U);
}

TEST_F(RecordsetBlockTest, WhateverNeedsAllRowsReadsThemOnce) {
  const std::function<void(Recordset&)> needs[] = {
      [](Recordset& set) { EXPECT_EQ(set.RecordCount(), 200); },
      [](Recordset& set) { set.SetFilter("BUDGETCODE = 'B150'"); },
      [](Recordset& set) { EXPECT_EQ(set.Clone(std::nullopt)->RecordCount(), 200); },
      [](Recordset& set) { set.SetActiveConnection(nullptr); },
      [](Recordset& set) { set.MoveLast(); },
  };
  for (const auto& need : needs) {
    database_.Forget();
    const auto set = Open();
    need(*set);
    EXPECT_EQ(Reads(), 2U);
    set->SetFilter("");
    EXPECT_EQ(set->RecordCount(), 200);
    EXPECT_EQ(Reads(), 2U);
  }
}

TEST_F(RecordsetBlockTest, EndingAFilterOrMovingToTheFirstRowReadsNoFurther) {
  const auto set = Open();
  set->SetFilter("");
  set->MoveFirst();
  set->MoveNext();
  set->MovePrevious();
  set->MovePrevious();
  EXPECT_TRUE(set->Bof());
  EXPECT_EQ(Reads(), 1U);
}

TEST_F(RecordsetBlockTest, KeepsItsPositionAndItsEditWhileItReadsOn) {
  const auto set = Open();
  set->MoveNext();
  set->SetValue("USERID", "dave");
  EXPECT_EQ(set->RecordCount(), 200);
  EXPECT_EQ(set->Value("BUDGETCODE"), Variant("B2"));
  EXPECT_EQ(set->Value("USERID"), Variant("dave"));
  Update(*set);
  ASSERT_EQ(database_.Writes().size(), 1U);
  EXPECT_EQ(database_.Writes()[0].parameters, (Row{"dave", "B2", "carol"}));
}

TEST_F(RecordsetBlockTest, AddedRowsStayBehindAllOthersAndStayCurrent) {
  const auto set = Open();
  set->AddNew("BUDGETCODE", "NEW");
  set->AddNew("BUDGETCODE", "NEWER");
  // The written rows are in the database by now; they must not be shown twice.
  FakeRows more = Budgets(200);
  more.rows.push_back({"NEW", 1, automation::kNull});
  more.rows.push_back({"NEWER", 1, automation::kNull});
  database_.queries[kBudgets] = more;
  EXPECT_EQ(set->RecordCount(), 202);
  EXPECT_EQ(set->Value("BUDGETCODE"), Variant("NEWER"));
  set->MovePrevious();
  EXPECT_EQ(set->Value("BUDGETCODE"), Variant("NEW"));
  set->MovePrevious();
  EXPECT_EQ(set->Value("BUDGETCODE"), Variant("B200"));
  set->MoveFirst();
  ExpectCodes(*set, 1, 200);
  EXPECT_EQ(Walk(*set, "BUDGETCODE"), "NEW NEWER");
}

TEST_F(RecordsetBlockTest, GoingOnFromAnAddedRowReadsTheRestBeforeIt) {
  for (const bool back : {true, false}) {
    const auto set = Open();
    set->AddNew("BUDGETCODE", "NEW");
    back ? set->MovePrevious() : set->MoveNext();
    if (!back) set->MovePrevious();
    EXPECT_EQ(set->Value("BUDGETCODE"), Variant(back ? "B200" : "NEW"));
  }
}

TEST_F(RecordsetBlockTest, KeptChangesSurviveReadingOn) {
  const auto set = Open(LockType::BatchOptimistic);
  set->SetValue("BUDGETCODE", "RENAMED");
  set->MoveNext();
  set->SetValue("USERID", "dave");
  set->AddNew("BUDGETCODE", "NEW");
  set->AddNew("BUDGETCODE", "GONE");
  set->CancelBatch(Affect::Current);
  EXPECT_EQ(set->RecordCount(), 201);
  set->MoveFirst();
  EXPECT_EQ(set->Value("BUDGETCODE"), Variant("RENAMED"));
  set->UpdateBatch(std::nullopt);
  const auto writes = database_.Writes();
  ASSERT_EQ(writes.size(), 3U);
  EXPECT_EQ(writes[0].parameters, (Row{"RENAMED", "B1"}));
  EXPECT_EQ(writes[1].parameters, (Row{"dave", "B2", "carol"}));
  EXPECT_EQ(writes[2].parameters, (Row{"NEW"}));
  set->MoveLast();
  EXPECT_EQ(set->Value("BUDGETCODE"), Variant("NEW"));
}

TEST_F(RecordsetBlockTest, RowsThatOthersAddOrRemoveMeanwhileAreNeitherDoubledNorSkipped) {
  const auto set = Open();
  FakeRows changed = Budgets(200);
  changed.rows.erase(changed.rows.begin() + 1);
  changed.rows.insert(changed.rows.begin(), {"EARLY", 0, "erin"});
  changed.rows[10] = {Code(10), 10, "changed since"};
  database_.queries[kBudgets] = changed;
  // The rows of the block are those that were read: that is what an update is checked against.
  ExpectCodes(*set, 1, 64);
  EXPECT_EQ(set->Value("BUDGETCODE"), Variant("EARLY"));
  set->MoveNext();
  ExpectCodes(*set, 65, 200);
  EXPECT_TRUE(set->Eof());
}

TEST_F(RecordsetBlockTest, UpdatesEveryRowOnAWalkOverTheWholeTable) {
  const auto set = Open();
  for (; !set->Eof(); set->MoveNext()) {
    set->SetValue("USERID", "dave");
    Update(*set);
  }
  const auto writes = database_.Writes();
  ASSERT_EQ(writes.size(), 200U);
  EXPECT_EQ(writes[199].parameters, (Row{"dave", "B200", "carol"}));
}

TEST_F(RecordsetBlockTest, ReadsEverythingAtOnceWhenRowsCannotBeToldByTheirKey) {
  FakeRows users{{"USERID"}, {}};
  for (int i = 0; i < 100; ++i) users.rows.push_back({"carol"});
  database_.queries["SELECT USERID FROM BUDGET"] = users;
  const auto set = world_.Open("SELECT USERID FROM BUDGET", LockType::Optimistic);
  EXPECT_EQ(set->RecordCount(), 100);
  database_.queries["SELECT USERID FROM BUDGET, X"] = users;
  database_.Forget();
  EXPECT_EQ(world_.Open("SELECT USERID FROM BUDGET, X", LockType::Optimistic)->RecordCount(), 100);
  ASSERT_EQ(database_.statements.size(), 1U);
  EXPECT_EQ(database_.statements[0].most_rows, kAllRows);
}

TEST_F(RecordsetBlockTest, IsClosedWithItsConnectionEvenBeforeItHasReadAll) {
  const auto set = Open();
  world_.connection->Close();
  EXPECT_EQ(set->State(), ObjectState::Closed);
  EXPECT_EQ(RaisedBy([&] { set->MoveLast(); }).number, 3704);
}

TEST_F(RecordsetBlockTest, AFailureToReadOnLeavesTheSetAsItWas) {
  const auto set = Open();
  database_.Fail(kBudgets,
                 platform::database::Fault(platform::database::FaultKind::Other, 1, "HY000", "gone"));
  EXPECT_EQ(RaisedBy([&] { set->SetActiveConnection(nullptr); }).number, -2147217900);
  EXPECT_EQ(set->ActiveConnection(), world_.connection);
  EXPECT_EQ(RaisedBy([&] { set->SetFilter("BUDGETTYPE = 1"); }).number, -2147217900);
  EXPECT_EQ(set->Filter(), Variant(""));
  EXPECT_EQ(set->Value("BUDGETCODE"), Variant("B1"));
  database_.StopFailing();
  EXPECT_EQ(set->RecordCount(), 200);
}

TEST_F(RecordsetBlockTest, ColumnsThatHaveChangedMeanwhileAreAnError) {
  const auto set = Open();
  database_.queries[kBudgets].columns[1] = "OTHER";
  EXPECT_EQ(RaisedBy([&] { set->MoveLast(); }).number, 51);
}

}  // namespace

}  // namespace talvex::test
