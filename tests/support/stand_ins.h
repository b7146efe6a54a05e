// Stand-ins for services of the suite, to see what the component asks of them or to make them fail.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "automation/class_info.h"
#include "platform/environment.h"

namespace talvex::test {

// One entry as the log was asked to write it.
struct LogEntry {
  std::string source;
  std::string text;
  std::int32_t level = 0;
  bool fourth_is_empty = false;
};

// What all stand-ins of one test share.
struct Recorder {
  std::vector<LogEntry> log;
  std::vector<std::string> calls;
  std::string fail_in;  // The member that fails, with error 1000 "out of order".
};

// The log, keeping its entries.
class RecordingLog final : public automation::Object {
  TALVEX_CLASS(RecordingLog, "Corvane.Log", "Keeps the entries.");

 public:
  explicit RecordingLog(std::shared_ptr<Recorder> recorder) : recorder_(std::move(recorder)) {}
  TALVEX_METHOD(void, WriteError,
                (const std::string& source, const std::string& text, std::int32_t& level,
                 const automation::Variant& extra),
                "Keeps an entry.");

 private:
  std::shared_ptr<Recorder> recorder_;
};

// A membership user, keeping how it was opened. The locale of every user is 1033, that of "nadine" 1036.
class RecordingUser final : public automation::Object {
  TALVEX_CLASS(RecordingUser, "Pellory.User", "Keeps how it was opened.");

 public:
  explicit RecordingUser(std::shared_ptr<Recorder> recorder) : recorder_(std::move(recorder)) {}
  TALVEX_METHOD(void, Initialise, (const std::string& path), "Keeps the path.");
  TALVEX_METHOD(void, Open,
                (const std::string& user, const std::string& script_user, const std::string& script_code),
                "Keeps the arguments.");
  TALVEX_READONLY(std::int16_t, LocaleId, "LocaleId", "The user's locale.");

 private:
  std::shared_ptr<Recorder> recorder_;
  std::string user_;
};

// A copy of an environment with classes of its own, which a test may replace.
[[nodiscard]] std::shared_ptr<platform::Environment> WithOwnClasses(const platform::Environment& environment);

// Registers a maker that gives the stand-in of class C.
template <class C>
void StandIn(const platform::Environment& environment, const std::shared_ptr<Recorder>& recorder) {
  environment.classes->Register(C::Info(), [recorder] { return std::make_shared<C>(recorder); });
}

}  // namespace talvex::test
