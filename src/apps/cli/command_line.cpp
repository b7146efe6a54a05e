#include "apps/cli/command_line.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <functional>
#include <sstream>
#include <string>
#include <string_view>

#include "apps/cli/arguments.h"
#include "apps/cli/error_report.h"
#include "apps/cli/session.h"

namespace talvex::apps {

namespace {

// Everything that a run of the program says, kept until its end: what was answered before something went
// wrong is told all the same.
struct Answer {
  std::ostringstream out;
  std::string errors;
};

// Runs something and turns what it throws into an exit status and a message.
ExitStatus Guarded(Answer& answer, const std::function<ExitStatus()>& run) {
  try {
    return run();
  } catch (const UsageError& error) {
    answer.errors += ErrorLine(error.what()) + "Help: talvex --help\n";
    return ExitStatus::Usage;
  } catch (const Refusal& error) {
    answer.errors += ErrorLine(error.what());
    return ExitStatus::No;
  } catch (const Failure& error) {
    answer.errors += ErrorLine(error.what());
  } catch (...) {
    answer.errors += ErrorReport(automation::CurrentExceptionState());
  }
  return ExitStatus::Failed;
}

// Writes a whole text; false, with errno set, when it cannot.
bool Write(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(file, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

// Whoever closed the pipe has read what they wanted; any other failure to answer is one.
ExitStatus Deliver(Answer& answer, ExitStatus status) {
  if (!Write(STDOUT_FILENO, answer.out.str()) && errno != EPIPE) {
    answer.errors += ErrorLine(std::string("cannot write the answer: ") + std::strerror(errno));
    status = ExitStatus::Failed;
  }
  static_cast<void>(Write(STDERR_FILENO, answer.errors));
  return status;
}

ExitStatus ParseAndRun(int argc, const char* const* argv, Answer& answer) {
  const ParsedArguments parsed = ParseArguments(argc, argv);
  if (!parsed.command) {
    answer.out << parsed.help;
    return ExitStatus::Done;
  }
  Session session(parsed.options, StyleOfStandardOutput(), answer.out);
  return parsed.command(session);
}

}  // namespace

int RunCommandLine(int argc, const char* const* argv) noexcept {
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  try {
    Answer answer;
    const ExitStatus status = Guarded(answer, [&] { return ParseAndRun(argc, argv, answer); });
    return static_cast<int>(Deliver(answer, status));
  } catch (...) {
    static_cast<void>(Write(STDERR_FILENO, "talvex: out of memory\n"));
    return static_cast<int>(ExitStatus::Failed);
  }
}

}  // namespace talvex::apps
