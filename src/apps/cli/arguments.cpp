#include "apps/cli/arguments.h"

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <memory>
#include <utility>

#include "apps/cli/commands.h"
#include "apps/cli/layout.h"
#include "apps/version.h"
#include "platform/database/connection_string.h"

namespace talvex::apps {

namespace {

constexpr const char* kDescription =
    "Talvex keeps budgets: amounts posted to them, what is available, and their hierarchy.";
constexpr const char* kFooter =
    "Exit status: 0 done, 1 the answer is no, 2 the arguments make no sense, 3 failed.\n"
    "The variable TALVEX_CONFIG names the installation when --config does not.\n"
    "A value that begins with a minus sign and is no number stands after \"--\".";

struct Globals {
  std::string directory;
  std::string now;
  std::string user;
  bool json = false;
};

// What is wrong with the arguments quotes them, a connection string in the wrong place with its password.
std::string WithoutSecrets(const std::string& message) {
  const bool quotes_one = message.find('=') != std::string::npos && message.find(';') != std::string::npos;
  return quotes_one ? platform::database::ConnectionString(message).Shown() : message;
}

// Builds the grammar. Options that all commands share are options of each of them as well, so that they may
// stand on either side of the command's name; the other way, commands looking among the options of the
// program, would take a budget called "show" for the command.
class Grammar {
 public:
  Grammar() {
    app_.require_subcommand(0, 1);  // That there is none is told below, in words of our own.
    app_.set_help_flag("-h,--help", "Print this help and exit");
    app_.set_version_flag("--version", "talvex " + std::string(kVersion));
    app_.get_formatter()->column_width(kColumn);
    app_.footer(kFooter);
    AddGlobals(app_);
    AddInit();
    AddPost();
    AddCheck();
    AddSelect();
    AddBudgets();
    AddAccount();
    AddShowAndTree();
    AddLoops();
    AddCharge();
    AddExchange();
    AddVerify();
    AddDescribe();
    AddCall();
    AddRpc();
  }

  ParsedArguments Parse(int argc, const char* const* argv) {
    ParsedArguments parsed;
    try {
      app_.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
      parsed.help = app_.help();
      return parsed;
    } catch (const CLI::CallForVersion&) {
      parsed.help = app_.version() + "\n";
      return parsed;
    } catch (const CLI::ParseError& error) {
      throw UsageError(Shortened(WithoutSecrets(error.what()), kLongestMessage));
    }
    if (!chosen_) throw UsageError("say which command is to be run");
    parsed.options = Options();
    parsed.command = std::move(chosen_);
    return parsed;
  }

 private:
  static constexpr std::size_t kColumn = 26;
  static constexpr std::size_t kLongestMessage = 200;

  void AddGlobals(CLI::App& app) {
    app.add_option("--config", globals_.directory, "The directory of the installation")->type_name("DIR");
    app.add_option("--now", globals_.now, "Work as if it were then: 2026-01-05, or 2026-01-05T09:07:03")
        ->type_name("TIME");
    app.add_option("--user", globals_.user,
                   "Whose language titles of amounts, exports and messages of imports are in")
        ->type_name("USER");
    app.add_flag("--json", globals_.json, "Answer in JSON");
  }

  // A command with arguments of type Arguments, which live as long as the command can be run.
  template <class Arguments>
  std::pair<CLI::App*, std::shared_ptr<Arguments>> Add(const char* name, const char* description,
                                                       ExitStatus (*run)(Session&, const Arguments&)) {
    return AddTo(app_, name, description, run);
  }

  template <class Arguments>
  std::pair<CLI::App*, std::shared_ptr<Arguments>> AddTo(CLI::App& parent, const char* name,
                                                         const char* description,
                                                         ExitStatus (*run)(Session&, const Arguments&)) {
    CLI::App* const command = parent.add_subcommand(name, description);
    AddGlobals(*command);
    auto arguments = std::make_shared<Arguments>();
    command->callback([this, arguments, run] {
      chosen_ = [arguments, run](Session& session) { return run(session, *arguments); };
    });
    return {command, arguments};
  }

  void AddPlain(const char* name, const char* description, ExitStatus (*run)(Session&)) {
    AddPlainTo(app_, name, description, run);
  }

