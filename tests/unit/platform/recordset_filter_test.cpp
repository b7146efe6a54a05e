// Filters over many rows, answered from an index, must say the same as filters that look at every row.
#include <gtest/gtest.h>

#include <ctime>

#include "platform/database/column_index.h"
#include "support/recordset_world.h"

namespace talvex::test {

namespace {

using automation::Currency;
using automation::Date;
using automation::kNull;
using automation::Variant;
using platform::database::ColumnIndex;
using platform::database::Literal;
using platform::database::LockType;
using platform::database::Recordset;
using platform::database::RowSet;

// A table large enough to be indexed, with values of every kind that equal one another.
FakeRows Mixed() {
  FakeRows rows{{"BUDGETCODE", "BUDGETTYPE", "USERID"}, {}};
  const Row types = {1,
                     1.0,
                     Currency::FromUnits(10000),
                     "1",
                     std::int16_t{1},
                     true,
                     kNull,
                     0,
                     -0.0,
                     "",
                     "zero",
                     Date::Civil(2026, 3, 15),
                     "3/15/2026",
                     "2026-03-15",
                     Date::Civil(2026, 3, 15, 1)};
  for (int i = 0; i < 900; ++i) {
    const auto at = static_cast<std::size_t>(i);
    rows.rows.push_back({i, types[at % types.size()], i % 7 == 0 ? "Carol" : "dave"});
  }
  return rows;
}

class RecordsetFilterTest : public ::testing::Test {
 protected:
  std::shared_ptr<Recordset> Open(LockType lock_type) {
    world_.database->queries[kBudgets] = Mixed();
    return world_.Open(kBudgets, lock_type);
  }
  // The filter as it is answered from an index, and the same one put so that no index can serve it.
  static void ExpectSameRows(Recordset& set, const std::string& filter) {
    set.SetFilter(filter);
    const std::string indexed = Walk(set, "BUDGETCODE");
    set.SetFilter("(" + filter + ") OR (" + filter + ")");
    EXPECT_EQ(indexed, Walk(set, "BUDGETCODE")) << filter;
  }

