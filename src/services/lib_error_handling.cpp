#include "services/lib_error_handling.h"

#include <array>
#include <charconv>
#include <utility>

#include "automation/error.h"
#include "automation/text.h"
#include "platform/database/connection.h"
#include "platform/suite.h"
#include "services/error_trace.h"
#include "services/lib_general.h"

namespace talvex::Lib_ErrorHandling {

using automation::ErrorState;
using automation::PendingError;
using platform::database::Connection;
using platform::database::ProviderError;

namespace {

constexpr std::string_view kLineBreak = "\r\n";

std::string Hexadecimal(std::int32_t number) {
  std::array<char, 8> digits{};
  const auto end =
      std::to_chars(digits.data(), digits.data() + digits.size(), static_cast<std::uint32_t>(number), 16).ptr;
  return automation::Raised({digits.data(), end});
}

std::shared_ptr<Connection> ConnectionIn(const automation::Variant& conn) {
  return conn.IsObject() ? std::dynamic_pointer_cast<Connection>(conn.As<automation::ObjectRef>()) : nullptr;
}

std::shared_ptr<ProviderError> ErrorAt(const automation::Collection& errors, std::size_t index) {
  return std::static_pointer_cast<ProviderError>(errors.Entries()[index].item.As<automation::ObjectRef>());
}

// Marks the calling thread as busy with the log, for as long as it lives.
class LoggingScope {
 public:
  LoggingScope() { busy_ = true; }
  ~LoggingScope() { busy_ = false; }
  LoggingScope(const LoggingScope&) = delete;
  LoggingScope& operator=(const LoggingScope&) = delete;
  [[nodiscard]] static bool Busy() noexcept { return busy_; }

 private:
  static thread_local bool busy_;
};
thread_local bool LoggingScope::busy_ = false;

void WriteEntry(std::string_view source, const std::string& text, std::int32_t& level) {
  const platform::suite::Log log(Lib_General::gen_getComponent(platform::suite::class_name::kLog));
  log.WriteError(source, text, level);
}

void LogWithoutError(std::int32_t& level, std::string_view method, const Information& information) {
  const std::string text = BoundedEntry(Err_FormatMessage("Not an actual error", 0, method, information));
  automation::ObjectRef log;
  try {
    log = Lib_General::gen_getComponent(platform::suite::class_name::kLog);
  } catch (const automation::Error&) {
    return;  // A note that cannot be written must not become an error.
  }
  platform::suite::Log(std::move(log)).WriteError(method, text, level);
}

}  // namespace

std::string Err_FormatMessage(std::string_view description, std::int32_t number, std::string_view method,
                              const Information& information) {
  std::string text;
  text.append(kLineBreak).append("ERROR 0x").append(Hexadecimal(number)).append(kLineBreak);
  text.append(" METHOD: ").append(method).append(kLineBreak);
  text.append(" DESC: ").append(description).append(".").append(kLineBreak);
  if (information) {
    text.append(" INFO: ").append(Lib_General::Gen_NullToString(*information)).append(".").append(kLineBreak);
  }
  return text;
}

ErrorRecord Err_Capture(std::string_view method, const Information& information) {
  const ErrorState& pending = PendingError();
  return {pending.number, pending.source,
          BoundedTrace(Err_FormatMessage(pending.description, pending.number, method, information)),
          pending.help_file, pending.help_context};
}

void Err_Log(std::int32_t& level, std::string_view method, const Information& information) {
  if (LoggingScope::Busy()) return;
  const LoggingScope busy;
  const ErrorState pending = PendingError();
  if (pending.number == 0) {
    LogWithoutError(level, method, information);
    return;
  }
  const std::string text =
      BoundedEntry(Err_FormatMessage(pending.description, pending.number, method, information));
  try {
    WriteEntry(pending.source, text, level);
  } catch (const automation::Error& failure) {
    ErrorState state = failure.State();
    state.description += pending.description;
    throw automation::Error(std::move(state));
  }
}

void Err_Raise(std::string_view method, const Information& information) {
  ErrorRecord record = Err_Capture(method, information);
  PendingError() = {record.Number, std::move(record.Source), std::move(record.Description),
                    std::move(record.HelpFile), record.HelpContext};
  std::int32_t level = 0;
  Err_Log(level, method, information);
  if (record.Number != 0) throw automation::Error(PendingError());
}

std::string Err_ConnectionErrors(const automation::Variant& conn) {
  const auto connection = ConnectionIn(conn);
  if (connection == nullptr) return {};
  const auto errors = connection->Errors();
  if (errors->Count() == 0) return {};
  std::string text = "Error(s) from connection object: ";
  for (std::size_t i = 0; i < errors->Entries().size(); ++i) {
    const auto error = ErrorAt(*errors, i);
    text.append(" (").append(std::to_string(i + 1)).append(")").append(error->Description);
    text.append("[").append(std::to_string(error->Number)).append("]");
  }
  return text;
}

void Err_AppendLine(std::string& text, std::string_view first, std::string_view second) {
  text.append(kLineBreak).append(first).append("-").append(second);
}

void Err_MapDatabaseError(const automation::Variant& conn) {
  constexpr std::int32_t kDuplicateKey = -2147216504;           // Object-error base + 5000.
  constexpr std::int32_t kNullNotAllowed = -2147216503;         // + 5001
  constexpr std::int32_t kUsedByAccountingRule = -2147216494;   // + 5010
  constexpr std::int32_t kUsedByRequisitionLine = -2147216493;  // + 5011
  const auto connection = ConnectionIn(conn);
  if (connection == nullptr) return;
  const auto errors = connection->Errors();
  if (errors->Count() == 0) return;

  ErrorState& pending = PendingError();
  // A database may keep names in letters of its own.
  const std::string description = automation::Folded(pending.description);
  const auto names = [&](std::string_view constraint) {
    return description.find(automation::Folded(constraint)) != std::string::npos;
  };
  switch (ErrorAt(*errors, 0)->NativeError) {
    case 2627:
      pending.number = kDuplicateKey;
      break;
    case 515:
      pending.number = kNullNotAllowed;
      break;
    case 547:
      if (names("FK_ACCOUNTINGRULE_LEDGERACCOUNT")) {
        pending.number = kUsedByAccountingRule;
      } else if (names("FK_REQUISITIONLINE_LEDGERACCOUNT")) {
        pending.number = kUsedByRequisitionLine;
      }
      break;
    default:
      break;
  }
}

}  // namespace talvex::Lib_ErrorHandling
