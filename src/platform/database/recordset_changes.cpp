// The part of a record set that changes its rows.
#include <utility>

#include "platform/database/recordset.h"
#include "platform/database/recordset_errors.h"
#include "platform/database/recordset_inner.h"

namespace talvex::platform::database {

using automation::Variant;

namespace {

// Sets columns of the current row: one by its name and a value, or several by arrays of both.
void SetValues(Recordset& set, const Variant& fields, const std::optional<Variant>& values) {
  if (!values || fields.IsArray() != values->IsArray()) {
    RaiseWrongArgument("A column comes with a value, an array of columns with an array of values");
  }
  if (!fields.IsArray()) {
    set.SetValue(ColumnAt(set, fields), *values);
    return;
  }
  const auto& names = fields.As<automation::Array>().Items();
  const auto& items = values->As<automation::Array>().Items();
  if (names.size() != items.size()) RaiseWrongArgument("There are not as many values as columns");
  for (std::size_t i = 0; i < names.size(); ++i) set.SetValue(ColumnAt(set, names[i]), items[i]);
}

bool IsGiven(const std::optional<Variant>& fields) { return fields && !fields->IsEmpty(); }

}  // namespace

void Recordset::SetValue(std::string_view column, const Variant& value) { SetValue(Column(column), value); }

void Recordset::SetValue(std::size_t column, const Variant& value) {
  inner_->RequireUpdatable();
  inner_->RequireColumn(column);
  inner_->SetValue(column, value);
}

Variant Recordset::OriginalValue(std::size_t column) const {
  inner_->RequireColumn(column);
  if (inner_->edit && inner_->edit->added) return automation::kNull;
  return inner_->data->OriginalValue(inner_->CurrentRow(), column);
}

void Recordset::AddNew(const std::optional<Variant>& fields, const std::optional<Variant>& values) {
  inner_->RequireUpdatable();
  inner_->FinishEdit();
  inner_->edit = Inner::Edit{true, ColumnValues(ColumnCount())};
  if (!IsGiven(fields)) return;
  SetValues(*this, *fields, values);
  inner_->FinishEdit();
}

void Recordset::Update(const std::optional<Variant>& fields, const std::optional<Variant>& values) {
  inner_->RequireUpdatable();
  if (IsGiven(fields)) SetValues(*this, *fields, values);
  inner_->FinishEdit();
}

void Recordset::UpdateBatch(std::optional<Affect> affect) {
  inner_->RequireUpdatable();
  if (inner_->edit) inner_->KeepEdit();
  const std::vector<std::size_t> rows = inner_->AffectedRows(affect);
  if (rows.empty()) return;
  RecordData& data = *inner_->data;
  const ColumnValues no_more(ColumnCount());
  std::vector<std::optional<std::int64_t>> identities;
  inner_->OpenConnection().RunAsOne([&] {
    for (const std::size_t row : rows) identities.push_back(inner_->Write(data.ChangeOf(row, no_more)));
  });
  for (std::size_t i = 0; i < rows.size(); ++i) data.Settle(rows[i], identities[i]);
}

void Recordset::CancelUpdate() {
  inner_->RequireOpen();
  inner_->edit.reset();
}

void Recordset::CancelBatch(std::optional<Affect> affect) {
  inner_->RequireOpen();
  const bool was_adding = inner_->edit && inner_->edit->added;
  inner_->edit.reset();
  // The row that was being added was the current one, and it is gone now.
  if (was_adding && affect == Affect::Current) return;
  for (const std::size_t row : inner_->AffectedRows(affect)) inner_->data->TakeBack(row);
  inner_->cursor->LeaveHiddenRow();
}

}  // namespace talvex::platform::database
