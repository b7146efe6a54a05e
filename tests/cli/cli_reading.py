"""The commands that show what an installation holds, describe the classes and call them."""

import json
import os
import subprocess
import tempfile
import unittest

from _talvex import DONE, FAILED, NO, NOW, PROGRAM, SOURCE_DIR, USAGE, SampleTest, environment, run


class Show(SampleTest):
    def test_finds_the_installation_however_its_directory_is_written(self):
        folder, name = os.path.split(self.site)
        expected = self.talvex("show", "IT", "--user", "e.clarke").stdout
        for directory in (name, f"./{name}", f"{name}/", f"../{os.path.basename(folder)}/{name}"):
            command = [PROGRAM, "--now", NOW, "--config", directory, "show", "IT", "--user", "e.clarke"]
            ran = subprocess.run(command, cwd=folder, env=environment(), encoding="utf-8", check=False,
                                 capture_output=True)
            self.assertEqual((ran.returncode, ran.stdout), (DONE, expected), directory + ran.stderr)

    def test_shows_a_budget_and_its_lines(self):
        text = self.talvex("show", "it-cloud").stdout
        self.assertTrue(text.startswith("Budget IT-CLOUD\n"), text)
        for line in ("  Type          standard   Currency     USD",
                     "  Office        Amsterdam  Charge type  CLOUD",
                     "  Holder        p.deboer   Approval     not required",
                     "  Warning step  10%",
                     "Line 3, from 2026-01-01 to 2026-12-31",
                     "  Ordered amount             7,500.00",
                     "  Available amount          22,500.00  █████░░░░░░░░░░░░░░░  25.00%",
                     "Line 17, from 2027-01-01 to 2027-12-31",
                     "  Closed amount                     -"):
            self.assertIn(line, text.splitlines())

    def test_answers_in_json(self):
        budget = self.ask("show", "OPS-LYON")
        self.assertEqual(list(budget), ["budget", "type", "currency", "office", "chargeType", "holder",
                                        "approvalRequired", "warningStep", "lines"])
        self.assertEqual((budget["type"], budget["holder"], budget["warningStep"]),
                         ("standard", "h.moreau", 25))
        line, = budget["lines"]
        self.assertEqual((line["budget"], line["start"], line["end"]), ("OPS-LYON", "2026-01-01", None))
        self.assertEqual((line["amount"], line["approved"], line["availableFraction"]), (30000, None, 1))

    def test_an_overspent_line_looks_overspent(self):
        self.sql("UPDATE BUDGETLINES SET AVAILABLEAMNT = -45000, AVAILABLEPERC = -0.5 WHERE ID = 3")
        self.assertIn("-45,000.00  " + 20 * "╳" + "  -50.00%\n", self.talvex("show", "IT-CLOUD").stdout)
        ascii_only = self.talvex("show", "IT-CLOUD", LANG="C", LC_ALL="").stdout
        self.assertIn("-45,000.00  " + 20 * "x" + "  -50.00%\n", ascii_only)
        # The fraction of a line that grants nothing is 0, however much was used.
        self.sql("UPDATE BUDGETLINES SET BUDGETAMNT = 0, AVAILABLEAMNT = -1, AVAILABLEPERC = 0 WHERE ID = 3")
        self.assertIn("-1.00  " + 20 * "╳" + "  0.00%\n", self.talvex("show", "IT-CLOUD").stdout)

    def test_a_bar_is_full_or_empty_only_when_the_line_is(self):
        for fraction, bar in ((0.0001, "▏" + 19 * "░"), (0.9999, 19 * "█" + "▉"),
                              (0, 20 * "░"), (1.5, 20 * "█")):
            with self.subTest(fraction=fraction):
                self.sql("UPDATE BUDGETLINES SET AVAILABLEPERC = ? WHERE ID = 3", fraction)
                self.assertIn(f"  {bar}  ", self.talvex("show", "IT-CLOUD").stdout)

    def test_four_decimals_are_not_hidden(self):
        self.sql("UPDATE BUDGETLINES SET USEDSENDAMNT = 1234567.0625 WHERE ID = 3")
        self.assertRegex(self.talvex("show", "IT-CLOUD").stdout, r"\n  Ordered amount +1,234,567.0625\n")

    def test_titles_are_in_the_users_language(self):
        text = self.talvex("show", "IT-CLOUD", "--user", "h.moreau").stdout
        self.assertIn("  Montant en attente d'approbation       0.00\n", text)
        self.assertIn("  Montant disponible", text)
        unknown = self.talvex("show", "IT-CLOUD", "--user", "nobody", status=FAILED)
        self.assertIn("The user 'nobody' is unknown", unknown.stderr)

    def test_a_budget_may_lack_everything_but_its_code(self):
        self.sql("INSERT INTO BUDGET (BUDGETCODE) VALUES ('Ωμέγα 予算')")
        text = self.talvex("show", "Ωμέγα 予算").stdout
        self.assertIn("  Type          -  Currency     -\n", text)
        self.assertTrue(text.endswith("\nNo lines.\n"), text)
        self.assertIsNone(self.ask("show", "Ωμέγα 予算")["type"])

    def test_says_no_for_an_unknown_budget(self):
        for code in ("NOWHERE", "", "x" * 4000, "Бюджет 予算", "' OR 1=1 --"):
            with self.subTest(code=code[:20]):
                ran = self.talvex("show", code, status=NO)
                self.assertEqual(ran.stdout, "")
                self.assertTrue(ran.stderr.startswith("talvex: there is no budget '" + code[:20]), ran.stderr)
                self.assertLess(len(ran.stderr), 120)

    def test_a_budget_may_be_called_like_a_command(self):
        self.sql("INSERT INTO BUDGET (BUDGETCODE) VALUES ('show')")
        self.assertEqual(self.ask("show", "show")["budget"], "show")


