#include "exchange/installation_files.h"

#include "automation/text.h"
#include "platform/environment.h"
#include "platform/suite.h"
#include "services/entries.h"
#include "services/lib_general.h"

namespace talvex {

std::string ConfigurationDirectory() {
  const platform::suite::Configuration configuration(
      Lib_General::gen_getComponent(platform::suite::class_name::kConfiguration));
  configuration.SelectApplication("Vantor");
  return configuration.ConfigDir();
}

std::string MomentInNames(std::string_view between) {
  const automation::Date now = platform::Environment::Current().clock->Now();
  const std::string day =
      std::to_string(now.Month()) + std::to_string(now.Day()) + std::to_string(now.Year());
  return day + std::string(between) + automation::Replaced(now.TimeText(), ":", "");
}

void LogParseError(const platform::xml::XmlDocument& document, const std::string& what,
                   std::string_view method) {
  const std::string description = what + " cannot be used: " + document.Error().reason;
  LogCause({automation::error_number::kInvalidCall, "Talvex.Budget", description, {}, 0}, method);
}

}  // namespace talvex
