#include "apps/cli/progress.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

namespace talvex::apps {

namespace {

constexpr std::chrono::milliseconds kBetween(150);

}  // namespace

Progress::Progress(std::string what)
    : what_(std::move(what)), terminal_(isatty(STDERR_FILENO) != 0), next_(std::chrono::steady_clock::now()) {
  Show(what_ + " ...");
}

void Progress::Count(std::size_t rows) {
  if (!terminal_ || std::chrono::steady_clock::now() < next_) return;
  Show(what_ + " ... " + std::to_string(rows) + " rows");
}

void Progress::Show(const std::string& text) {
  if (!terminal_) return;
  std::fprintf(stderr, "\r\033[K%s", text.c_str());
  std::fflush(stderr);
  shown_ = true;
  next_ = std::chrono::steady_clock::now() + kBetween;
}

void Progress::Done() noexcept {
  if (!shown_) return;
  std::fputs("\r\033[K", stderr);
  std::fflush(stderr);
  shown_ = false;
}

}  // namespace talvex::apps
