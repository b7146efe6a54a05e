"""The commands that ask the ledger: check, select, budgets, loops and charge."""

import unittest

from _talvex import FAILED, NO, USAGE, SampleTest


class Check(SampleTest):
    def test_tells_who_must_approve_and_how_much_is_left(self):
        text = self.talvex("check", "IT-HW-AMS", "40000", "EUR", status=NO).stdout
        self.assertEqual(text, (
            "40,000.00 EUR on IT-HW-AMS, 2026-03-16: approval is needed.\n\n"
            "  Who       For budget  In    Available                      Why\n"
            "  p.deboer  IT-HW-AMS   EUR   30,000.00  █████░░░░░  50.00%  would be overspent\n"
            "  d.reed    COMPANY     EUR  244,010.00  ████▍░░░░░  43.57%  always requires approval\n"))

    def test_simulates_in_each_budgets_own_currency(self):
        text = self.talvex("check", "IT-HW-AMS", "40000", "USD", "--simulate", status=NO).stdout
        self.assertIn("p.deboer  IT-HW-AMS   EUR   30,000.00   36,800.00   -6,800.00  would be over", text)
        self.assertIn("d.reed    COMPANY     EUR  244,010.00   36,800.00  207,210.00  always requ", text)
        text = self.talvex("check", "COMPANY", "900000", "EUR", "--simulate", status=NO).stdout
        self.assertIn("would be overspent, and always requires approval\n", text)

    def test_answers_in_json(self):
        answer = self.ask("check", "IT-HW-AMS", "30000.01", "EUR", "--simulate", status=NO)
        self.assertEqual((answer["budget"], answer["known"], answer["date"], answer["amount"]),
                         ("IT-HW-AMS", True, "2026-03-16", 30000.01))
        self.assertEqual(answer["approvals"][0], {
            "holder": "p.deboer", "budget": "IT-HW-AMS", "reason": "would be overspent", "currency": "EUR",
            "availableBefore": 30000, "newAmount": 30000.01})
        plain = self.ask("check", "IT-HW-AMS", "30000", "EUR", status=NO)
        self.assertEqual(plain["approvals"], [
            {"holder": "d.reed", "budget": "COMPANY", "reason": "always requires approval"}])

    def test_nobody_has_to_approve(self):
        self.sql("UPDATE BUDGET SET APPROVEINBUDGET = 0")
        text = self.talvex("check", "IT-HW-AMS", "30000", "EUR").stdout
        self.assertEqual(text, "30,000.00 EUR on IT-HW-AMS, 2026-03-16: nobody has to approve.\n")
        self.assertEqual(self.ask("check", "IT-HW-AMS", "30000", "EUR")["approvals"], [])

    def test_looks_at_the_day_it_is_told(self):
        self.sql("UPDATE BUDGET SET APPROVEINBUDGET = 0")
        self.talvex("check", "IT-HW-AMS", "40000", "EUR", "--date", "2031-01-01")

    def test_says_that_there_is_no_such_budget(self):
        self.assertEqual(self.talvex("check", "GHOST", "1", "EUR", status=NO).stdout,
                         "There is no budget 'GHOST'.\n")
        self.assertFalse(self.ask("check", "GHOST", "1", "EUR", status=NO)["known"])

    def test_refuses_what_makes_no_sense(self):
        for arguments in (("IT-HW-AMS", "much", "EUR"), ("IT-HW-AMS", "1", "EUR", "--date", "someday"),
                          ("IT-HW-AMS", "1")):
            self.talvex("check", *arguments, status=USAGE)
        self.assertIn("'QQQ'", self.talvex("check", "IT-HW-AMS", "1", "QQQ", status=FAILED).stderr)

    def test_writes_nothing(self):
        before = self.sql("SELECT * FROM BUDGETLINES")
        self.talvex("check", "IT-HW-AMS", "40000", "EUR", status=NO)
        self.assertEqual(self.sql("SELECT * FROM BUDGETLINES"), before)


