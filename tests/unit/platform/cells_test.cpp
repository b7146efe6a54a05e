#include "platform/spreadsheet/cells.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace talvex::platform::spreadsheet {
namespace {

using automation::Variant;
using Model = std::map<Position, Cell>;

Model Flat(const Cells& cells) {
  Model flat;
  for (const auto& [row, used] : cells.ByRow()) {
    EXPECT_FALSE(used.empty()) << "row " << row;
    std::int32_t before = 0;
    for (const auto& [column, cell] : used) {
      EXPECT_LT(before, column) << "row " << row;
      before = column;
      flat.emplace(Position{row, column}, cell);
    }
  }
  return flat;
}

TEST(Cells, HoldWhatWasSetLast) {
  Cells cells{{{2, 3}, {1.5, ""}}, {{2, 1}, {"a", ""}}, {{1, 256}, {true, "=1"}}, {{2, 3}, {2.5, ""}}};
  EXPECT_EQ(cells.Count(), 3U);
  EXPECT_EQ(cells.Find({2, 3})->value, Variant(2.5));
  EXPECT_EQ(cells.Find({1, 256})->formula, "=1");
  EXPECT_EQ(cells.Find({2, 2}), nullptr);
  EXPECT_EQ(cells.Find({2, 4}), nullptr);
  EXPECT_EQ(cells.Find({3, 1}), nullptr);
  cells.Erase({2, 2});
  cells.Erase({7, 7});
  EXPECT_EQ(cells.Count(), 3U);
  cells.Erase({1, 256});
  EXPECT_EQ(cells.ByRow().begin()->first, 2) << "a row without cells is gone";
  EXPECT_FALSE(cells.IsEmpty());
  EXPECT_TRUE(Cells().IsEmpty());
}

// Cells kept one by one, moved and copied by looking at every one.
class Naive {
 public:
  void Set(Position at, const Cell& cell) { cells_[at] = cell; }
  void Erase(Position at) { cells_.erase(at); }
  void MoveDown(std::int32_t row, std::int32_t count) {
    Model moved;
    for (const auto& [at, cell] : cells_) moved[{at.row < row ? at.row : at.row + count, at.column}] = cell;
    cells_ = moved;
  }
  void CopyRows(std::int32_t row, std::int32_t count, std::int32_t target) {
    Model copied = cells_;
    std::erase_if(copied,
                  [&](const auto& one) { return one.first.row >= target && one.first.row < target + count; });
    for (const auto& [at, cell] : cells_) {
      if (at.row >= row && at.row < row + count) copied[{at.row - row + target, at.column}] = cell;
    }
    cells_ = copied;
  }
  [[nodiscard]] const Model& Content() const { return cells_; }

 private:
  Model cells_;
};

TEST(Cells, ThousandsOfRandomChangesAgreeWithCellsKeptOneByOne) {
  std::mt19937 random(20260315);
  const auto up_to = [&](int most) {
    return static_cast<std::int32_t>(random() % static_cast<unsigned>(most)) + 1;
  };
  for (int round = 0; round < 60; ++round) {
    Cells cells;
    Naive naive;
    for (int step = 0; step < 150; ++step) {
      const Position at{up_to(12), up_to(6)};
      const std::int32_t count = up_to(4);
      switch (random() % 8) {
        case 0:
          cells.Erase(at);
          naive.Erase(at);
          break;
        case 1:
          cells.MoveDown(at.row, count);
          naive.MoveDown(at.row, count);
          break;
        case 2: {
          const std::int32_t target = up_to(12);
          cells.CopyRows(at.row, count, target);
          naive.CopyRows(at.row, count, target);
          break;
        }
        default:
          cells.Set(at, {static_cast<double>(step), ""});
          naive.Set(at, {static_cast<double>(step), ""});
      }
      ASSERT_EQ(Flat(cells), naive.Content()) << "round " << round << ", step " << step;
      const Cell* found = cells.Find(at);
      ASSERT_EQ(found != nullptr, naive.Content().contains(at));
      ASSERT_EQ(cells.Count(), naive.Content().size());
    }
  }
}

}  // namespace
}  // namespace talvex::platform::spreadsheet
