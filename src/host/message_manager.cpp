#include "host/message_manager.h"

#include <optional>

#include "automation/conversions.h"
#include "automation/error.h"
#include "automation/text.h"
#include "platform/database/connection.h"
#include "platform/database/literals.h"
#include "platform/locales.h"

namespace talvex::host {

std::string MessageManager::GetText(const std::string& label, const std::string& locale_id) {
  const Key key(automation::ToInt32(locale_id), label);
  {
    const std::lock_guard lock(mutex_);
    const auto found = found_.find(key);
    if (found != found_.end()) return found->second;
  }
  // Read without the lock: a slow database must not hold up those whose texts are here.
  std::string text = Read(key);
  if (text.empty() && key.first == platform::suite::kLocaleOfNobody)
    text = Read({platform::suite::kEnglish, key.second});
  if (!text.empty()) {
    const std::lock_guard lock(mutex_);
    found_.try_emplace(key, text);
  }
  return text;
}

std::string MessageManager::Read(const Key& key) const {
  const auto connection = std::make_shared<platform::database::Connection>();
  connection->Open(connection_string_(), std::nullopt, std::nullopt, std::nullopt);
  const std::string query = "SELECT Text FROM I18NTEXT WHERE LOCALEID=" + std::to_string(key.first) +
                            " AND LABEL=" + platform::database::TextLiteral(key.second);
  const auto rows = connection->Run(query, {}, 1).rows;
  return rows.RowCount() == 0 ? std::string() : std::string(rows.TextAt(0, 0));
}

automation::ObjectRef Application::Value(const std::string& name) {
  if (automation::SameFolded(name, MessageManager::ClassName())) return messages_;
  throw automation::Error(automation::error_number::kInvalidCall, "Talvex.Host",
                          "Invalid procedure call: the host shares no object '" + name + "'");
}

}  // namespace talvex::host
