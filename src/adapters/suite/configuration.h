// The suite's configuration service.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "adapters/suite/installation.h"
#include "automation/class_info.h"
#include "automation/dictionary.h"

namespace talvex::adapters::suite {

// One application as Configuration lists it.
class ApplicationEntry final : public automation::Object {
  TALVEX_CLASS(ApplicationEntry, "Corvane.ApplicationEntry", "An application of a site configuration.");

 public:
  explicit ApplicationEntry(std::string config_dir) : config_dir_(std::move(config_dir)) {}
  TALVEX_READONLY(std::string, ConfigDir, "ConfigDir", "The directory with the application's files.");

 private:
  std::string config_dir_;
};

// Values by section and key. What an object has loaded or selected is its own. Every member raises what
// reading the site configuration raises: 53 without the file, 5 for a broken one or for an application that
// it does not have.
class Configuration final : public automation::Object {
  TALVEX_CLASS(Configuration, "Corvane.Configuration",
               "The settings of the installation, by section and key.");

 public:
  explicit Configuration(std::shared_ptr<const Installation> installation)
      : installation_(std::move(installation)) {}

  TALVEX_METHOD(void, SelectApplication, (const std::string& name, std::int32_t mode),
                "Makes the values and the directory those of an application; until then they are Vantor's. "
                "The mode has no meaning here. An application that is not configured raises 5 and the one "
                "before stays.");
  TALVEX_METHOD(std::string, Value, (const std::string& section, const std::string& key),
                "The selected application's value; the empty text when the key is not configured.");
  TALVEX_METHOD(
      std::shared_ptr<automation::Dictionary>, ApplicationEntries, (const std::string& name),
      "The entries of an application, each with its ConfigDir; 5 when the application is not configured.");
  TALVEX_METHOD(
      void, Load, (const std::string& path),
      "Takes all values from another site configuration file from now on; one that cannot be read raises and "
      "the one before stays.");
  TALVEX_READONLY(std::string, ConfigDir, "ConfigDir",
                  "The directory with the selected application's files.");

 private:
  [[nodiscard]] std::shared_ptr<const SiteConfiguration> Site() const;

  std::shared_ptr<const Installation> installation_;
  std::shared_ptr<const SiteConfiguration> loaded_;
  std::string application_{kMainApplication};
};

}  // namespace talvex::adapters::suite
