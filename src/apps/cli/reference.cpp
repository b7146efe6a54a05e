#include "apps/cli/reference.h"

#include <algorithm>

#include "apps/cli/layout.h"

namespace talvex::apps {

namespace {

using automation::ClassInfo;
using automation::EnumerationInfo;
using automation::Method;
using automation::Parameter;
using automation::Property;

constexpr std::size_t kWidth = 100;

void AppendParagraph(std::string& page, std::string_view text) {
  for (const std::string& line : Wrapped(text, kWidth)) page.append(line).append("\n");
  page.append("\n");
}

void AppendParameters(std::string& page, const Method& method) {
  if (method.parameters.empty()) return;
  page.append("| Parameter | Type | Direction | |\n|---|---|---|---|\n");
  for (const Parameter& parameter : method.parameters) {
    page.append("| `").append(parameter.name).append("` | ").append(parameter.type);
    page.append(parameter.by_reference ? " | in/out | " : " | in | ");
    page.append(parameter.optional ? "optional |\n" : "|\n");
  }
  page.append("\n");
}

void AppendMethod(std::string& page, const Method& method) {
  page.append("#### ").append(method.name).append("\n\n");
  AppendParagraph(page, method.documentation);
  AppendParameters(page, method);
  if (!method.result.empty()) page.append("Result: ").append(method.result).append("\n\n");
}

void AppendProperties(std::string& page, const ClassInfo& info) {
  page.append("### Properties\n\n| Property | Type | | |\n|---|---|---|---|\n");
  for (const Property& property : info.Properties()) {
    page.append("| `").append(property.name).append("` | ").append(property.type);
    page.append(property.set == nullptr ? " | read-only | " : " | | ")
        .append(property.documentation)
        .append(" |\n");
  }
  page.append("\n");
}

void AppendEnumerations(std::string& page, const std::vector<const EnumerationInfo*>& enumerations) {
  page.append("### Enumerations\n\n| Enumeration | Members |\n|---|---|\n");
  for (const EnumerationInfo* enumeration : enumerations) {
    page.append("| `")
        .append(enumeration->Name())
        .append("` | ")
        .append(MembersText(*enumeration))
        .append(" |\n");
  }
  page.append("\n");
}

void AppendClass(std::string& page, const ClassInfo& info) {
  page.append("## ").append(info.Name()).append("\n\n");
  AppendParagraph(page, info.Documentation());
  if (!info.Methods().empty()) page.append("### Methods\n\n");
  for (const Method& method : info.Methods()) AppendMethod(page, method);
  if (!info.Properties().empty()) AppendProperties(page, info);
  const std::vector<const EnumerationInfo*> enumerations = EnumerationsOf(info);
  if (!enumerations.empty()) AppendEnumerations(page, enumerations);
}

}  // namespace

std::string ParameterText(const Parameter& parameter) {
  return (parameter.by_reference ? "in/out " : "") + parameter.name + ": " + parameter.type +
         (parameter.optional ? ", optional" : "");
}

std::string PropertyText(const Property& property) {
  return property.name + ": " + property.type + (property.set == nullptr ? ", read-only" : "");
}

std::string MembersText(const EnumerationInfo& enumeration) {
  std::string text;
  for (const auto& [name, number] : enumeration.Members()) {
    text.append(text.empty() ? "" : ", ").append(name).append(" = ").append(std::to_string(number));
  }
  return text;
}

std::vector<const EnumerationInfo*> EnumerationsOf(const ClassInfo& info) {
  std::vector<const EnumerationInfo*> enumerations;
  for (const Method& method : info.Methods()) {
    for (const Parameter& parameter : method.parameters) {
      const EnumerationInfo* const found = parameter.enumeration;
      const bool known = std::find(enumerations.begin(), enumerations.end(), found) != enumerations.end();
      if (found != nullptr && !known) enumerations.push_back(found);
    }
  }
  return enumerations;
}

std::string ReferenceMarkdown(const automation::ClassRegistry& classes) {
  std::string page = "# Reference\n\n";
  AppendParagraph(
      page,
      "The public classes, as each describes itself. This page is made by `talvex describe --markdown`: to "
      "change a text, change it beside the member's declaration and make the page anew.");
  for (const std::string& name : classes.Names()) AppendClass(page, *classes.Find(name));
  page.pop_back();  // One line end is enough at the end of the page.
  return page;
}

}  // namespace talvex::apps
