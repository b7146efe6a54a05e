#include "support/test_installation.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "automation/conversions.h"
#include "host/installer.h"
#include "nlohmann/json.hpp"
#include "platform/database/recordset.h"

namespace talvex::test {

namespace fs = std::filesystem;
using automation::Variant;

namespace {

// What python's email package, a reader that shares no code with the writer, makes of a mail.
constexpr const char* kMailReader =
    "import sys,json,email,email.policy\n"
    "m=email.message_from_binary_file(open(sys.argv[1],'rb'),policy=email.policy.default)\n"
    "b=m.get_payload(decode=True).decode(m.get_content_charset())\n"
    "print(json.dumps([str(m['From']),str(m['To']),str(m['Subject']),b]))\n";

std::string OutputOf(const std::string& command) {
  FILE* const pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) throw std::runtime_error("cannot run: " + command);
  std::string output;
  char buffer[4096];
  for (std::size_t n = 0; (n = ::fread(buffer, 1, sizeof buffer, pipe)) > 0;) output.append(buffer, n);
  if (::pclose(pipe) != 0) throw std::runtime_error("failed: " + command);
  return output;
}

Mail ReadMail(const fs::path& path) {
  const std::string output =
      OutputOf("python3 -c \"$(printf '%s' \"" + std::string(kMailReader) + "\")\" '" + path.string() + "'");
  const auto fields = nlohmann::json::parse(output);
  return {fields[0], fields[1], fields[2], fields[3]};
}

std::shared_ptr<const platform::Environment> WithClock(const platform::Environment& environment,
                                                       automation::Date now) {
  auto changed = std::make_shared<platform::Environment>(environment);
  changed->clock = std::make_shared<platform::FixedClock>(now);
  return changed;
}

}  // namespace

void OnOwnThread(const std::function<void()>& body) {
  std::exception_ptr failure;
  std::thread thread([&] {
    try {
      body();
    } catch (...) {
      failure = std::current_exception();
    }
  });
  thread.join();
  if (failure) std::rethrow_exception(failure);
}

TestInstallation::TestInstallation(bool with_sample, const std::string& now) {
  host::MakeInstallation({folder_.Path("site"), with_sample, store_.ConnectionText()});
  const auto moment = automation::Date::Parse(now);
  if (!TestStore::HasClockOfItsOwn()) {
    host_ = std::make_unique<host::Host>(host::Settings{folder_.Path("site"), moment});
    environment_ = std::make_unique<platform::Environment::ForThread>(host_->Environment());
    return;
  }
  store_.SetClock(moment.value());
  host_ = std::make_unique<host::Host>(host::Settings{folder_.Path("site"), std::nullopt});
  environment_ =
      std::make_unique<platform::Environment::ForThread>(WithClock(*host_->Environment(), moment.value()));
}

void TestInstallation::Sql(const std::string& statement) const {
  host_->Connect()->Execute(statement, nullptr, std::nullopt);
}

std::vector<std::string> TestInstallation::Rows(const std::string& query) const {
  const auto rows = host_->Connect()->Execute(query, nullptr, std::nullopt);
  std::vector<std::string> texts;
  for (; !rows->Eof(); rows->MoveNext()) {
    std::string text;
    for (std::size_t i = 0; i < rows->ColumnCount(); ++i)
      text += (i == 0 ? "" : " | ") + Shown(rows->Value(i));
    texts.push_back(std::move(text));
  }
  return texts;
}

std::string TestInstallation::Snapshot() const {
  std::string snapshot;
  for (const std::string& table : Rows(TestStore::TablesQuery())) {
    std::vector<std::string> rows = Rows("SELECT * FROM " + table);
    std::sort(rows.begin(), rows.end());
    snapshot.append(table).append("\n");
    for (const auto& row : rows) snapshot.append("  ").append(row).append("\n");
  }
  return snapshot;
}

std::vector<Mail> TestInstallation::Mails() const {
  std::vector<fs::path> paths;
  for (const auto& entry : fs::directory_iterator(Path("outbox"))) {
    if (entry.path().extension() == ".eml") paths.push_back(entry.path());
  }
  std::sort(paths.begin(), paths.end());
  std::vector<Mail> mails;
  std::transform(paths.begin(), paths.end(), std::back_inserter(mails), ReadMail);
  return mails;
}

std::vector<std::string> TestInstallation::LogLines() const {
  std::vector<std::string> lines;
  std::ifstream log(Path("log/errors.jsonl"));
  for (std::string line; std::getline(log, line);) lines.push_back(line);
  return lines;
}

}  // namespace talvex::test
