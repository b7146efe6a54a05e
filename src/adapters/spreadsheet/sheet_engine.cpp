#include "adapters/spreadsheet/sheet_engine.h"

#include <csignal>
#include <cstring>
#include <exception>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

#include "adapters/spreadsheet/message/messages.h"
#include "adapters/spreadsheet/translation.h"
#include "automation/error.h"
#include "platform/files.h"

namespace talvex::adapters::spreadsheet {

namespace {

using automation::Error;
using nlohmann::json;
namespace number = automation::error_number;
namespace refusals = message::refusals;

constexpr std::string_view kSource = "Talvex.Platform.Spreadsheet";

[[noreturn]] void Raise(std::int32_t error, const std::string& path, const std::string& why) {
  throw Error(error, kSource, "The workbook " + path + " " + why);
}

// Raises for every ending but a program that said all it had to say.
void RequireAnswer(const Run& run, const std::string& path) {
  if (run.ending == Run::Ending::NotStarted) {
    throw Error(
        number::kInternalError, kSource,
        std::string("Internal error: talvex-sheet cannot be started (") + std::strerror(run.code) + ")");
  }
  if (run.ending == Run::Ending::TimedOut) {
    Raise(number::kOutOfMemory, path, "took too long, and the work was ended");
  }
  if (run.ending == Run::Ending::Exited && run.code == message::kOutOfMemory) {
    Raise(number::kOutOfMemory, path, "needs more memory than is allowed");
  }
  if (run.ending == Run::Ending::Exited) {
    if (run.code == 0) return;
    throw Error(number::kInternalError, kSource,
                "Internal error: talvex-sheet ended with status " + std::to_string(run.code));
  }
  switch (run.code) {
    case SIGXCPU:
    case SIGKILL:  // What the system sends when the signal before did not help.
      Raise(number::kOutOfMemory, path, "needs more processor time than is allowed");
    case SIGXFSZ:
      Raise(number::kOutOfMemory, path, "gives more than is allowed");
    default:
      Raise(number::kInvalidFileFormat, path,
            "is damaged: reading it ended with signal " + std::to_string(run.code));
  }
}

[[noreturn]] void RaiseRefusal(const json& answer, const std::string& path) {
  const auto kind = answer.at("refusal").get<std::string>();
  const auto text = answer.at("text").get<std::string>();
  if (kind == refusals::kMissing) throw Error(number::kFileNotFound, kSource, "File not found: " + path);
  if (kind == refusals::kAccess) {
    throw Error(number::kFileAccess, kSource, "Path/File access error: " + path + " (" + text + ")");
  }
  if (kind == refusals::kNoWorkbook) Raise(number::kInvalidFileFormat, path, text);
  if (kind == refusals::kTooLarge) Raise(number::kOutOfMemory, path, text);
  if (kind == refusals::kEdit) throw Error(number::kInvalidCall, kSource, text);
  throw Error(number::kInternalError, kSource, "Internal error: talvex-sheet says: " + text);
}

// The path as the system reads it. A NUL would end it early and name another file.
std::string SystemPath(const std::string& path) {
  if (path.find('\0') != std::string::npos) {
    throw Error(number::kFileAccess, kSource, "Path/File access error: a path holds a NUL character");
  }
  return platform::SystemPath(path);
}

// Makes a value of a message, as the library does, but ends at nesting that no answer has: the library
// follows it with the stack, which a message of a million brackets would use up.
class ShallowParser : public nlohmann::detail::json_sax_dom_parser<json> {
 public:
  using json_sax_dom_parser::json_sax_dom_parser;

  bool start_array(std::size_t count) { return Enter() && json_sax_dom_parser::start_array(count); }
  bool start_object(std::size_t count) { return Enter() && json_sax_dom_parser::start_object(count); }
  bool end_array() { return Leave() && json_sax_dom_parser::end_array(); }
  bool end_object() { return Leave() && json_sax_dom_parser::end_object(); }

 private:
  static constexpr int kDeepest = 8;

  bool Enter() { return ++depth_ <= kDeepest; }
  bool Leave() { return --depth_ >= 0; }

  int depth_ = 0;
};

json Parsed(const std::string& message) {
  json value;
  ShallowParser parser(value);
  if (!json::sax_parse(message, &parser, json::input_format_t::cbor)) {
    throw std::runtime_error("it is nested too deeply");
  }
  return value;
}

// Takes the answer to pieces with `read`; anything but one whole message of the layout is an ordinary error.
template <class Read>
auto Understood(const Run& run, const std::string& path, Read read) {
  RequireAnswer(run, path);
  try {
    json answer = Parsed(run.output);
    if (answer.contains("refusal")) RaiseRefusal(answer, path);
    return read(answer);
  } catch (const Error&) {
    throw;
  } catch (const std::exception& broken) {
    throw Error(
        number::kInternalError, kSource,
        "Internal error: the answer of talvex-sheet about " + path + " cannot be read: " + broken.what());
  }
}

}  // namespace

SheetEngine::SheetEngine(std::string program, Limits limits)
    : program_(std::move(program)), limits_(limits) {}

platform::spreadsheet::Content SheetEngine::Read(const std::string& path) const {
  const Run run = RunProgram(program_, {"load", SystemPath(path)}, {}, limits_);
  return Understood(run, path, [](const json& answer) { return ReadContent(answer); });
}

platform::spreadsheet::Rewritten SheetEngine::Rewrite(
    const std::string& path, const std::vector<platform::spreadsheet::Edit>& edits) const {
  std::string asked;
  json::to_cbor(WriteEdits(SystemPath(path), edits), asked);
  const Run run = RunProgram(program_, {"save"}, asked, limits_);
  return Understood(run, path, [](json& answer) { return ReadRewritten(answer); });
}

}  // namespace talvex::adapters::spreadsheet
