#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <future>
#include <string>
#include <vector>

#include "adapters/posix/system_files.h"
#include "automation/error.h"
#include "support/temporary_folder.h"

namespace talvex::adapters::posix {
namespace {

namespace fs = std::filesystem;
namespace number = automation::error_number;

class PosixFilesTest : public ::testing::Test {
 protected:
  // Expects an error with the number and, in its text, the path and the reason.
  template <class Steps>
  static void ExpectError(std::int32_t error, const std::string& path, const std::string& reason,
                          Steps steps) {
    try {
      steps();
      ADD_FAILURE() << "nothing was raised for " << path;
    } catch (const automation::Error& raised) {
      EXPECT_EQ(raised.Number(), error) << raised.Description();
      EXPECT_NE(raised.Description().find(path), std::string::npos) << raised.Description();
      EXPECT_NE(raised.Description().find(reason), std::string::npos) << raised.Description();
    }
  }

  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder_.Path())) names.push_back(entry.path().filename());
    return names;
  }

  std::string Path(std::string_view name) const { return folder_.Path(name); }

  static mode_t ModeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    return status.st_mode & 07777U;
  }

  SystemFiles files_;
  test::TemporaryFolder folder_;
};

// For as long as it lives, files of this process may not grow beyond a size.
class SmallFilesOnly {
 public:
  explicit SmallFilesOnly(rlim_t size) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit smaller{size, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &smaller);
  }
  ~SmallFilesOnly() {
    setrlimit(RLIMIT_FSIZE, &before_);
    static_cast<void>(std::signal(SIGXFSZ, handler_));
  }
  SmallFilesOnly(const SmallFilesOnly&) = delete;
  SmallFilesOnly& operator=(const SmallFilesOnly&) = delete;

 private:
  rlimit before_{};
  void (*handler_)(int);
};

