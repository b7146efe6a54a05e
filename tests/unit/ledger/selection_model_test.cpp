// Selection against a model that knows nothing of filters and queries: it walks plain rows in plain loops, by
// the rules as a purchaser would tell them.
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>

#include "automation/text.h"
#include "ledger/budget_t.h"
#include "platform/database/literals.h"
#include "support/test_installation.h"

namespace talvex::test {

namespace {

using automation::Collection;
using Text = std::optional<std::string>;

constexpr int kToday = 75;  // 16 March, the installation's day, counted from 1 January 2026.

struct ModelLine {
  int first = 0;
  std::optional<int> last;
};

struct ModelBudget {
  std::string code;
  bool standard = true;
  Text office;
  Text charge_type;
  Text dimensions[3];
  std::vector<ModelLine> lines;
};

struct ModelTypes {
  Text office;
  Text kinds[3];
};

struct World {
  std::vector<ModelBudget> budgets;
  std::vector<ModelTypes> types;
};

struct Requisition {
  std::string office;
  std::string charge_type;
  std::string properties[3];
};

bool Same(const Text& cell, const Text& wanted) {
  if (!cell || !wanted) return !cell && !wanted;
  return automation::SameFolded(*cell, *wanted);
}

bool InForce(const ModelLine& line) { return line.first <= kToday && (!line.last || *line.last >= kToday); }

std::optional<int> CurrentStart(const ModelBudget& budget) {
  std::optional<int> earliest;
  for (const ModelLine& line : budget.lines) {
    if (InForce(line) && (!earliest || line.first < *earliest)) earliest = line.first;
  }
  return earliest;
}

// What the requisition says for each dimension, "" where its office asks for nothing.
std::vector<std::string> WantedDimensions(const World& world, const Requisition& requisition) {
  const ModelTypes* own = nullptr;
  const ModelTypes* common = nullptr;
  for (const ModelTypes& row : world.types) {
    if (row.office && Same(row.office, requisition.office)) own = &row;
    if (!row.office) common = &row;
  }
  const ModelTypes* const chosen = own != nullptr ? own : common;
  std::vector<std::string> wanted(3);
  if (chosen == nullptr) return wanted;
  for (int i = 0; i < 3; ++i) {
    const std::string kind = chosen->kinds[i].value_or("");
    for (int k = 0; k < 3; ++k) {
      if (kind == "Kind" + std::to_string(k)) wanted[static_cast<std::size_t>(i)] = requisition.properties[k];
    }
  }
  return wanted;
}

// The wanted dimension values, from all of them to none of them: the last dimension is given up first.
std::vector<std::vector<std::string>> Attempts(const std::vector<std::string>& wanted) {
  std::vector<std::vector<std::string>> attempts;
  const auto keep = [](const std::string& value) {
    return value.empty() ? std::vector<std::string>{""} : std::vector<std::string>{value, ""};
  };
  for (const auto& first : keep(wanted[0])) {
    for (const auto& second : keep(wanted[1])) {
      for (const auto& third : keep(wanted[2])) attempts.push_back({first, second, third});
    }
  }
  return attempts;
}

std::vector<const ModelBudget*> Matching(const World& world, const Text& office, const Text& charge_type,
                                         const std::vector<std::string>& dimensions) {
  std::vector<const ModelBudget*> matching;
  for (const ModelBudget& budget : world.budgets) {
    bool fits = budget.standard && Same(budget.office, office) && Same(budget.charge_type, charge_type);
    for (std::size_t i = 0; i < 3; ++i) fits = fits && Same(budget.dimensions[i], dimensions[i]);
    if (fits) matching.push_back(&budget);
  }
  return matching;
}

std::string ChosenByModel(const World& world, const Requisition& requisition) {
  const std::pair<std::string, std::string> levels[] = {{requisition.office, requisition.charge_type},
                                                        {requisition.office, ""},
                                                        {"", requisition.charge_type},
                                                        {"", ""}};
  for (const auto& [office, charge_type] : levels) {
    for (const auto& dimensions : Attempts(WantedDimensions(world, requisition))) {
      const auto matching = Matching(world, office, charge_type, dimensions);
      const ModelBudget* best = nullptr;
      for (const ModelBudget* budget : matching) {
        if (CurrentStart(*budget) && (best == nullptr || *CurrentStart(*budget) < *CurrentStart(*best)))
          best = budget;
      }
      if (best != nullptr) return best->code;
      if (matching.size() > 1) return "";
    }
  }
  return "";
}

std::vector<std::string> RelevantByModel(const World& world, const Requisition& requisition) {
  const std::pair<Text, Text> levels[] = {{requisition.office, requisition.charge_type},
                                          {requisition.office, std::nullopt},
                                          {std::nullopt, requisition.charge_type},
                                          {std::nullopt, std::nullopt}};
  std::vector<std::string> codes;
  for (const auto& [office, charge_type] : levels) {
    for (const auto& dimensions : Attempts(WantedDimensions(world, requisition))) {
      for (const ModelBudget* budget : Matching(world, office, charge_type, dimensions)) {
        if (CurrentStart(*budget)) codes.push_back(budget->code);
      }
    }
  }
  return codes;
}

class Dice {
 public:
  explicit Dice(unsigned seed) : random_(seed) {}
  int Below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }
  std::string OneOf(const std::vector<std::string>& values) {
    return values[static_cast<std::size_t>(Below(static_cast<int>(values.size())))];
  }
  Text OneOfOrNull(const std::vector<std::string>& values) {
    return Below(5) == 0 ? Text() : Text(OneOf(values));
  }

