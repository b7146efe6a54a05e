// What the tables of accounting refuse, and by which name.
#include <gtest/gtest.h>

#include "support/error_of.h"
#include "unit/accounting/accounting_world.h"

namespace talvex::test {

namespace {

constexpr std::int32_t kConstraint = -2147217873;
constexpr std::int32_t kValueRefused = -2147217887;

struct RefusalRow {
  const char* statement;
  std::int32_t number;
  const char* text;
};

constexpr RefusalRow kRefusals[] = {
    // Both foreign keys, from either side, under their names.
    {"DELETE FROM LEDGERACCOUNT WHERE LEDGERACCOUNT = 'RULED'", kConstraint,
     "A ledger account that an accounting rule refers to stays (FK_ACCOUNTINGRULE_LEDGERACCOUNT)"},
    {"DELETE FROM LEDGERACCOUNT WHERE LEDGERACCOUNT = 'BOOKED'", kConstraint,
     "A ledger account that a requisition line refers to stays (FK_REQUISITIONLINE_LEDGERACCOUNT)"},
    {"UPDATE LEDGERACCOUNT SET LEDGERACCOUNT = 'NEW' WHERE LEDGERACCOUNT = 'RULED'", kConstraint,
     "(FK_ACCOUNTINGRULE_LEDGERACCOUNT)"},
    {"UPDATE LEDGERACCOUNT SET LEDGERACCOUNT = 'NEW' WHERE LEDGERACCOUNT = 'BOOKED'", kConstraint,
     "(FK_REQUISITIONLINE_LEDGERACCOUNT)"},
    {"INSERT INTO ACCOUNTINGRULE (LEDGERACCOUNT) VALUES ('NOWHERE')", kConstraint,
     "ACCOUNTINGRULE.LEDGERACCOUNT takes a known ledger account (FK_ACCOUNTINGRULE_LEDGERACCOUNT)"},
    {"UPDATE ACCOUNTINGRULE SET LEDGERACCOUNT = 'NOWHERE'", kConstraint, "(FK_ACCOUNTINGRULE_LEDGERACCOUNT)"},
    {"INSERT INTO REQUISITIONLINE VALUES (2, 1, 'NOWHERE')", kConstraint,
     "REQUISITIONLINE.LEDGERACCOUNT takes a known ledger account (FK_REQUISITIONLINE_LEDGERACCOUNT)"},
    {"UPDATE REQUISITIONLINE SET LEDGERACCOUNT = 'NOWHERE'", kConstraint,
     "(FK_REQUISITIONLINE_LEDGERACCOUNT)"},
    // Keys.
    {"INSERT INTO LEDGERACCOUNT (LEDGERACCOUNT) VALUES ('ruled')", kConstraint, "UNIQUE"},
    {"INSERT INTO ACCOUNTINGRULELINE (ACCRULEID, LINENUMBER) VALUES (1, 1)", kConstraint, "UNIQUE"},
    {"INSERT INTO ACCOUNTINGRULELINE (ACCRULEID) VALUES (1)", kConstraint, "NOT NULL"},
    {"INSERT INTO REQUISITIONLINE VALUES (1, 1, NULL)", kConstraint, "UNIQUE"},
    // Values that a server would refuse.
    {"UPDATE LEDGERACCOUNT SET ACCOUNTTYPE = 32768", kValueRefused, "-32768 to 32767"},
    {"UPDATE LEDGERACCOUNT SET DIMENSION5 = 'x'", kValueRefused, "LEDGERACCOUNT.DIMENSION5"},
    {"UPDATE LEDGERACCOUNT SET DATETO = '2026-02-30T00:00:00'", kValueRefused, "LEDGERACCOUNT.DATETO"},
    {"UPDATE LEDGERACCOUNT SET DESCRIPTION = replace(hex(zeroblob(128)), '00', 'xx')", kValueRefused,
     "at most 255 characters"},
    {"UPDATE ACCOUNTINGRULE SET SEQUENCENUMBER = 1.5", kValueRefused, "ACCOUNTINGRULE.SEQUENCENUMBER"},
    {"UPDATE ACCOUNTINGRULELINE SET OPERATOR = -32769", kValueRefused, "ACCOUNTINGRULELINE.OPERATOR"},
    {"UPDATE ACCOUNTINGRULELINE SET FIELDVALUE = replace(hex(zeroblob(1001)), '00', 'xx')", kValueRefused,
     "at most 2000 characters"},
    {"INSERT INTO ACCOUNTINGPARAMETER VALUES (replace(hex(zeroblob(26)), '00', 'xx'), '')", kValueRefused,
     "ACCOUNTINGPARAMETER.PARAMETERNAME"},
};

TEST(AccountingTables, RefuseWhatAServerWouldRefuse) {
  OnInstallation([](TestInstallation& site) {
    AddAccount(site, {"RULED"});
    AddAccount(site, {"BOOKED"});
    AddRule(site, {1, 10, "RULED", {{"P", 5, "x"}}});
    site.Sql("INSERT INTO REQUISITIONLINE VALUES (1, 1, 'BOOKED')");
    const std::string before = site.Snapshot();
    for (const RefusalRow& row : kRefusals) {
      const automation::ErrorState error = ErrorOf([&] { site.Sql(row.statement); });
      EXPECT_EQ(error.number, row.number) << row.statement << ": " << error.description;
      EXPECT_NE(error.description.find(row.text), std::string::npos)
          << row.statement << ": " << error.description;
    }
    EXPECT_EQ(site.Snapshot(), before);
  });
}

TEST(AccountingTables, TakeWhatIsNotForbidden) {
  OnInstallation([](TestInstallation& site) {
    AddAccount(site, {"RULED"});
    AddRule(site, {1, 10, "ruled", {}});
    // The same code in other letters is the same account; nothing refers to Null; a name may come twice.
    site.Sql("UPDATE LEDGERACCOUNT SET LEDGERACCOUNT = 'Ruled'");
    site.Sql("INSERT INTO ACCOUNTINGRULE (LEDGERACCOUNT) VALUES (NULL)");
    site.Sql("INSERT INTO REQUISITIONLINE VALUES (1, 1, NULL)");
    AddParameter(site, "DIMENSION1", "one");
    AddParameter(site, "DIMENSION1", "two");
    site.Sql("DELETE FROM ACCOUNTINGRULE");
    site.Sql("DELETE FROM LEDGERACCOUNT");
    EXPECT_EQ(site.Rows("SELECT COUNT(*) FROM LEDGERACCOUNT"), (std::vector<std::string>{"0"}));
  });
}

}  // namespace

}  // namespace talvex::test
