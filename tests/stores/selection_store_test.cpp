// Choosing among very many budgets that match alike, on a real database.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "automation/collection.h"
#include "ledger/budget_t.h"
#include "support/test_installation.h"

namespace talvex::test {

namespace {

// A budget for every line from 1 on, all alike but for their codes, their numbers written with leading zeros.
std::string CodeOf(int number) {
  const std::string digits = std::to_string(number);
  return "B" + std::string(5 - digits.size(), '0') + digits;
}

void InsertRows(const TestInstallation& site, const std::string& into, int first, int last,
                const std::function<std::string(int)>& row) {
  constexpr int kRowsAStatement = 250;
  for (int from = first; from <= last; from += kRowsAStatement) {
    std::string statement = "INSERT INTO " + into + " VALUES ";
    for (int i = from; i <= std::min(last, from + kRowsAStatement - 1); ++i)
      statement += (i == from ? "" : ", ") + row(i);
    site.Sql(statement);
  }
}

// Adds the budgets of those numbers and a line for each, in turn, so that line and budget have the same
// number. They all start on the first of March.
void AddBudgets(const TestInstallation& site, int first, int last) {
  InsertRows(site, "BUDGET (BUDGETCODE, BUDGETTYPE, OFFICEDESCRIPTION, CHARGETYPECODE)", first, last,
             [](int i) { return "('" + CodeOf(i) + "', 1, 'Lyon', 'IT')"; });
  InsertRows(site, "BUDGETLINES (BUDGETCODE, STARTDATE, BUDGETAMNT)", first, last,
             [](int i) { return "('" + CodeOf(i) + "', '2026-03-01T00:00:00', 1)"; });
}

std::string Chosen() {
  auto properties = std::make_shared<automation::Collection>();
  properties->Add("IT", "RequisitionChargeType");
  properties->Add("Lyon", "RequisitionRequisitionerOffice");
  std::string code;
  BudgetT().GetBudget(properties, code, std::nullopt);
  return code;
}

// Which budget is chosen while the lines of the given numbers start on other days than the rest.
std::string ChosenWith(const TestInstallation& site, const std::vector<int>& lines, const std::string& day) {
  const auto start_at = [&](const std::string& start) {
    for (const int line : lines)
      site.Sql("UPDATE BUDGETLINES SET STARTDATE = '" + start +
               "T00:00:00' WHERE ID = " + std::to_string(line));
  };
  start_at(day);
  const std::string chosen = Chosen();
  start_at("2026-03-01");
  return chosen;
}

TEST(StoredSelection, ChoosesTheEarliestLineAndThenTheLeastNumberHoweverManyBudgetsMatch) {
  OnOwnThread([] {
    const TestInstallation site;
    site.Host().Transactions().Run([&] {
      int there = 0;
      for (const int matches : {500, 501, 998, 5000}) {
        SCOPED_TRACE(matches);
        AddBudgets(site, there + 1, matches);
        there = matches;
        const int middle = matches / 2;
        EXPECT_EQ(Chosen(), CodeOf(1));
        EXPECT_EQ(ChosenWith(site, {matches}, "2026-02-28"), CodeOf(matches));
        EXPECT_EQ(ChosenWith(site, {matches, middle}, "2026-02-28"), CodeOf(middle));
        EXPECT_EQ(ChosenWith(site, {1, 2}, "2026-03-17"), CodeOf(3)) << "lines that have not started";
      }
    });
  });
}

TEST(StoredSelection, ATieGoesToTheLeastNumberAndNotToTheFirstCode) {
  OnOwnThread([] {
    const TestInstallation site;
    AddBudgets(site, 1, 3);
    // The line with the least number is that of the last budget.
    site.Sql("UPDATE BUDGETLINES SET BUDGETCODE = 'X' WHERE ID = 1");
    site.Sql("UPDATE BUDGETLINES SET BUDGETCODE = 'B00001' WHERE ID = 3");
    site.Sql("UPDATE BUDGETLINES SET BUDGETCODE = 'B00003' WHERE ID = 1");
    EXPECT_EQ(Chosen(), "B00003");
  });
}

TEST(StoredSelection, OfManyBudgetsWithoutALineInForceNoneIsChosen) {
  OnOwnThread([] {
    const TestInstallation site;
    AddBudgets(site, 1, 501);
    site.Sql("UPDATE BUDGETLINES SET ENDDATE = '2026-03-10T00:00:00'");
    EXPECT_EQ(Chosen(), "");
  });
}

}  // namespace

}  // namespace talvex::test
