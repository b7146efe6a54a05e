#include "apps/cli/amount_titles.h"

#include <map>

#include "apps/cli/layout.h"
#include "automation/conversions.h"
#include "platform/suite.h"

namespace talvex::apps {

namespace {

using Texts = std::map<std::string, std::string, std::less<>>;

std::int16_t LocaleOf(Session& session) {
  namespace suite = platform::suite;
  const suite::MembershipUser user(session.Create(std::string(suite::class_name::kMembershipUser)));
  user.Initialise(session.Options().directory + "/siteconfiguration.xml");
  user.Open(session.Options().user, "", "");
  return user.LocaleId();
}

Texts ReadTexts(Session& session) {
  Texts texts;
  if (session.Options().user.empty()) return texts;
  const std::string locale = std::to_string(LocaleOf(session));
  const std::string query = "SELECT LABEL, Text FROM I18NTEXT WHERE LOCALEID=" + locale +
                            " AND LABEL IN ('SLBBU0050', 'SLBBU0070', 'SLBBU0071', 'SLBBU0072', 'SLBBU0073', "
                            "'SLBBU0074') AND Text IS NOT NULL ORDER BY LABEL";
  ForEachRow(*session.Host().Connect(), query, [&](const Recordset& row) {
    texts.insert_or_assign(automation::ToText(row.Value("LABEL")), automation::ToText(row.Value("Text")));
  });
  return texts;
}

}  // namespace

AmountTitles TitlesFor(Session& session) {
  const Texts texts = ReadTexts(session);
  const auto text = [&](std::string_view label, std::string_view english) {
    const auto found = texts.find(label);
    return found == texts.end() ? std::string(english) : Printable(found->second);
  };
  return {{{text("SLBBU0050", "Budget"), &LineRow::amount},
           {text("SLBBU0072", "Amount awaiting approval"), &LineRow::not_approved},
           {text("SLBBU0070", "Approved amount"), &LineRow::approved},
           {text("SLBBU0071", "Ordered amount"), &LineRow::sent},
           {"Received amount", &LineRow::received},  // No label stands for it, in the mails neither.
           {text("SLBBU0073", "Closed amount"), &LineRow::closed}},
          text("SLBBU0074", "Available amount")};
}

}  // namespace talvex::apps
