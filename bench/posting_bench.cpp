// Posting to a leaf with two ancestors, in the currency of all three.

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <string>

#include "automation/date.h"
#include "installation.h"
#include "ledger/budget_t.h"
#include "platform/environment.h"

namespace talvex::bench {

namespace {

constexpr int kPostingsATransaction = 1000;

// Each posting moves the line's percentage by one step of its four decimals, to and fro, so that the warning
// step and the mail switch are read every time and no mail is ever due.
constexpr const char* kCompany =
    "INSERT INTO CURRENCY (CURRENCYCODE, DECIMALS) VALUES ('EUR', 2);"
    "INSERT INTO REQUISITIONPARAMETER (PARAMNAME, PARAMVALUE)"
    " VALUES ('SendEmailToBudgetHolderForBudgetWarning', 'True');"
    "INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE, USERID, BUDGETWARNING)"
    " VALUES ('LEAF', 1, 'EUR', 'anna', 50), ('MIDDLE', 2, 'EUR', 'anna', 50), ('TOP', 2, 'EUR', 'anna', 50);"
    "INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT, AVAILABLEAMNT, AVAILABLEPERC)"
    " VALUES ('LEAF', '2026-01-01T00:00:00', '2026-12-31T00:00:00', 100000, 100000, 1),"
    " ('MIDDLE', '2026-01-01T00:00:00', '2026-12-31T00:00:00', 100000, 100000, 1),"
    " ('TOP', '2026-01-01T00:00:00', '2026-12-31T00:00:00', 100000, 100000, 1);"
    "INSERT INTO BUDGETRELATIONS (PARENTBUDGET, CHILDBUDGET) VALUES ('MIDDLE', 'LEAF'), ('TOP', 'MIDDLE');";

// One for all benchmarks of this file: the component remembers, for each thread, which database it works on.
const Installation& Company() {
  static const auto installation = [] {
    auto made = std::make_unique<Installation>();
    made->Script(kCompany);
    return made;
  }();
  return *installation;
}

double AmountOf(int posting) { return posting % 2 == 0 ? 10.0 : -10.0; }

void PostWithTalvex(benchmark::State& state, int postings_a_transaction) {
  const platform::Environment::ForThread environment(Company().Host().Environment());
  const automation::Date date = automation::Date::Civil(2026, 3, 15);
  for (auto _ : state) {
    Company().Host().Transactions().Run([&] {
      for (int i = 0; i < postings_a_transaction; ++i) {
        if (std::make_shared<BudgetT>()->PostToBudget("LEAF", date, AmountOf(i), "EUR",
                                                      TalvexType::Approved) != 1) {
          std::abort();
        }
      }
    });
  }
  state.SetItemsProcessed(state.iterations() * postings_a_transaction);
}

// The same reads and writes by hand: what a program does that knows all about this one schema and nothing
// else.
class HandWrittenPosting {
 public:
  explicit HandWrittenPosting(const std::string& path)
      : database_(path),
        budget_(database_.Prepare("select * from BUDGET where BUDGETCODE=?")),
        line_(database_.Prepare(
            "select * from BUDGETLINES where BUDGETCODE=? and STARTDATE<=? AND ENDDATE>=?")),
        decimals_(database_.Prepare("SELECT DECIMALS FROM CURRENCY WHERE CURRENCYCODE=?")),
        warning_(
            database_.Prepare("SELECT BUDGETWARNING, USERID, CURRENCYCODE FROM BUDGET WHERE BUDGETCODE=?")),
        mail_switch_(database_.Prepare("SELECT PARAMVALUE FROM REQUISITIONPARAMETER WHERE PARAMNAME = "
                                       "'SendEmailToBudgetHolderForBudgetWarning'")),
        update_(database_.Prepare(
            "UPDATE BUDGETLINES SET USEDAPPROVEDAMNT=?, AVAILABLEAMNT=?, AVAILABLEPERC=? WHERE ID=? "
            "AND USEDAPPROVEDAMNT IS ? AND AVAILABLEAMNT IS ? AND AVAILABLEPERC IS ?")),
        parents_(database_.Prepare("SELECT PARENTBUDGET FROM BUDGETRELATIONS WHERE CHILDBUDGET=?")) {}

  void Begin() { database_.Run("BEGIN IMMEDIATE"); }
  void Commit() { database_.Run("COMMIT"); }

  int Post(const std::string& code, const std::string& date, double amount, const std::string& currency) {
    const int id = PostToLine(code, date, amount, currency);
    std::vector<std::string> parents;
    Bind(parents_, 1, code);
    while (sqlite3_step(parents_) == SQLITE_ROW) parents.push_back(Text(parents_, 0));
    sqlite3_reset(parents_);
    for (const std::string& parent : parents) Post(parent, date, amount, currency);
    return id;
  }

