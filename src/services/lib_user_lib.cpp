#include "services/lib_user_lib.h"

#include "platform/environment.h"
#include "services/frame.h"

namespace talvex::Lib_UserLib {

using platform::suite::Configuration;
using platform::suite::MembershipUser;

namespace {

// Both objects are made directly, not through the transaction context: a user directory need not know of
// transactions.
automation::ObjectRef CreateDirectly(std::string_view class_name) {
  return platform::Environment::Current().classes->Create(class_name);
}

// Without an entry there is no directory to look in, and the file system's root is none.
[[noreturn]] void RaiseNoEntries() {
  throw automation::Error(automation::error_number::kInvalidCall, "Talvex",
                          "The configuration has no entries for the application \"Vantor\", so nothing says "
                          "where siteconfiguration.xml is: configure the application");
}

}  // namespace

MembershipUser UL_CreateUO(const std::string& user) {
  return Handled("Lib_UserLib.UL_CreateUO", [&] {
    constexpr std::string_view kSection = "MEMBERSHIP";
    const Configuration configuration(CreateDirectly(platform::suite::class_name::kConfiguration));
    std::string config_dir;
    const auto entries = configuration.ApplicationEntries("Vantor");
    if (entries->Count() == 0) RaiseNoEntries();
    for (const auto& [name, entry] : entries->Entries()) {
      config_dir = Configuration::ConfigDirOf(entry);
    }
    const std::string site_configuration = config_dir + "\\siteconfiguration.xml";
    configuration.Load(site_configuration);
    std::string script_user = configuration.Value(kSection, "MemScriptUser");
    const std::string script_code = configuration.Value(kSection, "MemScriptCode");
    const std::string root = configuration.Value(kSection, "LDAPRoot");
    if (!root.empty()) script_user += "," + root;

    MembershipUser user_object(CreateDirectly(platform::suite::class_name::kMembershipUser));
    user_object.Initialise(site_configuration);
    user_object.Open(user, script_user, script_code);
    return user_object;
  });
}

}  // namespace talvex::Lib_UserLib
