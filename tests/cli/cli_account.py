"""Finding the ledger account of a requisition line, on the command line and through the gateway."""

import unittest

from _talvex import DONE, FAILED, NO, USAGE, SampleTest, run
from _gateway import Gateway


def requisition(charge_type, amount, department="IT", project=""):
    """The properties that the rules of the sample company look at, as arguments."""
    return (f"RequisitionChargeType={charge_type}", f"RequisitionAmount={amount}",
            f"RequisitionDepartment={department}", f"RequisitionProject={project}")


class Account(SampleTest):
    def test_names_the_account_and_the_rule(self):
        text = self.talvex("account", *requisition("HARDWARE", 1200)).stdout
        self.assertEqual(text, "Ledger account 4310 Small computer hardware, by rule 3 Hardware\n")
        answer = self.ask("account", *requisition("HARDWARE", 1200))
        self.assertEqual(answer, {"account": "4310", "description": "Small computer hardware", "rule": 3})

    def test_the_sample_company_books_what_it_orders(self):
        for arguments, account in ((("HARDWARE", "4999.99", "IT", "ERP"), "4310"),
                                   (("HARDWARE", "5,000", "IT", "ERP"), "0310"),
                                   (("HARDWARE", "5000", "", "ERP"), "4310"),
                                   (("SOFTWARE", "10", "IT", ""), "4320"),
                                   (("SOFTWARE", "10", "IT", "ERP"), "4325"),
                                   (("CLOUD", "10", "IT", ""), "4330"),
                                   (("CLOUD", "10", "", ""), "4900"),
                                   (("TRAVEL", "10", "IT", ""), "4410"),
                                   (("TRAINING", "10", "IT", ""), "4130"),
                                   (("MARKETING", "10", "Marketing Lyon", ""), "4500"),
                                   (("FACILITIES", "10", "Sales", ""), "4200"),
                                   (("FACILITIES", "10", "Helpdesk", ""), "4900")):
            with self.subTest(arguments=arguments):
                self.assertEqual(self.ask("account", *requisition(*arguments))["account"], account)

    def test_rules_and_accounts_have_their_time(self):
        then = ("--now", "2025-06-01")
        self.assertEqual(self.ask("account", *requisition("TRAVEL", 10), *then)["account"], "4400")
        project = requisition("SOFTWARE", 10, "IT", "ERP")
        self.assertEqual(self.ask("account", *project, *then)["account"], "4320")

    def test_only_accounts_of_a_type(self):
        arguments = requisition("HARDWARE", 7500, "IT", "ERP")
        for name, account in (("BalanceSheet", "0310"), ("expense", "4310"), ("3", "4900"), ("0", "0310"),
                              ("7", "0310")):
            with self.subTest(type=name):
                self.assertEqual(self.ask("account", *arguments, "--type", name)["account"], account)
        none = self.ask("account", *arguments, "--type", "ProfitAndLoss", status=NO)
        self.assertEqual(none["account"], None)
        wrong = self.talvex("account", *arguments, "--type", "Profit", status=USAGE).stderr
        self.assertIn("'Profit' is no type of account; the types are BalanceSheet, ProfitAndLoss, "
                      "Miscellaneous, Expense", wrong)

    def test_explains_how_each_rule_fared(self):
        text = self.talvex("account", *requisition("HARDWARE", 7500), "--explain").stdout
        self.assertTrue(text.startswith("Ledger account 4310 Small computer hardware, by rule 3 Hardware\n"))
        for line in (
                "     1  Everything else                applies",
                "     2  Equipment from 5,000 on        applies",
                "     5  Software                       line 1 fails: RequisitionChargeType is 'HARDWARE', "
                "wanted Equal 'SOFTWARE'",
                "        10     2  Equipment from 5,000 on  0310     rejected: dimension 2, "
                "RequisitionProject, is empty",
                "        20     3  Hardware                 4310     chosen",
                "       900     1  Everything else          4900     not needed"):
            self.assertIn(line, text.splitlines())
        # The rule that is no longer valid is no candidate.
        self.assertNotIn("old account", text)

    def test_explains_in_json(self):
        answer = self.ask("account", *requisition("HARDWARE", 7500), "--explain")
        self.assertEqual((answer["account"], answer["rule"]), ("4310", 3))
        self.assertEqual([rule["rule"] for rule in answer["compared"]], [1, 2, 3, 4, 5, 6, 8, 9, 10, 11])
        self.assertEqual(answer["compared"][1], {"rule": 2, "description": "Equipment from 5,000 on",
                                                 "applies": True, "failed": None})
        self.assertEqual(answer["compared"][3]["failed"],
                         {"line": 1, "property": "RequisitionChargeType", "value": "HARDWARE",
                          "operator": "Inside", "fieldValue": "SOFTWARE;CLOUD"})
        self.assertEqual([(rule["rule"], rule["sequence"], rule["account"], rule["outcome"])
                          for rule in answer["applying"]],
                         [(2, 10, "0310", "rejected"), (3, 20, "4310", "chosen"),
                          (1, 900, "4900", "not needed")])
        self.assertEqual([rule["emptyDimension"] for rule in answer["applying"]],
                         [{"number": 2, "name": "RequisitionProject"}, None, None])

    def test_says_no_and_why(self):
        arguments = requisition("CLOUD", 0, "")
        text = self.talvex("account", *arguments, "--explain", status=NO).stdout
        self.assertTrue(text.startswith("No rule yields a ledger account.\n"), text)
        self.assertIn("  rejected: dimension 1, RequisitionDepartment, is empty\n", text)
        self.assertEqual(self.ask("account", *arguments, status=NO),
                         {"account": None, "description": None, "rule": None})
        self.sql("DELETE FROM ACCOUNTINGRULELINE")
        text = self.talvex("account", "--explain", status=NO).stdout
        self.assertIn("No rule with lines is valid now", text)
        self.assertEqual(self.ask("account", "--explain", status=NO)["compared"], [])

    def test_a_property_that_a_rule_looks_at_must_be_there(self):
        ran = self.talvex("account", "RequisitionAmount=1", status=FAILED)
        self.assertEqual(ran.stdout, "")
        self.assertIn("has no key 'RequisitionChargeType' (error 5)", ran.stderr.splitlines()[0])
        self.assertIn("METHOD: Talvex.BudgetManager.getDefaultLedgerAccount", ran.stderr)

    def test_refuses_properties_that_make_no_sense(self):
        for arguments, message in ((("RequisitionAmount",), "is no property: NAME=VALUE is wanted"),
                                   (("A=1", "a=2"), "the property 'a' is given twice")):
            with self.subTest(arguments=arguments):
                self.assertIn(message, self.talvex("account", *arguments, status=USAGE).stderr)
        self.assertIn("talvex: no installation is given", run("account", "A=1").stderr)

    def test_a_value_is_everything_behind_the_first_equals_sign(self):
        self.sql("INSERT INTO ACCOUNTINGRULE (ACCRULEID, SEQUENCENUMBER, LEDGERACCOUNT) "
                 "VALUES (50, 1, '4410')")
        self.sql("INSERT INTO ACCOUNTINGRULELINE VALUES (50, 1, 'RequisitionDepartment', 5, 'a=b')")
        self.assertEqual(self.ask("account", *requisition("CLOUD", 1, "a=b"))["account"], "4410")

    def test_nothing_in_a_table_reaches_the_terminal_as_a_command(self):
        self.sql("UPDATE ACCOUNTINGRULE SET RULEDESCRIPTION = ?", "\033[2Jx")
        self.assertNotIn("\033", self.talvex("account", *requisition("CLOUD", 1), "--explain").stdout)


