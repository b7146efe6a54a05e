// Why a call cannot be answered, as the message says it.
#pragma once

#include <stdexcept>
#include <string>

namespace talvex::sheet {

class Refusal : public std::runtime_error {
 public:
  // `kind` is one of message::refusals.
  Refusal(const char* kind, const std::string& text) : std::runtime_error(text), kind_(kind) {}
  [[nodiscard]] const char* Kind() const noexcept { return kind_; }

 private:
  const char* kind_;
};

}  // namespace talvex::sheet
