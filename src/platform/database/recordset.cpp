#include "platform/database/recordset.h"

#include <utility>

#include "automation/conversions.h"
#include "automation/text.h"
#include "platform/database/recordset_errors.h"
#include "platform/database/recordset_inner.h"

namespace talvex::platform::database {

using automation::Error;
using automation::Variant;
namespace number = automation::error_number;

namespace {

LockType CheckedLockType(std::optional<LockType> lock) {
  switch (lock.value_or(LockType::Unspecified)) {
    case LockType::Unspecified:
    case LockType::ReadOnly:
      return LockType::ReadOnly;
    case LockType::Pessimistic:
    case LockType::Optimistic:
    case LockType::BatchOptimistic:
      return *lock;
  }
  RaiseWrongArgument("A lock type is 1 (read-only), 2, 3 (optimistic) or 4 (batch-optimistic)");
}

// The text of a filter; empty for one that shows all rows.
std::string FilterText(const Variant& value) {
  if (value.IsString()) {
    const std::string& text = value.As<std::string>();
    return automation::Trimmed(text).empty() ? std::string() : text;
  }
  const bool none = value.IsEmpty() || (automation::IsNumeric(value) && automation::ToDouble(value) == 0);
  if (!none) RaiseWrongArgument("A filter is a condition in a text, or 0 for none");
  return {};
}

}  // namespace

Recordset::Recordset() : inner_(std::make_unique<Inner>()) {
  CursorLocation = static_cast<std::int32_t>(platform::database::CursorLocation::Client);
}

Recordset::~Recordset() = default;

void Recordset::Open(const std::string& query, const Variant& connection,
                     std::optional<platform::database::CursorType> cursor_type,
                     std::optional<platform::database::LockType> lock_type,
                     std::optional<std::int32_t> /*Options*/) {
  if (inner_->IsOpen()) {
    throw Error(number::kObjectIsOpen, kErrorSource,
                "Operation is not allowed when the object is open: the record set");
  }
  Inner opened;
  opened.source = query;
  opened.cursor_type = cursor_type.value_or(CursorType::ForwardOnly);
  opened.lock_type = CheckedLockType(lock_type);
  opened.connection = inner_->connection;
  if (connection.IsString()) {
    opened.connection = std::make_shared<Connection>();
    opened.connection->Open(connection.As<std::string>(), std::nullopt, std::nullopt, std::nullopt);
    opened.owns_connection = true;
  } else if (!connection.IsEmpty()) {
    opened.connection = automation::ValueOf<std::shared_ptr<Connection>>::From(connection);
  }
  if (opened.connection == nullptr) RaiseClosed("the record set has no connection");
  opened.Read();
  if (opened.data == nullptr && opened.owns_connection) opened.connection->Close();
  *inner_ = std::move(opened);
}

std::shared_ptr<Recordset> Recordset::Over(Result result, std::string source,
                                           std::shared_ptr<Connection> connection) {
  auto set = std::make_shared<Recordset>();
  set->inner_->source = std::move(source);
  set->inner_->connection = std::move(connection);
  set->inner_->TakeRows(std::move(result.rows), true, {});
  return set;
}

void Recordset::Close() {
  inner_->RequireOpen();
  if (inner_->edit && inner_->lock_type != LockType::BatchOptimistic) {
    throw Error(number::kInvalidCall, kErrorSource,
                "Invalid procedure call: the current row is in edit; update it or cancel the update first");
  }
  inner_->Forget();
  if (inner_->owns_connection) inner_->connection->Close();
}

std::shared_ptr<Recordset> Recordset::Clone(std::optional<platform::database::LockType> lock_type) {
  inner_->RequireOpen();
  inner_->ReadRest();
  auto clone = std::make_shared<Recordset>();
  Inner& inner = *clone->inner_;
  inner.source = inner_->source;
  inner.cursor_type = inner_->cursor_type;
  inner.lock_type = lock_type == LockType::ReadOnly ? LockType::ReadOnly : inner_->lock_type;
  inner.connection = inner_->connection;
  inner.connection_text = inner_->connection_text;
  inner.data = inner_->data;
  inner.cursor.emplace(inner.data);
  return clone;
}

void Recordset::MoveFirst() {
  inner_->RequireOpen();
  inner_->FinishEdit();
  inner_->cursor->First();
}

void Recordset::MoveLast() {
  inner_->RequireOpen();
  inner_->FinishEdit();
  inner_->ReadRest();
  inner_->cursor->Last();
}

void Recordset::MoveNext() {
  inner_->RequireOpen();
  inner_->FinishEdit();
  if (const RecordData& data = *inner_->data; !data.IsComplete()) {
    const auto row = inner_->cursor->Row();
    if (!row || *row + 1 >= data.BlockSize()) inner_->ReadRest();
  }
  inner_->cursor->Next();
}

void Recordset::MovePrevious() {
  inner_->RequireOpen();
  inner_->FinishEdit();
  if (const RecordData& data = *inner_->data; !data.IsComplete()) {
    const auto row = inner_->cursor->Row();
    if (!row || *row >= data.BlockSize()) inner_->ReadRest();
  }
  inner_->cursor->Previous();
}

bool Recordset::Eof() const {
  inner_->RequireOpen();
  return !(inner_->edit && inner_->edit->added) && inner_->cursor->IsBehind();
}

bool Recordset::Bof() const {
  inner_->RequireOpen();
  return !(inner_->edit && inner_->edit->added) && inner_->cursor->IsBefore();
}

std::int32_t Recordset::RecordCount() const {
  inner_->RequireOpen();
  inner_->ReadRest();
  const std::size_t being_added = inner_->edit && inner_->edit->added ? 1 : 0;
  return static_cast<std::int32_t>(inner_->cursor->Count() + being_added);
}

ObjectState Recordset::State() const { return inner_->IsOpen() ? ObjectState::Open : ObjectState::Closed; }

platform::database::EditMode Recordset::EditMode() const {
  using Mode = platform::database::EditMode;
  inner_->RequireOpen();
  if (!inner_->edit) return Mode::None;
  return inner_->edit->added ? Mode::Add : Mode::InProgress;
}

std::string Recordset::Source() const { return inner_->source; }
platform::database::CursorType Recordset::CursorType() const { return inner_->cursor_type; }
platform::database::LockType Recordset::LockType() const { return inner_->lock_type; }

Variant Recordset::Filter() const { return inner_->filter; }

void Recordset::SetFilter(const Variant& value) {
  inner_->RequireOpen();
  const std::string text = FilterText(value);
  std::optional<database::Filter> filter;
  if (!text.empty()) filter.emplace(text, inner_->data->Rows());
  inner_->FinishEdit();
  if (filter) {
    inner_->ReadRest();
    inner_->cursor->Show(*filter);
  } else {
    inner_->cursor->ShowAll();
  }
  inner_->filter = text;
}

std::shared_ptr<Connection> Recordset::ActiveConnection() const { return inner_->connection; }

void Recordset::SetActiveConnection(const std::shared_ptr<Connection>& connection) {
  if (!inner_->IsOpen()) {
    inner_->Forget();
  } else if (connection == nullptr) {
    inner_->ReadRest();
  } else if (connection->State() != ObjectState::Open) {
    RaiseClosed("the connection");
  } else if (connection->ConnectionText() != inner_->connection_text) {
    throw Error(number::kInvalidCall, kErrorSource,
                "Invalid procedure call: the record set was not read from " +
                    ConnectionString(connection->ConnectionText()).Shown());
  }
  if (connection != inner_->connection) inner_->owns_connection = false;
  inner_->connection = connection;
}

Variant Recordset::Value(std::string_view column) const { return inner_->Value(Column(column)); }

Variant Recordset::Value(std::size_t column) const {
  inner_->RequireColumn(column);
  return inner_->Value(column);
}

std::size_t Recordset::Column(std::string_view name) const {
  inner_->RequireOpen();
  const auto column = inner_->data->Rows().Find(name);
  if (!column) RaiseNoSuchColumn(name);
  return *column;
}

std::size_t Recordset::ColumnCount() const {
  inner_->RequireOpen();
  return inner_->data->Rows().Columns().size();
}

const std::string& Recordset::ColumnName(std::size_t column) const {
  inner_->RequireColumn(column);
  return inner_->data->Rows().Columns()[column];
}

}  // namespace talvex::platform::database
