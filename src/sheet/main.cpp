// talvex-sheet: reads and writes .xls workbooks for the process that starts it, so that what a damaged file
// does to the library ends here.
//
// Whoever starts it sets the limits of memory, time and file size; it cages itself (cage.h) before it reads
// anything. It says all it has to say in one CBOR message on standard output: a workbook, or why there is
// none.

#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <new>
#include <nlohmann/json.hpp>
#include <string>

#include "adapters/spreadsheet/message/messages.h"
#include "sheet/cage.h"
#include "sheet/library.h"
#include "sheet/load.h"
#include "sheet/refusal.h"
#include "sheet/save.h"

namespace {

using nlohmann::json;
namespace message = talvex::adapters::spreadsheet::message;

constexpr int kUsage = 2;
constexpr int kCannotAnswer = 3;

json Refused(const char* kind, const std::string& text) { return {{"refusal", kind}, {"text", text}}; }

// Whole, as the library of messages is much quicker with memory than with a stream.
std::string StandardInput() {
  std::string input;
  std::array<char, 65536> block{};
  for (;;) {
    const std::size_t count = std::fread(block.data(), 1, block.size(), stdin);
    if (count == 0) return input;
    input.append(block.data(), count);
  }
}

json Answer(int count, char** words) {
  try {
    talvex::sheet::EnterCage();
    talvex::sheet::StartLibrary();
    if (count == 3) return talvex::sheet::Load(words[2]);
    return talvex::sheet::Save(json::from_cbor(StandardInput()));
  } catch (const talvex::sheet::Refusal& refusal) {
    return Refused(refusal.Kind(), refusal.what());
  } catch (const json::exception& broken) {
    return Refused(message::refusals::kInternal, broken.what());
  } catch (const std::runtime_error& broken) {
    return Refused(message::refusals::kInternal, broken.what());
  }
}

int Run(int count, char** words) {
  const bool load = count == 3 && std::strcmp(words[1], "load") == 0;
  const bool save = count == 2 && std::strcmp(words[1], "save") == 0;
  if (!load && !save) {
    std::fputs(
        "usage: talvex-sheet load FILE   a workbook as one CBOR message\n"
        "       talvex-sheet save        reads what to write as one CBOR message\n",
        stderr);
    return kUsage;
  }
  // The library prints some of its complaints about damaged files: the answer goes where it cannot get at.
  std::FILE* const out = fdopen(dup(STDOUT_FILENO), "wb");
  if (out == nullptr || std::freopen("/dev/null", "w", stdout) == nullptr) return kCannotAnswer;
  std::string answer;
  json::to_cbor(Answer(count, words), answer);
  const bool written = std::fwrite(answer.data(), 1, answer.size(), out) == answer.size();
  return written && std::fclose(out) == 0 ? 0 : kCannotAnswer;
}

}  // namespace

int main(int count, char** words) {
  try {
    // Nothing is taken down: the system does that faster, and a damaged workbook may not survive it.
    std::_Exit(Run(count, words));
  } catch (const std::bad_alloc&) {
    std::_Exit(message::kOutOfMemory);
  }
}
