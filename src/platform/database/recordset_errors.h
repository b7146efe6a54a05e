// Errors of record sets that several files of this folder raise.
#pragma once

#include <string_view>

namespace talvex::platform::database {

// 3001: an argument that the operation cannot work with, a filter that is none among them.
[[noreturn]] void RaiseWrongArgument(std::string_view what);

// 3251: the record set cannot do this; `why` ends the message.
[[noreturn]] void RaiseNotUpdatable(std::string_view why);

// 3265, naming the column.
[[noreturn]] void RaiseNoSuchColumn(std::string_view column);

// 3021.
[[noreturn]] void RaiseNoCurrentRow();

// 3704; `what` is the object that is closed.
[[noreturn]] void RaiseClosed(std::string_view what);

}  // namespace talvex::platform::database