 private:
  std::mt19937 random_;
};

// No apostrophe: the filter for the office's dimension types takes none.
const std::vector<std::string> kOffices = {"Lyon", "50% off", "[a]", ""};
const std::vector<std::string> kChargeTypes = {"IT", "it's 5%", "[%]x", ""};
const std::vector<std::string> kValues = {"x", "Y'%", "é*", ""};

World RandomWorld(Dice& dice) {
  World world;
  int start = -400;
  const int budgets = dice.Below(40);
  for (int i = 0; i < budgets; ++i) {
    ModelBudget budget{"B" + std::to_string(100 + i),
                       dice.Below(8) != 0,
                       dice.OneOfOrNull(kOffices),
                       dice.OneOfOrNull(kChargeTypes),
                       {},
                       {}};
    for (Text& dimension : budget.dimensions) {
      if (dice.Below(3) != 0) dimension = "";
      if (dice.Below(3) == 0) dimension = dice.OneOfOrNull(kValues);
    }
    for (int lines = dice.Below(3); lines > 0; --lines) {
      // No two lines begin on the same day: of those the database's order would decide.
      start += 1 + dice.Below(20);
      budget.lines.push_back(
          {start, dice.Below(3) == 0 ? std::nullopt : std::optional(start + 200 + dice.Below(700))});
    }
    world.budgets.push_back(budget);
  }
  std::vector<std::string> kinds = {"Kind0", "Kind1", "Kind2", ""};
  for (const std::string& office : kOffices) {
    if (dice.Below(3) != 0) continue;
    ModelTypes row{office.empty() ? Text() : Text(office), {}};
    for (Text& kind : row.kinds) kind = dice.OneOfOrNull(kinds);
    world.types.push_back(row);
  }
  return world;
}

std::string Literal(const Text& text) {
  return text ? platform::database::TextLiteral(*text) : std::string("null");
}

std::string DayLiteral(int day) {
  constexpr std::int64_t kSecondsOfDay = 86400;
  const std::int64_t first = automation::Date::Civil(2026, 1, 1).Seconds();
  return "'" + automation::Date::FromSeconds(first + (day - 1) * kSecondsOfDay).ToIso() + "'";
}

void Store(const TestInstallation& site, const World& world) {
  for (const auto* table : {"BUDGET", "BUDGETLINES", "BUDGETDIMENSIONTYPE"})
    site.Sql(std::string("DELETE FROM ") + table);
  for (const ModelBudget& budget : world.budgets) {
    site.Sql(
        "INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, OFFICEDESCRIPTION, CHARGETYPECODE, "
        "BUDGETDIMENSION1, BUDGETDIMENSION2, BUDGETDIMENSION3) VALUES ('" +
        budget.code + "', " + (budget.standard ? "1" : "2") + ", " + Literal(budget.office) + ", " +
        Literal(budget.charge_type) + ", " + Literal(budget.dimensions[0]) + ", " +
        Literal(budget.dimensions[1]) + ", " + Literal(budget.dimensions[2]) + ")");
    for (const ModelLine& line : budget.lines) {
      site.Sql("INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, ENDDATE) VALUES ('" + budget.code + "', " +
               DayLiteral(line.first) + ", " + (line.last ? DayLiteral(*line.last) : "null") + ")");
    }
  }
  for (const ModelTypes& row : world.types) {
    site.Sql("INSERT INTO BUDGETDIMENSIONTYPE VALUES (" + Literal(row.office) + ", " + Literal(row.kinds[0]) +
             ", " + Literal(row.kinds[1]) + ", " + Literal(row.kinds[2]) + ")");
  }
}

struct Counts {
  int found = 0;
  int relevant = 0;
  int several = 0;
};

void Compare(const World& world, const Requisition& requisition, unsigned seed, Counts& counts) {
  auto properties = std::make_shared<Collection>();
  properties->Add(requisition.charge_type, "RequisitionChargeType");
  properties->Add(requisition.office, "RequisitionRequisitionerOffice");
  for (int i = 0; i < 3; ++i) properties->Add(requisition.properties[i], "Kind" + std::to_string(i));
  BudgetT ledger;
  std::string chosen;
  ledger.GetBudget(properties, chosen, std::nullopt);
  EXPECT_EQ(chosen, ChosenByModel(world, requisition)) << "seed " << seed;

  std::string office = requisition.office;
  std::string charge_type = requisition.charge_type;
  std::vector<std::string> relevant;
  const auto budgets = ledger.GetRelevantBudget(properties, office, charge_type);
  for (const auto& [code, item] : budgets->Entries()) relevant.push_back(code);
  EXPECT_EQ(relevant, RelevantByModel(world, requisition)) << "seed " << seed;
  counts.found += chosen.empty() ? 0 : 1;
  counts.relevant += relevant.empty() ? 0 : 1;
  counts.several += relevant.size() > 1 ? 1 : 0;
}

TEST(Selection, AgreesWithAModelOnThousandsOfRandomRequisitions) {
  constexpr unsigned kWorlds = 100;
  constexpr int kRequisitions = 30;
  OnOwnThread([] {
    TestInstallation site;
    Counts counts;
    for (unsigned seed = 0; seed < kWorlds; ++seed) {
      Dice dice(seed);
      const World world = RandomWorld(dice);
      site.Host().Transactions().Run([&] {
        Store(site, world);
        for (int i = 0; i < kRequisitions; ++i) {
          Requisition requisition{dice.OneOf(kOffices), dice.OneOf(kChargeTypes), {}};
          for (std::string& property : requisition.properties) property = dice.OneOf(kValues);
          Compare(world, requisition, seed, counts);
        }
      });
    }
    // The worlds are such that both answers are common.
    EXPECT_GT(counts.found, 300);
    EXPECT_GT(counts.relevant, 300);
    EXPECT_GT(counts.several, 50);
  });
}

}  // namespace

}  // namespace talvex::test
