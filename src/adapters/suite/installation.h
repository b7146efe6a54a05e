// The directory that an installation lives in.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "adapters/suite/site_configuration.h"

namespace talvex::adapters::suite {

// Built once by the composition root and shared by all services. Safe to use from several threads.
class Installation {
 public:
  // The directory is made absolute; nothing is read.
  explicit Installation(std::string_view directory);

  [[nodiscard]] const std::string& Directory() const noexcept { return directory_; }
  // The path of a file or folder in the directory.
  [[nodiscard]] std::string Path(std::string_view name) const;

  // The settings as they stand in siteconfiguration.xml now; the file is read again only when it has changed.
  // Raises what SiteConfiguration::Read raises.
  [[nodiscard]] std::shared_ptr<const SiteConfiguration> Site() const;
  // The settings in any file; "\" and "/" both separate.
  [[nodiscard]] std::shared_ptr<const SiteConfiguration> SiteAt(std::string_view path) const;
  // What the database is opened with.
  [[nodiscard]] std::string ConnectionText() const { return Site()->ConnectionText(); }

 private:
  std::string directory_;
  mutable std::mutex mutex_;
  mutable std::optional<std::string> version_;
  mutable std::shared_ptr<const SiteConfiguration> site_;
};

}  // namespace talvex::adapters::suite
