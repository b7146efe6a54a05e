#include "adapters/odbc/parameters.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "platform/database/fault.h"

namespace talvex::adapters::odbc {

namespace {

using automation::Kind;
using automation::Variant;
using platform::database::Fault;
using platform::database::FaultKind;
using platform::database::SqlShape;

// What NVARCHAR(n) goes up to.
constexpr SQLULEN kLongestVarchar = 4000;

[[noreturn]] void RefuseValue(const std::string& reason) {
  throw Fault(FaultKind::ValueRefused, 8152, "22001", reason);
}

void RequireCount(std::span<const SqlShape::Parameter> places, std::span<const Variant> given) {
  const auto wanted =
      std::count_if(places.begin(), places.end(), [](const auto& place) { return place.given; });
  if (static_cast<std::size_t>(wanted) == given.size()) return;
  throw Fault(FaultKind::Other, 0, "07002",
              "The statement takes " + std::to_string(wanted) + " parameters, but was given " +
                  std::to_string(given.size()));
}

// As many digits as name the number exactly.
std::string NumberText(double number) {
  std::array<char, 32> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
  return {buffer.data(), end};
}

double FiniteNumber(const Variant& from) {
  const double number =
      from.Type() == Kind::Double ? from.As<double>() : from.As<automation::Currency>().ToDouble();
  if (!std::isfinite(number)) RefuseValue("A number that is not finite cannot be stored");
  return number;
}

std::int32_t WholeNumber(const Variant& from) {
  if (from.Type() == Kind::Boolean) return from.As<bool>() ? 1 : 0;
  return from.Type() == Kind::Int16 ? from.As<std::int16_t>() : from.As<std::int32_t>();
}

}  // namespace

void Parameters::Bind(Connection& connection, const Handle& statement,
                      std::span<const SqlShape::Parameter> places, std::span<const Variant> given) {
  RequireCount(places, given);
  values_.resize(places.size());
  auto next = given.begin();
  for (std::size_t i = 0; i < places.size(); ++i) {
    Value& value = values_[i];
    if (places[i].given) {
      Set(value, *next++);
    } else {
      SetText(value, places[i].literal);
    }
    if (value.bound) continue;
    connection.Check(
        SQLBindParameter(statement.Get(), static_cast<SQLUSMALLINT>(i + 1), SQL_PARAM_INPUT, value.c_type,
                         value.sql_type, value.size, value.decimals, value.data, value.room, &value.length),
        statement);
    value.bound = true;
  }
}

void Parameters::Set(Value& value, const Variant& from) const {
  const bool as_text = binding_ == Binding::AsText;
  switch (from.Type()) {
    case Kind::Empty:
    case Kind::Null:
      value.length = SQL_NULL_DATA;
      return;
    case Kind::Boolean:
    case Kind::Int16:
    case Kind::Int32: {
      const std::int32_t whole = WholeNumber(from);
      return as_text ? SetText(value, std::to_string(whole)) : SetWhole(value, whole);
    }
    case Kind::Double:
    case Kind::Currency: {
      const double number = FiniteNumber(from);
      return as_text ? SetText(value, NumberText(number)) : SetNumber(value, number);
    }
    case Kind::Date: {
      const auto date = from.As<automation::Date>();
      return as_text ? SetText(value, date.ToIso()) : SetMoment(value, date);
    }
    case Kind::String:
      platform::database::RequireStorableText(from.As<std::string>());
      return SetText(value, from.As<std::string>());
    default:
      RefuseValue("A value of kind " + std::string(automation::KindName(from.Type())) + " cannot be stored");
  }
}

void Parameters::Describe(Value& value, SQLSMALLINT c_type, SQLSMALLINT sql_type, SQLULEN size,
                          SQLSMALLINT decimals, SQLPOINTER data) {
  value.bound = value.bound && value.c_type == c_type && value.sql_type == sql_type && value.size == size &&
                value.data == data;
  value.c_type = c_type;
  value.sql_type = sql_type;
  value.size = size;
  value.decimals = decimals;
  value.data = data;
}

// Every text up to the longest that NVARCHAR(n) takes is of that type, so that its own length does not
// matter. The room grows by doubling, for a text that moves must be bound again.
void Parameters::SetText(Value& value, std::string_view text) {
  constexpr std::size_t kRoom = 64;
  const WideText wide = ToWide(text);
  if (value.text.size() < wide.size() + 1) {
    value.text.resize(std::max({kRoom, 2 * value.text.size(), wide.size() + 1}));
    value.bound = false;
  }
  std::copy(wide.begin(), wide.end(), value.text.begin());
  value.length = static_cast<SQLLEN>(wide.size() * sizeof(SQLWCHAR));
  value.room = static_cast<SQLLEN>(value.text.size() * sizeof(SQLWCHAR));
  const bool is_long = wide.size() > kLongestVarchar;
  Describe(value, SQL_C_WCHAR, is_long ? SQL_WLONGVARCHAR : SQL_WVARCHAR,
           is_long ? wide.size() : kLongestVarchar, 0, value.text.data());
}

void Parameters::SetWhole(Value& value, std::int32_t whole) {
  value.whole = whole;
  value.length = sizeof value.whole;
  Describe(value, SQL_C_SLONG, SQL_INTEGER, 10, 0, &value.whole);
}

void Parameters::SetNumber(Value& value, double number) {
  value.number = number;
  value.length = sizeof value.number;
  Describe(value, SQL_C_DOUBLE, SQL_DOUBLE, 53, 0, &value.number);
}

void Parameters::SetMoment(Value& value, automation::Date date) {
  value.moment = {static_cast<SQLSMALLINT>(date.Year()),
                  static_cast<SQLUSMALLINT>(date.Month()),
                  static_cast<SQLUSMALLINT>(date.Day()),
                  static_cast<SQLUSMALLINT>(date.Hour()),
                  static_cast<SQLUSMALLINT>(date.Minute()),
                  static_cast<SQLUSMALLINT>(date.Second()),
                  0};
  value.length = sizeof value.moment;
  Describe(value, SQL_C_TYPE_TIMESTAMP, SQL_TYPE_TIMESTAMP, 23, 3, &value.moment);
}

}  // namespace talvex::adapters::odbc
