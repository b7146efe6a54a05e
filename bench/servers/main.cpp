// Posting to a leaf with two ancestors through ODBC, each posting in a transaction of its own:
//   talvex_server_bench talvex|floor COUNT DIRECTORY
// `talvex` posts with the component, `floor` sends the same statements by hand. DIRECTORY is an installation
// on the server, set up by bench/servers/run.py, which compares the two.

#include <sql.h>
#include <sqlext.h>

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "automation/date.h"
#include "host/host.h"
#include "ledger/budget_t.h"
#include "platform/environment.h"

namespace talvex::bench {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kWarmUp = 20;

// Each posting moves the line's percentage to and fro, so that the warning step is read every time.
double AmountOf(int posting) { return posting % 2 == 0 ? 10.0 : -10.0; }

void Require(SQLRETURN code, const char* what) {
  if (SQL_SUCCEEDED(code)) return;
  std::fprintf(stderr, "%s failed\n", what);
  std::abort();
}

// A statement that is prepared once and takes texts.
class Bare {
 public:
  Bare(SQLHDBC connection, std::string text) {
    Require(SQLAllocHandle(SQL_HANDLE_STMT, connection, &handle_), "a statement");
    Require(SQLPrepare(handle_, reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS), text.c_str());
  }

  void Run(std::vector<std::string> values) {
    values_ = std::move(values);
    lengths_.assign(values_.size(), SQL_NTS);
    for (std::size_t i = 0; i < values_.size(); ++i) {
      Require(SQLBindParameter(handle_, static_cast<SQLUSMALLINT>(i + 1), SQL_PARAM_INPUT, SQL_C_CHAR,
                               SQL_VARCHAR, 50, 0, values_[i].data(), 0, &lengths_[i]),
              "a parameter");
    }
    Require(SQLExecute(handle_), "a statement");
  }
  bool Fetch() { return SQL_SUCCEEDED(SQLFetch(handle_)); }
  [[nodiscard]] std::string Text(int column) {
    std::array<char, 256> buffer{};
    SQLLEN length = 0;
    Require(SQLGetData(handle_, static_cast<SQLUSMALLINT>(column), SQL_C_CHAR, buffer.data(), buffer.size(),
                       &length),
            "a text");
    return length == SQL_NULL_DATA ? "" : buffer.data();
  }
  [[nodiscard]] double Number(int column) {
    double number = 0;
    SQLLEN length = 0;
    Require(SQLGetData(handle_, static_cast<SQLUSMALLINT>(column), SQL_C_DOUBLE, &number, 0, &length),
            "a number");
    return length == SQL_NULL_DATA ? 0 : number;
  }
  void Close() { SQLFreeStmt(handle_, SQL_CLOSE); }

 private:
  SQLHSTMT handle_ = nullptr;
  std::vector<std::string> values_;
  std::vector<SQLLEN> lengths_;
};

SQLHDBC Connected(std::string connection_string) {
  SQLHENV environment = nullptr;
  SQLHDBC connection = nullptr;
  SQLAllocHandle(SQL_HANDLE_ENV, nullptr, &environment);
  // ODBC passes numbers as pointers.
  SQLSetEnvAttr(environment, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
  SQLAllocHandle(SQL_HANDLE_DBC, environment, &connection);
  Require(SQLDriverConnect(connection, nullptr, reinterpret_cast<SQLCHAR*>(connection_string.data()), SQL_NTS,
                           nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT),
          "connecting");
  Require(
      SQLSetConnectAttr(connection, SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_OFF), 0),
      "a transaction");
  return connection;
}

double Rounded(double value, double scale) { return std::nearbyint(value * scale) / scale; }

std::string Digits(double value) {
  std::array<char, 40> buffer{};
  std::snprintf(buffer.data(), buffer.size(), "%.17g", value);
  return buffer.data();
}

// What a program does that knows all about this one schema and nothing else.
class HandWritten {
 public:
  explicit HandWritten(const std::string& connection_string) : connection_(Connected(connection_string)) {}

  void Post(double amount) {
    PostTo("LEAF", amount);
    Require(SQLEndTran(SQL_HANDLE_DBC, connection_, SQL_COMMIT), "the commit");
  }

