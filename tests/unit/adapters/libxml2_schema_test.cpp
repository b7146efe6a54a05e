#include <algorithm>
#include <filesystem>
#include <string>

#include "support/xml_world.h"

namespace talvex::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr const char* kSchema = R"(<?xml version="1.0"?>
<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema">
  <xs:element name="Budgets">
    <xs:complexType>
      <xs:sequence>
        <xs:element name="Budget" maxOccurs="unbounded">
          <xs:complexType><xs:attribute name="code" type="xs:string" use="required"/></xs:complexType>
        </xs:element>
      </xs:sequence>
    </xs:complexType>
  </xs:element>
</xs:schema>)";

class XmlSchemas : public XmlTest {
 protected:
  static std::string Naming(const std::string& schema, const std::string& content) {
    return "<Budgets xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:noNamespaceSchemaLocation='" +
           schema + "'>\n" + content + "\n</Budgets>";
  }
  static std::string WithBackslashes(std::string path) {
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
  }
};

TEST_F(XmlSchemas, ADocumentIsValidatedAgainstTheSchemaThatItNames) {
  const std::string schema = folder_.Write("budgets.xsd", kSchema);
  const auto document = Loaded(Naming(schema, "<Budget code='A'/><Budget code='B'/>"));
  EXPECT_EQ(document->SelectNodes("//Budget")->Count(), 2);
  XmlDocument invalid;
  EXPECT_FALSE(invalid.LoadXml(Naming(schema, "<Budget code='A'/>\n<Budget/>")));
  EXPECT_NE(invalid.Error().code, 0);
  EXPECT_EQ(invalid.Error().line, 3);
  EXPECT_THAT(invalid.Error().reason,
              HasSubstr("Line 3: Element 'Budget': The attribute 'code' is required"));
  EXPECT_THAT(Refusal(Naming(schema, "<Other/>")), HasSubstr("'Other': This element is not expected"));
  EXPECT_THAT(Refusal(Naming(schema, "")), HasSubstr("Missing child element"));
}

TEST_F(XmlSchemas, TheSchemaIsNamedByAPathInAnyForm) {
  folder_.Write("budgets.xsd", kSchema);
  std::filesystem::create_directories(folder_.Path("with blank"));
  std::filesystem::copy_file(folder_.Path("budgets.xsd"), folder_.Path("with blank/Bugets Import1.xsd"));
  for (const std::string& path :
       {folder_.Path("budgets.xsd"), WithBackslashes(folder_.Path("budgets.xsd")),
        folder_.Path("with blank/Bugets Import1.xsd"), folder_.Path("with blank\\Bugets Import1.xsd"),
        WithBackslashes(folder_.Path("with blank/Bugets Import1.xsd")),
        " " + folder_.Path("budgets.xsd") + " ", folder_.Path("with blank/..\\budgets.xsd")}) {
    EXPECT_NE(Loaded(Naming(path, "<Budget code='A'/>"))->DocumentElement(), nullptr) << path;
    EXPECT_THAT(Refusal(Naming(path, "<Budget/>")), HasSubstr("'code' is required")) << path;
  }
}

TEST_F(XmlSchemas, AFileMayNameASchemaBesideIt) {
  folder_.Write("budgets.xsd", kSchema);
  XmlDocument document;
  EXPECT_TRUE(document.Load(folder_.Write("good.xml", Naming("budgets.xsd", "<Budget code='A'/>"))))
      << document.Error().reason;
  EXPECT_FALSE(document.Load(folder_.Write("bad.xml", Naming("budgets.xsd", "<Budget/>"))));
  EXPECT_THAT(document.Error().reason, HasSubstr("'code' is required"));
}

TEST_F(XmlSchemas, AMissingSchemaIsAParseError) {
  const std::string missing = folder_.Path("missing.xsd");
  const std::string reason = Refusal(Naming(missing, "<Budget code='A'/>"));
  EXPECT_THAT(reason, HasSubstr("The schema cannot be read: File not found: "));
  EXPECT_THAT(reason, HasSubstr(missing));
}

TEST_F(XmlSchemas, AFileThatIsNoSchemaIsAParseErrorThatTellsNothingOfIt) {
  for (const std::string content : {"top secret", "<secret/>", "", "<a><secret></a>",
                                    "<!DOCTYPE a SYSTEM 'http://localhost/secret.dtd'><a/>"}) {
    const std::string path = folder_.Path("schema-" + std::to_string(content.size()));
    folder_.Write("schema-" + std::to_string(content.size()), content);
    const std::string reason = Refusal(Naming(path, "<Budget code='A'/>"));
    EXPECT_THAT(reason, HasSubstr("The schema " + path + " cannot be used: ")) << content;
    EXPECT_THAT(reason, Not(HasSubstr("top secret")));
  }
}

TEST_F(XmlSchemas, AnAddressIsNoSchema) {
  folder_.Write("budgets.xsd", kSchema);
  for (const std::string& url : {std::string("http://localhost/budgets.xsd"),
                                 std::string("ftp://localhost/x"), "file://" + folder_.Path("budgets.xsd")}) {
    EXPECT_THAT(Refusal(Naming(url, "<Budget code='A'/>")), HasSubstr("it is not the path of a file")) << url;
  }
}

TEST_F(XmlSchemas, ASchemaMustBeWholeByItself) {
  folder_.Write("budgets.xsd", kSchema);
  for (const std::string part : {"<xs:include schemaLocation='budgets.xsd'/>",
                                 "<xs:import schemaLocation='http://localhost/budgets.xsd'/>",
                                 "<xs:redefine schemaLocation='budgets.xsd'/>"}) {
    const std::string schema =
        folder_.Write("outer" + std::to_string(part.size()) + ".xsd",
                      "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>" + part + "</xs:schema>");
    EXPECT_THAT(Refusal(Naming(schema, "<Budget code='A'/>")), HasSubstr("includes or imports another"))
        << part;
  }
}

TEST_F(XmlSchemas, ASchemaNamedAfterLoadingIsNotLookedAt) {
  const auto document = Loaded("<Budgets/>");
  document->DocumentElement()->SetAttribute("xmlns:xsi", "http://www.w3.org/2001/XMLSchema-instance");
  document->DocumentElement()->SetAttribute("xsi:noNamespaceSchemaLocation", folder_.Path("missing.xsd"));
  EXPECT_EQ(document->Error().code, 0);
  XmlDocument again;
  EXPECT_FALSE(again.LoadXml(document->Xml())) << "the next loading does";
}

TEST_F(XmlSchemas, OnlyTheInstanceNamespaceNamesASchema) {
  const std::string missing = folder_.Path("missing.xsd");
  EXPECT_NE(Loaded("<a noNamespaceSchemaLocation='" + missing + "'/>")->DocumentElement(), nullptr);
  EXPECT_NE(Loaded("<a xmlns:xsi='u' xsi:noNamespaceSchemaLocation='" + missing + "'/>")->DocumentElement(),
            nullptr);
  Refusal("<a xmlns:i='http://www.w3.org/2001/XMLSchema-instance' i:noNamespaceSchemaLocation='" + missing +
          "'/>");
}

}  // namespace
}  // namespace talvex::test
