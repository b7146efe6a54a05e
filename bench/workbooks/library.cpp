#include "workbooks/library.h"

// clang-format off
#include <command-context-stderr.h>
#include <gnm-plugin.h>
#include <gutils.h>
#include <libgnumeric.h>
#include <goffice/app/file.h>
#include <goffice/app/go-plugin.h>
#include <gsf/gsf-input-memory.h>
#include <gsf/gsf-output-memory.h>
// clang-format on

#include <fstream>
#include <iterator>

namespace talvex::bench {

GOIOContext* StartLibrary() {
  const char* words[] = {"floor", nullptr};
  gnm_pre_parse_init(1, words);
  gnm_init();
  GOCmdContext* context = gnm_cmd_context_stderr_new();
  GSList* folders = g_slist_append(nullptr, g_build_filename(gnm_sys_lib_dir(), PLUGIN_SUBDIR, nullptr));
  go_plugins_init(context, nullptr, nullptr, folders, FALSE, GNM_PLUGIN_LOADER_MODULE_TYPE);
  for (const char* id : {"Gnumeric_Excel", "Gnumeric_fnmath", "Gnumeric_fnlogical", "Gnumeric_fnstat"}) {
    GOErrorInfo* error = nullptr;
    go_plugin_activate(go_plugins_get_plugin_by_id(id), &error);
  }
  return go_io_context_new(context);
}

WorkbookView* OpenBook(const std::string& path, GOIOContext* io) {
  std::ifstream file(path, std::ios::binary);
  auto* bytes = new std::string(std::istreambuf_iterator<char>(file), {});
  GsfInput* input = gsf_input_memory_new(reinterpret_cast<const guint8*>(bytes->data()),
                                         static_cast<gsf_off_t>(bytes->size()), FALSE);
  return workbook_view_new_from_input(input, nullptr, go_file_opener_for_id("Gnumeric_Excel:excel"), io,
                                      nullptr);
}

void WriteBook(WorkbookView* view, const std::string& target, GOIOContext* io) {
  GsfOutput* output = gsf_output_memory_new();
  workbook_view_save_to_output(view, go_file_saver_for_id("Gnumeric_Excel:excel_biff8"), output, io);
  std::ofstream(target, std::ios::binary)
      .write(reinterpret_cast<const char*>(gsf_output_memory_get_bytes(GSF_OUTPUT_MEMORY(output))),
             static_cast<std::streamsize>(gsf_output_size(output)));
}

}  // namespace talvex::bench
