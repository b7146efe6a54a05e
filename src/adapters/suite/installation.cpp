#include "adapters/suite/installation.h"

#include <filesystem>
#include <utility>

#include "platform/environment.h"

namespace talvex::adapters::suite {

namespace {

// One text for each place, however it was written: "site", "./site" and "site/" are one directory.
std::string AbsolutePath(std::string_view path_text) {
  std::string path = std::filesystem::absolute(platform::SystemPath(path_text)).lexically_normal().string();
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

}  // namespace

Installation::Installation(std::string_view directory) : directory_(AbsolutePath(directory)) {}

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
  const std::string file = AbsolutePath(path);
  return file == Path("siteconfiguration.xml") ? Site() : SiteConfiguration::Read(file);
}

}  // namespace talvex::adapters::suite
