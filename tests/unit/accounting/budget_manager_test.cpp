#include <gtest/gtest.h>

#include "automation/dictionary.h"
#include "support/stood_in_test.h"
#include "unit/accounting/accounting_world.h"

namespace talvex::test {

namespace {

using automation::Date;
using automation::kNull;
using automation::Variant;
using platform::database::Fault;
using platform::database::FaultKind;
using Lines = std::vector<std::string>;

std::shared_ptr<BudgetManager> Manager() { return std::make_shared<BudgetManager>(); }

template <class T>
std::shared_ptr<T> ObjectIn(const Variant& value) {
  return value.IsObject() ? std::dynamic_pointer_cast<T>(value.As<automation::ObjectRef>()) : nullptr;
}

std::shared_ptr<LedgerAccount> Account(const std::string& code) {
  auto account = std::make_shared<LedgerAccount>();
  account->Code = code;
  return account;
}

std::shared_ptr<AccountingRule> Rule(const std::string& account, std::int16_t sequence = 10) {
  auto rule = std::make_shared<AccountingRule>();
  rule->LedgerAccount = account;
  rule->SequenceNumber = sequence;
  return rule;
}

std::shared_ptr<AccountingRuleLine> Line(std::int32_t rule, std::int32_t number) {
  auto line = std::make_shared<AccountingRuleLine>();
  line->ACCRULEID = rule;
  line->LINENUMBER = number;
  return line;
}

TEST(ValueClasses, BeginEmpty) {
  const LedgerAccount account;
  EXPECT_EQ(account.Code, "");
  EXPECT_TRUE(account.LedgerAccountDesc.IsEmpty() && account.DateFrom.IsEmpty() && account.DateTo.IsEmpty());
  EXPECT_EQ(account.AccountType + account.Dimension1 + account.Dimension5, 0);
  const AccountingRule rule;
  EXPECT_EQ(rule.ACCRULEID + rule.SequenceNumber, 0);
  EXPECT_EQ(rule.RuleDescription + rule.LedgerAccount, "");
  const AccountingRuleLine line;
  EXPECT_EQ(line.ACCRULEID + line.LINENUMBER + line.Operator, 0);
  EXPECT_TRUE(line.FieldValue.IsEmpty());
}

TEST(ValueClasses, HaveTheseProperties) {
  const auto properties = [](const automation::ClassInfo& info) {
    std::string text = info.Name() + ":";
    for (const auto& property : info.Properties()) text += " " + property.name + "/" + property.type;
    return text;
  };
  EXPECT_EQ(properties(LedgerAccount::Info()),
            "Talvex.LedgerAccount: LedgerAccount/string LedgerAccountDesc/variant DateFrom/variant "
            "DateTo/variant AccountType/int16 Dimension1/int16 Dimension2/int16 Dimension3/int16 "
            "Dimension4/int16 Dimension5/int16");
  EXPECT_EQ(properties(AccountingRule::Info()),
            "Talvex.AccountingRule: ACCRULEID/int32 RuleDescription/string SequenceNumber/int16 "
            "LedgerAccount/string DateFrom/variant DateTo/variant");
  EXPECT_EQ(properties(AccountingRuleLine::Info()),
            "Talvex.AccountingRuleLine: ACCRULEID/int32 LINENUMBER/int32 LineDescription/string "
            "Operator/int16 FieldValue/variant");
}

TEST(BudgetManager, ALedgerAccountIsAddedReadAndChanged) {
  OnInstallation([](TestInstallation& site) {
    EXPECT_TRUE(Manager()->GetLedgerAccountDetails("4310").IsEmpty());
    auto account = Account("4310");
    account->LedgerAccountDesc = "  Hardware, O'Neil's ";
    account->AccountType = 4;
    account->DateFrom = "2026-01-01";
    account->DateTo = Date::Civil(2026, 12, 31, 23, 59, 59);
    account->Dimension1 = 1;
    account->Dimension5 = 3;
    EXPECT_TRUE(Manager()->UpdateLedgerAccount(account));
    EXPECT_EQ(
        site.Rows("SELECT * FROM LEDGERACCOUNT"),
        (Lines{"4310 | Hardware, O'Neil's | 4 | 2026-01-01 | 2026-12-31T23:59:59 | 1 | 0 | 0 | 0 | 3"}));

    const auto read = ObjectIn<LedgerAccount>(Manager()->GetLedgerAccountDetails("4310"));
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->Code, "4310");
    EXPECT_EQ(read->LedgerAccountDesc, Variant("Hardware, O'Neil's"));
    EXPECT_EQ(read->DateFrom, Variant(Date::Civil(2026, 1, 1)));
    EXPECT_EQ(read->DateTo, Variant(Date::Civil(2026, 12, 31, 23, 59, 59)));
    EXPECT_EQ(read->AccountType, 4);
    EXPECT_EQ(read->Dimension1, 1);
    EXPECT_EQ(read->Dimension5, 3);

    read->AccountType = 1;
    read->LedgerAccountDesc = "  ";
    read->DateFrom = Variant();
    read->DateTo = " ";
    EXPECT_TRUE(Manager()->UpdateLedgerAccount(read));
    EXPECT_EQ(site.Rows("SELECT * FROM LEDGERACCOUNT"),
              (Lines{"4310 | null | 1 | null | null | 1 | 0 | 0 | 0 | 3"}));
    const auto again = ObjectIn<LedgerAccount>(Manager()->GetLedgerAccountDetails("4310"));
    EXPECT_EQ(again->LedgerAccountDesc, Variant(""));
    EXPECT_TRUE(again->DateFrom.IsEmpty() && again->DateTo.IsEmpty());
  });
}

TEST(BudgetManager, AnAccountCodeIsTakenAsItIsAndFoundInAnyCase) {
  OnInstallation([](TestInstallation& site) {
    EXPECT_TRUE(Manager()->UpdateLedgerAccount(Account("a'b")));
    EXPECT_TRUE(Manager()->UpdateLedgerAccount(Account("A'B")));
    EXPECT_EQ(site.Rows("SELECT LEDGERACCOUNT FROM LEDGERACCOUNT"), (Lines{"A'B"}));
    EXPECT_TRUE(Manager()->DeleteLedgerAccount("x' OR '1'='1"));
    EXPECT_EQ(site.Rows("SELECT COUNT(*) FROM LEDGERACCOUNT"), (Lines{"1"}));
    EXPECT_TRUE(Manager()->DeleteLedgerAccount("a'b"));
    EXPECT_EQ(site.Rows("SELECT COUNT(*) FROM LEDGERACCOUNT"), (Lines{"0"}));
  });
}

TEST(BudgetManager, AllLedgerAccountsComeAsADictionary) {
  OnInstallation([](TestInstallation& site) {
    Variant accounts = "anything";
    Manager()->GetAllLedgerAccounts(accounts);
    EXPECT_EQ(ObjectIn<automation::Dictionary>(accounts)->Count(), 0);
    AddAccount(site, {"4310"});
    AddAccount(site, {"4320"});
    site.Sql("UPDATE LEDGERACCOUNT SET DESCRIPTION = 'Software' WHERE LEDGERACCOUNT = '4320'");
    Manager()->GetAllLedgerAccounts(accounts);
    const auto dictionary = ObjectIn<automation::Dictionary>(accounts);
    ASSERT_EQ(dictionary->Count(), 2);
    EXPECT_EQ(dictionary->Item("4310"), Variant(kNull));
    EXPECT_EQ(dictionary->Item("4320"), Variant("Software"));
  });
}

TEST(BudgetManager, ANewRuleGetsItsNumberFromTheDatabase) {
  OnInstallation([](TestInstallation& site) {
    AddAccount(site, {"4310"});
    Variant id;
    auto rule = Rule("4310");
    rule->RuleDescription = " Hardware ";
    rule->DateFrom = "2026-01-01";
    EXPECT_TRUE(Manager()->UpdateAccountingRule(rule, &id));
    EXPECT_EQ(id, Variant(1));
    rule->ACCRULEID = 99;
    EXPECT_TRUE(Manager()->UpdateAccountingRule(rule, &id));
    EXPECT_EQ(id, Variant(2));
    EXPECT_EQ(site.Rows("SELECT * FROM ACCOUNTINGRULE"),
              (Lines{"1 | Hardware | 10 | 4310 | 2026-01-01 | null",
                     "2 | Hardware | 10 | 4310 | 2026-01-01 | null"}));

    const auto read = ObjectIn<AccountingRule>(Manager()->GetAccountingRuleDetails(2));
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->ACCRULEID, 2);
    EXPECT_EQ(read->RuleDescription, "Hardware");
    EXPECT_EQ(read->SequenceNumber, 10);
    EXPECT_EQ(read->LedgerAccount, "4310");
    EXPECT_EQ(read->DateFrom, Variant(Date::Civil(2026, 1, 1)));
    EXPECT_TRUE(read->DateTo.IsEmpty());

    read->RuleDescription = "";
    read->DateFrom = kNull;
    read->SequenceNumber = -5;
    id = "anything";
    EXPECT_TRUE(Manager()->UpdateAccountingRule(read, &id));
    EXPECT_EQ(id, Variant(2));
    EXPECT_TRUE(Manager()->UpdateAccountingRule(read, nullptr));
    EXPECT_EQ(site.Rows("SELECT * FROM ACCOUNTINGRULE WHERE ACCRULEID=2"),
              (Lines{"2 | null | -5 | 4310 | null | null"}));
    EXPECT_TRUE(Manager()->GetAccountingRuleDetails(3).IsEmpty());
  });
}

