#include "accounting/accounting_parameter.h"

#include <array>
#include <utility>

#include "automation/text.h"
#include "platform/database/literals.h"
#include "services/frame.h"
#include "services/lib_general.h"
#include "services/lib_sql.h"

namespace talvex {

using Lib_General::Gen_NullToString;
using platform::database::TextLiteral;

void AccountingParameter::ReadParameters() {
  Reads("Talvex.AccountingParameter.ReadParameters", [&] {
    const std::array<std::pair<std::string_view, std::string*>, 5> dimensions = {{
        {"DIMENSION1", &Dimension1},
        {"DIMENSION2", &Dimension2},
        {"DIMENSION3", &Dimension3},
        {"DIMENSION4", &Dimension4},
        {"DIMENSION5", &Dimension5},
    }};
    auto connection = Lib_General::getConnection();
    auto parameters = Lib_SQL::Sql_GetReadonlyRecordset("SELECT * FROM ACCOUNTINGPARAMETER", connection);
    for (; !parameters->Eof() && !parameters->Bof(); parameters->MoveNext()) {
      const std::string name = Gen_NullToString(parameters->Value("PARAMETERNAME"));
      for (const auto& [dimension, value] : dimensions) {
        if (!automation::SameFolded(name, dimension)) continue;
        *value = Gen_NullToString(parameters->Value("PARAMETERVALUE"));
      }
    }
    Lib_SQL::CloseRecordset(parameters);
    Lib_General::Gen_CloseConnection(connection);
  });
}

void AccountingParameter::UpdateAccountingParameters(const std::string& i_sParameterName,
                                                     const std::string& i_sParameterValue) {
  Writes("Talvex.AccountingParameter.UpdateAccountingParameters", [&] {
    // Deliberately: the value 1 stands for no name, and is kept as a blank.
    const std::string value =
        automation::Trimmed(i_sParameterValue) == "1" ? "' '" : TextLiteral(i_sParameterValue);
    auto result = Lib_SQL::Sql_ExecuteSQL("UPDATE ACCOUNTINGPARAMETER SET PARAMETERVALUE=" + value +
                                          " WHERE PARAMETERNAME=" + TextLiteral(i_sParameterName));
    Lib_SQL::CloseRecordset(result);
  });
}

}  // namespace talvex
