// The columns of a record set as objects.
#include "platform/database/recordset.h"
#include "platform/database/recordset_inner.h"

namespace talvex::platform::database {

using automation::Variant;

namespace {

// The record set that a column belongs to; 91 for a column that was made on its own.
Recordset& Owner(const std::shared_ptr<Recordset>& owner) {
  if (owner == nullptr) {
    throw automation::Error(automation::error_number::kObjectNotSet, kErrorSource,
                            "Object not set: the record set that the column belongs to");
  }
  return *owner;
}

}  // namespace

std::string Field::Name() const { return Owner(owner_).ColumnName(column_); }
Variant Field::Value() const { return Owner(owner_).Value(column_); }
void Field::SetValue(const Variant& value) { Owner(owner_).SetValue(column_, value); }
Variant Field::OriginalValue() const { return Owner(owner_).OriginalValue(column_); }

std::int32_t Fields::Count() const { return static_cast<std::int32_t>(Owner(owner_).ColumnCount()); }

std::shared_ptr<Field> Fields::Item(const Variant& index) {
  return std::make_shared<Field>(owner_, ColumnAt(Owner(owner_), index));
}

std::shared_ptr<Fields> Recordset::Fields() const {
  const auto self = std::const_pointer_cast<Object>(shared_from_this());
  return std::make_shared<platform::database::Fields>(std::static_pointer_cast<Recordset>(self));
}

}  // namespace talvex::platform::database