  void AddPlainTo(CLI::App& parent, const char* name, const char* description, ExitStatus (*run)(Session&)) {
    CLI::App* const command = parent.add_subcommand(name, description);
    AddGlobals(*command);
    command->callback([this, run] { chosen_ = run; });
  }

  void AddInit() {
    const auto [command, arguments] =
        Add("init", "Make an installation in an empty or new directory", &RunInit);
    Positional(*command, "DIR", arguments->directory, "The directory")->required();
    command->add_flag("--sample", arguments->sample, "With a small sample company");
    auto* const database = command->add_option(
        "--database", arguments->database,
        "The ODBC connection string of a database server; an embedded database when left out");
    database->type_name("STRING");
    command
        ->add_option("--database-file", arguments->database_file,
                     "A file with the connection string, which other users could read among the arguments; - "
                     "for standard input")
        ->type_name("FILE")
        ->excludes(database);
  }

  void AddPost() {
    const auto [command, arguments] =
        Add("post", "Post an amount to a budget and all budgets above it", &RunPost);
    Positional(*command, "CODE", arguments->code, "The budget")->required();
    Positional(*command, "AMOUNT", arguments->amount, "A negative one takes back")->required();
    Positional(*command, "CURRENCY", arguments->currency, "The currency of the amount")->required();
    command
        ->add_option("--type", arguments->type, "Approved, NotYetApproved, send, Closed, Received, or 1 to 5")
        ->type_name("TYPE")
        ->required();
    command->add_option("--date", arguments->date, "The day of the posting, 2026-03-15; today when left out")
        ->type_name("DAY");
  }

  void AddCheck() {
    const auto [command, arguments] = Add("check", "Ask who must approve a new amount, and why", &RunCheck);
    Positional(*command, "CODE", arguments->code, "The budget")->required();
    Positional(*command, "AMOUNT", arguments->amount, "The new amount")->required();
    Positional(*command, "CURRENCY", arguments->currency, "The currency of the amount")->required();
    command->add_option("--date", arguments->date, "The day, 2026-03-15; today when left out")
        ->type_name("DAY");
    command->add_flag("--simulate", arguments->simulate, "Show what would be left of each budget");
  }

  void AddSelect() {
    const auto [command, arguments] =
        Add("select", "Find the budget that a requisition line is charged to", &RunSelect);
    command->add_option("--office", arguments->office, "The office of the requisitioner")
        ->type_name("OFFICE");
    command->add_option("--charge-type", arguments->charge_type, "The charge type")->type_name("CODE");
    command->add_flag("--all", arguments->all, "All budgets that may be charged");
    Positional(*command, "NAME=VALUE", arguments->properties,
               "The properties that the dimensions of the office's budgets ask for");
  }

  void AddBudgets() {
    const auto [command, arguments] = Add("budgets", "List budgets", &RunBudgets);
    command->add_option("--holder", arguments->holder, "Only those of a holder")->type_name("USER");
    command->add_flag("--standard", arguments->standard, "Only standard budgets");
  }

  void AddLoops() {
    const auto [command, arguments] = Add("loops", "Find budgets that stand above themselves", &RunLoops);
    Positional(*command, "FROM", arguments->from, "The first budget of a range");
    Positional(*command, "TO", arguments->to, "Its last budget");
  }

  void AddCharge() {
    CLI::App* const charge = app_.add_subcommand("charge", "Keep the charge lines of requisition lines");
    charge->require_subcommand(1);
    const auto line = [](CLI::App& command, RequisitionLine& which) {
      Positional(command, "REQUISITION", which.requisition, "The number of the requisition")->required();
      Positional(command, "LINE", which.number, "The number of its line")->required();
    };
    const auto [show, shown] = AddTo(*charge, "show", "Show the charges of a line", &RunChargeShow);
    line(*show, *shown);
    const auto [add, added] = AddTo(*charge, "add", "Charge a line to one more budget", &RunChargeAdd);
    line(*add, added->line);
    Positional(*add, "OFFICE", added->office, "The office charged")->required();
    Positional(*add, "BUDGET", added->budget, "The budget charged")->required();
    Positional(*add, "PERCENTAGE", added->percentage, "Its share")->required();
    add->add_option("--revision", added->revision, "The revision of the line")->type_name("NUMBER");
    const auto [split, parts] = AddTo(*charge, "split", "Replace all charges of a line", &RunChargeSplit);
    line(*split, parts->line);
    split->add_option("--share", parts->shares, "One share; may be given several times")
        ->type_name("OFFICE BUDGET PERCENTAGE")
        ->required();
    split->add_option("--revision", parts->revision, "The revision of the line")->type_name("NUMBER");
    const auto [drop, dropped] = AddTo(*charge, "delete", "Delete all charges of a line", &RunChargeDelete);
    line(*drop, *dropped);
    AddPlainTo(*charge, "types", "List the charge types and their ledger accounts", &RunChargeTypes);
    const auto [type, code] = AddTo(*charge, "delete-type", "Delete a charge type", &RunChargeDropType);
    Positional(*type, "CODE", *code, "The charge type")->required();
  }

