// What must hold of a budget, a line and a relation before it is loaded: one row per rule.
#include <gtest/gtest.h>

#include "platform/xml/xml_document.h"
#include "support/error_of.h"
#include "unit/exchange/exchange_world.h"

namespace talvex::test {

namespace {

using automation::Dictionary;
using platform::xml::XmlDocument;
using platform::xml::XmlDocumentRef;

XmlDocumentRef Loaded(const std::string& xml) {
  auto document = std::make_shared<XmlDocument>();
  EXPECT_TRUE(document->LoadXml(xml)) << document->Error().reason;
  return document;
}

std::shared_ptr<Dictionary> Keys(const std::vector<std::string>& keys) {
  auto dictionary = std::make_shared<Dictionary>();
  for (const std::string& key : keys) dictionary->SetItem(key, key);
  return dictionary;
}

void AddAnna(const TestInstallation& site) {
  site.Sql(
      "INSERT INTO SUITEUSER (USERID, FULLNAME, EMAIL, LOCALEID) VALUES ('anna', 'Anna', 'a@example.com', "
      "1033)");
}

struct Verdict {
  bool valid = false;
  std::string errors;
};

// The first header of a document, held against one office, charge type and currency.
Verdict Checked(const std::string& xml) {
  const XmlDocumentRef document = Loaded(xml);
  Verdict verdict;
  verdict.valid = Budget().ValidateFields("anna", document->SelectSingleNode("//BudgetHeader"), document,
                                          Keys({"Lyon"}), Keys({"IT"}), Keys({"EUR"}), verdict.errors);
  return verdict;
}

// A header that is right but for one field, named in capitals.
std::string HeaderWith(const std::string& field, const std::string& value) {
  std::string xml = "<I><BudgetHeader budgetCode='A'>";
  const std::pair<const char*, const char*> fields[] = {
      {"BUDGETTYPE", "STANDARD"}, {"CURRENCY", "EUR"},      {"ADMINISTRATIVEOFFICE", "Lyon"},
      {"CHARGETYPE", "IT"},       {"BUDGETHOLDER", "anna"}, {"APPROVALREQD", "YES"},
      {"WARNMULTIPLES", "10"}};
  for (const auto& [name, right] : fields) {
    xml.append("<").append(name).append(">").append(name == field ? value : right);
    xml.append("</").append(name).append(">");
  }
  return xml + "</BudgetHeader></I>";
}

constexpr const char* kNoType = "\r\nThe budget type is missing-A";
constexpr const char* kNoCurrency = "\r\nThe currency is missing-A\r\nThe currency is unknown-A";
constexpr const char* kUnknownCurrency = "\r\nThe currency is unknown-A";
constexpr const char* kUnknownOffice = "\r\nThe administrative office is unknown-A";
constexpr const char* kNoChargeType = "\r\nThe charge type is missing-A\r\nThe charge type is unknown-A";
constexpr const char* kUnknownChargeType = "\r\nThe charge type is unknown-A";
constexpr const char* kUnknownHolder = "\r\nThe budget holder is not a known user-A";
constexpr const char* kApproval = "\r\nAPPROVAL REQUIRED SHOULD BE YES OR NO-A";
constexpr const char* kStep = "\r\nThe warning step must be a percentage from 0 to 100-A";
constexpr const char* kNumeric = "\r\nWARN MULTIPLES SHOULD BE NUMERIC VALUE-A";

TEST(ImportChecks, EachFieldOfAHeader) {
  const struct {
    const char* field;
    const char* value;
    const char* errors;
  } rows[] = {
      {"BUDGETTYPE", "", kNoType},
      {"BUDGETTYPE", "  ", kNoType},
      {"BUDGETTYPE", "anything", ""},
      {"CURRENCY", "", kNoCurrency},
      {"CURRENCY", " ", kNoCurrency},
      {"CURRENCY", "GBP", kUnknownCurrency},
      {"CURRENCY", "eur", kUnknownCurrency},
      {"CURRENCY", " EUR", kUnknownCurrency},
      {"ADMINISTRATIVEOFFICE", "", ""},
      {"ADMINISTRATIVEOFFICE", "Paris", kUnknownOffice},
      {"ADMINISTRATIVEOFFICE", " ", kUnknownOffice},
      {"CHARGETYPE", "", kNoChargeType},
      {"CHARGETYPE", "HW", kUnknownChargeType},
      {"BUDGETHOLDER", "", ""},
      {"BUDGETHOLDER", "bob", kUnknownHolder},
      {"APPROVALREQD", "", ""},
      {"APPROVALREQD", "no", ""},
      {"APPROVALREQD", "Yes", ""},
      {"APPROVALREQD", "Y", kApproval},
      {"APPROVALREQD", " YES", kApproval},
      {"WARNMULTIPLES", "", ""},
      {"WARNMULTIPLES", "0", ""},
      {"WARNMULTIPLES", "100", ""},
      {"WARNMULTIPLES", "100.5", kStep},
      {"WARNMULTIPLES", "-0.5", kStep},
      {"WARNMULTIPLES", "abc", kNumeric},
      {"WARNMULTIPLES", "10 %", kNumeric},
  };
  WithExchange([&](ExchangeWorld& world) {
    AddAnna(world.Site());
    for (const auto& row : rows) {
      const Verdict verdict = Checked(HeaderWith(row.field, row.value));
      EXPECT_EQ(verdict.errors, row.errors) << row.field << " '" << row.value << "'";
      EXPECT_EQ(verdict.valid, *row.errors == '\0') << row.field << " '" << row.value << "'";
    }
  });
}

TEST(ImportChecks, EveryRuleThatAHeaderBreaksIsToldInItsOrder) {
  WithExchange([](ExchangeWorld& world) {
    AddAnna(world.Site());
    const Verdict verdict = Checked(
        "<I><BudgetHeader budgetCode='  '><WarnMultiples>x</WarnMultiples><BudgetHolder>bob</BudgetHolder>"
        "<ApprovalReqd>?</ApprovalReqd><AdministrativeOffice>Paris</AdministrativeOffice></BudgetHeader></"
        "I>");
    EXPECT_FALSE(verdict.valid);
    EXPECT_EQ(
        verdict.errors,
        "\r\nThe budget code is missing-  \r\nThe budget type is missing-  \r\nThe currency is missing-  "
        "\r\nThe currency is unknown-  \r\nThe administrative office is unknown-  "
        "\r\nThe charge type is missing-  \r\nThe charge type is unknown-  "
        "\r\nThe budget holder is not a known user-  "
        "\r\nAPPROVAL REQUIRED SHOULD BE YES OR NO-  \r\nWARN MULTIPLES SHOULD BE NUMERIC VALUE-  ");
  });
}

TEST(ImportChecks, FieldsOfAHeaderAreFoundWhateverTheirCase) {
  WithExchange([](ExchangeWorld& world) {
    AddAnna(world.Site());
    const Verdict verdict = Checked(
        "<I><BudgetHeader budgetCode='A'><budgetType>Standard</budgetType><currency>EUR</currency>"
        "<CHARGETYPE>IT</CHARGETYPE><WarnMULTIPLES>101</WarnMULTIPLES></BudgetHeader></I>");
    EXPECT_EQ(verdict.errors, kStep);
  });
}

constexpr const char* kNoDate = "\r\nThe effective date or the expiry date is not a valid date-A";
constexpr const char* kTurnedRound = "\r\nThe expiry date is earlier than the effective date-A";
constexpr const char* kNegative = "\r\nThe budget amount must not be negative-A";

TEST(ImportChecks, TheLinesOfAHeaderAreCheckedWithIt) {
  const struct {
    std::string line;
    std::string errors;
  } rows[] = {
      {"<EffectiveDate>1/1/2026</EffectiveDate><ExpiryDate>12/31/2026</ExpiryDate><BudgetAmnt>5</BudgetAmnt>",
       ""},
      {"<EffectiveDate>1/1/2026</EffectiveDate><ExpiryDate>1/1/2026</ExpiryDate><BudgetAmnt>0</BudgetAmnt>",
       ""},
      {"<EffectiveDate>1/1/2026</EffectiveDate><BudgetAmnt>5</BudgetAmnt>", ""},
      {"<EffectiveDate>soon</EffectiveDate><BudgetAmnt>5</BudgetAmnt>", kNoDate},
      {"<BudgetAmnt>5</BudgetAmnt>", kNoDate},
      {"<effectivedate>1/1/2026</effectivedate><BudgetAmnt>5</BudgetAmnt>", kNoDate},
      {"<EffectiveDate>1/1/2026</EffectiveDate><ExpiryDate>2/30/2026</ExpiryDate><BudgetAmnt>5</BudgetAmnt>",
       kNoDate},
      {"<EffectiveDate>1/1/2026</EffectiveDate><ExpiryDate/><BudgetAmnt>5</BudgetAmnt>", kNoDate},
      {"<EffectiveDate>1/2/2026</EffectiveDate><ExpiryDate>1/1/2026</ExpiryDate><BudgetAmnt>5</BudgetAmnt>",
       kTurnedRound},
      {"<EffectiveDate>1/1/2026</EffectiveDate><BudgetAmnt>-0.01</BudgetAmnt>", kNegative},
      {"<EffectiveDate>1/1/2026</EffectiveDate><BudgetAmount>5</BudgetAmount>", kNegative},
      {"<EffectiveDate>?</EffectiveDate><ExpiryDate>?</ExpiryDate><BudgetAmnt>-1</BudgetAmnt>",
       std::string(kNoDate) + kNoDate + kNegative},
  };
  WithExchange([&](ExchangeWorld& world) {
    AddAnna(world.Site());
    for (const auto& row : rows) {
      const std::string header = HeaderWith("WARNMULTIPLES", "1");
      const std::string xml = "<D>" + header + "<BudgetLine budgetCode='A'>" + row.line +
                              "</BudgetLine><BudgetLine budgetCode='B'/></D>";
      const Verdict verdict = Checked(xml);
      EXPECT_EQ(verdict.errors, row.errors) << row.line;
      EXPECT_EQ(verdict.valid, row.errors.empty()) << row.line;
    }
  });
}

TEST(ImportChecks, TheLinesOfAHeaderThatIsWrongAreNotLookedAt) {
  WithExchange([](ExchangeWorld& world) {
    AddAnna(world.Site());
    EXPECT_EQ(Checked("<D>" + HeaderWith("BUDGETTYPE", "") + "<BudgetLine budgetCode='A'/></D>").errors,
              kNoType);
  });
}

TEST(ImportChecks, EachRuleOfARelation) {
  const struct {
    const char* xml;
    const char* errors;
  } rows[] = {
      {"<BudgetRelation budgetCode='P'><ChildBudget>S</ChildBudget><ChildBudget>P</ChildBudget>"
       "</BudgetRelation>",
       ""},
      {"<BudgetRelation budgetCode='P'/>", ""},
      {"<BudgetRelation budgetCode='p'><ChildBudget>s</ChildBudget></BudgetRelation>", ""},
      {"<BudgetRelation budgetCode=\"O'N\"/>", "\r\nThe parent budget does not exist-O'N"},
      {"<BudgetRelation budgetCode=' '><ChildBudget>S</ChildBudget></BudgetRelation>",
       "\r\nThe budget code is missing- "},
      {"<BudgetRelation x='1' budgetCode='P'/>", "\r\nThe budget code is missing-"},
      {"<BudgetRelation budgetcode='P'/>", "\r\nThe budget code is missing-"},
      {"<BudgetRelation budgetCode='X'><ChildBudget>Y</ChildBudget></BudgetRelation>",
       "\r\nThe parent budget does not exist-X\r\nThe child budget does not exist:Y-Y"},
      {"<BudgetRelation budgetCode='S'><ChildBudget/><ChildBudget>P</ChildBudget></BudgetRelation>",
       "\r\nOnly an aggregate budget can have child budgets-S\r\nThe budget code is missing-S"},
  };
  WithExchange([&](ExchangeWorld& world) {
    AddAnna(world.Site());
    world.Site().Sql("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE) VALUES ('P', 2), ('S', 1)");
    for (const auto& row : rows) {
      std::string errors;
      const bool valid = Budget().ValidateBudgetRelations("anna", Loaded(row.xml)->DocumentElement(), errors);
      EXPECT_EQ(errors, row.errors) << row.xml;
      EXPECT_EQ(valid, *row.errors == '\0') << row.xml;
    }
  });
}

TEST(ImportChecks, AFailureNamesTheMethodAndIsLogged) {
  WithExchange([](ExchangeWorld& world) {
    AddAnna(world.Site());
    std::string error;
    const auto relation = Loaded("<BudgetRelation/>")->DocumentElement();
    world.Site().Sql("DROP TABLE BUDGET");
    world.Site().Sql("DROP TABLE CHARGETYPES");
    const std::pair<const char*, std::function<void()>> calls[] = {
        {"Talvex.Budget.ValidateFields",
         [&] {
           Budget().ValidateFields("anna", nullptr, Loaded("<I/>"), Keys({}), Keys({}), Keys({}), error);
         }},
        {"Talvex.Budget.ValidateBudgetRelations",
         [&] { Budget().ValidateBudgetRelations("anna", relation, error); }},
        {"Talvex.Budget.getBudgetTypeDict", [] { Budget().getBudgetTypeDict(); }},
        {"Talvex.Budget.getChargeTypeCodes", [] { Budget().getChargeTypeCodes(); }},
    };
    for (const auto& [method, call] : calls) {
      const auto raised = ErrorOf(call);
      EXPECT_NE(raised.number, 0) << method;
      EXPECT_NE(raised.description.find(method), std::string::npos) << raised.description;
      EXPECT_NE(world.Site().LogLines().back().find(method), std::string::npos) << method;
    }
    EXPECT_EQ(error, "");
  });
}

}  // namespace

}  // namespace talvex::test
