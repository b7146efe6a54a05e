#include "automation/release.h"

#include <new>
#include <utility>
#include <vector>

namespace talvex::automation {

namespace {

// The values that wait, while the thread is destroying one.
thread_local std::vector<Variant>* waiting = nullptr;

}  // namespace

void LetGo(Variant&& item) noexcept {
  Variant value = std::move(item);
  if (!value.IsObject() && !value.IsArray()) return;
  if (waiting != nullptr) {
    try {
      waiting->push_back(std::move(value));
    } catch (const std::bad_alloc&) {
      // It is destroyed here and now instead.
    }
    return;
  }
  std::vector<Variant> queue;
  waiting = &queue;
  for (;;) {
    value = Variant();
    if (queue.empty()) break;
    value = std::move(queue.back());
    queue.pop_back();
  }
  waiting = nullptr;
}

}  // namespace talvex::automation
