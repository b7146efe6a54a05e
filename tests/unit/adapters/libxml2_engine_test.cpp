#include <gtest/gtest.h>

#include <fstream>
#include <future>
#include <string>
#include <vector>

#include "adapters/libxml2/xml_engine.h"
#include "support/temporary_folder.h"

namespace talvex::adapters::libxml2 {
namespace {

using platform::xml::Document;
using platform::xml::Element;

class XmlEngineTest : public ::testing::Test {
 protected:
  std::unique_ptr<Document> Parse(std::string_view text) const { return engine_.Parse(text); }

  // The text of the document's root; a failure of the test when there is none.
  std::string RootText(std::string_view text) const {
    const auto document = Parse(text);
    EXPECT_EQ(document->Error().code, 0) << document->Error().reason;
    const auto root = document->Root();
    EXPECT_NE(root, nullptr) << text;
    return root == nullptr ? "" : root->Text();
  }

  void ExpectRefused(std::string_view text, const std::string& reason) const {
    const auto document = Parse(text);
    EXPECT_NE(document->Error().code, 0) << text.substr(0, 80);
    EXPECT_NE(document->Error().reason.find(reason), std::string::npos) << document->Error().reason;
    EXPECT_EQ(document->Root(), nullptr);
  }

  static std::vector<std::string> Names(const std::vector<std::unique_ptr<Element>>& elements) {
    std::vector<std::string> names;
    for (const auto& element : elements) names.push_back(element->Name());
    return names;
  }

