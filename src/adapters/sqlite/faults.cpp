#include "adapters/sqlite/faults.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace talvex::adapters::sqlite {

namespace {

using platform::database::Fault;
using platform::database::FaultKind;

struct Rule {
  int code;  // An extended result code, or a primary one, which stands for all that are not listed before it.
  FaultKind kind;
  std::int32_t native_error;  // 0: SQLite's own code.
  const char* sql_state;
  const char* meaning;  // Said before SQLite's message where that alone is not clear.
};

// In order of precedence.
constexpr std::array kRules = std::to_array<Rule>({
    {SQLITE_CONSTRAINT_UNIQUE, FaultKind::Duplicate, 2627, "23000", ""},
    {SQLITE_CONSTRAINT_PRIMARYKEY, FaultKind::Duplicate, 2627, "23000", ""},
    {SQLITE_CONSTRAINT_ROWID, FaultKind::Duplicate, 2627, "23000", ""},
    {SQLITE_CONSTRAINT_NOTNULL, FaultKind::NullNotAllowed, 515, "23000", ""},
    {SQLITE_CONSTRAINT_CHECK, FaultKind::ValueRefused, 8152, "22001", ""},
    {SQLITE_CONSTRAINT_DATATYPE, FaultKind::ValueRefused, 8152, "22001", ""},
    {SQLITE_CONSTRAINT, FaultKind::Constraint, 547, "23000", ""},
    {SQLITE_MISMATCH, FaultKind::ValueRefused, 8152, "22001", "A value of the wrong type: "},
    {SQLITE_TOOBIG, FaultKind::ValueRefused, 8152, "22001", "A value that is too long: "},
    {SQLITE_BUSY, FaultKind::Conflict, 1205, "40001", ""},
    {SQLITE_LOCKED, FaultKind::Conflict, 1205, "40001", ""},
    {SQLITE_CANTOPEN, FaultKind::CannotOpen, 4060, "08001", ""},
    {SQLITE_NOTADB, FaultKind::CannotOpen, 4060, "08001", ""},
    {SQLITE_READONLY, FaultKind::Other, 0, "HY000", "The database cannot be written to: "},
    {SQLITE_FULL, FaultKind::Other, 0, "HY000", "There is no room left for the database: "},
    {SQLITE_IOERR, FaultKind::Other, 0, "HY000", "The database file cannot be read or written: "},
    {SQLITE_CORRUPT, FaultKind::Other, 0, "HY000", "The database file is damaged: "},
});
constexpr Rule kAnyOther{0, FaultKind::Other, 0, "HY000", ""};

constexpr int PrimaryOf(int code) { return code & 0xFF; }

const Rule& RuleFor(int code) {
  const auto* const rule = std::find_if(kRules.begin(), kRules.end(), [code](const Rule& candidate) {
    return candidate.code == code || candidate.code == PrimaryOf(code);
  });
  return rule == kRules.end() ? kAnyOther : *rule;
}

// The name of a CHECK constraint is a sentence that says what the column takes: it is the whole message.
std::string_view WithoutPrefix(std::string_view message) {
  constexpr std::string_view kPrefix = "CHECK constraint failed: ";
  return message.starts_with(kPrefix) ? message.substr(kPrefix.size()) : message;
}

}  // namespace

Fault FaultOf(int code, const std::string& message) {
  const Rule& rule = RuleFor(code);
  return {rule.kind, rule.native_error != 0 ? rule.native_error : code, rule.sql_state,
          rule.meaning + std::string(WithoutPrefix(message))};
}

bool IsDamage(int code) noexcept {
  const int primary = PrimaryOf(code);
  return primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB || primary == SQLITE_IOERR;
}

}  // namespace talvex::adapters::sqlite
