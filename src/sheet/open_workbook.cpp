#include "sheet/open_workbook.h"

#include <gsf/gsf-infile-msole.h>
#include <gsf/gsf-infile.h>
#include <gsf/gsf-input-memory.h>
#include <gsf/gsf-input-stdio.h>
#include <gsf/gsf-outfile-msole.h>
#include <gsf/gsf-output-memory.h>
#include <gsf/gsf-structured-blob.h>
#include <sys/stat.h>

#include <goffice/app/file.h>
#include <goffice/app/io-context.h>

#include <cerrno>
#include <cstring>

#include "adapters/spreadsheet/message/messages.h"
#include "sheet/refusal.h"

namespace talvex::sheet {

namespace {

namespace refusals = adapters::spreadsheet::message::refusals;
using adapters::spreadsheet::message::kLargestFile;

void RequireUsableFile(const std::string& path) {
  struct stat found {};
  if (stat(path.c_str(), &found) != 0) {
    const bool missing = errno == ENOENT || errno == ENOTDIR;
    throw Refusal(missing ? refusals::kMissing : refusals::kAccess, std::strerror(errno));
  }
  if (S_ISDIR(found.st_mode)) throw Refusal(refusals::kAccess, "it is a directory");
  if (!S_ISREG(found.st_mode)) throw Refusal(refusals::kAccess, "it is no ordinary file");
  if (found.st_size == 0) throw Refusal(refusals::kNoWorkbook, "is empty");
  if (found.st_size > kLargestFile) throw Refusal(refusals::kTooLarge, "is larger than 64 MB");
}

Held<GsfInput> OpenInput(const std::string& path) {
  GError* error = nullptr;
  GsfInput* input = gsf_input_stdio_new(path.c_str(), &error);
  if (input != nullptr) return Held<GsfInput>(input);
  const std::string why = error == nullptr ? "it cannot be read" : error->message;
  g_clear_error(&error);
  throw Refusal(refusals::kAccess, why);
}

bool IsContainer(GsfInput* input) {
  static constexpr unsigned char kMark[] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
  const guint8* start = gsf_input_read(input, sizeof kMark, nullptr);
  const bool marked = start != nullptr && std::memcmp(start, kMark, sizeof kMark) == 0;
  gsf_input_seek(input, 0, G_SEEK_SET);
  return marked;
}

// The same container in memory, each of its streams in one piece. The library looks at the next record while
// it still uses the one before, which is then overwritten unless both lie in memory: a formula would land in
// a cell that the following record's header names.
Held<GsfInput> InOnePiece(GsfInput* input) {
  const Held<GsfInfile> from(gsf_infile_msole_new(input, nullptr));
  if (from == nullptr) throw Refusal(refusals::kNoWorkbook, "is damaged");
  const Held<GsfOutput> memory(gsf_output_memory_new());
  const Held<GsfOutfile> to(gsf_outfile_msole_new(memory.get()));
  for (int index = 0; index < gsf_infile_num_children(from.get()); ++index) {
    const Held<GsfInput> stream(gsf_infile_child_by_index(from.get(), index));
    if (stream == nullptr) continue;
    const Held<GsfStructuredBlob> copy(gsf_structured_blob_read(stream.get()));
    if (copy != nullptr) gsf_structured_blob_write(copy.get(), to.get());
  }
  gsf_output_close(GSF_OUTPUT(to.get()));
  const auto size = static_cast<gsize>(gsf_output_size(memory.get()));
  const guint8* bytes = gsf_output_memory_get_bytes(GSF_OUTPUT_MEMORY(memory.get()));
  return Held<GsfInput>(
      gsf_input_memory_new(static_cast<guint8*>(g_memdup2(bytes, size)), static_cast<gsf_off_t>(size), TRUE));
}

// What is no container may be a workbook of an older format, which is one stream.
Held<GsfInput> InMemory(GsfInput* input) {
  if (IsContainer(input)) return InOnePiece(input);
  const auto size = static_cast<gsize>(gsf_input_size(input));
  auto* bytes = static_cast<guint8*>(g_malloc(size));
  if (gsf_input_read(input, size, bytes) == nullptr) {
    g_free(bytes);
    throw Refusal(refusals::kAccess, "it cannot be read");
  }
  // NOLINTNEXTLINE(clang-analyzer-unix.Malloc): the input frees the bytes.
  return Held<GsfInput>(gsf_input_memory_new(bytes, static_cast<gsf_off_t>(size), TRUE));
}

}  // namespace

OpenWorkbook::OpenWorkbook(const std::string& path) {
  RequireUsableFile(path);
  const Held<GsfInput> input = InMemory(OpenInput(path).get());
  const GOFileOpener* opener = go_file_opener_for_id("Gnumeric_Excel:excel");
  if (opener == nullptr) throw Refusal(refusals::kInternal, "the library cannot read workbooks");
  if (go_file_opener_probe(opener, input.get(), GO_FILE_PROBE_CONTENT) == 0) {
    throw Refusal(refusals::kNoWorkbook, "is no .xls workbook");
  }

  Report report;
  const Held<GOCmdContext> context = NewContext(report);
  const Held<GOIOContext> io(go_io_context_new(context.get()));
  gsf_input_seek(input.get(), 0, G_SEEK_SET);
  view_.reset(workbook_view_new_from_input(input.get(), nullptr, opener, io.get(), nullptr));
  if (report.wanted_password) throw Refusal(refusals::kNoWorkbook, "is protected by a password");
  if (view_ == nullptr || workbook_sheet_count(Book()) == 0) {
    go_io_error_display(io.get());
    const std::string tail = report.errors.empty() ? std::string() : ": " + report.errors;
    throw Refusal(refusals::kNoWorkbook, "is damaged" + tail);
  }
}

}  // namespace talvex::sheet
