// The exchange of budgets with workbooks.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "automation/class_info.h"
#include "platform/xml/xml_document.h"

namespace talvex {

// The public class "Talvex.Budget". It keeps no state between calls.
class Budget final : public automation::Object {
  TALVEX_CLASS(Budget, "Talvex.Budget", "Export and import of budgets as workbooks, by way of XML.");

 public:
  TALVEX_METHOD(
      std::shared_ptr<platform::xml::XmlNode>, AddXMLNode,
      (std::shared_ptr<platform::xml::XmlDocument> & io_oDOMXML,
       std::shared_ptr<platform::xml::XmlNode>& io_oParent, const std::string& i_sName,
       const std::string& i_sValue, const std::optional<std::string>& i_sNameSpace = {}),
      "Makes an element of the document the last child of io_oParent and returns it. Its text is "
      "i_sValue without the blanks around it; an empty i_sValue leaves it without any text, so that "
      "it is written as an empty element. Without a namespace the element is a plain one. Raises 5 "
      "for a name or a character that XML does not allow and for a parent of another document, and "
      "91 without a document or a parent.");

  TALVEX_METHOD(std::shared_ptr<platform::xml::XmlNode>, AddXMLAttribute,
                (std::shared_ptr<platform::xml::XmlDocument> & io_oDOMXML,
                 std::shared_ptr<platform::xml::XmlNode>& io_oNode, const std::string& i_sAttributeName,
                 const std::string& i_sAttributeValue, std::string& o_sError,
                 const std::optional<std::string>& i_sNameSpace = {}),
                "Sets an attribute of the element io_oNode, in place of one of the same name, to "
                "i_sAttributeValue without the blanks around it, and returns it. The namespace is ignored: "
                "the attribute has none but the one that a declared prefix in its name stands for. The "
                "attribute xmlns:p declares the prefix p. A failure is not raised: its description is added "
                "to o_sError as one more line, and no attribute is returned.");

  TALVEX_METHOD(std::string, GetXMLTagValue,
                (const std::shared_ptr<platform::xml::XmlDocument>& i_oXMLDOM, const std::string& i_sTagName),
                "The text, as it stands, of the document's only element of that name; the empty text when "
                "there is none, when there are several, and when the document could not be parsed. Raises 91 "
                "without a document; failures are not logged.");
};

}  // namespace talvex
