#include "apps/rpc/calls.h"

#include "apps/cli/call_arguments.h"
#include "apps/cli/commands.h"
#include "apps/cli/value_text.h"
#include "automation/class_info.h"

namespace talvex::apps {

namespace {

// What is called: its description says how the arguments are to be read.
const automation::Method* FindMethod(Session& session, const CallArguments& arguments) {
  const automation::ClassInfo* const info = session.Host().Environment()->classes->Find(arguments.class_name);
  return info == nullptr ? nullptr : info->FindMethod(arguments.method);
}

rpc::Json Call(Session& session, const CallArguments& arguments, const rpc::Json& values) {
  rpc::ObjectTable objects;
  const automation::ObjectRef object = session.Create(arguments.class_name);
  return rpc::CallMethod(*object, arguments.method, values, objects);
}

void PrintText(const Session& session, const automation::Method& method, const rpc::Json& answer) {
  if (!method.result.empty()) session.Out() << NamedValueText("Result", answer.at("result"));
  for (const automation::Parameter& parameter : method.parameters) {
    if (!parameter.by_reference) continue;
    session.Out() << NamedValueText(parameter.name, answer.at("out").at(parameter.name));
  }
  if (method.result.empty() && answer.at("out").empty()) session.Out() << "Done.\n";
}

}  // namespace

ExitStatus RunCall(Session& session, const CallArguments& arguments) {
  const automation::Method* const method = FindMethod(session, arguments);
  const rpc::Json values = method == nullptr ? rpc::Json::object() : ReadArguments(*method, arguments.values);
  rpc::Json answer;
  const host::Outcome outcome = session.InTransaction([&] { answer = Call(session, arguments, values); });
  if (session.Options().json) {
    session.Print(answer);
  } else {
    PrintText(session, *method, answer);
  }
  if (outcome == host::Outcome::Aborted)
    throw Failure("the call was undone: a vote in its transaction was for abort");
  return ExitStatus::Done;
}

}  // namespace talvex::apps