TEST(BudgetManager, ANewLineTakesTheNumberAskedForOrTheNextOne) {
  OnInstallation([](TestInstallation& site) {
    for (const std::int32_t number : {0, 7, -3, 2, 0}) {
      EXPECT_TRUE(Manager()->UpdateAccountingRuleLine(Line(5, number))) << number;
    }
    EXPECT_EQ(site.Rows("SELECT LINENUMBER FROM ACCOUNTINGRULELINE WHERE ACCRULEID=5"),
              (Lines{"1", "2", "7", "8", "9"}));
    AddLine(site, 6, 2147483647, {});
    EXPECT_EQ(ErrorNumberOf([] { Manager()->UpdateAccountingRuleLine(Line(6, 0)); }), 6);
  });
}

TEST(BudgetManager, ALineIsAddedReadAndChanged) {
  OnInstallation([](TestInstallation& site) {
    auto line = Line(1, 4);
    line->LineDescription = " Amount ";
    line->Operator = 4;
    line->FieldValue = "  5000 ";
    EXPECT_TRUE(Manager()->UpdateAccountingRuleLine(line));
    EXPECT_EQ(site.Rows("SELECT * FROM ACCOUNTINGRULELINE"), (Lines{"1 | 4 | Amount | 4 |   5000 "}));
    const auto read = ObjectIn<AccountingRuleLine>(Manager()->GetAccountingRuleLineDetails(1, 4));
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->ACCRULEID, 1);
    EXPECT_EQ(read->LINENUMBER, 4);
    EXPECT_EQ(read->LineDescription, "Amount");
    EXPECT_EQ(read->Operator, 4);
    EXPECT_EQ(read->FieldValue, Variant("  5000 "));
    EXPECT_TRUE(Manager()->GetAccountingRuleLineDetails(1, 5).IsEmpty());
    EXPECT_TRUE(Manager()->GetAccountingRuleLineDetails(2, 4).IsEmpty());

    read->LineDescription = " ";
    const std::pair<Variant, const char*> stored[] = {
        {"", "\"\""},   {kNull, "null"}, {Variant(), "null"},
        {12.5, "12.5"}, {10.0, "10"},    {Date::Civil(2026, 3, 15), "3/15/2026"},
        {true, "True"}, {"  ", "  "},
    };
    for (const auto& [value, text] : stored) {
      read->FieldValue = value;
      EXPECT_TRUE(Manager()->UpdateAccountingRuleLine(read));
      EXPECT_EQ(site.Rows("SELECT * FROM ACCOUNTINGRULELINE"),
                (Lines{std::string("1 | 4 | null | 4 | ") + text}));
    }
    EXPECT_TRUE(Manager()->DeleteAccountingRuleLine(1, 5));
    EXPECT_EQ(site.Rows("SELECT COUNT(*) FROM ACCOUNTINGRULELINE"), (Lines{"1"}));
    EXPECT_TRUE(Manager()->DeleteAccountingRuleLine(1, 4));
    EXPECT_EQ(site.Rows("SELECT COUNT(*) FROM ACCOUNTINGRULELINE"), (Lines{"0"}));
  });
}

