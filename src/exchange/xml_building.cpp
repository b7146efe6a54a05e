#include "automation/text.h"
#include "exchange/budget.h"
#include "services/frame.h"
#include "services/required.h"

namespace talvex {

using automation::Trimmed;
using platform::xml::XmlDocument;
using platform::xml::XmlDocumentRef;
using platform::xml::XmlNodeRef;

XmlNodeRef Budget::AddXMLNode(XmlDocumentRef& io_oDOMXML, XmlNodeRef& io_oParent, const std::string& i_sName,
                              const std::string& i_sValue, const std::optional<std::string>& i_sNameSpace) {
  constexpr std::string_view kMethod = "Talvex.Budget.AddXMLNode";
  return Handled(
      kMethod,
      [&] {
        XmlNodeRef node =
            Required(io_oDOMXML, "the document").CreateElement(i_sName, i_sNameSpace.value_or(""));
        // The test comes before the trimming: a value of blanks gives an element with an empty text.
        if (!i_sValue.empty()) node->SetText(Trimmed(i_sValue));
        Required(io_oParent, "the parent").Append(*node);
        return node;
      },
      [&] {
        // To the caller this method is where the error comes from.
        automation::PendingError().source = kMethod;
        Lib_MTS::MTS_SetAbort();
        return Lib_ErrorHandling::Information();
      });
}

XmlNodeRef Budget::AddXMLAttribute(XmlDocumentRef& io_oDOMXML, XmlNodeRef& io_oNode,
                                   const std::string& i_sAttributeName, const std::string& i_sAttributeValue,
                                   std::string& o_sError,
                                   const std::optional<std::string>& /*i_sNameSpace*/) {
  try {
    const XmlDocument& document = Required(io_oDOMXML, "the document");
    platform::xml::XmlNode& node = Required(io_oNode, "the node");
    document.CheckOwns(node);
    return node.SetAttribute(i_sAttributeName, std::string(Trimmed(i_sAttributeValue)));
  } catch (...) {
    Lib_ErrorHandling::Err_AppendLine(o_sError, automation::CurrentExceptionState().description, "");
    return nullptr;
  }
}

std::string Budget::GetXMLTagValue(const XmlDocumentRef& i_oXMLDOM, const std::string& i_sTagName) {
  return Required(i_oXMLDOM, "the document").TextOfOnly(i_sTagName);
}

}  // namespace talvex
