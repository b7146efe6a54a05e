// The file system, as far as the component and its services need it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace talvex::platform {

// Paths are UTF-8; "\" and "/" both separate. Failures raise 53 (no such file), 58 (the name is taken) or 75
// (access), naming the path and the system's reason.
class Files {
 public:
  virtual ~Files() = default;

  [[nodiscard]] virtual bool Exists(const std::string& path) const = 0;
  // Waits for nobody: what is no ordinary file, and what is larger than an implementation reads, raises 75.
  [[nodiscard]] virtual std::string Read(const std::string& path) const = 0;

  // Something that changes whenever the file's content does (its size and times); nothing when there is no
  // such file.
  [[nodiscard]] virtual std::optional<std::string> Version(const std::string& path) const = 0;

  // Writes a new file that appears under its name only when it is whole; a name that is taken raises 58.
  virtual void WriteNew(const std::string& path, std::string_view content) = 0;

  // Writes a file that appears under its name only when it is whole, in place of the one that has the name.
  // The name of a symbolic link becomes that of the file, with the mode of the one that the link leads to,
  // which stays as it is.
  virtual void Replace(const std::string& path, std::string_view content) = 0;

  // Adds to the end in one write, so that lines of several writers do not mix; makes the file when it is
  // missing.
  virtual void Append(const std::string& path, std::string_view content) = 0;

  // Gives a file another name in the same folder; a name that is taken raises 58.
  virtual void Rename(const std::string& from, const std::string& to) = 0;

  // No error when there is no such file.
  virtual void Remove(const std::string& path) = 0;

  // Makes the folder and those above it; no error when it is there.
  virtual void MakeFolder(const std::string& path) = 0;
};

// The path with every "\" as "/", the form that the system reads.
[[nodiscard]] std::string SystemPath(std::string_view path);

}  // namespace talvex::platform
