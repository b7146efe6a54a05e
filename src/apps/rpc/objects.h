// The objects that a client knows by number.
#pragma once

#include <cstdint>
#include <optional>
#include <unordered_map>

#include "automation/object.h"

namespace talvex::apps::rpc {

// Objects by number, from 1 on. The table shares every object in it, so that it lives at least until it is
// released or the table ends. An object has one number at a time, and a number is never given twice.
class ObjectTable {
 public:
  // The object's number: the one it has, or else a new one. The object must be set.
  std::int64_t Add(const automation::ObjectRef& object);

  // The object of that number; null when there is none.
  [[nodiscard]] automation::ObjectRef Find(std::int64_t number) const;

  // The number that the object has; nothing when it has none.
  [[nodiscard]] std::optional<std::int64_t> NumberOf(const automation::Object& object) const;

  // Forgets the object of that number; false when there is none.
  bool Release(std::int64_t number);

 private:
  std::unordered_map<std::int64_t, automation::ObjectRef> objects_;
  std::unordered_map<const automation::Object*, std::int64_t> numbers_;
  std::int64_t last_ = 0;
};

}  // namespace talvex::apps::rpc
