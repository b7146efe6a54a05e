#include "platform/database/filter_parser.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "automation/text.h"
#include "platform/database/recordset_errors.h"

namespace talvex::platform::database {

namespace {

bool IsBlank(char c) noexcept { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
bool IsDigit(char c) noexcept { return c >= '0' && c <= '9'; }
bool BeginsName(char c) noexcept {
  const char folded = automation::FoldCase(c);
  const bool beyond_ascii = (static_cast<unsigned char>(c) & 0x80U) != 0;
  return (folded >= 'a' && folded <= 'z') || c == '_' || beyond_ascii;
}
bool ContinuesName(char c) noexcept { return BeginsName(c) || IsDigit(c); }

enum class TokenKind : std::uint8_t { Name, BracketedName, Text, Number, Date, Symbol, End };

struct Token {
  TokenKind kind = TokenKind::End;
  std::size_t at = 0;         // Where it begins, in bytes.
  std::string_view source{};  // As it stands in the filter.
  std::string content{};      // Without its quotes or brackets.
};

// Cuts a filter into tokens.
class Lexer {
 public:
  explicit Lexer(std::string_view text) : text_(text) {}

  [[nodiscard]] Token Next() {
    while (at_ < text_.size() && IsBlank(text_[at_])) ++at_;
    if (at_ == text_.size()) return {.at = at_};
    const char c = text_[at_];
    if (c == '\'') return Enclosed(TokenKind::Text, '\'');
    if (c == '[') return Enclosed(TokenKind::BracketedName, ']');
    if (c == '#') return Enclosed(TokenKind::Date, '#');
    if (BeginsName(c)) return Plain(TokenKind::Name, NameEnd());
    if (const std::size_t end = NumberEnd(); end > at_) return Plain(TokenKind::Number, end);
    return Plain(TokenKind::Symbol, SymbolEnd());
  }

  [[noreturn]] void Fail(std::size_t at, std::string_view what) const {
    const std::size_t position = automation::CharacterCount(text_.substr(0, at)) + 1;
    RaiseWrongArgument("The filter is not understood at position " + std::to_string(position) + ": " +
                       std::string(what));
  }

 private:
  Token Plain(TokenKind kind, std::size_t end) {
    const std::size_t begin = std::exchange(at_, end);
    const std::string_view source = text_.substr(begin, end - begin);
    return {kind, begin, source, std::string(source)};
  }

  // A token between two marks; the closing one doubled stands for itself.
  Token Enclosed(TokenKind kind, char close) {
    const std::size_t begin = at_++;
    std::string content;
    for (;; ++at_) {
      const std::size_t end = text_.find(close, at_);
      if (end == std::string_view::npos) Fail(begin, std::string("what begins here has no closing ") + close);
      content.append(text_, at_, end - at_);
      at_ = end + 1;
      if (at_ == text_.size() || text_[at_] != close) break;
      content += close;
    }
    return {kind, begin, text_.substr(begin, at_ - begin), std::move(content)};
  }

  [[nodiscard]] std::size_t NameEnd() const {
    std::size_t end = at_;
    while (end < text_.size() && ContinuesName(text_[end])) ++end;
    return end;
  }

  [[nodiscard]] std::size_t DigitsEnd(std::size_t from) const {
    while (from < text_.size() && IsDigit(text_[from])) ++from;
    return from;
  }

  [[nodiscard]] bool HasSign(std::size_t at) const {
    return at < text_.size() && (text_[at] == '-' || text_[at] == '+');
  }

  // Behind the number that begins here: a sign, digits, a point with digits, an exponent. Where none begins,
  // here.
  [[nodiscard]] std::size_t NumberEnd() const {
    const std::size_t digits = HasSign(at_) ? at_ + 1 : at_;
    std::size_t end = DigitsEnd(digits);
    if (end < text_.size() && text_[end] == '.') {
      const std::size_t decimals = DigitsEnd(end + 1);
      end = decimals - digits > 1 ? decimals : digits;
    }
    if (end == digits) return at_;
    if (end < text_.size() && automation::FoldCase(text_[end]) == 'e') {
      const std::size_t exponent = HasSign(end + 1) ? end + 2 : end + 1;
      if (const std::size_t last = DigitsEnd(exponent); last > exponent) end = last;
    }
    return end;
  }

  [[nodiscard]] std::size_t SymbolEnd() const {
    const std::string_view two = text_.substr(at_, 2);
    return at_ + (two == "<>" || two == "<=" || two == ">=" ? 2 : 1);
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

class Parser {
 public:
  Parser(std::string_view text, const RowSet& rows) : lexer_(text), rows_(rows), token_(lexer_.Next()) {}

  [[nodiscard]] Condition Whole() {
    Condition condition = Alternatives();
    if (token_.kind != TokenKind::End) FailAtToken("AND, OR or the end");
    return condition;
  }

 private:
  Condition Alternatives() { return Chain(Condition::Kind::Any, "OR", &Parser::Conjunction); }
  Condition Conjunction() { return Chain(Condition::Kind::All, "AND", &Parser::Operand); }

  Condition Chain(Condition::Kind kind, std::string_view joined_by, Condition (Parser::*part)()) {
    Condition first = (this->*part)();
    if (!IsWord(joined_by)) return first;
    Condition chain;
    chain.kind = kind;
    chain.parts.push_back(std::move(first));
    while (IsWord(joined_by)) {
      Advance();
      chain.parts.push_back((this->*part)());
    }
    return chain;
  }

  Condition Operand() {
    if (!IsSymbol("(")) return Statement();
    constexpr int kDeepest =
        200;  // Far deeper than any filter that somebody means, far shallower than the stack.
    if (++depth_ > kDeepest) lexer_.Fail(token_.at, "parentheses are nested more than 200 deep");
    Advance();
    Condition condition = Alternatives();
    if (!IsSymbol(")")) FailAtToken("AND, OR or a closing parenthesis");
    Advance();
    --depth_;
    return condition;
  }

  // What is said about one column.
  Condition Statement() {
    Condition condition;
    condition.column = Column();
    if (IsWord("IS")) {
      Advance();
      ReadNullTest(condition);
    } else if (IsWord("LIKE")) {
      Advance();
      condition.kind = Condition::Kind::Like;
      condition.pattern = LikePattern(LiteralText());
    } else {
      condition.kind = Condition::Kind::Compare;
      condition.comparison = ReadComparison();
      condition.literal = Literal(automation::Replaced(LiteralText(), "[%]", "%"));
    }
    return condition;
  }

  std::size_t Column() {
    if (token_.kind != TokenKind::Name && token_.kind != TokenKind::BracketedName)
      FailAtToken("a column name");
    const auto column = rows_.Find(token_.content);
    if (!column) RaiseNoSuchColumn(token_.content);
    Advance();
    return *column;
  }

  void ReadNullTest(Condition& condition) {
    const bool negated = IsWord("NOT");
    if (negated) Advance();
    if (!IsWord("NULL")) FailAtToken(negated ? "NULL" : "NULL or NOT NULL");
    condition.kind = negated ? Condition::Kind::IsNotNull : Condition::Kind::IsNull;
    Advance();
  }

  Comparison ReadComparison() {
    static constexpr std::pair<std::string_view, Comparison> kSymbols[] = {
        {"=", Comparison::Equal},        {"<>", Comparison::Unequal}, {"<", Comparison::Less},
        {"<=", Comparison::LessOrEqual}, {">", Comparison::Greater},  {">=", Comparison::GreaterOrEqual}};
    for (const auto& [symbol, comparison] : kSymbols) {
      if (!IsSymbol(symbol)) continue;
      Advance();
      return comparison;
    }
    FailAtToken("a comparison, LIKE or IS");
  }

  std::string LiteralText() {
    if (token_.kind != TokenKind::Text && token_.kind != TokenKind::Number &&
        token_.kind != TokenKind::Date) {
      FailAtToken("a text in quotes, a number or a date");
    }
    std::string text = std::move(token_.content);
    Advance();
    return text;
  }

  [[nodiscard]] bool IsWord(std::string_view word) const {
    return token_.kind == TokenKind::Name && automation::SameFolded(token_.content, word);
  }
  [[nodiscard]] bool IsSymbol(std::string_view symbol) const {
    return token_.kind == TokenKind::Symbol && token_.content == symbol;
  }
  void Advance() { token_ = lexer_.Next(); }

  [[noreturn]] void FailAtToken(std::string_view expected) const {
    const std::string found =
        token_.kind == TokenKind::End ? "the filter ends" : std::string(token_.source) + " stands";
    lexer_.Fail(token_.at, found + " where " + std::string(expected) + " is expected");
  }

  Lexer lexer_;
  const RowSet& rows_;
  Token token_;
  int depth_ = 0;
};

}  // namespace

Condition ParseFilter(std::string_view text, const RowSet& rows) { return Parser(text, rows).Whole(); }

}  // namespace talvex::platform::database
