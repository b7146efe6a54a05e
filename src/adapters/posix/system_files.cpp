#include "adapters/posix/system_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "automation/error.h"

namespace talvex::adapters::posix {

namespace {

using automation::Error;
namespace number = automation::error_number;

constexpr std::string_view kSource = "Talvex.Platform.Files";
constexpr mode_t kNewFileMode = 0666;  // The process's mask takes its share.
constexpr mode_t kOwnerOnly = 0600;
constexpr mode_t kAllOfMode = 07777;
constexpr auto kUnchanged = static_cast<uid_t>(-1);  // To fchown, of either.

[[noreturn]] void Raise(int system_error, const std::string& path) {
  const std::string tail = ": " + path + " (" + std::generic_category().message(system_error) + ")";
  switch (system_error) {
    case ENOENT:
    case ENOTDIR:
      throw Error(number::kFileNotFound, kSource, "File not found" + tail);
    case EEXIST:
      throw Error(number::kFileAlreadyExists, kSource, "File already exists" + tail);
    default:
      throw Error(number::kFileAccess, kSource, "Path/File access error" + tail);
  }
}

[[noreturn]] void RaiseUnread(const std::string& path, const std::string& why) {
  throw Error(number::kFileAccess, kSource, "Path/File access error: " + path + " (" + why + ")");
}

// The path as the system reads it. A NUL character would end it early and name another file.
std::string Checked(const std::string& path) {
  if (path.find('\0') != std::string::npos) {
    throw Error(number::kFileAccess, kSource, "Path/File access error: a path holds a NUL character");
  }
  return platform::SystemPath(path);
}

// An open file or folder. Errors speak of the path that is `named`: the one that the caller knows.
class Descriptor {
 public:
  Descriptor(const std::string& path, int flags, const std::string& named, mode_t mode = kNewFileMode)
      : named_(named), handle_(open(path.c_str(), flags | O_CLOEXEC, mode)) {
    if (handle_ < 0) Raise(errno, named_);
  }
  ~Descriptor() {
    if (handle_ >= 0) close(handle_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  // The number of bytes read or written, one at least unless the file ends.
  [[nodiscard]] std::size_t Read(char* data, std::size_t size) const {
    return Repeat([&] { return read(handle_, data, size); });
  }
  [[nodiscard]] std::size_t Write(std::string_view data) const {
    return Repeat([&] { return write(handle_, data.data(), data.size()); });
  }
  [[nodiscard]] struct stat Status() const {
    struct stat status {};
    if (fstat(handle_, &status) != 0) Raise(errno, named_);
    return status;
  }
  // Makes the file as open as another one, and never more. Without its group, the group that the file has
  // instead gets what everybody has.
  void BeAsOpenAs(const struct stat& other) const {
    mode_t mode = other.st_mode & kAllOfMode;
    const struct stat own = Status();
    const bool owned = own.st_uid == other.st_uid || fchown(handle_, other.st_uid, kUnchanged) == 0;
    if (own.st_gid != other.st_gid && fchown(handle_, kUnchanged, other.st_gid) != 0) {
      mode = (mode & ~S_IRWXG) | ((mode & S_IRWXO) << 3);
    }
    if (!owned || Status().st_gid != other.st_gid) mode &= ~static_cast<mode_t>(S_ISUID | S_ISGID);
    if (fchmod(handle_, mode) != 0) Raise(errno, named_);
  }
  // Some file systems have nothing to do for a folder, and say that they cannot.
  void Sync() const {
    if (fsync(handle_) != 0 && errno != EINVAL) Raise(errno, named_);
  }
  // Closing can report what went wrong when the system wrote later.
  void Close() {
    const int handle = handle_;
    handle_ = -1;
    if (close(handle) != 0) Raise(errno, named_);
  }

 private:
  template <class Call>
  std::size_t Repeat(Call call) const {
    ssize_t count = call();
    while (count < 0 && errno == EINTR) count = call();
    if (count < 0) Raise(errno, named_);
    return static_cast<std::size_t>(count);
  }

  const std::string& named_;
  int handle_;
};

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

// A name in the same folder that no other file has, not even one that a crash left behind.
std::string TemporaryName(const std::string& folder) {
  static std::atomic<std::uint64_t> next{0};
  const auto now = std::chrono::system_clock::now().time_since_epoch().count();
  return folder + "/.new-" + std::to_string(getpid()) + "-" + std::to_string(now) + "-" +
         std::to_string(next++);
}

// Gives a file its final name, never in place of another file. `named` is what an error speaks of.
void MoveToFreeName(const std::string& from, const std::string& to, const std::string& named) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return;
  if (errno != EINVAL && errno != ENOSYS) Raise(errno, named);
  // Some file systems cannot do it in one step, but a second name is never given in place of another file
  // either.
  if (link(from.c_str(), to.c_str()) != 0) Raise(errno, named);
  unlink(from.c_str());
}

// What the name stands for; nothing when it is free.
std::optional<struct stat> StatusOf(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? std::optional(status) : std::nullopt;
}

// `replaced` is the file whose place this one takes, if there is one.
void WriteWhole(const std::string& path, std::string_view content, const std::string& named, mode_t mode,
                const std::optional<struct stat>& replaced) {
  Descriptor file(path, O_WRONLY | O_CREAT | O_EXCL, named, mode);
  if (replaced) file.BeAsOpenAs(*replaced);
  while (!content.empty()) content.remove_prefix(file.Write(content));
  file.Sync();
  file.Close();
}

// Writes under another name in the same folder, and gives the whole file its final name by `move`.
template <class Move>
void WriteBeside(const std::string& path, std::string_view content, mode_t mode,
                 const std::optional<struct stat>& replaced, Move move) {
  const std::string final_name = Checked(path);
  const std::string folder = FolderOf(final_name);
  const Descriptor folder_handle(folder, O_RDONLY | O_DIRECTORY, path);
  const std::string temporary_name = TemporaryName(folder);
  try {
    WriteWhole(temporary_name, content, path, mode, replaced);
    move(temporary_name, final_name, path);
  } catch (...) {
    unlink(temporary_name.c_str());
    throw;
  }
  folder_handle.Sync();
}

}  // namespace

bool SystemFiles::Exists(const std::string& path) const {
  struct stat found {};
  return stat(Checked(path).c_str(), &found) == 0;
}

std::string SystemFiles::Read(const std::string& path) const {
  // Without the flag, opening a pipe would wait for somebody who writes to it.
  const Descriptor file(Checked(path), O_RDONLY | O_NONBLOCK | O_NOCTTY, path);
  const struct stat status = file.Status();
  if (S_ISDIR(status.st_mode)) Raise(EISDIR, path);
  if (!S_ISREG(status.st_mode)) RaiseUnread(path, "it is no ordinary file");
  std::string content;
  std::array<char, 65536> block{};
  for (;;) {
    // Some files do not tell their size, and some grow meanwhile.
    const bool too_large = content.size() > kLargestFile || status.st_size > off_t{kLargestFile};
    if (too_large) RaiseUnread(path, "it is larger than " + std::to_string(kLargestFile) + " bytes");
    const std::size_t count = file.Read(block.data(), block.size());
    if (count == 0) return content;
    content.append(block.data(), count);
  }
}

std::optional<std::string> SystemFiles::Version(const std::string& path) const {
  struct stat found {};
  if (stat(Checked(path).c_str(), &found) != 0) {
    if (errno == ENOENT || errno == ENOTDIR) return std::nullopt;
    Raise(errno, path);
  }
  const auto moment = [](const timespec& time) {
    return std::to_string(time.tv_sec) + "." + std::to_string(time.tv_nsec);
  };
  return std::to_string(found.st_ino) + " " + std::to_string(found.st_size) + " " + moment(found.st_mtim) +
         " " + moment(found.st_ctim);
}

void SystemFiles::WriteNew(const std::string& path, std::string_view content) {
  WriteBeside(path, content, kNewFileMode, std::nullopt, &MoveToFreeName);
}

void SystemFiles::WriteNewForOwner(const std::string& path, std::string_view content) {
  WriteBeside(path, content, kOwnerOnly, std::nullopt, &MoveToFreeName);
}

void SystemFiles::Replace(const std::string& path, std::string_view content) {
  const auto move = [](const std::string& from, const std::string& to, const std::string& named) {
    if (rename(from.c_str(), to.c_str()) != 0) Raise(errno, named);
  };
  const auto replaced = StatusOf(Checked(path));
  // Until it is as open as the file that it replaces, it is its owner's alone.
  WriteBeside(path, content, replaced ? kOwnerOnly : kNewFileMode, replaced, move);
}

void SystemFiles::Append(const std::string& path, std::string_view content) {
  // A pipe of that name, which nobody reads, must not hold the call up.
  Descriptor file(Checked(path), O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK, path);
  if (const std::size_t written = file.Write(content); written != content.size()) {
    throw Error(number::kFileAccess, kSource,
                "Path/File access error: " + path + " (only " + std::to_string(written) + " of " +
                    std::to_string(content.size()) + " bytes were written)");
  }
  file.Close();
}

void SystemFiles::Rename(const std::string& from, const std::string& to) {
  const std::string target = Checked(to);
  const std::string source = Checked(from);
  if (!Exists(source)) Raise(ENOENT, from);
  MoveToFreeName(source, target, to);
}

void SystemFiles::Remove(const std::string& path) {
  if (unlink(Checked(path).c_str()) != 0 && errno != ENOENT && errno != ENOTDIR) Raise(errno, path);
}

void SystemFiles::MakeFolder(const std::string& path) {
  std::error_code error;
  std::filesystem::create_directories(Checked(path), error);
  // A file stands where a folder should be.
  if (error == std::errc::not_a_directory) Raise(EEXIST, path);
  if (error) Raise(error.value(), path);
}

}  // namespace talvex::adapters::posix
