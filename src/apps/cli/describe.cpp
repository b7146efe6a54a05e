#include "apps/rpc/describe.h"

#include <algorithm>

#include "apps/cli/commands.h"
#include "apps/cli/layout.h"
#include "apps/cli/reference.h"
#include "automation/class_registry.h"
#include "component/public_classes.h"

namespace talvex::apps {

namespace {

using automation::ClassInfo;
using automation::ClassRegistry;
using automation::Method;
using automation::Parameter;

void PrintWrapped(const Session& session, std::string_view text, std::string_view indent) {
  for (const std::string& line : Wrapped(text, session.Look().width - indent.size())) {
    session.Out() << indent << line << '\n';
  }
}

void PrintClasses(const Session& session, const ClassRegistry& classes) {
  std::size_t widest = 0;
  for (const std::string& name : classes.Names()) widest = std::max(widest, name.size());
  for (const std::string& name : classes.Names()) {
    const std::string margin(widest + 2, ' ');
    const auto lines = Wrapped(classes.Find(name)->Documentation(), session.Look().width - margin.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
      session.Out() << (i == 0 ? name + margin.substr(name.size()) : margin) << lines[i] << '\n';
    }
  }
}

// The declaration on one line when it fits, else with a line for each parameter.
void PrintMethod(const Session& session, const Method& method) {
  const std::string result = method.result.empty() ? std::string() : ": " + method.result;
  std::string line = "  " + method.name + "(";
  for (const Parameter& parameter : method.parameters) {
    line.append(&parameter == &method.parameters.front() ? "" : ", ").append(ParameterText(parameter));
  }
  line.append(")").append(result);
  if (line.size() <= session.Look().width) {
    session.Out() << line << '\n';
  } else {
    session.Out() << "  " << method.name << "(\n";
    for (const Parameter& parameter : method.parameters) {
      session.Out() << "      " << ParameterText(parameter)
                    << (&parameter == &method.parameters.back() ? ")" : ",\n");
    }
    session.Out() << result << '\n';
  }
  PrintWrapped(session, method.documentation, "      ");
  session.Out() << '\n';
}

void PrintEnumerations(const Session& session, const ClassInfo& info) {
  const auto enumerations = EnumerationsOf(info);
  if (enumerations.empty()) return;
  session.Out() << "Enumerations\n\n";
  for (const automation::EnumerationInfo* enumeration : enumerations) {
    session.Out() << "  " << enumeration->Name() << '\n';
    PrintWrapped(session, MembersText(*enumeration), "      ");
    session.Out() << '\n';
  }
}

void PrintClass(const Session& session, const ClassInfo& info) {
  session.Out() << info.Name() << '\n';
  PrintWrapped(session, info.Documentation(), "  ");
  session.Out() << '\n';
  if (!info.Methods().empty()) session.Out() << "Methods\n\n";
  for (const Method& method : info.Methods()) PrintMethod(session, method);
  if (!info.Properties().empty()) session.Out() << "Properties\n\n";
  for (const automation::Property& property : info.Properties()) {
    session.Out() << "  " << PropertyText(property) << '\n';
    PrintWrapped(session, property.documentation, "      ");
    session.Out() << '\n';
  }
  PrintEnumerations(session, info);
}

}  // namespace

// The classes are those of the component, whatever the installation: none is needed to read about them.
ExitStatus RunDescribe(Session& session, const DescribeArguments& arguments) {
  ClassRegistry classes;
  component::RegisterPublicClasses(classes);
  if (arguments.markdown) {
    session.Out() << ReferenceMarkdown(classes);
    return ExitStatus::Done;
  }
  if (arguments.class_name.empty()) {
    if (session.Options().json) {
      session.Print(rpc::DescribeClasses(classes));
    } else {
      PrintClasses(session, classes);
    }
    return ExitStatus::Done;
  }
  const ClassInfo* const info = classes.Find(arguments.class_name);
  if (info == nullptr) throw Refusal("there is no class '" + Shortened(arguments.class_name) + "'");
  if (session.Options().json) {
    session.Print(rpc::DescribeClass(*info));
  } else {
    PrintClass(session, *info);
  }
  return ExitStatus::Done;
}

}  // namespace talvex::apps
