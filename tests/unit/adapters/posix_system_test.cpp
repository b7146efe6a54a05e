#include <gtest/gtest.h>
#include <pthread.h>

#include <cstdlib>
#include <ctime>
#include <functional>
#include <memory>
#include <string>

#include "adapters/posix/stack.h"
#include "adapters/posix/system_clock.h"

namespace talvex::adapters::posix {
namespace {

// For as long as it lives, the process is in another time zone.
class TimeZone {
 public:
  explicit TimeZone(const char* zone) : before_(std::getenv("TZ") == nullptr ? "" : std::getenv("TZ")) {
    Set(zone);
  }
  ~TimeZone() { Set(before_.c_str()); }
  TimeZone(const TimeZone&) = delete;
  TimeZone& operator=(const TimeZone&) = delete;

 private:
  static void Set(const char* zone) {
    if (*zone == '\0') {
      unsetenv("TZ");
    } else {
      setenv("TZ", zone, 1);
    }
    tzset();
  }

  std::string before_;
};

// Runs the body on a thread with a stack of exactly that size.
void OnStackOf(std::size_t size, std::function<void()> body) {
  const std::unique_ptr<void, decltype(&std::free)> stack(std::aligned_alloc(4096, size), &std::free);
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstack(&attributes, stack.get(), size), 0);
  pthread_t thread;
  const auto start = [](void* argument) -> void* {
    (*static_cast<std::function<void()>*>(argument))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, start, &body), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

// What is left of the stack that many calls deeper, each of which takes a kilobyte or more.
[[gnu::noinline]] std::size_t LeftBelow(int calls) {
  volatile char frame[1024] = {};
  const std::size_t left = calls == 0 ? StackLeft() : LeftBelow(calls - 1);
  return left + static_cast<std::size_t>(frame[0]);
}

// What is left of the stack after going deeper as long as there is more than that.
[[gnu::noinline]] std::size_t LeftAfterUsingAllBut(std::size_t enough) {
  volatile char frame[4096] = {};
  const std::size_t left = StackLeft() > enough ? LeftAfterUsingAllBut(enough) : StackLeft();
  return left + static_cast<std::size_t>(frame[0]);
}

TEST(PosixClock, TellsTheLocalTimeOfTheProcess) {
  const SystemClock clock;
  std::int64_t utc = 0;
  {
    const TimeZone zone("UTC0");
    const std::time_t before = std::time(nullptr);
    utc = clock.Now().Seconds();
    EXPECT_GE(utc, before);
    EXPECT_LE(utc, std::time(nullptr));
  }
  const TimeZone zone("ABC-5:30");
  const std::int64_t ahead = clock.Now().Seconds() - utc;
  EXPECT_GE(ahead, 5 * 3600 + 30 * 60);
  EXPECT_LE(ahead, 5 * 3600 + 30 * 60 + 60);
}

TEST(PosixStack, ShrinksAsCallsGoDeeper) {
  const std::size_t here = LeftBelow(0);
  const std::size_t below = LeftBelow(20);
  EXPECT_GE(here - below, 20U * 1024U);
  EXPECT_LE(here - below, 20U * 8192U);
}

TEST(PosixStack, IsThatOfTheCallingThread) {
  const auto expect = [](std::size_t size) {
    OnStackOf(size, [size] {
      EXPECT_LE(StackLeft(), size);
      EXPECT_GE(StackLeft(), size - 65536);
    });
  };
  expect(std::size_t{256} * 1024);
  expect(std::size_t{4} * 1024 * 1024);
}

TEST(PosixStack, CanBeUsedAlmostToItsEnd) {
  OnStackOf(std::size_t{512} * 1024, [] {
    const std::size_t left = LeftAfterUsingAllBut(65536);
    EXPECT_LE(left, 65536U);
    EXPECT_GT(left, 32768U);
  });
}

}  // namespace
}  // namespace talvex::adapters::posix
