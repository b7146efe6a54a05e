"""Budgets out to a workbook and back in: export, edit as people do, import."""

import os
import shutil
import unittest

import xlrd

from _exchange import BUDGETS_HEAD, HEADERS, LINES, ExchangeTest, write_workbook
from _talvex import NO, USAGE


class Export(ExchangeTest):
    def test_the_workbook_holds_the_three_tables(self):
        book = xlrd.open_workbook(self.export(), formatting_info=True)
        self.assertEqual(book.sheet_names(), ["Read me", "Budgets", "Lines", "Relations", "Totals"])
        budgets = book.sheet_by_name("Budgets")
        self.assertEqual(tuple(budgets.row_values(0)), BUDGETS_HEAD)
        codes = [budgets.cell_value(row, 0) for row in range(1, budgets.nrows)]
        self.assertEqual(codes, [row[0] for row in self.sql(HEADERS)])
        lines = book.sheet_by_name("Lines")
        self.assertEqual(lines.nrows - 1, len(self.sql(LINES)))
        self.assertEqual(lines.cell_type(1, 1), xlrd.XL_CELL_DATE)
        self.assertEqual(lines.cell_type(1, 3), xlrd.XL_CELL_NUMBER)
        last = lines.nrows - 1
        formats = [book.format_map[book.xf_list[lines.cell_xf_index(row, 3)].format_key].format_str
                   for row in (1, last)]
        self.assertEqual(formats[0], formats[1])
        self.assertIn("#,##0.00", formats[0])
        totals = book.sheet_by_name("Totals")
        values = {totals.cell_value(row, 0): totals.cell_value(row, 1) for row in range(2, totals.nrows)}
        self.assertEqual((values["Budgets"], values["Lines"]), (len(codes), last))
        self.assertAlmostEqual(values["Budget amount"], sum(row[3] for row in self.sql(LINES)))

    def test_a_range_that_matches_nothing_gives_the_template(self):
        book = xlrd.open_workbook(self.export("X", "Y"))
        self.assertEqual(book.sheet_by_name("Budgets").nrows, 1)

    def test_types_are_told_in_the_users_language(self):
        answer = self.ask("export", "COMPANY", "COMPANY", "--user", "h.moreau")
        book = xlrd.open_workbook(os.path.join(self.site, answer["file"].replace("\\", "/")))
        self.assertEqual(book.sheet_by_name("Budgets").cell_value(1, 1), "Agrégé")

    def test_a_workbook_that_could_not_come_back_is_refused(self):
        self.sql("INSERT INTO SUITEUSER (USERID, FULLNAME, EMAIL, LOCALEID) "
                 "VALUES ('m.rossi', 'M', 'm@x', 1040)")
        for user in ("stranger", "m.rossi"):
            with self.subTest(user=user):
                answer = self.ask("export", "A", "ZZZ", "--user", user, status=NO)
                self.assertEqual((answer["exported"], answer["file"]), (False, None))
                self.assertRegex(answer["errors"][0], rf"no names in the language of user '{user}'")
                self.assertEqual(os.listdir(os.path.join(self.site, "talvex/exportedbudgets")), [])
                empty = self.ask("export", "X", "Y", "--user", user)
                os.remove(os.path.join(self.site, empty["file"].replace("\\", "/")))
        with open(os.path.join(self.site, "log/errors.jsonl"), encoding="utf-8") as log:
            self.assertEqual([line for line in log if "stranger" not in line], [])
        self.sql("INSERT INTO I18NTEXT VALUES (1040, 'SLBBU0357', 'Standard')")
        self.ask("export", "A", "ZZZ", "--user", "m.rossi", status=NO)
        self.sql("INSERT INTO I18NTEXT VALUES (1040, 'SLBBU0358', 'Aggregate')")
        self.assertTrue(self.ask("export", "A", "ZZZ", "--user", "m.rossi")["exported"])

    def test_a_second_export_in_the_same_second_fails_and_leaves_the_first(self):
        first = self.ask("export", "A", "ZZZ")
        path = os.path.join(self.site, first["file"].replace("\\", "/"))
        with open(path, "rb") as file:
            before = file.read()
        again = self.ask("export", "A", "ZZZ", status=NO)
        self.assertFalse(again["exported"])
        self.assertEqual(again["errorLog"], "talvex/errorlog/Budgets_Export3162026-100000.txt")
        with open(path, "rb") as file:
            self.assertEqual(file.read(), before)


