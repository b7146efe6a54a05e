#include "platform/database/connection_string.h"

#include "automation/text.h"

namespace talvex::platform::database {

namespace {

bool IsSecret(std::string_view key) {
  return automation::SameFolded(key, "PWD") || automation::SameFolded(key, "Password");
}

// The end of the part that begins at `from`: the next ";" outside braces.
std::size_t EndOfPart(std::string_view text, std::size_t from) {
  bool in_braces = false;
  for (std::size_t at = from; at < text.size(); ++at) {
    if (text[at] == '{') in_braces = true;
    if (text[at] == '}') in_braces = false;
    if (text[at] == ';' && !in_braces) return at;
  }
  return text.size();
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
    return braced ? value.substr(1, value.size() - 2) : value;
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

}  // namespace talvex::platform::database
