// Objects that can be called by the names of their members.
#pragma once

#include <array>
#include <memory>
#include <span>
#include <string_view>
#include <type_traits>

#include "automation/variant.h"

namespace talvex::automation {

class ClassInfo;

// The arguments of a late-bound call, by position. A null pointer stands for an argument left out. An
// argument passed by reference is changed in place.
using Arguments = std::span<Variant* const>;

// The base of everything that is created by class name. Lifetime is shared: an object lives as long as
// somebody holds it.
class Object : public std::enable_shared_from_this<Object> {
 public:
  Object() = default;
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  virtual ~Object() = default;

  // What the class is and which members it has.
  [[nodiscard]] virtual const ClassInfo& Class() const = 0;

  // Calls the method of that name, without regard to case. Raises 438 for a member that the class does not
  // have, 449 for a required argument left out, 450 for too many arguments, 13 for one of the wrong type, and
  // whatever the method raises.
  Variant Invoke(std::string_view method, Arguments arguments);

  // Reads or writes a property; 438 when there is none of that name or it cannot be written.
  [[nodiscard]] Variant Get(std::string_view property);
  void Set(std::string_view property, const Variant& value);

  // Invoke for C++ callers: a Variant that can be changed is passed by reference, anything else by value.
  template <class... Values>
  Variant Call(std::string_view method, Values&&... values) {
    if constexpr (sizeof...(Values) == 0) {
      return Invoke(method, {});
    } else {
      std::array<Variant, sizeof...(Values)> copies;
      std::array<Variant*, sizeof...(Values)> pointers{};
      std::size_t next = 0;
      const auto place = [&]<class Value>(Value&& value) {
        if constexpr (std::is_same_v<Value, Variant&>) {
          pointers[next] = &value;
        } else {
          copies[next] = Variant(std::forward<Value>(value));
          pointers[next] = &copies[next];
        }
        ++next;
      };
      (place(std::forward<Values>(values)), ...);
      return Invoke(method, pointers);
    }
  }
};

}  // namespace talvex::automation
