// Record sets: the rows of a query, walked, filtered and changed in memory, and written back.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "automation/class_info.h"
#include "platform/database/connection.h"
#include "platform/database/constants.h"

namespace talvex::platform::database {

class Fields;
class Recordset;

// One column of the current row.
class Field final : public automation::Object {
  TALVEX_CLASS(Field, "Platform.Field", "One column of a record set's current row.");

 public:
  Field() = default;
  Field(std::shared_ptr<Recordset> owner, std::size_t column) : owner_(std::move(owner)), column_(column) {}
  TALVEX_READONLY(std::string, Name, "Name", "The column's name.");
  TALVEX_ACCESSORS(automation::Variant, Value, "Value",
                   "The value in the current row; setting it begins an edit.");
  TALVEX_READONLY(automation::Variant, OriginalValue, "OriginalValue",
                  "The value as it was read or last written.");

 private:
  std::shared_ptr<Recordset> owner_;
  std::size_t column_ = 0;
};

// The columns of a record set.
class Fields final : public automation::Object {
  TALVEX_CLASS(Fields, "Platform.Fields", "The columns of a record set.");

 public:
  Fields() = default;
  explicit Fields(std::shared_ptr<Recordset> owner) : owner_(std::move(owner)) {}
  TALVEX_READONLY(std::int32_t, Count, "Count", "The number of columns.");
  TALVEX_METHOD(std::shared_ptr<Field>, Item, (const automation::Variant& Index),
                "The column of that name, or at that position from 0; 3265 when there is none.");

 private:
  std::shared_ptr<Recordset> owner_;
};

// The rows of a query in memory, with a current row, a filter and pending changes.
//
// A set is opened on a connection, or on a connection string, for which it has a connection of its own that
// it closes. It is closed with the connection that it is attached to. Detached (its ActiveConnection set to
// nothing) it keeps its rows, and its changes can be written after it is attached to any open connection of
// the same string. Clones share rows and changes, each with a current row and a filter of its own.
//
// Changes are written one row at a time by Update, or, with lock type batch-optimistic, all together by
// UpdateBatch; a detached set keeps them for UpdateBatch, too. They are optimistic: a row is found by its key
// and the old values of the changed columns; when it is not found, -2147217864 is raised and nothing is
// written. An inserted row names only the columns that were set, and learns the number that the database
// assigned to it; its other columns read as Null.
//
// Only a set that reads one table can be written, and a row that was there only when the table's key is among
// the set's columns; otherwise, and for every change of a read-only set, 3251 is raised. Where writing fails,
// the change stays pending: it can be corrected and written again, or taken back.
//
// A set that can be changed may have read a first block of rows only. Whoever moves past it, counts, filters,
// clones or detaches makes it read on, through its connection.
class Recordset final : public automation::Object {
  TALVEX_CLASS(Recordset, "Platform.Recordset",
               "The rows of a query, walked, filtered, changed and written back.");

 public:
  Recordset();
  ~Recordset() override;

  TALVEX_METHOD(
      void, Open,
      (const std::string& Source, const automation::Variant& ActiveConnection,
       std::optional<CursorType> Cursor, std::optional<LockType> Lock, std::optional<std::int32_t> Options),
      "Runs the query Source on a connection, or on a connection string (Empty: on the one that is set "
      "already), and stands on its first row. The cursor type is forward-only unless given, the lock type "
      "read-only. A text that is no query leaves the set closed. An open set raises 3705, a closed "
      "connection 3704.");
  TALVEX_METHOD(void, Close, (),
                "Closes the set and lets its rows go; changes that were not written are lost. A closed set "
                "raises 3704, a set with a row in edit raises 5 unless its lock type is batch-optimistic.");
  TALVEX_METHOD(
      void, MoveFirst, (),
      "Stands on the first row that passes the filter; without any, EOF and BOF are both true. A row in edit "
      "is updated first, as by Update, here and in every other move.");
  TALVEX_METHOD(void, MoveLast, (), "Stands on the last row that passes the filter.");
  TALVEX_METHOD(void, MoveNext, (),
                "Stands on the next row, or at the end. At the end already, 3021 is raised.");
  TALVEX_METHOD(void, MovePrevious, (),
                "Stands on the row before, or at the beginning. At the beginning already, 3021 is raised.");
  TALVEX_METHOD(void, AddNew,
                (const std::optional<automation::Variant>& FieldList,
                 const std::optional<automation::Variant>& Values),
                "Adds a row and stands on it. With a column's name and a value, or arrays of both, it is "
                "also updated.");
  TALVEX_METHOD(
      void, Update,
      (const std::optional<automation::Variant>& FieldList, const std::optional<automation::Variant>& Values),
      "Writes the current row's changes, or, with lock type batch-optimistic, keeps them for UpdateBatch. A "
      "column's name and a value, or arrays of both, are set first. A column that has its old value again is "
      "not written; without any change nothing is.");
  TALVEX_METHOD(
      void, UpdateBatch, (std::optional<Affect> AffectRecords),
      "Writes all kept changes (3), those of rows that pass the filter (2) or those of the current row (1); "
      "all of them or, when one cannot be written, none.");
  TALVEX_METHOD(void, CancelUpdate, (), "Takes back the current row's changes since the last Update.");
  TALVEX_METHOD(void, CancelBatch, (std::optional<Affect> AffectRecords),
                "Takes back the changes that were not written, of the same rows; an added row vanishes.");
  TALVEX_METHOD(
      std::shared_ptr<Recordset>, Clone, (std::optional<LockType> Lock),
      "Another set on the same rows, standing on the first one, without a filter; its lock type may be "
      "read-only, else it is this set's.");

