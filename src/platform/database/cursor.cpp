#include "platform/database/cursor.h"

#include <algorithm>
#include <utility>

#include "platform/database/recordset_errors.h"

namespace talvex::platform::database {

Cursor::Cursor(std::shared_ptr<RecordData> data) : data_(std::move(data)) { First(); }

std::optional<std::size_t> Cursor::Row() const {
  if (place_ != Place::On) return std::nullopt;
  const std::size_t row = RowAt(at_);
  return data_->IsShown(row) ? std::optional(row) : std::nullopt;
}

std::size_t Cursor::Count() const {
  if (!passing_) return data_->ShownCount();
  return static_cast<std::size_t>(std::count_if(passing_->begin(), passing_->end(),
                                                [&](std::size_t row) { return data_->IsShown(row); }));
}

bool Cursor::Shows(std::size_t row) const {
  const bool passes = !passing_ || std::binary_search(passing_->begin(), passing_->end(), row);
  return passes && data_->IsShown(row);
}

bool Cursor::StandAtOrAfter(std::size_t at) {
  for (const std::size_t end = Size(); at < end; ++at) {
    if (!data_->IsShown(RowAt(at))) continue;
    at_ = at;
    place_ = Place::On;
    return true;
  }
  return false;
}

bool Cursor::StandBefore(std::size_t end) {
  while (end > 0) {
    if (!data_->IsShown(RowAt(--end))) continue;
    at_ = end;
    place_ = Place::On;
    return true;
  }
  return false;
}

void Cursor::First() {
  if (!StandAtOrAfter(0)) place_ = Place::Nowhere;
}

void Cursor::Last() {
  if (!StandBefore(Size())) place_ = Place::Nowhere;
}

void Cursor::Next() {
  if (IsBehind()) RaiseNoCurrentRow();
  if (!StandAtOrAfter(place_ == Place::Before ? 0 : at_ + 1)) place_ = Place::Behind;
}

void Cursor::Previous() {
  if (IsBefore()) RaiseNoCurrentRow();
  if (!StandBefore(place_ == Place::Behind ? Size() : at_)) place_ = Place::Before;
}

void Cursor::Show(const Filter& filter) {
  passing_ = data_->RowsThatPass(filter);
  First();
}

void Cursor::ShowAll() {
  passing_.reset();
  First();
}

void Cursor::StandOnAdded(std::size_t row) {
  if (passing_) passing_->push_back(row);
  at_ = Size() - 1;
  place_ = Place::On;
}

void Cursor::LeaveHiddenRow() {
  if (place_ != Place::On || Row() || StandAtOrAfter(at_)) return;
  place_ = Count() == 0 ? Place::Nowhere : Place::Behind;
}

void Cursor::FollowRows(std::size_t from, std::size_t by) noexcept {
  if (place_ == Place::On && at_ >= from) at_ += by;
}

}  // namespace talvex::platform::database
