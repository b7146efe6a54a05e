#include <filesystem>
#include <string>
#include <vector>

#include "support/error_of.h"
#include "support/xml_world.h"

namespace talvex::test {
namespace {

using ::testing::HasSubstr;

class Stylesheets : public XmlTest {
 protected:
  static std::string Sheet(const std::string& content) {
    return "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform' "
           "xmlns:exsl='http://exslt.org/common' extension-element-prefixes='exsl'>" +
           content + "</xsl:stylesheet>";
  }
  static std::string Rule(const std::string& content) {
    return Sheet("<xsl:template match='/'><out>" + content + "</out></xsl:template>");
  }
  static std::string Result(const std::string& source, const std::string& stylesheet) {
    return Loaded(source)->TransformedBy(*Loaded(stylesheet));
  }
  // Why the stylesheet cannot be used.
  static std::string Fault(const std::string& stylesheet) {
    const auto source = Loaded("<a><b>1</b></a>");
    const auto sheet = Loaded(stylesheet);
    std::string result;
    ::testing::internal::CaptureStderr();
    const auto error = ErrorOf([&] { result = source->TransformedBy(*sheet); });
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(error.number, -2147467259) << result;
    EXPECT_EQ(error.source, "Talvex.Platform.Xml");
    EXPECT_THAT(error.description, ::testing::StartsWith("The stylesheet cannot be used: "));
    EXPECT_GT(error.description.size(), 32U) << "a reason follows";
    return error.description;
  }
};

TEST_F(Stylesheets, MakeATextOfADocument) {
  const std::string sheet = Sheet(
      "<xsl:output method='xml' omit-xml-declaration='yes'/>"
      "<xsl:template match='/'><out><xsl:for-each select='//b'><c n='{@k}'><xsl:value-of select='.'/></c>"
      "</xsl:for-each></out></xsl:template>");
  EXPECT_EQ(Result("<a><b k='1'>x</b><b k='2'>é</b></a>", sheet),
            "<out><c n=\"1\">x</c><c n=\"2\">é</c></out>\n");
}

TEST_F(Stylesheets, TheResultIsUtf8WhateverEncodingTheyAskFor) {
  for (const std::string encoding :
       {"", "encoding='UTF-8'", "encoding='UTF-16'", "encoding='ISO-8859-1'", "encoding='no-such'"}) {
    const std::string sheet = Sheet("<xsl:output method='xml' " + encoding +
                                    "/><xsl:template match='/'><out>é€</out></xsl:template>");
    EXPECT_EQ(Result("<a/>", sheet), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<out>é€</out>\n")
        << encoding;
  }
  EXPECT_EQ(Result("<a/>", Sheet("<xsl:output method='text' encoding='UTF-16'/>"
                                 "<xsl:template match='/'>é€</xsl:template>")),
            "é€");
}

TEST_F(Stylesheets, NeitherTheDocumentNorTheStylesheetIsChanged) {
  const auto source = Loaded("<a> <b> </b> <b>1</b> </a>");
  const auto sheet =
      Loaded(Sheet("<xsl:strip-space elements='*'/><xsl:output method='text'/>"
                   "<xsl:template match='/'><xsl:value-of select='count(//text())'/></xsl:template> "));
  const XmlNodeRef blank = source->SelectSingleNode("//b/text()");
  const std::string source_before = source->Xml();
  const std::string sheet_before = sheet->Xml();
  EXPECT_EQ(source->TransformedBy(*sheet), "1");
  EXPECT_EQ(source->TransformedBy(*sheet), "1");
  EXPECT_EQ(source->Xml(), source_before);
  EXPECT_EQ(sheet->Xml(), sheet_before);
  EXPECT_EQ(blank->Text(), " ");
}

TEST_F(Stylesheets, AnEmptyResultIsAnEmptyText) {
  EXPECT_EQ(Result("<a/>", Sheet("<xsl:output method='text'/><xsl:template match='/'/>")), "");
}

TEST_F(Stylesheets, TheirMessagesGoNowhere) {
  const auto source = Loaded("<a/>");
  const auto sheet = Loaded(Rule("<xsl:message>noise</xsl:message>x"));
  ::testing::internal::CaptureStderr();
  EXPECT_THAT(source->TransformedBy(*sheet), HasSubstr("<out>x</out>"));
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  EXPECT_THAT(Fault(Rule("<xsl:message terminate='yes'>no budget</xsl:message>")), HasSubstr("no budget"));
}

TEST_F(Stylesheets, AWrongStylesheetIsAnError) {
  Fault("<a/>");
  Fault(Rule("<xsl:value-of select='//a['/>"));
  Fault(Rule("<xsl:value-of select='nosuch()'/>"));
  Fault(Rule("<xsl:value-of select='$undeclared'/>"));
  Fault(Rule("<xsl:nosuch/>"));
  Fault(Rule("<xsl:call-template name='nosuch'/>"));
  EXPECT_EQ(ErrorNumberOf([&] { static_cast<void>(Loaded("<a/>")->TransformedBy(XmlDocument())); }),
            -2147467259);
}

TEST_F(Stylesheets, ATemplateWithoutAnEndIsAnError) {
  EXPECT_THAT(Fault(Sheet("<xsl:template match='/'><xsl:call-template name='t'/></xsl:template>"
                          "<xsl:template name='t'><a><xsl:call-template name='t'/></a></xsl:template>")),
              HasSubstr("recursion"));
}

TEST_F(Stylesheets, ReadNoOtherDocument) {
  const std::string secret = folder_.Write("secret.xml", "<secret>s</secret>");
  for (const std::string& place : {secret, "file://" + secret, std::string("http://localhost:1/secret.xml"),
                                   std::string("secret.xml"), std::string("ftp://localhost:1/secret.xml")}) {
    Fault(Rule("<xsl:copy-of select=\"document('" + place + "')\"/>"));
    Fault(Rule("<xsl:copy-of select=\"document('" + place + "', /)\"/>"));
    Fault(Sheet("<xsl:variable name='v' select=\"document('" + place +
                "')\"/><xsl:template match='/'><out><xsl:copy-of select='$v'/></out></xsl:template>"));
  }
}

TEST_F(Stylesheets, IncludeAndImportNoOther) {
  const std::string inner =
      folder_.Write("inner.xsl", Sheet("<xsl:template name='t'>from inner</xsl:template>"));
  for (const std::string element : {"include", "import"}) {
    for (const std::string& place :
         {inner, "file://" + inner, std::string("inner.xsl"), std::string("http://localhost:1/inner.xsl")}) {
      Fault(Sheet("<xsl:" + element + " href='" + place +
                  "'/><xsl:template match='/'><out>x</out></xsl:template>"));
    }
  }
  XmlDocument from_file;
  ASSERT_TRUE(from_file.Load(folder_.Write(
      "outer.xsl", Sheet("<xsl:import href='inner.xsl'/><xsl:template match='/'><out/></xsl:template>"))));
  EXPECT_EQ(ErrorNumberOf([&] { static_cast<void>(Loaded("<a/>")->TransformedBy(from_file)); }), -2147467259)
      << "not even the file beside it";
}

TEST_F(Stylesheets, WriteNoFile) {
  const std::string target = folder_.Path("written.xml");
  Fault(Rule("<exsl:document href='" + target + "'><stolen/></exsl:document>"));
  Fault(Rule("<exsl:document href='file://" + target + "'><stolen/></exsl:document>"));
  Fault(Rule("<exsl:document href='" + folder_.Path("new/written.xml") + "'><stolen/></exsl:document>"));
  EXPECT_FALSE(std::filesystem::exists(target));
  EXPECT_FALSE(std::filesystem::exists(folder_.Path("new")));
  // Other namespaces under which the library knows the same element.
  for (const std::string name_space :
       {"org.apache.xalan.xslt.extensions.Redirect", "http://icl.com/saxon", "http://www.jclark.com/xt"}) {
    const std::string element = name_space == "org.apache.xalan.xslt.extensions.Redirect" ? "write"
                                : name_space == "http://icl.com/saxon"                    ? "output"
                                                                                          : "document";
    static_cast<void>(ErrorOf([&] {
      static_cast<void>(Result(
          "<a/>", "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform' xmlns:w='" +
                      name_space + "' extension-element-prefixes='w'><xsl:template match='/'><out><w:" +
                      element + " file='" + target + "' href='" + target + "'><stolen/></w:" + element +
                      "></out></xsl:template></xsl:stylesheet>"));
    }));
    EXPECT_FALSE(std::filesystem::exists(target)) << name_space;
  }
}

}  // namespace
}  // namespace talvex::test
