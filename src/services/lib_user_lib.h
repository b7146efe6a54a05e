// The suite's membership user objects.
#pragma once

#include <string>

#include "platform/suite.h"

namespace talvex::Lib_UserLib {

// The membership user of that id, opened with the script user and code that the site configuration gives.
// Failures carry the method name "Lib_UserLib.UL_CreateUO".
[[nodiscard]] platform::suite::MembershipUser UL_CreateUO(const std::string& user);

}  // namespace talvex::Lib_UserLib
