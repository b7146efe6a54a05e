#include <string>
#include <vector>

#include "automation/transaction_context.h"
#include "exchange/budget.h"
#include "support/stood_in_test.h"
#include "support/xml_world.h"

namespace talvex::test {
namespace {

using automation::Variant;
using platform::xml::XmlDocument;
using platform::xml::XmlDocumentRef;
using platform::xml::XmlNodeRef;
using ::testing::HasSubstr;

struct NodeRow {
  const char* name;
  const char* value;
  const char* name_space;
  const char* xml;
};

TEST(AddXMLNode, AddsAnElementWithItsTrimmedText) {
  WithStandIns([](StoodIn&) {
    const NodeRow rows[] = {
        {"BudgetCode", "IT-1", "", "<r><BudgetCode>IT-1</BudgetCode></r>"},
        {"BudgetCode", "  IT 1 ", "", "<r><BudgetCode>IT 1</BudgetCode></r>"},
        {"BudgetCode", "\t IT\n", "", "<r><BudgetCode>\t IT\n</BudgetCode></r>"},
        {"BudgetCode", "<&>", "", "<r><BudgetCode>&lt;&amp;&gt;</BudgetCode></r>"},
        {"BudgetCode", "", "", "<r><BudgetCode/></r>"},
        {"BudgetCode", "   ", "", "<r><BudgetCode></BudgetCode></r>"},
        {"Code", "1", "urn:b", "<r><Code xmlns=\"urn:b\">1</Code></r>"},
        {"b:Code", "1", "urn:b", "<r><b:Code xmlns:b=\"urn:b\">1</b:Code></r>"},
    };
    for (const NodeRow& row : rows) {
      Budget budget;
      XmlDocumentRef document = LoadedDocument("<r/>");
      XmlNodeRef parent = document->DocumentElement();
      const XmlNodeRef added = budget.AddXMLNode(document, parent, row.name, row.value, row.name_space);
      EXPECT_EQ(document->Xml(), row.xml);
      EXPECT_EQ(added->Name(), row.name);
    }
  });
}

TEST(AddXMLNode, AppendsBehindTheChildrenThatAreThere) {
  WithStandIns([](StoodIn&) {
    Budget budget;
    XmlDocumentRef document = LoadedDocument("<r><a/>text</r>");
    XmlNodeRef parent = document->DocumentElement();
    XmlNodeRef first = budget.AddXMLNode(document, parent, "b", "");
    budget.AddXMLNode(document, first, "c", "1");
    budget.AddXMLNode(document, parent, "b", "2");
    EXPECT_EQ(document->Xml(), "<r><a/>text<b><c>1</c></b><b>2</b></r>");
  });
}

TEST(AddXMLNode, BuildsUnderAnElementThatIsInNoDocument) {
  WithStandIns([](StoodIn&) {
    Budget budget;
    XmlDocumentRef factory = std::make_shared<XmlDocument>();
    XmlNodeRef root = factory->CreateElement("Budgets");
    budget.AddXMLNode(factory, root, "Budget", "");
    EXPECT_EQ(root->Xml(), "<Budgets><Budget/></Budgets>");
    EXPECT_EQ(factory->Xml(), "");
  });
}

// Whatever fails raises the platform's number under the method's own name, with the chain of calls in its
// description, is logged once, and votes abort.
TEST(AddXMLNode, RaisesEveryFailureUnderItsOwnName) {
  struct Row {
    bool with_document;
    bool with_parent;
    const char* name;
    const char* value;
    std::int32_t number;
    const char* description;
  };
  const Row rows[] = {
      {true, true, "1 bad name", "x", 5, "Invalid procedure call: '1 bad name' is no name in XML"},
      {true, true, "", "x", 5, "Invalid procedure call: '' is no name in XML"},
      {true, true, "a", "\x01", 5, "a character that XML does not allow"},
      {false, true, "a", "x", 91, "Object not set: the document"},
      {true, false, "a", "x", 91, "Object not set: the parent"},
  };
  for (const Row& row : rows) {
    WithStandIns([&](StoodIn& test) {
      Budget budget;
      const XmlDocumentRef source = LoadedDocument("<r/>");
      XmlDocumentRef document = row.with_document ? source : nullptr;
      XmlNodeRef parent = row.with_parent ? source->DocumentElement() : nullptr;
      const auto context = test.Site().Host().Transactions().Begin();
      const auto error = ErrorOf([&] { budget.AddXMLNode(document, parent, row.name, row.value); });
      EXPECT_FALSE(context->Commit());
      EXPECT_EQ(error.number, row.number);
      EXPECT_EQ(error.source, "Talvex.Budget.AddXMLNode");
      EXPECT_THAT(error.description, HasSubstr(" METHOD: Talvex.Budget.AddXMLNode\r\n DESC: "));
      EXPECT_THAT(error.description, HasSubstr(row.description));
      ASSERT_EQ(test.Record().log.size(), 1U);
      EXPECT_EQ(test.Record().log[0].source, "Talvex.Budget.AddXMLNode");
      EXPECT_EQ(source->Xml(), "<r/>");
    });
  }
}

TEST(AddXMLNode, RefusesAParentOfAnotherDocument) {
  WithStandIns([](StoodIn&) {
    Budget budget;
    XmlDocumentRef document = LoadedDocument("<r/>");
    XmlNodeRef parent = LoadedDocument("<other/>")->DocumentElement();
    const auto error = ErrorOf([&] { budget.AddXMLNode(document, parent, "a", "x"); });
    EXPECT_EQ(error.number, 5);
    EXPECT_THAT(error.description, HasSubstr("belongs to another document"));
    EXPECT_EQ(parent->Xml(), "<other/>");
  });
}

struct AttributeRow {
  const char* name;
  const char* value;
  const char* name_space;
  const char* xml;
  const char* text;
};

TEST(AddXMLAttribute, SetsTheTrimmedValueAndIgnoresTheNamespace) {
  WithStandIns([](StoodIn&) {
    const AttributeRow rows[] = {
        {"code", " 12 ", "", "<r k=\"1\" code=\"12\"/>", "12"},
        {"code", "12", "urn:ignored", "<r k=\"1\" code=\"12\"/>", "12"},
        {"code", "", "", "<r k=\"1\" code=\"\"/>", ""},
        {"code", "   ", "", "<r k=\"1\" code=\"\"/>", ""},
        {"k", "2", "", "<r k=\"2\"/>", "2"},
        {"xmlns:xsi", " urn:x ", "", "<r xmlns:xsi=\"urn:x\" k=\"1\"/>", "urn:x"},
    };
    for (const AttributeRow& row : rows) {
      Budget budget;
      std::string errors = "before";
      XmlDocumentRef document = LoadedDocument("<r k='1'/>");
      XmlNodeRef node = document->DocumentElement();
      const XmlNodeRef attribute =
          budget.AddXMLAttribute(document, node, row.name, row.value, errors, row.name_space);
      ASSERT_NE(attribute, nullptr) << errors;
      EXPECT_EQ(attribute->Name(), row.name);
      EXPECT_EQ(attribute->Text(), row.text);
      EXPECT_EQ(document->Xml(), row.xml);
      EXPECT_EQ(errors, "before");
    }
  });
}

TEST(AddXMLAttribute, NamesTheSchemaOfADocument) {
  WithStandIns([](StoodIn& test) {
    Budget budget;
    std::string errors;
    XmlDocumentRef document = LoadedDocument("<r/>");
    XmlNodeRef root = document->DocumentElement();
    budget.AddXMLAttribute(document, root, "xmlns:xsi", "http://www.w3.org/2001/XMLSchema-instance", errors);
    budget.AddXMLAttribute(document, root, "xsi:noNamespaceSchemaLocation",
                           test.Site().Path("") + "\\talvex\\XSD\\missing one.xsd", errors);
    EXPECT_EQ(errors, "");
    XmlDocument again;
    EXPECT_FALSE(again.LoadXml(document->Xml()));
    EXPECT_THAT(again.Error().reason, HasSubstr("missing one.xsd"));
  });
}

TEST(AddXMLAttribute, AppendsItsFailureToTheErrorTextAndRaisesNothing) {
  struct Row {
    bool with_document;
    bool with_node;
    const char* name;
    const char* value;
    const char* errors;
  };
  const Row rows[] = {
      {true, true, "a b", "x", "before\r\nInvalid procedure call: 'a b' is no name in XML-"},
      {true, true, "a", "\x02",
       "before\r\nInvalid procedure call: the text holds a character that XML does not allow-"},
      {true, true, "p:a", "x", "before\r\nInvalid procedure call: the prefix 'p' is not declared-"},
      {false, true, "a", "x", "before\r\nObject not set: the document-"},
      {true, false, "a", "x", "before\r\nObject not set: the node-"},
  };
  for (const Row& row : rows) {
    WithStandIns([&](StoodIn& test) {
      Budget budget;
      std::string errors = "before";
      const XmlDocumentRef source = LoadedDocument("<r/>");
      XmlDocumentRef document = row.with_document ? source : nullptr;
      XmlNodeRef node = row.with_node ? source->DocumentElement() : nullptr;
      const auto context = test.Site().Host().Transactions().Begin();
      EXPECT_EQ(budget.AddXMLAttribute(document, node, row.name, row.value, errors), nullptr);
      EXPECT_TRUE(context->Commit()) << "no vote for abort";
      EXPECT_EQ(errors, row.errors);
      EXPECT_TRUE(test.Record().log.empty());
      EXPECT_EQ(source->Xml(), "<r/>");
    });
  }
}

TEST(AddXMLAttribute, RefusesANodeOfAnotherDocument) {
  WithStandIns([](StoodIn&) {
    Budget budget;
    std::string errors;
    XmlDocumentRef document = LoadedDocument("<r/>");
    XmlNodeRef node = LoadedDocument("<other/>")->DocumentElement();
    EXPECT_EQ(budget.AddXMLAttribute(document, node, "a", "x", errors), nullptr);
    EXPECT_EQ(errors, "\r\nInvalid procedure call: the node 'other' belongs to another document-");
  });
}

TEST(GetXMLTagValue, ReadsTheOnlyElementOfAName) {
  WithStandIns([](StoodIn&) {
    Budget budget;
    const auto document = LoadedDocument("<r><one> x </one><two>1</two><b><two>2</two></b><empty/></r>");
    EXPECT_EQ(budget.GetXMLTagValue(document, "one"), " x ") << "as it stands";
    EXPECT_EQ(budget.GetXMLTagValue(document, "two"), "") << "exactly as when it does not occur";
    EXPECT_EQ(budget.GetXMLTagValue(document, "three"), "");
    EXPECT_EQ(budget.GetXMLTagValue(document, "empty"), "");
    EXPECT_EQ(budget.GetXMLTagValue(document, "not a name"), "");
    EXPECT_EQ(budget.GetXMLTagValue(std::make_shared<XmlDocument>(), "one"), "");
  });
}

TEST(GetXMLTagValue, OfADocumentThatDidNotParseIsEmpty) {
  WithStandIns([](StoodIn&) {
    Budget budget;
    const auto document = LoadedDocument("<r><one>x</one></r>");
    EXPECT_EQ(budget.GetXMLTagValue(document, "one"), "x");
    EXPECT_FALSE(document->LoadXml("<r><one>x</one>"));
    EXPECT_EQ(budget.GetXMLTagValue(document, "one"), "");
  });
}

TEST(GetXMLTagValue, HasNoHandlerOfItsOwn) {
  WithStandIns([](StoodIn& test) {
    Budget budget;
    const auto context = test.Site().Host().Transactions().Begin();
    const auto error = ErrorOf([&] { static_cast<void>(budget.GetXMLTagValue(nullptr, "one")); });
    EXPECT_TRUE(context->Commit()) << "no vote for abort";
    EXPECT_EQ(error.number, 91);
    EXPECT_EQ(error.description, "Object not set: the document");
    EXPECT_TRUE(test.Record().log.empty());
  });
}

TEST(XmlHelpers, AreCalledByNameWithTheirOptionalArgumentsLeftOut) {
  WithStandIns([](StoodIn& test) {
    const auto budget = test.Environment().classes->Create("Talvex.Budget");
    const auto created = test.Environment().classes->Create("Platform.XmlDocument");
    created->Call("LoadXml", "<r/>");
    Variant document = created;
    Variant parent = created->Get("DocumentElement");
    Variant errors = "";
    budget->Call("AddXMLNode", document, parent, "a", " 1 ");
    const Variant attribute = budget->Call("addxmlattribute", document, parent, "k", " v ", errors);
    EXPECT_TRUE(attribute.IsObject());
    EXPECT_TRUE(budget->Call("AddXMLAttribute", document, parent, "k k", "v", errors).IsEmpty());
    EXPECT_EQ(errors, Variant("\r\nInvalid procedure call: 'k k' is no name in XML-"));
    EXPECT_EQ(created->Get("Xml"), Variant("<r k=\"v\"><a>1</a></r>"));
    EXPECT_EQ(budget->Call("GetXMLTagValue", document, "a"), Variant("1"));
    Variant text = "no document";
    EXPECT_EQ(ErrorNumberOf([&] { budget->Call("GetXMLTagValue", text, "a"); }), 13);
  });
}

}  // namespace
}  // namespace talvex::test
