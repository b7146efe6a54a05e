// Changes that are kept and written together, and sets that are detached from their connection.
#include <gtest/gtest.h>

#include "automation/transaction_context.h"
#include "support/recordset_world.h"

namespace talvex::test {

namespace {

using automation::kNull;
using automation::Variant;
using platform::database::Affect;
using platform::database::EditMode;
using platform::database::Fault;
using platform::database::FaultKind;
using platform::database::LockType;
using platform::database::ObjectState;

using Events = std::vector<std::string>;

constexpr const char* kUpdateUser = "UPDATE BUDGET SET USERID = ? WHERE BUDGETCODE = ? AND USERID = ?";
constexpr const char* kUpdateNullUser =
    "UPDATE BUDGET SET USERID = ? WHERE BUDGETCODE = ? AND USERID IS NULL";
constexpr const char* kInsertCode = "INSERT INTO BUDGET (BUDGETCODE) VALUES (?)";

class RecordsetBatchTest : public ::testing::Test {
 protected:
  RecordsetWorld world_;
  FakeDatabase& database_ = *world_.database;
  std::shared_ptr<platform::database::Recordset> set_ = world_.Open(kBudgets, LockType::BatchOptimistic);

  void SetUp() override { database_.Forget(); }
};

TEST_F(RecordsetBatchTest, WritesNothingBeforeTheBatchIsWritten) {
  set_->SetValue("USERID", "dave");
  Update(*set_);
  EXPECT_EQ(set_->EditMode(), EditMode::None);
  EXPECT_EQ(set_->OriginalValue(2), Variant("carol"));
  set_->MoveNext();
  set_->SetValue("USERID", "erin");
  set_->MoveNext();
  set_->AddNew("BUDGETCODE", "D");
  EXPECT_TRUE(database_.events.empty());
  set_->UpdateBatch(Affect::All);
  EXPECT_EQ(database_.events, (Events{"begin", kUpdateUser, kUpdateNullUser, kInsertCode, "commit"}));
  EXPECT_EQ(database_.statements[0].parameters, (Row{"dave", "A", "carol"}));
  EXPECT_EQ(database_.statements[1].parameters, (Row{"erin", "B"}));
  EXPECT_EQ(database_.statements[2].parameters, Row{"D"});
}

TEST_F(RecordsetBatchTest, WritesEachChangeOnce) {
  set_->SetValue("USERID", "dave");
  set_->UpdateBatch(std::nullopt);
  database_.Forget();
  set_->UpdateBatch(std::nullopt);
  EXPECT_TRUE(database_.events.empty());
  EXPECT_EQ(set_->OriginalValue(2), Variant("dave"));
}

TEST_F(RecordsetBatchTest, SeveralUpdatesOfARowAreOneWrite) {
  set_->SetValue("USERID", "dave");
  Update(*set_);
  set_->SetValue("USERID", "erin");
  Update(*set_);
  set_->SetValue("BUDGETTYPE", 2);
  set_->UpdateBatch(std::nullopt);
  const auto writes = database_.Writes();
  ASSERT_EQ(writes.size(), 1U);
  EXPECT_EQ(
      writes[0].text,
      "UPDATE BUDGET SET BUDGETTYPE = ?, USERID = ? WHERE BUDGETCODE = ? AND BUDGETTYPE = ? AND USERID = ?");
  EXPECT_EQ(writes[0].parameters, (Row{2, "erin", "A", 1, "carol"}));
}

TEST_F(RecordsetBatchTest, AnAddedRowThatIsChangedAgainIsStillOneRow) {
  AddNew(*set_);
  set_->SetValue("BUDGETCODE", "D");
  Update(*set_);
  set_->SetValue("BUDGETCODE", "E");
  set_->SetValue("USERID", "erin");
  Update(*set_);
  EXPECT_EQ(set_->OriginalValue(0), Variant(kNull));
  set_->UpdateBatch(std::nullopt);
  const auto writes = database_.Writes();
  ASSERT_EQ(writes.size(), 1U);
  EXPECT_EQ(writes[0].text, "INSERT INTO BUDGET (BUDGETCODE, USERID) VALUES (?, ?)");
  EXPECT_EQ(writes[0].parameters, (Row{"E", "erin"}));
}

TEST_F(RecordsetBatchTest, AChangeThatWasChangedBackIsNotWritten) {
  set_->SetValue("USERID", "dave");
  Update(*set_);
  set_->SetValue("USERID", "carol");
  set_->UpdateBatch(std::nullopt);
  EXPECT_TRUE(database_.Writes().empty());
}

TEST_F(RecordsetBatchTest, WhenOneRowFailsNoneIsKeptAndAllStayPending) {
  set_->SetValue("USERID", "dave");
  set_->MoveNext();
  set_->SetValue("USERID", "erin");
  database_.Fail(kUpdateNullUser, Fault(FaultKind::Constraint, 547, "23000", "conflicted"));
  EXPECT_EQ(RaisedBy([&] { set_->UpdateBatch(std::nullopt); }).number, -2147217873);
  EXPECT_EQ(database_.events, (Events{"begin", kUpdateUser, kUpdateNullUser, "rollback"}));
  database_.StopFailing();
  database_.Forget();
  set_->UpdateBatch(std::nullopt);
  EXPECT_EQ(database_.events, (Events{"begin", kUpdateUser, kUpdateNullUser, "commit"}));
}

TEST_F(RecordsetBatchTest, ARowThatSomebodyElseChangedFailsTheBatch) {
  set_->SetValue("USERID", "dave");
  database_.affected = 0;
  EXPECT_EQ(RaisedBy([&] { set_->UpdateBatch(std::nullopt); }).number, -2147217864);
  EXPECT_EQ(database_.events.back(), "rollback");
  EXPECT_EQ(set_->Value("USERID"), Variant("dave"));
}

TEST_F(RecordsetBatchTest, AssignedNumbersAreKnownOnceAllIsWritten) {
  const auto lines = world_.Open(kLines, LockType::BatchOptimistic);
  database_.identity = 88;
  lines->AddNew("BUDGETCODE", "A");
  EXPECT_EQ(lines->Value("ID"), Variant(kNull));
  lines->UpdateBatch(Affect::All);
  EXPECT_EQ(lines->Value("ID"), Variant(88));
}

TEST_F(RecordsetBatchTest, WritesOnlyTheRowsThatAreMeant) {
  const auto change_all = [&] {
    set_->SetFilter("");
    for (; !set_->Eof(); set_->MoveNext()) set_->SetValue("BUDGETTYPE", 5);
  };
  change_all();
  set_->MoveFirst();
  set_->MoveNext();
  set_->UpdateBatch(Affect::Current);
  ASSERT_EQ(database_.Writes().size(), 1U);
  EXPECT_EQ(database_.Writes()[0].parameters, (Row{5, "B", 2}));
  database_.Forget();
  set_->SetFilter("BUDGETCODE = 'C'");
  set_->UpdateBatch(Affect::Group);
  ASSERT_EQ(database_.Writes().size(), 1U);
  EXPECT_EQ(database_.Writes()[0].parameters, (Row{5, "C", 1}));
  EXPECT_EQ(RaisedBy([&] { set_->UpdateBatch(static_cast<Affect>(9)); }).number, 3001);
  set_->MoveNext();
  EXPECT_EQ(RaisedBy([&] { set_->UpdateBatch(Affect::Current); }).number, 3021);
}

TEST_F(RecordsetBatchTest, CancelBatchTakesBackEverything) {
  set_->SetValue("USERID", "dave");
  set_->AddNew("BUDGETCODE", "D");
  set_->AddNew("BUDGETCODE", "E");
  set_->CancelBatch(Affect::All);
  EXPECT_EQ(set_->RecordCount(), 3);
  EXPECT_TRUE(set_->Eof());
  set_->MoveLast();
  EXPECT_EQ(set_->Value("BUDGETCODE"), Variant("C"));
  set_->MoveFirst();
  EXPECT_EQ(Walk(*set_, "USERID"), "carol Null ");
  set_->UpdateBatch(std::nullopt);
  EXPECT_TRUE(database_.events.empty());
}

TEST_F(RecordsetBatchTest, CancelBatchMayTakeBackTheCurrentRowAlone) {
  set_->SetValue("USERID", "dave");
  set_->AddNew("BUDGETCODE", "D");
  set_->AddNew("BUDGETCODE", "E");
  set_->MovePrevious();
  set_->CancelBatch(Affect::Current);
  EXPECT_EQ(set_->Value("BUDGETCODE"), Variant("E"));
  set_->MoveFirst();
  EXPECT_EQ(Walk(*set_, "BUDGETCODE"), "A B C E");
  set_->UpdateBatch(std::nullopt);
  EXPECT_EQ(database_.events, (Events{"begin", kUpdateUser, kInsertCode, "commit"}));
}

TEST_F(RecordsetBatchTest, CancelBatchTakesBackARowThatIsBeingAdded) {
  set_->SetValue("USERID", "dave");
  AddNew(*set_);
  set_->CancelBatch(Affect::Current);
  EXPECT_EQ(set_->EditMode(), EditMode::None);
  EXPECT_EQ(set_->Value("USERID"), Variant("dave"));
  AddNew(*set_);
  set_->CancelBatch(Affect::All);
  EXPECT_EQ(set_->RecordCount(), 3);
  EXPECT_EQ(set_->Value("USERID"), Variant("carol"));
}

TEST_F(RecordsetBatchTest, TakingBackTheOnlyRowLeavesAnEmptySet) {
  database_.queries["select * from BUDGET where 0=1"] = {{"BUDGETCODE", "BUDGETTYPE", "USERID"}, {}};
  const auto empty = world_.Open("select * from BUDGET where 0=1", LockType::BatchOptimistic);
  empty->AddNew("BUDGETCODE", "D");
  empty->CancelBatch(Affect::All);
  EXPECT_TRUE(empty->Eof() && empty->Bof());
  EXPECT_EQ(empty->RecordCount(), 0);
}

TEST_F(RecordsetBatchTest, CancelUpdateKeepsWhatWasUpdatedBefore) {
  set_->SetValue("USERID", "dave");
  Update(*set_);
  set_->SetValue("USERID", "erin");
  set_->CancelUpdate();
  EXPECT_EQ(set_->Value("USERID"), Variant("dave"));
}

TEST_F(RecordsetBatchTest, ClonesShareKeptChanges) {
  const auto clone = set_->Clone(std::nullopt);
  set_->SetValue("USERID", "dave");
  Update(*set_);
  EXPECT_EQ(clone->Value("USERID"), Variant("dave"));
  set_->AddNew("BUDGETCODE", "D");
  clone->MoveLast();
  EXPECT_EQ(clone->Value("BUDGETCODE"), Variant("D"));
  set_->CancelBatch(std::nullopt);
  EXPECT_EQ(RaisedBy([&] { static_cast<void>(clone->Value("BUDGETCODE")); }).number, 3021);
  clone->MoveFirst();
  EXPECT_EQ(clone->Value("USERID"), Variant("carol"));
  EXPECT_EQ(clone->RecordCount(), 3);
  set_->MoveFirst();
  set_->SetValue("USERID", "erin");
  Update(*set_);
  clone->UpdateBatch(std::nullopt);
  EXPECT_EQ(database_.events, (Events{"begin", kUpdateUser, "commit"}));
}

TEST_F(RecordsetBatchTest, ADetachedSetIsWrittenThroughAnotherConnection) {
  set_->SetActiveConnection(nullptr);
  world_.connection->Close();
  set_->SetValue("USERID", "dave");
  EXPECT_EQ(RaisedBy([&] { set_->UpdateBatch(std::nullopt); }).number, 3704);
  EXPECT_EQ(set_->Value("USERID"), Variant("dave"));
  const auto connection = world_.Connect();
  database_.Forget();
  set_->SetActiveConnection(connection);
  set_->UpdateBatch(Affect::All);
  EXPECT_EQ(database_.events, (Events{"begin", kUpdateUser, "commit"}));
  EXPECT_EQ(set_->Value("USERID"), Variant("dave"));
}

TEST_F(RecordsetBatchTest, ADetachedOptimisticSetKeepsItsChangesToo) {
  const auto set = world_.Open(kBudgets, LockType::Optimistic);
  set->SetActiveConnection(nullptr);
  database_.Forget();
  set->SetValue("USERID", "dave");
  Update(*set);
  set->AddNew("BUDGETCODE", "D");
  EXPECT_TRUE(database_.events.empty());
  set->SetActiveConnection(world_.connection);
  set->MoveFirst();
  set->SetValue("BUDGETTYPE", 2);
  Update(*set);
  ASSERT_EQ(database_.Writes().size(), 1U);
  EXPECT_EQ(database_.Writes()[0].parameters, (Row{2, "dave", "A", 1, "carol"}));
  database_.Forget();
  set->UpdateBatch(std::nullopt);
  EXPECT_EQ(database_.events, (Events{"begin", kInsertCode, "commit"}));
}

TEST_F(RecordsetBatchTest, AnEditOfAnOptimisticSetIsPartOfItsBatch) {
  const auto set = world_.Open(kBudgets, LockType::Optimistic);
  set->SetActiveConnection(nullptr);
  set->Update("USERID", "dave");
  set->SetActiveConnection(world_.connection);
  set->MoveNext();
  set->SetValue("USERID", "erin");
  database_.Forget();
  set->UpdateBatch(std::nullopt);
  EXPECT_EQ(database_.events, (Events{"begin", kUpdateUser, kUpdateNullUser, "commit"}));
  EXPECT_EQ(set->EditMode(), EditMode::None);
}

TEST_F(RecordsetBatchTest, InATransactionTheBatchIsPartOfIt) {
  automation::ClassRegistry classes;
  automation::TransactionContext context(classes);
  set_->SetValue("USERID", "dave");
  set_->SetActiveConnection(nullptr);
  const auto connection = world_.Connect();
  set_->SetActiveConnection(connection);
  database_.Forget();
  set_->UpdateBatch(Affect::All);
  EXPECT_EQ(database_.events, Events{kUpdateUser});
  connection->Close();
  context.Commit();
  EXPECT_EQ(database_.events, (Events{kUpdateUser, "commit"}));
}

TEST_F(RecordsetBatchTest, ASetInEditCanBeClosedAndForgetsItsChanges) {
  set_->SetValue("USERID", "dave");
  set_->Close();
  EXPECT_EQ(set_->State(), ObjectState::Closed);
  EXPECT_TRUE(database_.events.empty());
}

}  // namespace

}  // namespace talvex::test