  void AddAccount() {
    const auto [command, arguments] =
        Add("account", "Find the ledger account that a requisition line defaults to", &RunAccount);
    Positional(*command, "NAME=VALUE", arguments->properties,
               "The properties of the requisition line; all that the rules look at must be there");
    command
        ->add_option(
            "--type", arguments->type,
            "Only accounts of that type: BalanceSheet, ProfitAndLoss, Miscellaneous, Expense, or 1 to 4")
        ->type_name("TYPE");
    command->add_flag("--explain", arguments->explain, "Tell how each rule fared");
  }

  void AddShowAndTree() {
    const auto [show, code] = Add("show", "Show a budget and its lines", &RunShow);
    Positional(*show, "CODE", *code, "The budget")->required();
    const auto [tree, top] = Add("tree", "Draw the hierarchy of budgets", &RunTree);
    Positional(*tree, "CODE", *top, "Only this budget and those below it");
  }

  void AddExchange() {
    const auto [out, range] = Add("export", "Export a range of budgets to a workbook", &RunExport);
    Positional(*out, "FROM", range->from, "The first budget")->required();
    Positional(*out, "TO", range->to, "The last budget")->required();
    const auto [in, file] = Add("import", "Import budgets from a workbook", &RunImport);
    Positional(*in, "FILE", file->file, "An .xls workbook, laid out as exports are")->required();
    in->add_flag("--dry-run", file->dry_run, "Tell what would be done, and keep nothing");
  }

  void AddVerify() {
    AddPlain("verify",
             "Recompute what is available on every line, and report what differs and lines without a budget",
             &RunVerify);
  }

  void AddDescribe() {
    const auto [command, arguments] =
        Add("describe", "List the classes, or the members of one", &RunDescribe);
    auto* const name = Positional(*command, "CLASS", arguments->class_name, "The class");
    command->add_flag("--markdown", arguments->markdown, "The whole reference as Markdown")->excludes(name);
  }

  void AddCall() {
    const auto [command, arguments] = Add("call", "Call a method of a class, in a transaction", &RunCall);
    Positional(*command, "CLASS", arguments->class_name, "The class")->required();
    Positional(*command, "METHOD", arguments->method, "The method")->required();
    Positional(
        *command, "NAME=VALUE", arguments->values,
        "Its arguments; null and empty are the values of that name, a value that begins with { or [ is JSON");
  }

  void AddRpc() { AddPlain("rpc", "Serve JSON-RPC on standard input and output", &RunRpc); }

  template <class Value>
  static CLI::Option* Positional(CLI::App& command, const char* name, Value& value, const char* description) {
    return command.add_option(name, value, description)->type_name("")->option_text(" ");
  }

  [[nodiscard]] GlobalOptions Options() const {
    GlobalOptions options{globals_.directory, std::nullopt, globals_.user, globals_.json};
    if (options.directory.empty()) {
      const char* const variable =
          std::getenv("TALVEX_CONFIG");  // NOLINT(concurrency-mt-unsafe): one thread.
      if (variable != nullptr) options.directory = variable;
    }
    if (globals_.now.empty()) return options;
    options.now = automation::Date::Parse(globals_.now);
    if (options.now) return options;
    throw UsageError("--now: '" + Shortened(globals_.now) + "' is neither a day nor a moment");
  }

  CLI::App app_{kDescription, "talvex"};
  Globals globals_;
  std::function<ExitStatus(Session&)> chosen_;
};

}  // namespace

ParsedArguments ParseArguments(int argc, const char* const* argv) { return Grammar().Parse(argc, argv); }

}  // namespace talvex::apps
