// The commands of the program, without the grammar of their arguments. Each writes its answer to the
// session's output and returns an exit status; what goes wrong is thrown as UsageError or automation::Error.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/cli/session.h"

namespace talvex::apps {

struct InitArguments {
  std::string directory;
  bool sample = false;
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
