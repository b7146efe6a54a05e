// The public classes of the component. Each declares its own members, once, beside itself.
#pragma once

#include "automation/class_registry.h"

namespace talvex::component {

// Makes every public class of the component, and every platform object that a caller may want to pass to one,
// creatable by its name.
void RegisterPublicClasses(automation::ClassRegistry& classes);

}  // namespace talvex::component
