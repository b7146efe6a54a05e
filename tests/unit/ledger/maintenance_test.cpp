#include <gtest/gtest.h>

#include "ledger/budget_t.h"
#include "platform/database/fault.h"
#include "platform/database/literals.h"
#include "support/error_of.h"
#include "support/recorded_installation.h"
#include "support/stood_in_test.h"

namespace talvex::test {

namespace {

using automation::Array;
using automation::Variant;
using platform::database::Fault;
using platform::database::FaultKind;

// A checker that remembers what it was asked and says what it is told to.
class RecordingChecker final : public automation::Object {
  TALVEX_CLASS(RecordingChecker, "Corvane.ReferentialChecker", "Keeps the questions.");

 public:
  explicit RecordingChecker(std::shared_ptr<Recorder> recorder) : recorder_(std::move(recorder)) {}
  TALVEX_METHOD(bool, HasValidReferences, (const std::string& table, const Array& names, const Array& values),
                "Keeps a question.");
  TALVEX_METHOD(bool, MayDelete, (const std::string& entity, const Array& names, const Array& values),
                "Keeps a question.");

 private:
  bool Answer(const std::string& what, const Array& names, const Array& values) {
    recorder_->calls.push_back(what + " " + Shown(names) + " " + Shown(values));
    return recorder_->fail_in != "no";
  }
  std::shared_ptr<Recorder> recorder_;
};

bool RecordingChecker::HasValidReferences(const std::string& table, const Array& names, const Array& values) {
  return Answer("HasValidReferences " + table, names, values);
}

bool RecordingChecker::MayDelete(const std::string& entity, const Array& names, const Array& values) {
  return Answer("MayDelete " + entity, names, values);
}

TEST(Maintenance, AsksTheCheckerForThreeColumnsOfTheRowAsItWillBe) {
  WithStandIns([](StoodIn& test) {
    test.Replace<RecordingChecker>();
    test.Site().Sql(
        "INSERT INTO BUDGET (BUDGETCODE, CURRENCYCODE, USERID, OFFICEDESCRIPTION) VALUES ('A', 'EUR', "
        "'anna', 'Lyon')");
    Array fields({"USERID", "CHARGETYPECODE"});
    Array values({"", "IT"});
    BudgetT().Update("A", fields, values);
    BudgetT().Insert("B", fields, values);
    EXPECT_EQ(test.Record().calls,
              (std::vector<std::string>{
                  "HasValidReferences BUDGET [CURRENCYCODE, USERID, OFFICEDESCRIPTION] [EUR, null, Lyon]",
                  "HasValidReferences BUDGET [CURRENCYCODE, USERID, OFFICEDESCRIPTION] [null, null, null]"}));
  });
}

TEST(Maintenance, AsksTheCheckerBeforeAChargeTypeGoes) {
  WithStandIns([](StoodIn& test) {
    test.Replace<RecordingChecker>();
    test.Site().Sql("INSERT INTO CHARGETYPES (CHARGETYPECODE) VALUES ('IT')");
    test.Record().fail_in = "no";
    EXPECT_EQ(ErrorOf([] { BudgetT().DeleteChargeType("IT"); }).number, -2147221497);
    EXPECT_EQ(test.Site().Rows("SELECT CHARGETYPECODE FROM CHARGETYPES"), std::vector<std::string>{"IT"});
    EXPECT_EQ(test.Record().calls, std::vector<std::string>{"MayDelete CHARGETYPE [CHARGETYPECODE] [IT]"});
    test.Record().fail_in.clear();
    EXPECT_TRUE(BudgetT().DeleteChargeType("IT"));
  });
}

TEST(Maintenance, ListsMayBeginAtOne) {
  OnOwnThread([] {
    const TestInstallation site;
    site.Sql("INSERT INTO CURRENCY (CURRENCYCODE, DECIMALS) VALUES ('EUR', 2)");
    Array fields({"CURRENCYCODE", "USERID"}, 1);
    Array values({"EUR", ""}, 1);
    BudgetT().Insert("A", fields, values);
    EXPECT_EQ(values, Array({"EUR", automation::kNull}, 1));
    BudgetT().InsertLine("A", 0, Array({"BUDGETAMNT"}, 1), Array({12.5}, 1));
    EXPECT_EQ(site.Rows("SELECT BUDGETCODE, BUDGETAMNT FROM BUDGETLINES"),
              std::vector<std::string>{"A | 12.5"});
  });
}

TEST(Maintenance, TextsAsLongAsTheirColumnPassAndLongerOnesAreRefused) {
  OnOwnThread([] {
    const TestInstallation site;
    site.Sql("INSERT INTO CURRENCY (CURRENCYCODE, DECIMALS) VALUES ('EUR', 2)");
    const auto insert = [](const std::string& code, const std::string& dimension) {
      Array fields({"CURRENCYCODE", "BUDGETDIMENSION1"});
      Array values({"EUR", dimension});
      BudgetT().Insert(code, fields, values);
    };
    std::string code;
    for (int i = 0; i < 50; ++i) code += "é";
    std::string dimension;
    for (int i = 0; i < 2000; ++i) dimension += "予";
    insert(code, dimension);
    EXPECT_EQ(site.Rows("SELECT BUDGETCODE, BUDGETDIMENSION1 FROM BUDGET"),
              std::vector<std::string>{code + " | " + dimension});
    const auto too_long = ErrorOf([&] { insert("B", std::string(4000, 'x')); });
    EXPECT_EQ(too_long.number, automation::error_number::kValueTooLongOrWrongType);
    EXPECT_NE(too_long.description.find("BUDGET.BUDGETDIMENSION1 takes a text of at most 2000 characters"),
              std::string::npos)
        << too_long.description;
    EXPECT_EQ(site.Rows("SELECT BUDGETCODE FROM BUDGET").size(), 1U);
  });
}

TEST(Selection, TakesValuesLongerThanAnyColumn) {
  OnOwnThread([] {
    const TestInstallation site;
    site.Sql("INSERT INTO BUDGETDIMENSIONTYPE (BUDGETDIMTYPE1) VALUES ('Department')");
    site.Sql(
        "INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, OFFICEDESCRIPTION, CHARGETYPECODE) VALUES ('A', 1, '', "
        "''), ('B', 1, NULL, NULL)");
    site.Sql(
        "INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE) VALUES ('A', '2026-01-01T00:00:00'), ('B', "
        "'2026-01-01T00:00:00')");
    std::string text;
    for (int i = 0; i < 1000; ++i) text += "'%é]";
    auto properties = std::make_shared<automation::Collection>();
    properties->Add(text, "Department");
    properties->Add(text, "RequisitionChargeType");
    properties->Add("Lyon", "RequisitionRequisitionerOffice");
    std::string code;
    BudgetT().GetBudget(properties, code, std::nullopt);
    EXPECT_EQ(code, "A");
    std::string office = text;
    const auto relevant = BudgetT().GetRelevantBudget(properties, office, text);
    EXPECT_EQ(relevant->Count(), 1);
    EXPECT_TRUE(relevant->Exists("B"));
  });
}

// Every operation that writes, on a ledger that holds something for it to do.
struct Transaction {
  const char* name;
  void (*run)();
};

const Transaction kTransactions[] = {
    {"Insert",
     [] {
       Array fields({"CURRENCYCODE", "USERID"});
       Array values({"EUR", "anna"});
       BudgetT().Insert("NEW", fields, values);
     }},
    {"Update",
     [] {
       Array fields({"BUDGETTYPE"});
       Array values({2});
       BudgetT().Update("A", fields, values);
     }},
    {"InsertLine", [] { BudgetT().InsertLine("A", 0, Array({"BUDGETAMNT"}), Array({10.0})); }},
    {"UpdateLine", [] { BudgetT().UpdateLine("A", 1, Array({"BUDGETAMNT"}), Array({500.0})); }},
    {"Delete", [] { BudgetT().Delete("A"); }},
    {"DeleteLine", [] { BudgetT().DeleteLine("A", 1); }},
    {"InsertDimension", [] { BudgetT().InsertDimension("L", Array({"BUDGETDIMTYPE1"}), Array({"x"})); }},
    {"createchargeline",
     [] {
       Array fields({"REQUISITIONLINEID", "REQUISITIONLINENUMBER", "ADMINOFFICE", "BUDGETCODE"});
       Array values({10, 1, "L", "B"});
       BudgetT().createchargeline(fields, values);
     }},
    {"createchargeline that clears",
     [] {
       Array fields({"REQUISITIONLINEID", "REQUISITIONLINENUMBER", "ADMINOFFICE", "BUDGETCODE"});
       Array values({10, 1, "L", "A"});
       BudgetT().createchargeline(fields, values);
     }},
    {"UpdateChargeline",
     [] {
       Array offices({"", "L", "M"});
       Array budgets({"", "A", "B"});
       Array shares({0, 50, 50});
       BudgetT().UpdateChargeline(10, 1, 2, offices, budgets, shares);
     }},
    {"DeleteChargeline", [] { BudgetT().DeleteChargeline(10, 1); }},
    {"DeleteChargeType", [] { BudgetT().DeleteChargeType("IT"); }},
};

void Fill(const TestInstallation& site) {
  for (const auto* statement :
       {"INSERT INTO CURRENCY (CURRENCYCODE, DECIMALS) VALUES ('EUR', 2)",
        "INSERT INTO SUITEUSER (USERID, FULLNAME, EMAIL, LOCALEID) VALUES ('anna', 'Anna', 'a@example.com', "
        "1033)",
        "INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE) VALUES ('A', 1, 'EUR'), ('P', 2, 'EUR')",
        "INSERT INTO BUDGETLINES (BUDGETCODE, BUDGETAMNT) VALUES ('A', 100), ('A', 200)",
        "INSERT INTO BUDGETRELATIONS (PARENTBUDGET, CHILDBUDGET) VALUES ('P', 'A')",
        "INSERT INTO CHARGETYPES (CHARGETYPECODE) VALUES ('IT')",
        "INSERT INTO CHARGELINES (REQUISITIONLINEID, REQUISITIONLINENUMBER, ADMINOFFICE, BUDGETCODE) VALUES "
        "(10, 1, 'L', 'A')"}) {
    site.Sql(statement);
  }
}

void FailEveryStatementOf(const Transaction& operation) {
  RecordedInstallation test;
  Fill(test.Site());
  const std::string before = test.Site().Snapshot();
  std::size_t failed = 0;
  for (;; ++failed) {
    test.Script().FailAt("", failed + 1, Fault(FaultKind::Other, 9999, "HY000", "pulled the plug"));
    try {
      if (test.Site().Host().Transactions().Run(operation.run) == host::Outcome::Committed) break;
      ADD_FAILURE() << operation.name << " aborted without an error at statement " << failed + 1;
    } catch (const automation::Error& error) {
      EXPECT_NE(error.Description().find("pulled the plug"), std::string::npos) << error.Description();
    }
    test.Script().Heal();
    ASSERT_EQ(test.Site().Snapshot(), before) << operation.name << ", statement " << failed + 1;
  }
  test.Script().Heal();
  EXPECT_GE(failed, 3U) << operation.name;
  EXPECT_NE(test.Site().Snapshot(), before) << operation.name;
}

TEST(Maintenance, AFailureOfAnyStatementOfATransactionLeavesTheDatabaseAsItWas) {
  for (const Transaction& operation : kTransactions) OnOwnThread([&] { FailEveryStatementOf(operation); });
}

}  // namespace

}  // namespace talvex::test
