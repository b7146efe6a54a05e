// The texts that the host shares with everything that runs in it.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "automation/class_info.h"
#include "automation/transaction_context.h"

namespace talvex::host {

// The localised texts of the table I18NTEXT. A text that was found is kept for the life of the object; one
// that was not is looked for again the next time, for it may have been added since. What a transaction has
// read may be its own doing, so others are given it only when the transaction is kept. Safe to use from
// several threads.
class MessageManager final : public automation::Object {
  TALVEX_CLASS(MessageManager, "I18NMessageManager",
               "The localised texts that all components of the suite share.");

 public:
  // `connection_string` says, each time a text must be read, what the database is opened with.
  explicit MessageManager(std::function<std::string()> connection_string)
      : connection_string_(std::move(connection_string)) {}

  TALVEX_METHOD(
      std::string, GetText, (const std::string& label, const std::string& locale_id),
      "The text of a label in a language, whose locale id is a whole number as text (13 is raised for any "
      "other; 0, nobody's language, is English); the empty text when there is none.");

 private:
  using Key = std::pair<std::int32_t, std::string>;
  using Texts = std::map<Key, std::string>;
  class ReadInTransaction;

  [[nodiscard]] std::string Read(const Key& key) const;
  [[nodiscard]] std::optional<std::string> Kept(const Key& key);
  void Keep(const Key& key, const std::string& text);
  [[nodiscard]] Texts& TextsOf(automation::TransactionContext& transaction);

  std::function<std::string()> connection_string_;
  std::mutex mutex_;
  Texts found_;
};

// The object that a host offers under the name "Application".
class Application final : public automation::Object {
  TALVEX_CLASS(Application, "Application", "What the host shares with everything that runs in it, by name.");

 public:
  explicit Application(std::shared_ptr<MessageManager> messages) : messages_(std::move(messages)) {}

  TALVEX_METHOD(automation::ObjectRef, Value, (const std::string& name),
                "The shared object of that name, \"I18NMessageManager\"; any other name raises 5.");

 private:
  std::shared_ptr<MessageManager> messages_;
};

}  // namespace talvex::host
