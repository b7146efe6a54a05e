// The placeholders of workbook markup.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace talvex {

// Whether the text holds a placeholder, or what looks like one.
[[nodiscard]] bool HasPlaceholders(std::string_view text);

// The text with [%COLUMN%], [%ROW%] and [%ADDRESS%] replaced by parts of the cell's address ("D17") and
// [%VALUE%] by the value. A "[%" that begins none of them, and [%VALUE%] without a value, are a Failure
// (SLBBU0349).
[[nodiscard]] std::string FillInText(std::string_view text, std::string_view address,
                                     const std::optional<std::string>& value);

// As FillInText, for a formula: [%VALUE%] becomes a constant, so that data cannot become a formula. A number
// in plain digits stands as it is, everything else as a text in quotes; where the formula has it in quotes
// already, it becomes a part of that text. Where a constant would be read as something else, such as in a
// sheet's name or right behind a column's letter, it is a Failure (SLBBU0349), too.
[[nodiscard]] std::string FillInFormula(std::string_view formula, std::string_view address,
                                        const std::optional<std::string>& value);

}  // namespace talvex
