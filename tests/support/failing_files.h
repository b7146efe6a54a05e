// A file system that fails when a test wants it to.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "automation/error.h"
#include "platform/files.h"

namespace talvex::test {

// Passes everything on to another file system, except the calls that a test lets fail.
class FailingFiles final : public platform::Files {
 public:
  enum class Call { Exists, Read, Version, WriteNew, Replace, Append, Rename, Remove, MakeFolder };

  explicit FailingFiles(std::shared_ptr<platform::Files> inner) : inner_(std::move(inner)) {}

  // From now on, the `nth` such call (from 1) fails and does nothing. One that failed passes the next time.
  void FailAt(Call call, std::size_t nth, automation::Error error) {
    plans_.push_back({call, nth, std::move(error)});
  }

  // The calls so far, each with the path that it was given (for Rename the old one).
  [[nodiscard]] const std::vector<std::pair<Call, std::string>>& Calls() const noexcept { return calls_; }

  [[nodiscard]] bool Exists(const std::string& path) const override;
  [[nodiscard]] std::string Read(const std::string& path) const override;
  [[nodiscard]] std::optional<std::string> Version(const std::string& path) const override;
  void WriteNew(const std::string& path, std::string_view content) override;
  void Replace(const std::string& path, std::string_view content) override;
  void Append(const std::string& path, std::string_view content) override;
  void Rename(const std::string& from, const std::string& to) override;
  void Remove(const std::string& path) override;
  void MakeFolder(const std::string& path) override;

 private:
  struct Plan {
    Call call;
    std::size_t left;
    automation::Error error;
  };

  void Pass(Call call, const std::string& path) const;

  std::shared_ptr<platform::Files> inner_;
  mutable std::vector<Plan> plans_;
  mutable std::vector<std::pair<Call, std::string>> calls_;
};

}  // namespace talvex::test
