#include "adapters/suite/site_configuration.h"

#include <utility>

#include "automation/error.h"
#include "platform/environment.h"

namespace talvex::adapters::suite {

namespace {

using automation::Error;
using platform::xml::XmlDocument;
using platform::xml::XmlNode;

constexpr std::string_view kConfigurationSource = "Corvane.Configuration";

[[noreturn]] void RaiseUnusable(const std::string& path, std::string_view reason) {
  throw Error(automation::error_number::kInvalidCall, kConfigurationSource,
              "The site configuration " + path + " cannot be used: " + std::string(reason));
}

std::string DirectoryOf(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  return slash == std::string::npos ? "." : path.substr(0, slash);
}

// The component appends paths that begin with a separator, so a directory must not end in one.
std::string Resolved(const std::string& directory, std::string config_dir) {
  while (!config_dir.empty() && config_dir.back() == '/') config_dir.pop_back();
  if (config_dir.empty() || config_dir == ".") return directory;
  return config_dir.front() == '/' ? config_dir : directory + "/" + config_dir;
}

}  // namespace

std::string SiteApplication::Value(std::string_view section, std::string_view key) const {
  const auto keys = sections_.find(section);
  if (keys == sections_.end()) return {};
  const auto value = keys->second.find(key);
  return value == keys->second.end() ? std::string() : value->second;
}

bool SiteApplication::Add(const std::string& section, const std::string& key, std::string value) {
  return sections_[section].emplace(key, std::move(value)).second;
}

std::shared_ptr<const SiteConfiguration> SiteConfiguration::Read(const std::string& path) {
  const std::string file = platform::SystemPath(path);
  const std::string text = platform::Environment::Current().files->Read(file);
  XmlDocument document;
  // What the parser says may quote a password from the file.
  if (!document.LoadXml(text)) {
    const std::int32_t line = document.Error().line;
    RaiseUnusable(file, "it is no valid XML document" +
                            (line == 0 ? std::string() : ", look at line " + std::to_string(line)));
  }
  return std::make_shared<const SiteConfiguration>(file, *document.DocumentElement());
}

SiteConfiguration::SiteConfiguration(std::string path, XmlNode& root)
    : path_(std::move(path)), directory_(DirectoryOf(path_)) {
  if (root.Name() != "siteconfiguration") RaiseBroken("its first element is <" + root.Name() + ">");
  for (const auto& element : root.Children("application")) AddApplication(*element);
}

void SiteConfiguration::AddApplication(XmlNode& element) {
  const std::string name = element.Attribute("name");
  const std::string config_dir = platform::SystemPath(element.Attribute("configdir"));
  const auto [added, is_new] = applications_.try_emplace(name, Resolved(directory_, config_dir));
  if (!is_new) RaiseBroken("it has the application '" + name + "' twice");
  for (const auto& section : element.Children("section")) {
    const std::string section_name = section->Attribute("name");
    for (const auto& entry : section->Children("entry")) AddEntry(added->second, section_name, *entry);
  }
}

void SiteConfiguration::AddEntry(SiteApplication& application, const std::string& section,
                                 XmlNode& element) const {
  const std::string key = element.Attribute("key");
  if (!application.Add(section, key, automation::Replaced(element.Text(), "{ConfigDir}", directory_))) {
    RaiseBroken("its section '" + section + "' has the key '" + key + "' twice");
  }
}

void SiteConfiguration::RaiseBroken(std::string_view reason) const { RaiseUnusable(path_, reason); }

const SiteApplication& SiteConfiguration::Application(std::string_view name) const {
  const auto found = applications_.find(name);
  if (found == applications_.end()) RaiseBroken("it has no application '" + std::string(name) + "'");
  return found->second;
}

std::string SiteConfiguration::ConnectionText() const {
  return Application(kMainApplication).Value("CONNECTIONS", "VantorConnection_ConnectionString");
}

}  // namespace talvex::adapters::suite
