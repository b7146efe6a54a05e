// Mail messages as text, in the format of RFC 5322 and MIME.
#pragma once

#include <string>
#include <string_view>

#include "automation/date.h"

namespace talvex::adapters::suite {

struct MailAddress {
  std::string name;     // Shown beside the address; may be empty.
  std::string address;  // One that IsMailAddress accepts.
};

// All texts are UTF-8.
struct MailMessage {
  std::string id;  // Unique for all time, of letters, digits and "-". The sender's domain is added to it.
  MailAddress from;
  MailAddress to;
  std::string subject;
  std::string body;
  automation::Date date;  // Local time; the message says that the zone is not known.
};

// Whether the text is one plain address, local@domain: printable ASCII without blanks, quotes, brackets or
// separators, so that nothing in it can be read as a second address or another header.
[[nodiscard]] bool IsMailAddress(std::string_view text) noexcept;

// The whole message, every line ended by CR LF and none longer than a mail server takes. Control characters,
// line breaks above all, are left out of names and subject. Any kind of line end in the body becomes CR LF,
// and its last line has one.
[[nodiscard]] std::string MailText(const MailMessage& message);

}  // namespace talvex::adapters::suite
