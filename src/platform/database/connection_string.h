// Connection strings: "Driver=SQLite;Database=/srv/talvex/talvex.db".
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace talvex::platform::database {

// The parts of a connection string, "key=value" joined by ";". A value that begins with a brace ends with the
// closing one, and may contain ";", and "}" written twice.
class ConnectionString {
 public:
  explicit ConnectionString(std::string text);

  [[nodiscard]] const std::string& Text() const noexcept { return text_; }
  // The value of a key, without regard to case, without its braces, and "}}" in them as "}"; the empty text
  // when it is not there.
  [[nodiscard]] std::string Value(std::string_view key) const;
  // The text with every password replaced by "***": the only form that may reach a message or a log.
  [[nodiscard]] std::string Shown() const;

 private:
  std::string text_;
  std::vector<std::pair<std::string, std::string>> parts_;
};

// A value as a connection string holds it: one with characters that mean something there stands in braces.
[[nodiscard]] std::string ConnectionValue(std::string_view value);

}  // namespace talvex::platform::database
