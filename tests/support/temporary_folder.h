// A folder of a test's own.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace talvex::test {

// An empty folder that vanishes with its content at the end.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    // mkdtemp puts other letters in place of the last six.
    std::string name = (std::filesystem::temp_directory_path() / "talvex-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make the folder " + name);
    path_ = name;
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  [[nodiscard]] const std::string& Path() const noexcept { return path_; }
  [[nodiscard]] std::string Path(std::string_view name) const { return path_ + "/" + std::string(name); }
  // Makes a file in the folder; returns its path.
  std::string Write(std::string_view name, std::string_view text) const {
    std::ofstream(Path(name), std::ios::binary) << text;
    return Path(name);
  }

 private:
  std::string path_;
};

}  // namespace talvex::test
