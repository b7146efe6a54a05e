#include "host/message_manager.h"

#include <optional>

#include "automation/conversions.h"
#include "automation/error.h"
#include "automation/text.h"
#include "platform/database/connection.h"
#include "platform/database/literals.h"
#include "platform/locales.h"

namespace talvex::host {

using automation::TransactionContext;

std::string MessageManager::GetText(const std::string& label, const std::string& locale_id) {
  const Key key(automation::ToInt32(locale_id), label);
  if (auto kept = Kept(key)) return std::move(*kept);
  // Read without the lock: a slow database must not hold up those whose texts are here.
  std::string text = Read(key);
  if (text.empty() && key.first == platform::suite::kLocaleOfNobody)
    text = Read({platform::suite::kEnglish, key.second});
  if (!text.empty()) Keep(key, text);
  return text;
}

// What a transaction has read so far; it goes with the transaction.
class MessageManager::ReadInTransaction final : public TransactionContext::Resource {
 public:
  explicit ReadInTransaction(std::shared_ptr<Texts> texts) : texts_(std::move(texts)) {}
  [[nodiscard]] Texts& Get() const noexcept { return *texts_; }
  void Commit() override {}
  void Rollback() noexcept override {}

 private:
  std::shared_ptr<Texts> texts_;
};

MessageManager::Texts& MessageManager::TextsOf(TransactionContext& transaction) {
  constexpr std::string_view kResourceKey = "Talvex.Host.MessageManager";
  if (const auto* enlisted = static_cast<ReadInTransaction*>(transaction.Find(kResourceKey)))
    return enlisted->Get();
  const auto texts = std::make_shared<Texts>();
  transaction.OnCompletion([manager = weak_from_this(), texts](bool committed) {
    const auto alive = std::static_pointer_cast<MessageManager>(manager.lock());
    if (!committed || alive == nullptr) return;
    const std::lock_guard lock(alive->mutex_);
    alive->found_.merge(*texts);
  });
  transaction.Enlist(kResourceKey, std::make_unique<ReadInTransaction>(texts));
  return *texts;
}

std::optional<std::string> MessageManager::Kept(const Key& key) {
  const auto in = [&](const Texts& texts) {
    const auto found = texts.find(key);
    return found == texts.end() ? std::nullopt : std::optional(found->second);
  };
  {
    const std::lock_guard lock(mutex_);
    if (auto shared = in(found_)) return shared;
  }
  auto* const transaction = TransactionContext::Current();
  return transaction == nullptr ? std::nullopt : in(TextsOf(*transaction));
}

void MessageManager::Keep(const Key& key, const std::string& text) {
  if (auto* const transaction = TransactionContext::Current()) {
    TextsOf(*transaction).try_emplace(key, text);
    return;
  }
  const std::lock_guard lock(mutex_);
  found_.try_emplace(key, text);
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
