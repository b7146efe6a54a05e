// The suite's own services, as the component calls them: created by class name, called by member name. The
// names of their members stand here and nowhere else in the component.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "automation/collection.h"
#include "automation/dictionary.h"
#include "automation/object.h"

namespace talvex::platform::suite {

namespace class_name {
inline constexpr std::string_view kConfiguration = "Corvane.Configuration";
inline constexpr std::string_view kLog = "Corvane.Log";
inline constexpr std::string_view kReferentialChecker = "Corvane.ReferentialChecker";
inline constexpr std::string_view kCurrency = "Mirelo.Currency";
inline constexpr std::string_view kSuiteUser = "Mirelo.User";
inline constexpr std::string_view kMembershipUser = "Pellory.User";
}  // namespace class_name

// One service object. Holding it keeps the object. A member that must give an object raises 91, naming what
// is missing, when the service gives none.
class Service {
 public:
  // An object that is not set raises 91.
  explicit Service(automation::ObjectRef object);

 protected:
  [[nodiscard]] automation::Object& Get() const noexcept { return *object_; }

 private:
  automation::ObjectRef object_;
};

// Values by section and key, and where the installation's files are.
class Configuration : public Service {
 public:
  using Service::Service;
  void SelectApplication(std::string_view name) const;
  // The empty text for a key that is not configured.
  [[nodiscard]] std::string Value(std::string_view section, std::string_view key) const;
  // The entries of an application; ask ConfigDirOf for the directory of one.
  [[nodiscard]] std::shared_ptr<automation::Dictionary> ApplicationEntries(std::string_view name) const;
  [[nodiscard]] static std::string ConfigDirOf(const automation::Variant& entry);
  [[nodiscard]] std::string ConfigDir() const;
  void Load(std::string_view path) const;
};

// The suite's error log.
class Log : public Service {
 public:
  using Service::Service;
  void WriteError(std::string_view source, std::string_view text, std::int32_t& level) const;
};

// References between the records of all components.
class ReferentialChecker : public Service {
 public:
  using Service::Service;
  // Whether a record of the table that holds these values in these columns refers only to records that exist.
  [[nodiscard]] bool HasValidReferences(std::string_view table, const automation::Array& names,
                                        const automation::Array& values) const;
  // Whether the record of the entity that these columns and values identify may be deleted: nothing refers to
  // it.
  [[nodiscard]] bool MayDelete(std::string_view entity, const automation::Array& names,
                               const automation::Array& values) const;
};

// Conversion between currencies.
class CurrencyConverter : public Service {
 public:
  using Service::Service;
  // The amount in the target currency, at the rates of the date. An unknown currency is an error that names
  // it.
  [[nodiscard]] automation::Currency Convert(std::string_view source, std::string_view target,
                                             automation::Currency amount, automation::Date date) const;
  [[nodiscard]] std::int32_t Decimals(std::string_view code) const;
  // All currencies, their codes as keys.
  [[nodiscard]] std::shared_ptr<automation::Dictionary> CurrencyCodes() const;
};

// The users of the suite and their mail.
class SuiteUser : public Service {
 public:
  using Service::Service;
  // Both users by their id.
  void SendMail(std::string_view from, std::string_view to, std::string_view subject,
                std::string_view body) const;
  // The administrative offices, as items.
  [[nodiscard]] std::shared_ptr<automation::Collection> Offices() const;
  [[nodiscard]] bool Exists(std::string_view user) const;
};

// One user of the membership directory.
class MembershipUser : public Service {
 public:
  using Service::Service;
  void Initialise(std::string_view configuration_file) const;
  void Open(std::string_view user, std::string_view script_user, std::string_view script_code) const;
  [[nodiscard]] std::int16_t LocaleId() const;
};

// The host's shared texts.
class MessageManager : public Service {
 public:
  // Taken from the host's "Application" object.
  [[nodiscard]] static MessageManager Of(automation::Object& application);
  [[nodiscard]] std::string GetText(std::string_view label, std::string_view locale_id) const;

 private:
  using Service::Service;
};

}  // namespace talvex::platform::suite
