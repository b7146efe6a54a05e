#include "exchange/installation_files.h"

#include "automation/text.h"
#include "platform/environment.h"
#include "platform/suite.h"
#include "services/lib_general.h"

namespace talvex {

namespace {

automation::Date Now() { return platform::Environment::Current().clock->Now(); }

}  // namespace

std::string ConfigurationDirectory() {
  const platform::suite::Configuration configuration(
      Lib_General::gen_getComponent(platform::suite::class_name::kConfiguration));
  configuration.SelectApplication("Vantor");
  return configuration.ConfigDir();
}

std::string TodayInNames() {
  const automation::Date now = Now();
  return std::to_string(now.Month()) + std::to_string(now.Day()) + std::to_string(now.Year());
}

std::string TimeInNames() { return automation::Replaced(Now().TimeText(), ":", ""); }

}  // namespace talvex
