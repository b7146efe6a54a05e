#include <fstream>
#include <iterator>
#include <string>

#include "automation/variant.h"
#include "support/error_of.h"
#include "support/xml_world.h"

namespace talvex::test {
namespace {

using automation::ObjectRef;
using automation::Variant;

class XmlObjects : public XmlTest {
 protected:
  static ObjectRef ObjectIn(const Variant& value) {
    EXPECT_TRUE(value.IsObject());
    return value.IsObject() ? value.As<ObjectRef>() : nullptr;
  }
};

TEST_F(XmlObjects, AreUsedByTheNamesOfTheirMembers) {
  const ObjectRef document = std::make_shared<XmlDocument>();
  EXPECT_EQ(document->Call("loadxml", "<a k='v'><b>1</b><b>2</b></a>"), Variant(true));
  EXPECT_EQ(document->Get("Xml"), Variant("<a k=\"v\"><b>1</b><b>2</b></a>"));

  const ObjectRef root = ObjectIn(document->Get("DocumentElement"));
  EXPECT_EQ(root->Class().Name(), "Platform.XmlNode");
  EXPECT_EQ(root->Get("Name"), Variant("a"));
  EXPECT_EQ(root->Get("Text"), Variant("12"));
  EXPECT_EQ(root->Call("Attribute", "k"), Variant("v"));
  EXPECT_EQ(root->Call("Attribute", "none"), Variant(""));

  const ObjectRef list = ObjectIn(document->Call("SelectNodes", "//b"));
  EXPECT_EQ(list->Class().Name(), "Platform.XmlNodeList");
  EXPECT_EQ(list->Get("Count"), Variant(2));
  EXPECT_EQ(ObjectIn(list->Call("Item", 0))->Get("Xml"), Variant("<b>1</b>"));
  EXPECT_EQ(ObjectIn(list->Call("Item", 1))->Get("Xml"), Variant("<b>2</b>"));
  EXPECT_TRUE(list->Call("Item", 2).IsEmpty());
  EXPECT_TRUE(list->Call("Item", -1).IsEmpty());

  EXPECT_EQ(ObjectIn(document->Call("SelectSingleNode", "//b[2]"))->Get("Text"), Variant("2"));
  EXPECT_TRUE(document->Call("SelectSingleNode", "//c").IsEmpty()) << "no node is Empty";
  EXPECT_EQ(ObjectIn(document->Call("SelectNodes", "//c"))->Get("Count"), Variant(0));
}

TEST_F(XmlObjects, TellWhyATextIsNoDocument) {
  const ObjectRef document = std::make_shared<XmlDocument>();
  EXPECT_EQ(ObjectIn(document->Get("ParseError"))->Get("ErrorCode"), Variant(0));
  EXPECT_EQ(document->Call("LoadXml", "<a>\n<b></a>"), Variant(false));
  const ObjectRef error = ObjectIn(document->Get("ParseError"));
  EXPECT_EQ(error->Get("ErrorCode"), Variant(76));
  EXPECT_EQ(error->Get("Reason"), Variant("Line 2: Opening and ending tag mismatch: b line 2 and a"));
  EXPECT_EQ(error->Get("Line"), Variant(2));
  EXPECT_TRUE(document->Get("DocumentElement").IsEmpty());
  EXPECT_EQ(document->Get("Xml"), Variant(""));
  EXPECT_EQ(document->Call("Load", folder_.Path("missing.xml")), Variant(false));
}

TEST_F(XmlObjects, AListStaysWhatWasSelected) {
  const auto document = Loaded("<a><b>1</b><b>2</b></a>");
  const auto list = document->SelectNodes("//b");
  list->Item(0)->Remove();
  EXPECT_EQ(list->Count(), 2);
  EXPECT_EQ(list->Item(0)->Text(), "1");
  EXPECT_EQ(document->SelectNodes("//b")->Count(), 1);
}

TEST_F(XmlObjects, FindTheOnlyElementOfAName) {
  const auto document =
      Loaded("<a><one> x </one><two>1</two><b><two>2</two></b><p:q xmlns:p='u'>3</p:q></a>");
  EXPECT_EQ(document->TextOfOnly("one"), " x ");
  EXPECT_EQ(document->TextOfOnly("two"), "");
  EXPECT_EQ(document->TextOfOnly("none"), "");
  EXPECT_EQ(document->TextOfOnly("One"), "");
  EXPECT_EQ(document->TextOfOnly(""), "");
  EXPECT_EQ(document->TextOfOnly("q"), "");
  EXPECT_EQ(document->TextOfOnly("p:q"), "3");
  EXPECT_EQ(document->TextOfOnly("a"), " x 123") << "the root, too";
}

TEST_F(XmlObjects, AreWrittenToAFileThatIsReadBackTheSame) {
  const auto document = Loaded("<?xml version='1.0' encoding='UTF-16'?><!-- c --><a k='é'>€<b/></a>");
  const std::string path = folder_.Path("saved.xml");
  document->Save(path);
  std::ifstream file(path);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- c --><a k=\"é\">€<b/></a>\n");
  XmlDocument again;
  ASSERT_TRUE(again.Load(path));
  EXPECT_EQ(again.Xml(), document->Xml());
  EXPECT_EQ(ErrorNumberOf([&] { document->Save(path); }), 58) << "never over another file";
}

TEST_F(XmlObjects, NeedAnEngine) {
  const platform::Environment::ForThread bare(std::make_shared<platform::Environment>());
  EXPECT_EQ(ErrorNumberOf([] { XmlDocument(); }), 91);
}

}  // namespace
}  // namespace talvex::test
