// What the amounts of a budget line are called.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/cli/ledger_rows.h"
#include "apps/cli/session.h"

namespace talvex::apps {

// One amount of a budget line: what people call it, and where it stands.
struct AmountTitle {
  std::string title;
  std::optional<double> LineRow::*amount;
};

// The amounts of a line in the order in which they are shown, the remainder excepted.
struct AmountTitles {
  std::vector<AmountTitle> amounts;
  std::string available;
};

// In English, or, when the session has a user, in that user's language as far as the installation has texts
// in it: the texts are those of the mails about a line. Raises what the user directory raises for a user that
// it does not know.
[[nodiscard]] AmountTitles TitlesFor(Session& session);

}  // namespace talvex::apps
