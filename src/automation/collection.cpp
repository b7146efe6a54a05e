#include "automation/collection.h"

#include "automation/release.h"

namespace talvex::automation {

Collection::~Collection() {
  for (Entry& entry : entries_) LetGo(std::move(entry.item));
}

void Collection::Add(const Variant& item, std::optional<std::string> key) {
  if (key && !index_.emplace(*key, entries_.size()).second) {
    throw Error(error_number::kDuplicateKey, kAutomationSource,
                "This key is already associated with an element of this collection: '" + *key + "'");
  }
  entries_.push_back({std::move(key), item});
}

std::size_t Collection::Find(const Variant& index) const {
  if (index.IsString()) {
    const auto found = index_.find(index.As<std::string>());
    if (found == index_.end()) {
      throw Error(error_number::kInvalidCall, kAutomationSource,
                  "Invalid procedure call: the collection has no key '" + index.As<std::string>() + "'");
    }
    return found->second;
  }
  const std::int32_t position = ToInt32(index);
  if (position < 1 || position > Count()) {
    throw Error(error_number::kSubscriptOutOfRange, kAutomationSource,
                "Subscript out of range: the collection has no item " + std::to_string(position));
  }
  return static_cast<std::size_t>(position - 1);
}

Variant Collection::Item(const Variant& index) { return entries_[Find(index)].item; }

void Collection::Remove(const Variant& index) {
  const std::size_t removed = Find(index);
  if (entries_[removed].key) index_.erase(*entries_[removed].key);
  entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(removed));
  for (auto& [key, position] : index_) {
    if (position > removed) --position;
  }
}

std::int32_t Collection::Count() const { return static_cast<std::int32_t>(entries_.size()); }

}  // namespace talvex::automation
