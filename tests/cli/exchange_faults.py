"""A workbook of 5,000 rows with a thousand faults in it: each is reported, and nothing else."""

import collections
import datetime
import os
import random
import unittest

from _exchange import ExchangeTest
from _talvex import NO, SOURCE_DIR

ROWS = 5000
FAULTS_OF_A_KIND = 40  # Of each kind below: a thousand together.
APPROVAL = "APPROVAL REQUIRED SHOULD BE YES OR NO"
NUMERIC = "WARN MULTIPLES SHOULD BE NUMERIC VALUE"

# A fault of a budget: the column, what is written there, and the messages.
BUDGET_FAULTS = (
    (1, (None, "  "), ("SLBBU0324",)),
    (2, (None, "  "), ("SLBBU0322", "SLBBU0323")),
    (2, ("QQQ", "eur", "EURO"), ("SLBBU0323",)),
    (3, ("Mars", "lyon"), ("SLBBU0325",)),
    (4, (None,), ("SLBBU0326", "SLBBU0327")),
    (4, ("NONE", "software"), ("SLBBU0327",)),
    (5, ("nobody", "d.reed2"), ("SLBBU0328",)),
    (6, ("Perhaps", 1, "Y"), (APPROVAL,)),
    (7, (-1, 100.5, 1e9), ("SLBBU0329",)),
    (7, ("abc", "12 %"), (NUMERIC,)),
)
LINE_FAULTS = (
    (1, ("soon", "2/30/2026", None), ("SLBBU0078",)),
    (2, ("later", "13/13/2026"), ("SLBBU0078",)),
    (2, (datetime.date(2019, 12, 31),), ("SLBBU0330",)),
    (3, (-0.01, -5000), ("SLBBU0331",)),
    (3, ("much", None), ("SLBBU0331",)),
)
# Lines without a header in the workbook, and relations: what is written, and the messages.
LONE_LINE_FAULTS = (
    ((None, "1/1/2026", None, 5), ("SLBBU0321",)),
    (("GHOST", "1/1/2026", None, 5), ("SLBBU0356",)),
    (("OPEN", "1/1/2025", "12/31/2025", 5), ("SLBBU0333",)),
)
RELATION_FAULTS = (
    ((None, "IT"), ("SLBBU0321",)),
    (("GHOST", "IT"), ("SLBBU0334",)),
    (("IT-HW-AMS", "IT-SW-AMS"), ("SLBBU0332",)),
    (("IT", None), ("SLBBU0321",)),
    (("IT", "GHOST"), ("SLBBU0335",)),
    (("IT", "COMPANY"), ("SLBBU0336",)),
    (("IT", "IT"), ("SLBBU0336",)),
)
FIRST_DAY = datetime.date(2020, 1, 1)


def labels():
    with open(SOURCE_DIR / "config/labels.tsv", encoding="utf-8") as file:
        return dict(line.split("\t")[:2] for line in file)


