// The platform's ordered collection.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "automation/class_info.h"

namespace talvex::automation {

// Items in order, counted from 1, some of them with a key. Keys compare without the case of ASCII letters.
class Collection final : public Object {
  TALVEX_CLASS(Collection, "Platform.Collection", "Items in order, counted from 1, some of them with a key.");

 public:
  Collection() = default;
  ~Collection() override;

  TALVEX_METHOD(void, Add, (const Variant& item, std::optional<std::string> key),
                "Adds an item at the end; a key that is there already raises 457 and changes nothing.");
  TALVEX_METHOD(
      Variant, Item, (const Variant& index),
      "The item under a key (a text) or at a position (a number from 1). A key that is not there raises 5, a "
      "position outside raises 9.");
  TALVEX_METHOD(void, Remove, (const Variant& index), "Takes out the item that Item would return.");
  TALVEX_READONLY(std::int32_t, Count, "Count", "The number of items.");

  struct Entry {
    std::optional<std::string> key;
    Variant item;
  };
  [[nodiscard]] const std::vector<Entry>& Entries() const noexcept { return entries_; }

 private:
  [[nodiscard]] std::size_t Find(const Variant& index) const;

  std::vector<Entry> entries_;
  std::unordered_map<std::string, std::size_t, FoldedHash, FoldedEqual> index_;
};

}  // namespace talvex::automation
