// The ground of tests that look at the component's calls to the suite.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "support/error_of.h"
#include "support/stand_ins.h"
#include "support/test_installation.h"

namespace talvex::test {

// An installation whose log is a stand-in; other services can be stood in for as well.
class StoodIn {
 public:
  StoodIn()
      : recorder_(std::make_shared<Recorder>()),
        environment_(WithOwnClasses(platform::Environment::Current())),
        for_thread_(environment_) {
    Replace<RecordingLog>();
  }
  template <class C>
  void Replace() {
    StandIn<C>(*environment_, recorder_);
  }

  [[nodiscard]] TestInstallation& Site() noexcept { return installation_; }
  [[nodiscard]] Recorder& Record() noexcept { return *recorder_; }
  [[nodiscard]] platform::Environment& Environment() noexcept { return *environment_; }

 private:
  TestInstallation installation_;
  std::shared_ptr<Recorder> recorder_;
  std::shared_ptr<platform::Environment> environment_;
  platform::Environment::ForThread for_thread_;
};

// Runs a test's body in such an installation on a thread of its own.
inline void WithStandIns(const std::function<void(StoodIn&)>& body) {
  OnOwnThread([&] {
    StoodIn stood_in;
    body(stood_in);
  });
}

}  // namespace talvex::test
