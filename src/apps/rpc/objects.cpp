#include "apps/rpc/objects.h"

namespace talvex::apps::rpc {

std::int64_t ObjectTable::Add(const automation::ObjectRef& object) {
  if (const auto known = NumberOf(*object)) return *known;
  const std::int64_t number = ++last_;
  objects_.emplace(number, object);
  numbers_.emplace(object.get(), number);
  return number;
}

automation::ObjectRef ObjectTable::Find(std::int64_t number) const {
  const auto found = objects_.find(number);
  return found == objects_.end() ? nullptr : found->second;
}

std::optional<std::int64_t> ObjectTable::NumberOf(const automation::Object& object) const {
  const auto found = numbers_.find(&object);
  if (found == numbers_.end()) return std::nullopt;
  return found->second;
}

bool ObjectTable::Release(std::int64_t number) {
  const auto found = objects_.find(number);
  if (found == objects_.end()) return false;
  numbers_.erase(found->second.get());
  objects_.erase(found);
  return true;
}

}  // namespace talvex::apps::rpc
