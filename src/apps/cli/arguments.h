// The grammar of the command line.
#pragma once

#include <functional>
#include <string>

#include "apps/cli/session.h"

namespace talvex::apps {

struct ParsedArguments {
  GlobalOptions options;
  std::function<ExitStatus(Session&)> command;  // Empty when help or the version was asked for.
  std::string help;                             // That text.
};

// Throws UsageError for arguments that no command takes.
[[nodiscard]] ParsedArguments ParseArguments(int argc, const char* const* argv);

}  // namespace talvex::apps
