#include "adapters/suite/referential_checker.h"

#include <algorithm>
#include <array>

#include "adapters/suite/suite_database.h"
#include "automation/conversions.h"
#include "automation/error.h"
#include "automation/text.h"
#include "platform/database/literals.h"
#include "platform/environment.h"

namespace talvex::adapters::suite {

using automation::Array;
using automation::SameFolded;
using automation::Variant;
using platform::database::TextLiteral;

namespace {

constexpr std::string_view kInterface = "IReferentialIntegrity";

// A column whose values stand in another table.
struct Reference {
  std::string_view column;
  std::string_view query;  // Finds the record referred to; the value follows.
  bool may_be_empty;
};
constexpr std::array<Reference, 3> kBudgetReferences = {{
    {"CURRENCYCODE", "SELECT CURRENCYCODE FROM CURRENCY WHERE CURRENCYCODE=", false},
    {"USERID", "SELECT USERID FROM SUITEUSER WHERE USERID=", true},
    {"OFFICEDESCRIPTION", "SELECT OFFICEDESCRIPTION FROM SUITEOFFICE WHERE OFFICEDESCRIPTION=", true},
}};

// The component that keeps charge types: asked whether it holds one, it would always say that it does.
constexpr std::string_view kChargeTypeOwner = "Talvex.BudgetT";

std::string TextOf(const Variant& value) {
  return value.IsNull() ? std::string() : automation::ToText(value);
}

[[noreturn]] void RaiseUnknown(const std::string& what) {
  throw automation::Error(automation::error_number::kInvalidCall, "Corvane.ReferentialChecker",
                          "The references of " + what + " are not known");
}

bool Holds(SuiteDatabase& database, std::string_view query, const std::string& value) {
  return database.Rows(std::string(query) + TextLiteral(value), 1).RowCount() > 0;
}

bool IsValid(SuiteDatabase& database, const std::string& name, const std::string& value) {
  const auto* const reference =
      std::find_if(kBudgetReferences.begin(), kBudgetReferences.end(),
                   [&](const Reference& candidate) { return SameFolded(candidate.column, name); });
  if (reference == kBudgetReferences.end()) return true;
  if (value.empty()) return reference->may_be_empty;
  return Holds(database, reference->query, value);
}

// The value under a name; 5 when it is not given.
std::string ValueOf(const Array& names, const Array& values, std::string_view name) {
  for (std::int32_t i = names.Lower(); i <= names.Upper(); ++i) {
    if (SameFolded(automation::ToText(names.At(i)), name)) return TextOf(values.At(i));
  }
  RaiseUnknown("a record without " + std::string(name));
}

// Whether a component other than the owner holds the record, or any component forbids that it goes.
bool AnyComponentObjects(const std::string& entity, const Array& names, const Array& values,
                         std::string_view owner) {
  const auto& classes = *platform::Environment::Current().classes;
  const auto implementers = classes.Implementing(kInterface);
  return std::any_of(implementers.begin(), implementers.end(), [&](const std::string& name) {
    const auto component = classes.Create(name);
    const auto ask = [&](const char* member, auto&&... arguments) {
      return automation::ToBoolean(component->Call(std::string(kInterface) + "_" + member, arguments...));
    };
    if (!SameFolded(name, owner) && ask("Exists", names, values)) return true;
    return !ask("BeforeDelete", entity, names, values);
  });
}

}  // namespace

bool ReferentialChecker::HasValidReferences(const std::string& table, const Array& names,
                                            const Array& values) {
  if (!SameFolded(table, "BUDGET")) RaiseUnknown("table '" + table + "'");
  SuiteDatabase database(installation_->ConnectionText());
  for (std::int32_t i = names.Lower(); i <= names.Upper(); ++i) {
    if (!IsValid(database, automation::ToText(names.At(i)), TextOf(values.At(i)))) return false;
  }
  return true;
}

bool ReferentialChecker::MayDelete(const std::string& entity, const Array& names, const Array& values) {
  if (!SameFolded(entity, "CHARGETYPE")) RaiseUnknown("entity '" + entity + "'");
  SuiteDatabase database(installation_->ConnectionText());
  const std::string code = ValueOf(names, values, "CHARGETYPECODE");
  if (Holds(database, "SELECT BUDGETCODE FROM BUDGET WHERE CHARGETYPECODE=", code)) return false;
  return !AnyComponentObjects(entity, names, values, kChargeTypeOwner);
}

}  // namespace talvex::adapters::suite
