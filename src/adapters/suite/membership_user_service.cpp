#include "adapters/suite/membership_user_service.h"

#include "adapters/suite/suite_database.h"
#include "automation/conversions.h"
#include "automation/error.h"
#include "automation/text.h"
#include "platform/database/literals.h"
#include "platform/locales.h"

namespace talvex::adapters::suite {

namespace {

using automation::Error;
namespace number = automation::error_number;

constexpr std::string_view kUserSource = "Pellory.User";

}  // namespace

void MembershipUserService::Initialise(const std::string& path) { site_ = installation_->SiteAt(path); }

void MembershipUserService::Open(const std::string& user, const std::string& /*script_user*/,
                                 const std::string& /*script_code*/) {
  if (site_ == nullptr)
    throw Error(number::kObjectNotSet, kUserSource, "Object not set: Initialise comes before Open");
  if (automation::Trimmed(user).empty()) {
    user_ = user;
    locale_id_ = platform::suite::kLocaleOfNobody;
    return;
  }
  SuiteDatabase database(site_->ConnectionText());
  const auto rows = database.Rows(
      "SELECT LOCALEID FROM SUITEUSER WHERE USERID=" + platform::database::TextLiteral(user), 1);
  if (rows.RowCount() == 0)
    throw Error(number::kInvalidCall, kUserSource, "The user '" + user + "' is unknown");
  user_ = user;
  locale_id_ = rows.Value(0, 0);
}

std::int16_t MembershipUserService::LocaleId() const {
  if (!user_) throw Error(number::kObjectNotSet, kUserSource, "Object not set: no user is open");
  if (locale_id_.IsNull())
    throw Error(number::kInvalidCall, kUserSource, "The user '" + *user_ + "' has no locale");
  return automation::ToInt16(locale_id_);
}

}  // namespace talvex::adapters::suite
