// Capturing, formatting, logging and raising errors: how the methods that have a handler fail.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "automation/variant.h"

namespace talvex::Lib_ErrorHandling {

// A captured error. `Description` holds the formatted error text, not the raw description.
struct ErrorRecord {
  std::int32_t Number = 0;
  std::string Source;
  std::string Description;
  std::string HelpFile;
  std::int32_t HelpContext = 0;
};

// What a method adds to its error text; nothing leaves the INFO line out, an empty text keeps it.
using Information = std::optional<automation::Variant>;

// The error text:
//   CRLF ERROR 0x<number in hexadecimal> CRLF
//    METHOD: <method> CRLF
//    DESC: <description>. CRLF
//    INFO: <information>. CRLF     (only with an information value)
[[nodiscard]] std::string Err_FormatMessage(std::string_view description, std::int32_t number,
                                            std::string_view method, const Information& information);

// The pending error as a record. Its description is at most 64 KB long: a longer one keeps its first and its
// last levels and says between them how many were left out.
[[nodiscard]] ErrorRecord Err_Capture(std::string_view method, const Information& information);

// Writes one entry for the pending error to the suite log, its text formatted around the description as it
// stands; of more than 32 levels, or 64 KB, the first and the last ones, with the number of those left out.
// With no error pending, the entry says "Not an actual error", and a log that cannot be created is passed
// over in silence. While the thread is busy with the log already, nothing happens. When the log fails on a
// real error, that failure is raised, and its description ends with the text of the error that was to be
// logged.
void Err_Log(std::int32_t& level, std::string_view method, const Information& information);

// What every handler ends in. Puts the error text around the pending error's description, logs the pending
// error with level 0 (the entry therefore shows this level twice), and raises it, so that the outermost
// caller reads the chain of calls. With no error pending it logs and returns.
void Err_Raise(std::string_view method, const Information& information = std::nullopt);

// The errors that a connection's database reported, as one text: "Error(s) from connection object: ", and for
// each " (1)<description>[<number>]", counted from 1. The empty text when `conn` is empty, not a connection,
// or has no errors.
[[nodiscard]] std::string Err_ConnectionErrors(const automation::Variant& conn);

// Appends a line break, `first`, "-" and `second`.
void Err_AppendLine(std::string& text, std::string_view first, std::string_view second);

// Gives the pending error the number by which callers tell a duplicate key (-2147216504), a missing value
// (-2147216503) and a ledger account still used by an accounting rule (-2147216494) or a requisition line
// (-2147216493), judged by the first error of the connection. Anything else leaves the pending error as it
// is.
void Err_MapDatabaseError(const automation::Variant& conn);

}  // namespace talvex::Lib_ErrorHandling
