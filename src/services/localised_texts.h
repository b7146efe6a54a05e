// Texts in the language of a user, without the handler of Gen_GetI18N.
#pragma once

#include <string>

namespace talvex::Lib_General {

// As Gen_GetI18N, for a caller that looks texts up under a name of its own: failures pass through.
[[nodiscard]] std::string LookUpI18N(const std::string& user, const std::string& label);

// The English text of a label, for nobody in particular: no user is asked for. Otherwise as LookUpI18N.
[[nodiscard]] std::string LookUpForNobody(const std::string& label);

}  // namespace talvex::Lib_General
