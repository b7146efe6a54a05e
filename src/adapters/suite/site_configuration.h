// The settings file of an installation, siteconfiguration.xml.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "automation/text.h"
#include "platform/xml/xml_document.h"

namespace talvex::adapters::suite {

// The application that this suite is about, and the one whose values hold until another is selected.
inline constexpr std::string_view kMainApplication = "Vantor";

// What a site configuration says of one application.
class SiteApplication {
 public:
  explicit SiteApplication(std::string config_dir) : config_dir_(std::move(config_dir)) {}

  // The directory with the application's files, without a "/" at its end.
  [[nodiscard]] const std::string& ConfigDir() const noexcept { return config_dir_; }
  // The empty text for a key that is not configured.
  [[nodiscard]] std::string Value(std::string_view section, std::string_view key) const;
  // False when the key is there already; its value stays then.
  bool Add(const std::string& section, const std::string& key, std::string value);

 private:
  template <class T>
  using ByName = std::unordered_map<std::string, T, automation::FoldedHash, automation::FoldedEqual>;

  std::string config_dir_;
  ByName<ByName<std::string>> sections_;
};

// A site configuration as it was when it was read; it never changes, so threads may share it. The names of
// applications, sections and keys compare without case. "{ConfigDir}" in a value stands for the directory
// that the file is in, and so does the beginning of an application's directory that is not absolute.
class SiteConfiguration {
 public:
  // Reads the file through the environment. Raises 53 when there is none and 5, with the file and the reason,
  // when it is no site configuration or says something twice. No value of the file, which may be a password,
  // reaches the message.
  [[nodiscard]] static std::shared_ptr<const SiteConfiguration> Read(const std::string& path);

  SiteConfiguration(std::string path, platform::xml::XmlNode& root);

  // Raises 5, naming the application and the file, when the file does not have it.
  [[nodiscard]] const SiteApplication& Application(std::string_view name) const;
  // What the main application's database is opened with.
  [[nodiscard]] std::string ConnectionText() const;

 private:
  void AddApplication(platform::xml::XmlNode& element);
  void AddEntry(SiteApplication& application, const std::string& section,
                platform::xml::XmlNode& element) const;
  [[noreturn]] void RaiseBroken(std::string_view reason) const;

  std::string path_;
  std::string directory_;
  std::unordered_map<std::string, SiteApplication, automation::FoldedHash, automation::FoldedEqual>
      applications_;
};

}  // namespace talvex::adapters::suite