TEST(BudgetManager, SendsTheseStatements) {
  OnRecordedInstallation([](RecordedInstallation& test) {
    AddAccount(test.Site(), {"4310"});
    const auto sent = [&](const auto& call) {
      test.Script().ForgetTexts();
      call();
      std::string texts;
      for (const std::string& text : test.Script().Texts()) {
        if (text != "OPEN" && !text.starts_with("set TRANSACTION")) texts += text + "\n";
      }
      return texts;
    };
    EXPECT_EQ(sent([] { Manager()->GetLedgerAccountDetails("O'x"); }),
              "SELECT * FROM LEDGERACCOUNT WHERE LEDGERACCOUNT='O''x'\n");
    EXPECT_EQ(sent([] { Manager()->DeleteLedgerAccount("O'x"); }),
              "DELETE LEDGERACCOUNT WHERE LEDGERACCOUNT='O''x'\n");
    EXPECT_EQ(
        sent([] { Manager()->UpdateLedgerAccount(Account("O'x")); }),
        "SELECT * FROM LEDGERACCOUNT WHERE LEDGERACCOUNT='O''x'\n"
        "INSERT INTO LEDGERACCOUNT (LEDGERACCOUNT, DESCRIPTION, ACCOUNTTYPE, DATEFROM, DATETO, "
        "DIMENSION1, DIMENSION2, DIMENSION3, DIMENSION4, DIMENSION5) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, "
        "?)\n");
    EXPECT_EQ(sent([] {
                Variant accounts;
                Manager()->GetAllLedgerAccounts(accounts);
              }),
              "SELECT LEDGERACCOUNT, DESCRIPTION FROM LEDGERACCOUNT\n");
    EXPECT_EQ(sent([] { Manager()->GetAccountingRuleDetails(-7); }),
              "SELECT * FROM ACCOUNTINGRULE WHERE ACCRULEID=-7\n");
    EXPECT_EQ(sent([] { Manager()->UpdateAccountingRule(Rule("4310"), nullptr); }),
              "SELECT * FROM ACCOUNTINGRULE WHERE ACCRULEID=0\n"
              "INSERT INTO ACCOUNTINGRULE (RULEDESCRIPTION, SEQUENCENUMBER, LEDGERACCOUNT, DATEFROM, DATETO) "
              "VALUES (?, ?, ?, ?, ?)\n");
    EXPECT_EQ(sent([] { Manager()->DeleteAccountingRule(1); }),
              "DELETE ACCOUNTINGRULELINE WHERE ACCRULEID=1\nDELETE ACCOUNTINGRULE WHERE ACCRULEID=1\n");
    EXPECT_EQ(sent([] { Manager()->GetAccountingRuleLineDetails(3, 4); }),
              "SELECT * FROM ACCOUNTINGRULELINE WHERE ACCRULEID=3 AND LINENUMBER=4\n");
    EXPECT_EQ(sent([] { Manager()->UpdateAccountingRuleLine(Line(3, 4)); }),
              "SELECT * FROM ACCOUNTINGRULELINE WHERE ACCRULEID=3 AND LINENUMBER=4\n"
              "INSERT INTO ACCOUNTINGRULELINE (ACCRULEID, LINENUMBER, LINEDESCRIPTION, OPERATOR, FIELDVALUE) "
              "VALUES (?, ?, ?, ?, ?)\n");
    EXPECT_EQ(sent([] { Manager()->DeleteAccountingRuleLine(3, 4); }),
              "DELETE ACCOUNTINGRULELINE WHERE ACCRULEID=3 AND LINENUMBER=4\n");
  });
}

