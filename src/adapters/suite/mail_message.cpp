#include "adapters/suite/mail_message.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>

#include "automation/text.h"

namespace talvex::adapters::suite {

namespace {

// Lines with encoded words must not pass 76 characters; the names of our headers take 9 of them at most.
constexpr std::size_t kMostWord = 66;
constexpr std::size_t kMostBodyLine = 76;

bool IsPrintable(char c) noexcept { return c >= ' ' && c <= '~'; }

bool IsLetterOrDigit(char c) noexcept {
  const char folded = automation::FoldCase(c);
  return (folded >= 'a' && folded <= 'z') || (c >= '0' && c <= '9');
}

bool ContinuesCharacter(char c) noexcept { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }

std::string WithoutControls(std::string_view text) {
  std::string kept(text);
  std::erase_if(kept, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
  return kept;
}

// "=C3" for one byte.
std::string Escaped(char c) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  return {'=', kDigits[byte / 16], kDigits[byte % 16]};
}

// The length of the character at the start of a text; a text that is not UTF-8 counts in pieces of four bytes
// at most.
std::size_t CharacterLength(std::string_view text) noexcept {
  constexpr std::size_t kLongest = 4;
  std::size_t length = 1;
  while (length < std::min(text.size(), kLongest) && ContinuesCharacter(text[length])) ++length;
  return length;
}

// One character as it stands in an encoded word, which may be part of a name and so escapes all but letters
// and digits.
std::string EncodedCharacter(std::string_view character) {
  if (character == " ") return "_";
  if (character.size() == 1 && IsLetterOrDigit(character[0])) return std::string(character);
  std::string encoded;
  for (const char c : character) encoded += Escaped(c);
  return encoded;
}

// The text as encoded words (RFC 2047), one a line. A word holds whole characters only.
std::string EncodedWords(std::string_view text) {
  constexpr std::string_view kBegin = "=?UTF-8?Q?";
  constexpr std::string_view kEnd = "?=";
  std::string encoded(kBegin);
  std::size_t word = kBegin.size();
  while (!text.empty()) {
    const std::size_t length = CharacterLength(text);
    const std::string character = EncodedCharacter(text.substr(0, length));
    if (word + character.size() + kEnd.size() > kMostWord) {
      encoded.append(kEnd).append("\r\n ").append(kBegin);
      word = kBegin.size();
    }
    encoded += character;
    word += character.size();
    text.remove_prefix(length);
  }
  return encoded.append(kEnd);
}

// Whether a reader would take the text as it is, on one line.
bool NeedsNoEncoding(std::string_view text) {
  const bool kept_blanks = text.empty() || (text.front() != ' ' && text.back() != ' ');
  return kept_blanks && text.size() <= kMostWord && std::all_of(text.begin(), text.end(), IsPrintable) &&
         text.find("=?") == std::string_view::npos;
}

std::string SubjectText(std::string_view subject) {
  const std::string text = WithoutControls(subject);
  return NeedsNoEncoding(text) ? text : EncodedWords(text);
}

std::string NameText(std::string_view name) {
  if (!NeedsNoEncoding(name)) return EncodedWords(name);
  const std::string escaped = automation::Replaced(automation::Replaced(name, "\\", "\\\\"), "\"", "\\\"");
  return "\"" + escaped + "\"";
}

// The address stands on a line of its own, so that a long name and a long address fit.
std::string AddressText(const MailAddress& address) {
  const std::string name = WithoutControls(address.name);
  const std::string bracketed = "<" + address.address + ">";
  return name.empty() ? bracketed : NameText(name) + "\r\n " + bracketed;
}

std::string TwoDigits(int number) { return (number < 10 ? "0" : "") + std::to_string(number); }

// "Sat, 21 Nov 2026 14:30:05 -0000"; this zone means that only the local time is known.
std::string DateText(automation::Date date) {
  constexpr std::array<std::string_view, 7> kDays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  constexpr std::array<std::string_view, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const std::chrono::local_seconds moment{std::chrono::seconds{date.Seconds()}};
  const std::chrono::weekday weekday{std::chrono::floor<std::chrono::days>(moment)};
  std::string year = std::to_string(date.Year());
  year.insert(0, 4 - year.size(), '0');
  return std::string(kDays[weekday.c_encoding()]) + ", " + std::to_string(date.Day()) + " " +
         std::string(kMonths[date.Month() - 1]) + " " + year + " " + TwoDigits(date.Hour()) + ":" +
         TwoDigits(date.Minute()) + ":" + TwoDigits(date.Second()) + " -0000";
}

// One line of the body in quoted-printable. A blank at the end of a line is escaped, or servers would cut it.
void AppendBodyLine(std::string_view line, std::string& text) {
  std::size_t column = 0;
  for (std::size_t at = 0; at < line.size(); ++at) {
    const char c = line[at];
    const bool last = at + 1 == line.size();
    const bool plain = IsPrintable(c) && c != '=' && !(c == ' ' && last);
    const std::string piece = plain ? std::string(1, c) : Escaped(c);
    if (column + piece.size() > kMostBodyLine - 1) {
      text += "=\r\n";
      column = 0;
    }
    text += piece;
    column += piece.size();
  }
  text += "\r\n";
}

std::string BodyText(std::string_view body) {
  const std::string lines = automation::Replaced(automation::Replaced(body, "\r\n", "\n"), "\r", "\n");
  std::string text;
  for (std::size_t from = 0; from < lines.size();) {
    const std::size_t end = std::min(lines.find('\n', from), lines.size());
    AppendBodyLine(std::string_view(lines).substr(from, end - from), text);
    from = end + 1;
  }
  return text;
}

}  // namespace

bool IsMailAddress(std::string_view text) noexcept {
  constexpr std::string_view kSeparators = " \"(),:;<>[\\]";
  const std::size_t at = text.find('@');
  return at != std::string_view::npos && at > 0 && at + 1 < text.size() && at == text.rfind('@') &&
         std::all_of(text.begin(), text.end(),
                     [&](char c) { return IsPrintable(c) && kSeparators.find(c) == std::string_view::npos; });
}

std::string MailText(const MailMessage& message) {
  const std::string domain = message.from.address.substr(message.from.address.find('@'));
  std::string text;
  text += "From: " + AddressText(message.from) + "\r\n";
  text += "To: " + AddressText(message.to) + "\r\n";
  text += "Subject: " + SubjectText(message.subject) + "\r\n";
  text += "Date: " + DateText(message.date) + "\r\n";
  text += "Message-ID: <" + message.id + domain + ">\r\n";
  text += "MIME-Version: 1.0\r\n";
  text += "Content-Type: text/plain; charset=utf-8\r\n";
  text += "Content-Transfer-Encoding: quoted-printable\r\n";
  text += "\r\n";
  return text + BodyText(message.body);
}

}  // namespace talvex::adapters::suite
