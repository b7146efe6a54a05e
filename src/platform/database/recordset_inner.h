// The inside of a record set.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "automation/variant.h"
#include "platform/database/cursor.h"
#include "platform/database/record_data.h"
#include "platform/database/recordset.h"

namespace talvex::platform::database {

// The position of a column that is given by its name, or by its position from 0; 3265 when there is none.
[[nodiscard]] std::size_t ColumnAt(const Recordset& set, const automation::Variant& index);

struct Recordset::Inner {
  // Changes of the current row, or a row being added, that nobody else sees yet.
  struct Edit {
    bool added;
    ColumnValues values;
  };

  std::string source;
  platform::database::CursorType cursor_type = platform::database::CursorType::ForwardOnly;
  platform::database::LockType lock_type = platform::database::LockType::ReadOnly;
  std::shared_ptr<Connection> connection;  // Null when detached.
  bool owns_connection = false;
  std::string connection_text;       // What the rows were read with.
  std::shared_ptr<RecordData> data;  // Null when closed.
  std::optional<Cursor> cursor;
  std::optional<Edit> edit;
  std::string filter;

  // Runs the query through the connection. The set stays closed when it gives no columns.
  void Read();
  void TakeRows(RowSet rows, bool complete, UpdateTarget target);
  void Forget() noexcept;

  // A set is also closed when the connection that it is attached to is.
  [[nodiscard]] bool IsOpen() const;
  void RequireOpen() const;                      // 3704
  void RequireUpdatable() const;                 // 3704, 3251
  void RequireColumn(std::size_t column) const;  // 3704, 3265
  [[nodiscard]] Connection& OpenConnection() const;
  [[nodiscard]] std::size_t CurrentRow() const;

  // What follows is for an open set; columns are known to be there.
  [[nodiscard]] automation::Variant Value(std::size_t column) const;
  void SetValue(std::size_t column, const automation::Variant& value);

  // Reads what the first block left out.
  void ReadRest();

  // Ends the edit: writes it, or keeps it for a batch.
  void FinishEdit();
  void WriteEdit();
  void KeepEdit();
  [[nodiscard]] std::optional<std::int64_t> Write(const RowChange& change) const;
  // The rows whose kept changes an operation on a batch means.
  [[nodiscard]] std::vector<std::size_t> AffectedRows(std::optional<Affect> affect) const;

 private:
  void EndEdit(std::size_t row);
};

}  // namespace talvex::platform::database
