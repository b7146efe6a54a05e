#include "platform/database/row_writer.h"

#include <algorithm>
#include <string_view>

#include "platform/database/recordset_errors.h"

namespace talvex::platform::database {

using automation::Variant;

namespace {

struct Statement {
  std::string text;
  std::vector<Variant> parameters;
};

std::string Joined(const std::vector<std::string>& parts, std::string_view separator) {
  std::string text;
  for (const std::string& part : parts) {
    if (!text.empty()) text += separator;
    text += part;
  }
  return text;
}

void RequireTarget(const UpdateTarget& target, const std::vector<std::string>& columns,
                   const RowChange& change) {
  if (target.table.empty()) RaiseNotUpdatable("its query does not read one table alone");
  for (const RowChange::Column& changed : change.columns) {
    if (target.belongs[changed.column]) continue;
    RaiseNotUpdatable("column " + columns[changed.column] + " is not one of table " + target.table);
  }
  if (change.added) return;
  if (change.keys.empty())
    RaiseNotUpdatable("the key of table " + target.table + " is not among its columns");
  if (std::any_of(change.keys.begin(), change.keys.end(), [](const Variant& key) { return key.IsEmpty(); })) {
    RaiseNotUpdatable("the key of a row added to table " + target.table + " is not known");
  }
}

Statement InsertStatement(const std::string& table, const std::vector<std::string>& columns,
                          const RowChange& change) {
  if (change.columns.empty()) return {"INSERT INTO " + table + " DEFAULT VALUES", {}};
  std::vector<std::string> names;
  Statement statement;
  for (const RowChange::Column& set : change.columns) {
    names.push_back(columns[set.column]);
    statement.parameters.push_back(set.after);
  }
  const std::vector<std::string> places(names.size(), "?");
  statement.text =
      "INSERT INTO " + table + " (" + Joined(names, ", ") + ") VALUES (" + Joined(places, ", ") + ")";
  return statement;
}

// The condition that a column still has a value; adds the value to the parameters unless it is Null.
std::string StillHas(const std::string& column, const Variant& value, std::vector<Variant>& parameters) {
  if (value.IsNull()) return column + " IS NULL";
  parameters.push_back(value);
  return column + " = ?";
}

Statement UpdateStatement(const UpdateTarget& target, const std::vector<std::string>& columns,
                          const RowChange& change) {
  std::vector<std::string> assignments;
  std::vector<std::string> conditions;
  Statement statement;
  for (const RowChange::Column& changed : change.columns) {
    assignments.push_back(columns[changed.column] + " = ?");
    statement.parameters.push_back(changed.after);
  }
  for (std::size_t i = 0; i < target.keys.size(); ++i) {
    conditions.push_back(StillHas(columns[target.keys[i]], change.keys[i], statement.parameters));
  }
  for (const RowChange::Column& changed : change.columns) {
    const bool is_key =
        std::find(target.keys.begin(), target.keys.end(), changed.column) != target.keys.end();
    if (is_key || changed.before.IsEmpty()) continue;
    conditions.push_back(StillHas(columns[changed.column], changed.before, statement.parameters));
  }
  statement.text = "UPDATE " + target.table + " SET " + Joined(assignments, ", ") + " WHERE " +
                   Joined(conditions, " AND ");
  return statement;
}

}  // namespace

std::optional<std::int64_t> WriteRow(Connection& connection, const UpdateTarget& target,
                                     const std::vector<std::string>& columns, const RowChange& change) {
  if (change.ChangesNothing()) return std::nullopt;
  RequireTarget(target, columns, change);
  const Statement statement = change.added ? InsertStatement(target.table, columns, change)
                                           : UpdateStatement(target, columns, change);
  const Result result = connection.Run(statement.text, statement.parameters, kAllRows);
  if (!change.added && result.affected == 0) connection.RaiseRowChanged(target.table);
  return change.added ? result.identity : std::nullopt;
}

}  // namespace talvex::platform::database
