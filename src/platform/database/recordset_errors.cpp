#include "platform/database/recordset_errors.h"

#include <cstdint>
#include <string>

#include "automation/error.h"
#include "platform/database/fault.h"

namespace talvex::platform::database {

using automation::Error;
namespace number = automation::error_number;

namespace {

constexpr std::int32_t kWrongArgument = 3001;
constexpr std::int32_t kNotUpdatable = 3251;

}  // namespace

void RaiseWrongArgument(std::string_view what) { throw Error(kWrongArgument, kErrorSource, what); }

void RaiseNotUpdatable(std::string_view why) {
  throw Error(kNotUpdatable, kErrorSource, "The record set does not support updating: " + std::string(why));
}

void RaiseNoSuchColumn(std::string_view column) {
  throw Error(number::kNoSuchColumn, kErrorSource,
              "Item cannot be found in the collection: there is no column '" + std::string(column) + "'");
}

void RaiseNoCurrentRow() {
  throw Error(number::kNoCurrentRow, kErrorSource,
              "Either BOF or EOF is True, or the current row has been taken back: there is no current row");
}

void RaiseClosed(std::string_view what) {
  throw Error(number::kObjectIsClosed, kErrorSource,
              "Operation is not allowed when the object is closed: " + std::string(what));
}

}  // namespace talvex::platform::database
