// JSON-RPC 2.0: what a message must look like, and what its answer looks like.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "apps/rpc/json.h"

namespace talvex::apps::rpc {

// There is no method of that name to call.
class MethodNotFound : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Runs a method with its parameters (an object or an array, an empty object when the message has none) and
// gives its result. Raises MethodNotFound, InvalidParams (values.h), or any exception that
// automation::CurrentExceptionState knows.
using Handler = std::function<Json(const std::string& method, const Json& params)>;

// The answer to a message, one line without its end, or the empty text when none is due: to a notification,
// and to a batch of nothing else. The messages of a batch run in order. Everything that goes wrong becomes an
// answer.
[[nodiscard]] std::string AnswerMessage(std::string_view message, const Handler& handler);

// The answer to something that is no JSON message at all.
[[nodiscard]] std::string AnswerUnreadable(std::string_view reason);

}  // namespace talvex::apps::rpc
