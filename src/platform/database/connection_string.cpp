#include "platform/database/connection_string.h"

#include <algorithm>

#include "automation/text.h"

namespace talvex::platform::database {

namespace {

// Drivers know more passwords than that of the user (one for a key file, one for a proxy), and psqlodbc hands
// what stands in its "pqopt" on, a password perhaps among it.
bool IsSecret(std::string_view key) {
  const std::string folded = automation::Folded(key);
  if (folded == "pqopt") return true;
  for (const std::string_view word : {"pwd", "password", "secret", "token"}) {
    if (folded.find(word) != std::string::npos) return true;
  }
  return false;
}

// The place behind a value in braces that begins at `open`; the end of the text when the braces have none.
// Two closing braces in a row are one that belongs to the value.
std::size_t BehindBraces(std::string_view text, std::size_t open) {
  for (std::size_t at = text.find('}', open); at != std::string_view::npos; at = text.find('}', at)) {
    if (at + 1 == text.size() || text[at + 1] != '}') return at + 1;
    at += 2;
  }
  return text.size();
}

// The end of the part that begins at `from`: the next ";" outside braces, which count at the beginning of a
// value only.
std::size_t EndOfPart(std::string_view text, std::size_t from) {
  const std::size_t end = std::min(text.find(';', from), text.size());
  const std::size_t equals = text.find('=', from);
  if (equals >= end) return end;
  const std::size_t value = text.find_first_not_of(' ', equals + 1);
  if (value >= end || text[value] != '{') return end;
  return std::min(text.find(';', BehindBraces(text, value)), text.size());
}

}  // namespace

ConnectionString::ConnectionString(std::string text) : text_(std::move(text)) {
  for (std::size_t from = 0; from < text_.size();) {
    const std::size_t end = EndOfPart(text_, from);
    const std::string_view part = std::string_view(text_).substr(from, end - from);
    const std::size_t equals = part.find('=');
    if (equals != std::string_view::npos) {
      parts_.emplace_back(automation::Trimmed(part.substr(0, equals)),
                          automation::Trimmed(part.substr(equals + 1)));
    }
    from = end + 1;
  }
}

std::string ConnectionString::Value(std::string_view key) const {
  for (const auto& [name, value] : parts_) {
    if (!automation::SameFolded(name, key)) continue;
    const bool braced = value.size() >= 2 && value.front() == '{' && value.back() == '}';
    return braced ? automation::Replaced(value.substr(1, value.size() - 2), "}}", "}") : value;
  }
  return {};
}

std::string ConnectionString::Shown() const {
  std::string shown;
  for (const auto& [name, value] : parts_) {
    if (!shown.empty()) shown += ';';
    shown.append(name).append("=").append(IsSecret(name) ? "***" : value);
  }
  return shown;
}

std::string ConnectionValue(std::string_view value) {
  if (value.find_first_of(";{}= ") == std::string_view::npos) return std::string(value);
  return "{" + automation::Replaced(value, "}", "}}") + "}";
}

}  // namespace talvex::platform::database
