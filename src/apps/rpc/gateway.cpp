#include "apps/rpc/gateway.h"

#include <csignal>
#include <istream>
#include <new>
#include <ostream>
#include <streambuf>
#include <string>

#include "apps/rpc/session.h"
#include "platform/environment.h"

namespace talvex::apps::rpc {

namespace {

enum class Reading { Line, TooLong, End };

// Adds a character, as long as there is memory for it.
bool Append(std::string& line, char c) noexcept {
  try {
    line += c;
    return true;
  } catch (const std::bad_alloc&) {
    line = std::string();
    return false;
  }
}

// Reads up to the end of a line; one that is too long is read too, but not kept.
Reading ReadLine(std::streambuf& in, std::size_t longest, std::string& line) {
  using Traits = std::streambuf::traits_type;
  bool any = false;
  bool fits = true;
  line.clear();
  for (auto c = in.sbumpc(); c != Traits::to_int_type('\n'); c = in.sbumpc()) {
    if (c == Traits::eof()) {
      if (!any) return Reading::End;
      break;
    }
    any = true;
    fits = fits && line.size() < longest && Append(line, Traits::to_char_type(c));
  }
  return fits ? Reading::Line : Reading::TooLong;
}

bool IsBlank(const std::string& line) { return line.find_first_not_of(" \t\r") == std::string::npos; }

}  // namespace

bool Serve(std::istream& in, std::ostream& out, const Handler& handler, std::size_t longest) {
  std::string line;
  while (out) {
    const Reading reading = ReadLine(*in.rdbuf(), longest, line);
    if (reading == Reading::End) return true;
    if (reading == Reading::Line && IsBlank(line)) continue;
    const std::string answer = reading == Reading::Line
                                   ? AnswerMessage(line, handler)
                                   : AnswerUnreadable("a line of more than " + std::to_string(longest) +
                                                      " bytes, or than memory holds");
    if (!answer.empty()) out << answer << '\n' << std::flush;
  }
  return false;
}

}  // namespace talvex::apps::rpc

namespace talvex::apps {

int RunGateway(std::istream& in, std::ostream& out, const host::Host& host) {
  constexpr int kFailed = 3;
  std::signal(SIGPIPE, SIG_IGN);
  const platform::Environment::ForThread environment(host.Environment());
  rpc::Session session(host.Transactions());
  const rpc::Handler handler = [&session](const std::string& method, const rpc::Json& params) {
    return session.Run(method, params);
  };
  return rpc::Serve(in, out, handler) ? 0 : kFailed;
}

}  // namespace talvex::apps
