// The other words of the messages between talvex-sheet and the adapter that starts it; all are CBOR.
//
// `talvex-sheet load FILE` answers
//   {"sheets": [{"name", "cells"}], "properties": [{"name", "value", "linked"}]}
// `talvex-sheet save` reads
//   {"base": path, "edits": [{"edit": one of kEdits, ...}]}
// and answers
//   {"file": the bytes of the workbook, "formulas": [{"name", "cells"}]}
// Both answer {"refusal": one of kRefusals, "text": why} instead when they cannot.
#pragma once

#include <cstdint>

namespace talvex::adapters::spreadsheet::message {

// A file that is larger is refused before it is read.
inline constexpr std::int64_t kLargestFile = 64LL * 1024 * 1024;

// The exit status of a program that ran into its limit of memory.
inline constexpr int kOutOfMemory = 70;

namespace edits {
inline constexpr const char* kCells = "cells";        // "sheet", "cells"
inline constexpr const char* kAdd = "add";            // "name"
inline constexpr const char* kRename = "rename";      // "sheet", "name"
inline constexpr const char* kInsert = "insert";      // "sheet", "row", "count"
inline constexpr const char* kCopy = "copy";          // "sheet", "row", "count", "target", "only_styles"
inline constexpr const char* kProperty = "property";  // "name", "value"
}  // namespace edits

namespace refusals {
inline constexpr const char* kMissing = "missing";    // There is no such file.
inline constexpr const char* kAccess = "access";      // It cannot be read, or is a directory.
inline constexpr const char* kNoWorkbook = "format";  // It is no workbook that can be read.
inline constexpr const char* kTooLarge = "large";     // It is larger than is allowed.
inline constexpr const char* kEdit = "edit";          // An edit cannot be made.
inline constexpr const char* kInternal = "internal";  // The program does not understand what it was told.
}  // namespace refusals

}  // namespace talvex::adapters::spreadsheet::message
