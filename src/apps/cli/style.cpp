#include "apps/cli/style.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "automation/text.h"

namespace talvex::apps {

namespace {

std::string_view Variable(const char* name) {
  const char* const value =
      std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nobody writes the environment.
  return value == nullptr ? std::string_view() : std::string_view(value);
}

bool LocaleIsUtf8() {
  // The first of them that is set decides, as it does for the C library.
  for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const std::string locale = automation::Folded(Variable(name));
    if (locale.empty()) continue;
    return locale.find("utf-8") != std::string::npos || locale.find("utf8") != std::string::npos;
  }
  return true;
}

std::string_view EscapeOf(Colour colour) {
  switch (colour) {
    case Colour::Dim:
      return "\033[2m";
    case Colour::Green:
      return "\033[32m";
    case Colour::Yellow:
      return "\033[33m";
    case Colour::Red:
      return "\033[31m";
    case Colour::Plain:
      break;
  }
  return {};
}

}  // namespace

std::string Style::Paint(Colour colour_name, std::string_view text) const {
  const std::string_view escape = EscapeOf(colour_name);
  if (!colour || escape.empty() || text.empty()) return std::string(text);
  return std::string(escape).append(text).append("\033[0m");
}

Style StyleOfStandardOutput() {
  Style style;
  style.unicode = LocaleIsUtf8();
  if (isatty(STDOUT_FILENO) == 0) return style;
  style.colour = Variable("NO_COLOR").empty() && Variable("TERM") != "dumb";
  winsize size{};
  constexpr std::size_t kNarrowest = 40;
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
    style.width = std::max<std::size_t>(size.ws_col, kNarrowest);
  }
  return style;
}

}  // namespace talvex::apps
