// Making installations.
#pragma once

#include <string>

namespace talvex::host {

// Makes an installation in a directory that does not exist yet or is empty: folders, configuration files, the
// embedded database with its tables and the texts of all labels, and, when asked for, a small sample company.
// Raises 58 for a directory in use; a failure on the way takes away what was made.
void MakeInstallation(const std::string& directory, bool with_sample);

}  // namespace talvex::host
