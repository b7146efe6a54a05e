#include "adapters/libxml2/complaints.h"

#include <libxml/parser.h>
#include <libxml/xmlerror.h>
#include <libxslt/xsltutils.h>

#include <array>
#include <cstdarg>
#include <cstdio>

#include "adapters/libxml2/names.h"
#include "adapters/libxml2/ownership.h"
#include "automation/error.h"
#include "automation/text.h"

namespace talvex::adapters::libxml2 {

namespace {

thread_local Complaints* listening = nullptr;

constexpr std::size_t kLongestText = 4096;

// The text on one line, without blanks at its end.
std::string OnOneLine(std::string_view text) {
  std::string line = automation::Replaced(text, "\n", " ");
  line.erase(line.find_last_not_of(' ') + 1);
  return line;
}

void OnError(void* /*unused*/, xmlErrorPtr error) {
  if (error->level < XML_ERR_ERROR || error->message == nullptr) return;
  Complaints::Note(error->code, error->line, error->message);
}

// Every file is read by ourselves, and what is read names no other: whoever gets here reaches for something
// that it must not have.
xmlParserInputPtr Refuse(const char* url, const char* /*id*/, xmlParserCtxtPtr /*parser*/) {
  Complaints::Note(
      XML_IO_LOAD_ERROR, 0,
      "It reaches for " + std::string(url == nullptr ? "another document" : url) + ", which is refused");
  return nullptr;
}

}  // namespace

Complaints::Complaints() noexcept {
  listening = this;
  // The library keeps these for each thread.
  xmlSetStructuredErrorFunc(nullptr, &OnError);
  xmlSetGenericErrorFunc(nullptr, &Complaints::AddText);
}

Complaints::~Complaints() { listening = nullptr; }

void Complaints::Install() {
  xmlSetExternalEntityLoader(&Refuse);
  xsltSetGenericErrorFunc(nullptr, &Complaints::AddText);
}

void Complaints::Note(std::int32_t code, std::int32_t line, std::string_view message) {
  if (listening == nullptr || listening->first_.code != 0) return;
  const std::string place = line > 0 ? "Line " + std::to_string(line) + ": " : std::string();
  listening->first_ = {code, place + OnOneLine(message), line > 0 ? line : 0};
}

void Complaints::AddText(void* /*unused*/, const char* format, ...) {
  if (listening == nullptr || listening->text_.size() >= kLongestText) return;
  std::array<char, kLongestText> text{};
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  listening->text_ += text.data();
}

void Complaints::Raise(std::string_view what, std::string_view otherwise) const {
  std::string reason = first_.reason;
  if (!text_.empty()) reason.append(reason.empty() ? "" : "; ").append(OnOneLine(text_));
  if (reason.empty()) reason = otherwise;
  throw automation::Error(automation::error_number::kUnspecified, kSource, std::string(what) + ": " + reason);
}

}  // namespace talvex::adapters::libxml2
