// The file system of the machine.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/files.h"

namespace talvex::adapters::posix {

// A file made by WriteNew is on the disk when the call returns, and the folder knows it: what a caller was
// told is written survives a crash. Until then it has a hidden name, ".new-" and numbers, beside its final
// one.
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
