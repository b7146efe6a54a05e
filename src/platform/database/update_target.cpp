#include "platform/database/update_target.h"

#include <algorithm>

#include "automation/text.h"

namespace talvex::platform::database {

UpdateTarget::UpdateTarget(const TableInfo& info, const std::vector<std::string>& columns)
    : table(info.name), belongs(columns.size()) {
  bool whole_key = true;
  for (const TableColumn& column : info.columns) {
    const auto found = std::find_if(columns.begin(), columns.end(), [&](const std::string& name) {
      return automation::SameFolded(name, column.name);
    });
    if (found == columns.end()) {
      whole_key = whole_key && !column.key;
      continue;
    }
    const auto position = static_cast<std::size_t>(found - columns.begin());
    belongs[position] = true;
    if (column.key) keys.push_back(position);
    if (column.assigned) assigned = position;
  }
  if (!whole_key) keys.clear();
}

}  // namespace talvex::platform::database
