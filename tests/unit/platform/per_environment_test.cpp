#include "platform/per_environment.h"

#include <gtest/gtest.h>

#include <thread>

namespace talvex::test {

namespace {

using platform::Environment;
using platform::OfThreadAndEnvironment;

struct Counted {
  Counted() { ++alive; }
  ~Counted() { --alive; }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;
  static inline thread_local int alive = 0;
  int value = 0;
};

int& Value() { return OfThreadAndEnvironment<Counted>().value; }

TEST(OfThreadAndEnvironment, EachEnvironmentHasItsOwn) {
  const auto first = std::make_shared<Environment>();
  const auto second = std::make_shared<Environment>(*first);
  const Environment::ForThread outer(first);
  Value() = 1;
  {
    const Environment::ForThread inner(second);
    EXPECT_EQ(Value(), 0);
    Value() = 2;
    const Environment::ForThread again(first);
    EXPECT_EQ(Value(), 1);
  }
  EXPECT_EQ(Value(), 1);
  const Environment::ForThread inner(second);
  EXPECT_EQ(Value(), 2);
}

TEST(OfThreadAndEnvironment, EachThreadHasItsOwn) {
  const auto environment = std::make_shared<Environment>();
  const Environment::ForThread here(environment);
  Value() = 1;
  std::thread([&] {
    const Environment::ForThread there(environment);
    EXPECT_EQ(Value(), 0);
    Value() = 2;
  }).join();
  EXPECT_EQ(Value(), 1);
}

TEST(OfThreadAndEnvironment, WhatBelongsToAnEnvironmentThatIsGoneGoesAndIsNeverGivenAgain) {
  std::thread([] {
    for (int i = 0; i < 100; ++i) {
      // The next environment may well lie where this one lay.
      const Environment::ForThread here(std::make_shared<Environment>());
      EXPECT_EQ(Value(), 0);
      Value() = i + 1;
      EXPECT_LE(Counted::alive, 2);
    }
  }).join();
}

TEST(OfThreadAndEnvironment, NeedsAnEnvironment) {
  std::thread([] { EXPECT_THROW(static_cast<void>(Value()), automation::Error); }).join();
}

}  // namespace

}  // namespace talvex::test
