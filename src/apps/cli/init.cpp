#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

#include <nlohmann/json.hpp>

#include "apps/cli/commands.h"
#include "apps/cli/layout.h"
#include "automation/text.h"
#include "host/installer.h"

namespace talvex::apps {

namespace {

// No connection string is longer by far.
constexpr std::size_t kLongest = 65536;

// Standard input to its end, or as much of it as is surely too long.
std::string StandardInput() {
  std::string text;
  std::array<char, 4096> block{};
  while (text.size() <= kLongest) {
    const ssize_t count = read(STDIN_FILENO, block.data(), block.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw Failure(std::string("cannot read standard input: ") + std::strerror(errno));
    if (count == 0) break;
    text.append(block.data(), static_cast<std::size_t>(count));
  }
  return text;
}

// The connection string that the arguments name; empty for the embedded database. What is wrong with one that
// was read is told without quoting it, for it may hold a password.
std::string DatabaseOf(const InitArguments& arguments) {
  if (arguments.database && automation::Trimmed(*arguments.database).empty())
    throw UsageError(
        "--database: the connection string is empty; leave the option out for an embedded database");
  if (!arguments.database_file) return arguments.database.value_or("");
  const std::string& file = *arguments.database_file;
  if (file.empty()) throw UsageError("--database-file: the name of the file is empty");
  if (file.find('=') != std::string::npos && file.find(';') != std::string::npos)
    throw UsageError(
        "--database-file takes the name of a file; --database takes the connection string itself");
  const bool from_input = file == "-";
  const std::string content = from_input ? StandardInput() : host::ReadFile(file);
  const std::string where = from_input ? "standard input" : Shortened(file);
  std::string_view text = content;
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.remove_suffix(1);
  text = automation::Trimmed(text);
  if (text.empty()) throw UsageError("--database-file: " + where + " holds no connection string");
  if (text.size() > kLongest) throw UsageError("--database-file: what " + where + " holds is too long");
  if (text.find_first_of(std::string_view("\r\n\0", 3)) != std::string_view::npos)
    throw UsageError("--database-file: " + where + " must hold the connection string alone, on one line");
  return std::string(text);
}

}  // namespace

ExitStatus RunInit(Session& session, const InitArguments& arguments) {
  host::MakeInstallation({arguments.directory, arguments.sample, DatabaseOf(arguments)});
  if (session.Options().json) {
    session.Print({{"directory", arguments.directory}, {"sample", arguments.sample}});
    return ExitStatus::Done;
  }
  const std::string directory = Printable(arguments.directory);
  session.Out() << "Made an installation" << (arguments.sample ? " with a sample company" : "") << " in "
                << directory << ".\nTo see its budgets: talvex tree --config " << directory << "\n";
  return ExitStatus::Done;
}

}  // namespace talvex::apps
