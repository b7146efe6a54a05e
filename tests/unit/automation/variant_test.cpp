#include "automation/variant.h"

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "automation/dictionary.h"
#include "support/error_of.h"

namespace talvex::automation {
namespace {

using test::ErrorOf;

struct OfEveryKind {
  Variant value;
  Kind kind;
  std::string name;
};

// One value of every kind.
std::vector<OfEveryKind> Samples() {
  return {{Variant(), Kind::Empty, "Empty"},
          {kNull, Kind::Null, "Null"},
          {true, Kind::Boolean, "Boolean"},
          {std::int16_t{7}, Kind::Int16, "Int16"},
          {7, Kind::Int32, "Int32"},
          {7.0, Kind::Double, "Double"},
          {Currency::FromUnits(70000), Kind::Currency, "Currency"},
          {Date::Civil(2026, 3, 15), Kind::Date, "Date"},
          {"7", Kind::String, "String"},
          {Array(std::vector<Variant>{7}), Kind::Array, "Array"},
          {std::make_shared<Dictionary>(), Kind::Object, "Object"}};
}

TEST(Variant, KnowsItsKind) {
  for (const OfEveryKind& sample : Samples()) {
    EXPECT_EQ(sample.value.Type(), sample.kind) << sample.name;
    EXPECT_EQ(KindName(sample.kind), sample.name);
    EXPECT_EQ(sample.value.IsEmpty(), sample.kind == Kind::Empty);
    EXPECT_EQ(sample.value.IsNull(), sample.kind == Kind::Null);
    EXPECT_EQ(sample.value.IsString(), sample.kind == Kind::String);
    EXPECT_EQ(sample.value.IsArray(), sample.kind == Kind::Array);
    EXPECT_EQ(sample.value.IsObject(), sample.kind == Kind::Object);
  }
}

TEST(Variant, EqualsOnlyTheSameKindAndValue) {
  const std::vector<OfEveryKind> samples = Samples();
  for (std::size_t i = 0; i < samples.size(); ++i) {
    for (std::size_t j = 0; j < samples.size(); ++j) {
      EXPECT_EQ(samples[i].value == samples[j].value, i == j) << samples[i].name << " " << samples[j].name;
    }
  }
  EXPECT_NE(Variant("a"), Variant("A"));
  EXPECT_NE(Variant(std::make_shared<Dictionary>()), Variant(std::make_shared<Dictionary>()));
  EXPECT_NE(Variant(std::nan("")), Variant(std::nan("")));
}

TEST(Variant, HoldsTextsOfEveryCppKind) {
  for (const Variant& value : {Variant("a"), Variant(std::string("a")), Variant(std::string_view("a"))}) {
    ASSERT_TRUE(value.IsString());
    EXPECT_EQ(value.As<std::string>(), "a");
  }
}

TEST(Variant, SharesItsObjectAndMayHoldNone) {
  const auto dictionary = std::make_shared<Dictionary>();
  const Variant value(dictionary);
  const Variant copy = value;
  EXPECT_EQ(copy.As<ObjectRef>(), dictionary);
  EXPECT_EQ(copy, value);

  const Variant none{std::shared_ptr<Dictionary>()};
  EXPECT_EQ(none.Type(), Kind::Object);
  EXPECT_EQ(none.As<ObjectRef>(), nullptr);
}

TEST(Variant, CopiesAreIndependent) {
  Variant original(Array({1, "two"}));
  Variant copy = original;
  copy.As<Array>().At(0) = 9;
  EXPECT_EQ(original.As<Array>().At(0), Variant(1));
  EXPECT_EQ(copy.As<Array>().At(0), Variant(9));
  const Variant moved = std::move(copy);
  EXPECT_EQ(moved.As<Array>().At(0), Variant(9));
}

TEST(Array, CountsFromItsLowerBound) {
  struct Row {
    std::vector<Variant> items;
    std::int32_t lower, upper;
  };
  const Row rows[] = {{{}, 0, -1}, {{}, 1, 0}, {{"a"}, 0, 0}, {{"a", "b"}, 1, 2}, {{"a", "b", "c"}, -5, -3}};
  for (const Row& row : rows) {
    const Array array(row.items, row.lower);
    EXPECT_EQ(array.Lower(), row.lower);
    EXPECT_EQ(array.Upper(), row.upper);
    EXPECT_EQ(array.Items(), row.items);
    for (std::int32_t i = row.lower; i <= row.upper; ++i) {
      EXPECT_EQ(array.At(i), row.items[static_cast<std::size_t>(i - row.lower)]);
    }
    for (const std::int32_t outside : {row.lower - 1, row.upper + 1, std::numeric_limits<std::int32_t>::min(),
                                       std::numeric_limits<std::int32_t>::max()}) {
      const ErrorState error = ErrorOf([&] { static_cast<void>(array.At(outside)); });
      EXPECT_EQ(error.number, 9) << outside;
      EXPECT_EQ(error.description, "Subscript out of range: there is no element " + std::to_string(outside));
    }
  }
  EXPECT_EQ(Array().Lower(), 0);
  EXPECT_EQ(Array().Upper(), -1);
}

TEST(Array, ElementsCanBeChangedInPlace) {
  Array array({1, 2}, 1);
  array.At(2) = "changed";
  EXPECT_EQ(array.Items(), (std::vector<Variant>{1, "changed"}));
  EXPECT_EQ(ErrorOf([&] { array.At(0) = 1; }).number, 9);
}

TEST(Array, EqualsByBoundsAndElements) {
  EXPECT_EQ(Array({1, 2}), Array({1, 2}));
  EXPECT_FALSE(Array({1, 2}) == Array({1, 2}, 1));
  EXPECT_FALSE(Array({1, 2}) == Array({2, 1}));
  EXPECT_FALSE(Array({1, 2}) == Array({1}));
  EXPECT_EQ(Variant(Array({Variant(Array({1}))})), Variant(Array({Variant(Array({1}))})));
}

}  // namespace
}  // namespace talvex::automation
