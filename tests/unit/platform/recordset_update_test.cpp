// Changing rows of record sets one at a time.
#include <gtest/gtest.h>

#include <limits>

#include "automation/transaction_context.h"
#include "support/recordset_world.h"

namespace talvex::test {

namespace {

using automation::Array;
using automation::Currency;
using automation::Date;
using automation::kNull;
using automation::Variant;
using platform::database::EditMode;
using platform::database::Fault;
using platform::database::FaultKind;
using platform::database::LockType;
using platform::database::ObjectState;
using platform::database::Recordset;

class RecordsetUpdateTest : public ::testing::Test {
 protected:
  // What was written, as text and parameters, for the one statement that was.
  void ExpectWritten(const std::string& text, const Row& parameters) {
    const auto writes = database_.Writes();
    ASSERT_EQ(writes.size(), 1U);
    EXPECT_EQ(writes[0].text, text);
    EXPECT_EQ(writes[0].parameters, parameters);
    database_.Forget();
  }

  RecordsetWorld world_;
  FakeDatabase& database_ = *world_.database;
};

TEST_F(RecordsetUpdateTest, WritesTheChangedColumnsWhereKeyAndOldValuesAreStillTheSame) {
  const auto set = world_.Open(kBudgets, LockType::Optimistic);
  set->SetValue("BUDGETTYPE", 2);
  set->SetValue("USERID", "dave");
  EXPECT_EQ(set->EditMode(), EditMode::InProgress);
  EXPECT_EQ(set->Value("BUDGETTYPE"), Variant(2));
  EXPECT_EQ(set->OriginalValue(1), Variant(1));
  Update(*set);
  ExpectWritten(
      "UPDATE BUDGET SET BUDGETTYPE = ?, USERID = ? WHERE BUDGETCODE = ? AND BUDGETTYPE = ? AND USERID = ?",
      {2, "dave", "A", 1, "carol"});
  EXPECT_EQ(set->EditMode(), EditMode::None);
  EXPECT_EQ(set->OriginalValue(1), Variant(2));
}

TEST_F(RecordsetUpdateTest, AfterAWriteTheNewValuesAreTheOldOnes) {
  const auto set = world_.Open(kBudgets, LockType::Optimistic);
  set->SetValue("BUDGETTYPE", 2);
  Update(*set);
  database_.Forget();
  set->SetValue("BUDGETTYPE", 3);
  Update(*set);
  ExpectWritten("UPDATE BUDGET SET BUDGETTYPE = ? WHERE BUDGETCODE = ? AND BUDGETTYPE = ?", {3, "A", 2});
}

TEST_F(RecordsetUpdateTest, NullsAreWrittenAndLookedFor) {
  const auto set = world_.Open(kBudgets, LockType::Optimistic);
  set->SetValue("USERID", kNull);
  Update(*set);
  ExpectWritten("UPDATE BUDGET SET USERID = ? WHERE BUDGETCODE = ? AND USERID = ?", {kNull, "A", "carol"});
  set->SetValue("USERID", "dave");
  Update(*set);
  ExpectWritten("UPDATE BUDGET SET USERID = ? WHERE BUDGETCODE = ? AND USERID IS NULL", {"dave", "A"});
}

TEST_F(RecordsetUpdateTest, EmptyIsWrittenAsNull) {
  const auto set = world_.Open(kBudgets, LockType::Optimistic);
  set->SetValue("USERID", Variant());
  EXPECT_EQ(set->Value("USERID"), Variant(kNull));
  Update(*set);
  ExpectWritten("UPDATE BUDGET SET USERID = ? WHERE BUDGETCODE = ? AND USERID = ?", {kNull, "A", "carol"});
}

TEST_F(RecordsetUpdateTest, AChangedKeyIsLookedForByItsOldValue) {
  const auto set = world_.Open(kBudgets, LockType::Optimistic);
  set->SetValue("BUDGETCODE", "Z");
  Update(*set);
  ExpectWritten("UPDATE BUDGET SET BUDGETCODE = ? WHERE BUDGETCODE = ?", {"Z", "A"});
  set->SetValue("BUDGETTYPE", 9);
  Update(*set);
  ExpectWritten("UPDATE BUDGET SET BUDGETTYPE = ? WHERE BUDGETCODE = ? AND BUDGETTYPE = ?", {9, "Z", 1});
}

TEST_F(RecordsetUpdateTest, ARowWithANullInItsKeyIsFoundByIt) {
  database_.tables.push_back({"KINDS", {{"OFFICE", true, false}, {"KIND", false, false}}});
  database_.queries["SELECT * FROM KINDS"] = {{"OFFICE", "KIND"}, {{kNull, "x"}}};
  const auto set = world_.Open("SELECT * FROM KINDS", LockType::Optimistic);
  set->SetValue("KIND", "y");
  Update(*set);
  ExpectWritten("UPDATE KINDS SET KIND = ? WHERE OFFICE IS NULL AND KIND = ?", {"y", "x"});
}

TEST_F(RecordsetUpdateTest, SettingTheValueThatIsThereChangesNothing) {
  const auto set = world_.Open(kLines, LockType::Optimistic);
  set->SetValue("BUDGETCODE", "A");
  set->SetValue("STARTDATE", Date::Civil(2026, 1, 1));
  set->SetValue("BUDGETAMNT", 100);
  Update(*set);
  set->SetValue("BUDGETAMNT", Currency::FromDouble(100));
  Update(*set);
  set->SetValue("BUDGETAMNT", 5);
  set->SetValue("BUDGETAMNT", 100.0);
  Update(*set);
  EXPECT_TRUE(database_.Writes().empty());
  EXPECT_EQ(set->EditMode(), EditMode::None);
}

TEST_F(RecordsetUpdateTest, AnotherCaseOfATextIsAChange) {
  const auto set = world_.Open(kBudgets, LockType::Optimistic);
  set->SetValue("USERID", "Carol");
  Update(*set);
  ExpectWritten("UPDATE BUDGET SET USERID = ? WHERE BUDGETCODE = ? AND USERID = ?", {"Carol", "A", "carol"});
}

TEST_F(RecordsetUpdateTest, WithoutAnEditUpdateDoesNothing) {
  Update(*world_.Open(kBudgets, LockType::Optimistic));
  EXPECT_TRUE(database_.Writes().empty());
}

TEST_F(RecordsetUpdateTest, ARowThatSomebodyElseChangedStaysInEdit) {
  automation::ClassRegistry classes;
  const auto set = world_.Open(kBudgets, LockType::Optimistic);
  automation::TransactionContext context(classes);
  database_.affected = 0;
  set->SetValue("BUDGETTYPE", 2);
  EXPECT_EQ(RaisedBy([&] { Update(*set); }).number, -2147217864);
  EXPECT_TRUE(context.HadConflict());
  EXPECT_EQ(set->EditMode(), EditMode::InProgress);
  EXPECT_EQ(set->Value("BUDGETTYPE"), Variant(2));
  set->CancelUpdate();
  EXPECT_EQ(set->EditMode(), EditMode::None);
  EXPECT_EQ(set->Value("BUDGETTYPE"), Variant(1));
}

TEST_F(RecordsetUpdateTest, ARefusedChangeCanBeCorrected) {
  const auto set = world_.Open(kBudgets, LockType::Optimistic);
  set->SetValue("BUDGETTYPE", 2);
  database_.Fail("UPDATE", Fault(FaultKind::Constraint, 547, "23000", "conflicted"));
  EXPECT_EQ(RaisedBy([&] { Update(*set); }).number, -2147217873);
  database_.StopFailing();
  database_.Forget();
  set->SetValue("BUDGETTYPE", 3);
  Update(*set);
  ExpectWritten("UPDATE BUDGET SET BUDGETTYPE = ? WHERE BUDGETCODE = ? AND BUDGETTYPE = ?", {3, "A", 1});
}

TEST_F(RecordsetUpdateTest, TakesColumnsAndValuesAsArguments) {
  const auto set = world_.Open(kBudgets, LockType::Optimistic);
  set->Update("BUDGETTYPE", 2);
  ExpectWritten("UPDATE BUDGET SET BUDGETTYPE = ? WHERE BUDGETCODE = ? AND BUDGETTYPE = ?", {2, "A", 1});
  set->Update(Array({"USERID", 1}, 1), Array({"dave", 7}));
  ExpectWritten(
      "UPDATE BUDGET SET BUDGETTYPE = ?, USERID = ? WHERE BUDGETCODE = ? AND BUDGETTYPE = ? AND USERID = ?",
      {7, "dave", "A", 2, "carol"});
  EXPECT_EQ(RaisedBy([&] { set->Update("USERID", std::nullopt); }).number, 3001);
  EXPECT_EQ(RaisedBy([&] { set->Update("USERID", Array({"x"})); }).number, 3001);
  EXPECT_EQ(RaisedBy([&] { set->Update(Array({"USERID"}), Array({"x", "y"})); }).number, 3001);
  EXPECT_EQ(RaisedBy([&] { set->Update(Array({"NOWHERE"}), Array({"x"})); }).number, 3265);
  EXPECT_TRUE(database_.Writes().empty());
}

TEST_F(RecordsetUpdateTest, MovingWritesTheRowFirst) {
  const std::function<void(Recordset&)> moves[] = {
      [](Recordset& set) { set.MoveNext(); },
      [](Recordset& set) { set.MovePrevious(); },
      [](Recordset& set) { set.MoveFirst(); },
      [](Recordset& set) { set.MoveLast(); },
      [](Recordset& set) { set.SetFilter("BUDGETTYPE = 2"); },
      [](Recordset& set) { AddNew(set); },
  };
  for (const auto& move : moves) {
    const auto set = world_.Open(kBudgets, LockType::Optimistic);
    set->SetValue("BUDGETTYPE", 2);
    move(*set);
    ExpectWritten("UPDATE BUDGET SET BUDGETTYPE = ? WHERE BUDGETCODE = ? AND BUDGETTYPE = ?", {2, "A", 1});
  }
}

TEST_F(RecordsetUpdateTest, AMoveThatCannotWriteStaysOnTheRow) {
  const auto set = world_.Open(kBudgets, LockType::Optimistic);
  set->SetValue("BUDGETTYPE", 2);
  database_.affected = 0;
  EXPECT_EQ(RaisedBy([&] { set->MoveNext(); }).number, -2147217864);
  EXPECT_EQ(set->Value("BUDGETCODE"), Variant("A"));
  EXPECT_EQ(set->EditMode(), EditMode::InProgress);
}

TEST_F(RecordsetUpdateTest, AnAddedRowNamesOnlyTheColumnsThatWereSet) {
  const auto set = world_.Open(kBudgets, LockType::Optimistic);
  AddNew(*set);
  EXPECT_EQ(set->EditMode(), EditMode::Add);
  EXPECT_EQ(set->RecordCount(), 4);
  EXPECT_FALSE(set->Eof() || set->Bof());
  EXPECT_EQ(set->Value("BUDGETCODE"), Variant(kNull));
  EXPECT_EQ(set->OriginalValue(0), Variant(kNull));
  set->SetValue("USERID", kNull);
  set->SetValue("BUDGETCODE", "D");
  Update(*set);
  ExpectWritten("INSERT INTO BUDGET (BUDGETCODE, USERID) VALUES (?, ?)", {"D", kNull});
  EXPECT_EQ(set->Value("BUDGETCODE"), Variant("D"));
  EXPECT_EQ(set->OriginalValue(0), Variant("D"));
  EXPECT_EQ(set->Value("BUDGETTYPE"), Variant(kNull));
  set->MoveFirst();
  EXPECT_EQ(Walk(*set, "BUDGETCODE"), "A B C D");
}

TEST_F(RecordsetUpdateTest, AnAddedRowCanBeAddedWithItsValues) {
  const auto set = world_.Open(kBudgets, LockType::Optimistic);
  set->AddNew("BUDGETCODE", "D");
  ExpectWritten("INSERT INTO BUDGET (BUDGETCODE) VALUES (?)", {"D"});
  set->AddNew(Array({"BUDGETCODE", "BUDGETTYPE"}), Array({"E", 2}));
  ExpectWritten("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE) VALUES (?, ?)", {"E", 2});
  EXPECT_EQ(set->EditMode(), EditMode::None);
}

TEST_F(RecordsetUpdateTest, ARowWithoutValuesIsAddedWithTheDefaults) {
  const auto set = world_.Open(kBudgets, LockType::Optimistic);
  AddNew(*set);
  Update(*set);
  ExpectWritten("INSERT INTO BUDGET DEFAULT VALUES", {});
}

TEST_F(RecordsetUpdateTest, AnAddedRowLearnsItsAssignedNumber) {
  const auto set = world_.Open(kLines, LockType::Optimistic);
  database_.identity = 77;
  AddNew(*set);
  set->SetValue("BUDGETCODE", "A");
  Update(*set);
  EXPECT_EQ(set->Value("ID"), Variant(77));
  database_.Forget();
  set->SetValue("BUDGETAMNT", 5.0);
  Update(*set);
  // What the database gave a column that was not set is not known, so it is not looked for.
  ExpectWritten("UPDATE BUDGETLINES SET BUDGETAMNT = ? WHERE ID = ?", {5.0, 77});
  set->SetValue("BUDGETAMNT", 6.0);
  Update(*set);
  ExpectWritten("UPDATE BUDGETLINES SET BUDGETAMNT = ? WHERE ID = ? AND BUDGETAMNT = ?", {6.0, 77, 5.0});
}

TEST_F(RecordsetUpdateTest, AnAssignedNumberMayBeLargeOrGivenByTheCaller) {
  const auto set = world_.Open(kLines, LockType::Optimistic);
  database_.identity = 5'000'000'000;
  set->AddNew("BUDGETCODE", "A");
  EXPECT_EQ(set->Value("ID"), Variant(5e9));
  set->AddNew("ID", 12);
  EXPECT_EQ(set->Value("ID"), Variant(12));
}

TEST_F(RecordsetUpdateTest, AnAddedRowWhoseKeyIsNotKnownCannotBeChanged) {
  const auto set = world_.Open(kLines, LockType::Optimistic);
  set->AddNew("BUDGETCODE", "A");
  database_.Forget();
  set->SetValue("BUDGETAMNT", 5.0);
  EXPECT_EQ(RaisedBy([&] { Update(*set); }).number, 3251);
  EXPECT_TRUE(database_.Writes().empty());
}

TEST_F(RecordsetUpdateTest, ARefusedRowStaysInEditAndCanBeTakenBack) {
  const auto set = world_.Open(kBudgets, LockType::Optimistic);
  set->MoveNext();
  AddNew(*set);
  set->SetValue("BUDGETCODE", "A");
  database_.Fail("INSERT", Fault(FaultKind::Duplicate, 2627, "23000", "duplicate"));
  EXPECT_EQ(RaisedBy([&] { Update(*set); }).number, -2147217873);
  EXPECT_EQ(set->EditMode(), EditMode::Add);
  set->CancelUpdate();
  EXPECT_EQ(set->Value("BUDGETCODE"), Variant("B"));
  EXPECT_EQ(set->RecordCount(), 3);
}

TEST_F(RecordsetUpdateTest, AnAddedRowIsShownWhateverTheFilterSaysUntilItIsSetAgain) {
  const auto set = world_.Open(kBudgets, LockType::Optimistic);
  set->SetFilter("BUDGETTYPE = 2");
  set->AddNew(Array({"BUDGETCODE", "BUDGETTYPE"}), Array({"D", 1}));
  EXPECT_EQ(set->Value("BUDGETCODE"), Variant("D"));
  EXPECT_EQ(set->RecordCount(), 2);
  set->SetFilter("BUDGETTYPE = 2");
  EXPECT_EQ(Walk(*set, "BUDGETCODE"), "B");
  set->SetFilter("BUDGETTYPE = 1");
  EXPECT_EQ(Walk(*set, "BUDGETCODE"), "A C D");
}

TEST_F(RecordsetUpdateTest, AnAddedRowCanBeTheFirstOfAnEmptySet) {
  database_.queries["select * from BUDGET where 0=1"] = {{"BUDGETCODE", "BUDGETTYPE", "USERID"}, {}};
  const auto set = world_.Open("select * from BUDGET where 0=1", LockType::Optimistic);
  AddNew(*set);
  EXPECT_FALSE(set->Eof());
  set->SetValue("BUDGETCODE", "D");
  Update(*set);
  EXPECT_FALSE(set->Eof() || set->Bof());
  ExpectWritten("INSERT INTO BUDGET (BUDGETCODE) VALUES (?)", {"D"});
}

TEST_F(RecordsetUpdateTest, AReadOnlySetTakesNoChange) {
  const auto set = world_.Open(kBudgets);
  EXPECT_EQ(RaisedBy([&] { set->SetValue("USERID", "dave"); }).number, 3251);
  EXPECT_EQ(RaisedBy([&] { AddNew(*set); }).number, 3251);
  EXPECT_EQ(RaisedBy([&] { Update(*set); }).number, 3251);
  EXPECT_EQ(RaisedBy([&] { set->UpdateBatch(std::nullopt); }).number, 3251);
  EXPECT_EQ(set->EditMode(), EditMode::None);
}

TEST_F(RecordsetUpdateTest, ASetOfSeveralTablesOrOfNoneCannotBeWritten) {
  for (const char* query : {"SELECT * FROM BUDGET, BUDGETLINES", "SELECT 1 AS A", "SELECT * FROM STRANGE"}) {
    database_.queries[query] = {{"A"}, {{1}}};
    const auto set = world_.Open(query, LockType::Optimistic);
    set->SetValue("A", 2);
    EXPECT_EQ(RaisedBy([&] { Update(*set); }).number, 3251) << query;
    set->CancelUpdate();
    set->Close();
  }
  EXPECT_TRUE(database_.Writes().empty());
}

TEST_F(RecordsetUpdateTest, WithoutTheKeyRowsCanBeAddedButNotChanged) {
  database_.queries["SELECT USERID FROM BUDGET"] = {{"USERID"}, {{"carol"}}};
  const auto set = world_.Open("SELECT USERID FROM BUDGET", LockType::Optimistic);
  set->SetValue("USERID", "dave");
  const Raised raised = RaisedBy([&] { Update(*set); });
  EXPECT_EQ(raised.number, 3251);
  EXPECT_NE(raised.description.find("key of table BUDGET"), std::string::npos);
  set->CancelUpdate();
  set->AddNew("USERID", "dave");
  ExpectWritten("INSERT INTO BUDGET (USERID) VALUES (?)", {"dave"});
}

TEST_F(RecordsetUpdateTest, AColumnThatIsNotTheTablesCannotBeWritten) {
  database_.queries["SELECT BUDGETCODE, 1+1 AS TWO FROM BUDGET"] = {{"BUDGETCODE", "TWO"}, {{"A", 2}}};
  const auto set = world_.Open("SELECT BUDGETCODE, 1+1 AS TWO FROM BUDGET", LockType::Optimistic);
  set->SetValue("TWO", 3);
  const Raised raised = RaisedBy([&] { Update(*set); });
  EXPECT_EQ(raised.number, 3251);
  EXPECT_NE(raised.description.find("TWO"), std::string::npos);
  EXPECT_TRUE(database_.Writes().empty());
}

TEST_F(RecordsetUpdateTest, ReportsEveryChangeOfAValueThatNoTableHolds) {
  const auto set = world_.Open(kBudgets, LockType::Optimistic);
  const Row refused = {Array(), Variant(std::shared_ptr<automation::Object>(set)),
                       std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()};
  for (const Variant& value : refused) {
    const Raised raised = RaisedBy([&] { set->SetValue("USERID", value); });
    EXPECT_EQ(raised.number, -2147217887);
    EXPECT_NE(raised.description.find("USERID"), std::string::npos);
  }
  EXPECT_EQ(set->EditMode(), EditMode::None);
}

TEST_F(RecordsetUpdateTest, SettingNeedsARowAndAColumn) {
  const auto set = world_.Open(kBudgets, LockType::Optimistic);
  EXPECT_EQ(RaisedBy([&] { set->SetValue("NOWHERE", 1); }).number, 3265);
  set->MoveLast();
  set->MoveNext();
  EXPECT_EQ(RaisedBy([&] { set->SetValue("USERID", 1); }).number, 3021);
}

TEST_F(RecordsetUpdateTest, ASetInEditCannotBeClosedUntilTheEditIsTakenBack) {
  const auto set = world_.Open(kBudgets, LockType::Optimistic);
  set->SetValue("USERID", "dave");
  EXPECT_EQ(RaisedBy([&] { set->Close(); }).number, 5);
  set->CancelUpdate();
  set->Close();
  EXPECT_EQ(set->State(), ObjectState::Closed);
  EXPECT_TRUE(database_.Writes().empty());
}

TEST_F(RecordsetUpdateTest, AnEditIsSeenByNobodyElseBeforeItIsUpdated) {
  const auto set = world_.Open(kBudgets, LockType::Optimistic);
  const auto clone = set->Clone(std::nullopt);
  set->SetValue("USERID", "dave");
  EXPECT_EQ(clone->Value("USERID"), Variant("carol"));
  Update(*set);
  EXPECT_EQ(clone->Value("USERID"), Variant("dave"));
  set->AddNew("BUDGETCODE", "D");
  EXPECT_EQ(clone->RecordCount(), 4);
  clone->SetFilter("USERID = 'dave'");
  EXPECT_EQ(Walk(*clone, "BUDGETCODE"), "A");
}

}  // namespace

}  // namespace talvex::test