TEST(BudgetManager, AnAccountInUseStays) {
  WithStandIns([](StoodIn& test) {
    const TestInstallation& site = test.Site();
    AddAccount(site, {"4310"});
    AddAccount(site, {"4320"});
    AddRule(site, {1, 10, "4310", {}});
    site.Sql("INSERT INTO REQUISITIONLINE VALUES (1, 1, '4320')");
    const std::string before = site.Snapshot();
    const auto rule = ErrorOf([] { Manager()->DeleteLedgerAccount("4310"); });
    EXPECT_EQ(rule.number, -2147216494);
    const std::string refusal =
        "A ledger account that an accounting rule refers to stays (FK_ACCOUNTINGRULE_LEDGERACCOUNT)";
    EXPECT_EQ(rule.description,
              "\r\nERROR 0x80041392\r\n METHOD: Talvex.BudgetManager.DeleteLedgerAccount\r\n DESC: "
              "\r\nERROR 0x80041392\r\n METHOD: Talvex.BudgetManager.ExecuteStatement\r\n DESC: " +
                  refusal + ".\r\n.\r\n");
    EXPECT_EQ(ErrorNumberOf([] { Manager()->DeleteLedgerAccount("4320"); }), -2147216493);
    EXPECT_EQ(site.Snapshot(), before);
    EXPECT_EQ(test.Record().log.size(), 4U);
    // Used by both, it is the rule that is told.
    site.Sql("UPDATE REQUISITIONLINE SET LEDGERACCOUNT = '4310'");
    EXPECT_EQ(ErrorNumberOf([] { Manager()->DeleteLedgerAccount("4310"); }), -2147216494);
    EXPECT_TRUE(Manager()->DeleteLedgerAccount("4320"));
  });
}

