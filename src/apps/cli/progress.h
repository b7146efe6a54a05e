// Telling on a terminal that something takes its time.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace talvex::apps {

// One line on standard error that rewrites itself, several times a second; nothing at all where that is no
// terminal. The line is gone when the work is done.
class Progress {
 public:
  explicit Progress(std::string what);
  ~Progress() { Done(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // How many rows have been dealt with.
  void Count(std::size_t rows);
  void Done() noexcept;

 private:
  void Show(const std::string& text);

  std::string what_;
  bool terminal_;
  bool shown_ = false;
  std::chrono::steady_clock::time_point next_;
};

}  // namespace talvex::apps