class Tree(SampleTest):
    def drawn(self, *arguments):
        """The rows of the tree, without the headings and with single blanks between the columns."""
        lines = self.talvex("tree", *arguments).stdout.splitlines()[3:]
        return [" ".join(line.split()) for line in lines]

    def test_draws_the_hierarchy(self):
        text = self.talvex("tree").stdout
        self.assertTrue(text.startswith("Budgets and what is available on 2026-03-16\n\n"), text)
        rows = self.drawn()
        self.assertEqual(len(rows), 16)
        self.assertEqual(rows[0], "COMPANY aggregate EUR 244,010.00 ████▍░░░░░ 43.57%")
        self.assertEqual(rows[2], "│ ├─ IT-CLOUD standard USD 22,500.00 ██▌░░░░░░░ 25.00%")
        self.assertEqual(rows[6], "│ └─ IT-TRAINING standard EUR 9,550.00 ██████▍░░░ 63.67%")
        self.assertEqual(rows[14], "├─ IT-TRAINING standard EUR 9,550.00 ██████▍░░░ 63.67% shown above")
        self.assertTrue(rows[15].startswith("└─ STAFF-TRAVEL"))

    def test_draws_the_part_below_a_budget(self):
        rows = self.drawn("staff")
        self.assertEqual([row.split(" standard")[0] for row in rows[1:]],
                         ["├─ IT-TRAINING", "└─ STAFF-TRAVEL"])
        self.assertNotIn("shown above", "".join(rows))

    def test_shows_the_line_of_the_day(self):
        by_code = {row["budget"]: row for row in self.ask("tree", "--now", "2028-06-01")["budgets"]}
        self.assertIsNone(by_code["IT"]["line"])
        self.assertEqual(by_code["OPS-LYON"]["line"]["line"], 29)
        self.assertIn("├─ IT aggregate EUR no line", self.drawn("--now", "2028-06-01"))

    def test_answers_in_json(self):
        answer = self.ask("tree")
        self.assertEqual(answer["date"], "2026-03-16")
        rows = {(row["parent"], row["budget"]): row for row in answer["budgets"]}
        self.assertEqual(len(rows), 16)
        self.assertEqual(rows[None, "COMPANY"]["depth"], 0)
        self.assertEqual(rows["IT", "IT-CLOUD"]["line"]["available"], 22500)
        self.assertFalse(rows["IT", "IT-TRAINING"]["repeated"])
        self.assertTrue(rows["STAFF", "IT-TRAINING"]["repeated"])

    def test_marks_a_loop_and_does_not_follow_it(self):
        self.sql("INSERT INTO BUDGETRELATIONS (PARENTBUDGET, CHILDBUDGET) VALUES ('IT-HW-AMS', 'IT')")
        rows = self.drawn()
        looped = [row for row in rows if row.endswith("a loop: stands above itself")]
        self.assertEqual(len(looped), 1)
        self.assertTrue(looped[0].startswith("│ │ └─ IT aggregate"), looped)

    def test_shows_a_ring_that_has_no_top(self):
        self.sql("INSERT INTO BUDGETRELATIONS (PARENTBUDGET, CHILDBUDGET) VALUES ('R1', 'R2'), ('R2', 'r1')")
        ring = ["R1 not a budget", "└─ R2 not a budget", "└─ r1 a loop: stands above itself"]
        self.assertEqual(self.drawn()[16:], ring)

    def test_shows_a_budget_without_relations(self):
        self.sql("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE) VALUES ('ALONE', 1, 'EUR')")
        self.assertEqual(self.drawn()[0], "ALONE standard EUR no line")

    def test_a_chain_longer_than_any_screen(self):
        self.sql("INSERT INTO BUDGETRELATIONS (PARENTBUDGET, CHILDBUDGET) "
                 "WITH RECURSIVE N(I) AS (SELECT 0 UNION ALL SELECT I + 1 FROM N WHERE I < 2999) "
                 "SELECT printf('C%05d', I), printf('C%05d', I + 1) FROM N")
        self.assertEqual(len(self.ask("tree", "C00000")["budgets"]), 3001)
        rows = self.drawn("C00000")
        self.assertEqual(len(rows), 31)
        self.assertTrue(rows[-1].endswith("more below: talvex tree C00030"), rows[-1])

    def test_says_no_for_an_unknown_budget(self):
        self.assertIn("talvex: there is no budget 'NOWHERE'",
                      self.talvex("tree", "NOWHERE", status=NO).stderr)