TEST(BudgetManager, ARuleNeedsAKnownAccount) {
  OnInstallation([](TestInstallation& site) {
    const std::string before = site.Snapshot();
    for (const auto* code : {"4310", ""})
      EXPECT_EQ(ErrorNumberOf([&] { Manager()->UpdateAccountingRule(Rule(code), nullptr); }), -2147216494);
    EXPECT_EQ(site.Snapshot(), before);
  });
}

// The tables as they are let nothing through that would collide, so a stricter site stands in.
TEST(BudgetManager, ADuplicateAndAMissingValueHaveNumbersOfTheirOwn) {
  OnInstallation([](TestInstallation& site) {
    AddAccount(site, {"4310"});
    AddRule(site, {1, 10, "4310", {}});
    site.Sql("CREATE UNIQUE INDEX ONE_RULE_A_NUMBER ON ACCOUNTINGRULE (SEQUENCENUMBER)");
    site.Sql("DROP TABLE ACCOUNTINGRULELINE");
    site.Sql(
        "CREATE TABLE ACCOUNTINGRULELINE (ACCRULEID INT NOT NULL, LINENUMBER INT NOT NULL, LINEDESCRIPTION "
        "NVARCHAR(255) NOT NULL, OPERATOR INT, FIELDVALUE NVARCHAR(2000))");
    const std::string before = site.Snapshot();
    const auto duplicate = ErrorOf([] { Manager()->UpdateAccountingRule(Rule("4310"), nullptr); });
    EXPECT_EQ(duplicate.number, -2147216504);
    EXPECT_TRUE(duplicate.description.starts_with(
        "\r\nERROR 0x80041388\r\n METHOD: Talvex.BudgetManager.UpdateAccountingRule\r\n DESC: "))
        << duplicate.description;
    EXPECT_EQ(ErrorNumberOf([] { Manager()->UpdateAccountingRuleLine(Line(1, 1)); }), -2147216503);
    EXPECT_EQ(site.Snapshot(), before);
  });
}

TEST(BudgetManager, AnAccountThatSomebodyElseAddedMeanwhileIsADuplicate) {
  OnRecordedInstallation([](RecordedInstallation& test) {
    test.Script().FailAt("INSERT INTO LEDGERACCOUNT", 1,
                         Fault(FaultKind::Duplicate, 2627, "23000", "duplicate key"));
    EXPECT_EQ(ErrorNumberOf([] { Manager()->UpdateLedgerAccount(Account("A")); }), -2147216504);
    test.Script().FailAt("DELETE LEDGERACCOUNT", 1, Fault(FaultKind::Constraint, 547, "23000", "some other"));
    EXPECT_EQ(ErrorNumberOf([] { Manager()->DeleteLedgerAccount("A"); }), -2147217873);
  });
}

TEST(BudgetManager, ARuleGoesWithItsLinesOrStaysWithThem) {
  OnRecordedInstallation([](RecordedInstallation& test) {
    const TestInstallation& site = test.Site();
    AddAccount(site, {"A"});
    for (const int id : {1, 2}) AddRule(site, {id, 10, "A", {{"P", 5, "x"}, {"P", 5, "y"}}});
    const std::string before = site.Snapshot();
    const auto remove = [&] {
      std::int32_t error = 0;
      const auto outcome = site.Host().Transactions().Run(
          [&] { error = ErrorNumberOf([] { Manager()->DeleteAccountingRule(1); }); });
      return std::pair(outcome, error != 0);
    };
    for (const auto* part : {"DELETE ACCOUNTINGRULELINE", "DELETE ACCOUNTINGRULE WHERE"}) {
      test.Script().FailAt(part, 1, Fault(FaultKind::Other, 4711, "HY000", "out of order"));
      EXPECT_EQ(remove(), std::pair(host::Outcome::Aborted, true)) << part;
      EXPECT_EQ(site.Snapshot(), before) << part;
    }
    EXPECT_EQ(remove(), std::pair(host::Outcome::Committed, false));
    EXPECT_EQ(site.Rows("SELECT ACCRULEID FROM ACCOUNTINGRULE"), (Lines{"2"}));
    EXPECT_EQ(site.Rows("SELECT ACCRULEID FROM ACCOUNTINGRULELINE"), (Lines{"2", "2"}));
  });
}

