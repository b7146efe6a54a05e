#include "adapters/spreadsheet/sheet_engine.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "adapters/spreadsheet/message/cells.h"
#include "adapters/spreadsheet/message/messages.h"
#include "support/error_of.h"
#include "support/temporary_folder.h"

namespace talvex::adapters::spreadsheet {
namespace {

using automation::Date;
using automation::Variant;
using nlohmann::json;
using test::ErrorOf;
namespace book = platform::spreadsheet;
namespace number = automation::error_number;

constexpr std::int64_t kDay = 1773532800;  // 15 March 2026.

// Programs that stand in for talvex-sheet are shell scripts.
class SheetEngineTest : public ::testing::Test {
 protected:
  std::string Script(const std::string& lines) const {
    const std::string path = folder_.Write("program", "#!/bin/sh\n" + lines + "\n");
    chmod(path.c_str(), 0755);
    return path;
  }
  // A program that answers with those bytes.
  std::string Answering(const std::string& bytes) const {
    return Script("cat " + folder_.Write("answer", bytes));
  }
  std::string Answering(const json& answer) const {
    std::string bytes;
    json::to_cbor(answer, bytes);
    return Answering(bytes);
  }
  automation::ErrorState Refused(const std::string& program, Limits limits = {}) const {
    const SheetEngine engine(program, limits);
    return ErrorOf([&] { static_cast<void>(engine.Read("some.xls")); });
  }

  static json Cells() {
    message::CellWriter cells;
    cells.Add({1, 1, 1.5, ""});
    cells.Add({1, 2, message::Moment{kDay}, ""});
    cells.Add({2, 1, std::string("=text"), ""});
    cells.Add({2, 256, true, "=1=1"});
    cells.Add({65536, 256, std::monostate{}, "=A1"});
    return cells.Take();
  }
  // A column of a message.
  template <class T>
  static json Packed(const std::vector<T>& values) {
    std::vector<std::uint8_t> bytes(values.size() * sizeof(T));
    std::memcpy(bytes.data(), values.data(), bytes.size());
    return json::binary(std::move(bytes));
  }
  static json PackedTexts(const std::vector<std::string>& texts) {
    std::vector<std::uint8_t> bytes;
    for (const std::string& text : texts) {
      for (const std::size_t byte : {text.size(), std::size_t{0}, std::size_t{0}, std::size_t{0}})
        bytes.push_back(static_cast<std::uint8_t>(byte));
      bytes.insert(bytes.end(), text.begin(), text.end());
    }
    return json::binary(std::move(bytes));
  }
  static json Content(json cells) {
    return {
        {"sheets", json::array({{{"name", "Ünï"}, {"cells", std::move(cells)}}})},
        {"properties", json::array({{{"name", "B2B-SHOW"}, {"value", {"text", "1"}}, {"linked", true}}})}};
  }

