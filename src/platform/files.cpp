#include "platform/files.h"

#include <algorithm>

namespace talvex::platform {

std::string SystemPath(std::string_view path) {
  std::string result(path);
  std::replace(result.begin(), result.end(), '\\', '/');
  return result;
}

}  // namespace talvex::platform
