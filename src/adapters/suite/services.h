// The default services of the suite around the component.
#pragma once

#include <memory>

#include "adapters/suite/installation.h"
#include "automation/class_registry.h"

namespace talvex::adapters::suite {

// Makes the services of an installation creatable by their class names: Corvane.Configuration, Corvane.Log,
// Corvane.ReferentialChecker, Mirelo.Currency, Mirelo.User and Pellory.User. Whoever brings a service of
// their own registers it afterwards.
void RegisterServices(automation::ClassRegistry& classes, std::shared_ptr<Installation> installation);

}  // namespace talvex::adapters::suite
