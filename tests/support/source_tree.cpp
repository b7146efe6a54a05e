#include "support/source_tree.h"

namespace talvex::test {

std::string SourcePath(std::string_view path) { return TALVEX_SOURCE_TREE "/" + std::string(path); }

}  // namespace talvex::test
