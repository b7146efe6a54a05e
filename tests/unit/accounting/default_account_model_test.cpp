// A naive model of the choice of a default ledger account, written from its rules in words, and random rule
// sets and requisitions on which it and the component must agree.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <random>
#include <stdexcept>

#include "support/error_of.h"
#include "unit/accounting/accounting_world.h"

namespace talvex::test {

namespace {

using automation::Variant;

// A value whose meaning is written down beside it, so that the model reads no texts.
struct Known {
  std::string text;
  std::optional<double> number;
  std::optional<int> day;  // Days from 1 March 2026.
  std::string canonical;   // The text of that number or date.
};

const std::vector<Known>& Values() {
  static const std::vector<Known> values = {
      {"", {}, {}, ""},
      {"abc", {}, {}, ""},
      {"ABC", {}, {}, ""},
      {"b", {}, {}, ""},
      {"A", {}, {}, ""},
      {"  A ", {}, {}, ""},
      {"10 pieces", {}, {}, ""},
      {"10", 10, {}, "10"},
      {"10.0", 10, {}, "10"},
      {" 9 ", 9, {}, "9"},
      {"1,000", 1000, {}, "1000"},
      {"-2.5", -2.5, {}, "-2.5"},
      {"2026-03-15", {}, 14, "3/15/2026"},
      {"3/15/2026", {}, 14, "3/15/2026"},
      {"16 March 2026", {}, 15, "3/16/2026"},
  };
  return values;
}

const std::vector<std::string>& Lists() {
  static const std::vector<std::string> lists = {"A;abc;10", ";",  "10;",        ";b",          "abc;;b",
                                                 "A; b",     ";;", "ABC;9;-2.5", "3/15/2026;A", " b;A "};
  return lists;
}

struct ModelLine {
  std::string property;
  int comparison = 0;
  Known field_value;
};
struct ModelAccount {
  std::string code;
  int type = 0;
  std::vector<int> usages;
  bool valid = true;
};
struct ModelRule {
  int id = 0;
  int sequence = 0;
  std::string account;
  std::vector<ModelLine> lines;
  bool valid = true;
};
struct Model {
  std::map<std::string, ModelAccount> accounts;
  std::vector<ModelRule> rules;  // By id.
  std::vector<std::string> dimensions;
};
// What the requisition says; a value that is not set is Null.
using ModelRequisition = std::map<std::string, std::optional<Known>>;

struct PropertyMissing : std::runtime_error {
  PropertyMissing() : std::runtime_error("a property is missing") {}
};

std::string Strip(std::string text) {
  while (!text.empty() && text.front() == ' ') text.erase(0, 1);
  while (!text.empty() && text.back() == ' ') text.pop_back();
  return text;
}

Known ValueOf(const ModelRequisition& requisition, const std::string& property) {
  const auto found = requisition.find(property);
  if (found == requisition.end()) throw PropertyMissing();
  return found->second.value_or(Known{});
}

// Every item has a separator on one side at least, so a list without any separator has no items.
bool IsAmongItems(const std::string& item, const std::string& list) {
  if (list.find(';') == std::string::npos) return false;
  std::vector<std::string> items(1);
  for (const char c : list) {
    if (c == ';') {
      items.emplace_back();
    } else {
      items.back() += c;
    }
  }
  return std::count(items.begin(), items.end(), item) > 0;
}

// -1, 0 or 1: how the two stand to each other.
int Order(const Known& p, const Known& f) {
  const auto sign = [](auto a, auto b) { return a < b ? -1 : static_cast<int>(b < a); };
  if (p.number && f.number) return sign(*p.number, *f.number);
  if (p.day && f.day) return sign(*p.day, *f.day);
  return sign(p.text, Strip(f.text));
}

bool IsTrue(const ModelLine& line, const ModelRequisition& requisition) {
  const Known p = ValueOf(requisition, line.property);
  const Known& f = line.field_value;
  const bool same_type = (p.number && f.number) || (p.day && f.day);
  const std::string p_text = same_type ? p.canonical : p.text;
  const std::string f_text = same_type ? f.canonical : Strip(f.text);
  const int order = Order(p, f);
  const std::map<int, bool> answers = {{1, order < 0},
                                       {2, order < 1},
                                       {3, order > 0},
                                       {4, order > -1},
                                       {5, order == 0},
                                       {6, order != 0},
                                       {7, p_text.find(f_text) != std::string::npos},
                                       {8, IsAmongItems(Strip(p_text), f_text)},
                                       {9, !IsAmongItems(Strip(p_text), f_text)}};
  const auto answer = answers.find(line.comparison);
  return answer == answers.end() || answer->second;
}

bool MayBeBooked(const ModelAccount& account, const Model& model, const ModelRequisition& requisition) {
  for (std::size_t i = 0; i < 5; ++i) {
    const std::string name = Strip(model.dimensions[i]);
    if (account.usages[i] != 1 || name.empty()) continue;
    if (ValueOf(requisition, name).text.empty()) return false;
  }
  return true;
}

std::string Expected(const Model& model, const ModelRequisition& requisition, int type) {
  std::map<int, const ModelRule*> applying;  // By sequence number.
  for (const ModelRule& rule : model.rules) {
    const ModelAccount& account = model.accounts.at(rule.account);
    const bool right_type = type < 1 || type > 4 || account.type == type;
    if (!rule.valid || !account.valid || !right_type || rule.lines.empty()) continue;
    const bool all_true = std::all_of(rule.lines.begin(), rule.lines.end(),
                                      [&](const ModelLine& line) { return IsTrue(line, requisition); });
    if (all_true) applying[rule.sequence] = &rule;
  }
  for (const auto& [sequence, rule] : applying) {
    const ModelAccount& account = model.accounts.at(rule->account);
    if (MayBeBooked(account, model, requisition)) return account.code;
  }
  return "";
}

class World {
 public:
  explicit World(unsigned seed) : random_(seed) {}

