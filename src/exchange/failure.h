// Failures of the exchange that are collected as text instead of being raised.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "automation/error.h"

namespace talvex {

// The labels of BudgetExcel's failures; docs/workbook-markup.md says which is which.
namespace failure_label {
inline constexpr std::string_view kReading = "SLBBU0343";
inline constexpr std::string_view kOpening = "SLBBU0344";
inline constexpr std::string_view kNoWorkbook = "SLBBU0345";
inline constexpr std::string_view kTemplate = "SLBBU0346";
inline constexpr std::string_view kWriting = "SLBBU0347";
inline constexpr std::string_view kPosition = "SLBBU0348";
inline constexpr std::string_view kPlaceholder = "SLBBU0349";
}  // namespace failure_label

// A failure that a label of its own stands for.
class Failure final : public automation::Error {
 public:
  // A failure that is found out here.
  Failure(std::string_view label, std::string_view description);
  // One that something else raised.
  Failure(std::string_view label, automation::ErrorState state) : Error(std::move(state)), label_(label) {}
  [[nodiscard]] const std::string& Label() const noexcept { return label_; }

 private:
  std::string label_;
};

// Runs the body; an error that has no label yet gets this one.
template <class Body>
auto Labelled(std::string_view label, Body&& body) -> decltype(body()) {
  try {
    return std::forward<Body>(body)();
  } catch (const Failure&) {
    throw;
  } catch (...) {
    throw Failure(label, automation::CurrentExceptionState());
  }
}

// Appends one line to `text`, that of the failure's label in the user's language or, when there is no such
// text, the label itself, and writes the cause to the log. Nobody in particular reads English. Raises
// nothing.
void CollectFailure(const Failure& failure, std::string_view method, const std::optional<std::string>& user,
                    std::string& text);

// Runs the body. A failure is collected, under this label when it has none of its own; false then.
template <class Body>
bool Collecting(std::string_view method, std::string_view label, const std::optional<std::string>& user,
                std::string& text, Body&& body) {
  try {
    Labelled(label, std::forward<Body>(body));
    return true;
  } catch (const Failure& failure) {
    CollectFailure(failure, method, user, text);
    return false;
  }
}

}  // namespace talvex
