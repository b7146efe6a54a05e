#include <random>
#include <string>
#include <vector>

#include "adapters/libxml2/attribute_pattern.h"
#include "platform/xml/xpath_literal.h"
#include "support/error_of.h"
#include "support/xml_world.h"

namespace talvex::test {
namespace {

using adapters::libxml2::ParseAttributePattern;
using platform::xml::XPathLiteral;
using ::testing::HasSubstr;

class XmlSelection : public XmlTest {
 protected:
  static std::vector<std::string> Selected(XmlDocument& document, const std::string& xpath) {
    return Texts(document.SelectNodes(xpath)->Nodes());
  }
  // The attribute "id" of the elements selected: which they are, and in which order.
  static std::vector<std::string> Ids(XmlDocument& document, const std::string& xpath) {
    std::vector<std::string> ids;
    for (const auto& node : document.SelectNodes(xpath)->Nodes()) ids.push_back(node->Attribute("id"));
    return ids;
  }
};

TEST_F(XmlSelection, SelectsOneOrAllInDocumentOrder) {
  const auto document = Loaded("<r><a>1</a><b>2<a>3</a></b><a k='v'>4</a></r>");
  using Words = std::vector<std::string>;
  EXPECT_EQ(Selected(*document, "//a"), (Words{"1", "3", "4"}));
  EXPECT_EQ(Selected(*document, "//a[3]"), Words());
  EXPECT_EQ(Selected(*document, "(//a)[3] | (//a)[1] | //b"), (Words{"1", "23", "4"}));
  EXPECT_EQ(Selected(*document, "//@k | //a/text()"), (Words{"1", "3", "v", "4"}));
  EXPECT_EQ(document->SelectSingleNode("//a[last()]/preceding::a")->Text(), "1");
  EXPECT_EQ(document->SelectSingleNode("//none"), nullptr);
  EXPECT_EQ(document->SelectNodes("//none")->Count(), 0);
  EXPECT_EQ(document->SelectNodes("namespace::*")->Count(), 0) << "a namespace is no node of the document";
}

TEST_F(XmlSelection, ARelativePathBeginsAtTheDocument) {
  const auto document = Loaded("<a><c><b>1</b><d>2</d></c><c><b>3</b></c></a>");
  using Words = std::vector<std::string>;
  EXPECT_EQ(Selected(*document, "a/c/b"), (Words{"1", "3"}));
  EXPECT_EQ(Selected(*document, "a/c/*"), (Words{"1", "2", "3"}));
  EXPECT_EQ(Selected(*document, "*"), (Words{"123"}));
  EXPECT_EQ(Selected(*document, ".//d"), (Words{"2"}));
  EXPECT_EQ(Selected(*document, "c/b"), Words()) << "the root is one step away";
  EXPECT_EQ(Selected(*document, ".."), Words());
  EXPECT_EQ(document->SelectSingleNode("a/c[2]/b")->Text(), "3");
  EXPECT_EQ(document->SelectSingleNode(".")->Name(), "#document");
  EXPECT_EQ(XmlDocument().SelectSingleNode("a"), nullptr);
}

TEST_F(XmlSelection, PrefixesAreThoseOfTheRoot) {
  const auto document = Loaded("<p:r xmlns:p='u'><p:a/><a/></p:r>");
  EXPECT_EQ(document->SelectNodes("//p:a")->Count(), 1);
  EXPECT_EQ(document->SelectNodes("//a")->Count(), 1);
  EXPECT_EQ(ErrorNumberOf([&] { static_cast<void>(document->SelectNodes("//q:a")); }), -2147467259);
}

TEST_F(XmlSelection, AWrongExpressionIsAnError) {
  const auto document = Loaded("<r><a/></r>");
  const std::vector<std::string> wrong = {"",
                                          "//a[",
                                          "//a]",
                                          "a b",
                                          "//a[@k='v]",
                                          "nosuch()",
                                          "$variable",
                                          "document('x')",
                                          "//p:a",
                                          "count(//a)",
                                          "'text'",
                                          "1 = 1",
                                          "\xe9",
                                          std::string("//a\0", 4),
                                          "//a[@k='\x01']",
                                          std::string(50000, '(') + "//a" + std::string(50000, ')')};
  for (const std::string& xpath : wrong) {
    const auto error = ErrorOf([&] { static_cast<void>(document->SelectNodes(xpath)); });
    EXPECT_EQ(error.number, -2147467259) << xpath.substr(0, 40);
    EXPECT_THAT(error.description, HasSubstr("The XPath expression cannot be evaluated: "))
        << error.description;
    EXPECT_EQ(ErrorNumberOf([&] { static_cast<void>(document->SelectSingleNode(xpath)); }), -2147467259);
  }
}

TEST_F(XmlSelection, AnEmptyDocumentHasNothingToSelect) {
  XmlDocument document;
  EXPECT_EQ(document.SelectSingleNode("//a"), nullptr);
  EXPECT_EQ(document.SelectSingleNode("//a[@k='v']"), nullptr);
}

struct Pattern {
  std::string xpath;
  std::string parts;  // Element, attribute and value, joined by "|"; empty for another form of expression.
};

TEST_F(XmlSelection, KnowsTheFormThatItsIndexAnswers) {
  const std::vector<Pattern> rows = {
      {"//a[@k='v']", "a|k|v"},
      {"//BudgetLine[@budgetCode='IT-1 \"x\" é']", "BudgetLine|budgetCode|IT-1 \"x\" é"},
      {"//a[@k=\"it's\"]", "a|k|it's"},
      {"//a[@k = 'v']", "a|k|v"},
      {"//a.b-c_1[@_k='']", "a.b-c_1|_k|"},
      {"//a[@k='v']/b", ""},
      {"/a[@k='v']", ""},
      {" //a[@k='v']", ""},
      {"//a[@k='v'] ", ""},
      {"//p:a[@k='v']", ""},
      {"//a[@p:k='v']", ""},
      {"//*[@k='v']", ""},
      {"//a[@k='v' or @k='w']", ""},
      {"//a[@k='v\"]", ""},
      {"//a[@k=v]", ""},
      {"//a[k='v']", ""},
      {"//1a[@k='v']", ""},
      {"//a[@k!='v']", ""},
      {"//a[@k='", ""},
      {"//", ""},
      {"", ""},
  };
  for (const Pattern& row : rows) {
    const auto pattern = ParseAttributePattern(row.xpath);
    const std::string parts =
        pattern ? pattern->element + "|" + pattern->attribute + "|" + pattern->value : std::string();
    EXPECT_EQ(parts, row.parts) << row.xpath;
  }
}

// Documents of few names and values, so that much matches and much does not.
class RandomDocument {
 public:
  explicit RandomDocument(std::uint32_t seed) : random_(seed) {}

