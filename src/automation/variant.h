// The one value type that crosses every late-bound border: to other components, the database, the gateway.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "automation/currency.h"
#include "automation/date.h"

namespace talvex::automation {

class Object;
class Variant;
using ObjectRef = std::shared_ptr<Object>;

// The value that a database means by NULL: known to be unknown, unlike Empty, which was never set.
struct NullValue {
  friend constexpr bool operator==(NullValue, NullValue) = default;
};
inline constexpr NullValue kNull{};

// A one-dimensional array of values with a lower bound, 0 unless it is said otherwise.
class Array {
 public:
  Array();
  Array(std::vector<Variant> items, std::int32_t lower = 0);  // NOLINT(google-explicit-constructor)
  Array(const Array& other);
  Array(Array&& other) noexcept;
  Array& operator=(const Array& other);
  Array& operator=(Array&& other) noexcept;
  ~Array();

  [[nodiscard]] std::int32_t Lower() const noexcept { return lower_; }
  [[nodiscard]] std::int32_t Upper() const noexcept;  // Lower() - 1 when there is no element.
  // Raises error 9 for an index outside the bounds.
  [[nodiscard]] const Variant& At(std::int32_t index) const;
  [[nodiscard]] Variant& At(std::int32_t index);
  [[nodiscard]] const std::vector<Variant>& Items() const noexcept { return items_; }

  friend bool operator==(const Array& a, const Array& b);

 private:
  std::vector<Variant> items_;
  std::int32_t lower_ = 0;
};

// The kinds of value, in the order of the storage below.
enum class Kind : std::uint8_t {
  Empty,
  Null,
  Boolean,
  Int16,
  Int32,
  Double,
  Currency,
  Date,
  String,
  Array,
  Object
};

// The name of a kind as people write it: "Empty", "Int32".
[[nodiscard]] std::string_view KindName(Kind kind) noexcept;

// A value of any kind. Texts are UTF-8. An Object variant shares its object and may hold none.
class Variant {
 public:
  Variant() noexcept = default;
  Variant(NullValue) noexcept : storage_(kNull) {}                     // NOLINT(google-explicit-constructor)
  Variant(bool value) noexcept : storage_(value) {}                    // NOLINT(google-explicit-constructor)
  Variant(std::int16_t value) noexcept : storage_(value) {}            // NOLINT(google-explicit-constructor)
  Variant(std::int32_t value) noexcept : storage_(value) {}            // NOLINT(google-explicit-constructor)
  Variant(double value) noexcept : storage_(value) {}                  // NOLINT(google-explicit-constructor)
  Variant(Currency value) noexcept : storage_(value) {}                // NOLINT(google-explicit-constructor)
  Variant(Date value) noexcept : storage_(value) {}                    // NOLINT(google-explicit-constructor)
  Variant(std::string value) noexcept : storage_(std::move(value)) {}  // NOLINT(google-explicit-constructor)
  Variant(std::string_view value) : storage_(std::string(value)) {}    // NOLINT(google-explicit-constructor)
  Variant(const char* value) : storage_(std::string(value)) {}         // NOLINT(google-explicit-constructor)
  Variant(Array value) noexcept : storage_(std::move(value)) {}        // NOLINT(google-explicit-constructor)
  template <std::derived_from<Object> T>
  Variant(std::shared_ptr<T> value) noexcept  // NOLINT(google-explicit-constructor)
      : storage_(ObjectRef(std::move(value))) {}

  [[nodiscard]] Kind Type() const noexcept { return static_cast<Kind>(storage_.index()); }
  [[nodiscard]] bool IsEmpty() const noexcept { return Type() == Kind::Empty; }
  [[nodiscard]] bool IsNull() const noexcept { return Type() == Kind::Null; }
  [[nodiscard]] bool IsString() const noexcept { return Type() == Kind::String; }
  [[nodiscard]] bool IsArray() const noexcept { return Type() == Kind::Array; }
  [[nodiscard]] bool IsObject() const noexcept { return Type() == Kind::Object; }

  // The value as the type it is held in; to be called only when Type() says so. Conversions: conversions.h.
  template <class T>
  [[nodiscard]] const T& As() const noexcept {
    return *std::get_if<T>(&storage_);
  }
  template <class T>
  [[nodiscard]] T& As() noexcept {
    return *std::get_if<T>(&storage_);
  }

  // Same kind and same value; objects are equal when they are the same object.
  friend bool operator==(const Variant& a, const Variant& b) { return a.storage_ == b.storage_; }

 private:
  std::variant<std::monostate, NullValue, bool, std::int16_t, std::int32_t, double, Currency, Date,
               std::string, Array, ObjectRef>
      storage_;
};

}  // namespace talvex::automation
