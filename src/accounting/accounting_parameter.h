// The names of the accounting dimensions.
#pragma once

#include <string>

#include "automation/class_info.h"

namespace talvex {

// The public class "Talvex.AccountingParameter".
class AccountingParameter final : public automation::Object {
  TALVEX_CLASS(AccountingParameter, "Talvex.AccountingParameter",
               "The names of the five accounting dimensions, which are names of requisition properties.");

 public:
  TALVEX_PROPERTY(std::string, Dimension1, "The name of the first dimension; setting it writes nothing.");
  TALVEX_PROPERTY(std::string, Dimension2, "The name of the second dimension; setting it writes nothing.");
  TALVEX_PROPERTY(std::string, Dimension3, "The name of the third dimension; setting it writes nothing.");
  TALVEX_PROPERTY(std::string, Dimension4, "The name of the fourth dimension; setting it writes nothing.");
  TALVEX_PROPERTY(std::string, Dimension5, "The name of the fifth dimension; setting it writes nothing.");

  TALVEX_METHOD(void, ReadParameters, (),
                "Reads the five names. A dimension without a row keeps its name; where a name occurs twice, "
                "the later row wins. Only reads.");

  TALVEX_METHOD(
      void, UpdateAccountingParameters,
      (const std::string& i_sParameterName, const std::string& i_sParameterValue),
      "Writes one parameter, such as DIMENSION2; a name without a row changes nothing. The value 1 "
      "is stored as a single blank. The properties of the object stay. Writes ACCOUNTINGPARAMETER.");
};

}  // namespace talvex
