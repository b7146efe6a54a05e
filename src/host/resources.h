#pragma once

#include <span>
#include <string_view>

namespace talvex::host {

// One file of an installation as it was when the program was built. Both views point into the program itself:
// they are valid as long as it runs, belong to nobody and can be shared between threads.
struct Resource {
  std::string_view path;     // As in the source tree, "/" between folders: "config/talvex/XSL/import.xsl".
  std::string_view content;  // Every byte of the file, unchanged, zero bytes and line ends included.
};

// The files a new installation is made of (stylesheets, template, schemas, label texts, table definitions),
// compiled into the program so that it needs nothing beside itself. In ascending byte order of their paths,
// each path once; empty when the program was built without any. Never fails.
std::span<const Resource> InstallationFiles();

}  // namespace talvex::host