TEST(BudgetManager, TheRuleStaysWhenItsLinesCannotBeDeleted) {
  OnRecordedInstallation([](RecordedInstallation& test) {
    AddAccount(test.Site(), {"A"});
    AddRule(test.Site(), {1, 10, "A", {{"P", 5, "x"}}});
    test.Script().FailAt("DELETE ACCOUNTINGRULELINE", 1,
                         Fault(FaultKind::Other, 4711, "HY000", "out of order"));
    const auto error = ErrorOf([] { Manager()->DeleteAccountingRule(1); });
    EXPECT_TRUE(error.description.find(" METHOD: Talvex.BudgetManager.DeleteAccountingRule\r\n") !=
                std::string::npos);
    EXPECT_EQ(test.Script().Count("DELETE ACCOUNTINGRULE WHERE"), 0U);
  });
}

TEST(BudgetManager, FailuresCarryTheNameOfTheirMethodAndVoteAbort) {
  OnRecordedInstallation([](RecordedInstallation& test) {
    Variant accounts;
    const std::pair<const char*, std::function<void()>> calls[] = {
        {"GetLedgerAccountDetails", [] { Manager()->GetLedgerAccountDetails("A"); }},
        {"DeleteLedgerAccount", [] { Manager()->DeleteLedgerAccount("A"); }},
        {"UpdateLedgerAccount", [] { Manager()->UpdateLedgerAccount(Account("A")); }},
        {"GetAllLedgerAccounts", [&] { Manager()->GetAllLedgerAccounts(accounts); }},
        {"GetAccountingRuleDetails", [] { Manager()->GetAccountingRuleDetails(1); }},
        {"UpdateAccountingRule", [] { Manager()->UpdateAccountingRule(Rule("A"), nullptr); }},
        {"DeleteAccountingRule", [] { Manager()->DeleteAccountingRule(1); }},
        {"GetAccountingRuleLineDetails", [] { Manager()->GetAccountingRuleLineDetails(1, 1); }},
        {"UpdateAccountingRuleLine", [] { Manager()->UpdateAccountingRuleLine(Line(1, 1)); }},
        {"DeleteAccountingRuleLine", [] { Manager()->DeleteAccountingRuleLine(1, 1); }},
        {"getDefaultLedgerAccount", [] { DefaultAccount({}); }},
    };
    for (const auto& [method, call] : calls) {
      for (const auto* part : {"LEDGERACCOUNT", "ACCOUNTINGRULE"})
        test.Script().FailAt(part, 1, Fault(FaultKind::Other, 4711, "HY000", "out of order"));
      automation::ErrorState error;
      const auto outcome = test.Site().Host().Transactions().Run([&, &one = call] { error = ErrorOf(one); });
      EXPECT_EQ(outcome, host::Outcome::Aborted) << method;
      const std::size_t first = error.description.find(" METHOD: ");
      ASSERT_NE(first, std::string::npos) << method;
      const std::string line = std::string(" METHOD: Talvex.BudgetManager.") + method + "\r\n";
      EXPECT_EQ(error.description.substr(first, line.size()), line);
      test.Script().Heal();
    }
  });
}

TEST(BudgetManager, AnObjectThatIsNotSetRaises91) {
  OnInstallation([](TestInstallation& /*site*/) {
    EXPECT_EQ(ErrorNumberOf([] { Manager()->UpdateLedgerAccount(nullptr); }), 91);
    EXPECT_EQ(ErrorNumberOf([] { Manager()->UpdateAccountingRule(nullptr, nullptr); }), 91);
    EXPECT_EQ(ErrorNumberOf([] { Manager()->UpdateAccountingRuleLine(nullptr); }), 91);
  });
}

TEST(BudgetManager, ATextThatIsNoDateIsRefused) {
  OnInstallation([](TestInstallation& site) {
    auto account = Account("A");
    account->DateFrom = "soon";
    EXPECT_EQ(ErrorNumberOf([&] { Manager()->UpdateLedgerAccount(account); }), 13);
    EXPECT_EQ(site.Rows("SELECT COUNT(*) FROM LEDGERACCOUNT"), (Lines{"0"}));
  });
}

}  // namespace

}  // namespace talvex::test
