// The suite's error log.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "adapters/suite/installation.h"
#include "automation/class_info.h"

namespace talvex::adapters::suite {

// Writes to log/errors.jsonl in the installation: one JSON object a line with time, level, source and text.
// It reads neither the database nor the settings, so that what is wrong with those can be logged.
class ErrorLog final : public automation::Object {
  TALVEX_CLASS(ErrorLog, "Corvane.Log", "The error log of the installation, log/errors.jsonl.");

 public:
  explicit ErrorLog(std::shared_ptr<const Installation> installation)
      : installation_(std::move(installation)) {}

  TALVEX_METHOD(
      void, WriteError,
      (const std::string& source, const std::string& text, automation::Variant& level,
       const std::optional<automation::Variant>& extra),
      "Adds one entry in one write; bytes that are not UTF-8 become replacement characters. The level is a "
      "number and stays as it is; the fourth value is not kept. A log that cannot be written raises 75.");

 private:
  std::shared_ptr<const Installation> installation_;
};

}  // namespace talvex::adapters::suite