class Maintenance(SampleTest):
    """A program in another language keeps accounts and rules through the gateway."""

    def setUp(self):
        super().setUp()
        self.gateway = self.enterContext(Gateway(self.site))
        self.manager = self.gateway.create("Talvex.BudgetManager")

    def make(self, class_name, **properties):
        number = self.gateway.create(class_name)
        for name, value in properties.items():
            self.gateway.result("set", object=number, property=name, value=value)
        return {"$object": number}

    def invoke(self, method, *args):
        return self.gateway.invoke(self.manager, method, list(args))

    def test_an_account_and_a_rule_decide_at_once(self):
        account = self.make("Talvex.LedgerAccount", LedgerAccount="4999", LedgerAccountDesc="Gifts",
                            AccountType=4, Dimension1=2)
        self.assertTrue(self.invoke("UpdateLedgerAccount", account)["result"])
        rule = self.make("Talvex.AccountingRule", LedgerAccount="4999", SequenceNumber=1,
                         RuleDescription="Gifts", DateFrom={"$date": "2026-01-01"})
        rule_id = self.invoke("UpdateAccountingRule", rule, None)["out"]["o_lAccountingRuleID"]
        self.assertEqual(rule_id, 12)
        line = self.make("Talvex.AccountingRuleLine", ACCRULEID=rule_id,
                         LineDescription="RequisitionChargeType", Operator=8, FieldValue="GIFT;PRESENT")
        self.assertTrue(self.invoke("UpdateAccountingRuleLine", line)["result"])
        properties = {"$collection": [["RequisitionChargeType", "GIFT"], ["RequisitionAmount", 12.5],
                                      ["RequisitionDepartment", "IT"], ["RequisitionProject", None]]}
        for account_type in (0, "Expense"):
            found = self.invoke("getDefaultLedgerAccount", properties, account_type)["result"]
            self.assertEqual(found, "4999")

        read = self.invoke("GetAccountingRuleLineDetails", rule_id, 1)["result"]["$object"]
        self.assertEqual(self.gateway.get(read, "FieldValue"), "GIFT;PRESENT")
        self.assertEqual(self.invoke("GetAccountingRuleDetails", 99)["result"], {"$empty": True})
        accounts = self.invoke("GetAllLedgerAccounts", None)["out"]["io_objSD"]["$dictionary"]
        self.assertIn(["4999", "Gifts"], accounts)

        in_use = self.gateway.error_number("invoke", object=self.manager, method="DeleteLedgerAccount",
                                           args=["4999"])
        self.assertEqual(in_use, -2147216494)
        booked = self.gateway.error_number("invoke", object=self.manager, method="DeleteLedgerAccount",
                                           args=["4310"])
        self.assertEqual(booked, -2147216494)
        self.assertTrue(self.invoke("DeleteAccountingRule", rule_id)["result"])
        self.assertTrue(self.invoke("DeleteLedgerAccount", "4999")["result"])
        self.assertEqual(self.gateway.close_input(), DONE)

    def test_the_names_of_the_dimensions(self):
        parameters = self.gateway.create("Talvex.AccountingParameter")
        self.gateway.invoke(parameters, "UpdateAccountingParameters", ["DIMENSION3", "RequisitionRegion"])
        self.gateway.invoke(parameters, "UpdateAccountingParameters", ["DIMENSION2", "1"])
        self.assertEqual(self.gateway.get(parameters, "Dimension3"), "")
        self.gateway.invoke(parameters, "ReadParameters", [])
        self.assertEqual([self.gateway.get(parameters, f"Dimension{number}") for number in range(1, 6)],
                         ["RequisitionDepartment", " ", "RequisitionRegion", "", ""])


if __name__ == "__main__":
    unittest.main()
