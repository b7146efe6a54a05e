// What libxml2 and libxslt complain about.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/xml/tree.h"

namespace talvex::adapters::libxml2 {

// Collects what the libraries complain about on this thread, for as long as it lives; without one, complaints
// go unheard: nothing is ever written to standard error. They do not nest.
class Complaints {
 public:
  Complaints() noexcept;
  ~Complaints();
  Complaints(const Complaints&) = delete;
  Complaints& operator=(const Complaints&) = delete;

  // Silences the libraries and keeps them from opening anything by themselves. To be called before they are
  // used, once per process.
  static void Install();

  // Adds a complaint to the thread's collection.
  static void Note(std::int32_t code, std::int32_t line, std::string_view message);

  // The first complaint, the one that says what is wrong; others often only follow from it. Code 0 when there
  // was none.
  [[nodiscard]] const platform::xml::ParseError& First() const noexcept { return first_; }

  // Raises the first complaint, or else `otherwise`, as error -2147467259 behind the words `what`.
  [[noreturn]] void Raise(std::string_view what, std::string_view otherwise) const;

  // For complaints that come in pieces of text, as most of libxslt's do, and a stylesheet's own messages.
  static void AddText(void* unused, const char* format, ...) __attribute__((format(printf, 2, 3)));

 private:
  platform::xml::ParseError first_;
  std::string text_;
};

}  // namespace talvex::adapters::libxml2
