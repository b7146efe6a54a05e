#include <fstream>
#include <future>
#include <string>
#include <vector>

#include "support/xml_world.h"

namespace talvex::test {
namespace {

using platform::xml::Parsed;
using ::testing::HasSubstr;

class XmlReading : public XmlTest {
 protected:
  // The text of the document's root; a failure of the test when there is none.
  static std::string RootText(const std::string& text) {
    const XmlNodeRef root = Loaded(text)->DocumentElement();
    EXPECT_NE(root, nullptr) << text.substr(0, 80);
    return root == nullptr ? "" : root->Text();
  }
};

TEST_F(XmlReading, ReadsElementsTheirTextsAndAttributes) {
  const auto document = Loaded(
      "<?xml version=\"1.0\"?>\n<site name='A &amp; B' empty=''>\n <a>1</a><b/>text<a>2<c>3</c></a></site>");
  EXPECT_EQ(document->Error().reason, "");
  const XmlNodeRef root = document->DocumentElement();
  EXPECT_EQ(root->Name(), "site");
  EXPECT_EQ(root->Attribute("name"), "A & B");
  EXPECT_EQ(root->Attribute("empty"), "");
  EXPECT_EQ(root->Attribute("NAME"), "");
  EXPECT_EQ(Names(root->Attributes()), (std::vector<std::string>{"name", "empty"}));
  EXPECT_EQ(Texts(root->Attributes()), (std::vector<std::string>{"A & B", ""}));
  EXPECT_EQ(Names(root->Children("")), (std::vector<std::string>{"a", "b", "a"}));
  const auto children = root->Children("a");
  EXPECT_EQ(Texts(children), (std::vector<std::string>{"1", "23"}));
  EXPECT_EQ(children[1]->Children("c").at(0)->Text(), "3");
  EXPECT_TRUE(root->Children("c").empty()) << "children only, not their children";
  EXPECT_TRUE(root->Children("A").empty());
}

TEST_F(XmlReading, TextHasCharacterDataButNoComments) {
  EXPECT_EQ(RootText("<a>x<!-- no --><![CDATA[<y>&]]><?pi no?>&lt;&#233;&#x20AC;</a>"), "x<y>&<é€");
  EXPECT_EQ(RootText("<a/>"), "");
  EXPECT_EQ(RootText("<a> \r\n </a>"), " \n ");
}

TEST_F(XmlReading, NamesCarryTheirPrefix) {
  const auto document = Loaded("<p:a xmlns:p='u' p:x='1' x='2'><p:b/><b/><pb/><p.b/></p:a>");
  const XmlNodeRef root = document->DocumentElement();
  EXPECT_EQ(root->Name(), "p:a");
  EXPECT_EQ(root->Attribute("p:x"), "1");
  EXPECT_EQ(root->Attribute("x"), "2");
  EXPECT_EQ(root->Attribute("xmlns:p"), "u");
  EXPECT_EQ(root->Attribute("xmlns:q"), "");
  EXPECT_EQ(Names(root->Attributes()), (std::vector<std::string>{"p:x", "x"}));
  EXPECT_EQ(root->Children("b").size(), 1U);
  EXPECT_EQ(root->Children("p:b").size(), 1U);
}

TEST_F(XmlReading, ANodeKeepsItsDocumentAlive) {
  XmlNodeRef inner;
  {
    const auto document = Loaded("<a><b><c x='1'>deep</c></b></a>");
    inner = document->SelectSingleNode("//c");
    document->LoadXml("<other/>");
  }
  EXPECT_EQ(inner->Text(), "deep");
  EXPECT_EQ(inner->Attribute("x"), "1");
}

TEST_F(XmlReading, ATextIsUtf8WhateverItsDeclarationClaims) {
  for (const std::string encoding : {"UTF-8", "ISO-8859-1", "UTF-16", "windows-1252", "no-such-encoding"}) {
    EXPECT_EQ(RootText("<?xml version=\"1.0\" encoding=\"" + encoding + "\"?><a>é€</a>"), "é€") << encoding;
  }
  EXPECT_EQ(RootText("\xef\xbb\xbf<a>é</a>"), "é") << "with a byte order mark";
}

TEST_F(XmlReading, AFileIsReadInTheEncodingThatItDeclares) {
  const std::string latin = "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xe9</a>";
  const std::string utf16("\xff\xfe<\0a\0>\0\xac\x20<\0/\0a\0>\0", 18);
  XmlDocument document;
  ASSERT_TRUE(document.Load(folder_.Write("latin.xml", latin))) << document.Error().reason;
  EXPECT_EQ(document.DocumentElement()->Text(), "é");
  ASSERT_TRUE(document.Load(folder_.Write("wide.xml", utf16))) << document.Error().reason;
  EXPECT_EQ(document.DocumentElement()->Text(), "€");
  EXPECT_EQ(document.Xml(), "<a>€</a>");
  EXPECT_FALSE(document.Load(folder_.Write("broken.xml", "<a>\xe9</a>")));
  EXPECT_FALSE(document.Load(folder_.Write("nul.xml", std::string("<a/>\n\0<b", 8))));
}

TEST_F(XmlReading, AFileThatCannotBeReadIsAParseError) {
  XmlDocument document;
  ASSERT_TRUE(document.LoadXml("<a/>"));
  EXPECT_FALSE(document.Load(folder_.Path("missing.xml")));
  EXPECT_NE(document.Error().code, 0);
  EXPECT_EQ(document.Error().line, 0);
  EXPECT_THAT(document.Error().reason, HasSubstr("The document cannot be read: File not found: "));
  EXPECT_EQ(document.DocumentElement(), nullptr);
  ASSERT_TRUE(document.LoadXml("<b/>"));
  EXPECT_EQ(document.Error().code, 0) << "a later loading clears the error";
  EXPECT_EQ(document.Error().reason, "");
}

struct Malformed {
  std::string text;
  std::string reason;
  std::int32_t line;
};

TEST_F(XmlReading, SaysWhereAndWhyATextIsNoDocument) {
  const std::vector<Malformed> rows = {
      {"<a>\n<b>\n</a>", "Line 3: Opening and ending tag mismatch: b line 2 and a", 3},
      {"", "Line 1: Document is empty", 1},
      {"<a/><b/>", "Line 1: Extra content at the end of the document", 1},
      {"<a>\n&nothing;</a>", "Line 2: Entity 'nothing' not defined", 2},
      {"<a>\n<p:b/></a>", "Line 2: Namespace prefix p on b is not defined", 2},
      {"<a x='1' x='2'/>", "Line 1: Attribute x redefined", 1},
      {"<a>\xe9</a>", "Line 1: Input is not proper UTF-8", 1},
      {std::string("<a>\n\0</a>", 9), "Line 2: A NUL character is not allowed", 2},
      {std::string("<a/>\0", 5), "Line 1: A NUL character is not allowed", 1},
      {"<a>\x01</a>", "Line 1: PCDATA invalid Char value 1", 1},
  };
  for (const Malformed& row : rows) {
    XmlDocument document;
    EXPECT_FALSE(document.LoadXml(row.text)) << row.text;
    EXPECT_EQ(document.Error().reason.substr(0, row.reason.size()), row.reason);
    EXPECT_EQ(document.Error().line, row.line) << row.text;
    EXPECT_EQ(document.Error().reason.find('\n'), std::string::npos);
    EXPECT_FALSE(document.Error().reason.ends_with(' '));
    EXPECT_EQ(Refusal(row.text), document.Error().reason);
  }
}

TEST_F(XmlReading, ADocumentTypeWithoutEntitiesIsFine) {
  EXPECT_EQ(RootText("<!DOCTYPE a [<!ELEMENT a ANY><!ATTLIST a x CDATA #IMPLIED>]><a x='y'>x</a>"), "x");
}

TEST_F(XmlReading, EntitiesAreNeverDeclared) {
  EXPECT_THAT(Refusal("<!DOCTYPE a [\n<!ENTITY x 'y'>]><a>&x;</a>"),
              HasSubstr("Line 2: The document declares the entity x, which is refused"));
  EXPECT_THAT(Refusal("<!DOCTYPE a [<!ENTITY % x '<!ENTITY y \"z\">'>%x;]><a>&y;</a>"),
              HasSubstr("declares the entity x"));
  std::string laughs = "<!DOCTYPE a [<!ENTITY l0 'lol'>";
  for (int i = 1; i < 10; ++i) {
    laughs += "<!ENTITY l" + std::to_string(i) + " '";
    for (int j = 0; j < 10; ++j) laughs += "&l" + std::to_string(i - 1) + ";";
    laughs += "'>";
  }
  EXPECT_THAT(Refusal(laughs + "]><a>&l9;</a>"), HasSubstr("declares the entity l0"));
  EXPECT_THAT(Refusal(laughs + "]><a x='&l9;'/>"), HasSubstr("declares the entity l0"));
}

TEST_F(XmlReading, DefaultsOfAttributesAreRefused) {
  std::string flood = "<!DOCTYPE a [<!ATTLIST b x CDATA '" + std::string(1'000'000, 'x') + "'>]><a>";
  for (int i = 0; i < 100'000; ++i) flood += "<b/>";
  EXPECT_THAT(Refusal(flood + "</a>"), HasSubstr("declares a default for the attribute x, which is refused"));
  EXPECT_THAT(Refusal("<!DOCTYPE a [<!ATTLIST a x CDATA #FIXED 'y'>]><a/>"), HasSubstr("declares a default"));
}

TEST_F(XmlReading, NoOtherFileIsRead) {
  const std::string url = "file://" + folder_.Write("secret", "secret");
  const std::string type = "file://" + folder_.Write("type.dtd", "<!ENTITY x 'secret'>");
  EXPECT_THAT(Refusal("<!DOCTYPE a [<!ENTITY x SYSTEM '" + url + "'>]><a>&x;</a>"),
              HasSubstr("declares the entity x"));
  EXPECT_THAT(Refusal("<!DOCTYPE a SYSTEM '" + type + "'><a>&x;</a>"), HasSubstr("names an outside type"));
  EXPECT_THAT(Refusal("<!DOCTYPE a PUBLIC '-//X//Y' '" + type + "'><a/>"),
              HasSubstr("names an outside type"));
  EXPECT_EQ(RootText("<a><i:include xmlns:i='http://www.w3.org/2001/XInclude' parse='text' href='" + url +
                     "'/></a>"),
            "");
}

std::string Nested(int depth) {
  std::string text;
  for (int i = 0; i < depth; ++i) text += "<a>";
  for (int i = 0; i < depth; ++i) text += "</a>";
  return text;
}

TEST_F(XmlReading, SizesAndDepthsAreLimited) {
  EXPECT_EQ(RootText(Nested(257)), "");
  EXPECT_THAT(Refusal(Nested(258)), HasSubstr("Excessive depth"));
  EXPECT_THAT(Refusal(Nested(100000)), HasSubstr("Excessive depth"));
  EXPECT_THAT(Refusal(std::string(100'000'001, ' ')), HasSubstr("larger than 100000000 bytes"));
  EXPECT_THAT(Refusal("<a>" + std::string(11'000'000, 'x') + "</a>"), HasSubstr("Huge"));
}

TEST_F(XmlReading, LargeDocumentsAreRead) {
  std::string text = "<a>";
  for (int i = 0; i < 300000; ++i) text += "<line code='" + std::to_string(i) + "'>some text</line>\n";
  EXPECT_EQ(Loaded(text + "</a>")->DocumentElement()->Children("line").size(), 300000U);
}

TEST_F(XmlReading, SeveralThreadsReadAtOnce) {
  const adapters::libxml2::XmlEngine engine;
  const auto read = [&engine](int number) {
    for (int i = 0; i < 200; ++i) {
      const std::string text = std::to_string(number * 1000 + i);
      const Parsed parsed = engine.ParseText("<a>" + text + "</a>");
      if (parsed.tree->Text(parsed.tree->Root()) != text) return false;
      if (engine.ParseText("<a><" + text + "></a>").error.code == 0) return false;
    }
    return true;
  };
  std::vector<std::future<bool>> readers;
  for (int i = 0; i < 3; ++i) readers.push_back(std::async(std::launch::async, read, i));
  for (auto& reader : readers) EXPECT_TRUE(reader.get());
}

TEST_F(XmlReading, NothingIsEverWrittenToStandardError) {
  ::testing::internal::CaptureStderr();
  XmlDocument document;
  EXPECT_FALSE(document.LoadXml("<a><b></a>"));
  EXPECT_FALSE(document.LoadXml("<!DOCTYPE a SYSTEM 'http://localhost/a.dtd'><a/>"));
  EXPECT_TRUE(document.LoadXml("<a/>"));
  EXPECT_ANY_THROW(static_cast<void>(document.SelectNodes("//a[")));
  EXPECT_ANY_THROW(static_cast<void>(document.TransformedBy(document)));
  EXPECT_ANY_THROW(static_cast<void>(document.CreateElement("<")));
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace talvex::test
