// Classes that describe themselves: a member is declared once, and that declaration is the typed C++ method,
// the late-bound call, the description that `describe` prints and the documentation.
//
//   class Account final : public Object {
//     TALVEX_CLASS(Account, "Bank.Account", "An account and its balance.");
//    public:
//     TALVEX_METHOD(double, Deposit, (double iAmount), "Adds iAmount; returns the balance.");
//     TALVEX_PROPERTY(std::string, Owner, "Who holds the account.");
//   };
#pragma once

#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

#include "automation/arguments.h"
#include "automation/object.h"
#include "automation/text.h"

namespace talvex::automation {

struct Parameter {
  std::string name;
  std::string type;
  bool by_reference = false;
  bool optional = false;
  const EnumerationInfo* enumeration = nullptr;  // Set when the type is an enumeration.
};

struct Method {
  std::string name;
  std::vector<Parameter> parameters;
  std::string result;  // The type's name; empty for none.
  std::string documentation;
  Variant (*invoke)(Object& self, Arguments arguments, const Method& method) = nullptr;
};

struct Property {
  std::string name;
  std::string type;
  std::string documentation;
  Variant (*get)(Object& self) = nullptr;
  void (*set)(Object& self, const Variant& value) = nullptr;  // Null for one that can only be read.
};

// The parameter names in a parameter list as it stands in a declaration, in order.
[[nodiscard]] std::vector<std::string> ParameterNames(std::string_view declaration);

// Raises the error being handled again, with the argument's name at the end of its description.
[[noreturn]] void RaiseForArgument(const Parameter& parameter);

namespace detail {

// Converts argument I, naming it when it cannot be.
template <class P>
Slot<P> MakeSlot(Variant* argument, const Parameter& parameter) {
  try {
    return Slot<P>(argument);
  } catch (const Error&) {
    RaiseForArgument(parameter);
  }
}

// A parameter that may be left out has the type of what it holds.
template <class T>
struct Given {
  using Type = T;
};
template <class T>
struct Given<std::optional<T>> {
  using Type = T;
};

template <class P>
Parameter Describe(std::string name) {
  using Type = typename Given<std::remove_cvref_t<P>>::Type;
  Parameter parameter{std::move(name), Slot<P>::TypeName(), Slot<P>::kByReference, Slot<P>::kOptional,
                      nullptr};
  if constexpr (std::is_enum_v<Type>) parameter.enumeration = &DescribeEnumeration(Type{});
  return parameter;
}

template <class Signature>
struct MethodTraits;

template <class C, class R, class... P>
struct MethodTraits<R (C::*)(P...)> {
  static std::vector<Parameter> Parameters(std::string_view declaration) {
    [[maybe_unused]] const std::vector<std::string> names = ParameterNames(declaration);
    [[maybe_unused]] std::size_t next = 0;
    return std::vector<Parameter>{Describe<P>(names.at(next++))...};
  }

  static std::string Result() {
    if constexpr (std::is_void_v<R>) {
      return {};
    } else {
      return ValueOf<std::remove_cvref_t<R>>::TypeName();
    }
  }

  template <R (C::*Function)(P...)>
  static Variant Invoke(Object& self, Arguments arguments, const Method& method) {
    return Invoke<Function>(static_cast<C&>(self), arguments, method, std::index_sequence_for<P...>());
  }

 private:
  template <R (C::*Function)(P...), std::size_t... I>
  static Variant Invoke(C& self, [[maybe_unused]] Arguments arguments, [[maybe_unused]] const Method& method,
                        std::index_sequence<I...>) {
    std::tuple<Slot<P>...> slots{
        MakeSlot<P>(I < arguments.size() ? arguments[I] : nullptr, method.parameters[I])...};
    try {
      if constexpr (std::is_void_v<R>) {
        (self.*Function)(std::get<I>(slots).Value()...);
        (std::get<I>(slots).Return(), ...);
        return {};
      } else {
        Variant result = ValueOf<std::remove_cvref_t<R>>::To((self.*Function)(std::get<I>(slots).Value()...));
        (std::get<I>(slots).Return(), ...);
        return result;
      }
    } catch (...) {
      // What the method had put into its by-reference arguments when it failed is the caller's, too.
      (std::get<I>(slots).Return(), ...);
      throw;
    }
  }
};

}  // namespace detail

// What is known of a class. The declarations of its members fill it while the program starts; constant then.
class ClassInfo {
 public:
  ClassInfo(std::string_view name, std::string_view documentation)
      : name_(name), documentation_(documentation) {}

  [[nodiscard]] const std::string& Name() const noexcept { return name_; }
  [[nodiscard]] const std::string& Documentation() const noexcept { return documentation_; }
  [[nodiscard]] const std::vector<Method>& Methods() const noexcept { return methods_; }
  [[nodiscard]] const std::vector<Property>& Properties() const noexcept { return properties_; }
  // Names are found without regard to case; null when there is none.
  [[nodiscard]] const Method* FindMethod(std::string_view name) const;
  [[nodiscard]] const Property* FindProperty(std::string_view name) const;

