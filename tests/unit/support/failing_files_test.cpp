#include "support/failing_files.h"

#include <gtest/gtest.h>

#include "adapters/posix/system_files.h"
#include "support/temporary_folder.h"

namespace talvex::test {
namespace {

using automation::Error;
using Call = FailingFiles::Call;

Error Refusal() { return {automation::error_number::kFileAccess, "Test", "refused"}; }

TEST(FailingFiles, FailsTheNthCallOnceAndDoesNothingThen) {
  const TemporaryFolder folder;
  FailingFiles files(std::make_shared<adapters::posix::SystemFiles>());
  files.FailAt(Call::WriteNew, 2, Refusal());
  files.WriteNew(folder.Path("a"), "1");
  EXPECT_THROW(files.WriteNew(folder.Path("b"), "2"), Error);
  EXPECT_FALSE(files.Exists(folder.Path("b")));
  files.WriteNew(folder.Path("b"), "3");
  EXPECT_EQ(files.Read(folder.Path("b")), "3");
  ASSERT_EQ(files.Calls().size(), 5U);
  EXPECT_EQ(files.Calls()[1], std::pair(Call::WriteNew, folder.Path("b")));
}

TEST(FailingFiles, EveryCallCanFailAndIsOtherwisePassedOn) {
  const TemporaryFolder folder;
  FailingFiles files(std::make_shared<adapters::posix::SystemFiles>());
  const std::string a = folder.Path("a");
  const auto fails_once = [&](Call call, auto steps) {
    files.FailAt(call, 1, Refusal());
    EXPECT_THROW(steps(), Error);
    EXPECT_NO_THROW(steps());
  };
  fails_once(Call::Append, [&] { files.Append(a, "x"); });
  fails_once(Call::Exists, [&] { EXPECT_TRUE(files.Exists(a)); });
  fails_once(Call::Read, [&] { EXPECT_EQ(files.Read(a), "x"); });
  fails_once(Call::Version, [&] { EXPECT_TRUE(files.Version(a).has_value()); });
  fails_once(Call::Rename, [&] { files.Rename(a, folder.Path("b")); });
  fails_once(Call::Remove, [&] { files.Remove(folder.Path("b")); });
  fails_once(Call::MakeFolder, [&] { files.MakeFolder(a); });
  EXPECT_TRUE(files.Exists(a));
  EXPECT_FALSE(files.Exists(folder.Path("b")));
}

}  // namespace
}  // namespace talvex::test
