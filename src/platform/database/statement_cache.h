// The prepared statements of a session.
#pragma once

#include <cstddef>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace talvex::platform::database {

// Keeps the statements used last, up to a number; the least recently used one makes room for a new one. A
// text that is unusually long is kept until the next such one only, so that a long list of values does not
// fill the memory. `Statement` is a driver's own.
template <class Statement>
class StatementCache {
 public:
  static constexpr std::size_t kMostStatements = 256;
  static constexpr std::size_t kLongestText = 8192;

  // The statement with that text; null when it is not kept.
  [[nodiscard]] Statement* Find(std::string_view text) {
    const auto found = by_text_.find(text);
    if (found == by_text_.end()) return nullptr;
    entries_.splice(entries_.begin(), entries_, found->second);
    return found->second->statement.get();
  }

  // Keeps a statement whose text is not kept. The reference is valid until the next call.
  Statement& Keep(const std::string& text, std::unique_ptr<Statement> statement) {
    if (text.size() > kLongestText) {
      long_statement_ = std::move(statement);
      return *long_statement_;
    }
    if (entries_.size() == kMostStatements) {
      by_text_.erase(entries_.back().text);
      entries_.pop_back();
    }
    entries_.push_front({text, std::move(statement)});
    by_text_.emplace(entries_.front().text, entries_.begin());
    return *entries_.front().statement;
  }

  // Lets go of the statement with that text, if it is kept.
  void Drop(std::string_view text) {
    const auto found = by_text_.find(text);
    if (found == by_text_.end()) return;
    const auto entry = found->second;
    by_text_.erase(found);
    entries_.erase(entry);
  }

  void Clear() noexcept {
    by_text_.clear();
    entries_.clear();
    long_statement_.reset();
  }

  [[nodiscard]] std::size_t Size() const noexcept { return by_text_.size(); }

 private:
  struct Entry {
    std::string text;
    std::unique_ptr<Statement> statement;
  };

  std::list<Entry> entries_;  // The one used last comes first.
  std::unordered_map<std::string_view, typename std::list<Entry>::iterator>
      by_text_;  // The keys view the entries' texts.
  std::unique_ptr<Statement> long_statement_;
};

}  // namespace talvex::platform::database