  int Below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random_); }
  bool Chance(int percent) { return Below(100) < percent; }
  template <class T>
  const T& OneOf(const std::vector<T>& items) {
    return items[static_cast<std::size_t>(Below(static_cast<int>(items.size())))];
  }

  Model MakeModel() {
    Model model;
    for (int i = 0; i < 5; ++i) model.dimensions.push_back(OneOf<std::string>({"D1", " D2 ", "", "P1"}));
    const int accounts = 1 + Below(5);
    for (int i = 0; i < accounts; ++i) {
      ModelAccount account{"ACC" + std::to_string(i), 1 + Below(4), {}, Chance(85)};
      for (int k = 0; k < 5; ++k) account.usages.push_back(Chance(20) ? 1 : 2 + Below(2));
      model.accounts[account.code] = account;
    }
    std::vector<int> sequences = {10, 20, 30, 40, 50, 60, 70, 80};
    std::shuffle(sequences.begin(), sequences.end(), random_);
    const int rules = 1 + Below(8);
    for (int id = 1; id <= rules; ++id) {
      ModelRule rule{id,
                     sequences[static_cast<std::size_t>(id - 1)],
                     "ACC" + std::to_string(Below(accounts)),
                     {},
                     Chance(85)};
      const int lines = Chance(8) ? 0 : 1 + Below(3);
      for (int k = 0; k < lines; ++k) rule.lines.push_back(MakeLine());
      model.rules.push_back(rule);
    }
    return model;
  }

  ModelRequisition MakeRequisition() {
    ModelRequisition requisition;
    for (const auto* name : {"P1", "P2", "P3", "D1", "D2"}) {
      if (Chance(3)) continue;
      requisition[name] = Chance(8) ? std::nullopt : std::optional(OneOf(Values()));
    }
    return requisition;
  }

 private:
  ModelLine MakeLine() {
    ModelLine line{OneOf<std::string>({"P1", "P2", "P3"}), Below(12), OneOf(Values())};
    if (line.comparison == 8 || line.comparison == 9 || Chance(5)) {
      if (Chance(85)) line.field_value = {OneOf(Lists()), {}, {}, ""};
    }
    return line;
  }

  std::mt19937 random_;
};

void Store(const TestInstallation& site, const Model& model) {
  const std::string over = "2026-03-16T09:59:59";
  for (const auto* table : {"ACCOUNTINGRULELINE", "ACCOUNTINGRULE", "LEDGERACCOUNT", "ACCOUNTINGPARAMETER"})
    site.Sql(std::string("DELETE FROM ") + table);
  for (std::size_t i = 0; i < 5; ++i)
    AddParameter(site, "Dimension" + std::to_string(i + 1), model.dimensions[i]);
  for (const auto& [code, account] : model.accounts) {
    std::string usages;
    for (const int usage : account.usages) usages += (usages.empty() ? "" : ",") + std::to_string(usage);
    AddAccount(site, {code, account.type, usages, "null", account.valid ? "null" : over});
  }
  for (const ModelRule& rule : model.rules) {
    RuleRow row{rule.id, rule.sequence, rule.account, {}, "null", rule.valid ? "null" : over};
    for (const ModelLine& line : rule.lines)
      row.lines.push_back({line.property, line.comparison, line.field_value.text});
    AddRule(site, row);
  }
}

Properties AsProperties(const ModelRequisition& requisition) {
  Properties properties;
  for (const auto& [name, value] : requisition)
    properties.emplace_back(name, value ? Variant(value->text) : Variant(automation::kNull));
  return properties;
}

struct Tally {
  int found = 0;
  int none = 0;
  int failed = 0;
};

void Compare(const Model& model, const ModelRequisition& requisition, int type, Tally& tally) {
  std::string expected;
  bool missing = false;
  try {
    expected = Expected(model, requisition, type);
  } catch (const PropertyMissing&) {
    missing = true;
  }
  std::string found;
  const std::int32_t error = ErrorNumberOf([&] { found = DefaultAccount(AsProperties(requisition), type); });
  EXPECT_EQ(error, missing ? 5 : 0);
  EXPECT_EQ(found, expected);
  int& count = missing ? tally.failed : (expected.empty() ? tally.none : tally.found);
  ++count;
}

TEST(DefaultLedgerAccountModel, AgreesOnRandomRuleSetsAndRequisitions) {
  OnInstallation([](TestInstallation& site) {
    Tally tally;
    for (unsigned seed = 1; seed <= 400; ++seed) {
      SCOPED_TRACE("seed " + std::to_string(seed));
      World world(seed);
      const Model model = world.MakeModel();
      site.Host().Transactions().Run([&] { Store(site, model); });
      for (int i = 0; i < 12; ++i)
        Compare(model, world.MakeRequisition(), world.Chance(70) ? 0 : 1 + world.Below(7), tally);
      if (testing::Test::HasFailure()) return;
    }
    // Agreement says something only where each outcome came up often.
    EXPECT_GT(tally.found, 500);
    EXPECT_GT(tally.none, 500);
    EXPECT_GT(tally.failed, 100);
  });
}

}  // namespace

}  // namespace talvex::test