  RecordsetWorld world_;
};

constexpr const char* kEqualities[] = {
    "BUDGETTYPE = 1",
    "BUDGETTYPE = '1'",
    "BUDGETTYPE = 1.0",
    "BUDGETTYPE = -1",
    "BUDGETTYPE = 0",
    "BUDGETTYPE = -0",
    "BUDGETTYPE = ''",
    "BUDGETTYPE = 'ZERO'",
    "BUDGETTYPE = '3/15/2026'",
    "BUDGETTYPE = #3/15/2026#",
    "BUDGETTYPE = '2026-03-15'",
    "BUDGETTYPE = 'nothing'",
    "USERID = 'CAROL' AND BUDGETTYPE = 1 AND BUDGETCODE <> 45",
    "BUDGETCODE = 105 AND USERID = 'carol'",
};

TEST_F(RecordsetFilterTest, AnIndexFindsTheSameRows) {
  const auto set = Open(LockType::ReadOnly);
  for (const char* filter : kEqualities) ExpectSameRows(*set, filter);
  set->SetFilter("BUDGETTYPE = 1");
  EXPECT_EQ(set->RecordCount(), 300);
}

TEST_F(RecordsetFilterTest, AnIndexFollowsChangedAndAddedRows) {
  const auto set = Open(LockType::BatchOptimistic);
  for (const char* filter : kEqualities) ExpectSameRows(*set, filter);
  set->SetFilter("BUDGETCODE = 105");
  set->SetValue("USERID", "erin");
  set->AddNew("USERID", "erin");
  set->SetFilter("USERID = 'erin'");
  EXPECT_EQ(Walk(*set, "BUDGETCODE"), "105 Null");
  set->SetFilter("USERID = 'Carol' AND BUDGETCODE = 105");
  EXPECT_EQ(set->RecordCount(), 0);
  set->CancelBatch(std::nullopt);
  set->SetFilter("USERID = 'erin'");
  EXPECT_EQ(set->RecordCount(), 0);
  set->SetFilter("USERID = 'Carol' AND BUDGETCODE = 105");
  EXPECT_EQ(set->RecordCount(), 1);
}

TEST_F(RecordsetFilterTest, AnIndexIsBuiltAnewWhenMuchHasChanged) {
  const auto set = Open(LockType::BatchOptimistic);
  set->SetFilter("USERID = 'erin'");
  set->SetFilter("");
  for (; !set->Eof(); set->MoveNext()) {
    if (set->Value("USERID") == Variant("Carol")) set->SetValue("USERID", "erin");
  }
  set->SetFilter("USERID = 'erin'");
  EXPECT_EQ(set->RecordCount(), 129);
  for (const char* filter : kEqualities) ExpectSameRows(*set, filter);
}

TEST(ColumnIndex, AnswersWithTheRowsThatMayBeEqual) {
  const RowSet rows = MakeRowSet({{"A"}, {{"x"}, {5}, {"X"}, {kNull}, {"5"}}});
  ColumnIndex index(rows, 0);
  EXPECT_EQ(index.Candidates(Literal("x")), (std::vector<std::size_t>{0, 2}));
  EXPECT_EQ(index.Candidates(Literal("5")), (std::vector<std::size_t>{1, 4}));
  EXPECT_EQ(index.CountCandidates(Literal("5")), 2U);
  EXPECT_TRUE(index.Candidates(Literal("y")).empty());
  index.Touch(3);
  index.Touch(3);
  EXPECT_EQ(index.Candidates(Literal("x")), (std::vector<std::size_t>{0, 2, 3}));
  EXPECT_FALSE(index.Worn());
  for (std::size_t i = 0; i < 65; ++i) index.Touch(i % 5);
  EXPECT_TRUE(index.Worn());
}

// Seconds of processor time, which a busy machine does not stretch. The limits below are generous, and far
// below what filters that look at every row would take.
class Stopwatch {
 public:
  [[nodiscard]] double Seconds() const { return static_cast<double>(std::clock() - start_) / CLOCKS_PER_SEC; }

 private:
  std::clock_t start_ = std::clock();
};

TEST_F(RecordsetFilterTest, OneFilterForEachOfManyRowsDoesNotBecomeQuadratic) {
  constexpr int kRows = 50'000;
  FakeRows rows{{"PARENT", "CHILD", "ACCRULEID"}, {}};
  for (int i = 0; i < kRows; ++i) rows.rows.push_back({"P" + std::to_string(i / 2), "same", i / 2});
  world_.database->queries["SELECT * FROM RELATIONS"] = rows;
  const auto set = world_.Open("SELECT * FROM RELATIONS");
  const Stopwatch stopwatch;
  for (int i = 0; i < kRows / 2; ++i) {
    const std::string number = std::to_string(i);
    set->SetFilter("CHILD = 'same' AND " +
                   (i % 2 == 0 ? "PARENT = 'p" + number + "'" : "ACCRULEID=" + number));
    ASSERT_EQ(set->RecordCount(), 2);
  }
  EXPECT_LT(stopwatch.Seconds(), 5);
}

TEST_F(RecordsetFilterTest, FilteringBetweenWritesDoesNotBecomeQuadratic) {
  constexpr int kRows = 20'000;
  FakeRows rows{{"BUDGETCODE", "BUDGETTYPE", "USERID"}, {}};
  for (int i = 0; i < kRows; ++i) rows.rows.push_back({"B" + std::to_string(i), 1, "carol"});
  world_.database->queries[kBudgets] = rows;
  const auto set = world_.Open(kBudgets, LockType::BatchOptimistic);
  const Stopwatch stopwatch;
  for (int i = 0; i < 5'000; ++i) {
    set->SetFilter("BUDGETCODE = 'b" + std::to_string(i) + "'");
    ASSERT_EQ(set->RecordCount(), 1);
    set->SetValue("BUDGETCODE", "C" + std::to_string(i));
  }
  EXPECT_LT(stopwatch.Seconds(), 5);
}

}  // namespace

}  // namespace talvex::test