  XmlEngine engine_;
};

TEST_F(XmlEngineTest, ReadsElementsTheirTextsAndAttributes) {
  const auto document = Parse(
      "<?xml version=\"1.0\"?>\n<site name='A &amp; B' empty=''>\n <a>1</a><b/>text<a>2<c>3</c></a></site>");
  ASSERT_EQ(document->Error().code, 0);
  EXPECT_EQ(document->Error().reason, "");
  const auto root = document->Root();
  EXPECT_EQ(root->Name(), "site");
  EXPECT_EQ(root->Attribute("name"), "A & B");
  EXPECT_EQ(root->Attribute("empty"), "");
  EXPECT_EQ(root->Attribute("NAME"), "");
  EXPECT_EQ(Names(root->Children("")), (std::vector<std::string>{"a", "b", "a"}));
  const auto children = root->Children("a");
  ASSERT_EQ(children.size(), 2U);
  EXPECT_EQ(children[0]->Text(), "1");
  EXPECT_EQ(children[1]->Text(), "23");
  EXPECT_EQ(children[1]->Children("c").at(0)->Text(), "3");
  EXPECT_TRUE(root->Children("c").empty()) << "children only, not their children";
  EXPECT_TRUE(root->Children("A").empty());
}

TEST_F(XmlEngineTest, TextHasCharacterDataButNoComments) {
  EXPECT_EQ(RootText("<a>x<!-- no --><![CDATA[<y>&]]><?pi no?>&lt;&#233;&#x20AC;</a>"), "x<y>&<é€");
  EXPECT_EQ(RootText("<a/>"), "");
  EXPECT_EQ(RootText("<a> \r\n </a>"), " \n ");
}

TEST_F(XmlEngineTest, NamesCarryTheirPrefix) {
  const auto document = Parse("<p:a xmlns:p='u' p:x='1' x='2'><p:b/><b/></p:a>");
  const auto root = document->Root();
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(root->Name(), "p:a");
  EXPECT_EQ(root->Attribute("p:x"), "1");
  EXPECT_EQ(root->Attribute("x"), "2");
  EXPECT_EQ(root->Children("b").size(), 1U);
  EXPECT_EQ(root->Children("p:b").size(), 1U);
}

TEST_F(XmlEngineTest, AnElementLivesAsLongAsItsDocument) {
  const auto document = Parse("<a><b><c>deep</c></b></a>");
  const auto inner = document->Root()->Children("b").at(0)->Children("c");
  EXPECT_EQ(inner.at(0)->Text(), "deep");
}

TEST_F(XmlEngineTest, TheTextIsUtf8WhateverItsDeclarationClaims) {
  for (const std::string encoding : {"UTF-8", "ISO-8859-1", "UTF-16", "windows-1252", "no-such-encoding"}) {
    EXPECT_EQ(RootText("<?xml version=\"1.0\" encoding=\"" + encoding + "\"?><a>é€</a>"), "é€") << encoding;
  }
  EXPECT_EQ(RootText("\xef\xbb\xbf<a>é</a>"), "é") << "with a byte order mark";
}

TEST_F(XmlEngineTest, SaysWhereAndWhyATextIsNoDocument) {
  ExpectRefused("<a>\n<b>\n</a>", "Line 3: Opening and ending tag mismatch: b line 2 and a");
  ExpectRefused("", "Line 1: Document is empty");
  ExpectRefused(std::string_view(), "Line 1: Document is empty");
  ExpectRefused("<a/><b/>", "Line 1: Extra content at the end of the document");
  ExpectRefused("<a>\n&nothing;</a>", "Line 2: Entity 'nothing' not defined");
  ExpectRefused("<a>\n<p:b/></a>", "Line 2: Namespace prefix p on b is not defined");
  ExpectRefused("<a x='1' x='2'/>", "Line 1: Attribute x redefined");
  const std::string reason = Parse("<a>")->Error().reason;
  EXPECT_EQ(reason.find('\n'), std::string::npos);
  EXPECT_FALSE(reason.ends_with(' '));
}

TEST_F(XmlEngineTest, RefusesBytesThatAreNoText) {
  ExpectRefused("<a>\xe9</a>", "not proper UTF-8");
  ExpectRefused(std::string_view("<a>\n\0</a>", 9), "Line 2: A NUL character");
  ExpectRefused(std::string_view("<a/>\0", 5), "Line 1: A NUL character");
  ExpectRefused("<a>\x01</a>", "Line 1: PCDATA invalid Char value 1");
}

TEST_F(XmlEngineTest, ADocumentTypeWithoutEntitiesIsFine) {
  EXPECT_EQ(RootText("<!DOCTYPE a [<!ELEMENT a ANY>]><a>x</a>"), "x");
}

TEST_F(XmlEngineTest, EntitiesAreNeverDeclared) {
  ExpectRefused("<!DOCTYPE a [\n<!ENTITY x 'y'>]><a>&x;</a>", "Line 2: The document declares the entity x");
  ExpectRefused("<!DOCTYPE a [<!ENTITY % x '<!ENTITY y \"z\">'>%x;]><a>&y;</a>", "declares the entity x");
  std::string laughs = "<!DOCTYPE a [<!ENTITY l0 'lol'>";
  for (int i = 1; i < 10; ++i) {
    laughs += "<!ENTITY l" + std::to_string(i) + " '";
    for (int j = 0; j < 10; ++j) laughs += "&l" + std::to_string(i - 1) + ";";
    laughs += "'>";
  }
  ExpectRefused(laughs + "]><a>&l9;</a>", "declares the entity l0");
  ExpectRefused(laughs + "]><a x='&l9;'/>", "declares the entity l0");
}

TEST_F(XmlEngineTest, NoOtherFileIsRead) {
  const test::TemporaryFolder folder;
  std::ofstream(folder.Path("secret")) << "secret";
  std::ofstream(folder.Path("type.dtd")) << "<!ENTITY x 'secret'>";
  const std::string url = "file://" + folder.Path("secret");
  const std::string type = "file://" + folder.Path("type.dtd");
  ExpectRefused("<!DOCTYPE a [<!ENTITY x SYSTEM '" + url + "'>]><a>&x;</a>", "declares the entity x");
  ExpectRefused("<!DOCTYPE a SYSTEM '" + type + "'><a>&x;</a>", "names an outside type");
  ExpectRefused("<!DOCTYPE a PUBLIC '-//X//Y' '" + type + "'><a/>", "names an outside type");
  EXPECT_EQ(RootText("<a><i:include xmlns:i='http://www.w3.org/2001/XInclude' parse='text' href='" + url +
                     "'/></a>"),
            "");
}

TEST_F(XmlEngineTest, SizesAndDepthsAreLimited) {
  const auto nested = [](int depth) {
    std::string text;
    for (int i = 0; i < depth; ++i) text += "<a>";
    for (int i = 0; i < depth; ++i) text += "</a>";
    return text;
  };
  EXPECT_EQ(RootText(nested(257)), "");
  ExpectRefused(nested(258), "Excessive depth");
  ExpectRefused(nested(100000), "Excessive depth");
  ExpectRefused(std::string(100'000'001, ' '), "larger than 100000000 bytes");
  ExpectRefused("<a>" + std::string(11'000'000, 'x') + "</a>", "Huge");
}

TEST_F(XmlEngineTest, LargeDocumentsAreRead) {
  std::string text = "<a>";
  for (int i = 0; i < 300000; ++i) text += "<line code='" + std::to_string(i) + "'>some text</line>\n";
  const auto document = Parse(text + "</a>");
  ASSERT_EQ(document->Error().code, 0) << document->Error().reason;
  EXPECT_EQ(document->Root()->Children("line").size(), 300000U);
}

TEST_F(XmlEngineTest, SeveralThreadsReadAtOnce) {
  const auto read = [this](int number) {
    for (int i = 0; i < 200; ++i) {
      const std::string text = std::to_string(number * 1000 + i);
      if (RootText("<a>" + text + "</a>") != text) return false;
      if (Parse("<a><" + text + "></a>")->Error().code == 0) return false;
    }
    return true;
  };
  std::vector<std::future<bool>> readers;
  for (int i = 0; i < 3; ++i) readers.push_back(std::async(std::launch::async, read, i));
  for (auto& reader : readers) EXPECT_TRUE(reader.get());
}

}  // namespace
}  // namespace talvex::adapters::libxml2
