// Making installations.
#pragma once

#include <string>

namespace talvex::host {

struct InstallationPlan {
  std::string directory;
  bool with_sample = false;
  std::string connection_string;  // Of a database server; empty for the embedded database.
};

// What a file holds, as it is, for one who has no installation yet. Raises what platform::Files::Read raises.
[[nodiscard]] std::string ReadFile(const std::string& path);

// Makes an installation in a directory that does not exist yet or is empty: folders, configuration files, the
// tables of its database and the texts of all labels, and, when asked for, a small sample company. Tables and
// texts that a database server has already stay as they are; a sample is refused where there are budgets. The
// file that holds the connection string of a server can be opened by its owner alone, from its first byte on.
// Raises 58 for a directory in use; a failure on the way takes away what was made.
void MakeInstallation(const InstallationPlan& plan);

}  // namespace talvex::host