  template <auto Function>
  bool Add(std::string_view name, std::string_view parameters, std::string_view documentation) {
    using Traits = detail::MethodTraits<decltype(Function)>;
    return AddMethod({std::string(name), Traits::Parameters(parameters), Traits::Result(),
                      std::string(documentation), &Traits::template Invoke<Function>});
  }

  template <class Self, auto Getter>
  bool AddReadOnly(std::string_view name, std::string_view documentation) {
    return AddProperty({std::string(name), TypeOf<Self, Getter>::TypeName(), std::string(documentation),
                        &GetThrough<Self, Getter>, nullptr});
  }

  template <class Self, auto Getter, auto Setter>
  bool AddAccessors(std::string_view name, std::string_view documentation) {
    return AddProperty({std::string(name), TypeOf<Self, Getter>::TypeName(), std::string(documentation),
                        &GetThrough<Self, Getter>, &SetThrough<Self, Getter, Setter>});
  }

  template <class Self, auto Field>
  bool AddField(std::string_view name, std::string_view documentation) {
    using T = std::remove_cvref_t<decltype(std::declval<Self&>().*Field)>;
    return AddProperty({std::string(name), ValueOf<T>::TypeName(), std::string(documentation),
                        [](Object& self) { return ValueOf<T>::To(static_cast<Self&>(self).*Field); },
                        [](Object& self, const Variant& value) {
                          static_cast<Self&>(self).*Field = ValueOf<T>::From(value);
                        }});
  }

 private:
  template <class Self, auto Getter>
  using TypeOf = ValueOf<std::remove_cvref_t<decltype((std::declval<Self&>().*Getter)())>>;

  template <class Self, auto Getter>
  static Variant GetThrough(Object& self) {
    return TypeOf<Self, Getter>::To((static_cast<Self&>(self).*Getter)());
  }
  template <class Self, auto Getter, auto Setter>
  static void SetThrough(Object& self, const Variant& value) {
    (static_cast<Self&>(self).*Setter)(TypeOf<Self, Getter>::From(value));
  }

  bool AddMethod(Method method);
  bool AddProperty(Property property);

  std::string name_;
  std::string documentation_;
  std::vector<Method> methods_;
  std::vector<Property> properties_;
  std::unordered_map<std::string, std::size_t, FoldedHash, FoldedEqual> method_index_;
  std::unordered_map<std::string, std::size_t, FoldedHash, FoldedEqual> property_index_;
};

}  // namespace talvex::automation

// At the top of a class: its C++ name, the name it is created by, and what it is for.
#define TALVEX_CLASS(Type, class_name, documentation)                              \
 public:                                                                           \
  using Self = Type;                                                               \
  static std::string ClassName() { return class_name; }                            \
  static ::talvex::automation::ClassInfo& Info() {                                 \
    static ::talvex::automation::ClassInfo info(class_name, documentation);        \
    return info;                                                                   \
  }                                                                                \
  const ::talvex::automation::ClassInfo& Class() const override { return Info(); } \
  static_assert(true, "a semicolon follows")

// A method. The parameter list stands in parentheses, each parameter with its name.
#define TALVEX_METHOD(Result, Name, parameters, documentation) \
  Result Name parameters;                                      \
  inline static const bool declares_##Name = Info().Add<&Self::Name>(#Name, #parameters, documentation)

// A method whose published name cannot be its C++ name.
#define TALVEX_NAMED_METHOD(Result, Name, published, parameters, documentation) \
  Result Name parameters;                                                       \
  inline static const bool declares_##Name = Info().Add<&Self::Name>(published, #parameters, documentation)

// A property that is plain storage, a data member.
#define TALVEX_PROPERTY(Type, Name, documentation) \
  Type Name{};                                     \
  inline static const bool declares_##Name = Info().AddField<Self, &Self::Name>(#Name, documentation)

// A property that is plain storage and whose published name cannot be its C++ name.
#define TALVEX_NAMED_PROPERTY(Type, Name, published, documentation) \
  Type Name{};                                                      \
  inline static const bool declares_##Name = Info().AddField<Self, &Self::Name>(published, documentation)

// A property that can only be read, computed by the const method `Name`.
#define TALVEX_READONLY(Type, Name, published, documentation) \
  [[nodiscard]] Type Name() const;                            \
  inline static const bool declares_##Name = Info().AddReadOnly<Self, &Self::Name>(published, documentation)

// A property with a reader `Name` and a writer `Set<Name>`.
#define TALVEX_ACCESSORS(Type, Name, published, documentation) \
  [[nodiscard]] Type Name() const;                             \
  void Set##Name(const Type& value);                           \
  inline static const bool declares_##Name =                   \
      Info().AddAccessors<Self, &Self::Name, &Self::Set##Name>(published, documentation)
