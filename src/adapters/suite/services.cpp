#include "adapters/suite/services.h"

#include "adapters/suite/configuration.h"
#include "adapters/suite/currency_service.h"
#include "adapters/suite/error_log.h"
#include "adapters/suite/membership_user_service.h"
#include "adapters/suite/referential_checker.h"
#include "adapters/suite/suite_user_service.h"

namespace talvex::adapters::suite {

namespace {

template <class Service>
void Register(automation::ClassRegistry& classes, const std::shared_ptr<const Installation>& installation) {
  classes.Register(Service::Info(), [installation] { return std::make_shared<Service>(installation); });
}

}  // namespace

void RegisterServices(automation::ClassRegistry& classes, std::shared_ptr<Installation> installation) {
  const std::shared_ptr<const Installation> shared = std::move(installation);
  Register<Configuration>(classes, shared);
  Register<ErrorLog>(classes, shared);
  Register<CurrencyService>(classes, shared);
  Register<SuiteUserService>(classes, shared);
  Register<MembershipUserService>(classes, shared);
  Register<ReferentialChecker>(classes, shared);
}

}  // namespace talvex::adapters::suite