class Select(SampleTest):
    ERP = ("--office", "Amsterdam", "--charge-type", "SOFTWARE",
           "RequisitionDepartment=Finance", "RequisitionProject=ERP")

    def test_finds_the_budget_to_charge(self):
        text = self.talvex("select", *self.ERP).stdout
        self.assertIn("Is charged on 2026-03-16:\n", text)
        self.assertIn("  IT-ERP-AMS  standard  EUR  s.vermeer  30,000.00  ██▌░░░░░░░  25.00%\n", text)
        other = self.ERP[:-1] + ("RequisitionProject=none",)
        self.assertEqual([row["budget"] for row in self.ask("select", *other)["budgets"]], ["IT-SW-AMS"])

    def test_finds_all_budgets_that_may_be_charged(self):
        answer = self.ask("select", "--all", *self.ERP)
        self.assertEqual([row["budget"] for row in answer["budgets"]], ["IT-ERP-AMS", "IT-SW-AMS"])
        self.assertEqual(answer["budgets"][0]["line"]["available"], 30000)
        self.assertIn("May be charged", self.talvex("select", "--all", *self.ERP).stdout)

    def test_finds_none(self):
        nothing = ("--office", "Mars", "--charge-type", "ROCKETS", "RequisitionDepartment=null",
                   "RequisitionProject=")
        self.assertEqual(self.talvex("select", *nothing, status=NO).stdout,
                         "No budget can be charged on 2026-03-16.\n")
        self.assertEqual(self.ask("select", *nothing, status=NO)["budgets"], [])

    def test_refuses_what_makes_no_sense(self):
        self.assertIn("no property: NAME=VALUE", self.talvex("select", "ERP", status=USAGE).stderr)
        self.assertIn("given twice", self.talvex("select", "a=1", "A=2", status=USAGE).stderr)
        missing = self.talvex("select", *self.ERP[:-1], status=FAILED)
        self.assertIn("'RequisitionProject'", missing.stderr)


class Budgets(SampleTest):
    def test_lists_them_all(self):
        answer = self.ask("budgets")
        codes = [row["budget"] for row in answer["budgets"]]
        self.assertEqual(codes, [row[0] for row in self.sql("SELECT BUDGETCODE FROM BUDGET ORDER BY 1")])

    def test_lists_those_of_a_holder(self):
        text = self.talvex("budgets", "--holder", "p.deboer").stdout
        self.assertEqual(text, (
            "Budgets and what is available on 2026-03-16\n\n"
            "Budget     Type      In   Holder    Available\n"
            "IT-CLOUD   standard  USD  p.deboer  22,500.00  ██▌░░░░░░░  25.00%\n"
            "IT-HW-AMS  standard  EUR  p.deboer  30,000.00  █████░░░░░  50.00%\n"
            "IT-SW-AMS  standard  EUR  p.deboer  21,000.00  ████▍░░░░░  43.75%\n"))
        self.assertEqual(self.talvex("budgets", "--holder", "nobody").stdout, "There are no such budgets.\n")

    def test_lists_the_standard_ones(self):
        rows = self.ask("budgets", "--standard")["budgets"]
        self.assertEqual({row["type"] for row in rows}, {"standard"})
        self.assertEqual(len(rows), self.sql("SELECT COUNT(*) FROM BUDGET WHERE BUDGETTYPE = 1")[0][0])
        self.talvex("budgets", "--standard", "--holder", "p.deboer", status=USAGE)


class Loops(SampleTest):
    def close_a_loop(self):
        self.sql("INSERT INTO BUDGETRELATIONS (PARENTBUDGET, CHILDBUDGET) VALUES ('IT-HW-AMS', 'COMPANY')")

    def test_finds_none(self):
        self.assertEqual(self.talvex("loops").stdout, "No loops.\n")
        self.assertEqual(self.ask("loops"), {"from": "COMPANY", "to": "STAFF-TRAVEL", "loops": []})

    def test_draws_the_whole_way_up(self):
        self.close_a_loop()
        self.assertEqual(self.talvex("loops", status=NO).stdout,
                         "Budgets that stand above themselves, each with the way up to itself:\n"
                         "  IT-HW-AMS → IT → COMPANY → IT-HW-AMS\n")
        self.assertEqual(self.ask("loops", status=NO)["loops"], [
            {"budget": "IT-HW-AMS", "text": "@@@IT-HW-AMS@@@COMPANY@@@IT-HW-AMS",
             "path": ["IT-HW-AMS", "IT", "COMPANY", "IT-HW-AMS"]}])

    def test_looks_at_a_range(self):
        self.close_a_loop()
        self.talvex("loops", "MKT-EVENTS", "STAFF-TRAVEL")
        self.talvex("loops", "IT-HW-AMS", status=NO)

    def test_takes_codes_that_contain_the_separator(self):
        for code in ("@@@", "a@@@a"):
            self.sql("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE) VALUES (?, 1)", code)
            self.sql("INSERT INTO BUDGETRELATIONS VALUES (?, ?)", code, code)
        paths = [loop["path"] for loop in self.ask("loops", status=NO)["loops"]]
        self.assertEqual(paths, [["@@@", "@@@"], ["a@@@a", "a@@@a"]])


