// Where the sources are: for tests that read files of the project.
#pragma once

#include <string>
#include <string_view>

namespace talvex::test {

// The path of a file or folder, by its path in the project ("schema/sqlite.sql").
[[nodiscard]] std::string SourcePath(std::string_view path);

}  // namespace talvex::test
