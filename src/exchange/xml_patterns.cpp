#include "automation/text.h"
#include "exchange/budget_excel.h"
#include "services/frame.h"
#include "services/required.h"

namespace talvex {

using platform::xml::XmlDocument;
using platform::xml::XmlDocumentRef;
using platform::xml::XmlNodeList;
using platform::xml::XmlNodeRef;

namespace {

// No node, too, for a pattern that cannot be evaluated.
XmlNodeRef FirstMatch(XmlDocument& document, const std::string& pattern) {
  try {
    return document.SelectSingleNode(pattern);
  } catch (const automation::Error&) {
    return nullptr;
  }
}

}  // namespace

std::string BudgetExcel::ExecuteXSLPattern(XmlDocumentRef& i_oXMLDoc, std::string& i_sXslPattern) {
  return Reads("Talvex.BudgetExcel.ExecuteXSLPattern", [&]() -> std::string {
    if (i_sXslPattern.empty()) return {};
    const XmlNodeRef node = FirstMatch(Required(i_oXMLDoc, "the document"), i_sXslPattern);
    return node == nullptr ? std::string() : std::string(automation::Trimmed(node->Text()));
  });
}

std::shared_ptr<XmlNodeList> BudgetExcel::ExecuteXSLPatternReturnAllNodes(XmlDocumentRef& iXMLDoc,
                                                                          std::string& iXslPattern) {
  try {
    return Required(iXMLDoc, "the document").SelectNodes(iXslPattern);
  } catch (...) {
    return nullptr;
  }
}

}  // namespace talvex
