// Failures as databases report them.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace talvex::platform::database {

inline constexpr std::string_view kErrorSource = "Talvex.Platform.Database";

// What went wrong in a database, as far as callers act on it.
enum class FaultKind {
  Duplicate,       // A key is there already.
  NullNotAllowed,  // A column that must have a value would get none.
  Constraint,      // Another rule of the tables; for a foreign key the text names the constraint.
  ValueRefused,    // A value too long, or of the wrong type, for its column.
  Conflict,        // Somebody else's work stands in the way: busy, deadlock, snapshot too old.
  CannotOpen,      // The database is not there, or lets nobody in.
  Other            // A statement that the database refuses.
};

// A failure that a driver reports. `native_error` is SQL Server's number for it (2627, 515, 547, 1205) where
// there is one, else the database's own.
class Fault : public std::runtime_error {
 public:
  Fault(FaultKind kind, std::int32_t native_error, std::string sql_state, const std::string& description)
      : std::runtime_error(description),
        kind_(kind),
        native_error_(native_error),
        sql_state_(std::move(sql_state)) {}
  [[nodiscard]] FaultKind Kind() const noexcept { return kind_; }
  [[nodiscard]] std::int32_t NativeError() const noexcept { return native_error_; }
  [[nodiscard]] const std::string& SqlState() const noexcept { return sql_state_; }

 private:
  FaultKind kind_;
  std::int32_t native_error_;
  std::string sql_state_;
};

// The number that a failure of this kind carries in the record-set interface.
[[nodiscard]] std::int32_t ErrorNumberOf(FaultKind kind) noexcept;

// Raises the failure as an error of the record-set interface, and tells the calling thread's transaction when
// it was a conflict, since running the whole transaction again may succeed.
[[noreturn]] void RaiseAsError(const Fault& fault);

// Raises the fault of a statement that a reading transaction does not take: native error 3906, SQLSTATE
// 25006, and what to do instead.
[[noreturn]] void RefuseToWrite();

// Tells the calling thread's transaction, if there is one, that somebody else's work stood in its way.
void NoteConflict() noexcept;

}  // namespace talvex::platform::database
