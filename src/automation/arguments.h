// How C++ parameter types meet late-bound values: one rule per kind of parameter, used by every member of
// every class.
//
//   T, const T&         in: the argument is converted
//   T&                  in/out: converted, and the value is handed back afterwards
//   std::optional<T>    in, may be left out
//   Variant*            in/out, may be left out (then it is null)
//   std::shared_ptr<C>  an object of class C; Empty is an object that is not set
#pragma once

#include <concepts>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>

#include "automation/conversions.h"
#include "automation/enumeration.h"
#include "automation/error.h"
#include "automation/object.h"

namespace talvex::automation {

// Converts between Variant and a parameter type T, and names the type in descriptions.
template <class T>
struct ValueOf;

template <>
struct ValueOf<Variant> {
  static std::string TypeName() { return "variant"; }
  static Variant From(const Variant& value) { return value; }
  static Variant To(Variant value) { return value; }
};
template <>
struct ValueOf<std::string> {
  static std::string TypeName() { return "string"; }
  static std::string From(const Variant& value) { return ToText(value); }
  static Variant To(std::string value) { return Variant(std::move(value)); }
};
template <>
struct ValueOf<double> {
  static std::string TypeName() { return "double"; }
  static double From(const Variant& value) { return ToDouble(value); }
  static Variant To(double value) { return Variant(value); }
};
template <>
struct ValueOf<std::int32_t> {
  static std::string TypeName() { return "int32"; }
  static std::int32_t From(const Variant& value) { return ToInt32(value); }
  static Variant To(std::int32_t value) { return Variant(value); }
};
template <>
struct ValueOf<std::int16_t> {
  static std::string TypeName() { return "int16"; }
  static std::int16_t From(const Variant& value) { return ToInt16(value); }
  static Variant To(std::int16_t value) { return Variant(value); }
};
template <>
struct ValueOf<bool> {
  static std::string TypeName() { return "boolean"; }
  static bool From(const Variant& value) { return ToBoolean(value); }
  static Variant To(bool value) { return Variant(value); }
};
template <>
struct ValueOf<Currency> {
  static std::string TypeName() { return "currency"; }
  static Currency From(const Variant& value) { return ToCurrency(value); }
  static Variant To(Currency value) { return Variant(value); }
};
template <>
struct ValueOf<Date> {
  static std::string TypeName() { return "date"; }
  static Date From(const Variant& value) { return ToDate(value); }
  static Variant To(Date value) { return Variant(value); }
};
template <>
struct ValueOf<Array> {
  static std::string TypeName() { return "array"; }
  static Array From(const Variant& value) {
    if (!value.IsArray()) {
      throw Error(error_number::kTypeMismatch, kAutomationSource, "Type mismatch: an array is wanted");
    }
    return value.As<Array>();
  }
  static Variant To(Array value) { return Variant(std::move(value)); }
};
template <class E>
requires std::is_enum_v<E>
struct ValueOf<E> {
  static std::string TypeName() { return DescribeEnumeration(E{}).Name(); }
  // A number, or the name of a member.
  static E From(const Variant& value) {
    if (value.IsString()) {
      if (const auto number = DescribeEnumeration(E{}).NumberOf(value.As<std::string>()))
        return static_cast<E>(*number);
    }
    return static_cast<E>(ValueOf<std::underlying_type_t<E>>::From(value));
  }
  static Variant To(E value) { return Variant(static_cast<std::underlying_type_t<E>>(value)); }
};
template <class C>
requires std::derived_from<C, Object>
struct ValueOf<std::shared_ptr<C>> {
  static std::string TypeName() {
    if constexpr (std::same_as<C, Object>) {
      return "object";
    } else {
      return C::ClassName();
    }
  }
  static std::shared_ptr<C> From(const Variant& value) {
    if (value.IsEmpty()) return nullptr;
    if (value.IsObject()) {
      const ObjectRef& object = value.As<ObjectRef>();
      if (object == nullptr) return nullptr;
      if (auto typed = std::dynamic_pointer_cast<C>(object)) return typed;
    }
    throw Error(error_number::kTypeMismatch, kAutomationSource,
                "Type mismatch: an object of class " + TypeName() + " is wanted");
  }
  // An object that is not set is Empty to a late-bound caller.
  static Variant To(std::shared_ptr<C> value) {
    return value == nullptr ? Variant() : Variant(std::move(value));
  }
};

[[noreturn]] inline void RaiseMissingArgument() {
  throw Error(error_number::kArgumentNotOptional, kAutomationSource, "Argument not optional");
}

// One argument on its way through a call: converted when made, handed back by Return().
template <class P>
class Slot {
 public:
  using T = std::remove_cvref_t<P>;
  static constexpr bool kByReference =
      std::is_lvalue_reference_v<P> && !std::is_const_v<std::remove_reference_t<P>>;
  static constexpr bool kOptional = false;
  static std::string TypeName() { return ValueOf<T>::TypeName(); }

  explicit Slot(Variant* argument) : argument_(argument), value_(Converted(argument)) {}
  std::conditional_t<kByReference, T&, const T&> Value() noexcept { return value_; }
  void Return() {
    if constexpr (kByReference) *argument_ = ValueOf<T>::To(std::move(value_));
  }

 private:
  static T Converted(const Variant* argument) {
    if (argument == nullptr) RaiseMissingArgument();
    return ValueOf<T>::From(*argument);
  }
  Variant* argument_;
  T value_;
};

// A Variant parameter needs no conversion: the method works on the caller's own value.
template <class P>
requires std::same_as<std::remove_cvref_t<P>, Variant>
class Slot<P> {
 public:
  static constexpr bool kByReference =
      std::is_lvalue_reference_v<P> && !std::is_const_v<std::remove_reference_t<P>>;
  static constexpr bool kOptional = false;
  static std::string TypeName() { return "variant"; }

  explicit Slot(Variant* argument) : argument_(argument) {
    if (argument == nullptr) RaiseMissingArgument();
  }
  Variant& Value() noexcept { return *argument_; }
  void Return() noexcept {}

 private:
  Variant* argument_;
};

template <class T>
class Slot<std::optional<T>> {
 public:
  static constexpr bool kByReference = false;
  static constexpr bool kOptional = true;
  static std::string TypeName() { return ValueOf<T>::TypeName(); }

  explicit Slot(Variant* argument) {
    if (argument != nullptr) value_ = ValueOf<T>::From(*argument);
  }
  const std::optional<T>& Value() noexcept { return value_; }
  void Return() noexcept {}

 private:
  std::optional<T> value_;
};
template <class T>
class Slot<const std::optional<T>&> : public Slot<std::optional<T>> {
  using Slot<std::optional<T>>::Slot;
};

template <>
class Slot<Variant*> {
 public:
  static constexpr bool kByReference = true;
  static constexpr bool kOptional = true;
  static std::string TypeName() { return "variant"; }

  explicit Slot(Variant* argument) : argument_(argument) {}
  Variant* Value() noexcept { return argument_; }
  void Return() noexcept {}

 private:
  Variant* argument_;
};

}  // namespace talvex::automation
