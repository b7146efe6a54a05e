#include "adapters/sqlite/statement_cache.h"

#include <utility>

namespace talvex::adapters::sqlite {

Statement* StatementCache::Find(std::string_view text) {
  const auto found = by_text_.find(text);
  if (found == by_text_.end()) return nullptr;
  entries_.splice(entries_.begin(), entries_, found->second);
  return found->second->statement.get();
}

Statement& StatementCache::Keep(const std::string& text, std::unique_ptr<Statement> statement) {
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

void StatementCache::Clear() noexcept {
  by_text_.clear();
  entries_.clear();
  long_statement_.reset();
}

}  // namespace talvex::adapters::sqlite
