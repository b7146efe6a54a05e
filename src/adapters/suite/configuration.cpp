#include "adapters/suite/configuration.h"

namespace talvex::adapters::suite {

std::string ApplicationEntry::ConfigDir() const { return config_dir_; }

void Configuration::SelectApplication(const std::string& name, std::int32_t /*mode*/) {
  static_cast<void>(Site()->Application(name));
  application_ = name;
}

std::string Configuration::Value(const std::string& section, const std::string& key) {
  return Site()->Application(application_).Value(section, key);
}

std::shared_ptr<automation::Dictionary> Configuration::ApplicationEntries(const std::string& name) {
  auto entries = std::make_shared<automation::Dictionary>();
  entries->Add(name, std::make_shared<ApplicationEntry>(Site()->Application(name).ConfigDir()));
  return entries;
}

void Configuration::Load(const std::string& path) { loaded_ = installation_->SiteAt(path); }

std::string Configuration::ConfigDir() const { return Site()->Application(application_).ConfigDir(); }

std::shared_ptr<const SiteConfiguration> Configuration::Site() const {
  return loaded_ != nullptr ? loaded_ : installation_->Site();
}

}  // namespace talvex::adapters::suite
