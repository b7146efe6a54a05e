#include "adapters/odbc/faults.h"

#include <algorithm>
#include <array>

#include "automation/text.h"

namespace talvex::adapters::odbc {

namespace {

using platform::database::Fault;
using platform::database::FaultKind;

struct Meaning {
  FaultKind kind;
  std::int32_t native_error;  // 0: the server's own.
  const char* sql_state;
};

constexpr Meaning kDuplicate{FaultKind::Duplicate, 2627, "23000"};
constexpr Meaning kNull{FaultKind::NullNotAllowed, 515, "23000"};
constexpr Meaning kConstraint{FaultKind::Constraint, 547, "23000"};
constexpr Meaning kValue{FaultKind::ValueRefused, 8152, "22001"};
constexpr Meaning kConflict{FaultKind::Conflict, 1205, "40001"};
constexpr Meaning kCannotOpen{FaultKind::CannotOpen, 4060, "08001"};
constexpr Meaning kLoginFailed{FaultKind::CannotOpen, 18456, "28000"};

// SQL Server's numbers.
struct NumberRule {
  std::int32_t number;
  Meaning meaning;
};
constexpr std::array kNumberRules = std::to_array<NumberRule>({
    {2627, kDuplicate},                                            // A primary or unique key.
    {2601, kDuplicate},                                            // A unique index.
    {515, kNull},          {547, kConstraint},    {8152, kValue},  // A text too long for its column.
    {2628, kValue},                                                // The same, with the column's name.
    {245, kValue},                                                 // No number in a text.
    {241, kValue},                                                 // No date in a text.
    {242, kValue},                                                 // A date out of range.
    {295, kValue},                                                 // The same for a short date.
    {206, kValue},                                                 // Types that do not go together.
    {220, kValue},                                                 // A number out of range.
    {8114, kValue},                                                // A value that cannot be converted.
    {8115, kValue},                                                // A number too large when converted.
    {1205, kConflict},                                             // The victim of a deadlock.
    {1222, kConflict},                                             // A lock waited for too long.
    {3960, kConflict},                                             // A snapshot too old.
    {4060, kCannotOpen},                                           // The database is not there.
    {18456, kLoginFailed}, {18452, kLoginFailed},                  // The login is not trusted.
});

// The standard's classification. A short state stands for all that begin with it and are not listed before.
struct StateRule {
  std::string_view state;
  Meaning meaning;
};
constexpr std::array kStateRules = std::to_array<StateRule>({
    {"23505", kDuplicate},
    {"23502", kNull},
    {"23503", kConstraint},
    {"23514", kValue},  // The checks of our tables are about lengths and values, not about other rows.
    {"23", kConstraint},
    {"22012", {FaultKind::Other, 8134, "22012"}},  // Division by zero.
    {"22", kValue},
    {"42804", kValue},
    {"40", kConflict},
    {"55P03", kConflict},
    {"25P02", {FaultKind::Other, 3930, "25000"}},
    {"42P01", {FaultKind::Other, 208, "42S02"}},
    {"42703", {FaultKind::Other, 207, "42S22"}},
    {"42601", {FaultKind::Other, 102, "42000"}},
    {"28", kLoginFailed},
    {"3D000", kCannotOpen},
    {"53300", kCannotOpen},
});

const Meaning* MeaningByNumber(const Diagnostic& record) {
  const auto* const rule =
      std::find_if(kNumberRules.begin(), kNumberRules.end(),
                   [&](const NumberRule& candidate) { return candidate.number == record.native_error; });
  return rule == kNumberRules.end() ? nullptr : &rule->meaning;
}

const Meaning* MeaningByState(const Diagnostic& record) {
  const auto* const rule =
      std::find_if(kStateRules.begin(), kStateRules.end(),
                   [&](const StateRule& candidate) { return record.sql_state.starts_with(candidate.state); });
  return rule == kStateRules.end() ? nullptr : &rule->meaning;
}

using Reading = const Meaning* (*)(const Diagnostic&);

Fault FaultOf(const Diagnostic& record, const Meaning& meaning) {
  const std::int32_t number = meaning.native_error != 0 ? meaning.native_error : record.native_error;
  return {meaning.kind, number, meaning.sql_state, PlainMessage(record.message)};
}

}  // namespace

std::string PlainMessage(std::string_view message) {
  // "[FreeTDS][SQL Server]Violation of ..." and "ERROR: duplicate key ...;\nError while executing the query".
  while (message.starts_with('[')) {
    const std::size_t end = message.find(']');
    if (end == std::string_view::npos) break;
    message.remove_prefix(end + 1);
  }
  message = message.substr(0, message.find('\n'));
  message = automation::Trimmed(message);
  for (const std::string_view severity : {"ERROR: ", "FATAL: ", "PANIC: "}) {
    if (message.starts_with(severity)) message.remove_prefix(severity.size());
  }
  while (message.ends_with(';') || message.ends_with('\r')) message.remove_suffix(1);
  return std::string(automation::Trimmed(message));
}

Fault FaultOf(std::span<const Diagnostic> records) {
  for (const Reading reading : {&MeaningByNumber, &MeaningByState}) {
    for (const Diagnostic& record : records) {
      if (const Meaning* const meaning = reading(record)) return FaultOf(record, *meaning);
    }
  }
  if (records.empty()) return {FaultKind::Other, 0, "HY000", "The driver reports a failure without a reason"};
  const Diagnostic& first = records.front();
  return {FaultKind::Other, first.native_error, first.sql_state, PlainMessage(first.message)};
}

bool TellsLoss(std::span<const Diagnostic> records) noexcept {
  // 08: no connection. 57P01 to 57P03: the server is going down, has crashed, or is starting.
  constexpr std::array<std::string_view, 4> kStates = {"08", "57P01", "57P02", "57P03"};
  return std::any_of(records.begin(), records.end(), [&](const Diagnostic& record) {
    return std::any_of(kStates.begin(), kStates.end(),
                       [&](std::string_view state) { return record.sql_state.starts_with(state); });
  });
}

Fault LossOf(std::span<const Diagnostic> records) {
  const std::string reason = records.empty() ? "" : ": " + PlainMessage(records.front().message);
  return {FaultKind::CannotOpen, 0, "08S01",
          "The connection to the database was lost. What was not committed is undone; whether the last "
          "statement was kept is not known" +
              reason};
}

}  // namespace talvex::adapters::odbc
