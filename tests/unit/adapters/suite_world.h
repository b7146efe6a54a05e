// The world that the suite's services run in under test: files in memory, a clock that stands still, a folder
// on disk for what other programs must read.
#pragma once

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "automation/error.h"
#include "platform/environment.h"
#include "support/error_of.h"
#include "support/temporary_folder.h"

namespace talvex::suite_test {

using test::ErrorOf;
using test::TemporaryFolder;

inline constexpr std::string_view kDirectory = "/inst";

// Keeps files in memory, as the contract of Files says. `before` sees every call first and may raise in its
// place.
class MemoryFiles final : public platform::Files {
 public:
  std::map<std::string, std::string> content;
  std::map<std::string, int> version;
  std::function<void(std::string_view call, const std::string& path)> before = [](std::string_view,
                                                                                  const std::string&) {};
  mutable std::map<std::string, int, std::less<>> calls;

  [[nodiscard]] bool Exists(const std::string& path) const override {
    Begin("Exists", path);
    return content.contains(path);
  }
  [[nodiscard]] std::string Read(const std::string& path) const override {
    Begin("Read", path);
    const auto found = content.find(path);
    if (found == content.end()) Raise(automation::error_number::kFileNotFound, path);
    return found->second;
  }
  [[nodiscard]] std::optional<std::string> Version(const std::string& path) const override {
    Begin("Version", path);
    if (!content.contains(path)) return std::nullopt;
    const auto found = version.find(path);
    return std::to_string(found == version.end() ? 0 : found->second);
  }
  void WriteNew(const std::string& path, std::string_view text) override {
    Begin("WriteNew", path);
    if (!content.emplace(path, text).second) Raise(automation::error_number::kFileAlreadyExists, path);
  }
  void Replace(const std::string& path, std::string_view text) override {
    Begin("Replace", path);
    content[path] = text;
  }
  void Append(const std::string& path, std::string_view text) override {
    Begin("Append", path);
    content[path] += text;
  }
  void Rename(const std::string& from, const std::string& to) override {
    Begin("Rename", from);
    if (content.contains(to)) Raise(automation::error_number::kFileAlreadyExists, to);
    auto node = content.extract(from);
    if (node.empty()) Raise(automation::error_number::kFileNotFound, from);
    node.key() = to;
    content.insert(std::move(node));
  }
  void Remove(const std::string& path) override {
    Begin("Remove", path);
    content.erase(path);
  }
  void MakeFolder(const std::string& path) override { Begin("MakeFolder", path); }

  // Changes a file as another program would.
  void Change(const std::string& path, std::string text) {
    content[path] = std::move(text);
    ++version[path];
  }

  // The names of the files in a folder, in order.
  [[nodiscard]] std::vector<std::string> In(const std::string& folder) const {
    std::vector<std::string> names;
    for (const auto& [path, text] : content) {
      if (path.starts_with(folder + "/")) names.push_back(path.substr(folder.size() + 1));
    }
    return names;
  }

 private:
  void Begin(std::string_view call, const std::string& path) const {
    ++calls[std::string(call)];
    before(call, path);
  }
  [[noreturn]] static void Raise(std::int32_t number, const std::string& path) {
    throw automation::Error(number, "Test.Files", "Failure at " + path);
  }
};

// Makes one kind of call fail with "no access".
inline auto Failing(std::string_view failing_call) {
  return [failing_call](std::string_view call, const std::string& path) {
    if (call != failing_call) return;
    throw automation::Error(automation::error_number::kFileAccess, "Test.Files", "No access to " + path);
  };
}

// What a Python program writes as JSON when it is given an input file; an empty object when it fails.
inline nlohmann::json Python(const std::string& program, std::string_view input) {
  const TemporaryFolder folder;
  const std::string command =
      "python3 '" + folder.Write("program.py", program) + "' '" + folder.Write("input", input) + "'";
  FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return nlohmann::json::object();
  std::string output;
  std::array<char, 4096> buffer{};
  for (std::size_t got = 0; (got = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
    output.append(buffer.data(), got);
  }
  const int status = pclose(pipe);
  EXPECT_EQ(status, 0) << output;
  return status == 0 ? nlohmann::json::parse(output) : nlohmann::json::object();
}

// The parts of a mail as Python's email package understands them. Names are taken from the raw headers: its
// newer parser adds blanks where a name is folded between two encoded words.
inline nlohmann::json ReadMail(std::string_view text) {
  return Python(R"(
import email, email.header, email.policy, email.utils, json, sys
text = open(sys.argv[1], "rb").read()
message = email.message_from_bytes(text, policy=email.policy.default)
defects = [repr(d) for d in message.defects]
for value in message.values():
    defects += [repr(d) for d in value.defects]
raw = email.message_from_bytes(text)
decoded = lambda name: str(email.header.make_header(email.header.decode_header(name)))
people = lambda header: [{"name": decoded(name), "address": address}
                         for name, address in email.utils.getaddresses(raw.get_all(header))]
print(json.dumps({
    "headers": message.keys(), "defects": defects, "subject": message["Subject"], "date": message["Date"],
    "from": people("From"), "to": people("To"), "id": message["Message-ID"], "type": message["Content-Type"],
    "body": message.get_content()}))
)",
                text);
}

}  // namespace talvex::suite_test