class Describe(unittest.TestCase):
    def test_lists_the_classes_without_an_installation(self):
        ran = run("describe")
        self.assertEqual((ran.returncode, ran.stderr), (DONE, ""))
        self.assertRegex(ran.stdout, r"(?m)^Talvex\.BudgetT +The budget ledger")
        self.assertLessEqual(max(map(len, ran.stdout.splitlines())), 80)
        names = [entry["class"] for entry in json.loads(run("describe", "--json").stdout)["classes"]]
        self.assertIn("Talvex.BudgetT", names)
        self.assertEqual(names, sorted(names))

    def test_describes_the_members_of_a_class(self):
        text = run("describe", "talvex.budgett").stdout
        self.assertIn("\n  GetBudgetLine(iBudgetCode: string, in/out iDate: date): variant\n", text)
        self.assertIn("\n      iBudgetType: TalvexType): int32\n", text)
        self.assertIn("Approved = 1, NotYetApproved = 2, send = 3, Closed = 4, Received = 5", text)
        self.assertLessEqual(max(map(len, text.splitlines())), 80)
        properties = run("describe", "Platform.Recordset").stdout
        self.assertIn("\n  EOF: boolean, read-only\n", properties)
        self.assertIn("Cursor: CursorType, optional", properties)

    def test_describes_in_json(self):
        answer = json.loads(run("--json", "describe", "Talvex.BudgetT").stdout)
        method, = [method for method in answer["methods"] if method["name"] == "GetBudgetLine"]
        self.assertEqual([(parameter["name"], parameter["direction"]) for parameter in method["parameters"]],
                         [("iBudgetCode", "in"), ("iDate", "in/out")])

    def test_says_no_for_an_unknown_class(self):
        ran = run("describe", "Talvex.Nothing")
        self.assertEqual((ran.returncode, ran.stdout, ran.stderr),
                         (NO, "", "talvex: there is no class 'Talvex.Nothing'\n"))

    def test_the_reference_in_the_documents_is_that_of_the_program(self):
        written = (SOURCE_DIR / "docs" / "reference.md").read_text(encoding="utf-8")
        self.assertEqual(written, run("describe", "--markdown").stdout,
                         "make it anew: talvex describe --markdown > docs/reference.md")


