#include "platform/database/recordset_inner.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "automation/conversions.h"
#include "platform/database/query_outline.h"
#include "platform/database/recordset_errors.h"
#include "platform/database/row_writer.h"

namespace talvex::platform::database {

using automation::Kind;
using automation::Variant;

namespace {

// What a set that can be changed reads at first: a table of a million rows is often opened to add one.
constexpr std::size_t kFirstBlock = 64;

bool HasKey(const TableInfo& table) {
  return std::any_of(table.columns.begin(), table.columns.end(),
                     [](const TableColumn& column) { return column.key; });
}

// The value as a table may hold it.
Variant Storable(const Variant& value, const std::string& column) {
  if (value.IsEmpty()) return automation::kNull;
  const bool not_finite = value.Type() == Kind::Double && !std::isfinite(value.As<double>());
  if (!not_finite && !value.IsArray() && !value.IsObject()) return value;
  const std::string what = not_finite ? "a number that is not finite"
                                      : "a value of kind " + std::string(automation::KindName(value.Type()));
  throw automation::Error(automation::error_number::kValueTooLongOrWrongType, kErrorSource,
                          "Column " + column + " cannot hold " + what);
}

}  // namespace

std::size_t ColumnAt(const Recordset& set, const Variant& index) {
  if (index.IsString()) return set.Column(index.As<std::string>());
  const std::int32_t position = automation::ToInt32(index);
  if (position < 0 || static_cast<std::size_t>(position) >= set.ColumnCount()) {
    RaiseNoSuchColumn(std::to_string(position));
  }
  return static_cast<std::size_t>(position);
}

void Recordset::Inner::Read() {
  std::shared_ptr<const TableInfo> table;
  if (lock_type != LockType::ReadOnly) {
    if (const auto name = TableOfQuery(source)) table = connection->Table(*name);
  }
  const std::size_t most_rows = table != nullptr && HasKey(*table) ? kFirstBlock : kAllRows;
  Result result = connection->Run(source, {}, most_rows);
  UpdateTarget target;
  if (table != nullptr) target = UpdateTarget(*table, result.rows.Columns());
  // Without their keys the rows of the block could not be told from the others later.
  if (!result.complete && target.keys.empty()) result = connection->Run(source, {}, kAllRows);
  TakeRows(std::move(result.rows), result.complete, std::move(target));
}

void Recordset::Inner::TakeRows(RowSet rows, bool complete, UpdateTarget target) {
  connection_text = connection->ConnectionText();
  if (rows.Columns().empty()) return;
  data = std::make_shared<RecordData>(std::move(rows), complete, std::move(target));
  cursor.emplace(data);
}

void Recordset::Inner::Forget() noexcept {
  edit.reset();
  cursor.reset();
  data.reset();
  filter.clear();
}

bool Recordset::Inner::IsOpen() const {
  return data != nullptr && (connection == nullptr || connection->State() == ObjectState::Open);
}

void Recordset::Inner::RequireOpen() const {
  if (!IsOpen()) RaiseClosed("the record set");
}

void Recordset::Inner::RequireUpdatable() const {
  RequireOpen();
  if (lock_type == LockType::ReadOnly) RaiseNotUpdatable("it was opened read-only");
}

void Recordset::Inner::RequireColumn(std::size_t column) const {
  RequireOpen();
  if (column >= data->Rows().Columns().size()) RaiseNoSuchColumn(std::to_string(column));
}

Connection& Recordset::Inner::OpenConnection() const {
  if (connection == nullptr) RaiseClosed("the record set is detached from its connection");
  return *connection;
}

std::size_t Recordset::Inner::CurrentRow() const {
  const auto row = cursor->Row();
  if (!row) RaiseNoCurrentRow();
  return *row;
}

Variant Recordset::Inner::Value(std::size_t column) const {
  if (edit) {
    if (edit->values[column]) return *edit->values[column];
    if (edit->added) return automation::kNull;
  }
  return data->Value(CurrentRow(), column);
}

void Recordset::Inner::SetValue(std::size_t column, const Variant& value) {
  const std::vector<std::string>& columns = data->Rows().Columns();
  Variant storable = Storable(value, columns[column]);
  if (!edit) {
    static_cast<void>(CurrentRow());
    edit = Edit{false, ColumnValues(columns.size())};
  }
  edit->values[column] = std::move(storable);
}

void Recordset::Inner::ReadRest() {
  if (data->IsComplete()) return;
  const std::size_t block = data->BlockSize();
  const Result whole = OpenConnection().Run(source, {}, kAllRows);
  cursor->FollowRows(block, data->Complete(whole.rows));
}

void Recordset::Inner::FinishEdit() {
  if (!edit) return;
  if (lock_type == LockType::BatchOptimistic || connection == nullptr) {
    KeepEdit();
  } else {
    WriteEdit();
  }
}

void Recordset::Inner::WriteEdit() {
  const auto row = edit->added ? std::nullopt : std::optional(CurrentRow());
  const auto identity = Write(data->ChangeOf(row, edit->values));
  EndEdit(data->Store(row, edit->values, identity));
}

void Recordset::Inner::KeepEdit() {
  const auto row = edit->added ? std::nullopt : std::optional(CurrentRow());
  EndEdit(data->Keep(row, edit->values));
}

void Recordset::Inner::EndEdit(std::size_t row) {
  if (edit->added) cursor->StandOnAdded(row);
  edit.reset();
}

std::optional<std::int64_t> Recordset::Inner::Write(const RowChange& change) const {
  return WriteRow(OpenConnection(), data->Target(), data->Rows().Columns(), change);
}

std::vector<std::size_t> Recordset::Inner::AffectedRows(std::optional<Affect> affect) const {
  std::vector<std::size_t> rows = data->KeptRows();
  switch (affect.value_or(Affect::All)) {
    case Affect::All:
      break;
    case Affect::Group:
      std::erase_if(rows, [&](std::size_t row) { return !cursor->Shows(row); });
      break;
    case Affect::Current:
      std::erase_if(rows, [current = CurrentRow()](std::size_t row) { return row != current; });
      break;
    default:
      RaiseWrongArgument("The rows that an operation affects are 1 (current), 2 (filtered) or 3 (all)");
  }
  return rows;
}

}  // namespace talvex::platform::database
