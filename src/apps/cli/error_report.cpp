#include "apps/cli/error_report.h"

#include <array>
#include <cstdio>
#include <vector>

#include "apps/cli/layout.h"
#include "automation/text.h"

namespace talvex::apps {

namespace {

constexpr std::string_view kHead = "ERROR 0x";
constexpr std::string_view kDescriptionMark = " DESC: ";

std::vector<std::string> LinesOf(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    lines.push_back(Printable(line));
  }
  return lines;
}

bool HasChain(const std::vector<std::string>& lines) {
  for (const std::string& line : lines) {
    if (line.starts_with(kHead)) return true;
  }
  return false;
}

// What the innermost call said: the last description of the chain.
std::string Innermost(const std::vector<std::string>& lines) {
  std::string message;
  for (const std::string& line : lines) {
    if (line.starts_with(kDescriptionMark) && line.size() > kDescriptionMark.size())
      message = line.substr(kDescriptionMark.size());
  }
  if (message.ends_with('.')) message.pop_back();
  return message;
}

// The description of a call holds the text of the call inside it, which ends in a line with nothing but the
// full stop of the description around it.
std::string Chain(const std::vector<std::string>& lines) {
  std::string text;
  std::size_t depth = 0;
  for (const std::string& line : lines) {
    if (line == "." && depth > 1) --depth;
    if (automation::Trimmed(line).empty() || line == "." || line == kDescriptionMark) continue;
    if (line.starts_with(kHead)) ++depth;
    text.append(2 * depth, ' ').append(line).append("\n");
  }
  return text;
}

std::string NumberText(std::int32_t number) {
  if (number >= 0) return std::to_string(number);
  std::array<char, 16> text{};
  static_cast<void>(std::snprintf(text.data(), text.size(), "0x%X", static_cast<unsigned>(number)));
  return text.data();
}

}  // namespace

std::string ErrorLine(std::string_view message) {
  std::string line = "talvex:";
  for (const std::string& part : LinesOf(message)) {
    if (!automation::Trimmed(part).empty()) line.append(" ").append(automation::Trimmed(part));
  }
  return line.append("\n");
}

std::string ErrorReport(const automation::ErrorState& error) {
  const std::string number = " (error " + NumberText(error.number) + ")";
  const std::vector<std::string> lines = LinesOf(error.description);
  if (!HasChain(lines)) return ErrorLine(error.description + number);
  return ErrorLine(Innermost(lines) + number) + Chain(lines);
}

}  // namespace talvex::apps
