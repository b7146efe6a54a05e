#include "adapters/suite/error_log.h"

#include <nlohmann/json.hpp>

#include "automation/conversions.h"
#include "platform/environment.h"

namespace talvex::adapters::suite {

void ErrorLog::WriteError(const std::string& source, const std::string& text, automation::Variant& level,
                          const std::optional<automation::Variant>& /*extra*/) {
  const platform::Environment& environment = platform::Environment::Current();
  const nlohmann::ordered_json entry = {{"time", environment.clock->Now().ToIso()},
                                        {"level", automation::ToInt32(level)},
                                        {"source", source},
                                        {"text", text}};
  constexpr int kOneLine = -1;
  const std::string line = entry.dump(kOneLine, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
  environment.files->MakeFolder(installation_->Path("log"));
  environment.files->Append(installation_->Path("log/errors.jsonl"), line + "\n");
}

}  // namespace talvex::adapters::suite
