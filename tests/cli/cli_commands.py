"""The commands that change or check an installation, and what all commands have in common."""

import json
import os
import pty
import select
import subprocess
import tempfile
import unittest

from _talvex import DONE, FAILED, NO, NOW, PROGRAM, USAGE, SampleTest, environment, run


class Init(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.site = os.path.join(self.folder.name, "new", "site")

    def test_makes_an_installation_without_budgets(self):
        made = run("init", self.site)
        self.assertEqual((made.returncode, made.stderr), (DONE, ""))
        self.assertIn(self.site, made.stdout)
        self.assertEqual(run("tree", "--config", self.site).stdout, "There are no budgets.\n")
        self.assertEqual(run("verify", "--config", self.site).stdout, "0 lines, all right\n")

    def test_answers_in_json(self):
        made = run("--json", "init", self.site, "--sample")
        self.assertEqual(json.loads(made.stdout), {"directory": self.site, "sample": True})

    def test_refuses_a_directory_in_use_and_leaves_it_alone(self):
        os.makedirs(self.site)
        kept = os.path.join(self.site, "kept.txt")
        with open(kept, "w", encoding="utf-8") as file:
            file.write("mine")
        refused = run("init", self.site, "--sample")
        self.assertEqual(refused.returncode, FAILED)
        self.assertIn(f"talvex: The directory {self.site} is in use", refused.stderr)
        self.assertEqual(os.listdir(self.site), ["kept.txt"])

    def init_from(self, name, given):
        return subprocess.run([PROGRAM, "init", self.site, "--database-file", name], stdin=given, check=False,
                              env=environment(), encoding="utf-8", capture_output=True, timeout=120)

    def test_a_connection_string_is_read_from_a_file_or_from_standard_input(self):
        # No driver of that name is installed: the message shows what was read, without the password.
        secret = "Driver=No Such Driver;Server=db.example.com;UID=u;PWD={a}};x=s3cret}"
        path = os.path.join(self.folder.name, "database")
        for content in (secret, secret + "\n", "  " + secret + "  \r\n\n"):
            with open(path, "w", encoding="utf-8", newline="") as file:
                file.write(content)
            for name in (path, "-"):
                with self.subTest(content=content, name=name), open(path, "rb") as file:
                    ran = self.init_from(name, file)
                    self.assertEqual(ran.returncode, FAILED, ran.stderr)
                    self.assertIn("Cannot open the database Driver=No Such Driver;Server=db.example.com;"
                                  "UID=u;PWD=***: ", ran.stderr)
                    self.assertNotIn("s3cret", ran.stdout + ran.stderr)
                    self.assertFalse(os.path.exists(self.site))

    def test_what_is_no_connection_string_is_refused_without_being_quoted(self):
        path = os.path.join(self.folder.name, "database")
        for content, reason in (("", "holds no connection string"), (" \n\n", "holds no connection string"),
                                ("PWD=s3cret\nServer=x", "the connection string alone, on one line"),
                                ("PWD=s3cret\0", "the connection string alone, on one line"),
                                ("s3cret" * 20000, "is too long")):
            with open(path, "w", encoding="utf-8") as file:
                file.write(content)
            for name in (path, "-"):
                with self.subTest(content=content[:20], name=name), open(path, "rb") as file:
                    ran = self.init_from(name, file)
                    self.assertEqual(ran.returncode, USAGE, ran.stderr)
                    self.assertIn(reason, ran.stderr)
                    self.assertNotIn("s3cret", ran.stderr)
        both = run("init", self.site, "--database", "Driver=x", "--database-file", path)
        self.assertEqual(both.returncode, USAGE)
        for options, reason in ((["--database-file", "Driver=x;PWD=s3cret"], "takes the name of a file"),
                                (["--databse", "Driver=x;PWD=s3cret"], "not expected"),
                                (["Driver=x;PWD=s3cret"], "not expected"),
                                (["--database-file", ""], "the name of the file is empty"),
                                (["--database", " "], "the connection string is empty")):
            with self.subTest(options=options):
                ran = run("init", self.site, *options)
                self.assertEqual(ran.returncode, USAGE, ran.stderr)
                self.assertIn(reason, ran.stderr)
                self.assertNotIn("s3cret", ran.stderr)
        missing = run("init", self.site, "--database-file", path + ".not")
        self.assertEqual(missing.returncode, FAILED)
        self.assertIn("File not found", missing.stderr)
        self.assertFalse(os.path.exists(self.site))

    def test_wants_a_directory(self):
        self.assertEqual(run("init").returncode, USAGE)


class Post(SampleTest):
    def test_posts_to_the_budget_and_to_those_above_it(self):
        answer = self.ask("post", "IT-HW-AMS", "1200", "EUR", "--type", "Approved")
        self.assertEqual((answer["budget"], answer["known"], answer["line"]), ("IT-HW-AMS", True, 5))
        self.assertEqual((answer["date"], answer["amount"], answer["type"]), ("2026-03-16", 1200, "Approved"))
        self.assertEqual([change["budget"] for change in answer["changes"]], ["IT-HW-AMS", "IT", "COMPANY"])
        own = answer["changes"][0]
        self.assertEqual((own["before"]["approved"], own["after"]["approved"]), (6000, 7200))
        self.assertEqual((own["before"]["available"], own["after"]["available"]), (30000, 28800))
        self.assertEqual(own["after"]["availableFraction"], 0.48)
        stored = self.sql("SELECT BUDGETCODE, USEDAPPROVEDAMNT FROM BUDGETLINES "
                          "WHERE ID IN (1, 2, 5) ORDER BY ID")
        self.assertEqual(stored, [("COMPANY", 20810), ("IT", 11600), ("IT-HW-AMS", 7200)])

    def test_shows_what_changed(self):
        text = self.talvex("post", "IT-HW-AMS", "1,200", "EUR", "--type", "approved").stdout
        self.assertIn("Posted 1,200.00 EUR as Approved to IT-HW-AMS, line 5, on 2026-03-16.\n", text)
        self.assertIn("  Approved amount    6,000.00  →   7,200.00\n"
                      "  Available amount  30,000.00  →  28,800.00\n"
                      "  before  ██████████░░░░░░░░░░  50.00%\n"
                      "  after   █████████▋░░░░░░░░░░  48.00%\n", text)

    def test_uses_plain_characters_where_the_locale_has_no_others(self):
        text = self.talvex("post", "IT-HW-AMS", "1200", "EUR", "--type", "1", LC_ALL="C").stdout
        self.assertIn("  Available amount  30,000.00  ->  28,800.00\n"
                      "  before  ##########..........  50.00%\n", text)
        self.assertTrue(text.isascii())

    def test_converts_into_each_budgets_currency(self):
        changes = self.ask("post", "IT-CLOUD", "2500", "GBP", "--type", "send")["changes"]
        self.assertEqual([change["currency"] for change in changes], ["USD", "EUR", "EUR"])
        moved = [round(change["after"]["sent"] - change["before"]["sent"], 4) for change in changes]
        self.assertEqual(moved, [3233.7, 2975, 2975])

    def test_posts_once_where_two_ways_lead_up(self):
        changes = self.ask("post", "IT-TRAINING", "600", "EUR", "--type", "NotYetApproved")["changes"]
        self.assertEqual([change["budget"] for change in changes], ["IT-TRAINING", "IT", "STAFF", "COMPANY"])
        self.assertEqual(changes[3]["after"]["notApproved"] - changes[3]["before"]["notApproved"], 600)

    def test_takes_back_a_negative_amount(self):
        own = self.ask("post", "IT-HW-AMS", "-1000.5", "EUR", "--type", "5")["changes"][0]
        self.assertEqual((own["before"]["received"], own["after"]["received"]), (8000, 6999.5))

    def test_overspends_and_says_so(self):
        text = self.talvex("post", "IT-HW-AMS", "36000", "EUR", "--type", "Closed").stdout
        self.assertIn("  Available amount  30,000.00  →  -6,000.00\n", text)
        self.assertIn("  after   " + 20 * "╳" + "  -10.00%\n", text)

    def test_takes_the_day_from_the_date_and_else_from_the_clock(self):
        posted = self.ask("post", "IT", "1", "EUR", "--type", "1", "--date", "2027-05-01")
        self.assertEqual(posted["line"], 16)
        self.assertEqual(self.ask("post", "IT", "1", "EUR", "--type", "1")["line"], 2)
        self.assertEqual(self.ask("post", "IT", "1", "EUR", "--type", "1", "--now", "2027-05-01")["line"], 16)

    def test_tells_the_mails_of_a_crossed_warning_step(self):
        answer = self.ask("post", "IT-HW-AMS", "21000", "EUR", "--type", "send")
        self.assertEqual(answer["newMails"], self.mails())
        self.assertEqual(len(self.mails()), 2)
        again = self.ask("post", "IT-HW-AMS", "1", "EUR", "--type", "send")
        self.assertEqual((again["newMails"], len(self.mails())), ([], 2))

    def test_titles_are_in_the_users_language(self):
        text = self.talvex("post", "IT-HW-AMS", "1", "EUR", "--type", "1", "--user", "j.vogel").stdout
        self.assertIn("Genehmigter Betrag", text)

    def test_says_no_when_no_line_takes_the_posting(self):
        answer = self.ask("post", "OPS-LYON", "750", "EUR", "--type", "Received", status=NO)
        self.assertEqual((answer["known"], answer["line"]), (True, None))
        self.assertEqual([change["budget"] for change in answer["changes"]], ["OPERATIONS", "COMPANY"])
        text = self.talvex("post", "OPS-LYON", "750", "EUR", "--type", "Received", status=NO).stdout
        self.assertIn("Budget OPS-LYON has no line that takes postings on 2026-03-16.\n", text)

    def test_says_no_for_an_unknown_budget(self):
        for code in ("NOWHERE", "", "x" * 4000, "Бюджет 予算", "'; DROP TABLE BUDGET; --"):
            with self.subTest(code=code[:20]):
                answer = self.ask("post", code, "1", "EUR", "--type", "1", status=NO)
                self.assertEqual((answer["budget"], answer["known"], answer["changes"]), (code, False, []))
                text = self.talvex("post", code, "1", "EUR", "--type", "1", status=NO).stdout
                self.assertIn("There is no budget '", text)
                self.assertLess(len(text), 120)

    def test_refuses_what_is_no_amount(self):
        for amount in ("nan", "inf", "1e999", "twelve", "", "1.2.3", "0x10"):
            with self.subTest(amount=amount):
                ran = self.talvex("post", "IT", amount, "EUR", "--type", "1", status=USAGE)
                self.assertIn(f"'{amount}' is no amount", ran.stderr)

    def test_refuses_a_type_or_a_day_that_is_none(self):
        wrong_type = self.talvex("post", "IT", "1", "EUR", "--type", "Rejected", status=USAGE).stderr
        self.assertIn("'Rejected' is no type of posting", wrong_type)
        self.assertIn("Approved, NotYetApproved, send, Closed, Received", wrong_type)
        self.talvex("post", "IT", "1", "EUR", "--type", "1.5", status=USAGE)
        self.talvex("post", "IT", "1", "EUR", status=USAGE)
        wrong_day = self.talvex("post", "IT", "1", "EUR", "--type", "1", "--date", "2026-02-30",
                                status=USAGE).stderr
        self.assertIn("'2026-02-30' is no date", wrong_day)

    def test_a_failure_undoes_everything_and_shows_its_trace(self):
        before = self.sql("SELECT * FROM BUDGETLINES ORDER BY ID")
        for arguments, message in ((("100", "CHF", "--type", "1"), "'CHF'"),
                                   (("100", "EUR", "--type", "6"), "Unknow budget type (error 0x80040385)"),
                                   (("1e300", "EUR", "--type", "1"), "(error 6)")):
            with self.subTest(arguments=arguments):
                ran = self.talvex("post", "IT-HW-AMS", *arguments, status=FAILED)
                self.assertEqual(ran.stdout, "")
                self.assertIn(message, ran.stderr.splitlines()[0])
                self.assertIn("\n   METHOD: Talvex.BudgetT.PostToBudget\n", ran.stderr)
                self.assertIn("\n     METHOD: Talvex.BudgetT.PostToBudgetStructure\n     DESC: ", ran.stderr)
                self.assertNotIn("\r", ran.stderr)
        self.assertEqual(self.sql("SELECT * FROM BUDGETLINES ORDER BY ID"), before)

    def test_a_loop_fails_and_changes_nothing(self):
        self.sql("INSERT INTO BUDGETRELATIONS (PARENTBUDGET, CHILDBUDGET) VALUES ('IT-HW-AMS', 'COMPANY')")
        before = self.sql("SELECT * FROM BUDGETLINES ORDER BY ID")
        ran = self.talvex("post", "IT-HW-AMS", "1", "EUR", "--type", "1", status=FAILED)
        self.assertIn("(error 28)", ran.stderr.splitlines()[0])
        self.assertEqual(self.sql("SELECT * FROM BUDGETLINES ORDER BY ID"), before)


class Verify(SampleTest):
    def test_is_content_with_the_sample_and_with_postings(self):
        self.talvex("post", "IT-CLOUD", "123.45", "GBP", "--type", "send")
        self.talvex("post", "MKT-JAPAN", "9876543", "JPY", "--type", "Closed")
        self.assertEqual(self.talvex("verify").stdout, "29 lines, all right\n")
        self.assertEqual(self.ask("verify"), {"lines": 29, "drifts": [], "withoutBudget": []})

    def test_names_a_line_that_was_tampered_with(self):
        self.sql("UPDATE BUDGETLINES SET AVAILABLEAMNT = 99999 WHERE ID = 5")
        self.sql("UPDATE BUDGETLINES SET USEDSENDAMNT = 0 WHERE ID = 3")
        text = self.talvex("verify", status=NO).stdout
        self.assertIn("29 lines, 2 whose available amount is not what its totals say:\n", text)
        self.assertRegex(text, r"\n  IT-CLOUD +3 +22,500.00  25.00% +30,000.00  33.33%\n")
        self.assertRegex(text, r"\n  IT-HW-AMS +5 +99,999.00  50.00% +30,000.00  50.00%\n")
        drifts = self.ask("verify", status=NO)["drifts"]
        self.assertEqual([(drift["budget"], drift["line"]) for drift in drifts],
                         [("IT-CLOUD", 3), ("IT-HW-AMS", 5)])
        self.assertEqual(drifts[1]["stored"], {"available": 99999, "availableFraction": 0.5})
        self.assertEqual(drifts[1]["expected"], {"available": 30000, "availableFraction": 0.5})

    def test_names_a_line_whose_budget_does_not_exist(self):
        self.sql("INSERT INTO BUDGETLINES (BUDGETCODE, BUDGETAMNT, AVAILABLEAMNT, AVAILABLEPERC) "
                 "VALUES ('it-cloud', 1, 1, 1), ('STRAY', 1, 1, 1), ('STRAY', 1, 7, 1)")
        found = self.ask("verify", status=NO)
        self.assertEqual(found["withoutBudget"],
                         [{"budget": "STRAY", "line": 31}, {"budget": "STRAY", "line": 32}])
        self.assertEqual([(drift["budget"], drift["line"]) for drift in found["drifts"]], [("STRAY", 32)])
        self.sql("UPDATE BUDGETLINES SET BUDGETAMNT = 1E300, AVAILABLEAMNT = 1E300 WHERE ID = 31")
        # No amount is too large to be verified.
        self.assertEqual(len(self.ask("verify", status=NO)["drifts"]), 1)
        self.sql("UPDATE BUDGETLINES SET AVAILABLEAMNT = 1 WHERE ID = 32")
        self.assertEqual(self.talvex("verify", status=NO).stdout,
                         "32 lines, 2 whose budget does not exist, so that nothing can be posted to it:\n"
                         "  Budget  Line\n"
                         "  STRAY     31\n"
                         "  STRAY     32\n")


class CommonToAllCommands(SampleTest):
    def test_help_and_version(self):
        overview = run("--help")
        self.assertEqual((overview.returncode, overview.stderr), (DONE, ""))
        for command in ("init", "post", "account", "show", "tree", "verify", "describe", "call", "rpc"):
            self.assertRegex(overview.stdout, rf"\n  {command} +\w")
            own = run(command, "--help")
            self.assertEqual(own.returncode, DONE)
            self.assertIn(f"Usage: talvex {command}", own.stdout)
        self.assertRegex(run("--version").stdout, r"\Atalvex \d+\.\d+\.\d+\n\Z")

    def test_wrong_arguments_are_told_apart_from_failures(self):
        for arguments in ((), ("destroy",), ("show",), ("show", "IT", "extra"), ("tree", "--colour"),
                          ("--now", "yesterday", "tree"), ("describe", "--markdown", "Talvex.BudgetT")):
            with self.subTest(arguments=arguments):
                self.assertEqual(self.talvex(*arguments, status=USAGE).stdout, "")

    def test_an_installation_must_be_given_and_be_one(self):
        for command in (("tree",), ("show", "IT"), ("verify",), ("rpc",), ("account", "A=1"),
                        ("post", "IT", "1", "EUR", "--type", "1")):
            with self.subTest(command=command):
                without = run(*command)
                self.assertEqual(without.returncode, USAGE)
                self.assertIn("talvex: no installation is given", without.stderr)
                elsewhere = run(*command, TALVEX_CONFIG=self.folder.name)
                self.assertEqual(elsewhere.returncode, FAILED)
                self.assertIn(f"talvex: {self.folder.name} is no installation", elsewhere.stderr)

    def test_the_installation_comes_from_the_option_or_else_the_variable(self):
        self.assertEqual(run("verify", TALVEX_CONFIG=self.site).returncode, DONE)
        for arguments in (("--config", self.site, "verify"), ("verify", "--config", self.site)):
            self.assertEqual(run(*arguments, TALVEX_CONFIG=self.folder.name).returncode, DONE)

    def test_now_fixes_the_clock_of_the_program_and_of_the_database(self):
        self.assertEqual(self.ask("tree", "--now", "2027-02-03")["date"], "2027-02-03")
        self.sql("CREATE VIEW CLOCK AS SELECT 1 AS ONE")
        messages = [{"method": "create", "params": {"class": "Platform.Recordset"}},
                    {"method": "invoke", "params": {"object": 1, "method": "Open", "args": {
                        "Source": "SELECT GETDATE() AS N FROM CLOCK",
                        "ActiveConnection": f"Driver=SQLite;Database={self.site}/talvex.db"}}},
                    {"method": "get", "params": {"object": 1, "property": "Fields"}},
                    {"method": "invoke", "params": {"object": 2, "method": "Item", "args": ["N"]}},
                    {"method": "get", "params": {"object": 3, "property": "Value"}}]
        lines = "".join(json.dumps({"jsonrpc": "2.0", "id": 1, **message}) + "\n" for message in messages)
        ran = subprocess.run([PROGRAM, "--config", self.site, "--now", NOW, "rpc"],
                             env=environment(), input=lines,
                             encoding="utf-8", capture_output=True, check=True, timeout=60)
        value = json.loads(ran.stdout.splitlines()[-1])["result"]["value"]
        self.assertIn(NOW, str(value))

    def test_an_answer_that_nobody_reads_to_the_end_is_no_failure(self):
        reader, writer = os.pipe()
        os.close(reader)
        ran = subprocess.run([PROGRAM, "--config", self.site, "tree"], env=environment(), stdout=writer,
                             stderr=subprocess.PIPE, check=False, timeout=60)
        os.close(writer)
        self.assertEqual((ran.returncode, ran.stderr), (DONE, b""))

    def test_an_answer_that_cannot_be_written_is_one(self):
        with open("/dev/full", "w", encoding="utf-8") as full:
            ran = subprocess.run([PROGRAM, "--config", self.site, "tree"], env=environment(), stdout=full,
                                 stderr=subprocess.PIPE, check=False, timeout=60)
        self.assertEqual(ran.returncode, FAILED)
        self.assertIn(b"talvex: cannot write the answer", ran.stderr)

    def on_a_terminal(self, *arguments, **changes):
        """What the program writes on a terminal."""
        master, slave = pty.openpty()
        process = subprocess.Popen([PROGRAM, "--config", self.site, "--now", NOW, *arguments], stdin=slave,
                                   stdout=slave, stderr=slave, env=environment(TERM="xterm", **changes))
        os.close(slave)
        written = b""
        while select.select([master], [], [], 60)[0]:
            try:
                block = os.read(master, 65536)
            except OSError:  # The program has ended and left the terminal.
                break
            if not block:
                break
            written += block
        os.close(master)
        self.assertEqual(process.wait(timeout=60), DONE)
        return written.decode()

    def test_colours_stand_on_terminals_alone(self):
        self.assertIn("\033[32m", self.on_a_terminal("tree"))
        self.assertNotIn("\033", self.on_a_terminal("tree", NO_COLOR="1"))
        self.assertNotIn("\033", self.talvex("tree").stdout)

    def test_nothing_in_a_table_reaches_the_terminal_as_a_command(self):
        self.sql("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE) VALUES (?, 1)", "EVIL\033[2J\nX")
        self.assertRegex(self.talvex("tree").stdout, r"\nEVIL\?\[2J\?X +standard +no line\n")


if __name__ == "__main__":
    unittest.main()
