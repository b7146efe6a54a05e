// Creating components, the connection, conversions of Null, and localised texts.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "automation/object.h"
#include "automation/variant.h"
#include "platform/database/connection.h"

namespace talvex::Lib_General {

// A new object of that class, made through the transaction context when there is one, so that it takes part
// in the caller's transaction. Failures are raised with the information "Failed to create a component with
// PROGID '...'".
[[nodiscard]] automation::ObjectRef gen_getComponent(std::string_view prog_id);

// An open connection to the suite's database, at isolation level read committed; the caller owns it, and it
// closes when its last holder lets go. The connection string is asked of the configuration once per thread
// and environment, and again while it is blank. Failures carry the method name
// "Quorrin.RequisitionUtilities.getConnection".
[[nodiscard]] std::shared_ptr<platform::database::Connection> getConnection();

// The configured connection string, asked anew at every call.
[[nodiscard]] std::string Gen_GetConnectionString();

// Closes an open connection and releases the reference; leaves a closed or empty one alone. Inside a handler
// the pending error survives, whatever happens here.
void Gen_CloseConnection(std::shared_ptr<platform::database::Connection>& conn);

// "" for Null, else the value as text.
[[nodiscard]] std::string Gen_NullToString(const automation::Variant& value);
// 0 for Null, else the value as a number.
[[nodiscard]] double Gen_NullToDouble(const automation::Variant& value);
// Null for Null and for a text of blanks, else the value as text, without blanks around it.
[[nodiscard]] automation::Variant Gen_EmptyToNull(const automation::Variant& value);
// Null for Null and for a text of blanks, else the value as a date.
[[nodiscard]] automation::Variant Gen_EmptyToNullDate(const automation::Variant& value);

// Makes a value safe to stand between the quotes of a string literal, in an equality test as in a LIKE
// pattern: "'" becomes "''" and "%" becomes "[%]". Null raises 94, as every conversion of Null to a text
// does.
[[nodiscard]] std::string Gen_QuoteSQL(const automation::Variant& value);

// The text of a label in the user's language. A blank label gives "" without any lookup. Inside a host the
// host's shared message manager is asked and its answer returned, empty or not; outside, the table of texts
// is read, and an unknown label or locale gives "Label or Locale not known for user:...". The empty user
// reads English. The last user's locale is kept per thread and environment.
[[nodiscard]] std::string Gen_GetI18N(const std::string& user, const std::string& label);

}  // namespace talvex::Lib_General
