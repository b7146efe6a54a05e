#include "apps/rpc/protocol.h"

#include "apps/rpc/values.h"
#include "automation/error.h"

namespace talvex::apps::rpc {

namespace {

constexpr int kParseError = -32700;
constexpr int kInvalidRequest = -32600;
constexpr int kMethodNotFound = -32601;
constexpr int kInvalidParams = -32602;
constexpr int kComponentError = -32000;

Json ErrorObject(int code, std::string_view message) { return {{"code", code}, {"message", message}}; }

Json ComponentError(const automation::ErrorState& state) {
  Json error = ErrorObject(kComponentError, state.description);
  error["data"] = {{"number", state.number},
                   {"source", state.source},
                   {"description", state.description},
                   {"helpFile", state.help_file},
                   {"helpContext", state.help_context}};
  return error;
}

// The error object for the exception being handled.
Json CurrentError() {
  try {
    throw;
  } catch (const MethodNotFound& error) {
    return ErrorObject(kMethodNotFound, std::string("Method not found: ") + error.what());
  } catch (const InvalidParams& error) {
    return ErrorObject(kInvalidParams, std::string("Invalid params: ") + error.what());
  } catch (...) {
    return ComponentError(automation::CurrentExceptionState());
  }
}

std::string AnswerLine(std::string_view kind, Json content, const Json& id) {
  return JsonLine({{"jsonrpc", "2.0"}, {kind, std::move(content)}, {"id", id}});
}

// A member of a message; null when there is none of that name, or the message is no object.
const Json& MemberOf(const Json& message, const char* name) {
  static const Json kNone;
  const auto found = message.find(name);
  return found == message.end() ? kNone : *found;
}

bool IsId(const Json& id) { return id.is_string() || id.is_number() || id.is_null(); }

// What makes the message no request; the empty text when it is one.
std::string_view FaultOf(const Json& message) {
  if (!message.is_object()) return "a request is an object";
  if (MemberOf(message, "jsonrpc") != "2.0") return R"("jsonrpc" must be "2.0")";
  if (!MemberOf(message, "method").is_string()) return "\"method\" must be a text";
  if (message.contains("params") && !message["params"].is_structured()) {
    return "\"params\" must be an object or an array";
  }
  if (!IsId(MemberOf(message, "id"))) return "\"id\" must be a text, a number or null";
  return {};
}

std::string AnswerInvalid(std::string_view fault, const Json& id) {
  return AnswerLine("error", ErrorObject(kInvalidRequest, "Invalid Request: " + std::string(fault)), id);
}

std::string AnswerRequest(const Json& request, const Handler& handler) {
  static const Json kNoParams = Json::object();
  // An id that is none cannot be repeated: null stands for it.
  const Json id = IsId(MemberOf(request, "id")) ? MemberOf(request, "id") : Json();
  const std::string_view fault = FaultOf(request);
  if (!fault.empty()) return AnswerInvalid(fault, id);

  const Json& params = request.contains("params") ? request["params"] : kNoParams;
  std::string answer;
  try {
    answer = AnswerLine("result", handler(request["method"].get_ref<const std::string&>(), params), id);
  } catch (...) {
    answer = AnswerLine("error", CurrentError(), id);
  }
  return request.contains("id") ? answer : std::string();
}

std::string AnswerBatch(const Json& batch, const Handler& handler) {
  if (batch.empty()) return AnswerInvalid("a batch holds a request at least", nullptr);
  std::string answers;
  for (const Json& request : batch) {
    const std::string answer = AnswerRequest(request, handler);
    if (answer.empty()) continue;
    answers += answers.empty() ? '[' : ',';
    answers += answer;
  }
  return answers.empty() ? answers : answers + ']';
}

}  // namespace

std::string AnswerMessage(std::string_view message, const Handler& handler) {
  try {
    const Json json = ParseJson(message);
    return json.is_array() ? AnswerBatch(json, handler) : AnswerRequest(json, handler);
  } catch (const JsonError& error) {
    return AnswerUnreadable(error.what());
  } catch (...) {
    // No memory for so large a message or answer: which request it was for can no longer be said.
    return AnswerLine("error", CurrentError(), nullptr);
  }
}

std::string AnswerUnreadable(std::string_view reason) {
  return AnswerLine("error", ErrorObject(kParseError, "Parse error: " + std::string(reason)), nullptr);
}

}  // namespace talvex::apps::rpc
