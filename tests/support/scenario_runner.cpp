#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <optional>
#include <sstream>
#include <stdexcept>

#include "automation/conversions.h"
#include "automation/text.h"
#include "automation/transaction_context.h"
#include "platform/database/literals.h"
#include "support/scenario.h"
#include "support/test_installation.h"

namespace talvex::test {

namespace {

using automation::Date;
using automation::Variant;
using platform::database::TextLiteral;

std::string Literal(const std::string& value) {
  if (value == "null" || automation::ParseNumber(value)) return value;
  return TextLiteral(value);
}

std::string IsoLiteral(const std::string& date) { return TextLiteral(automation::ToDate(date).ToIso()); }

std::string Joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const auto& line : lines) text += line + "\n";
  return text;
}

// The text with its line ends as line breaks, blanks at line ends left out, for comparing with a script's
// lines.
std::string AsLines(const std::string& text) {
  std::string lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) line.pop_back();
    const std::size_t first = line.find_first_not_of(' ');
    if (first != std::string::npos) lines += line.substr(first) + "\n";
  }
  return lines;
}

class Runner {
 public:
  explicit Runner(const Scenario& scenario) : scenario_(scenario) {}

  void Run() {
    std::size_t next = 0;
    std::string now = "2026-03-16T10:00:00";
    if (!scenario_.commands.empty() && scenario_.commands[0].verb == "now")
      now = scenario_.commands[next++].rest;
    installation_.emplace(false, now);
    for (; next < scenario_.commands.size(); ++next) Execute(scenario_.commands[next]);
    if (transaction_ != nullptr) ADD_FAILURE() << "the scenario leaves a transaction open";
  }

 private:
  using Verb = void (Runner::*)(const ScenarioCommand&);

  void Execute(const ScenarioCommand& command) {
    static const std::map<std::string, Verb> kVerbs = {
        {"user", &Runner::User},         {"currency", &Runner::CurrencyRow},
        {"budget", &Runner::Budget},     {"line", &Runner::Line},
        {"under", &Runner::Under},       {"warnings", &Runner::Warnings},
        {"sql", &Runner::Sql},           {"begin", &Runner::Begin},
        {"end", &Runner::End},           {"rollback", &Runner::Rollback},
        {"call", &Runner::Call},         {"rows", &Runner::Rows},
        {"mails", &Runner::Mails},       {"log", &Runner::Log},
        {"snapshot", &Runner::Snapshot}, {"unchanged", &Runner::Unchanged}};
    const std::string where = scenario_.file + ":" + std::to_string(command.line);
    SCOPED_TRACE(where);
    const auto verb = kVerbs.find(command.verb);
    if (verb == kVerbs.end()) throw std::runtime_error(where + ": unknown command " + command.verb);
    try {
      (this->*verb->second)(command);
    } catch (const std::exception& failure) {
      throw std::runtime_error(where + ": " + failure.what());
    }
  }

  void Insert(const std::string& table, const std::vector<std::pair<std::string, std::string>>& row) {
    std::string columns;
    std::string values;
    for (const auto& [column, literal] : row) {
      columns += (columns.empty() ? "" : ", ") + column;
      values += (values.empty() ? "" : ", ") + literal;
    }
    installation_->Sql("INSERT INTO " + table + " (" + columns + ") VALUES (" + values + ")");
  }

  // Adds "COLUMN=value" words to a row, in place of what it has for that column.
  static void AddColumns(const std::vector<std::string>& words, std::size_t from,
                         std::vector<std::pair<std::string, std::string>>& row) {
    for (std::size_t i = from; i < words.size(); ++i) {
      const std::size_t equals = words[i].find('=');
      if (equals == std::string::npos) throw std::runtime_error("COLUMN=value is wanted, not " + words[i]);
      const std::string column = words[i].substr(0, equals);
      std::erase_if(row, [&](const auto& cell) { return cell.first == column; });
      row.emplace_back(column, Literal(words[i].substr(equals + 1)));
    }
  }

  void User(const ScenarioCommand& command) {
    const auto words = Words(command.rest);
    Insert("SUITEUSER", {{"USERID", TextLiteral(words.at(0))},
                         {"FULLNAME", TextLiteral(words[0])},
                         {"EMAIL", TextLiteral(words[0] + "@example.com")},
                         {"LOCALEID", words.at(1)}});
  }

  void CurrencyRow(const ScenarioCommand& command) {
    const auto words = Words(command.rest);
    Insert("CURRENCY", {{"CURRENCYCODE", TextLiteral(words.at(0))}, {"DECIMALS", words.at(1)}});
    if (words.size() < 3) return;
    Insert("EXCHANGERATE", {{"CURRENCYCODE", TextLiteral(words[0])},
                            {"VALIDFROM", IsoLiteral("2020-01-01")},
                            {"RATE", words[2]}});
  }

  void Budget(const ScenarioCommand& command) {
    const auto words = Words(command.rest);
    std::vector<std::pair<std::string, std::string>> row = {
        {"BUDGETCODE", TextLiteral(words.at(0))}, {"BUDGETTYPE", "1"}, {"CURRENCYCODE", "'EUR'"}};
    AddColumns(words, 1, row);
    Insert("BUDGET", row);
  }