  std::string Xml() { return "<a xmlns:p='u'>" + Content(5) + "</a>"; }
  std::string Name() { return Pick({"a", "b", "a", "b", "p:a"}); }
  std::string Value() { return Pick({"1", "2", "", " 1", "é", "x&amp;y", "&#10;"}); }
  std::size_t Below(std::size_t limit) { return random_() % limit; }

 private:
  std::string Pick(const std::vector<std::string>& choices) { return choices[Below(choices.size())]; }

  std::string Content(int depth) {
    std::string content;
    for (std::size_t i = Below(5); depth > 0 && i > 0; --i) {
      const std::string name = Name();
      content += "<" + name + " id='" + std::to_string(next_id_++) + "'";
      if (Below(3) > 0) content += " k='" + Value() + "'";
      if (Below(3) == 0) content += " p:k='" + Value() + "'";
      if (Below(3) == 0) content += " j='" + Value() + "'";
      content += ">" + Content(depth - 1) + "text<!-- c --></" + name + ">";
    }
    return content;
  }

  std::mt19937 random_;
  int next_id_ = 0;
};

TEST_F(XmlSelection, TheIndexSelectsWhatPlainXPathSelects) {
  std::size_t selected = 0;
  for (std::uint32_t seed = 1; seed <= 60; ++seed) {
    RandomDocument random(seed);
    const auto document = Loaded(random.Xml());
    const auto compare = [&] {
      for (const std::string element : {"a", "b", "none"}) {
        for (const std::string attribute : {"k", "j", "none"}) {
          for (const std::string value : {"1", "2", "", " 1", "é", "x&y", "\n", "none"}) {
            const std::string test = element + "[@" + attribute + "='" + value + "']";
            const auto ids = Ids(*document, "//" + test);
            ASSERT_EQ(ids, Ids(*document, "/descendant::" + test)) << "seed " << seed << " " << test;
            selected += ids.size();
          }
        }
      }
    };
    compare();
    const auto all = document->SelectNodes("//*")->Nodes();
    for (int change = 0; change < 8; ++change) {
      const XmlNodeRef& node = all[random.Below(all.size())];
      switch (random.Below(4)) {
        case 0:
          node->SetAttribute("k", "2");
          break;
        case 1:
          if (node != all.front()) node->Remove();
          break;
        case 2:
          node->SetText("x");
          break;
        default: {
          const XmlNodeRef added = document->CreateElement("b");
          added->SetAttribute("k", "1");
          node->Append(*added);
        }
      }
      compare();
    }
  }
  EXPECT_GT(selected, 10'000U) << "or else the documents prove little";
}

TEST_F(XmlSelection, AskingForEachOfManyValuesIsNotQuadratic) {
  constexpr int kLines = 50'000;
  std::string text = "<r>";
  for (int i = 0; i < kLines; ++i) text += "<BudgetLine budgetCode='" + std::to_string(i) + "'/>";
  const auto document = Loaded(text + "</r>");
  // Walking the document for each takes longer than a test may; from the index it is a fraction of a second.
  for (int i = 0; i < kLines; ++i) {
    ASSERT_EQ(document->SelectNodes("//BudgetLine[@budgetCode='" + std::to_string(i) + "']")->Count(), 1);
  }
}

TEST_F(XmlSelection, ManyIndexesDoNotStayForEver) {
  const auto document = Loaded("<r><a k='v'/></r>");
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(document->SelectNodes("//a[@n" + std::to_string(i) + "='v']")->Count(), 0);
    EXPECT_EQ(document->SelectNodes("//a[@k='v']")->Count(), 1);
  }
}

TEST_F(XmlSelection, ALiteralTakesWhicheverQuoteFits) {
  EXPECT_EQ(XPathLiteral("plain"), "'plain'");
  EXPECT_EQ(XPathLiteral(""), "''");
  EXPECT_EQ(XPathLiteral("it's"), "\"it's\"");
  EXPECT_EQ(XPathLiteral("say \"x\""), "'say \"x\"'");
  EXPECT_EQ(XPathLiteral("it's \"x\""), "concat('it',\"'\",'s \"x\"')");
  for (const std::string code : {"it's", "\"", "'\"'", "''\"\"", "a]b", "é"}) {
    XmlDocument document;
    document.SetRoot(*document.CreateElement("a"));
    document.DocumentElement()->SetAttribute("k", code);
    EXPECT_EQ(document.SelectNodes("//a[@k=" + XPathLiteral(code) + "]")->Count(), 1) << code;
    EXPECT_EQ(document.SelectNodes("//a[@k=" + XPathLiteral(code + "x") + "]")->Count(), 0) << code;
  }
}

}  // namespace
}  // namespace talvex::test