 private:
  static void Bind(sqlite3_stmt* statement, int index, const std::string& text) {
    sqlite3_bind_text(statement, index, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
  }
  static std::string Text(sqlite3_stmt* statement, int column) {
    const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    return text == nullptr ? "" : text;
  }
  static void BindOld(sqlite3_stmt* statement, int index, sqlite3_stmt* row, int column) {
    sqlite3_bind_value(statement, index, sqlite3_column_value(row, column));
  }
  static void Expect(int status, int wanted) {
    if (status != wanted) std::abort();
  }
  static double RoundTo(double value, double scale) { return std::nearbyint(value * scale) / scale; }

  int PostToLine(const std::string& code, const std::string& date, double amount,
                 const std::string& currency) {
    Bind(budget_, 1, code);
    Expect(sqlite3_step(budget_), SQLITE_ROW);
    const std::string budget_currency = Text(budget_, 2);
    sqlite3_reset(budget_);
    if (budget_currency != currency) std::abort();

    Bind(line_, 1, code);
    Bind(line_, 2, date);
    Bind(line_, 3, date);
    Expect(sqlite3_step(line_), SQLITE_ROW);
    const int id = sqlite3_column_int(line_, 0);
    const double granted = sqlite3_column_double(line_, 4);
    std::array<double, 5> used{};
    for (int i = 0; i < 5; ++i) used[static_cast<std::size_t>(i)] = sqlite3_column_double(line_, 5 + i);
    const double percentage_before = sqlite3_column_double(line_, 11);

    Bind(decimals_, 1, currency);
    Expect(sqlite3_step(decimals_), SQLITE_ROW);
    const int decimals = sqlite3_column_int(decimals_, 0);
    sqlite3_reset(decimals_);
    used[1] += RoundTo(amount, std::pow(10, decimals));

    const double left = granted - (used[0] + used[1] + used[2] + used[3] + used[4]);
    const double percentage = RoundTo(left / granted, 10000);
    if (percentage != percentage_before) ReadWarning(code);

    sqlite3_bind_double(update_, 1, used[1]);
    sqlite3_bind_double(update_, 2, left);
    sqlite3_bind_double(update_, 3, percentage);
    sqlite3_bind_int(update_, 4, id);
    BindOld(update_, 5, line_, 6);
    BindOld(update_, 6, line_, 10);
    BindOld(update_, 7, line_, 11);
    sqlite3_reset(line_);
    Expect(sqlite3_step(update_), SQLITE_DONE);
    sqlite3_reset(update_);
    return id;
  }

  void ReadWarning(const std::string& code) {
    Bind(warning_, 1, code);
    Expect(sqlite3_step(warning_), SQLITE_ROW);
    benchmark::DoNotOptimize(sqlite3_column_double(warning_, 0));
    benchmark::DoNotOptimize(Text(warning_, 1));
    sqlite3_reset(warning_);
    Expect(sqlite3_step(mail_switch_), SQLITE_ROW);
    benchmark::DoNotOptimize(Text(mail_switch_, 0));
    sqlite3_reset(mail_switch_);
  }

  BareDatabase database_;
  sqlite3_stmt* budget_;
  sqlite3_stmt* line_;
  sqlite3_stmt* decimals_;
  sqlite3_stmt* warning_;
  sqlite3_stmt* mail_switch_;
  sqlite3_stmt* update_;
  sqlite3_stmt* parents_;
};

void PostByHand(benchmark::State& state, int postings_a_transaction) {
  HandWrittenPosting posting(Company().DatabasePath());
  const std::string date = "2026-03-15T00:00:00";
  for (auto _ : state) {
    posting.Begin();
    for (int i = 0; i < postings_a_transaction; ++i) {
      if (posting.Post("LEAF", date, AmountOf(i), "EUR") != 1) std::abort();
    }
    posting.Commit();
  }
  state.SetItemsProcessed(state.iterations() * postings_a_transaction);
}

// One transaction for a thousand postings, and a transaction for each.
BENCHMARK_CAPTURE(PostByHand, posting_1000, kPostingsATransaction)->Name("posting_in_one_transaction/floor");
BENCHMARK_CAPTURE(PostWithTalvex, posting_1000, kPostingsATransaction)
    ->Name("posting_in_one_transaction/talvex");
BENCHMARK_CAPTURE(PostByHand, posting_1, 1)->Name("posting_with_a_commit_each/floor");
BENCHMARK_CAPTURE(PostWithTalvex, posting_1, 1)->Name("posting_with_a_commit_each/talvex");

}  // namespace

}  // namespace talvex::bench
