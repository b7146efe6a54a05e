#include "adapters/suite/installation.h"

#include <filesystem>
#include <utility>

#include "platform/environment.h"

namespace talvex::adapters::suite {

namespace {

std::string AbsoluteDirectory(std::string_view directory) {
  std::string path = std::filesystem::absolute(platform::SystemPath(directory)).string();
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

}  // namespace

Installation::Installation(std::string_view directory) : directory_(AbsoluteDirectory(directory)) {}

std::string Installation::Path(std::string_view name) const { return directory_ + "/" + std::string(name); }

std::shared_ptr<const SiteConfiguration> Installation::Site() const {
  const std::string path = Path("siteconfiguration.xml");
  // Asked for before reading: a change in between is noticed the next time.
  std::optional<std::string> version = platform::Environment::Current().files->Version(path);
  {
    const std::lock_guard lock(mutex_);
    if (site_ != nullptr && version.has_value() && version == version_) return site_;
  }
  auto site = SiteConfiguration::Read(path);
  const std::lock_guard lock(mutex_);
  version_ = std::move(version);
  site_ = site;
  return site;
}

std::shared_ptr<const SiteConfiguration> Installation::SiteAt(std::string_view path) const {
  const std::string file = platform::SystemPath(path);
  return file == Path("siteconfiguration.xml") ? Site() : SiteConfiguration::Read(file);
}

}  // namespace talvex::adapters::suite
