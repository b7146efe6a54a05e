// Errors as every layer of the component raises, records and reports them.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

namespace talvex::automation {

// The source of the errors that this library raises itself.
inline constexpr std::string_view kAutomationSource = "Talvex.Automation";

// The numbers that a caller of the automation platform knows.
namespace error_number {
inline constexpr std::int32_t kInvalidCall = 5;
inline constexpr std::int32_t kOverflow = 6;
inline constexpr std::int32_t kOutOfMemory = 7;
inline constexpr std::int32_t kSubscriptOutOfRange = 9;
inline constexpr std::int32_t kTypeMismatch = 13;
inline constexpr std::int32_t kOutOfStackSpace = 28;
inline constexpr std::int32_t kInternalError = 51;
inline constexpr std::int32_t kFileNotFound = 53;
inline constexpr std::int32_t kFileAlreadyExists = 58;
inline constexpr std::int32_t kFileAccess = 75;
inline constexpr std::int32_t kObjectNotSet = 91;
inline constexpr std::int32_t kInvalidUseOfNull = 94;
inline constexpr std::int32_t kInvalidFileFormat = 321;
inline constexpr std::int32_t kCannotCreateObject = 429;
inline constexpr std::int32_t kNoSuchMember = 438;
inline constexpr std::int32_t kArgumentNotOptional = 449;
inline constexpr std::int32_t kWrongNumberOfArguments = 450;
inline constexpr std::int32_t kDuplicateKey = 457;
inline constexpr std::int32_t kNoCurrentRow = 3021;
inline constexpr std::int32_t kNoSuchColumn = 3265;
inline constexpr std::int32_t kObjectIsClosed = 3704;
inline constexpr std::int32_t kObjectIsOpen = 3705;
inline constexpr std::int32_t kUnspecified = -2147467259;
inline constexpr std::int32_t kRowChanged = -2147217864;
inline constexpr std::int32_t kValueTooLongOrWrongType = -2147217887;
inline constexpr std::int32_t kConstraint = -2147217873;
inline constexpr std::int32_t kStatementRefused = -2147217900;
inline constexpr std::int32_t kCannotOpenDatabase = -2147217843;
}  // namespace error_number

// What is known of one error. A number of 0 means that there is none.
struct ErrorState {
  std::int32_t number = 0;
  std::string source;
  std::string description;
  std::string help_file;
  std::int32_t help_context = 0;
};

// The exception in which an error travels from where it is raised to the handler that deals with it.
class Error : public std::exception {
 public:
  explicit Error(ErrorState state) : state_(std::move(state)) {}
  Error(std::int32_t number, std::string_view source, std::string_view description)
      : state_{number, std::string(source), std::string(description), {}, 0} {}

  [[nodiscard]] const ErrorState& State() const noexcept { return state_; }
  [[nodiscard]] std::int32_t Number() const noexcept { return state_.number; }
  [[nodiscard]] const std::string& Source() const noexcept { return state_.source; }
  [[nodiscard]] const std::string& Description() const noexcept { return state_.description; }
  [[nodiscard]] const char* what() const noexcept override { return state_.description.c_str(); }

 private:
  ErrorState state_;
};

// The error that the calling thread's handlers are dealing with; its number is 0 outside any handler.
[[nodiscard]] ErrorState& PendingError() noexcept;

// Makes an error the pending one for as long as its handler runs, and then gives back the one before, so that
// a handler that ends, by returning or by raising again, leaves nothing behind.
class PendingErrorScope {
 public:
  explicit PendingErrorScope(ErrorState state);
  ~PendingErrorScope();
  PendingErrorScope(const PendingErrorScope&) = delete;
  PendingErrorScope& operator=(const PendingErrorScope&) = delete;

 private:
  ErrorState before_;
};

// The state of the exception being handled. Exceptions of the language itself become error 7 (no memory) or
// 51 (internal error), so that nothing crosses a public method that a caller could not understand. To be
// called inside a catch block only.
[[nodiscard]] ErrorState CurrentExceptionState();

}  // namespace talvex::automation