class Seeded:
    """The three sheets, and the entries that each faulty row is to have: {(sheet, row): entries}."""

    def __init__(self, seed):
        self.random = random.Random(seed)
        self.texts = labels()
        self.budgets, self.lines, self.relations = [], [], []
        self.faults, self.bad_budgets = {}, set()
        self.add_faulty_budgets()
        self.add_budgets_with_faulty_lines()
        self.add_lone_rows(self.lines, "Lines", LONE_LINE_FAULTS)
        self.add_lone_rows(self.relations, "Relations", RELATION_FAULTS)
        self.add_what_is_right()

    def expect(self, sheet, rows, messages, code):
        texts = [self.texts.get(message, message) for message in messages]
        self.faults[(sheet, len(rows) + 1)] = [f"{text}-{code or ''}" for text in texts]

    def add_budget(self, code, column=None, value=None):
        budget = [code, "Standard", "EUR", "Lyon", "SOFTWARE", "p.deboer", "Yes", 10]
        if column is not None:
            budget[column] = value
        self.budgets.append(budget)
        return code

    def add_line(self, code, column=None, value=None):
        start = FIRST_DAY + datetime.timedelta(days=366 * self.random.randrange(7))
        line = [code, start, start + datetime.timedelta(days=364), self.random.randrange(1000)]
        if column is not None:
            line[column] = value
        self.lines.append(line)

    def add_faulty_budgets(self):
        """Their lines are not looked at any more, whatever is wrong with them."""
        for kind, (column, values, messages) in enumerate(BUDGET_FAULTS):
            for number in range(FAULTS_OF_A_KIND):
                code = self.add_budget(f"H{kind:02}-{number:02}", column, self.random.choice(values))
                self.expect("Budgets", self.budgets, messages, code)
                self.bad_budgets.add(code)
                self.add_line(code)
                self.add_line(code, 3, -1)

    def add_budgets_with_faulty_lines(self):
        for kind, (column, values, messages) in enumerate(LINE_FAULTS):
            for number in range(FAULTS_OF_A_KIND):
                # Two faulty lines to a budget, and a right one that stays out with them.
                code = f"L{kind:02}-{number // 2:02}"
                if number % 2 == 0:
                    self.bad_budgets.add(self.add_budget(code))
                    self.add_line(code)
                self.add_line(code, column, self.random.choice(values))
                self.expect("Lines", self.lines, messages, code)

    def add_lone_rows(self, rows, sheet, kinds):
        for values, messages in kinds:
            for number in range(FAULTS_OF_A_KIND):
                row = [f"{value}{number:02}" if value in ("GHOST", "OPEN") else value for value in values]
                rows.append(row)
                self.expect(sheet, rows, messages, row[0])
                if messages == ("SLBBU0335",):
                    # This one is told of the child.
                    text = self.texts["SLBBU0335"]
                    self.faults[(sheet, len(rows) + 1)] = [f"{text}:{row[1]}-{row[1]}"]

    def add_what_is_right(self):
        for number in range((ROWS - self.count()) // 4):
            code = self.add_budget(f"R{number:04}")
            self.relations.append((("IT", "COMPANY", "OPERATIONS")[number % 3], code))
            for year in (2026, 2027):
                self.lines.append((code, f"1/1/{year}", None if year == 2027 else "12/31/2026", number))
        while self.count() < ROWS:
            self.lines.append(("R0000", f"1/{ROWS - self.count()}/2030", None, 1))

    def count(self):
        return len(self.budgets) + len(self.lines) + len(self.relations)


class Faults(ExchangeTest):
    def setUp(self):
        super().setUp()
        self.seeded = Seeded(20260316)
        for number in range(FAULTS_OF_A_KIND):
            code = f"OPEN{number:02}"
            self.sql("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE) VALUES (?, 1, 'EUR')", code)
            self.sql("INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, BUDGETAMNT) VALUES (?, ?, 1)", code,
                     "2026-01-01T00:00:00")
        self.path = self.book(budgets=self.seeded.budgets, lines=self.seeded.lines,
                              relations=self.seeded.relations)

    def test_the_workbook_is_as_large_and_as_bad_as_it_is_meant_to_be(self):
        self.assertEqual(self.seeded.count(), ROWS)
        self.assertEqual(len(self.seeded.faults), 1000)

    def test_the_error_log_has_an_entry_for_every_fault_and_no_other(self):
        answer = self.imported(self.path, status=NO)
        self.assertTrue(answer["imported"])
        with open(os.path.join(self.site, answer["errorLog"]), encoding="cp1252", newline="") as file:
            entries = file.read().split("\r\n")
        self.assertEqual(entries.pop(0), "")
        expected = [entry for entries in self.seeded.faults.values() for entry in entries]
        self.assertEqual(collections.Counter(entries), collections.Counter(expected))
        kept = {code for code, in self.sql("SELECT BUDGETCODE FROM BUDGET WHERE BUDGETCODE < 'S'")}
        right = {budget[0] for budget in self.seeded.budgets} - self.seeded.bad_budgets
        self.assertEqual({code for code in kept if code[:1] == "R"}, right)
        self.assertEqual(kept & self.seeded.bad_budgets, set())

    def test_a_dry_run_names_the_sheet_and_the_row_of_each(self):
        before = self.tables()
        answer = self.imported(self.path, "--dry-run", status=NO)
        self.assertEqual(self.tables(), before)
        self.assertEqual(len(answer["rows"]), ROWS)
        told = {(row["sheet"], row["row"]): row for row in answer["rows"]}
        for place, entries in self.seeded.faults.items():
            self.assertEqual(told[place]["outcome"], "refused", place)
            self.assertEqual(told[place]["messages"], entries, place)
        for place, row in told.items():
            if place in self.seeded.faults:
                continue
            if row["budget"] in self.seeded.bad_budgets:
                self.assertEqual(row["outcome"], "refused", row)
                self.assertEqual(row["messages"], ["its budget was refused"], row)
            else:
                self.assertEqual((row["outcome"], row["messages"]), ("inserted", []), row)

    def test_lines_without_a_code_are_refused_with_the_budget_without_one(self):
        book = self.book(budgets=[(None, "Standard", "EUR", None, "SOFTWARE")],
                         lines=[(None, "1/1/2026", None, 5)])
        answer = self.imported(book, status=NO)
        self.assertEqual(answer["errors"], ["The budget code is missing"])
        self.assertEqual([(row["outcome"], row["messages"]) for row in answer["rows"]],
                         [("refused", ["The budget code is missing-"]),
                          ("refused", ["its budget was refused"])])


if __name__ == "__main__":
    unittest.main()
