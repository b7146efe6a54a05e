#include <string>
#include <vector>

#include "support/error_of.h"
#include "support/xml_world.h"

namespace talvex::test {
namespace {

using platform::xml::XmlDocumentRef;
using ::testing::HasSubstr;

class XmlBuilding : public XmlTest {
 protected:
  // What raises 5, and why.
  template <class Step>
  static std::string Invalid(Step&& step) {
    const auto error = ErrorOf(std::forward<Step>(step));
    EXPECT_EQ(error.number, 5);
    EXPECT_EQ(error.source, "Talvex.Platform.Xml");
    EXPECT_EQ(error.description.substr(0, 24), "Invalid procedure call: ");
    return error.number == 5 ? error.description.substr(24) : "";
  }
};

TEST_F(XmlBuilding, BuildsADocumentFromNothing) {
  XmlDocument document;
  EXPECT_EQ(document.Xml(), "");
  EXPECT_EQ(document.DocumentElement(), nullptr);
  const XmlNodeRef root = document.CreateElement("Budgets");
  const XmlNodeRef budget = document.CreateElement("Budget");
  root->Append(*budget);
  budget->SetAttribute("code", "A & \"B\"");
  budget->SetText("1 < 2 & é &amp;");
  EXPECT_EQ(root->Xml(),
            "<Budgets><Budget code=\"A &amp; &quot;B&quot;\">1 &lt; 2 &amp; é &amp;amp;"
            "</Budget></Budgets>");
  EXPECT_EQ(document.Xml(), "") << "made, but not yet put into the document";
  document.SetRoot(*root);
  EXPECT_EQ(document.Xml(), root->Xml());
  EXPECT_EQ(budget->Text(), "1 < 2 & é &amp;");
  EXPECT_EQ(Loaded(document.Xml())->SelectSingleNode("//Budget")->Attribute("code"), "A & \"B\"");
}

TEST_F(XmlBuilding, AnElementWithoutTextIsWrittenShortAndOneWithAnEmptyTextIsNot) {
  XmlDocument document;
  const XmlNodeRef element = document.CreateElement("a");
  EXPECT_EQ(element->Xml(), "<a/>");
  element->SetText("");
  EXPECT_EQ(element->Xml(), "<a></a>");
  EXPECT_EQ(element->Text(), "");
}

TEST_F(XmlBuilding, ATextTakesThePlaceOfEverythingInTheElement) {
  const auto document = Loaded("<a>x<b>y</b>z</a>");
  const XmlNodeRef inner = document->SelectSingleNode("//b");
  const XmlNodeRef text = document->SelectSingleNode("//b/text()");
  document->DocumentElement()->SetText("new");
  EXPECT_EQ(document->Xml(), "<a>new</a>");
  EXPECT_EQ(inner->Xml(), "<b>y</b>") << "held from outside, it stays what it is";
  EXPECT_EQ(text->Text(), "y");
  EXPECT_EQ(text->Name(), "#text");
  EXPECT_EQ(text->Xml(), "y");
  EXPECT_EQ(document->SelectSingleNode("//b"), nullptr);
}

// Short texts are kept differently from long ones.
TEST_F(XmlBuilding, TextsOfAnyLengthAreReplacedCopiedAndRemoved) {
  for (std::size_t before = 0; before < 40; ++before) {
    for (const std::size_t after : {0U, 1U, 15U, 16U, 40U}) {
      const std::string old_text(before, 'o');
      const std::string new_text(after, 'n');
      const auto document = Loaded("<a x='" + old_text + "'><b>" + old_text + "</b></a>");
      const XmlNodeRef root = document->DocumentElement();
      const XmlNodeRef inner = root->Children("b")[0];
      EXPECT_EQ(inner->Text(), old_text);
      EXPECT_EQ(root->Attribute("x"), old_text);
      const std::string copied = inner->Xml();
      inner->SetText(new_text);
      root->SetAttribute("x", new_text);
      EXPECT_EQ(document->Xml(), "<a x=\"" + new_text + "\"><b>" + new_text + "</b></a>");
      EXPECT_EQ(copied, before == 0 ? "<b/>" : "<b>" + old_text + "</b>");
      root->Remove();
      EXPECT_EQ(inner->Text(), new_text);
    }
  }
}

TEST_F(XmlBuilding, AnAttributeTakesThePlaceOfOneOfTheSameName) {
  const auto document = Loaded("<a x='1' y='2'/>");
  const XmlNodeRef set = document->DocumentElement()->SetAttribute("x", "3");
  EXPECT_EQ(set->Name(), "x");
  EXPECT_EQ(set->Text(), "3");
  EXPECT_EQ(set->Xml(), "x=\"3\"");
  EXPECT_EQ(document->Xml(), "<a x=\"3\" y=\"2\"/>");
}

TEST_F(XmlBuilding, AnAttributeNamedXmlnsDeclaresItsPrefix) {
  const auto document = Loaded("<a><b/></a>");
  const XmlNodeRef root = document->DocumentElement();
  EXPECT_THAT(Invalid([&] { root->SetAttribute("xsi:nil", "1"); }), HasSubstr("'xsi' is not declared"));
  const XmlNodeRef declared = root->SetAttribute("xmlns:xsi", "http://www.w3.org/2001/XMLSchema-instance");
  EXPECT_EQ(declared->Name(), "xmlns:xsi");
  EXPECT_EQ(declared->Text(), "http://www.w3.org/2001/XMLSchema-instance");
  root->SetAttribute("xsi:noNamespaceSchemaLocation", "C:\\a b.xsd");
  root->Children("b")[0]->SetAttribute("xsi:nil", "1");
  EXPECT_EQ(document->Xml(),
            "<a xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
            "xsi:noNamespaceSchemaLocation=\"C:\\a b.xsd\"><b xsi:nil=\"1\"/></a>");
  EXPECT_EQ(root->Attribute("xsi:noNamespaceSchemaLocation"), "C:\\a b.xsd");
  // The same once more changes nothing; another namespace for the prefix is refused, below as well.
  root->SetAttribute("xmlns:xsi", "http://www.w3.org/2001/XMLSchema-instance");
  EXPECT_THAT(Invalid([&] { root->SetAttribute("xmlns:xsi", "u"); }), HasSubstr("declared already"));
  EXPECT_THAT(Invalid([&] { root->Children("b")[0]->SetAttribute("xmlns:xsi", "u"); }),
              HasSubstr("declared already"));
  EXPECT_THAT(Invalid([&] { root->SetAttribute("xmlns:p", ""); }), HasSubstr("needs a namespace"));
  EXPECT_THAT(Invalid([&] { root->SetAttribute("xmlns", "u"); }), HasSubstr("default namespace"));
  EXPECT_THAT(Invalid([&] { root->SetAttribute("xmlns:xml", "u"); }), HasSubstr("XML's own"));
  root->SetAttribute("xml:lang", "en");
  EXPECT_EQ(root->Attribute("xml:lang"), "en");
}

TEST_F(XmlBuilding, NamesAndCharactersAreChecked) {
  XmlDocument document;
  const XmlNodeRef element = document.CreateElement("ok");
  const std::vector<std::string> bad_names = {
      "",        " ",  "a b", "1a", "-a",    "a>",  "<a",   "a&b",
      "a=\"x\"", "a/", ":a",  "a:", "a:b:c", "a\n", "\xe9", std::string("a\0b", 3),
      "a\x01"};
  for (const std::string& name : bad_names) {
    EXPECT_THAT(Invalid([&] { static_cast<void>(document.CreateElement(name)); }), HasSubstr("no name"))
        << name;
    EXPECT_THAT(Invalid([&] { element->SetAttribute(name, "x"); }), HasSubstr("no name")) << name;
  }
  const std::vector<std::string> bad_texts = {std::string(1, '\0'), "\x01",         "\x1f", "\xe9",
                                              "\xed\xa0\x80",       "\xef\xbf\xbe", "a\xc3"};
  for (const std::string& text : bad_texts) {
    EXPECT_THAT(Invalid([&] { element->SetText(text); }), HasSubstr("a character that XML does not allow"));
    EXPECT_THAT(Invalid([&] { element->SetAttribute("x", text); }), HasSubstr("a character"));
    EXPECT_THAT(Invalid([&] { static_cast<void>(document.CreateElement("a", text)); }), HasSubstr("a char"));
  }
  EXPECT_EQ(element->Xml(), "<ok/>") << "what was refused left nothing behind";
  const std::string all_kinds = "tab\t line\r\n €\xf0\x9f\x98\x80 ]]> <!-- \"'";
  element->SetText(all_kinds);
  element->SetAttribute("Größe", all_kinds);
  const XmlNodeRef again = Loaded(element->Xml())->DocumentElement();
  EXPECT_EQ(again->Text(), all_kinds);
  EXPECT_EQ(again->Attribute("Größe"), all_kinds);
}

TEST_F(XmlBuilding, AnElementCanHaveANamespace) {
  XmlDocument document;
  const XmlNodeRef root = document.CreateElement("p:a", "u");
  document.SetRoot(*root);
  root->Append(*document.CreateElement("b"));
  root->Append(*document.CreateElement("c", "v"));
  root->Children("c")[0]->Append(*document.CreateElement("d"));
  EXPECT_EQ(document.Xml(), "<p:a xmlns:p=\"u\"><b/><c xmlns=\"v\"><d xmlns=\"\"/></c></p:a>");
  EXPECT_EQ(document.SelectNodes("//b | //d | /p:a")->Count(), 3);
  EXPECT_EQ(Loaded(document.Xml())->SelectNodes("//b | //d | /p:a")->Count(), 3) << "and as it is written";
  EXPECT_THAT(Invalid([&] { static_cast<void>(document.CreateElement("p:a")); }), HasSubstr("needs a names"));
  EXPECT_THAT(Invalid([&] { static_cast<void>(document.CreateElement("xml:a", "u")); }), HasSubstr("own"));
}

TEST_F(XmlBuilding, APieceOfADocumentDeclaresThePrefixesItUses) {
  const auto document = Loaded("<a xmlns:p='u' xmlns:q='v'><p:b q:x='1'><c/></p:b></a>");
  const XmlNodeRef inner = document->SelectSingleNode("//p:b");
  EXPECT_EQ(Loaded(inner->Xml())->DocumentElement()->Attribute("q:x"), "1");
  inner->Remove();
  const XmlNodeRef other = document->CreateElement("other");
  other->Append(*inner);
  EXPECT_EQ(Loaded(other->Xml())->DocumentElement()->Children("p:b").size(), 1U);
  EXPECT_EQ(document->Xml(), "<a xmlns:p=\"u\" xmlns:q=\"v\"/>");
}

TEST_F(XmlBuilding, NodesCanBeTakenOutAndPutBack) {
  const auto document = Loaded("<a><b x='1'/><c/></a>");
  const XmlNodeRef root = document->DocumentElement();
  const XmlNodeRef moved = root->Children("b")[0];
  moved->Remove();
  moved->Remove();
  EXPECT_EQ(document->Xml(), "<a><c/></a>");
  EXPECT_EQ(moved->Xml(), "<b x=\"1\"/>");
  root->Append(*moved);
  EXPECT_EQ(document->Xml(), "<a><c/><b x=\"1\"/></a>");
  root->Children("c")[0]->Append(*moved);
  EXPECT_EQ(document->Xml(), "<a><c><b x=\"1\"/></c></a>");
  document->SelectSingleNode("//@x")->Remove();
  EXPECT_EQ(document->Xml(), "<a><c><b/></c></a>");
  root->Remove();
  EXPECT_EQ(document->Xml(), "");
  document->SetRoot(*moved);
  EXPECT_EQ(document->Xml(), "<b/>");
  EXPECT_EQ(root->Xml(), "<a><c/></a>");
}

TEST_F(XmlBuilding, WhatCannotBeAppendedIsRefusedAndChangesNothing) {
  const auto document = Loaded("<a x='1'>text<b><c/></b></a>");
  const auto other = Loaded("<o/>");
  const XmlNodeRef root = document->DocumentElement();
  const XmlNodeRef inner = document->SelectSingleNode("//c");
  const std::string before = document->Xml();
  EXPECT_THAT(Invalid([&] { inner->Append(*root); }), HasSubstr("into itself"));
  EXPECT_THAT(Invalid([&] { inner->Append(*inner); }), HasSubstr("into itself"));
  EXPECT_THAT(Invalid([&] { inner->Append(*other->DocumentElement()); }), HasSubstr("another document"));
  EXPECT_THAT(Invalid([&] { document->SetRoot(*other->DocumentElement()); }), HasSubstr("another document"));
  EXPECT_THAT(Invalid([&] { document->SetRoot(*inner); }), HasSubstr("has a root already"));
  EXPECT_THAT(Invalid([&] { inner->Append(*document->SelectSingleNode("//@x")); }), HasSubstr("an element"));
  EXPECT_THAT(Invalid([&] { inner->Append(*document->SelectSingleNode("//text()")); }), HasSubstr("an elem"));
  EXPECT_THAT(Invalid([&] { document->SelectSingleNode("//@x")->Append(*inner); }), HasSubstr("an element"));
  EXPECT_THAT(Invalid([&] { document->SelectSingleNode("//@x")->SetText("y"); }), HasSubstr("an element"));
  EXPECT_THAT(Invalid([&] { document->SelectSingleNode("/")->Remove(); }), HasSubstr("a document"));
  EXPECT_EQ(document->Xml(), before);
}

TEST_F(XmlBuilding, TheDocumentAsANodeTakesARoot) {
  XmlDocument document;
  const XmlNodeRef top = document.SelectSingleNode("/");
  EXPECT_EQ(top->Name(), "#document");
  top->Append(*document.CreateElement("a"));
  EXPECT_EQ(top->Xml(), "<a/>");
  EXPECT_EQ(Names(top->Children("")), (std::vector<std::string>{"a"}));
}

TEST_F(XmlBuilding, NothingIsBuiltDeeperThanCanBeRead) {
  XmlDocument document;
  XmlNodeRef lowest = document.CreateElement("a");
  document.SetRoot(*lowest);
  for (int depth = 2; depth <= 256; ++depth) {
    const XmlNodeRef next = document.CreateElement("a");
    lowest->Append(*next);
    lowest = next;
  }
  const XmlNodeRef pair = document.CreateElement("b");
  pair->Append(*document.CreateElement("c"));
  EXPECT_THAT(Invalid([&] { lowest->Append(*pair); }), HasSubstr("more than 257 elements"));
  lowest->Append(*document.CreateElement("b"));
  EXPECT_NE(Loaded(document.Xml())->DocumentElement(), nullptr);
  EXPECT_EQ(document.TransformedBy(
                *Loaded("<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>"
                        "<xsl:output method='text'/><xsl:template match='/'>"
                        "<xsl:value-of select='count(//*)'/></xsl:template></xsl:stylesheet>")),
            "257");
}

}  // namespace
}  // namespace talvex::test
