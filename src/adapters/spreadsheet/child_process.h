// Runs a program under limits, so that this process outlives whatever becomes of it. The limits are all: the
// program has the rights of whoever starts it, unless it gives them up itself.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace talvex::adapters::spreadsheet {

struct Limits {
  std::size_t memory = std::size_t{1} << 30;    // Bytes of address space.
  std::size_t output = std::size_t{256} << 20;  // Bytes of any file that it writes, its answer included.
  std::chrono::seconds processor{60};           // Of processor time.
  std::chrono::milliseconds wall{120000};       // Until it is killed, however little it does.
};

struct Run {
  enum class Ending { Exited, Signalled, TimedOut, NotStarted };
  Ending ending = Ending::NotStarted;
  int code = 0;  // The exit status, the signal's number, or the system's error number.
  std::string output;
};

// Starts the program with `input` on its standard input and waits until it has ended; returns what it wrote
// to its standard output. It gets an environment of its own, no descriptor but the standard three, and dies
// with the calling thread. Whatever it started in its process group is killed when it ends. Input and output
// are files without a name, of which nothing is left. Raises 7 when the system has no descriptor or memory
// for it.
[[nodiscard]] Run RunProgram(const std::string& program, const std::vector<std::string>& arguments,
                             std::string_view input, const Limits& limits);

}  // namespace talvex::adapters::spreadsheet
