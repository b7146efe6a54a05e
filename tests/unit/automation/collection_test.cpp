#include "automation/collection.h"

#include <limits>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "automation/dictionary.h"
#include "support/error_of.h"

namespace talvex::automation {
namespace {

using test::ErrorNumberOf;
using test::ErrorOf;

// "a", "b" without a key, "c": each under its capital, but for "b".
void Fill(Collection& collection) {
  collection.Add("a", "A");
  collection.Add("b", std::nullopt);
  collection.Add("c", "C");
}

TEST(Collection, FindsByKeyWithoutCaseAndByPosition) {
  Collection collection;
  Fill(collection);
  collection.Add("ä", "Ä");
  struct Row {
    Variant index;
    Variant item;
  };
  const Row rows[] = {{"A", "a"}, {"a", "a"},
                      {"c", "c"}, {"Ä", "ä"},
                      {1, "a"},   {2, "b"},
                      {3, "c"},   {std::int16_t{2}, "b"},
                      {2.0, "b"}, {2.5, "b"},  // Positions are rounded half to even.
                      {3.5, "ä"}, {Currency::FromUnits(20000), "b"}};
  for (const Row& row : rows) EXPECT_EQ(collection.Item(row.index), row.item);
  EXPECT_EQ(collection.Count(), 4);
}

TEST(Collection, RefusesWhatIsNotThere) {
  struct Row {
    Variant index;
    std::int32_t number;
    std::string shown;
  };
  const Row rows[] = {{"B", 5, "'B'"},      {"", 5, "''"},
                      {"1", 5, "'1'"},      {"\xC3\xA4", 5, "'\xC3\xA4'"},
                      {0, 9, "0"},          {4, 9, "4"},
                      {-1, 9, "-1"},        {true, 9, "-1"},
                      {Variant(), 9, "0"},  {0.5, 9, "0"},
                      {1e10, 6, ""},        {kNull, 94, ""},
                      {Date(), 13, "Date"}, {std::numeric_limits<std::int32_t>::max(), 9, "2147483647"}};
  Collection collection;
  Fill(collection);
  for (const Row& row : rows) {
    const ErrorState read = ErrorOf([&] { static_cast<void>(collection.Item(row.index)); });
    EXPECT_EQ(read.number, row.number) << read.description;
    EXPECT_NE(read.description.find(row.shown), std::string::npos) << read.description;
    EXPECT_EQ(ErrorNumberOf([&] { collection.Remove(row.index); }), row.number) << read.description;
  }
  EXPECT_EQ(collection.Count(), 3);
}

TEST(Collection, KeyThatIsThereAlreadyRaises457AndChangesNothing) {
  Collection collection;
  Fill(collection);
  const ErrorState error = ErrorOf([&] { collection.Add("other", "a"); });
  EXPECT_EQ(error.number, 457);
  EXPECT_NE(error.description.find("'a'"), std::string::npos) << error.description;
  EXPECT_EQ(collection.Count(), 3);
  EXPECT_EQ(collection.Item("A"), Variant("a"));
}

TEST(Collection, PositionsCloseUpAfterARemoval) {
  Collection collection;
  Fill(collection);
  collection.Remove(1);
  EXPECT_EQ(collection.Item(1), Variant("b"));
  EXPECT_EQ(collection.Item(2), Variant("c"));
  EXPECT_EQ(collection.Item("c"), Variant("c"));
  EXPECT_EQ(ErrorNumberOf([&] { static_cast<void>(collection.Item("a")); }), 5);
  EXPECT_EQ(ErrorNumberOf([&] { static_cast<void>(collection.Item(3)); }), 9);

  collection.Remove(1);  // The one without a key.
  EXPECT_EQ(collection.Item("C"), Variant("c"));
  collection.Add("new a", "a");
  EXPECT_EQ(collection.Item(2), Variant("new a"));
  collection.Remove("A");
  collection.Remove("c");
  EXPECT_EQ(collection.Count(), 0);
  EXPECT_TRUE(collection.Entries().empty());
}

TEST(Collection, TellsItsEntriesInOrder) {
  Collection collection;
  Fill(collection);
  ASSERT_EQ(collection.Entries().size(), 3U);
  EXPECT_EQ(collection.Entries()[0].key, std::optional<std::string>("A"));
  EXPECT_EQ(collection.Entries()[1].key, std::nullopt);
  EXPECT_EQ(collection.Entries()[2].item, Variant("c"));
}

TEST(Collection, LongChainOfCollectionsIsDestroyedWithoutStackForEachLevel) {
  auto innermost = std::make_shared<Dictionary>();
  const std::weak_ptr<Dictionary> watched = innermost;
  ObjectRef outer = std::move(innermost);
  for (int i = 0; i < 200000; ++i) {
    auto next = std::make_shared<Collection>();
    next->Add("beside it", std::nullopt);
    next->Add(outer, "inner");
    outer = std::move(next);
  }
  outer.reset();
  EXPECT_TRUE(watched.expired());
}

TEST(Collection, WorksByTheNamesOfItsMembers) {
  const ObjectRef collection = std::make_shared<Collection>();
  EXPECT_EQ(collection->Class().Name(), "Platform.Collection");
  collection->Call("Add", 12.5);
  collection->Call("Add", "text", "Key");
  EXPECT_EQ(collection->Get("Count"), Variant(2));
  EXPECT_EQ(collection->Call("Item", 1), Variant(12.5));
  EXPECT_EQ(collection->Call("item", "KEY"), Variant("text"));
  collection->Call("Remove", "key");
  EXPECT_EQ(collection->Get("Count"), Variant(1));
}

}  // namespace
}  // namespace talvex::automation
