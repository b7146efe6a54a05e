#include "adapters/posix/stack.h"

#include <pthread.h>

#include <cstdint>
#include <limits>

namespace talvex::adapters::posix {

namespace {

// The lowest address that the calling thread's stack may reach; the highest possible one when it is not
// known.
std::uintptr_t EndOfStack() noexcept {
  constexpr std::uintptr_t kUnknown = std::numeric_limits<std::uintptr_t>::max();
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return kUnknown;
  void* lowest = nullptr;
  std::size_t size = 0;
  std::size_t guard = 0;
  const bool known = pthread_attr_getstack(&attributes, &lowest, &size) == 0 &&
                     pthread_attr_getguardsize(&attributes, &guard) == 0;
  pthread_attr_destroy(&attributes);
  // The pages of the guard may be counted in the stack.
  return known ? reinterpret_cast<std::uintptr_t>(lowest) + guard : kUnknown;
}

}  // namespace

std::size_t StackLeft() noexcept {
  // Asking the system takes long, and the stack of a thread stays where it is.
  thread_local const std::uintptr_t end = EndOfStack();
  const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  return here > end ? here - end : 0;
}

}  // namespace talvex::adapters::posix
