#include "sheet/library.h"

// The library's own headers do not say what else they need; gnumeric.h comes first.
#include <gnumeric.h>
// clang-format off
#include <gnm-plugin.h>
#include <gutils.h>
#include <libgnumeric.h>
#include <unistd.h>
#include <goffice/app/error-info.h>
#include <goffice/app/go-cmd-context-impl.h>
#include <goffice/app/go-plugin.h>
// clang-format on

#include <cstdlib>
#include <cstring>

#include "adapters/spreadsheet/message/messages.h"
#include "sheet/refusal.h"

namespace talvex::sheet {

namespace {

// The reader and writer, and the functions that formulas of such workbooks use. Activating them is cheap: a
// group of functions is loaded when a formula uses one.
constexpr const char* kPlugins[] = {"Gnumeric_Excel",   "Gnumeric_fncomplex", "Gnumeric_fndatabase",
                                    "Gnumeric_fndate",  "Gnumeric_fneng",     "Gnumeric_fnfinancial",
                                    "Gnumeric_fninfo",  "Gnumeric_fnlogical", "Gnumeric_fnlookup",
                                    "Gnumeric_fnmath",  "Gnumeric_fnrandom",  "Gnumeric_fnstat",
                                    "Gnumeric_fnstring"};

// The context object: the library's type system wants a class of its own for it.
struct Context {
  GObject base;
  Report* report;
};
struct ContextClass {
  GObjectClass base;
};

Report& ReportOf(GOCmdContext* context) { return *reinterpret_cast<Context*>(context)->report; }

void Note(GOCmdContext* context, const char* text) {
  std::string& errors = ReportOf(context).errors;
  if (text == nullptr || *text == '\0') return;
  if (!errors.empty()) errors += "; ";
  errors += text;
}

void NoteInfo(GOCmdContext* context, GOErrorInfo* info) {
  if (info == nullptr) return;
  Note(context, go_error_info_peek_message(info));
  for (GSList* detail = go_error_info_peek_details(info); detail != nullptr; detail = detail->next) {
    NoteInfo(context, static_cast<GOErrorInfo*>(detail->data));
  }
}

void FillInterface(gpointer table, gpointer /*data*/) {
  auto* context = static_cast<GOCmdContextClass*>(table);
  context->get_password = [](GOCmdContext* self, const char* /*file*/) -> char* {
    ReportOf(self).wanted_password = true;
    return nullptr;
  };
  context->set_sensitive = [](GOCmdContext* /*self*/, gboolean /*sensitive*/) {};
  context->error.error = [](GOCmdContext* self, GError* error) { Note(self, error->message); };
  context->error.error_info = &NoteInfo;
  context->error.error_info_list = [](GOCmdContext* self, GSList* list) {
    for (; list != nullptr; list = list->next) NoteInfo(self, static_cast<GOErrorInfo*>(list->data));
  };
  context->progress_set = [](GOCmdContext* /*self*/, double /*part*/) {};
  context->progress_message_set = [](GOCmdContext* /*self*/, const char* /*text*/) {};
}

GType ContextType() {
  static const GType type = [] {
    const GType made =
        g_type_register_static_simple(G_TYPE_OBJECT, "TalvexSheetContext", sizeof(ContextClass), nullptr,
                                      sizeof(Context), nullptr, GTypeFlags(0));
    const GInterfaceInfo interface { &FillInterface, nullptr, nullptr };
    g_type_add_interface_static(made, GO_TYPE_CMD_CONTEXT, &interface);
    return made;
  }();
  return type;
}

// Warnings about damaged files are no news to anybody. The library ends the process when it gets no memory;
// the status says so, which a signal would not.
void HandleLog(const char* /*domain*/, GLogLevelFlags level, const char* text, gpointer /*data*/) {
  if ((level & G_LOG_LEVEL_ERROR) == 0) return;
  if (text != nullptr && std::strstr(text, "failed to allocate") != nullptr) {
    _exit(adapters::spreadsheet::message::kOutOfMemory);
  }
  std::abort();
}

GLogWriterOutput HandleStructuredLog(GLogLevelFlags level, const GLogField* fields, gsize count,
                                     gpointer /*data*/) {
  for (gsize index = 0; index < count; ++index) {
    if (std::strcmp(fields[index].key, "MESSAGE") == 0) {
      HandleLog(nullptr, level, static_cast<const char*>(fields[index].value), nullptr);
    }
  }
  return G_LOG_WRITER_HANDLED;
}

bool has_cut_texts = false;

// What the library prints about a text that it writes in part is the one sign of that.
void HandlePrinted(const char* text) {
  if (std::strstr(text, "Truncating") != nullptr) has_cut_texts = true;
}

void Activate(const char* id) {
  GOPlugin* plugin = go_plugins_get_plugin_by_id(id);
  GOErrorInfo* error = nullptr;
  if (plugin != nullptr) go_plugin_activate(plugin, &error);
  if (plugin == nullptr || error != nullptr) {
    throw Refusal(adapters::spreadsheet::message::refusals::kInternal,
                  std::string("the library has no plug-in ") + id);
  }
}

}  // namespace

void StartLibrary() {
  // Whoever starts the program: formulas and numbers are read and written in one culture, and nothing of a
  // person's settings or session is looked for.
  setenv("LC_ALL", "C.UTF-8", 1);
  setenv("HOME", "/nonexistent", 1);
  setenv("GSETTINGS_BACKEND", "memory", 1);
  setenv("GIO_USE_VFS", "local", 1);
  g_log_set_default_handler(&HandleLog, nullptr);
  g_log_set_writer_func(&HandleStructuredLog, nullptr, nullptr);
  g_set_print_handler(&HandlePrinted);
  g_set_printerr_handler(&HandlePrinted);

  const char* words[] = {"talvex-sheet", nullptr};
  gnm_pre_parse_init(1, words);
  gnm_init();
  Report report;
  const Held<GOCmdContext> context = NewContext(report);
  GSList* folders = g_slist_append(nullptr, g_build_filename(gnm_sys_lib_dir(), PLUGIN_SUBDIR, nullptr));
  go_plugins_init(context.get(), nullptr, nullptr, folders, FALSE, GNM_PLUGIN_LOADER_MODULE_TYPE);
  for (const char* id : kPlugins) Activate(id);
}

bool HasCutTexts() { return has_cut_texts; }

Held<GOCmdContext> NewContext(Report& report) {
  auto* context = static_cast<Context*>(g_object_new(ContextType(), nullptr));
  context->report = &report;
  return Held<GOCmdContext>(reinterpret_cast<GOCmdContext*>(context));
}

}  // namespace talvex::sheet
