// The platform's string-keyed dictionary.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "automation/class_info.h"

namespace talvex::automation {

// Items by exact (case-sensitive) key, in the order in which they were added.
class Dictionary final : public Object {
  TALVEX_CLASS(Dictionary, "Platform.Dictionary",
               "Items by exact key, in the order in which they were added.");

 public:
  Dictionary() = default;
  ~Dictionary() override;

  TALVEX_METHOD(void, Add, (const std::string& key, const Variant& item),
                "Adds an item; a key that is there already raises 457 and changes nothing.");
  TALVEX_METHOD(bool, Exists, (const std::string& key), "Whether there is an item under the key.");
  TALVEX_METHOD(Variant, Item, (const std::string& key), "The item under the key; Empty when there is none.");
  TALVEX_METHOD(void, SetItem, (const std::string& key, const Variant& item),
                "Replaces or adds the item under the key.");
  TALVEX_METHOD(void, Remove, (const std::string& key),
                "Takes the item out; a key that is not there raises 5.");
  TALVEX_METHOD(void, RemoveAll, (), "Takes all items out.");
  TALVEX_METHOD(Array, Keys, (), "The keys, in order.");
  TALVEX_METHOD(Array, Items, (), "The items, in the order of their keys.");
  TALVEX_READONLY(std::int32_t, Count, "Count", "The number of items.");

  using Entry = std::pair<std::string, Variant>;
  [[nodiscard]] const std::vector<Entry>& Entries() const noexcept { return entries_; }

 private:
  std::vector<Entry> entries_;
  std::unordered_map<std::string, std::size_t> index_;
};

}  // namespace talvex::automation
