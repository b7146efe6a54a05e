// One user of the membership directory.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "adapters/suite/installation.h"
#include "automation/class_info.h"

namespace talvex::adapters::suite {

// Looks users up in the table SUITEUSER of the database that a site configuration names. The account for
// looking them up is what a company directory would want; the database needs none beside its connection
// string.
class MembershipUserService final : public automation::Object {
  TALVEX_CLASS(MembershipUserService, "Pellory.User",
               "One user of the suite and the language that the user reads.");

 public:
  explicit MembershipUserService(std::shared_ptr<const Installation> installation)
      : installation_(std::move(installation)) {}

  TALVEX_METHOD(void, Initialise, (const std::string& path),
                "Takes the database from a site configuration file; raises 53 without the file and 5 for a "
                "broken one.");
  TALVEX_METHOD(
      void, Open, (const std::string& user, const std::string& script_user, const std::string& script_code),
      "Reads the user of that id; an unknown one raises 5. A blank id is the empty user, who stands for "
      "nobody in particular and is in no table. The account for looking users up is not needed here. "
      "Before Initialise, 91 is raised.");
  TALVEX_READONLY(std::int16_t, LocaleId, "LocaleId",
                  "The id of the user's language; 0, which reads English, for the empty user. A user without "
                  "one raises 5; before Open, 91 is raised.");

 private:
  std::shared_ptr<const Installation> installation_;
  std::shared_ptr<const SiteConfiguration> site_;
  std::optional<std::string> user_;
  automation::Variant locale_id_;
};

}  // namespace talvex::adapters::suite
