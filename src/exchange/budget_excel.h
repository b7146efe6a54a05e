// Workbooks as XML and XML as workbooks.
#pragma once

#include <memory>
#include <string>

#include "automation/class_info.h"
#include "platform/xml/xml_document.h"

namespace talvex {

// The public class "Talvex.BudgetExcel". It keeps no state between calls.
class BudgetExcel final : public automation::Object {
  TALVEX_CLASS(BudgetExcel, "Talvex.BudgetExcel", "Workbooks as XML and XML as workbooks.");

 public:
  TALVEX_METHOD(std::string, ExecuteXSLPattern,
                (std::shared_ptr<platform::xml::XmlDocument> & i_oXMLDoc, std::string& i_sXslPattern),
                "The text, without the blanks around it, of the first node that an XPath expression selects; "
                "the empty text when there is none, when the expression is wrong, and, without a look at the "
                "document, when it is empty. Raises 91 without a document. Changes neither argument.");

  TALVEX_METHOD(std::shared_ptr<platform::xml::XmlNodeList>, ExecuteXSLPatternReturnAllNodes,
                (std::shared_ptr<platform::xml::XmlDocument> & iXMLDoc, std::string& iXslPattern),
                "All nodes that an XPath expression selects, in document order; an empty list when there are "
                "none. A failure, such as a wrong expression or no document, gives no list and is neither "
                "raised nor logged. Changes neither argument.");
};

}  // namespace talvex
