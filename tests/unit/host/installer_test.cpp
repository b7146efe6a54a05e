#include "host/installer.h"

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <set>
#include <string>

#include "support/error_of.h"
#include "support/temporary_folder.h"

namespace talvex::test {

namespace {

// The names in a folder whose rights, or other attributes, were changed while it was watched.
class AttributeWatch {
 public:
  explicit AttributeWatch(const std::string& folder) : queue_(inotify_init1(IN_NONBLOCK)) {
    EXPECT_GE(inotify_add_watch(queue_, folder.c_str(), IN_ATTRIB | IN_MOVED_TO), 0);
  }
  ~AttributeWatch() { close(queue_); }
  AttributeWatch(const AttributeWatch&) = delete;
  AttributeWatch& operator=(const AttributeWatch&) = delete;

  // Of the given kind so far.
  std::set<std::string> Names(std::uint32_t kind) {
    std::array<char, 4096> block{};
    for (ssize_t count = read(queue_, block.data(), block.size()); count > 0;
         count = read(queue_, block.data(), block.size())) {
      for (std::size_t at = 0; at < static_cast<std::size_t>(count);) {
        inotify_event event{};
        std::memcpy(&event, block.data() + at, sizeof event);
        if ((event.mask & IN_ATTRIB) != 0) changed_.insert(block.data() + at + sizeof event);
        if ((event.mask & IN_MOVED_TO) != 0) made_.insert(block.data() + at + sizeof event);
        at += sizeof event + event.len;
      }
    }
    return kind == IN_ATTRIB ? changed_ : made_;
  }

 private:
  int queue_;
  std::set<std::string> changed_;
  std::set<std::string> made_;
};

TEST(Installer, NeverHasToNarrowTheRightsOfTheFileWithThePassword) {
  const TemporaryFolder folder;
  const std::string site = folder.Path("site");
  std::filesystem::create_directory(site);
  AttributeWatch watch(site);
  ErrorOf([&] { host::MakeInstallation({site, false, "Driver=No Such Driver;PWD=secret"}); });
  EXPECT_TRUE(watch.Names(IN_MOVED_TO).contains("siteconfiguration.xml"));
  EXPECT_TRUE(watch.Names(IN_ATTRIB).empty());
  EXPECT_TRUE(std::filesystem::is_empty(site));
}

}  // namespace

}  // namespace talvex::test
