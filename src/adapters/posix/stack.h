// The stack of the calling thread.
#pragma once

#include <cstddef>

namespace talvex::adapters::posix {

// How many bytes of stack the calling thread has left; 0 when the system does not say where its stack ends,
// so that whoever asks before going deeper stops.
[[nodiscard]] std::size_t StackLeft() noexcept;

}  // namespace talvex::adapters::posix