  void Line(const ScenarioCommand& command) {
    const auto words = Words(command.rest);
    const std::string period = words.at(1);
    const std::size_t dots = period.find("..");
    const std::string last = period.substr(dots + 2);
    std::vector<std::pair<std::string, std::string>> row = {
        {"BUDGETCODE", TextLiteral(words[0])},
        {"STARTDATE", IsoLiteral(period.substr(0, dots))},
        {"ENDDATE", last.empty() ? "null" : IsoLiteral(last)},
        {"BUDGETAMNT", words.at(2)},
        {"AVAILABLEAMNT", words[2]},
        {"AVAILABLEPERC", "1"}};
    AddColumns(words, 3, row);
    Insert("BUDGETLINES", row);
  }

  void Under(const ScenarioCommand& command) {
    const auto words = Words(command.rest);
    for (std::size_t i = 1; i < words.size(); ++i) {
      Insert("BUDGETRELATIONS",
             {{"PARENTBUDGET", TextLiteral(words[0])}, {"CHILDBUDGET", TextLiteral(words[i])}});
    }
  }

  void Warnings(const ScenarioCommand& command) {
    Insert("REQUISITIONPARAMETER", {{"PARAMNAME", "'SendEmailToBudgetHolderForBudgetWarning'"},
                                    {"PARAMVALUE", command.rest == "on" ? "'True'" : "'False'"}});
  }

  void Sql(const ScenarioCommand& command) { installation_->Sql(command.rest); }

  void Begin(const ScenarioCommand& /*command*/) {
    transaction_ = installation_->Host().Transactions().Begin();
  }

  void End(const ScenarioCommand& command) {
    const bool committed = transaction_->Commit();
    transaction_.reset();
    EXPECT_EQ(committed ? "committed" : "aborted", command.rest);
  }

  void Rollback(const ScenarioCommand& /*command*/) {
    transaction_->Rollback();
    transaction_.reset();
  }

  void Call(const ScenarioCommand& command) {
    if (command.expected.empty())
      throw std::runtime_error("a call must say what it expects: -> VALUE or -> error NUMBER");
    std::istringstream line(command.rest);
    std::string class_name;
    std::string method;
    std::string values_text;
    line >> class_name >> method;
    std::getline(line, values_text);
    std::vector<Variant> values = ReadValues(values_text);
    std::vector<Variant*> arguments;
    for (Variant& value : values) arguments.push_back(&value);

    const auto object = platform::Environment::Current().classes->Create(class_name);
    try {
      const Variant result = object->Invoke(method, arguments);
      EXPECT_EQ("-> " + Shown(result), command.expected[0]);
      for (std::size_t i = 1; i < command.expected.size(); ++i)
        EXPECT_EQ(LineAbout(command.expected[i], *object, method, values), command.expected[i]);
    } catch (const automation::Error& error) {
      CompareError(command, error.State());
    }
  }

  // What should have been expected: "out NAME VALUE" of an argument, "has NAME VALUE" of a property.
  static std::string LineAbout(const std::string& expected, automation::Object& object,
                               const std::string& method, const std::vector<Variant>& values) {
    std::istringstream line(expected);
    std::string kind;
    std::string name;
    line >> kind >> name;
    if (kind == "has") return "has " + name + " " + Shown(object.Get(name));
    const auto& parameters = object.Class().FindMethod(method)->parameters;
    std::size_t index = 0;
    while (index < values.size() && parameters[index].name != name) ++index;
    if (kind != "out" || index == values.size())
      throw std::runtime_error("no argument that could be: " + expected);
    return "out " + name + " " + Shown(values[index]);
  }

  static void CompareError(const ScenarioCommand& command, const automation::ErrorState& error) {
    EXPECT_EQ("-> error " + std::to_string(error.number), command.expected[0]) << error.description;
    std::vector<std::string> description;
    for (std::size_t i = 1; i < command.expected.size(); ++i) {
      const std::string& line = command.expected[i];
      if (line.starts_with("source ")) {
        EXPECT_EQ(error.source, line.substr(7));
      } else {
        description.push_back(line.starts_with("description ") ? line.substr(12) : line);
      }
    }
    if (!description.empty()) {
      EXPECT_EQ(AsLines(error.description), AsLines(Joined(description)));
    }
  }

  void Rows(const ScenarioCommand& command) {
    EXPECT_EQ(Joined(installation_->Rows(command.rest)), Joined(command.expected)) << command.rest;
  }

  void Mails(const ScenarioCommand& command) {
    const auto mails = installation_->Mails();
    EXPECT_EQ(std::to_string(mails.size()), command.rest);
    if (command.expected.empty() || mails.empty()) return;
    const Mail& last = mails.back();
    EXPECT_EQ(AsLines("To: " + last.to + "\nSubject: " + last.subject + "\n" + last.body),
              Joined(command.expected));
  }

  void Log(const ScenarioCommand& command) {
    EXPECT_EQ(std::to_string(installation_->LogLines().size()), command.rest);
  }

  void Snapshot(const ScenarioCommand& /*command*/) { snapshot_ = installation_->Snapshot(); }
  void Unchanged(const ScenarioCommand& /*command*/) {
    ASSERT_FALSE(snapshot_.empty()) << "nothing was remembered";
    EXPECT_EQ(installation_->Snapshot(), snapshot_);
  }

  const Scenario& scenario_;
  std::optional<TestInstallation> installation_;
  std::unique_ptr<automation::TransactionContext> transaction_;
  std::string snapshot_;
};

}  // namespace

void RunScenario(const Scenario& scenario) {
  OnOwnThread([&] { Runner(scenario).Run(); });
}

}  // namespace talvex::test
