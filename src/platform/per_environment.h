// What a thread keeps for the environment that it works in.
#pragma once

#include <memory>
#include <vector>

#include "platform/environment.h"

namespace talvex::platform {

// The calling thread's T for the environment that it works in, made when the thread first asks for it there.
// It lives as long as both the thread and the environment; one whose environment has gone is dropped when the
// next is made. Raises what Environment::Current raises.
template <class T>
[[nodiscard]] T& OfThreadAndEnvironment() {
  struct Kept {
    std::weak_ptr<const Environment> owner;
    std::unique_ptr<T> value;
  };
  thread_local std::vector<Kept> kept;
  const std::shared_ptr<const Environment> current = Environment::CurrentShared();
  for (const Kept& one : kept) {
    if (!one.owner.owner_before(current) && !current.owner_before(one.owner)) return *one.value;
  }
  std::erase_if(kept, [](const Kept& one) { return one.owner.expired(); });
  kept.push_back({std::weak_ptr(current), std::make_unique<T>()});
  return *kept.back().value;
}

}  // namespace talvex::platform
