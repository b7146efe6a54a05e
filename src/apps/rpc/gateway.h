// The gateway `talvex rpc`: the component's classes for any language that can write lines of JSON to a
// process.
#pragma once

#include <cstddef>
#include <iosfwd>

#include "apps/rpc/protocol.h"
#include "host/host.h"

namespace talvex::apps::rpc {

// The longest message that is read; a longer line is answered as an error.
inline constexpr std::size_t kLongestMessage = std::size_t{64} << 20U;

// Reads messages, one a line, until the input ends, and writes the answer to each as one line, flushed,
// before it reads the next. Lines of blanks are passed over; a line longer than `longest` bytes is answered
// as an error. Ends early when an answer cannot be written, and returns false then.
bool Serve(std::istream& in, std::ostream& out, const Handler& handler,
           std::size_t longest = kLongestMessage);

}  // namespace talvex::apps::rpc

namespace talvex::apps {

// Serves one client in the host's environment, on the calling thread, until its input ends; a transaction
// that is still open then is rolled back. Ignores the signal that a closed pipe raises, for the life of the
// process: a client that goes away must not cost it its orderly end. Returns the exit status: 0, or 3 when an
// answer could not be written.
int RunGateway(std::istream& in, std::ostream& out, const host::Host& host);

}  // namespace talvex::apps
