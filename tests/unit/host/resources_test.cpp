#include "host/resources.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

#include "support/source_tree.h"

namespace talvex::host {
namespace {

using FileMap = std::map<std::string, std::string>;

// The files as they lie in the source tree, by the paths that the program knows them by.
FileMap FilesOnDisk() {
  const std::filesystem::path top = test::SourcePath("");
  FileMap files;
  for (const char* const folder : {"config", "schema"}) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(top / folder)) {
      if (!entry.is_regular_file()) continue;
      std::ifstream stream(entry.path(), std::ios::binary);
      files[entry.path().lexically_relative(top).generic_string()] =
          std::string(std::istreambuf_iterator<char>(stream), {});
    }
  }
  return files;
}

TEST(InstallationFiles, AreThoseOfTheSourceTreeByteForByte) {
  FileMap held;
  for (const Resource& file : InstallationFiles()) held[std::string(file.path)] = std::string(file.content);
  EXPECT_EQ(held, FilesOnDisk());
}

TEST(InstallationFiles, ComeInAscendingOrderOfTheirPathsEachOnce) {
  std::string last;
  for (const Resource& file : InstallationFiles()) {
    EXPECT_LT(last, file.path);
    last = file.path;
  }
  EXPECT_FALSE(last.empty());
}

}  // namespace
}  // namespace talvex::host
