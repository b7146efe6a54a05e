#include "adapters/spreadsheet/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): for kill and the masks of signals.
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "automation/error.h"

namespace talvex::adapters::spreadsheet {

namespace {

constexpr int kNotStarted = 127;

[[noreturn]] void Raise(const char* what) {
  throw automation::Error(
      automation::error_number::kOutOfMemory, "Talvex.Platform.Spreadsheet",
      std::string("Out of memory: ") + what + " (" + std::generic_category().message(errno) + ")");
}

class Descriptor {
 public:
  Descriptor(int handle, const char* what) : handle_(handle) {
    if (handle_ < 0) Raise(what);
  }
  ~Descriptor() { close(handle_); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  [[nodiscard]] int Handle() const noexcept { return handle_; }

 private:
  int handle_;
};

// A file in memory: no name that could be left behind, no pipe that could fill up or break.
class MemoryFile {
 public:
  explicit MemoryFile(const char* name) : file_(memfd_create(name, MFD_CLOEXEC), "no file in memory") {}

  void Write(std::string_view content) const {
    while (!content.empty()) {
      const ssize_t count = write(file_.Handle(), content.data(), content.size());
      if (count < 0 && errno != EINTR) Raise("no room for a message");
      if (count > 0) content.remove_prefix(static_cast<std::size_t>(count));
    }
    if (lseek(file_.Handle(), 0, SEEK_SET) != 0) Raise("no room for a message");
  }

  [[nodiscard]] std::string Content() const {
    const off_t size = lseek(file_.Handle(), 0, SEEK_END);
    if (size < 0) Raise("no answer");
    std::string content(static_cast<std::size_t>(size), '\0');
    std::size_t done = 0;
    while (done < content.size()) {
      const ssize_t count =
          pread(file_.Handle(), content.data() + done, content.size() - done, static_cast<off_t>(done));
      if (count < 0 && errno != EINTR) Raise("no answer");
      if (count == 0) break;
      if (count > 0) done += static_cast<std::size_t>(count);
    }
    content.resize(done);
    return content;
  }

  [[nodiscard]] int Handle() const noexcept { return file_.Handle(); }

 private:
  Descriptor file_;
};

// All that the child needs between its start and exec, made before: it uses the memory of this process, and
// another thread may hold any lock just then, so it calls nothing but the system.
struct Start {
  const char* program;
  std::vector<char*> arguments;
  std::vector<char*> environment;
  int input;
  int output;
  int nothing;
  pid_t parent;
  Limits limits;
};

// Never more than the process that starts it is allowed itself.
void SetLimit(__rlimit_resource resource, rlim_t value) {
  rlimit limit{};
  if (getrlimit(resource, &limit) != 0) return;
  if (value < limit.rlim_max) limit.rlim_max = value;
  limit.rlim_cur = limit.rlim_max;
  setrlimit(resource, &limit);
}

[[noreturn]] void BecomeProgram(const Start& start) {
  setpgid(0, 0);
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != start.parent) _exit(kNotStarted);
  for (const int signal_number : {SIGPIPE, SIGXCPU, SIGXFSZ, SIGTERM, SIGINT, SIGHUP}) {
    signal(signal_number, SIG_DFL);
  }
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  // A crash is an ordinary answer here and must not leave a dump of somebody's workbook.
  SetLimit(RLIMIT_CORE, 0);
  SetLimit(RLIMIT_AS, start.limits.memory);
  SetLimit(RLIMIT_FSIZE, start.limits.output);
  SetLimit(RLIMIT_CPU, static_cast<rlim_t>(start.limits.processor.count()));
  if (dup2(start.input, STDIN_FILENO) < 0 || dup2(start.output, STDOUT_FILENO) < 0 ||
      dup2(start.nothing, STDERR_FILENO) < 0) {
    _exit(kNotStarted);
  }
  close_range(STDERR_FILENO + 1, ~0U, 0);
  execve(start.program, start.arguments.data(), start.environment.data());
  _exit(kNotStarted);
}

// Whether the process ended in time.
bool WaitFor(int process, std::chrono::milliseconds time) {
  const auto end = std::chrono::steady_clock::now() + time;
  for (;;) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    if (left.count() <= 0) return false;
    pollfd ended{process, POLLIN, 0};
    const int ready = poll(&ended, 1, static_cast<int>(left.count()));
    if (ready > 0) return true;
    if (ready < 0 && errno != EINTR) return false;
  }
}

// Kills what is left of the group, and takes the child's status. As long as the child is not waited for, no
// other process can get its number.
int KillGroupAndWait(pid_t child) {
  kill(-child, SIGKILL);
  kill(child, SIGKILL);
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (auto& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

// One locale, and no variable of the caller's but the time zone, which TODAY() needs.
std::vector<std::string> Environment() {
  std::vector<std::string> environment{"LC_ALL=C.UTF-8", "PATH=/usr/bin:/bin", "HOME=/nonexistent"};
  // With one allocator there is one place where memory can run out, and the program says so there.
  environment.emplace_back("G_SLICE=always-malloc");
  if (const char* zone = std::getenv("TZ")) environment.emplace_back(std::string("TZ=") + zone);
  return environment;
}

}  // namespace

Run RunProgram(const std::string& program, const std::vector<std::string>& arguments, std::string_view input,
               const Limits& limits) {
  if (access(program.c_str(), X_OK) != 0) return {Run::Ending::NotStarted, errno, {}};
  const MemoryFile asked("talvex-sheet-input");
  const MemoryFile answered("talvex-sheet-output");
  asked.Write(input);
  const Descriptor nothing(open("/dev/null", O_WRONLY | O_CLOEXEC), "no /dev/null");

  std::vector<std::string> words{program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<std::string> environment = Environment();
  const Start start{program.c_str(),
                    Pointers(words),
                    Pointers(environment),
                    asked.Handle(),
                    answered.Handle(),
                    nothing.Handle(),
                    getpid(),
                    limits};
  // Not fork: a copy of this process, which may be large, is not needed, and everything that this process
  // writes to afterwards would be copied page by page.
  const pid_t child = vfork();  // NOLINT(clang-analyzer-security.insecureAPI.vfork)
  if (child < 0) Raise("no process");
  if (child == 0) BecomeProgram(start);
  setpgid(child, child);  // Here as well as there: whichever comes first.
  // The C library's own header for it cannot be used from C++.
  const auto process = static_cast<int>(syscall(SYS_pidfd_open, child, 0));
  const int why = errno;
  const bool in_time = process >= 0 && WaitFor(process, limits.wall);
  // An ended child keeps its status when it is killed.
  const int status = KillGroupAndWait(child);
  if (process < 0) {
    errno = why;
    Raise("no descriptor for a process");
  }
  close(process);
  if (!in_time) return {Run::Ending::TimedOut, 0, {}};
  if (WIFSIGNALED(status)) return {Run::Ending::Signalled, WTERMSIG(status), {}};
  if (WEXITSTATUS(status) == kNotStarted) return {Run::Ending::NotStarted, ENOEXEC, {}};
  return {Run::Ending::Exited, WEXITSTATUS(status), answered.Content()};
}

}  // namespace talvex::adapters::spreadsheet
