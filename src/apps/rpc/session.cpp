#include "apps/rpc/session.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "apps/rpc/calls.h"
#include "apps/rpc/describe.h"
#include "apps/rpc/protocol.h"
#include "apps/rpc/values.h"
#include "automation/error.h"
#include "platform/environment.h"

namespace talvex::apps::rpc {

using automation::Error;
using automation::TransactionContext;
using platform::Environment;

namespace {

constexpr std::string_view kSource = "Talvex.Gateway";

[[noreturn]] void RaiseInvalidCall(std::string_view reason) {
  throw Error(automation::error_number::kInvalidCall, kSource,
              "Invalid procedure call: " + std::string(reason));
}

[[noreturn]] void RaiseNoObject(const Json& number) {
  throw InvalidParams("there is no object " + ShownJson(number));
}

}  // namespace

// The parameters of one method, by name. Reading one that must be there raises InvalidParams when it is not.
class Session::Params {
 public:
  // The names that a method knows; those it does not use are empty.
  using Names = std::array<std::string_view, 3>;

  // Raises InvalidParams for a name that the method does not know: misspelt, it would go unheard.
  Params(const Json& params, const Names& known) : params_(params) {
    // An empty array is how some clients send no parameters.
    if (!params.is_object() && !params.empty())
      throw InvalidParams("parameters are an object of names and values");
    for (const auto& [name, value] : params.items()) {
      if (name.empty() || std::find(known.begin(), known.end(), name) == known.end()) {
        throw InvalidParams("there is no parameter " + ShownJson(name));
      }
    }
  }

  // Null (the pointer) when it is not there.
  [[nodiscard]] const Json* Find(const char* name) const {
    const auto found = params_.find(name);
    return found == params_.end() ? nullptr : &*found;
  }

  [[nodiscard]] const Json& Any(const char* name) const {
    const Json* found = Find(name);
    if (found == nullptr) throw InvalidParams("the parameter \"" + std::string(name) + "\" is missing");
    return *found;
  }

  [[nodiscard]] const std::string& Text(const char* name) const {
    const Json& value = Any(name);
    if (!value.is_string())
      throw InvalidParams("\"" + std::string(name) + "\" is a text, not " + ShownJson(value));
    return value.get_ref<const std::string&>();
  }

  [[nodiscard]] std::int64_t Number(const char* name) const {
    const Json& value = Any(name);
    if (!value.is_number_integer()) {
      throw InvalidParams("\"" + std::string(name) + "\" is a whole number, not " + ShownJson(value));
    }
    return value.get<std::int64_t>();
  }

 private:
  const Json& params_;
};

Json Session::Run(const std::string& method, const Json& params) {
  struct Entry {
    std::string_view name;
    Json (Session::*run)(const Params& params);
    Params::Names params;
  };
  static constexpr std::array<Entry, 9> kMethods = {
      {{"create", &Session::Create, {"class"}},
       {"release", &Session::Release, {"object"}},
       {"invoke", &Session::Invoke, {"object", "method", "args"}},
       {"get", &Session::Get, {"object", "property"}},
       {"set", &Session::Set, {"object", "property", "value"}},
       {"describe", &Session::Describe, {"class"}},
       {"begin", &Session::Begin, {}},
       {"end", &Session::End, {}},
       {"rollback", &Session::Rollback, {}}}};
  for (const Entry& entry : kMethods) {
    if (entry.name == method) return (this->*entry.run)(Params(params, entry.params));
  }
  throw MethodNotFound(ShownJson(method));
}

automation::ObjectRef Session::ObjectOf(const Params& params) const {
  automation::ObjectRef object = objects_.Find(params.Number("object"));
  if (object == nullptr) RaiseNoObject(params.Any("object"));
  return object;
}

Json Session::Create(const Params& params) {
  const automation::ObjectRef object = Environment::Current().classes->Create(params.Text("class"));
  return {{"object", objects_.Add(object)}};
}

Json Session::Release(const Params& params) {
  if (!objects_.Release(params.Number("object"))) RaiseNoObject(params.Any("object"));
  return Json::object();
}

Json Session::Invoke(const Params& params) {
  static const Json kNoArguments = Json::array();
  const Json* arguments = params.Find("args");
  return CallMethod(*ObjectOf(params), params.Text("method"),
                    arguments == nullptr ? kNoArguments : *arguments, objects_);
}

Json Session::Get(const Params& params) {
  return {{"value", WriteValue(ObjectOf(params)->Get(params.Text("property")), objects_)}};
}

Json Session::Set(const Params& params) {
  ObjectOf(params)->Set(params.Text("property"), ReadValue(params.Any("value"), objects_));
  return Json::object();
}

Json Session::Describe(const Params& params) {
  const automation::ClassRegistry& classes = *Environment::Current().classes;
  if (params.Find("class") == nullptr) return DescribeClasses(classes);
  const std::string& name = params.Text("class");
  const automation::ClassInfo* info = classes.Find(name);
  if (info == nullptr) {
    throw Error(automation::error_number::kCannotCreateObject, kSource, "There is no class '" + name + "'");
  }
  return DescribeClass(*info);
}

Json Session::Begin(const Params& /*params*/) {
  if (transaction_ != nullptr)
    RaiseInvalidCall("a transaction is open already; end it or roll it back first");
  transaction_ = transactions_.Begin();
  return Json::object();
}

// The open transaction, which is no longer the session's: whatever becomes of it now, there is none
// afterwards.
std::unique_ptr<TransactionContext> Session::TakeTransaction() {
  if (transaction_ == nullptr) RaiseInvalidCall("no transaction is open; begin one first");
  return std::move(transaction_);
}

Json Session::End(const Params& /*params*/) {
  const bool committed = TakeTransaction()->Commit();
  return {{"outcome", committed ? "committed" : "aborted"}};
}

Json Session::Rollback(const Params& /*params*/) {
  TakeTransaction()->Rollback();
  return Json::object();
}

}  // namespace talvex::apps::rpc
