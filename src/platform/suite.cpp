#include "platform/suite.h"

#include "automation/conversions.h"
#include "automation/error.h"

namespace talvex::platform::suite {

using automation::Variant;

namespace {

// What a service must give. A service of somebody else's may give nothing, which raises 91 and names what is
// missing.
template <class C>
std::shared_ptr<C> Given(const Variant& value, std::string_view what) {
  auto object = automation::ValueOf<std::shared_ptr<C>>::From(value);
  if (object != nullptr) return object;
  throw automation::Error(automation::error_number::kObjectNotSet, "Talvex.Platform",
                          "Object not set: " + std::string(what));
}

}  // namespace

Service::Service(automation::ObjectRef object) : object_(std::move(object)) {
  if (object_ == nullptr) {
    throw automation::Error(automation::error_number::kObjectNotSet, "Talvex.Platform",
                            "Object not set: a suite service");
  }
}

void Configuration::SelectApplication(std::string_view name) const {
  Get().Call("SelectApplication", name, 0);
}

std::string Configuration::Value(std::string_view section, std::string_view key) const {
  return automation::ToText(Get().Call("Value", section, key));
}

std::shared_ptr<automation::Dictionary> Configuration::ApplicationEntries(std::string_view name) const {
  return Given<automation::Dictionary>(
      Get().Call("ApplicationEntries", name),
      "Corvane.Configuration gives no entries for the application \"" + std::string(name) + "\"");
}

std::string Configuration::ConfigDirOf(const Variant& entry) {
  return Configuration(Given<automation::Object>(entry, "an entry of an application")).ConfigDir();
}

std::string Configuration::ConfigDir() const { return automation::ToText(Get().Get("ConfigDir")); }

void Configuration::Load(std::string_view path) const { Get().Call("Load", path); }

void Log::WriteError(std::string_view source, std::string_view text, std::int32_t& level) const {
  Variant by_reference(level);
  Get().Call("WriteError", source, text, by_reference, Variant());
  level = automation::ToInt32(by_reference);
}

bool ReferentialChecker::HasValidReferences(std::string_view table, const automation::Array& names,
                                            const automation::Array& values) const {
  return automation::ToBoolean(Get().Call("HasValidReferences", table, names, values));
}

bool ReferentialChecker::MayDelete(std::string_view entity, const automation::Array& names,
                                   const automation::Array& values) const {
  return automation::ToBoolean(Get().Call("MayDelete", entity, names, values));
}

automation::Currency CurrencyConverter::Convert(std::string_view source, std::string_view target,
                                                automation::Currency amount, automation::Date date) const {
  return automation::ToCurrency(Get().Call("Convert", source, target, amount, date));
}

std::int32_t CurrencyConverter::Decimals(std::string_view code) const {
  return automation::ToInt32(Get().Call("Decimals", code));
}

std::shared_ptr<automation::Dictionary> CurrencyConverter::CurrencyCodes() const {
  return Given<automation::Dictionary>(Get().Call("CurrencyCodes"),
                                       "Mirelo.Currency gives no currency codes");
}

std::shared_ptr<automation::Collection> SuiteUser::Offices() const {
  return Given<automation::Collection>(Get().Call("Offices"), "Mirelo.User gives no offices");
}

bool SuiteUser::Exists(std::string_view user) const {
  return automation::ToBoolean(Get().Call("Exists", user));
}

void SuiteUser::SendMail(std::string_view from, std::string_view to, std::string_view subject,
                         std::string_view body) const {
  Get().Call("SendMail", from, to, subject, body);
}

void MembershipUser::Initialise(std::string_view configuration_file) const {
  Get().Call("Initialise", configuration_file);
}

void MembershipUser::Open(std::string_view user, std::string_view script_user,
                          std::string_view script_code) const {
  Get().Call("Open", user, script_user, script_code);
}

std::int16_t MembershipUser::LocaleId() const { return automation::ToInt16(Get().Get("LocaleId")); }

MessageManager MessageManager::Of(automation::Object& application) {
  return MessageManager(Given<automation::Object>(application.Call("Value", "I18NMessageManager"),
                                                  "the host's Application has no I18NMessageManager"));
}

std::string MessageManager::GetText(std::string_view label, std::string_view locale_id) const {
  return automation::ToText(Get().Call("GetText", label, locale_id));
}

}  // namespace talvex::platform::suite