 private:
  void PostTo(const std::string& code, double amount) {
    PostToLine(code, amount);
    std::vector<std::string> parents;
    parents_.Run({code});
    while (parents_.Fetch()) parents.push_back(parents_.Text(1));
    parents_.Close();
    for (const std::string& parent : parents) PostTo(parent, amount);
  }

  void PostToLine(const std::string& code, double amount) {
    budget_.Run({code});
    if (!budget_.Fetch() || budget_.Text(3) != "EUR") std::abort();
    budget_.Close();
    line_.Run({code, kDate, kDate});
    if (!line_.Fetch()) std::abort();
    const std::string id = line_.Text(1);
    std::array<double, 8> cells{};
    for (std::size_t i = 0; i < cells.size(); ++i) cells[i] = line_.Number(static_cast<int>(i) + 5);
    line_.Close();
    decimals_.Run({"EUR"});
    if (!decimals_.Fetch()) std::abort();
    const double used = cells[2] + Rounded(amount, std::pow(10, decimals_.Number(1)));
    decimals_.Close();
    const double left = cells[0] - (cells[1] + used + cells[3] + cells[4] + cells[5]);
    const double percentage = Rounded(left / cells[0], 10000);
    if (percentage != cells[7]) ReadWarning(code);
    update_.Run({Digits(used), Digits(left), Digits(percentage), id, Digits(cells[2]), Digits(cells[6]),
                 Digits(cells[7])});
    update_.Close();
  }

  void ReadWarning(const std::string& code) {
    warning_.Run({code});
    if (!warning_.Fetch()) std::abort();
    warning_.Close();
    switch_.Run({"SendEmailToBudgetHolderForBudgetWarning"});
    if (!switch_.Fetch()) std::abort();
    switch_.Close();
  }

  static constexpr const char* kDate = "2026-03-15T00:00:00";

  SQLHDBC connection_;
  Bare budget_{connection_, "select * from BUDGET where BUDGETCODE=?"};
  Bare line_{connection_,
             "select * from BUDGETLINES where BUDGETCODE=? and STARTDATE<=? AND ENDDATE>=? "
             "ORDER BY ID"};
  Bare decimals_{connection_, "SELECT DECIMALS FROM CURRENCY WHERE CURRENCYCODE=?"};
  Bare warning_{connection_, "SELECT BUDGETWARNING, USERID, CURRENCYCODE FROM BUDGET WHERE BUDGETCODE=?"};
  Bare switch_{connection_, "SELECT PARAMVALUE FROM REQUISITIONPARAMETER WHERE PARAMNAME = ?"};
  Bare update_{connection_,
               "UPDATE BUDGETLINES SET USEDAPPROVEDAMNT=?, AVAILABLEAMNT=?, AVAILABLEPERC=? WHERE ID=? "
               "AND USEDAPPROVEDAMNT=? AND AVAILABLEAMNT=? AND AVAILABLEPERC=?"};
  Bare parents_{connection_, "SELECT PARENTBUDGET FROM BUDGETRELATIONS WHERE CHILDBUDGET=?"};
};

// The seconds that one posting takes.
template <class Post>
double Measured(int count, Post post) {
  for (int i = 0; i < kWarmUp; ++i) post(AmountOf(i));
  const auto start = Clock::now();
  for (int i = 0; i < count; ++i) post(AmountOf(i));
  return std::chrono::duration<double>(Clock::now() - start).count() / count;
}

double Run(std::string_view what, int count, const std::string& directory) {
  const host::Host host({directory, automation::Date::Civil(2026, 3, 16, 10)});
  const platform::Environment::ForThread environment(host.Environment());
  if (what == "floor") {
    HandWritten by_hand(host.Connect()->ConnectionText());
    return Measured(count, [&](double amount) { by_hand.Post(amount); });
  }
  return Measured(count, [&](double amount) {
    host.Transactions().Run([&] {
      std::make_shared<BudgetT>()->PostToBudget("LEAF", automation::Date::Civil(2026, 3, 15), amount, "EUR",
                                                TalvexType::Approved);
    });
  });
}

}  // namespace

}  // namespace talvex::bench

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  std::printf("%.9f\n", talvex::bench::Run(argv[1], std::atoi(argv[2]), argv[3]));
  return 0;
}
