// Opening record sets, walking and filtering them, and what closes them.
#include "platform/database/recordset.h"

#include <gtest/gtest.h>

#include "support/recordset_world.h"

namespace talvex::test {

namespace {

using automation::Date;
using automation::Kind;
using automation::kNull;
using automation::Variant;
using platform::database::Connection;
using platform::database::CursorType;
using platform::database::EditMode;
using platform::database::Fault;
using platform::database::FaultKind;
using platform::database::kAllRows;
using platform::database::LockType;
using platform::database::ObjectState;
using platform::database::Recordset;

class RecordsetTest : public ::testing::Test {
 protected:
  RecordsetWorld world_;
  FakeDatabase& database_ = *world_.database;
};

TEST_F(RecordsetTest, OpensOnAConnectionAndStandsOnItsFirstRow) {
  const auto set = world_.Open(kBudgets);
  EXPECT_EQ(set->State(), ObjectState::Open);
  EXPECT_EQ(set->ActiveConnection(), world_.connection);
  EXPECT_EQ(set->Source(), kBudgets);
  EXPECT_EQ(set->CursorType(), CursorType::Keyset);
  EXPECT_EQ(set->LockType(), LockType::ReadOnly);
  EXPECT_EQ(set->CursorLocation, 3);
  EXPECT_EQ(set->Value("BUDGETCODE"), Variant("A"));
}

TEST_F(RecordsetTest, WithoutTypesIsForwardOnlyAndReadOnly) {
  const auto set = std::make_shared<Recordset>();
  set->Open(kBudgets, world_.connection, std::nullopt, std::nullopt, std::nullopt);
  EXPECT_EQ(set->CursorType(), CursorType::ForwardOnly);
  EXPECT_EQ(set->LockType(), LockType::ReadOnly);
}

TEST_F(RecordsetTest, ReadOnlySetsReadEverythingAndAskForNoTable) {
  static_cast<void>(world_.Open(kBudgets));
  ASSERT_EQ(database_.statements.size(), 1U);
  EXPECT_EQ(database_.statements[0].most_rows, kAllRows);
}

TEST_F(RecordsetTest, OpensOnAConnectionStringWithAConnectionOfItsOwn) {
  Recordset set;
  set.Open(kBudgets, "Database=own", std::nullopt, std::nullopt, std::nullopt);
  const auto own = set.ActiveConnection();
  ASSERT_NE(own, nullptr);
  EXPECT_EQ(own->State(), ObjectState::Open);
  EXPECT_EQ(set.RecordCount(), 3);
  set.Close();
  EXPECT_EQ(own->State(), ObjectState::Closed);
}

TEST_F(RecordsetTest, OpensOnTheConnectionThatWasSetBefore) {
  Recordset set;
  EXPECT_EQ(RaisedBy([&] { set.Open(kBudgets, {}, std::nullopt, std::nullopt, std::nullopt); }).number, 3704);
  set.SetActiveConnection(world_.connection);
  set.Open(kBudgets, {}, std::nullopt, std::nullopt, std::nullopt);
  EXPECT_EQ(set.RecordCount(), 3);
}

TEST_F(RecordsetTest, DoesNotOpenOnAClosedConnectionOrOnSomethingElse) {
  world_.connection->Close();
  EXPECT_EQ(RaisedBy([&] { static_cast<void>(world_.Open(kBudgets)); }).number, 3704);
  Recordset set;
  EXPECT_EQ(RaisedBy([&] { set.Open(kBudgets, 5, std::nullopt, std::nullopt, std::nullopt); }).number, 13);
  const auto other = std::make_shared<Recordset>();
  EXPECT_EQ(RaisedBy([&] { set.Open(kBudgets, other, std::nullopt, std::nullopt, std::nullopt); }).number,
            13);
  EXPECT_EQ(set.State(), ObjectState::Closed);
}

TEST_F(RecordsetTest, CannotBeOpenedTwiceButAgainOnceClosed) {
  const auto set = world_.Open(kBudgets);
  const auto open = [&] { set->Open(kLines, world_.connection, std::nullopt, std::nullopt, std::nullopt); };
  EXPECT_EQ(RaisedBy(open).number, 3705);
  set->Close();
  open();
  EXPECT_EQ(set->Value("ID"), Variant(1));
}

TEST_F(RecordsetTest, RefusesALockTypeThatThereIsNot) {
  EXPECT_EQ(RaisedBy([&] { static_cast<void>(world_.Open(kBudgets, static_cast<LockType>(9))); }).number,
            3001);
}

TEST_F(RecordsetTest, StaysClosedWhenTheDatabaseRefusesTheQuery) {
  Recordset set;
  const auto open = [&] {
    set.Open("SELECT * FROM NOWHERE", world_.connection, {}, LockType::Optimistic, {});
  };
  EXPECT_EQ(RaisedBy(open).number, -2147217900);
  EXPECT_EQ(set.State(), ObjectState::Closed);
  EXPECT_EQ(world_.connection->Errors()->Count(), 1);
}

TEST_F(RecordsetTest, AStatementThatIsNoQueryLeavesItClosed) {
  EXPECT_EQ(world_.Open("DELETE FROM BUDGET", LockType::Optimistic)->State(), ObjectState::Closed);
  EXPECT_EQ(database_.Count("DELETE FROM BUDGET"), 1U);
  Recordset own;
  own.Open("DELETE FROM BUDGET", "Database=own", std::nullopt, std::nullopt, std::nullopt);
  EXPECT_EQ(own.State(), ObjectState::Closed);
  EXPECT_EQ(own.ActiveConnection()->State(), ObjectState::Closed);
}

TEST_F(RecordsetTest, WalksItsRowsBothWays) {
  const auto set = world_.Open(kBudgets);
  EXPECT_EQ(Walk(*set, "BUDGETCODE"), "A B C");
  EXPECT_TRUE(set->Eof());
  EXPECT_FALSE(set->Bof());
  EXPECT_EQ(RaisedBy([&] { set->MoveNext(); }).number, 3021);
  set->MovePrevious();
  EXPECT_EQ(set->Value("BUDGETCODE"), Variant("C"));
  set->MoveFirst();
  set->MovePrevious();
  EXPECT_TRUE(set->Bof());
  EXPECT_FALSE(set->Eof());
  EXPECT_EQ(RaisedBy([&] { set->MovePrevious(); }).number, 3021);
  set->MoveNext();
  EXPECT_EQ(set->Value("BUDGETCODE"), Variant("A"));
  set->MoveLast();
  EXPECT_EQ(set->Value("BUDGETCODE"), Variant("C"));
}

TEST_F(RecordsetTest, AnEmptySetIsAtBothEndsAndLetsItselfBeMoved) {
  database_.queries["select * from BUDGET where 0=1"] = {{"BUDGETCODE", "BUDGETTYPE", "USERID"}, {}};
  for (const LockType lock_type : {LockType::ReadOnly, LockType::Optimistic}) {
    const auto set = world_.Open("select * from BUDGET where 0=1", lock_type);
    EXPECT_TRUE(set->Eof() && set->Bof());
    EXPECT_EQ(set->RecordCount(), 0);
    set->MoveFirst();
    set->MoveLast();
    EXPECT_TRUE(set->Eof() && set->Bof());
    EXPECT_EQ(RaisedBy([&] { set->MoveNext(); }).number, 3021);
    EXPECT_EQ(RaisedBy([&] { set->MovePrevious(); }).number, 3021);
    EXPECT_EQ(RaisedBy([&] { static_cast<void>(set->Value("BUDGETCODE")); }).number, 3021);
  }
}

TEST_F(RecordsetTest, GivesValuesInTheTypesOfTheDriver) {
  const auto set = world_.Open(kLines);
  EXPECT_EQ(set->Value("budgetcode"), Variant("A"));
  EXPECT_EQ(set->Value(1), Variant(1));
  EXPECT_EQ(set->Value("STARTDATE"), Variant(Date::Civil(2026, 1, 1)));
  EXPECT_EQ(set->Value("BUDGETAMNT"), Variant(100.0));
  set->MoveLast();
  EXPECT_EQ(set->Value("STARTDATE"), Variant(kNull));
}

TEST_F(RecordsetTest, NamesAColumnThatIsNotThere) {
  const auto set = world_.Open(kBudgets);
  const Raised raised = RaisedBy([&] { static_cast<void>(set->Value("NOWHERE")); });
  EXPECT_EQ(raised.number, 3265);
  EXPECT_NE(raised.description.find("'NOWHERE'"), std::string::npos);
  EXPECT_EQ(RaisedBy([&] { static_cast<void>(set->Value(3)); }).number, 3265);
  EXPECT_EQ(RaisedBy([&] { static_cast<void>(set->ColumnName(3)); }).number, 3265);
}

TEST_F(RecordsetTest, DescribesItsColumns) {
  const auto set = world_.Open(kBudgets);
  EXPECT_EQ(set->ColumnCount(), 3U);
  EXPECT_EQ(set->ColumnName(2), "USERID");
  const auto fields = set->Fields();
  EXPECT_EQ(fields->Count(), 3);
  EXPECT_EQ(fields->Item("userid")->Name(), "USERID");
  EXPECT_EQ(fields->Item(0)->Value(), Variant("A"));
  for (const Variant& index : Row{"NOWHERE", 3, -1}) {
    EXPECT_EQ(RaisedBy([&] { fields->Item(index); }).number, 3265);
  }
}

TEST_F(RecordsetTest, AFieldFollowsTheCurrentRow) {
  const auto set = world_.Open(kBudgets, LockType::Optimistic);
  const auto user = set->Fields()->Item("USERID");
  set->MoveNext();
  EXPECT_EQ(user->Value(), Variant(kNull));
  user->SetValue("dave");
  EXPECT_EQ(set->EditMode(), EditMode::InProgress);
  EXPECT_EQ(set->Value("USERID"), Variant("dave"));
  EXPECT_EQ(user->OriginalValue(), Variant(kNull));
}

TEST_F(RecordsetTest, FieldsMadeOnTheirOwnRaise91) {
  platform::database::Fields fields;
  platform::database::Field field;
  EXPECT_EQ(RaisedBy([&] { static_cast<void>(fields.Count()); }).number, 91);
  EXPECT_EQ(RaisedBy([&] { static_cast<void>(field.Value()); }).number, 91);
}

TEST_F(RecordsetTest, EveryMemberOfAClosedSetRaises3704) {
  Recordset set;
  const std::function<void()> members[] = {
      [&] { set.Close(); },
      [&] { set.MoveFirst(); },
      [&] { set.MoveLast(); },
      [&] { set.MoveNext(); },
      [&] { set.MovePrevious(); },
      [&] { AddNew(set); },
      [&] { Update(set); },
      [&] { set.UpdateBatch(std::nullopt); },
      [&] { set.CancelUpdate(); },
      [&] { set.CancelBatch(std::nullopt); },
      [&] { set.Clone(std::nullopt); },
      [&] { static_cast<void>(set.Eof()); },
      [&] { static_cast<void>(set.Bof()); },
      [&] { static_cast<void>(set.RecordCount()); },
      [&] { static_cast<void>(set.EditMode()); },
      [&] { set.SetFilter("A = 1"); },
      [&] { static_cast<void>(set.Value("A")); },
      [&] { static_cast<void>(set.Value(0)); },
      [&] { static_cast<void>(set.OriginalValue(0)); },
      [&] { set.SetValue("A", 1); },
      [&] { static_cast<void>(set.ColumnCount()); },
  };
  for (const auto& member : members) EXPECT_EQ(RaisedBy(member).number, 3704);
  EXPECT_EQ(set.State(), ObjectState::Closed);
}

TEST_F(RecordsetTest, IsClosedWithItsConnection) {
  const auto connected = world_.Open(kBudgets);
  const auto detached = world_.Open(kBudgets);
  detached->SetActiveConnection(nullptr);
  world_.connection->Close();
  EXPECT_EQ(connected->State(), ObjectState::Closed);
  EXPECT_EQ(RaisedBy([&] { static_cast<void>(connected->Value("BUDGETCODE")); }).number, 3704);
  EXPECT_EQ(detached->State(), ObjectState::Open);
  EXPECT_EQ(Walk(*detached, "BUDGETCODE"), "A B C");
}

TEST_F(RecordsetTest, KnowsItsConnectionStillWhenClosed) {
  const auto set = world_.Open(kBudgets);
  set->Close();
  EXPECT_EQ(set->ActiveConnection(), world_.connection);
  set->SetActiveConnection(nullptr);
  EXPECT_EQ(set->ActiveConnection(), nullptr);
}

TEST_F(RecordsetTest, AttachesToAnyOpenConnectionOfTheSameStringOnly) {
  const auto set = world_.Open(kBudgets);
  set->SetActiveConnection(nullptr);
  const auto same = world_.Connect();
  set->SetActiveConnection(same);
  EXPECT_EQ(set->ActiveConnection(), same);
  const auto other = world_.Connect("Database=other;PWD=s3cret");
  const Raised raised = RaisedBy([&] { set->SetActiveConnection(other); });
  EXPECT_EQ(raised.number, 5);
  EXPECT_EQ(raised.description.find("s3cret"), std::string::npos);
  const auto closed = world_.Connect();
  closed->Close();
  EXPECT_EQ(RaisedBy([&] { set->SetActiveConnection(closed); }).number, 3704);
  EXPECT_EQ(set->ActiveConnection(), same);
}

TEST_F(RecordsetTest, AFilterShowsTheRowsThatPass) {
  const auto set = world_.Open(kBudgets);
  set->SetFilter("BUDGETTYPE = 1");
  EXPECT_EQ(set->Filter(), Variant("BUDGETTYPE = 1"));
  EXPECT_EQ(set->RecordCount(), 2);
  EXPECT_EQ(Walk(*set, "BUDGETCODE"), "A C");
  set->MovePrevious();
  set->MovePrevious();
  EXPECT_EQ(set->Value("BUDGETCODE"), Variant("A"));
  set->SetFilter("USERID IS NULL");
  EXPECT_EQ(Walk(*set, "BUDGETCODE"), "B");
}

TEST_F(RecordsetTest, AFilterThatNothingPassesLeavesNoCurrentRow) {
  const auto set = world_.Open(kBudgets);
  set->SetFilter("BUDGETTYPE = 9");
  EXPECT_TRUE(set->Eof() && set->Bof());
  EXPECT_EQ(set->RecordCount(), 0);
  set->MoveFirst();
  EXPECT_EQ(RaisedBy([&] { static_cast<void>(set->Value("BUDGETCODE")); }).number, 3021);
  set->SetFilter("");
  EXPECT_EQ(set->Value("BUDGETCODE"), Variant("A"));
}

TEST_F(RecordsetTest, EmptyTextsAndZeroEndAFilter) {
  const auto set = world_.Open(kBudgets);
  for (const Variant& none : Row{"", "  ", 0, std::int16_t{0}, Variant()}) {
    set->SetFilter("BUDGETCODE = 'B'");
    EXPECT_EQ(set->RecordCount(), 1);
    set->SetFilter(none);
    EXPECT_EQ(set->RecordCount(), 3);
    EXPECT_EQ(set->Value("BUDGETCODE"), Variant("A"));
    EXPECT_EQ(set->Filter(), Variant(""));
  }
}

TEST_F(RecordsetTest, AFilterThatIsNoneChangesNothing) {
  const auto set = world_.Open(kBudgets);
  set->SetFilter("BUDGETCODE = 'B'");
  for (const Variant& wrong : Row{"BUDGETCODE =", 1, kNull, automation::Array()}) {
    EXPECT_EQ(RaisedBy([&] { set->SetFilter(wrong); }).number, 3001);
  }
  EXPECT_EQ(set->Filter(), Variant("BUDGETCODE = 'B'"));
  EXPECT_EQ(set->RecordCount(), 1);
}

TEST_F(RecordsetTest, ACloneWalksTheSameRowsOnItsOwn) {
  const auto set = world_.Open(kBudgets);
  set->SetFilter("BUDGETCODE = 'B'");
  const auto clone = set->Clone(LockType::Unspecified);
  EXPECT_EQ(clone->Source(), set->Source());
  EXPECT_EQ(clone->ActiveConnection(), world_.connection);
  EXPECT_EQ(clone->RecordCount(), 3);
  EXPECT_EQ(Walk(*clone, "BUDGETCODE"), "A B C");
  EXPECT_EQ(set->Value("BUDGETCODE"), Variant("B"));
  set->Close();
  clone->MoveFirst();
  EXPECT_EQ(clone->Value("BUDGETCODE"), Variant("A"));
}

TEST_F(RecordsetTest, ACloneHasTheLockTypeOfItsSetOrNone) {
  const auto set = world_.Open(kBudgets, LockType::BatchOptimistic);
  EXPECT_EQ(set->Clone(std::nullopt)->LockType(), LockType::BatchOptimistic);
  EXPECT_EQ(set->Clone(LockType::Unspecified)->LockType(), LockType::BatchOptimistic);
  EXPECT_EQ(set->Clone(LockType::ReadOnly)->LockType(), LockType::ReadOnly);
}

TEST_F(RecordsetTest, ItsMembersCanBeCalledByTheirNames) {
  const std::shared_ptr<automation::Object> set = world_.Open(kBudgets);
  set->Set("filter", "BUDGETTYPE = 1");
  EXPECT_EQ(set->Get("RecordCount"), Variant(2));
  set->Call("MoveNext");
  const Variant fields = set->Get("Fields");
  const Variant field = fields.As<automation::ObjectRef>()->Call("Item", "BUDGETCODE");
  EXPECT_EQ(field.As<automation::ObjectRef>()->Get("Value"), Variant("C"));
  EXPECT_EQ(set->Get("EOF"), Variant(false));
  set->Set("ActiveConnection", Variant());
  EXPECT_EQ(set->Get("ActiveConnection"), Variant());
}

}  // namespace

}  // namespace talvex::test
