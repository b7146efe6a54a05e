#include "adapters/suite/outbox.h"

#include <array>
#include <atomic>
#include <charconv>
#include <cstdint>
#include <random>

#include "adapters/suite/error_log.h"
#include "automation/text.h"
#include "automation/transaction_context.h"
#include "platform/environment.h"

namespace talvex::adapters::suite {

namespace {

using automation::Replaced;

// The number in so many digits, so that texts sort as the numbers do.
std::string Padded(std::uint64_t number, int base, std::size_t digits) {
  std::array<char, 20> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, base).ptr;
  std::string text(buffer.data(), end);
  if (text.size() < digits) text.insert(0, digits - text.size(), '0');
  return text;
}

// The transaction is over and nobody is left to raise to, so a failure goes to the log.
void Report(const std::shared_ptr<const Installation>& installation, const std::string& what) noexcept {
  try {
    automation::Variant level(0);
    ErrorLog(installation).WriteError("Mirelo.User.SendMail", what, level, std::nullopt);
  } catch (...) {
    // Not even the log can be written; the pending file itself tells of the mail.
  }
}

struct PendingMail {
  std::shared_ptr<const Installation> installation;
  std::shared_ptr<platform::Files> files;
  std::string pending;
  std::string final_name;

  void operator()(bool committed) const noexcept {
    try {
      if (committed) {
        files->Rename(pending, final_name);
      } else {
        files->Remove(pending);
      }
    } catch (const std::exception& error) {
      Report(installation, "The mail " + pending +
                               (committed ? " was not made final: " : " was not taken back: ") +
                               error.what());
    }
  }
};

}  // namespace

std::string Outbox::NewId(automation::Date now) {
  static std::atomic<std::uint64_t> made = 0;
  std::random_device random;
  const std::uint64_t apart = (std::uint64_t{random()} << 32U) | random();
  return Replaced(Replaced(now.ToIso(), "-", ""), ":", "") + "-" + Padded(++made, 10, 10) + "-" +
         Padded(apart, 16, 16);
}

void Outbox::Put(const std::string& id, std::string_view content) const {
  const auto& files = platform::Environment::Current().files;
  const std::string final_name = installation_->Path("outbox/" + id + ".eml");
  files->MakeFolder(installation_->Path("outbox"));
  auto* const transaction = automation::TransactionContext::Current();
  if (transaction == nullptr) {
    files->WriteNew(final_name, content);
    return;
  }
  const PendingMail mail{installation_, files, installation_->Path("outbox/.pending-" + id), final_name};
  files->WriteNew(mail.pending, content);
  transaction->OnCompletion(mail);
}

}  // namespace talvex::adapters::suite
