#include "accounting/rule_operators.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>

#include "automation/collection.h"
#include "automation/conversions.h"
#include "support/error_of.h"

namespace talvex::test {

namespace {

using automation::Currency;
using automation::Date;
using automation::kNull;
using automation::Variant;

std::string Name(const Variant& value) {
  return value.IsNull() ? "Null" : "'" + automation::ToText(value) + "'";
}

// Which of the six comparisons hold: "<", "=" or ">" says how the property stands to the field value.
struct OrderRow {
  Variant property;
  const char* field_value;
  char order;
};

TEST(RuleOperators, ComparisonsFollowTheirTable) {
  const OrderRow rows[] = {
      // Numbers, whatever they look like.
      {"10", "10.0", '='},
      {"9", "10", '<'},
      {"-1", "-2", '>'},
      {"1,000", "999", '>'},
      {" 7 ", "7", '='},
      {"1E3", "1000", '='},
      {"1D2", "100", '='},
      {"+5", "5", '='},
      {"007", "7", '='},
      {10, "10.0", '='},
      {std::int16_t{3}, "12", '<'},
      {2.5, "2.50", '='},
      {Currency::FromDouble(12.5), "12.50", '='},
      {true, "-1", '='},
      {false, "0", '='},
      {Variant(), "0", '='},  // Empty is the number 0,
      {Variant(), "", '='},   // and the empty text.
      // Dates, in any of their forms.
      {"2026-03-15", "3/15/2026", '='},
      {"2/1/2026", "2026-01-31", '>'},
      {"15 March 2026", "Mar 16, 2026", '<'},
      {"2026-03-15", "2026-03-15 10:00", '<'},
      {Date::Civil(2026, 3, 15), "3/15/2026", '='},
      {Date::Civil(2026, 3, 15, 10), "3/15/2026", '>'},
      // Texts, byte by byte.
      {"abc", "abc", '='},
      {"abc", "ABC", '>'},
      {"B", "a", '<'},
      {"ab", "abc", '<'},
      {"", "", '='},
      {"", "a", '<'},
      {"é", "z", '>'},
      // The property is not trimmed.
      {" abc", "abc", '<'},
      {"abc ", "abc", '>'},
      {"  ", "", '>'},
      // Mixed pairs are texts.
      {"10", "9 pieces", '<'},
      {"9 pieces", "10", '>'},
      {10, "abc", '<'},
      {"2026-03-15", "2026", '>'},
      {"2026", "3/15/2026", '<'},
      {Date::Civil(2026, 3, 15), "abc", '<'},
      {Date::Civil(2026, 3, 15), "3", '>'},  // "3/15/2026" and "3".
      {"2026-02-30", "2026-03-01", '<'},     // No date, so a text.
      {"2026-02-30", "3/1/2026", '<'},
      {true, "True", '='},
      {"", "0", '<'},  // The empty text is no number.
      // Null is the empty text.
      {kNull, "", '='},
      {kNull, "0", '<'},
      {kNull, "a", '<'},
  };
  for (const OrderRow& row : rows) {
    const PropertyValue property(row.property);
    const auto holds = [&](RuleOperators comparison) {
      return LineHolds(property, comparison, row.field_value);
    };
    const std::string pair = Name(row.property) + " and '" + row.field_value + "'";
    EXPECT_EQ(holds(RuleOperators::Less), row.order == '<') << pair;
    EXPECT_EQ(holds(RuleOperators::LessEqual), row.order != '>') << pair;
    EXPECT_EQ(holds(RuleOperators::Greater), row.order == '>') << pair;
    EXPECT_EQ(holds(RuleOperators::GreaterEqual), row.order != '<') << pair;
    EXPECT_EQ(holds(RuleOperators::Equal), row.order == '=') << pair;
    EXPECT_EQ(holds(RuleOperators::NotEqual), row.order != '=') << pair;
  }
}

struct TextRow {
  Variant property;
  const char* field_value;
  bool holds;
};

TEST(RuleOperators, ContainsFollowsItsTable) {
  const TextRow rows[] = {
      {"abcdef", "abc", true},
      {"abcdef", "def", true},
      {"abcdef", "abcdef", true},
      {"abcdef", "ace", false},
      {"abc", "abcd", false},
      {"abc", "ABC", false},
      {"Ærøskøbing", "røs", true},
      {"a b", " ", true},
      // An empty field value is always found.
      {"abc", "", true},
      {"", "", true},
      {kNull, "", true},
      {Variant(), "", true},
      {10, "", true},
      {"", "a", false},
      {kNull, "a", false},
      // Two numbers are searched as the texts of the numbers, two dates as those of the dates.
      {"100", "10", true},
      {1234, "23", true},
      {"1.50", "1.5", true},
      {"007", "00", false},
      {"2026-03-15", "3/15/2026", true},
      {"2026-03-15 10:00", "2026-03-15", true},
      // A mixed pair stays as it is.
      {"007 pieces", "00", true},
      {"2026-03-15", "2026", true},
      {Date::Civil(2026, 3, 15), "15", true},
      {Date::Civil(2026, 3, 15), "2026-03", false},
  };
  for (const TextRow& row : rows) {
    EXPECT_EQ(LineHolds(PropertyValue(row.property), RuleOperators::Contains, row.field_value), row.holds)
        << Name(row.property) << " contains '" << row.field_value << "'";
  }
}

TEST(RuleOperators, InsideAndNotInFollowTheirTable) {
  const TextRow rows[] = {
      {"A", "A;B;C", true},
      {"B", "A;B;C", true},
      {"C", "A;B;C", true},
      {"AB", "A;B;C", false},
      {"D", "A;B;C", false},
      {"a", "A;B;C", false},
      {"A", "AA;BA", false},
      {"A;B", "A;B;C", true},
      // An item is recognised only next to a separator: a list of a single item has none.
      {"A", "A", false},
      {"10", "10", false},
      {10, "10", false},
      {"2026-03-15", "2026-03-15", false},
      {"A", "A;", true},
      {"A", ";A", true},
      {"A", ";A;", true},
      // Both sides are trimmed, the items between them are not.
      {" A ", "A;B", true},
      {"B", "A; B", false},
      {"B", "A;B ;C", false},
      // Numbers and dates are items by their texts.
      {10, "5;10;15", true},
      {10, "5;10.0;15", false},
      {"10.0", "5;10;15", false},
      {Date::Civil(2026, 3, 15), "3/15/2026;3/16/2026", true},
      {Date::Civil(2026, 3, 15), "2026-03-15;2026-03-16", false},
      {true, "True;False", true},
      // The empty text is an item where nothing stands next to a separator.
      {"", "A;B", false},
      {"", ";A", true},
      {"", "A;", true},
      {"", "A;;B", true},
      {"", ";", true},
      {"", "", false},
      {kNull, "A;;B", true},
      {kNull, "A;B", false},
      {"  ", "A;;B", true},
      {"A", "", false},
  };
  for (const TextRow& row : rows) {
    const PropertyValue property(row.property);
    EXPECT_EQ(LineHolds(property, RuleOperators::Inside, row.field_value), row.holds)
        << Name(row.property) << " inside '" << row.field_value << "'";
    EXPECT_EQ(LineHolds(property, RuleOperators::NotIn, row.field_value), !row.holds)
        << Name(row.property) << " not in '" << row.field_value << "'";
  }
}

TEST(RuleOperators, AnOperatorOutsideOneToNineCountsAsTrue) {
  for (const int comparison : {-1, 0, 10, 99, 32767}) {
    EXPECT_TRUE(LineHolds(PropertyValue("a"), static_cast<RuleOperators>(comparison), "b")) << comparison;
  }
}

TEST(RuleOperators, WhatHasNoTextCannotBeCompared) {
  EXPECT_EQ(ErrorNumberOf([] { PropertyValue(Variant(automation::Array(std::vector<Variant>{1, 2}))); }), 13);
  EXPECT_EQ(ErrorNumberOf([] { PropertyValue(Variant(std::make_shared<automation::Collection>())); }), 13);
}

}  // namespace

}  // namespace talvex::test