class Call(SampleTest):
    def test_calls_a_method_and_shows_what_comes_back(self):
        arguments = ("call", "Talvex.BudgetT", "getbudgetline", "IBUDGETCODE=IT-HW-AMS", "iDate=2026-03-16")
        self.assertEqual(self.talvex(*arguments).stdout, "Result: 5\niDate: 2026-03-16\n")
        self.assertEqual(self.ask(*arguments), {"result": 5, "out": {"iDate": {"$date": "2026-03-16"}}})
        nothing = self.ask("call", "Talvex.BudgetT", "GetBudgetLine", "iBudgetCode=", "iDate=2026-03-16")
        self.assertIsNone(nothing["result"])

    def test_posts_in_a_transaction(self):
        def post(kind, amount, status):
            return self.talvex("call", "Talvex.BudgetT", "PostToBudget",
                               "iBudgetCode=IT-HW-AMS", "iDate=2026-03-16",
                               f"iAmount={amount}", "iCurrencyCode=EUR", f"iBudgetType={kind}", status=status)

        self.assertEqual(post("approved", "1,200.5", DONE).stdout, "Result: 5\n")
        self.assertEqual(self.sql("SELECT USEDAPPROVEDAMNT FROM BUDGETLINES WHERE ID = 5"), [(7200.5,)])
        failed = post("6", "1", FAILED)
        self.assertIn("talvex: Unknow budget type (error 0x80040385)\n", failed.stderr)
        self.assertIn("METHOD: Talvex.BudgetT.PostToBudget\n", failed.stderr)
        self.assertEqual(self.talvex("call", "Talvex.BudgetT", "RepostAllBudgets").stdout, "Result: 28\n")

    def test_reads_arguments_as_their_types_want_them(self):
        convert = ("call", "Mirelo.Currency", "Convert", "source=USD", "target=EUR")
        for arguments, result in ((("amount=100", "date=3/15/2026"), "92.0000"),
                                  (("amount=1,000", "date=2026-08-01T12:00:00"), "880.0000"),
                                  (("amount=0.5", "date=15 March 2026"), "0.4600")):
            self.assertEqual(self.ask(*convert, *arguments)["result"], {"$currency": result})
            self.assertEqual(self.talvex(*convert, *arguments).stdout, f"Result: {result}\n")
        offices = self.talvex("call", "Mirelo.User", "Offices").stdout
        self.assertEqual(offices, "Result:\n  1: Amsterdam\n  2: Hamburg\n  3: Lyon\n")

    def test_reads_variants_as_json_or_as_text(self):
        for value in ("7", "7.5", "true", '"7"', "[1, [2]]", "plain text", '{"$date": "2026-03-15"}', "null",
                      "empty", '{"$dictionary": [["a", 1]]}', "予算"):
            with self.subTest(value=value):
                self.assertEqual(
                    self.talvex("call", "Platform.Dictionary", "Add", "key=k", f"item={value}").stdout,
                    "Done.\n")
        malformed = self.talvex("call", "Platform.Dictionary", "Add", "key=k", "item={1", status=USAGE)
        self.assertIn("item: '{1' is not a JSON value", malformed.stderr)

    def test_refuses_arguments_that_make_no_sense(self):
        for arguments, message in (
                (("iAmount=abc",), "iAmount: 'abc' is not a number"),
                (("iDate=2026-02-30",), "iDate: '2026-02-30' is not a date"),
                (("iBudgetType=Rejected",), "iBudgetType: 'Rejected' is not one of Approved"),
                (("iNothing=1",), "PostToBudget has no parameter 'iNothing'; it has iBudgetCode, iDate"),
                (("iAmount",), "'iAmount' is not of the form name=value"),
                (("iAmount=1", "IAMOUNT=2"), "iAmount is given twice")):
            with self.subTest(arguments=arguments):
                ran = self.talvex("call", "Talvex.BudgetT", "PostToBudget", *arguments, status=USAGE)
                self.assertIn("talvex: " + message, ran.stderr)
        self.talvex("call", "Talvex.BudgetT", status=USAGE)

    def test_fails_for_what_is_not_there(self):
        for arguments, message in ((("Talvex.Nothing", "Do"), "(error 429)"),
                                   (("Talvex.BudgetT", "Nothing"), "(error 438)"),
                                   (("Talvex.BudgetT", "PostToBudget", "iBudgetCode=IT"), "(error 449)"),
                                   (("Talvex.BudgetT", "GetBudgetLine",
                                      "iBudgetCode=null", "iDate=2026-01-01"),
                                    "(error 94)")):
            with self.subTest(arguments=arguments):
                self.assertIn(message, self.talvex("call", *arguments, status=FAILED).stderr.splitlines()[0])


class Rpc(SampleTest):
    def test_serves_the_classes(self):
        request = {"jsonrpc": "2.0", "id": 1, "method": "create", "params": {"class": "Talvex.BudgetT"}}
        ran = subprocess.run([PROGRAM, "--config", self.site, "rpc"], env=environment(), encoding="utf-8",
                             input=json.dumps(request) + "\n", capture_output=True, check=True, timeout=60)
        self.assertEqual(json.loads(ran.stdout), {"jsonrpc": "2.0", "id": 1, "result": {"object": 1}})


class Demo(unittest.TestCase):
    def test_the_demonstration_comes_to_its_end(self):
        with tempfile.TemporaryDirectory() as folder:
            ran = subprocess.run([SOURCE_DIR / "tools" / "demo"], encoding="utf-8",
                                 capture_output=True, timeout=120,
                                 check=False, stdin=subprocess.DEVNULL,
                                 env=environment(TALVEX=PROGRAM,
                                                 TALVEX_SAMPLE=os.path.join(folder, "sample")))
        self.assertEqual((ran.returncode, ran.stderr), (DONE, ""))
        self.assertIn("  Subject: Budgetoverzicht, Budget: IT-HW-AMS-5\n", ran.stdout)
        self.assertIn("  Subject: Budget summary, Budget: COMPANY-1\n", ran.stdout)
        self.assertIn("talvex: The currency 'CHF'", ran.stdout)
        self.assertRegex(ran.stdout, r"\n  Lines 12 +changed +IT-SW-AMS .*: '48000' is now '55000'\n")
        self.assertIn("\nThe messages are in talvex/errorlog/plan20263162026-100000.txt\n", ran.stdout)
        self.assertIn("\n30 lines, all right\n", ran.stdout)


if __name__ == "__main__":
    unittest.main()
