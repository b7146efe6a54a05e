#include "services/localised_texts.h"

#include <cstdint>
#include <optional>
#include <string>

#include "automation/conversions.h"
#include "automation/text.h"
#include "automation/transaction_context.h"
#include "platform/database/literals.h"
#include "platform/database/recordset.h"
#include "platform/locales.h"
#include "platform/per_environment.h"
#include "platform/suite.h"
#include "services/frame.h"
#include "services/lib_general.h"
#include "services/lib_sql.h"
#include "services/lib_user_lib.h"

namespace talvex::Lib_General {

using automation::TransactionContext;
using platform::database::NumberLiteral;
using platform::database::TextLiteral;
using platform::suite::kLocaleOfNobody;

namespace {

// The user for whom the thread last determined a locale in its environment, and that locale.
struct UserLocale {
  std::string user;
  std::int16_t locale_id = kLocaleOfNobody;
};

std::int16_t LocaleOf(const std::string& user) {
  UserLocale& cached = platform::OfThreadAndEnvironment<UserLocale>();
  if (user != cached.user) {
    const std::int16_t locale_id = Lib_UserLib::UL_CreateUO(user).LocaleId();
    cached = {user, locale_id};
  }
  return cached.locale_id;
}

// Nothing for a label that has no row in that language.
std::optional<std::string> RowOfTable(std::int16_t locale_id, const std::string& label) {
  auto texts = Lib_SQL::Sql_GetDisconnectedRecordset(
      "Select * From I18NTEXT Where LOCALEID=" + NumberLiteral(locale_id) +
          " AND LABEL= " + TextLiteral(label),
      nullptr);
  std::optional<std::string> text;
  if (!texts->Eof()) text = Gen_NullToString(texts->Value("Text"));
  Lib_SQL::CloseRecordset(texts);
  return text;
}

std::string TextFromTable(const std::string& user, std::int16_t locale_id, const std::string& label) {
  auto text = RowOfTable(locale_id, label);
  if (!text && locale_id == kLocaleOfNobody) text = RowOfTable(platform::suite::kEnglish, label);
  return text.value_or("Label or Locale not known for user:" + user +
                       " locale: " + std::to_string(locale_id) + " Message Code: " + label);
}

std::string TextFromHost(const TransactionContext& context, std::int16_t locale_id,
                         const std::string& label) {
  const automation::ObjectRef application = context.NamedObject("Application");
  return platform::suite::MessageManager::Of(*application).GetText(label, std::to_string(locale_id));
}

std::string Text(const std::string& user, std::int16_t locale_id, const std::string& label) {
  const auto* const context = TransactionContext::Current();
  return context == nullptr ? TextFromTable(user, locale_id, label)
                            : TextFromHost(*context, locale_id, label);
}

}  // namespace

std::string LookUpI18N(const std::string& user, const std::string& label) {
  if (automation::Trimmed(label).empty()) return {};
  return Text(user, LocaleOf(user), label);
}

std::string LookUpForNobody(const std::string& label) { return Text({}, kLocaleOfNobody, label); }

std::string Gen_GetI18N(const std::string& user, const std::string& label) {
  return Handled("Lib_General.Gen_GetI18N", [&] { return LookUpI18N(user, label); });
}

}  // namespace talvex::Lib_General
