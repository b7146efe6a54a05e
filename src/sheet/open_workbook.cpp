#include "sheet/open_workbook.h"

#include <fcntl.h>
#include <gsf/gsf-infile-msole.h>
#include <gsf/gsf-infile.h>
#include <gsf/gsf-input-memory.h>
#include <gsf/gsf-outfile-msole.h>
#include <gsf/gsf-output-memory.h>
#include <gsf/gsf-structured-blob.h>
#include <sys/stat.h>
#include <unistd.h>

#include <goffice/app/file.h>
#include <goffice/app/io-context.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <utility>
#include <vector>

#include "adapters/spreadsheet/message/messages.h"
#include "sheet/refusal.h"

namespace talvex::sheet {

namespace {

namespace refusals = adapters::spreadsheet::message::refusals;
using adapters::spreadsheet::message::kLargestFile;

class Descriptor {
 public:
  // Without the flag, opening a pipe would wait for somebody who writes to it.
  explicit Descriptor(const std::string& path)
      : handle_(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)) {
    if (handle_ >= 0) return;
    const bool missing = errno == ENOENT || errno == ENOTDIR;
    throw Refusal(missing ? refusals::kMissing : refusals::kAccess, std::strerror(errno));
  }
  ~Descriptor() { close(handle_); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  [[nodiscard]] int Handle() const noexcept { return handle_; }

 private:
  int handle_;
};

// The size of an ordinary file that is neither empty nor too large.
std::size_t UsableSize(int handle) {
  struct stat found {};
  if (fstat(handle, &found) != 0) throw Refusal(refusals::kAccess, std::strerror(errno));
  if (S_ISDIR(found.st_mode)) throw Refusal(refusals::kAccess, "it is a directory");
  if (!S_ISREG(found.st_mode)) throw Refusal(refusals::kAccess, "it is no ordinary file");
  if (found.st_size == 0) throw Refusal(refusals::kNoWorkbook, "is empty");
  if (found.st_size > kLargestFile) throw Refusal(refusals::kTooLarge, "is larger than 64 MB");
  return static_cast<std::size_t>(found.st_size);
}

// The file in memory, as far as it reached when it was opened.
Held<GsfInput> ReadFile(const std::string& path) {
  const Descriptor file(path);
  std::vector<guint8> content(UsableSize(file.Handle()));
  std::size_t done = 0;
  while (done < content.size()) {
    const ssize_t count = read(file.Handle(), content.data() + done, content.size() - done);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw Refusal(refusals::kAccess, std::strerror(errno));
    if (count == 0) break;
    done += static_cast<std::size_t>(count);
  }
  return Held<GsfInput>(gsf_input_memory_new_clone(content.data(), static_cast<gsf_off_t>(done)));
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
Held<GsfInput> InMemory(Held<GsfInput> file) {
  return IsContainer(file.get()) ? InOnePiece(file.get()) : std::move(file);
}

}  // namespace

OpenWorkbook::OpenWorkbook(const std::string& path) {
  const Held<GsfInput> input = InMemory(ReadFile(path));
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
