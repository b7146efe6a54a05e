// The suite's checker of references between the records of all components.
#pragma once

#include <memory>
#include <string>

#include "adapters/suite/installation.h"
#include "automation/class_info.h"

namespace talvex::adapters::suite {

// Reads the suite's tables and asks every class that implements IReferentialIntegrity. Inside a transaction
// it sees what the transaction wrote.
class ReferentialChecker final : public automation::Object {
  TALVEX_CLASS(ReferentialChecker, "Corvane.ReferentialChecker",
               "Whether records refer to records that exist, and whether they may be deleted.");

 public:
  explicit ReferentialChecker(std::shared_ptr<const Installation> installation)
      : installation_(std::move(installation)) {}

  TALVEX_METHOD(
      bool, HasValidReferences,
      (const std::string& table, const automation::Array& names, const automation::Array& values),
      "Whether a record of the table that holds these values in these columns refers only to records "
      "that exist. Of a BUDGET the currency must be known, holder and office known or empty; columns "
      "that refer to nothing are passed over. Any other table raises 5: its references are not known.");
  TALVEX_METHOD(
      bool, MayDelete,
      (const std::string& entity, const automation::Array& names, const automation::Array& values),
      "Whether nothing refers to the record of the entity that these columns and values identify: a "
      "CHARGETYPE may go when no budget is charged under it and no component objects. Any other "
      "entity raises 5.");

 private:
  std::shared_ptr<const Installation> installation_;
};

}  // namespace talvex::adapters::suite
