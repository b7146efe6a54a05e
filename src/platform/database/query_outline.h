// What a query reads, as far as drivers and record sets must know it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace talvex::platform::database {

struct QueryOutline {
  // The one table that the query reads: the name after FROM, without brackets. Nothing for a query on several
  // tables, on none, of distinct or grouped rows, put together from several queries, or that cannot be read.
  std::optional<std::string> table;
  bool ordered = false;     // It says ORDER BY.
  bool aggregates = false;  // It selects a count, a sum or the like: one row about all rows.
};

[[nodiscard]] QueryOutline OutlineOf(std::string_view query);

// The table of the outline.
[[nodiscard]] std::optional<std::string> TableOfQuery(std::string_view query);

}  // namespace talvex::platform::database
