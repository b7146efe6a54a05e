#include <nlohmann/json.hpp>

#include "apps/cli/commands.h"
#include "apps/cli/layout.h"
#include "host/installer.h"

namespace talvex::apps {

ExitStatus RunInit(Session& session, const InitArguments& arguments) {
  host::MakeInstallation({arguments.directory, arguments.sample, arguments.database});
  if (session.Options().json) {
    session.Print({{"directory", arguments.directory}, {"sample", arguments.sample}});
    return ExitStatus::Done;
  }
  const std::string directory = Printable(arguments.directory);
  session.Out() << "Made an installation" << (arguments.sample ? " with a sample company" : "") << " in "
                << directory << ".\nTo see its budgets: talvex tree --config " << directory << "\n";
  return ExitStatus::Done;
}

}  // namespace talvex::apps
