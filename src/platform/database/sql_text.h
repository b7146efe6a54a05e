// Statement texts in the SQL Server dialect, as far as drivers must understand them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace talvex::platform::database {

enum class SqlTokenKind {
  End,
  Word,       // A keyword or a plain name.
  Name,       // A name in brackets or in double quotes.
  Literal,    // A text in single quotes, its prefix N included.
  Number,     // 12, 1.5E-3
  Parameter,  // "?"
  Semicolon,
  Symbol,  // Any other character.
  Comment  // "-- to the end of the line" or "/* ... */", which nest.
};

// A token as it stands in the text, quotes included; empty at the end.
struct SqlToken {
  SqlTokenKind kind = SqlTokenKind::End;
  std::string_view text;
};

// Reads a text token by token without copying. A quoted text, a name or a comment that has no end raises
// Fault.
class SqlTokenizer {
 public:
  explicit SqlTokenizer(std::string_view text) noexcept : text_(text) {}

  [[nodiscard]] SqlToken Next();
  // The same without comments.
  [[nodiscard]] SqlToken NextMeaning();

 private:
  [[nodiscard]] SqlToken Taken(SqlTokenKind kind, std::size_t end) noexcept;
  [[nodiscard]] SqlToken Quoted(SqlTokenKind kind, std::size_t open, char close);
  [[nodiscard]] SqlToken Word();
  [[nodiscard]] SqlToken Number() noexcept;
  [[nodiscard]] SqlToken LineComment() noexcept;
  [[nodiscard]] SqlToken BlockComment();
  [[nodiscard]] char At(std::size_t place) const noexcept {
    return place < text_.size() ? text_[place] : '\0';
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

// What a name says: without its brackets or quotes, doubled ones as one.
[[nodiscard]] std::string SqlNameText(const SqlToken& name);

// The name of the table that an INSERT writes to, without the names of schemas before it; nothing for other
// texts.
[[nodiscard]] std::optional<std::string> InsertTarget(std::string_view text);

// Whether the text is "SET TRANSACTION ISOLATION LEVEL ...".
[[nodiscard]] bool SetsIsolationLevel(std::string_view text);

// What a statement does, by its first word.
enum class SqlVerb { Select, Insert, Update, Delete, With, Set, Other };

// Where a database's language lacks what the dialect has.
struct SqlDialect {
  bool delete_takes_from = false;    // "DELETE T" must be written "DELETE FROM T".
  bool lacks_national_text = false;  // N'text' must be written 'text'.
  bool folds_plain_names = false;    // Plain names are small letters: [Name] must be written "name".
};

// Raises Fault (SQLSTATE 2D000) for a text that begins, ends or marks a transaction ("COMMIT", "SAVE
// TRANSACTION A"): a session would not know any more what is kept and what is undone. Transactions are those
// of the host.
void RefuseTransactionControl(std::string_view text);

// Raises Fault (ValueRefused) for a text that is not UTF-8, or holds a NUL character: databases would cut it,
// keep it as it is, or refuse it with words of their own.
void RequireStorableText(std::string_view text);

// A statement with "?" in place of its quoted texts, which become parameters: statements that differ in their
// quoted texts only have one shape, and so need to be prepared once.
//
// Quoted texts stay where they name or shape what comes out (the columns selected or returned, GROUP BY,
// ORDER BY), in statements other than SELECT, INSERT, UPDATE, DELETE and WITH, and behind the thousandth.
// Comments become a blank.
//
// One object serves one statement after another, to reuse its memory: drivers read every statement with it.
class SqlShape {
 public:
  // What one "?" of the shape stands for: the next value that the caller gave, or a quoted text.
  struct Parameter {
    bool given;
    std::string_view literal;
  };

  explicit SqlShape(SqlDialect dialect = {}) noexcept : dialect_(dialect) {}

  // Reads a statement. Raises Fault when there is none in the text, when a quoted text, a name or a comment
  // has no end, and when something other than comments follows the ";" that ends the statement. What
  // Parameters() views is valid until the next Read, and as long as `text` is.
  void Read(std::string_view text);

  [[nodiscard]] SqlVerb Verb() const noexcept { return verb_; }
  [[nodiscard]] const std::string& Text() const noexcept { return shape_; }
  [[nodiscard]] const std::vector<Parameter>& Parameters() const noexcept { return parameters_; }

 private:
  void Start(std::string_view text);
  void Take(const SqlToken& token);
  void TakeWord(const SqlToken& token);
  void TakeLiteral(const SqlToken& token);
  void TakeSymbol(char symbol) noexcept;
  void CopyUpTo(std::size_t place);
  void Replace(const SqlToken& token, std::string_view with);
  void FoldName(const SqlToken& token);
  [[nodiscard]] std::size_t PlaceOf(const SqlToken& token) const noexcept;
  [[nodiscard]] std::string_view Content(std::string_view literal);

  SqlDialect dialect_;
  SqlVerb verb_ = SqlVerb::Other;
  std::string_view source_;
  std::size_t copied_ = 0;   // How much of the source stands in the shape.
  std::size_t tokens_ = 0;   // Tokens met, without comments.
  std::size_t depth_ = 0;    // Of parentheses.
  std::uint64_t keeps_ = 0;  // One bit per depth: whether quoted texts there stay.
  std::string shape_;
  std::string unquoted_;  // The texts that hold doubled quotes, with single ones.
  std::vector<Parameter> parameters_;
};

}  // namespace talvex::platform::database