  TALVEX_READONLY(bool, Eof, "EOF", "Whether it stands behind the last row.");
  TALVEX_READONLY(bool, Bof, "BOF", "Whether it stands before the first row.");
  TALVEX_READONLY(std::int32_t, RecordCount, "RecordCount", "The number of rows that pass the filter.");
  TALVEX_READONLY(ObjectState, State, "State", "0 closed, 1 open.");
  TALVEX_READONLY(platform::database::EditMode, EditMode, "EditMode",
                  "0 no edit, 1 row changed, 2 row added.");
  TALVEX_READONLY(std::string, Source, "Source", "The query.");
  TALVEX_READONLY(std::shared_ptr<platform::database::Fields>, Fields, "Fields", "The columns.");
  TALVEX_READONLY(platform::database::CursorType, CursorType, "CursorType",
                  "The cursor type it was opened with.");
  TALVEX_READONLY(platform::database::LockType, LockType, "LockType", "The lock type it was opened with.");
  TALVEX_PROPERTY(std::int32_t, CursorLocation,
                  "Where rows are kept; always at the client (3), whatever is set.");
  TALVEX_ACCESSORS(
      automation::Variant, Filter, "Filter",
      "A condition that rows must pass to be seen: comparisons of columns with texts in quotes, numbers and "
      "dates, LIKE, IS NULL, AND, OR and parentheses. The empty text or 0 shows all. Which rows pass is "
      "settled when it is set; that also stands on the first one. 3001 for a text that is no condition.");
  TALVEX_ACCESSORS(
      std::shared_ptr<Connection>, ActiveConnection, "ActiveConnection",
      "The connection; Empty when the set is detached. Setting one attaches the set to it: it must be open "
      "(3704) and of the string that the set was read with (5).");

  // The current row, for C++ callers: by a column's name or its position, 3265 when there is none. 3704 on a
  // closed set, 3021 when there is no current row. A value has the type in which the database's driver gave
  // it, or in which it was set. Setting Empty sets Null; what no table can hold (an array, an object, a
  // number that is not finite) raises -2147217887 and names the column.
  [[nodiscard]] automation::Variant Value(std::string_view column) const;
  [[nodiscard]] automation::Variant Value(std::size_t column) const;
  void SetValue(std::string_view column, const automation::Variant& value);
  void SetValue(std::size_t column, const automation::Variant& value);
  [[nodiscard]] automation::Variant OriginalValue(std::size_t column) const;
  [[nodiscard]] std::size_t Column(std::string_view name) const;
  [[nodiscard]] std::size_t ColumnCount() const;
  [[nodiscard]] const std::string& ColumnName(std::size_t column) const;

  // For Connection: a read-only set over rows that were read already; a closed one for a result without
  // columns.
  [[nodiscard]] static std::shared_ptr<Recordset> Over(Result result, std::string source,
                                                       std::shared_ptr<Connection> connection);

 private:
  struct Inner;
  std::unique_ptr<Inner> inner_;
};

}  // namespace talvex::platform::database
