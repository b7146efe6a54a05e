#include "adapters/suite/suite_user_service.h"

#include <optional>

#include "adapters/suite/error_log.h"
#include "adapters/suite/mail_message.h"
#include "adapters/suite/outbox.h"
#include "adapters/suite/suite_database.h"
#include "automation/error.h"
#include "automation/text.h"
#include "platform/database/literals.h"
#include "platform/environment.h"

namespace talvex::adapters::suite {

namespace {

using platform::database::TextLiteral;

[[noreturn]] void RaiseFor(const std::string& user, const std::string& what) {
  throw automation::Error(automation::error_number::kInvalidCall, "Mirelo.User",
                          "The user '" + user + "' " + what);
}

MailAddress AddressOf(SuiteDatabase& database, const std::string& user) {
  const auto rows =
      database.Rows("SELECT FULLNAME, EMAIL FROM SUITEUSER WHERE USERID=" + TextLiteral(user), 1);
  if (rows.RowCount() == 0) RaiseFor(user, "is unknown");
  const std::string address(automation::Trimmed(rows.TextAt(0, 1)));
  if (address.empty()) RaiseFor(user, "has no e-mail address");
  if (!IsMailAddress(address)) RaiseFor(user, "has an e-mail address that is none: '" + address + "'");
  return {std::string(automation::Trimmed(rows.TextAt(0, 0))), address};
}

}  // namespace

void SuiteUserService::SendMail(const std::string& from, const std::string& to, const std::string& subject,
                                const std::string& body) {
  if (automation::Trimmed(to).empty()) {
    automation::Variant level(0);
    ErrorLog(installation_)
        .WriteError("Mirelo.User.SendMail", "The mail '" + subject + "' was not sent: it has no addressee",
                    level, std::nullopt);
    return;
  }
  SuiteDatabase database(installation_->ConnectionText());
  const MailAddress sender = AddressOf(database, from);
  const MailAddress addressee = automation::SameCode(from, to) ? sender : AddressOf(database, to);
  const automation::Date now = platform::Environment::Current().clock->Now();
  const std::string id = Outbox::NewId(now);
  Outbox(installation_).Put(id, MailText({id, sender, addressee, subject, body, now}));
}

std::shared_ptr<automation::Collection> SuiteUserService::Offices() {
  SuiteDatabase database(installation_->ConnectionText());
  const auto rows = database.Rows("SELECT OFFICEDESCRIPTION FROM SUITEOFFICE ORDER BY OFFICEDESCRIPTION");
  auto offices = std::make_shared<automation::Collection>();
  for (std::size_t row = 0; row < rows.RowCount(); ++row) offices->Add(rows.Value(row, 0), std::nullopt);
  return offices;
}

bool SuiteUserService::Exists(const std::string& user) {
  SuiteDatabase database(installation_->ConnectionText());
  return database.Rows("SELECT USERID FROM SUITEUSER WHERE USERID=" + TextLiteral(user), 1).RowCount() > 0;
}

}  // namespace talvex::adapters::suite
