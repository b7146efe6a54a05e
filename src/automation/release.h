// Letting go of values that hold values.
#pragma once

#include "automation/variant.h"

namespace talvex::automation {

// Destroys a value that was an item of a container being destroyed. Containers hold containers, and
// destroying each inside the other would take stack for every level of a chain that anybody can make as long
// as he likes; so while one value of the thread is being destroyed, those that come up meanwhile wait for
// their turn.
void LetGo(Variant&& item) noexcept;

}  // namespace talvex::automation
