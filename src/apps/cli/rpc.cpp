#include <iostream>

#include "apps/cli/commands.h"
#include "apps/rpc/gateway.h"

namespace talvex::apps {

ExitStatus RunRpc(Session& session) {
  return static_cast<ExitStatus>(RunGateway(std::cin, std::cout, session.Host()));
}

}  // namespace talvex::apps
