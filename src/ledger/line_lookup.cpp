#include "automation/text.h"
#include "ledger/budget_t.h"
#include "platform/database/literals.h"
#include "services/frame.h"
#include "services/lib_general.h"
#include "services/lib_sql.h"

namespace talvex {

using automation::Variant;
using platform::database::DateLiteral;
using platform::database::TextLiteral;

Variant BudgetT::GetBudgetLine(const std::string& iBudgetCode, automation::Date& iDate) {
  return Reads("Talvex.BudgetT.GetBudgetLine", [&]() -> Variant {
    if (automation::Trimmed(iBudgetCode).empty()) return automation::kNull;
    const auto connection = Lib_General::getConnection();
    const std::string date = DateLiteral(iDate);
    auto lines =
        connection->Execute("SELECT ID FROM BUDGETLINES WHERE BUDGETCODE=" + TextLiteral(iBudgetCode) +
                                " and STARTDATE<=" + date + " AND (ENDDATE>=" + date + " OR ENDDATE IS NULL)",
                            nullptr, platform::database::kOptionsUnspecified);
    Variant line_id = lines->Eof() ? Variant(automation::kNull) : lines->Value("ID");
    Lib_SQL::CloseRecordset(lines);
    return line_id;
  });
}

}  // namespace talvex
