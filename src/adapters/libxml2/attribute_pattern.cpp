#include "adapters/libxml2/attribute_pattern.h"

#include "automation/text.h"

namespace talvex::adapters::libxml2 {

namespace {

bool BeginsName(char c) noexcept {
  const char folded = automation::FoldCase(c);
  return (folded >= 'a' && folded <= 'z') || c == '_';
}

bool ContinuesName(char c) noexcept {
  return BeginsName(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

// Takes what it looks for from the beginning of a text, step by step; one that fails makes all later ones
// fail.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : rest_(text) {}

  void Take(std::string_view word) {
    good_ = good_ && rest_.starts_with(word);
    if (good_) rest_.remove_prefix(word.size());
  }
  void PassBlanks() {
    while (rest_.starts_with(' ')) rest_.remove_prefix(1);
  }
  std::string Name() {
    std::size_t length = 0;
    if (!rest_.empty() && BeginsName(rest_.front())) {
      while (length < rest_.size() && ContinuesName(rest_[length])) ++length;
    }
    good_ = good_ && length > 0;
    return Cut(length);
  }
  std::string Literal() {
    const bool quoted = rest_.starts_with('\'') || rest_.starts_with('"');
    const std::size_t end = quoted ? rest_.find(rest_.front(), 1) : std::string_view::npos;
    good_ = good_ && end != std::string_view::npos;
    return good_ ? Cut(end + 1).substr(1, end - 1) : std::string();
  }
  [[nodiscard]] bool IsDone() const noexcept { return good_ && rest_.empty(); }

 private:
  std::string Cut(std::size_t length) {
    std::string cut(rest_.substr(0, length));
    rest_.remove_prefix(length);
    return cut;
  }

  std::string_view rest_;
  bool good_ = true;
};

}  // namespace

std::optional<AttributePattern> ParseAttributePattern(std::string_view xpath) {
  Scanner scanner(xpath);
  AttributePattern pattern;
  scanner.Take("//");
  pattern.element = scanner.Name();
  scanner.Take("[@");
  pattern.attribute = scanner.Name();
  scanner.PassBlanks();
  scanner.Take("=");
  scanner.PassBlanks();
  pattern.value = scanner.Literal();
  scanner.Take("]");
  return scanner.IsDone() ? std::optional(std::move(pattern)) : std::nullopt;
}

}  // namespace talvex::adapters::libxml2