// A socket with a name in the file system.
class UnixSocket {
 public:
  explicit UnixSocket(const std::string& path) : handle_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{AF_UNIX, {}};
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(bind(handle_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  }
  ~UnixSocket() { close(handle_); }
  UnixSocket(const UnixSocket&) = delete;
  UnixSocket& operator=(const UnixSocket&) = delete;

 private:
  int handle_;
};

TEST_F(PosixFilesTest, ANewFileIsReadBackByteForByte) {
  const std::string content = std::string("line\r\n\0\xff", 8) + std::string(200000, 'x');
  files_.WriteNew(Path("a"), content);
  EXPECT_EQ(files_.Read(Path("a")), content);
  files_.WriteNew(Path("empty"), "");
  EXPECT_EQ(files_.Read(Path("empty")), "");
}

TEST_F(PosixFilesTest, ANewFileForItsOwnerCanBeOpenedByNobodyElseWhateverTheMaskAllows) {
  const mode_t mask = umask(0);
  files_.WriteNewForOwner(Path("a"), "secret");
  files_.WriteNew(Path("b"), "open");
  umask(mask);
  struct stat found {};
  ASSERT_EQ(stat(Path("a").c_str(), &found), 0);
  EXPECT_EQ(found.st_mode & 0777U, 0600U);
  ASSERT_EQ(stat(Path("b").c_str(), &found), 0);
  EXPECT_EQ(found.st_mode & 0777U, 0666U);
  EXPECT_EQ(files_.Read(Path("a")), "secret");
  ExpectError(number::kFileAlreadyExists, Path("a"), "exists",
              [&] { files_.WriteNewForOwner(Path("a"), ""); });
}

TEST_F(PosixFilesTest, ANewFileLeavesNothingElseBeside) {
  files_.WriteNew(Path("a"), "x");
  EXPECT_EQ(Names(), std::vector<std::string>{"a"});
}

TEST_F(PosixFilesTest, ANewFileNeverReplacesAnother) {
  files_.WriteNew(Path("a"), "first");
  ExpectError(number::kFileAlreadyExists, Path("a"), "File exists",
              [&] { files_.WriteNew(Path("a"), "second"); });
  fs::create_directory(Path("b"));
  ExpectError(number::kFileAlreadyExists, Path("b"), "File exists", [&] { files_.WriteNew(Path("b"), "x"); });
  fs::create_symlink("nowhere", Path("c"));
  ExpectError(number::kFileAlreadyExists, Path("c"), "File exists", [&] { files_.WriteNew(Path("c"), "x"); });
  EXPECT_EQ(files_.Read(Path("a")), "first");
  EXPECT_EQ(Names().size(), 3U);
}

TEST_F(PosixFilesTest, AReplacedFileIsTheNewOneWhole) {
  files_.Replace(Path("a"), "first");
  files_.Replace(Path("a"), "second");
  EXPECT_EQ(files_.Read(Path("a")), "second");
  EXPECT_EQ(Names(), std::vector<std::string>{"a"});
  fs::create_directory(Path("b"));
  ExpectError(number::kFileAccess, Path("b"), "Is a directory", [&] { files_.Replace(Path("b"), "x"); });
  ExpectError(number::kFileNotFound, Path("no/a"), "No such file",
              [&] { files_.Replace(Path("no/a"), "x"); });
  EXPECT_EQ(Names().size(), 2U);
}

TEST_F(PosixFilesTest, AFailedReplacementLeavesTheOldFile) {
  files_.WriteNew(Path("a"), "old");
  {
    const SmallFilesOnly limit(1000);
    ExpectError(number::kFileAccess, Path("a"), "File too large",
                [&] { files_.Replace(Path("a"), std::string(10000, 'x')); });
  }
  EXPECT_EQ(files_.Read(Path("a")), "old");
  EXPECT_EQ(Names(), std::vector<std::string>{"a"});
}

TEST_F(PosixFilesTest, OneOfManyWritersOfTheSameNameWinsWhole) {
  const auto write = [this](char letter) {
    try {
      files_.WriteNew(Path("a"), std::string(100000, letter));
      return 1;
    } catch (const automation::Error& error) {
      EXPECT_EQ(error.Number(), number::kFileAlreadyExists);
      return 0;
    }
  };
  std::vector<std::future<int>> writers;
  for (const char letter : {'a', 'b', 'c', 'd'})
    writers.push_back(std::async(std::launch::async, write, letter));
  int winners = 0;
  for (auto& writer : writers) winners += writer.get();
  EXPECT_EQ(winners, 1);
  const std::string content = files_.Read(Path("a"));
  EXPECT_EQ(content, std::string(100000, content.front()));
  EXPECT_EQ(Names(), std::vector<std::string>{"a"});
}

TEST_F(PosixFilesTest, AFolderThatIsMissingIsTold) {
  ExpectError(number::kFileNotFound, Path("no/a"), "No such file",
              [&] { files_.WriteNew(Path("no/a"), "x"); });
  files_.WriteNew(Path("a"), "x");
  ExpectError(number::kFileNotFound, Path("a/b"), "Not a directory",
              [&] { files_.WriteNew(Path("a/b"), "x"); });
}

TEST_F(PosixFilesTest, NothingIsLeftOfANewFileThatCannotBeWrittenWhole) {
  const SmallFilesOnly limit(4096);
  ExpectError(number::kFileAccess, Path("a"), "File too large",
              [&] { files_.WriteNew(Path("a"), std::string(10000, 'x')); });
  EXPECT_TRUE(Names().empty());
}

TEST_F(PosixFilesTest, AnAppendThatIsCutIsTold) {
  files_.Append(Path("log"), "first\n");
  const SmallFilesOnly limit(4096);
  ExpectError(number::kFileAccess, Path("log"), "only 4090 of 10000 bytes",
              [&] { files_.Append(Path("log"), std::string(10000, 'x')); });
}

TEST_F(PosixFilesTest, AppendMakesTheFileAndAddsToItsEnd) {
  files_.Append(Path("log"), "first\n");
  files_.Append(Path("log"), "second\n");
  files_.Append(Path("log"), "");
  EXPECT_EQ(files_.Read(Path("log")), "first\nsecond\n");
  ExpectError(number::kFileNotFound, Path("no/log"), "No such file",
              [&] { files_.Append(Path("no/log"), "x"); });
  ExpectError(number::kFileAccess, folder_.Path(), "Is a directory",
              [&] { files_.Append(folder_.Path(), "x"); });
}

TEST_F(PosixFilesTest, LinesOfManyWritersDoNotMix) {
  const auto write = [this](char letter) {
    for (int i = 0; i < 50; ++i) files_.Append(Path("log"), std::string(999, letter) + "\n");
  };
  std::vector<std::future<void>> writers;
  for (const char letter : {'a', 'b', 'c'}) writers.push_back(std::async(std::launch::async, write, letter));
  for (auto& writer : writers) writer.get();
  std::ifstream log(Path("log"));
  int lines = 0;
  for (std::string line; std::getline(log, line); ++lines) ASSERT_EQ(line, std::string(999, line.front()));
  EXPECT_EQ(lines, 150);
}

TEST_F(PosixFilesTest, BothStrokesSeparate) {
  files_.MakeFolder(folder_.Path() + "\\one\\two");
  files_.WriteNew(folder_.Path() + "\\one/two\\a", "x");
  EXPECT_TRUE(files_.Exists(Path("one/two/a")));
  EXPECT_TRUE(fs::exists(Path("one/two/a")));
  EXPECT_EQ(files_.Read(folder_.Path() + "\\one\\two\\a"), "x");
}

TEST_F(PosixFilesTest, ReadingWhatIsNoFileIsTold) {
  ExpectError(number::kFileNotFound, Path("a"), "No such file",
              [&] { static_cast<void>(files_.Read(Path("a"))); });
  ExpectError(number::kFileAccess, folder_.Path(), "Is a directory",
              [&] { static_cast<void>(files_.Read(folder_.Path())); });
}

// Read without waiting for anybody: an implementation that waited would never come to the next row.
TEST_F(PosixFilesTest, OnlyAnOrdinaryFileIsRead) {
  ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
  ASSERT_EQ(symlink("pipe", Path("link").c_str()), 0);
  const UnixSocket socket(Path("socket"));
  const struct {
    std::string path;
    std::string reason;
  } rows[] = {{Path("pipe"), "it is no ordinary file"},      {Path("link"), "it is no ordinary file"},
              {Path("socket"), "No such device or address"}, {"/dev/zero", "it is no ordinary file"},
              {"/dev/full", "it is no ordinary file"},       {folder_.Path(), "Is a directory"}};
  for (const auto& row : rows) {
    ExpectError(number::kFileAccess, row.path, row.reason, [&] { static_cast<void>(files_.Read(row.path)); });
  }
}

TEST_F(PosixFilesTest, AppendingWaitsForNobodyWhoReadsAPipe) {
  ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
  ExpectError(number::kFileAccess, Path("pipe"), "No such device or address",
              [&] { files_.Append(Path("pipe"), "x"); });
}

TEST_F(PosixFilesTest, NoMoreIsReadThanTheLargestFileHas) {
  static_cast<void>(folder_.Write("a", "x"));
  fs::resize_file(Path("a"), kLargestFile);
  EXPECT_EQ(files_.Read(Path("a")).size(), kLargestFile);
  fs::resize_file(Path("a"), kLargestFile + 1);
  ExpectError(number::kFileAccess, Path("a"), "larger than 100000000 bytes",
              [&] { static_cast<void>(files_.Read(Path("a"))); });
  EXPECT_NE(files_.Read("/proc/self/status"), "") << "a file that does not tell its size";
}

TEST_F(PosixFilesTest, AReplacedFileIsAsOpenAsTheOldOne) {
  const mode_t mask = umask(022);
  for (const mode_t mode : {0600, 0640, 0400, 0664, 0755, 02640}) {
    files_.Replace(Path("a"), "first");
    ASSERT_EQ(chmod(Path("a").c_str(), mode), 0);
    files_.Replace(Path("a"), "second");
    EXPECT_EQ(files_.Read(Path("a")), "second");
    EXPECT_EQ(ModeOf(Path("a")), mode);
    files_.Remove(Path("a"));
  }
  files_.Replace(Path("new"), "x");
  EXPECT_EQ(ModeOf(Path("new")), 0644U) << "where nothing was, the mask of the process holds";
  files_.WriteNew(Path("another"), "x");
  EXPECT_EQ(ModeOf(Path("another")), 0644U);
  umask(mask);
}

TEST_F(PosixFilesTest, AReplacedFileKeepsItsOwnerAndGroup) {
  // Only the superuser can give files away.
  const bool anybody = geteuid() == 0;
  const uid_t owner = anybody ? 12345 : geteuid();
  const gid_t group = anybody ? 54321 : getegid();
  files_.Replace(Path("a"), "first");
  ASSERT_EQ(chown(Path("a").c_str(), owner, group), 0);
  ASSERT_EQ(chmod(Path("a").c_str(), 0640), 0);
  files_.Replace(Path("a"), "second");
  struct stat status {};
  ASSERT_EQ(stat(Path("a").c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, owner);
  EXPECT_EQ(status.st_gid, group);
  EXPECT_EQ(status.st_mode & 07777U, 0640U);
}

TEST_F(PosixFilesTest, APathWithANulCharacterNamesNoOtherFile) {
  files_.WriteNew(Path("a"), "x");
  const std::string path = Path("a") + std::string("\0b", 2);
  const auto expect = [](auto steps) { ExpectError(number::kFileAccess, "", "NUL character", steps); };
  expect([&] { static_cast<void>(files_.Read(path)); });
  expect([&] { static_cast<void>(files_.Exists(path)); });
  expect([&] { static_cast<void>(files_.Version(path)); });
  expect([&] { files_.Append(path, "y"); });
  expect([&] { files_.WriteNew(path, "y"); });
  expect([&] { files_.Rename(Path("a"), path); });
  expect([&] { files_.Remove(path); });
  expect([&] { files_.MakeFolder(path); });
  EXPECT_EQ(files_.Read(Path("a")), "x");
}

TEST_F(PosixFilesTest, TheVersionChangesWithTheContent) {
  EXPECT_EQ(files_.Version(Path("a")), std::nullopt);
  EXPECT_EQ(files_.Version(Path("a/b")), std::nullopt);
  files_.WriteNew(Path("a"), "x");
  const auto first = files_.Version(Path("a"));
  ASSERT_TRUE(first.has_value());
  EXPECT_EQ(files_.Version(Path("a")), first);
  files_.Append(Path("a"), "y");
  const auto second = files_.Version(Path("a"));
  EXPECT_NE(second, first);
  // Another file of the same size in its place.
  files_.WriteNew(Path("b"), "zz");
  fs::rename(Path("b"), Path("a"));
  EXPECT_NE(files_.Version(Path("a")), second);
}

TEST_F(PosixFilesTest, RenamingNeverReplacesAFile) {
  files_.WriteNew(Path("a"), "x");
  files_.WriteNew(Path("b"), "y");
  ExpectError(number::kFileAlreadyExists, Path("b"), "File exists",
              [&] { files_.Rename(Path("a"), Path("b")); });
  ExpectError(number::kFileNotFound, Path("c"), "No such file", [&] { files_.Rename(Path("c"), Path("d")); });
  files_.Rename(Path("a"), Path("d"));
  EXPECT_FALSE(files_.Exists(Path("a")));
  EXPECT_EQ(files_.Read(Path("d")), "x");
  EXPECT_EQ(files_.Read(Path("b")), "y");
}

TEST_F(PosixFilesTest, RemovingWhatIsNotThereIsNoError) {
  files_.WriteNew(Path("a"), "x");
  files_.Remove(Path("a"));
  EXPECT_FALSE(files_.Exists(Path("a")));
  EXPECT_NO_THROW(files_.Remove(Path("a")));
  EXPECT_NO_THROW(files_.Remove(Path("no/a")));
  ExpectError(number::kFileAccess, folder_.Path(), "", [&] { files_.Remove(folder_.Path()); });
}

TEST_F(PosixFilesTest, MakingAFolderMakesThoseAboveIt) {
  files_.MakeFolder(Path("a/b/c"));
  EXPECT_TRUE(fs::is_directory(Path("a/b/c")));
  EXPECT_NO_THROW(files_.MakeFolder(Path("a/b/c")));
  EXPECT_NO_THROW(files_.MakeFolder(Path("a/b/c/")));
  files_.WriteNew(Path("file"), "x");
  ExpectError(number::kFileAlreadyExists, Path("file"), "File exists",
              [&] { files_.MakeFolder(Path("file")); });
  ExpectError(number::kFileAlreadyExists, Path("file/a"), "File exists",
              [&] { files_.MakeFolder(Path("file/a")); });
}

}  // namespace
}  // namespace talvex::adapters::posix