class Circle(ExchangeTest):
    def test_an_empty_installation_gets_the_same_budgets(self):
        path = self.export()
        before = self.tables()
        for table in ("BUDGETLINES", "BUDGETRELATIONS", "BUDGET"):
            self.sql(f"DELETE FROM {table}")
        answer = self.imported(path)
        self.assertTrue(answer["imported"])
        self.assertEqual(answer["errors"], [])
        self.assertEqual({row["outcome"] for row in answer["rows"]}, {"inserted"})
        self.assertEqual(self.tables(), before)
        again = self.imported(path)
        self.assertEqual({row["outcome"] for row in again["rows"]}, {"left alone"})
        self.assertEqual(self.tables(), before)

    def test_every_language_comes_back(self):
        before = self.tables()
        for user in ("d.reed", "s.vermeer", "j.vogel", "h.moreau"):
            with self.subTest(user=user):
                answer = self.ask("export", "A", "ZZZ", "--user", user)
                path = os.path.join(self.site, answer["file"].replace("\\", "/"))
                for table in ("BUDGETLINES", "BUDGETRELATIONS", "BUDGET"):
                    self.sql(f"DELETE FROM {table}")
                self.imported(path, "--user", user)
                self.assertEqual(self.tables(), before)
                os.remove(path)

    def test_codes_of_any_characters_come_back(self):
        codes = ("50[%]", "50%", "[50]", "O'Neil ''", "A_*#", "100 [%] [%%]")
        for code in codes:
            self.sql("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE, CHARGETYPECODE, "
                     "APPROVEINBUDGET) VALUES (?, 2, 'EUR', 'SOFTWARE', 0)", code)
            self.sql("INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, BUDGETAMNT) VALUES (?, ?, ?)", code,
                     "2026-01-01T00:00:00", len(code))
            self.sql("INSERT INTO BUDGETRELATIONS (PARENTBUDGET, CHILDBUDGET) VALUES (?, 'IT'), ('IT', ?)",
                     code, code)
        self.sql("DELETE FROM BUDGETRELATIONS WHERE PARENTBUDGET = 'IT'")
        before = self.tables()
        path = self.export("0", "zzz")
        for table in ("BUDGETLINES", "BUDGETRELATIONS", "BUDGET"):
            self.sql(f"DELETE FROM {table}")
        self.assertEqual(self.imported(path)["errors"], [])
        self.assertEqual(self.tables(), before)

    def test_an_export_that_nobody_edited_changes_nothing(self):
        """Whatever times of day its periods hold, however often a period occurs, and with amounts of more
        digits than an export writes."""
        self.sql("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE, CHARGETYPECODE, APPROVEINBUDGET, "
                 "BUDGETWARNING) VALUES ('TIMED', 1, 'EUR', 'SOFTWARE', 0, ?)", 100 / 3)
        for start, end, amount in (("2026-01-01T10:30:00", "2026-12-31T23:59:59", 100),
                                   ("2026-01-01T10:30:00", "2026-12-31T23:59:59", 200),
                                   ("2026-01-01T00:00:00", "2026-12-31T00:00:00", 0.1 + 0.2),
                                   ("2026-05-01T08:00:00", "2026-05-01T18:00:00", 5),
                                   ("2027-01-01T08:00:00", None, 6)):
            self.sql("INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT, AVAILABLEAMNT, "
                     "AVAILABLEPERC) VALUES ('TIMED', ?, ?, ?, ?, 1)", start, end, amount, amount)
        every_cell = [f"SELECT * FROM {table} ORDER BY 1, 2" for table in
                      ("BUDGET", "BUDGETLINES", "BUDGETRELATIONS")]
        before = [self.sql(query) for query in every_cell]
        answer = self.imported(self.export())
        self.assertEqual(answer["errors"], [])
        self.assertEqual({row["outcome"] for row in answer["rows"]}, {"left alone"})
        self.assertEqual([self.sql(query) for query in every_cell], before)

    def test_rows_are_told_by_their_days_and_codes(self):
        self.sql("UPDATE BUDGETLINES SET STARTDATE = '2026-01-01T08:00:00' WHERE BUDGETCODE = 'IT-CLOUD'")
        answer = self.imported(self.book(lines=[("IT-CLOUD", "1/1/2026", "12/31/2026", 95001)],
                                         relations=[("IT", "IT-CLOUD"), ("MARKETING", "IT-CLOUD")]))
        self.assertEqual([row["outcome"] for row in answer["rows"]], ["changed", "left alone", "inserted"])
        self.assertRegex(answer["rows"][0]["messages"][0], r"^BUDGETAMNT: '[0-9]+' is now '95001'$")

    def test_each_row_of_a_period_that_is_stored_twice_has_a_line_of_its_own(self):
        header = ("TWICE", "Standard", "EUR", "", "SOFTWARE", "", "", None)
        same = "left alone"
        rows = (((100, 200), (100, 200), [same, same]), ((200, 200), (200, 200), [same, "changed"]),
                ((200, 100), (100, 200), [same, same]), ((150, 200), (150, 200), ["changed", same]),
                ((150, 250), (150, 250), ["changed", "changed"]), ((7,), (7, 200), ["changed"]))
        for amounts, kept, outcomes in rows:
            with self.subTest(amounts=amounts):
                for table in ("BUDGET", "BUDGETLINES"):
                    self.sql(f"DELETE FROM {table} WHERE BUDGETCODE = 'TWICE'")
                self.sql("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE, CHARGETYPECODE, "
                         "APPROVEINBUDGET) VALUES ('TWICE', 1, 'EUR', 'SOFTWARE', 0)")
                self.sql("INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT) VALUES "
                         "('TWICE', '2026-01-01T08:00:00', '2026-12-31T00:00:00', 100), "
                         "('TWICE', '2026-01-01T00:00:00', '2026-12-31T00:00:00', 200)")
                lines = [("TWICE", "1/1/2026", "12/31/2026", amount) for amount in amounts]
                answer = self.imported(self.book(budgets=[header], lines=lines))
                told = [row["outcome"] for row in answer["rows"] if row["kind"] == "line"]
                self.assertEqual(told, outcomes)
                self.assertEqual(tuple(amount for amount, in self.sql(
                    "SELECT BUDGETAMNT FROM BUDGETLINES WHERE BUDGETCODE = 'TWICE' ORDER BY ID")), kept)

    def test_a_row_without_its_header_does_not_say_which_of_two_lines_it_means(self):
        self.sql("INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT) VALUES "
                 "('IT-CLOUD', '2030-01-01T08:00:00', '2030-12-31T00:00:00', 100), "
                 "('IT-CLOUD', '2030-01-01T00:00:00', '2030-12-31T00:00:00', 200)")
        answer = self.imported(self.book(lines=[("IT-CLOUD", "1/1/2030", "12/31/2030", 200)]), status=NO)
        self.assertEqual([row["outcome"] for row in answer["rows"]], ["refused"])
        self.assertEqual(answer["errors"],
                         ["The period conflicts with an existing line of this budget-IT-CLOUD"])

    def test_a_dry_run_tells_all_and_keeps_nothing(self):
        path = self.book(budgets=[("NEW", "Standard", "EUR", "", "SOFTWARE", "", "Yes", 10)],
                         lines=[("NEW", "1/1/2026", "12/31/2026", 500),
                                ("IT-HW-AMS", "1/1/2026", "12/31/2026", 7)],
                         relations=[("IT", "NEW")])
        before = self.tables()
        answer = self.imported(path, "--dry-run")
        self.assertEqual(self.tables(), before)
        self.assertTrue(answer["dryRun"])
        told = {(row["kind"], row["budget"], row["sheet"], row["row"]): row["outcome"]
                for row in answer["rows"]}
        self.assertEqual(told, {("budget", "NEW", "Budgets", 2): "inserted",
                                ("line", "NEW", "Lines", 2): "inserted",
                                ("line", "IT-HW-AMS", "Lines", 3): "changed",
                                ("relation", "IT", "Relations", 2): "inserted"})
        self.assertEqual(os.listdir(os.path.join(self.site, "talvex/errorlog")), [])
        text = self.talvex("import", path, "--dry-run").stdout
        self.assertIn("What an import would do; nothing was kept:", text)
        self.assertRegex(text, r"Lines 3 +changed +IT-HW-AMS .*BUDGETAMNT: '60000' is now '7'")


