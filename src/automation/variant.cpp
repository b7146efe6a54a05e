#include "automation/variant.h"

#include <array>
#include <utility>

#include "automation/error.h"

namespace talvex::automation {

Array::Array() = default;
Array::Array(std::vector<Variant> items, std::int32_t lower) : items_(std::move(items)), lower_(lower) {}
Array::Array(const Array& other) = default;
Array::Array(Array&& other) noexcept = default;
Array& Array::operator=(const Array& other) = default;
Array& Array::operator=(Array&& other) noexcept = default;
Array::~Array() = default;

std::int32_t Array::Upper() const noexcept { return lower_ + static_cast<std::int32_t>(items_.size()) - 1; }

const Variant& Array::At(std::int32_t index) const {
  if (index < lower_ || index > Upper()) {
    throw Error(error_number::kSubscriptOutOfRange, kAutomationSource,
                "Subscript out of range: there is no element " + std::to_string(index));
  }
  return items_[static_cast<std::size_t>(index - lower_)];
}

Variant& Array::At(std::int32_t index) { return const_cast<Variant&>(std::as_const(*this).At(index)); }

bool operator==(const Array& a, const Array& b) { return a.lower_ == b.lower_ && a.items_ == b.items_; }

std::string_view KindName(Kind kind) noexcept {
  static constexpr std::array<std::string_view, 11> kNames = {"Empty",  "Null",   "Boolean",  "Int16",
                                                              "Int32",  "Double", "Currency", "Date",
                                                              "String", "Array",  "Object"};
  return kNames[static_cast<std::size_t>(kind)];
}

}  // namespace talvex::automation
