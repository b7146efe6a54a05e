// The prepared statements of a session.
#pragma once

#include <cstddef>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "adapters/sqlite/statement.h"

namespace talvex::adapters::sqlite {

// Keeps the statements used last, up to a number; the least recently used one makes room for a new one. A
// text that is unusually long is kept until the next such one only, so that a long list of values does not
// fill the memory.
class StatementCache {
 public:
  static constexpr std::size_t kMostStatements = 256;
  static constexpr std::size_t kLongestText = 8192;

  // The statement with that text; null when it is not kept.
  [[nodiscard]] Statement* Find(std::string_view text);

  // Keeps a statement whose text is not kept. The reference is valid until the next call.
  Statement& Keep(const std::string& text, std::unique_ptr<Statement> statement);

  void Clear() noexcept;
  [[nodiscard]] std::size_t Size() const noexcept { return by_text_.size(); }

 private:
  struct Entry {
    std::string text;
    std::unique_ptr<Statement> statement;
  };

  std::list<Entry> entries_;  // The one used last comes first.
  std::unordered_map<std::string_view, std::list<Entry>::iterator>
      by_text_;  // The keys view the entries' texts.
  std::unique_ptr<Statement> long_statement_;
};

}  // namespace talvex::adapters::sqlite
