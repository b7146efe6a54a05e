#include "platform/database/sql_text.h"

#include <algorithm>
#include <array>

#include "automation/text.h"
#include "platform/database/driver.h"

namespace talvex::platform::database {

namespace {

using automation::SameFolded;

// SQL Server's numbers for texts that it cannot read.
constexpr std::int32_t kIncorrectSyntax = 102;
constexpr std::int32_t kUnclosedQuote = 105;
constexpr std::int32_t kUnclosedComment = 113;

constexpr std::size_t kMostLiterals = 1000;

[[noreturn]] void Refuse(std::int32_t number, const std::string& reason) {
  throw Fault(FaultKind::Other, number, "42000", reason);
}

[[noreturn]] void RefuseText(const std::string& reason) {
  throw Fault(FaultKind::ValueRefused, 8152, "22001", reason);
}

bool IsAscii(std::string_view text) noexcept {
  unsigned char bits = 0;
  for (const char c : text) bits = static_cast<unsigned char>(bits | static_cast<unsigned char>(c));
  return bits < 0x80;
}

enum class CharacterClass : std::uint8_t { Symbol, Blank, Letter, Digit };

constexpr std::array<CharacterClass, 256> MakeClasses() {
  std::array<CharacterClass, 256> classes{};
  for (std::size_t c = 0; c < classes.size(); ++c) {
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c >= 0x80;
    if (letter || c == '_' || c == '@' || c == '#' || c == '$') classes[c] = CharacterClass::Letter;
    if (c >= '0' && c <= '9') classes[c] = CharacterClass::Digit;
    if (c == ' ' || (c >= '\t' && c <= '\r')) classes[c] = CharacterClass::Blank;
  }
  return classes;
}

constexpr std::array<CharacterClass, 256> kClasses = MakeClasses();

CharacterClass ClassOf(char c) noexcept { return kClasses[static_cast<unsigned char>(c)]; }

bool InWord(char c) noexcept { return ClassOf(c) >= CharacterClass::Letter; }

SqlVerb VerbOf(const SqlToken& token) noexcept {
  if (token.kind != SqlTokenKind::Word) return SqlVerb::Other;
  constexpr std::array<std::pair<std::string_view, SqlVerb>, 6> kVerbs = {{{"select", SqlVerb::Select},
                                                                           {"insert", SqlVerb::Insert},
                                                                           {"update", SqlVerb::Update},
                                                                           {"delete", SqlVerb::Delete},
                                                                           {"with", SqlVerb::With},
                                                                           {"set", SqlVerb::Set}}};
  for (const auto& [word, verb] : kVerbs) {
    if (SameFolded(token.text, word)) return verb;
  }
  return SqlVerb::Other;
}

bool Lifts(SqlVerb verb) noexcept { return verb != SqlVerb::Set && verb != SqlVerb::Other; }

// Whether quoted texts stay behind this word, up to the next FROM. Told by length first: this is asked for
// every word.
bool BeginsKeeping(std::string_view word) noexcept {
  switch (word.size()) {
    case 5:
      return SameFolded(word, "group") || SameFolded(word, "order");
    case 6:
      return SameFolded(word, "select");
    case 9:
      return SameFolded(word, "returning");
    default:
      return false;
  }
}

}  // namespace

SqlToken SqlTokenizer::Next() {
  while (at_ < text_.size() && ClassOf(text_[at_]) == CharacterClass::Blank) ++at_;
  if (at_ == text_.size()) return {SqlTokenKind::End, text_.substr(at_)};
  const char c = text_[at_];
  if (ClassOf(c) == CharacterClass::Letter) return Word();
  if (ClassOf(c) == CharacterClass::Digit) return Number();
  switch (c) {
    case '\'':
      return Quoted(SqlTokenKind::Literal, at_, '\'');
    case '"':
      return Quoted(SqlTokenKind::Name, at_, '"');
    case '[':
      return Quoted(SqlTokenKind::Name, at_, ']');
    case '?':
      return Taken(SqlTokenKind::Parameter, at_ + 1);
    case ';':
      return Taken(SqlTokenKind::Semicolon, at_ + 1);
    case '-':
      if (At(at_ + 1) == '-') return LineComment();
      break;
    case '/':
      if (At(at_ + 1) == '*') return BlockComment();
      break;
    default:
      break;
  }
  return Taken(SqlTokenKind::Symbol, at_ + 1);
}

SqlToken SqlTokenizer::NextMeaning() {
  SqlToken token = Next();
  while (token.kind == SqlTokenKind::Comment) token = Next();
  return token;
}

SqlToken SqlTokenizer::Taken(SqlTokenKind kind, std::size_t end) noexcept {
  const SqlToken token{kind, text_.substr(at_, end - at_)};
  at_ = end;
  return token;
}

SqlToken SqlTokenizer::Quoted(SqlTokenKind kind, std::size_t open, char close) {
  for (std::size_t end = open + 1;; end += 2) {
    end = text_.find(close, end);
    if (end == std::string_view::npos) {
      Refuse(kUnclosedQuote,
             "The quotation mark at character " + std::to_string(open + 1) + " is not closed");
    }
    if (At(end + 1) != close) return Taken(kind, end + 1);
  }
}

SqlToken SqlTokenizer::Word() {
  std::size_t end = at_ + 1;
  while (end < text_.size() && InWord(text_[end])) ++end;
  const bool national = end == at_ + 1 && (text_[at_] == 'N' || text_[at_] == 'n') && At(end) == '\'';
  return national ? Quoted(SqlTokenKind::Literal, end, '\'') : Taken(SqlTokenKind::Word, end);
}

SqlToken SqlTokenizer::Number() noexcept {
  const bool hexadecimal = At(at_ + 1) == 'x' || At(at_ + 1) == 'X';
  std::size_t end = at_ + 1;
  for (; end < text_.size(); ++end) {
    const char before = text_[end - 1];
    const bool sign =
        (text_[end] == '+' || text_[end] == '-') && (before == 'e' || before == 'E') && !hexadecimal;
    if (!InWord(text_[end]) && text_[end] != '.' && !sign) break;
  }
  return Taken(SqlTokenKind::Number, end);
}

SqlToken SqlTokenizer::LineComment() noexcept {
  return Taken(SqlTokenKind::Comment, std::min(text_.find('\n', at_), text_.size()));
}

SqlToken SqlTokenizer::BlockComment() {
  std::size_t open = 0;
  for (std::size_t end = at_; end < text_.size(); ++end) {
    if (text_[end] == '/' && At(end + 1) == '*') {
      ++open;
      ++end;
    } else if (text_[end] == '*' && At(end + 1) == '/') {
      --open;
      ++end;
      if (open == 0) return Taken(SqlTokenKind::Comment, end + 1);
    }
  }
  Refuse(kUnclosedComment, "The comment at character " + std::to_string(at_ + 1) + " is not closed");
}

void RefuseTransactionControl(std::string_view text) {
  constexpr std::array<std::string_view, 9> kVerbs = {"begin", "start", "commit",    "end",    "rollback",
                                                      "abort", "save",  "savepoint", "release"};
  SqlTokenizer tokens(text);
  const std::string_view verb = tokens.NextMeaning().text;
  if (std::find(kVerbs.begin(), kVerbs.end(), automation::Folded(verb)) == kVerbs.end()) return;
  throw Fault(FaultKind::Other, 0, "2D000",
              std::string(verb) + ": a statement may not begin, end or mark a transaction; the host does so");
}

void RequireStorableText(std::string_view text) {
  if (text.find('\0') != std::string_view::npos)
    RefuseText("A text holds a NUL character, which is not stored");
  if (!IsAscii(text) && !automation::IsUtf8(text)) RefuseText("A text is not well-formed UTF-8");
}

std::string SqlNameText(const SqlToken& name) {
  if (name.kind != SqlTokenKind::Name) return std::string(name.text);
  const char close = name.text.back();
  const std::string_view inside = name.text.substr(1, name.text.size() - 2);
  return automation::Replaced(inside, std::string(2, close), std::string(1, close));
}

std::optional<std::string> InsertTarget(std::string_view text) {
  SqlTokenizer tokens(text);
  if (VerbOf(tokens.NextMeaning()) != SqlVerb::Insert) return std::nullopt;
  SqlToken token = tokens.NextMeaning();
  if (SameFolded(token.text, "into")) token = tokens.NextMeaning();
  std::string name = SqlNameText(token);
  while (tokens.NextMeaning().text == ".") name = SqlNameText(tokens.NextMeaning());
  return name;
}

bool SetsIsolationLevel(std::string_view text) {
  SqlTokenizer tokens(text);
  constexpr std::array<std::string_view, 4> kWords = {"set", "transaction", "isolation", "level"};
  return std::all_of(kWords.begin(), kWords.end(),
                     [&](std::string_view word) { return SameFolded(tokens.NextMeaning().text, word); });
}

void SqlShape::Start(std::string_view text) {
  source_ = text;
  verb_ = SqlVerb::Other;
  copied_ = tokens_ = depth_ = 0;
  keeps_ = 0;
  shape_.clear();
  parameters_.clear();
  unquoted_.clear();
  // What Parameters() views must not move while more of it is added.
  unquoted_.reserve(text.size());
}

void SqlShape::Read(std::string_view text) {
  Start(text);
  SqlTokenizer tokens(text);
  SqlToken token = tokens.Next();
  for (; token.kind != SqlTokenKind::End && token.kind != SqlTokenKind::Semicolon; token = tokens.Next())
    Take(token);
  if (tokens_ == 0) Refuse(kIncorrectSyntax, "There is no statement in the text");
  CopyUpTo(PlaceOf(token));
  if (token.kind == SqlTokenKind::End) return;
  const SqlToken further = tokens.NextMeaning();
  if (further.kind == SqlTokenKind::End) return;
  Refuse(kIncorrectSyntax,
         "One statement is run at a time, but more text follows the first one, at character " +
             std::to_string(PlaceOf(further) + 1));
}

void SqlShape::Take(const SqlToken& token) {
  if (token.kind == SqlTokenKind::Comment) return Replace(token, " ");
  ++tokens_;
  if (tokens_ == 1) verb_ = VerbOf(token);
  switch (token.kind) {
    case SqlTokenKind::Name:
      TakeWord(token);
      return FoldName(token);
    case SqlTokenKind::Word:
      return TakeWord(token);
    case SqlTokenKind::Literal:
      return TakeLiteral(token);
    case SqlTokenKind::Symbol:
      return TakeSymbol(token.text.front());
    case SqlTokenKind::Parameter:
      parameters_.push_back({true, {}});
      return;
    default:
      return;
  }
}

void SqlShape::TakeWord(const SqlToken& token) {
  const bool is_from = token.kind == SqlTokenKind::Word && SameFolded(token.text, "from");
  if (tokens_ == 2 && verb_ == SqlVerb::Delete && dialect_.delete_takes_from && !is_from) {
    CopyUpTo(PlaceOf(token));
    shape_ += "FROM ";
  }
  const std::uint64_t here = std::uint64_t{1} << std::min<std::size_t>(depth_, 63);
  if (is_from) keeps_ &= ~here;
  if (token.kind == SqlTokenKind::Word && BeginsKeeping(token.text)) keeps_ |= here;
}

void SqlShape::TakeLiteral(const SqlToken& token) {
  const bool national = token.text.front() != '\'';
  if (keeps_ == 0 && Lifts(verb_) && parameters_.size() < kMostLiterals) {
    parameters_.push_back({false, Content(token.text)});
    // A digit right behind it would make another parameter of "?".
    const std::size_t end = PlaceOf(token) + token.text.size();
    const bool before_digit = end < source_.size() && ClassOf(source_[end]) == CharacterClass::Digit;
    Replace(token, before_digit ? "? " : "?");
  } else if (national && dialect_.lacks_national_text) {
    Replace(token, token.text.substr(1));
  }
}

void SqlShape::TakeSymbol(char symbol) noexcept {
  if (symbol == '(') ++depth_;
  if (symbol != ')' || depth_ == 0) return;
  keeps_ &= ~(std::uint64_t{1} << std::min<std::size_t>(depth_, 63));
  --depth_;
}

void SqlShape::CopyUpTo(std::size_t place) {
  shape_.append(source_, copied_, place - copied_);
  copied_ = place;
}

void SqlShape::Replace(const SqlToken& token, std::string_view with) {
  CopyUpTo(PlaceOf(token));
  shape_ += with;
  copied_ += token.text.size();
}

void SqlShape::FoldName(const SqlToken& token) {
  if (!dialect_.folds_plain_names) return;
  const std::string name = automation::Folded(SqlNameText(token));
  Replace(token, '"' + automation::Replaced(name, "\"", "\"\"") + '"');
}

std::size_t SqlShape::PlaceOf(const SqlToken& token) const noexcept {
  return static_cast<std::size_t>(token.text.data() - source_.data());
}

std::string_view SqlShape::Content(std::string_view literal) {
  const std::size_t quote = literal.front() == '\'' ? 0 : 1;
  std::string_view inside = literal.substr(quote + 1, literal.size() - quote - 2);
  std::size_t at = inside.find('\'');
  if (at == std::string_view::npos) return inside;
  const std::size_t start = unquoted_.size();
  for (; at != std::string_view::npos; at = inside.find('\'')) {
    unquoted_.append(inside.substr(0, at + 1));
    inside.remove_prefix(at + 2);
  }
  unquoted_.append(inside);
  return std::string_view(unquoted_).substr(start);
}

}  // namespace talvex::platform::database
