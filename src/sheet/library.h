// The spreadsheet library, started once for the process.
#pragma once

#include <goffice/goffice.h>

#include <memory>
#include <string>

namespace talvex::sheet {

struct Unref {
  template <class T>
  void operator()(T* object) const {
    g_object_unref(object);
  }
};
template <class T>
using Held = std::unique_ptr<T, Unref>;

// What the library says about a call: errors and whether it asked for a password.
struct Report {
  std::string errors;  // The messages, joined by "; ".
  bool wanted_password = false;
};

// To be called once, before anything else of the library. Raises Refusal when a plug-in is missing.
void StartLibrary();

// Whether the library has written a text in part only, because the format has no room for the whole of it.
[[nodiscard]] bool HasCutTexts();

// A context for one call, which fills `report` (that must live longer) and never asks anybody anything.
[[nodiscard]] Held<GOCmdContext> NewContext(Report& report);

}  // namespace talvex::sheet
