// The file system of the machine.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/files.h"

namespace talvex::adapters::posix {

// More than this is read of no file.
inline constexpr std::size_t kLargestFile = 100'000'000;

// A file made by WriteNew or Replace is on the disk when the call returns, and the folder knows it: what a
// caller was told is written survives a crash. Until then it has a hidden name, ".new-" and numbers, beside
// its final one. A file that is put in place of another is open to nobody to whom that was not: it has its
// mode, and, as far as this process may say so, its owner and group.
//
// Reading waits for nobody: what is no ordinary file (a folder, a device, a pipe, a socket) and what is
// larger than kLargestFile raises 75.
class SystemFiles final : public platform::Files {
 public:
  [[nodiscard]] bool Exists(const std::string& path) const override;
  [[nodiscard]] std::string Read(const std::string& path) const override;
  [[nodiscard]] std::optional<std::string> Version(const std::string& path) const override;
  void WriteNew(const std::string& path, std::string_view content) override;
  // WriteNew for what may hold a password: from the first byte on nobody but its owner can open the file.
  void WriteNewForOwner(const std::string& path, std::string_view content);
  void Replace(const std::string& path, std::string_view content) override;
  void Append(const std::string& path, std::string_view content) override;
  void Rename(const std::string& from, const std::string& to) override;
  void Remove(const std::string& path) override;
  void MakeFolder(const std::string& path) override;
};

}  // namespace talvex::adapters::posix
