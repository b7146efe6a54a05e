// The commands of the program, without the grammar of their arguments. Each writes its answer to the
// session's output and returns an exit status; what goes wrong is thrown: UsageError, Refusal or Failure of
// session.h, or automation::Error.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "apps/cli/session.h"

namespace talvex::apps {

struct InitArguments {
  std::string directory;
  bool sample = false;
  std::optional<std::string> database;       // A connection string; nothing for the embedded database.
  std::optional<std::string> database_file;  // Where one is read from instead; "-" for standard input.
};
ExitStatus RunInit(Session& session, const InitArguments& arguments);

// As they were typed: the command says itself what is wrong with one.
struct PostArguments {
  std::string code;
  std::string amount;
  std::string currency;
  std::string type;
  std::string date;  // Empty for the clock's day.
};
ExitStatus RunPost(Session& session, const PostArguments& arguments);

// Amount and date as they were typed.
struct CheckArguments {
  std::string code;
  std::string amount;
  std::string currency;
  std::string date;  // Empty for the clock's day.
  bool simulate = false;
};
ExitStatus RunCheck(Session& session, const CheckArguments& arguments);

struct SelectArguments {
  std::string office;
  std::string charge_type;
  std::vector<std::string> properties;  // Each "name=value".
  bool all = false;
};
ExitStatus RunSelect(Session& session, const SelectArguments& arguments);

struct BudgetsArguments {
  std::string holder;  // Empty for those of everybody.
  bool standard = false;
};
ExitStatus RunBudgets(Session& session, const BudgetsArguments& arguments);

struct RequisitionLine {
  std::int32_t requisition = 0;
  std::int32_t number = 0;
};
struct ChargeAddArguments {
  RequisitionLine line;
  std::string office;
  std::string budget;
  std::string percentage;
  std::int32_t revision = 0;
};
struct ChargeSplitArguments {
  RequisitionLine line;
  std::vector<std::tuple<std::string, std::string, std::string>> shares;  // Office, budget, percentage.
  std::int32_t revision = 0;
};
ExitStatus RunChargeShow(Session& session, const RequisitionLine& line);
ExitStatus RunChargeAdd(Session& session, const ChargeAddArguments& arguments);
ExitStatus RunChargeSplit(Session& session, const ChargeSplitArguments& arguments);
ExitStatus RunChargeDelete(Session& session, const RequisitionLine& line);
ExitStatus RunChargeTypes(Session& session);
ExitStatus RunChargeDropType(Session& session, const std::string& code);

// Without a range all budgets, without its end the one budget.
struct LoopsArguments {
  std::string from;
  std::string to;
};
ExitStatus RunLoops(Session& session, const LoopsArguments& arguments);

struct AccountArguments {
  std::vector<std::string> properties;  // Each "name=value".
  std::string type;                     // As it was typed; empty for accounts of every type.
  bool explain = false;
};
ExitStatus RunAccount(Session& session, const AccountArguments& arguments);

struct ExportArguments {
  std::string from;
  std::string to;
};
ExitStatus RunExport(Session& session, const ExportArguments& arguments);

struct ImportArguments {
  std::string file;
  bool dry_run = false;
};
ExitStatus RunImport(Session& session, const ImportArguments& arguments);

ExitStatus RunShow(Session& session, const std::string& code);

// Without a code, all budgets.
ExitStatus RunTree(Session& session, const std::optional<std::string>& code);

ExitStatus RunVerify(Session& session);

struct DescribeArguments {
  std::string class_name;  // Empty for the list of all classes.
  bool markdown = false;   // The whole reference instead.
};
ExitStatus RunDescribe(Session& session, const DescribeArguments& arguments);

struct CallArguments {
  std::string class_name;
  std::string method;
  std::vector<std::string> values;  // Each "name=value".
};
ExitStatus RunCall(Session& session, const CallArguments& arguments);

ExitStatus RunRpc(Session& session);

}  // namespace talvex::apps