class Faults(ExchangeTest):
    GOOD = ("NEW", "Standard", "EUR", "Lyon", "SOFTWARE", "p.deboer", "Yes", 10)

    def test_each_field_has_its_message(self):
        rows = (
            ((1, ""), "The budget type is missing"), ((2, ""), "The currency is missing"),
            ((2, "QQQ"), "The currency is unknown"), ((3, "Mars"), "The administrative office is unknown"),
            ((4, ""), "The charge type is missing"), ((4, "NONE"), "The charge type is unknown"),
            ((5, "nobody"), "The budget holder is not a known user"),
            ((6, "Perhaps"), "APPROVAL REQUIRED SHOULD BE YES OR NO"),
            ((7, 100.5), "The warning step must be a percentage from 0 to 100"),
            ((7, -1), "The warning step must be a percentage from 0 to 100"),
            ((7, "abc"), "WARN MULTIPLES SHOULD BE NUMERIC VALUE"))
        before = self.tables()
        for (column, value), message in rows:
            with self.subTest(message=message, value=value):
                budget = list(self.GOOD)
                budget[column] = value
                book = self.book(budgets=[budget], lines=[("NEW", "1/1/2026", None, 5)])
                answer = self.imported(book, status=NO)
                self.assertTrue(answer["imported"])
                self.assertIn(message + "-NEW", answer["errors"])
                self.assertEqual([row["outcome"] for row in answer["rows"]], ["refused", "refused"])
                self.assertEqual(self.tables(), before)

    def test_a_text_that_is_too_long_is_refused_alone(self):
        long = "N" * 51
        rows = (((0, long), "BudgetCode", long), ((2, long), "Currency", "NEW"),
                ((3, long), "AdministrativeOffice", "NEW"), ((4, long), "ChargeType", "NEW"),
                ((5, long), "BudgetHolder", "NEW"))
        for (column, value), field, code in rows:
            with self.subTest(field=field):
                budget = list(self.GOOD)
                budget[column] = value
                answer = self.imported(self.book(budgets=[("FIRST", *self.GOOD[1:]), budget],
                                                 lines=[(budget[0], "1/1/2026", None, 5)]), status=NO)
                self.assertTrue(answer["imported"])
                self.assertIn(f"The text is too long: Budgets 3, {field}, 51 > 50-{code}", answer["errors"])
                self.assertEqual([row["outcome"] for row in answer["rows"]],
                                 ["inserted", "refused", "refused"])
                self.sql("DELETE FROM BUDGET WHERE BUDGETCODE = 'FIRST'")
        answer = self.imported(self.book(lines=[(long, "1/1/2026", None, 5)],
                                         relations=[(long, "IT"), ("IT", "é" * 51)]), status=NO)
        self.assertEqual(answer["errors"],
                         [f"The text is too long: Lines 2, BudgetCode, 51 > 50-{long}",
                          f"The parent budget does not exist-{long}",
                          f"The text is too long: Relations 2, BudgetCode, 51 > 50-{long}",
                          f"The child budget does not exist:{'é' * 51}-{'é' * 51}",
                          "The text is too long: Relations 3, ChildBudget, 51 > 50-IT"])

    def test_a_text_of_fifty_characters_is_not_too_long(self):
        for code in ("N" * 50, "é" * 50):
            self.imported(self.book(budgets=[(code, *self.GOOD[1:])], lines=[(code, "1/1/2026", None, 5)]))

    def test_a_refused_header_keeps_lines_out_however_they_spell_its_code(self):
        bad = ("it-hw-ams", "Standard", "EUR", "Mars", "SOFTWARE", "", "", None)
        answer = self.imported(self.book(budgets=[bad], lines=[("IT-HW-AMS", "1/1/2030", None, 5),
                                                               ("It-Hw-Ams", "1/1/2031", None, 5)]),
                               status=NO)
        self.assertEqual([row["outcome"] for row in answer["rows"]], ["refused"] * 3)
        self.assertEqual(answer["errors"], ["The administrative office is unknown-it-hw-ams"])

    def test_a_loaded_header_leaves_lines_of_another_spelling_to_themselves(self):
        good = ("it-hw-ams", "Standard", "EUR", "", "HARDWARE", "p.deboer", "", 10)
        answer = self.imported(self.book(budgets=[good], lines=[("IT-HW-AMS", "1/1/2030", None, 5),
                                                                ("It-Hw-Ams", "1/1/2031", None, -5)]),
                               status=NO)
        self.assertEqual([row["outcome"] for row in answer["rows"]], ["left alone", "inserted", "refused"])
        self.assertEqual(answer["errors"], ["The budget amount must not be negative-It-Hw-Ams"])

    def test_an_entry_without_its_text_has_the_label(self):
        before = self.tables()
        book = self.book(budgets=[self.GOOD[:2] + ("QQQ",) + self.GOOD[3:]],
                         lines=[("GHOST", "1/1/2026", None, 5)], relations=[("IT", "COMPANY")])
        answer = self.imported(book, "--user", "stranger", status=NO)
        self.assertTrue(answer["imported"])
        self.assertEqual(answer["errors"], ["SLBBU0323-NEW", "SLBBU0356-GHOST", "SLBBU0336-IT"])
        self.assertEqual(self.imported("budgets.doc", "--user", "stranger", status=NO)["errors"],
                         ["SLBBU0342"])
        self.assertEqual(self.tables(), before)

    def test_0_and_100_are_warning_steps_and_empty_references_are_allowed(self):
        for step in (0, 100, None):
            budget = ("NEW", "Standard", "EUR", None, "SOFTWARE", None, None, step)
            self.imported(self.book(budgets=[budget]))
            self.assertEqual(self.sql("SELECT BUDGETWARNING, USERID FROM BUDGET WHERE BUDGETCODE = 'NEW'"),
                             [(step, None)])

    def test_each_line_fault_has_its_message_and_keeps_its_budget_out(self):
        no_date = "The effective date or the expiry date is not a valid date"
        rows = ((("NEW", "soon", None, 5), no_date), (("NEW", "1/1/2026", "later", 5), no_date),
                (("NEW", "2/1/2026", "1/1/2026", 5), "The expiry date is earlier than the effective date"),
                (("NEW", "1/1/2026", "1/1/2026", -5), "The budget amount must not be negative"))
        before = self.tables()
        for line, message in rows:
            with self.subTest(message=message):
                book = self.book(budgets=[self.GOOD], lines=[("NEW", "1/1/2025", None, 1), line])
                answer = self.imported(book, status=NO)
                self.assertIn(message + "-NEW", answer["errors"])
                self.assertEqual(self.tables(), before)
                refused = [(row["sheet"], row["row"]) for row in answer["rows"]
                           if message + "-NEW" in row["messages"]]
                self.assertEqual(refused, [("Lines", 3)])

    def test_a_day_may_be_a_period_and_an_amount_0(self):
        self.imported(self.book(budgets=[self.GOOD], lines=[("NEW", "1/1/2026", "1/1/2026", 0)]))
        self.assertEqual(self.sql("SELECT BUDGETAMNT FROM BUDGETLINES WHERE BUDGETCODE = 'NEW'"), [(0,)])

    def test_each_relation_fault_has_its_message(self):
        rows = ((("GHOST", "IT"), "The parent budget does not exist-GHOST"),
                (("IT-HW-AMS", "IT-SW-AMS"), "Only an aggregate budget can have child budgets-IT-HW-AMS"),
                (("IT", "GHOST"), "The child budget does not exist:GHOST-GHOST"),
                (("IT", "COMPANY"), "The budget relation is not allowed: a parent or child is missing, or a "
                                    "budget would end up above itself-IT"),
                ((None, "IT"), "The budget code is missing-"),
                (("IT", None), "The budget code is missing-IT"))
        for relation, message in rows:
            with self.subTest(message=message):
                answer = self.imported(self.book(relations=[relation]), status=NO)
                told = [entry.rstrip("-") for entry in answer["errors"]]
                self.assertIn(message.rstrip("-"), told)
        both = self.imported(self.book(relations=[("IT-HW-AMS", "GHOST")]), status=NO)["errors"]
        self.assertEqual(len(both), 2)

    def test_a_refused_header_keeps_its_lines_out_but_its_relations_are_tried(self):
        bad = ("IT-HW-AMS", "Standard", "EUR", "Mars", "SOFTWARE", "", "", None)
        answer = self.imported(self.book(budgets=[bad], lines=[("IT-HW-AMS", "1/1/2030", None, 5)],
                                         relations=[("MARKETING", "IT-HW-AMS")]), status=NO)
        self.assertEqual([row["outcome"] for row in answer["rows"]], ["refused", "refused", "inserted"])
        self.assertEqual(self.sql("SELECT * FROM BUDGETLINES WHERE STARTDATE LIKE '2030%'"), [])

    def test_the_error_log_is_named_after_the_workbook(self):
        answer = self.imported(self.book(budgets=[self.GOOD[:2] + ("QQQ",) + self.GOOD[3:]]), status=NO)
        self.assertEqual(answer["errorLog"], "talvex/errorlog/made3162026-100000.txt")
        with open(os.path.join(self.site, answer["errorLog"]), encoding="cp1252", newline="") as file:
            self.assertEqual(file.read(), "\r\nThe currency is unknown-NEW")

    def test_what_is_no_import_is_told(self):
        before = self.tables()
        text = os.path.join(self.folder.name, "text.xls")
        with open(text, "w", encoding="utf-8") as file:
            file.write("no workbook")
        other = os.path.join(self.folder.name, "other.xls")
        write_workbook(other, sheets=("Budgets", "Lines", "Something"))
        for path, message in (("", "No workbook has been selected"),
                              ("budgets.XLSX", "Only a workbook with the"),
                              (os.path.join(self.folder.name, "missing.xls"), "could not be opened"),
                              (text, "not a workbook of the expected kind"),
                              (other, "do not match the layout")):
            with self.subTest(path=path):
                answer = self.imported(path, status=NO)
                self.assertFalse(answer["imported"])
                self.assertTrue(any(message in error for error in answer["errors"]), answer)
        self.assertEqual(self.tables(), before)
        upper = os.path.join(self.folder.name, "BUDGETS.XLS")
        shutil.copy(self.book(budgets=[self.GOOD]), upper)
        self.assertTrue(self.imported(upper)["imported"])

    def test_refuses_what_makes_no_sense(self):
        self.talvex("import", status=USAGE)
        self.talvex("export", "A", status=USAGE)


if __name__ == "__main__":
    unittest.main()