class Charge(SampleTest):
    def test_adds_and_takes_back(self):
        answer = self.ask("charge", "add", "4711", "1", "Lyon", "MKT-JAPAN", "62.5", "--revision", "3")
        self.assertEqual(answer["done"], "one added")
        charge = answer["charges"][0]
        self.assertEqual((charge["office"], charge["budget"], charge["percentage"], charge["revision"]),
                         ("Lyon", "MKT-JAPAN", 62.5, 3))
        text = self.talvex("charge", "add", "4711", "1", "Lyon", "MKT-JAPAN", "1", status=NO).stdout
        self.assertIn("all taken back, as it was charged to that office and budget already.\n", text)
        self.assertIn("It is charged to no budget.\n", text)
        self.assertEqual(self.ask("charge", "show", "4711", "1")["charges"], [])

    def test_splits(self):
        self.talvex("charge", "add", "4711", "1", "Lyon", "MKT-JAPAN", "100")
        text = self.talvex("charge", "split", "4711", "1", "--revision", "2",
                           "--share", "Amsterdam", "IT-HW-AMS", "60",
                           "--share", "Lyon", "MKT-EVENTS", "39.5").stdout
        self.assertRegex(text, r"Amsterdam +IT-HW-AMS +60%\n +\d+ +Lyon +MKT-EVENTS +39\.5%\n")
        stored = self.sql("SELECT ADMINOFFICE, BUDGETCODE, PERCENTAGESPLIT, REVISION FROM CHARGELINES "
                          "WHERE REQUISITIONLINEID = 4711 ORDER BY CHARGELINEID")
        self.assertEqual(stored, [("Amsterdam", "IT-HW-AMS", 60, 2), ("Lyon", "MKT-EVENTS", 39.5, 2)])

    def test_deletes(self):
        self.talvex("charge", "add", "4711", "1", "Lyon", "MKT-JAPAN", "100")
        self.assertEqual(self.ask("charge", "delete", "4711", "1")["charges"], [])

    def test_lists_charge_types(self):
        types = self.ask("charge", "types")["chargeTypes"]
        self.assertIn({"chargeType": "HARDWARE", "account": "4310"}, types)
        self.assertIn("HARDWARE     4310\n", self.talvex("charge", "types").stdout)

    def test_deletes_a_charge_type_that_nothing_refers_to(self):
        refused = self.talvex("charge", "delete-type", "SOFTWARE", status=FAILED)
        self.assertIn("invalid reference to another record", refused.stderr)
        self.assertIn("Charge Type doesn't exist",
                      self.talvex("charge", "delete-type", "GHOST", status=FAILED).stderr)
        self.sql("INSERT INTO CHARGETYPES (CHARGETYPECODE) VALUES ('NEW')")
        self.assertEqual(self.talvex("charge", "delete-type", "NEW").stdout, "Charge type NEW is deleted.\n")
        self.assertEqual(self.sql("SELECT * FROM CHARGETYPES WHERE CHARGETYPECODE = 'NEW'"), [])

    def test_refuses_what_makes_no_sense(self):
        for arguments in ((), ("add", "x", "1", "Lyon", "A", "100"), ("add", "1", "1", "Lyon", "A", "much"),
                          ("split", "1", "1"), ("split", "1", "1", "--share", "Lyon", "A")):
            self.talvex("charge", *arguments, status=USAGE)


if __name__ == "__main__":
    unittest.main()
