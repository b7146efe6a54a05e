#include "support/stand_ins.h"

namespace talvex::test {

namespace {

void FailWhenAsked(const Recorder& recorder, const std::string& member) {
  if (recorder.fail_in == member) throw automation::Error(1000, "Stand-in", "out of order");
}

}  // namespace

void RecordingLog::WriteError(const std::string& source, const std::string& text, std::int32_t& level,
                              const automation::Variant& extra) {
  FailWhenAsked(*recorder_, "WriteError");
  recorder_->log.push_back({source, text, level, extra.IsEmpty()});
}

void RecordingUser::Initialise(const std::string& path) { recorder_->calls.push_back("Initialise " + path); }

void RecordingUser::Open(const std::string& user, const std::string& script_user,
                         const std::string& script_code) {
  FailWhenAsked(*recorder_, "Open");
  user_ = user;
  recorder_->calls.push_back("Open " + user + " " + script_user + " " + script_code);
}

std::int16_t RecordingUser::LocaleId() const { return user_ == "nadine" ? 1036 : 1033; }

std::shared_ptr<platform::Environment> WithOwnClasses(const platform::Environment& environment) {
  auto copy = std::make_shared<platform::Environment>(environment);
  copy->classes = std::make_shared<automation::ClassRegistry>(*environment.classes);
  return copy;
}

}  // namespace talvex::test