  test::TemporaryFolder folder_;
};

TEST_F(SheetEngineTest, ReadsAWholeWorkbook) {
  const SheetEngine engine(Answering(Content(Cells())));
  const auto content = engine.Read("some.xls");
  ASSERT_EQ(content.sheets.size(), 1U);
  EXPECT_EQ(content.sheets[0].name, "Ünï");
  const book::Cells expected{{{1, 1}, {1.5, ""}},
                             {{1, 2}, {Date::Civil(2026, 3, 15), ""}},
                             {{2, 1}, {"=text", ""}},
                             {{2, 256}, {true, "=1=1"}},
                             {{65536, 256}, {{}, "=A1"}}};
  EXPECT_EQ(content.sheets[0].cells, expected);
  ASSERT_EQ(content.properties.size(), 1U);
  EXPECT_EQ(content.properties[0].value, Variant("1"));
  EXPECT_TRUE(content.properties[0].linked);
}

TEST_F(SheetEngineTest, TellsTheProgramWhatToDo) {
  const std::string answer = folder_.Path("answer");
  std::string bytes;
  json::to_cbor(
      {{"file", json::binary({1, 2, 3})}, {"formulas", json::array({{{"name", "S"}, {"cells", Cells()}}})}},
      bytes);
  folder_.Write("answer", bytes);
  const SheetEngine engine(Script("echo \"$@\" > " + folder_.Path("words") + "; cat > " +
                                  folder_.Path("asked") + "; cat " + answer));
  const auto written = engine.Rewrite(
      "folder\\base.xls",
      {book::edit::SetCells{"S", {{{3, 4}, {Date::Civil(2026, 3, 15), ""}}}}, book::edit::AddSheet{"New"},
       book::edit::RenameSheet{"S", "T"}, book::edit::InsertRows{"T", 5, 2},
       book::edit::CopyRows{"T", 1, 1, 9, true}, book::edit::SetProperty{"Yes", true}});
  EXPECT_EQ(written.file, std::string("\1\2\3"));
  ASSERT_EQ(written.formulas.size(), 1U);
  EXPECT_EQ(written.formulas[0].cells.Count(), 5U);

  std::ifstream words(folder_.Path("words"));
  std::ifstream asked(folder_.Path("asked"), std::ios::binary);
  std::string line;
  std::getline(words, line);
  EXPECT_EQ(line, "save");
  const json message = json::from_cbor(asked);
  EXPECT_EQ(message.at("base"), "folder/base.xls");
  const json expected = json::array(
      {{{"edit", "cells"},
        {"sheet", "S"},
        {"cells",
         {{"at", Packed<std::uint32_t>({2 * 256 + 3})},
          {"kinds", Packed<std::uint8_t>({3})},
          {"numbers", Packed<double>({kDay})},
          {"texts", json::binary({})}}}},
       {{"edit", "add"}, {"name", "New"}},
       {{"edit", "rename"}, {"sheet", "S"}, {"name", "T"}},
       {{"edit", "insert"}, {"sheet", "T"}, {"row", 5}, {"count", 2}},
       {{"edit", "copy"}, {"sheet", "T"}, {"row", 1}, {"count", 1}, {"target", 9}, {"only_styles", true}},
       {{"edit", "property"}, {"name", "Yes"}, {"value", {"boolean", true}}}});
  EXPECT_EQ(message.at("edits"), expected);
}

TEST_F(SheetEngineTest, RefusalsAreOrdinaryErrors) {
  const struct {
    std::string kind;
    std::int32_t error;
    std::string text;
  } rows[] = {
      {"missing", number::kFileNotFound, "File not found: some.xls"},
      {"access", number::kFileAccess, "Path/File access error: some.xls (why)"},
      {"format", number::kInvalidFileFormat, "The workbook some.xls why"},
      {"large", number::kOutOfMemory, "The workbook some.xls why"},
      {"edit", number::kInvalidCall, "why"},
      {"internal", number::kInternalError, "Internal error: talvex-sheet says: why"},
      {"new kind", number::kInternalError, "Internal error: talvex-sheet says: why"},
  };
  for (const auto& row : rows) {
    const auto error = Refused(Answering(json{{"refusal", row.kind}, {"text", "why"}}));
    EXPECT_EQ(error.number, row.error) << row.kind;
    EXPECT_EQ(error.description, row.text);
  }
}

TEST_F(SheetEngineTest, ProgramsThatEndOtherwiseAreOrdinaryErrors) {
  Limits hasty;
  hasty.wall = std::chrono::milliseconds(300);
  Limits lazy;
  lazy.processor = std::chrono::seconds(1);
  Limits brief;
  brief.output = 1000;
  const struct {
    std::string lines;
    Limits limits;
    std::int32_t error;
    std::string words;
  } rows[] = {
      {"kill -SEGV $$", {}, number::kInvalidFileFormat, "is damaged: reading it ended with signal 11"},
      {"exit 70", {}, number::kOutOfMemory, "needs more memory than is allowed"},
      {"exit 3", {}, number::kInternalError, "talvex-sheet ended with status 3"},
      {"exec sleep 100", hasty, number::kOutOfMemory, "took too long"},
      {"sleep 100 & sleep 100", hasty, number::kOutOfMemory, "took too long"},
      {"while :; do :; done", lazy, number::kOutOfMemory, "needs more processor time than is allowed"},
      {"exec cat /dev/zero", brief, number::kOutOfMemory, "gives more than is allowed"},
      {"exit 127", {}, number::kInternalError, "cannot be started"},
      {":", {}, number::kInternalError, "cannot be read"},
  };
  for (const auto& row : rows) {
    const auto error = Refused(Script(row.lines), row.limits);
    EXPECT_EQ(error.number, row.error) << row.lines << ": " << error.description;
    EXPECT_NE(error.description.find(row.words), std::string::npos) << error.description;
  }
  EXPECT_EQ(Refused(folder_.Path("missing")).number, number::kInternalError);
}

TEST_F(SheetEngineTest, BrokenMessagesAreOrdinaryErrors) {
  const auto with = [&](const char* column, const json& value) {
    json cells = Cells();
    cells[column] = value;
    return Content(std::move(cells));
  };
  const json rows[] = {
      json(5),
      json::object(),
      json::array({1, 2}),
      {{"sheets", 7}, {"properties", json::array()}},
      with("at", Packed<std::uint32_t>({1, 0, 2, 3, 4})),
      with("at", Packed<std::uint32_t>({0, 1, 2, 2, 4})),
      with("at", Packed<std::uint32_t>({0, 1, 2, 3, 256 * 65536})),
      with("at", Packed<std::uint32_t>({0, 1})),
      with("at", json::binary({0, 0, 0, 0, 1, 0, 0, 0, 2})),
      with("at", {0, 1, 2, 3, 4}),
      with("kinds", Packed<std::uint8_t>({2, 3, 4, 17})),
      with("kinds", Packed<std::uint8_t>({2, 3, 4, 17, 5})),
      with("kinds", Packed<std::uint8_t>({2, 3, 4, 17, 32})),
      with("numbers", Packed<double>({1.5, 0})),
      with("numbers", Packed<double>({1.5, 0, 1, 2})),
      with("numbers", Packed<double>({1.5, std::numeric_limits<double>::quiet_NaN(), 1})),
      with("numbers", Packed<double>({1.5, 1e300, 1})),
      with("texts", PackedTexts({"a", "=1"})),
      with("texts", PackedTexts({"a", "=1", "=2", "b"})),
      with("texts", PackedTexts({"a", "=1", "\xff"})),
      with("texts", json::binary({1, 0, 0, 0, 'a', 1, 0, 0})),
      with("texts", json::binary({1, 0, 0, 0, 'a', 255, 255, 255, 255, 'b'})),
      with("texts", {"a", "=1", "=2"}),
      Content("none"),
  };
  for (const auto& row : rows) {
    const auto error = Refused(Answering(row));
    EXPECT_EQ(error.number, number::kInternalError) << row.dump();
    EXPECT_NE(error.description.find("cannot be read"), std::string::npos) << error.description;
  }
  std::string whole;
  json::to_cbor(Content(Cells()), whole);
  for (std::size_t size = 0; size < whole.size(); size += 7) {
    EXPECT_EQ(Refused(Answering(whole.substr(0, size))).number, number::kInternalError) << size;
  }
  EXPECT_EQ(Refused(Answering(whole + "more")).number, number::kInternalError);
  EXPECT_EQ(Refused(Answering(std::string("\xa2\x66sheets\x81\xa2\x64name\x61\xff", 17))).number,
            number::kInternalError);
}

TEST_F(SheetEngineTest, AMessageOfNothingButBracketsIsAnOrdinaryError) {
  const auto error = Refused(Answering(std::string(20'000'000, '\x81')));
  EXPECT_EQ(error.number, number::kInternalError);
  EXPECT_NE(error.description.find("nested too deeply"), std::string::npos) << error.description;
}

TEST_F(SheetEngineTest, TheProgramGetsNothingButItsThreeDescriptors) {
  const int open_here = dup(STDIN_FILENO);  // Without the mark that closes it when a program starts.
  static_cast<void>(Refused(Script("exec ls /proc/self/fd > " + folder_.Path("listed"))));
  close(open_here);
  std::ifstream listed(folder_.Path("listed"));
  const std::vector<std::string> names(std::istream_iterator<std::string>(listed), {});
  // The last is the folder that is being listed.
  EXPECT_EQ(names, (std::vector<std::string>{"0", "1", "2", "3"}));
  static_cast<void>(Refused(Script("exec env > " + folder_.Path("variables"))));
  std::ifstream variables(folder_.Path("variables"));
  const std::string all(std::istreambuf_iterator<char>(variables), {});
  EXPECT_EQ(all.find("HOME=/root"), std::string::npos);
  EXPECT_NE(all.find("LC_ALL=C.UTF-8"), std::string::npos);
}

bool IsAlive(pid_t process) { return kill(process, 0) == 0; }

// Waits for the number that a script writes to the file.
pid_t NumberIn(const std::string& path) {
  for (int round = 0; round < 500; ++round) {
    pid_t number_read = 0;
    if (std::ifstream(path) >> number_read) return number_read;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return 0;
}

bool EndsSoon(pid_t process) {
  for (int round = 0; round < 500 && IsAlive(process); ++round) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return !IsAlive(process);
}

TEST_F(SheetEngineTest, WhatTheProgramStartedIsEndedWithIt) {
  const std::string file = folder_.Path("number");
  static_cast<void>(Refused(Script("sleep 300 & echo $! > " + file)));
  const pid_t left = NumberIn(file);
  ASSERT_GT(left, 0);
  // Nobody is there to take its status but whoever adopts orphans here.
  waitpid(left, nullptr, WNOHANG);
  std::ifstream status("/proc/" + std::to_string(left) + "/stat");
  std::string word;
  status >> word >> word >> word;
  EXPECT_TRUE(word.empty() || word == "Z" || EndsSoon(left)) << word;
}

TEST_F(SheetEngineTest, TheProgramEndsWithWhoeverStartedIt) {
  const std::string file = folder_.Path("number");
  const std::string program = Script("echo $$ > " + file + "; exec sleep 300");
  const pid_t parent = fork();
  if (parent == 0) {
    static_cast<void>(Refused(program));
    _exit(0);
  }
  const pid_t child = NumberIn(file);
  ASSERT_GT(child, 0);
  EXPECT_TRUE(IsAlive(child));
  kill(parent, SIGKILL);
  waitpid(parent, nullptr, 0);
  std::ifstream status;
  std::string word = "S";
  for (int round = 0; round < 500 && !word.empty() && word != "Z"; ++round) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    status.close();
    status.clear();
    word.clear();
    status.open("/proc/" + std::to_string(child) + "/stat");
    status >> word >> word >> word;
  }
  EXPECT_TRUE(word.empty() || word == "Z") << word;
}

TEST_F(SheetEngineTest, ManyThreadsReadAtOnce) {
  const SheetEngine engine(Answering(Content(Cells())));
  std::vector<std::thread> threads;
  std::vector<std::size_t> read(6, 0);
  for (std::size_t index = 0; index < read.size(); ++index) {
    threads.emplace_back([&, index] {
      for (int round = 0; round < 5; ++round) read[index] += engine.Read("x.xls").sheets[0].cells.Count();
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(read, std::vector<std::size_t>(6, 25));
}

TEST_F(SheetEngineTest, APathWithANulIsRefused) {
  const SheetEngine engine(Answering(Content(Cells())));
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(engine.Read(std::string("a\0b", 3))); }).number,
            number::kFileAccess);
}

}  // namespace
}  // namespace talvex::adapters::spreadsheet
