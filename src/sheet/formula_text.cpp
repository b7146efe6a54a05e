#include "sheet/formula_text.h"

#include <glib.h>

#include <algorithm>

#include "adapters/spreadsheet/message/messages.h"
#include "sheet/refusal.h"

namespace talvex::sheet {

namespace {

constexpr char kEscape = '\\';

[[noreturn]] void Refuse(const std::string& why) {
  throw Refusal(adapters::spreadsheet::message::refusals::kEdit, why);
}

// The text in the library's quotes.
std::string Escaped(std::string_view text, char quote) {
  std::string escaped(1, quote);
  for (const char c : text) {
    if (c == quote || c == kEscape) escaped += kEscape;
    escaped += c;
  }
  return escaped += quote;
}

// The text in a workbook's quotes.
std::string Doubled(std::string_view text, char quote) {
  std::string doubled(1, quote);
  for (const char c : text) doubled.append(c == quote ? 2 : 1, c);
  return doubled += quote;
}

// Takes what is in quotes off the beginning of a formula, without the quotes.
std::string TakeDoubled(std::string_view& rest) {
  const char quote = rest.front();
  std::string text;
  for (std::size_t at = 1; at < rest.size(); ++at) {
    if (rest[at] == quote) {
      if (at + 1 == rest.size() || rest[at + 1] != quote) {
        rest.remove_prefix(at + 1);
        return text;
      }
      ++at;
    }
    text += rest[at];
  }
  std::string reason = "a quote ";
  reason += quote;
  reason += " has no end";
  Refuse(reason);
}

std::string TakeEscaped(std::string_view& rest) {
  const char quote = rest.front();
  std::string text;
  std::size_t at = 1;
  for (; at < rest.size() && rest[at] != quote; ++at) {
    if (rest[at] == kEscape && at + 1 < rest.size()) ++at;
    text += rest[at];
  }
  rest.remove_prefix(at < rest.size() ? at + 1 : at);
  return text;
}

char NextOf(std::string_view rest) {
  const std::size_t at = rest.find_first_not_of(" \t\r\n");
  return at == std::string_view::npos ? '\0' : rest[at];
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

std::string_view WithoutDigits(std::string_view text) {
  while (!text.empty() && IsDigit(text.front())) text.remove_prefix(1);
  return text;
}

// Whether it could be taken for a cell, in either way to write one: "Q1", "R", "R1C1".
bool LooksLikeCell(std::string_view name) {
  std::size_t letters = 0;
  while (letters < name.size() && g_ascii_isalpha(name[letters]) != 0) ++letters;
  if (letters > 0 && letters <= 3 && letters < name.size() && WithoutDigits(name.substr(letters)).empty()) {
    return true;
  }
  std::string_view rest = name;
  for (const char part : {'R', 'C'}) {
    if (!rest.empty() && g_ascii_toupper(rest.front()) == part) rest = WithoutDigits(rest.substr(1));
  }
  return rest.empty();
}

// Whether a sheet's name stands in a formula as it is: letters, digits, "_" and ".", the first no digit and
// no point, and nothing that means something else there.
bool IsPlainName(std::string_view name) {
  if (name.empty() || IsDigit(name.front()) || name.front() == '.' || LooksLikeCell(name)) return false;
  const std::string text(name);
  for (const char* at = text.c_str(); *at != '\0'; at = g_utf8_next_char(at)) {
    if (*at != '_' && *at != '.' && g_unichar_isalnum(g_utf8_get_char(at)) == 0) return false;
  }
  return g_ascii_strcasecmp(text.c_str(), "TRUE") != 0 && g_ascii_strcasecmp(text.c_str(), "FALSE") != 0;
}

std::size_t NameLength(std::string_view text) {
  const auto ends = [](char c) {
    return g_ascii_isalnum(c) == 0 && c != '_' && c != '.' && static_cast<unsigned char>(c) < 0x80;
  };
  return static_cast<std::size_t>(std::find_if(text.begin(), text.end(), ends) - text.begin());
}

std::string TakeName(std::string_view& rest) {
  if (rest.starts_with('\'')) return TakeEscaped(rest);
  std::string name(rest.substr(0, NameLength(rest)));
  rest.remove_prefix(name.size());
  return name;
}

// What stands at the beginning of the library's text: the sheet, or the first and the last of several, that a
// "!" follows, with quotes where a workbook needs them; another name as it is.
std::string TakeSheets(std::string_view& rest) {
  std::string_view behind = rest;
  std::string names = TakeName(behind);
  bool plain = IsPlainName(names);
  const bool several = behind.starts_with(':');
  if (several) {
    behind.remove_prefix(1);
    const std::string last = TakeName(behind);
    plain = plain && IsPlainName(last);
    names += ":" + last;
  }
  if (behind.starts_with('!')) {
    rest = behind;
    return plain ? names : Doubled(names, '\'');
  }
  return TakeName(rest);
}

// As far as a sign in its exponent: "1E" of "1e+20".
std::string TakeNumber(std::string_view& rest) {
  std::string number = TakeName(rest);
  std::transform(number.begin(), number.end(), number.begin(), &g_ascii_toupper);
  return number;
}

// An error value, which may end as a sheet's name does: "#REF!".
std::string TakeError(std::string_view& rest) {
  std::string error(rest.substr(0, rest.starts_with("#N/A") ? 4 : rest.find_first_of("!?") + 1));
  if (error.empty()) error = rest.front();
  rest.remove_prefix(error.size());
  return error;
}

std::string InApostrophes(std::string_view name) { return Escaped(name, '\''); }

// No sheet's name has a colon, so one in a quoted name stands between two.
std::string SheetsForLibrary(std::string_view& rest) {
  const std::string names = TakeDoubled(rest);
  if (!rest.starts_with('!')) Refuse("'" + names + "' is not followed by !, as a sheet's name is");
  const std::size_t colon = names.find(':');
  if (colon == std::string::npos) return InApostrophes(names);
  return InApostrophes(names.substr(0, colon)) + ":" + InApostrophes(names.substr(colon + 1));
}

std::string TextForLibrary(std::string_view& rest) {
  const std::string text = TakeDoubled(rest);
  if (NextOf(rest) == '!' || NextOf(rest) == ':') Refuse("\"" + text + "\" is a text, and no sheet's name");
  return Escaped(text, '"');
}

}  // namespace

std::string ForLibrary(std::string_view formula) {
  std::string text;
  for (std::size_t at = formula.find_first_of("\"'"); at != std::string_view::npos;
       at = formula.find_first_of("\"'")) {
    text.append(formula.substr(0, at));
    formula.remove_prefix(at);
    text.append(formula.front() == '"' ? TextForLibrary(formula) : SheetsForLibrary(formula));
  }
  return text.append(formula);
}

std::string FromLibrary(std::string_view formula) {
  std::string text;
  while (!formula.empty()) {
    const char next = formula.front();
    if (next == '"') {
      text += Doubled(TakeEscaped(formula), '"');
    } else if (next == '#') {
      text += TakeError(formula);
    } else if (IsDigit(next)) {
      text += TakeNumber(formula);
    } else if (next == '\'' || NameLength(formula) > 0) {
      text += TakeSheets(formula);
    } else {
      text += next;
      formula.remove_prefix(1);
    }
  }
  return text;
}

}  // namespace talvex::sheet
