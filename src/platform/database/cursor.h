// Where a record set stands among the rows that it shows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "platform/database/filter.h"
#include "platform/database/record_data.h"

namespace talvex::platform::database {

// One of possibly several walks over the same rows, each with a filter of its own. Which rows pass a filter
// is settled when it is set. Rows that were taken back are stepped over.
class Cursor {
 public:
  // Stands on the first row.
  explicit Cursor(std::shared_ptr<RecordData> data);

  [[nodiscard]] bool IsBefore() const noexcept { return place_ == Place::Before || place_ == Place::Nowhere; }
  [[nodiscard]] bool IsBehind() const noexcept { return place_ == Place::Behind || place_ == Place::Nowhere; }
  // The current row's number; nothing when there is none.
  [[nodiscard]] std::optional<std::size_t> Row() const;
  // The number of rows that are shown, and whether a row is among them.
  [[nodiscard]] std::size_t Count() const;
  [[nodiscard]] bool Shows(std::size_t row) const;

  // First and Last leave it before and behind the rows at once when no row is shown.
  void First();
  void Last();
  // Next from behind the rows, and Previous from before them, raise 3021.
  void Next();
  void Previous();

  // Shows the rows that pass, or all of them, and stands on the first one.
  void Show(const Filter& filter);
  void ShowAll();

  // Stands on a row that was just added; it is shown whatever the filter says of it.
  void StandOnAdded(std::size_t row);
  // When the current row has been taken back: stands on the next one, or behind the last.
  void LeaveHiddenRow();
  // Follows rows numbered `from` and higher, whose numbers have grown. To be called while no filter is set.
  void FollowRows(std::size_t from, std::size_t by) noexcept;

 private:
  enum class Place : std::uint8_t { Nowhere, Before, On, Behind };

  [[nodiscard]] std::size_t RowAt(std::size_t at) const { return passing_ ? (*passing_)[at] : at; }
  [[nodiscard]] std::size_t Size() const noexcept {
    return passing_ ? passing_->size() : data_->Rows().RowCount();
  }
  // Stands on the first shown row at `at` or after it, or on the last one before `end`; says whether there is
  // one.
  bool StandAtOrAfter(std::size_t at);
  bool StandBefore(std::size_t end);

  std::shared_ptr<RecordData> data_;
  std::optional<std::vector<std::size_t>> passing_;  // Numbers of rows, while a filter is set.
  Place place_ = Place::Nowhere;
  std::size_t at_ = 0;  // The position among the rows that pass; means something only when standing on one.
};

}  // namespace talvex::platform::database
