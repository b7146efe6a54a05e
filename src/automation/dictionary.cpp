#include "automation/dictionary.h"

#include "automation/release.h"

namespace talvex::automation {

Dictionary::~Dictionary() {
  for (auto& [key, item] : entries_) LetGo(std::move(item));
}

void Dictionary::Add(const std::string& key, const Variant& item) {
  if (!index_.emplace(key, entries_.size()).second) {
    throw Error(error_number::kDuplicateKey, kAutomationSource,
                "This key is already associated with an element of this collection: '" + key + "'");
  }
  entries_.emplace_back(key, item);
}

bool Dictionary::Exists(const std::string& key) { return index_.contains(key); }

Variant Dictionary::Item(const std::string& key) {
  const auto found = index_.find(key);
  return found == index_.end() ? Variant() : entries_[found->second].second;
}

void Dictionary::SetItem(const std::string& key, const Variant& item) {
  const auto found = index_.find(key);
  if (found == index_.end()) {
    Add(key, item);
  } else {
    entries_[found->second].second = item;
  }
}

void Dictionary::Remove(const std::string& key) {
  const auto found = index_.find(key);
  if (found == index_.end()) {
    throw Error(error_number::kInvalidCall, kAutomationSource,
                "Invalid procedure call: there is no key '" + key + "'");
  }
  const std::size_t removed = found->second;
  entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(removed));
  index_.erase(found);
  for (auto& [name, position] : index_) {
    if (position > removed) --position;
  }
}

void Dictionary::RemoveAll() {
  entries_.clear();
  index_.clear();
}

Array Dictionary::Keys() {
  std::vector<Variant> keys;
  for (const auto& [key, item] : entries_) keys.emplace_back(key);
  return keys;
}

Array Dictionary::Items() {
  std::vector<Variant> items;
  for (const auto& [key, item] : entries_) items.push_back(item);
  return items;
}

std::int32_t Dictionary::Count() const { return static_cast<std::int32_t>(entries_.size()); }

}  // namespace talvex::automation
