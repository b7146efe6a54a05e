"""What becomes of an edit in each column of an exported workbook, of budgets that exist and of new ones."""

import datetime
import os
import unittest

import xlrd
import xlwt

from _exchange import ExchangeTest
from _talvex import NO

DATE = xlwt.easyxf(num_format_str="yyyy-mm-dd")
KEYS = {"BUDGET": ("BUDGETCODE",), "BUDGETLINES": ("ID",), "BUDGETRELATIONS": ("PARENTBUDGET", "CHILDBUDGET")}
NEW_BUDGET = ("NEW", "Standard", "EUR", "Lyon", "SOFTWARE", "p.deboer", "Yes", 12.5)
NEW_LINE = ("NEW", datetime.date(2026, 1, 1), datetime.date(2026, 12, 31), 1000, 1, 2, 3, 4, 5, 6)
UNCHANGED = ()

# An edit of what was exported: the row (its first cells), the column, what is written there, and all that
# becomes of it in the tables. IT-HW-AMS has lines, BARE has none.
OF_EXISTING = (
    ("Budgets", ("IT-HW-AMS",), "Budget", "IT-HW-NEW",
     ("BUDGET IT-HW-NEW added: 1 EUR Amsterdam HARDWARE p.deboer 0 10.0",)),
    ("Budgets", ("IT-HW-AMS",), "Type", "Aggregate", UNCHANGED),
    ("Budgets", ("IT-HW-AMS",), "Currency", "USD", UNCHANGED),
    ("Budgets", ("BARE",), "Currency", "USD", ("BUDGET BARE CURRENCYCODE: EUR, now USD",)),
    ("Budgets", ("IT-HW-AMS",), "Office", "Lyon", UNCHANGED),
    ("Budgets", ("IT-HW-AMS",), "Office", None, UNCHANGED),
    ("Budgets", ("IT-HW-AMS",), "Charge type", "SOFTWARE",
     ("BUDGET IT-HW-AMS CHARGETYPECODE: HARDWARE, now SOFTWARE",)),
    ("Budgets", ("IT-HW-AMS",), "Holder", "d.reed", ("BUDGET IT-HW-AMS USERID: p.deboer, now d.reed",)),
    ("Budgets", ("IT-HW-AMS",), "Holder", None, ("BUDGET IT-HW-AMS USERID: p.deboer, now None",)),
    ("Budgets", ("IT-HW-AMS",), "Approval", "Yes", UNCHANGED),
    ("Budgets", ("IT-HW-AMS",), "Warning step, %", 20, ("BUDGET IT-HW-AMS BUDGETWARNING: 10.0, now 20.0",)),
    ("Budgets", ("IT-HW-AMS",), "Warning step, %", None, ("BUDGET IT-HW-AMS BUDGETWARNING: 10.0, now None",)),
    ("Lines", ("LINED", 46023), "Budget", "BARE", ("BUDGETLINES BARE 2026-01-01..2026-12-31 added: 100.0",)),
    ("Lines", ("LINED", 46023), "From", datetime.date(2026, 2, 1),
     ("BUDGETLINES LINED 2026-02-01..2026-12-31 added: 100.0",)),
    ("Lines", ("LINED", 46023), "To", datetime.date(2026, 11, 30),
     ("BUDGETLINES LINED 2026-01-01..2026-11-30 added: 100.0",)),
    ("Lines", ("LINED", 46023), "To", None, ("BUDGETLINES LINED 2026-01-01.. added: 100.0",)),
    ("Lines", ("LINED", 46023), "Budget amount", 80,
     ("BUDGETLINES LINED 2026-01-01..2026-12-31 AVAILABLEAMNT: 60.0, now 40.0",
      "BUDGETLINES LINED 2026-01-01..2026-12-31 AVAILABLEPERC: 0.6, now 0.5",
      "BUDGETLINES LINED 2026-01-01..2026-12-31 BUDGETAMNT: 100.0, now 80.0")),
    *(("Lines", ("LINED", 46023), column, 99999, UNCHANGED)
      for column in ("Not approved", "Approved", "Sent", "Received", "Closed", "Available")),
    ("Relations", ("STAFF", "LINED"), "Parent budget", "IT", ("BUDGETRELATIONS IT LINED added",)),
    ("Relations", ("STAFF", "LINED"), "Child budget", "BARE", ("BUDGETRELATIONS STAFF BARE added",)),
    ("Relations", ("STAFF", "LINED"), "Type of the child", "Aggregate", UNCHANGED),
)

# An edit of rows that are added to the sheets (NEW_BUDGET, NEW_LINE, and NEW under STAFF), the rows that the
# table has then beyond those it had, and what is reported.
OF_NEW = (
    ("Budgets", "Budget", "OTHER",
     ("BUDGET OTHER added: 1 EUR Lyon SOFTWARE p.deboer 1 12.5",), ("The budget does not exist-NEW",
                                                                  "The child budget does not exist:NEW-NEW")),
    ("Budgets", "Type", "Aggregate", ("BUDGET NEW added: 2 EUR Lyon SOFTWARE p.deboer 1 12.5",), ()),
    ("Budgets", "Type", "Something", ("BUDGET NEW added: None EUR Lyon SOFTWARE p.deboer 1 12.5",), ()),
    ("Budgets", "Currency", "USD", ("BUDGET NEW added: 1 USD Lyon SOFTWARE p.deboer 1 12.5",), ()),
    ("Budgets", "Office", "Hamburg", ("BUDGET NEW added: 1 EUR Hamburg SOFTWARE p.deboer 1 12.5",), ()),
    ("Budgets", "Office", None, ("BUDGET NEW added: 1 EUR None SOFTWARE p.deboer 1 12.5",), ()),
    ("Budgets", "Charge type", "HARDWARE", ("BUDGET NEW added: 1 EUR Lyon HARDWARE p.deboer 1 12.5",), ()),
    ("Budgets", "Holder", "d.reed", ("BUDGET NEW added: 1 EUR Lyon SOFTWARE d.reed 1 12.5",), ()),
    ("Budgets", "Holder", None, ("BUDGET NEW added: 1 EUR Lyon SOFTWARE None 1 12.5",), ()),
    ("Budgets", "Approval", "no", ("BUDGET NEW added: 1 EUR Lyon SOFTWARE p.deboer 0 12.5",), ()),
    ("Budgets", "Approval", None, ("BUDGET NEW added: 1 EUR Lyon SOFTWARE p.deboer 0 12.5",), ()),
    ("Budgets", "Warning step, %", 100, ("BUDGET NEW added: 1 EUR Lyon SOFTWARE p.deboer 1 100.0",), ()),
    ("Budgets", "Warning step, %", None, ("BUDGET NEW added: 1 EUR Lyon SOFTWARE p.deboer 1 None",), ()),
    ("Lines", "Budget", "BARE", ("BUDGETLINES BARE 2026-01-01..2026-12-31 added: 1000.0",), ()),
    ("Lines", "From", datetime.date(2025, 1, 1),
     ("BUDGETLINES NEW 2025-01-01..2026-12-31 added: 1000.0",), ()),
    ("Lines", "To", None, ("BUDGETLINES NEW 2026-01-01.. added: 1000.0",), ()),
    ("Lines", "Budget amount", 0, ("BUDGETLINES NEW 2026-01-01..2026-12-31 added: 0.0",), ()),
    *(("Lines", column, 99999, (), ())
      for column in ("Not approved", "Approved", "Sent", "Received", "Closed", "Available")),
    ("Relations", "Parent budget", "IT", ("BUDGETRELATIONS IT NEW added",), ()),
    ("Relations", "Child budget", "BARE", ("BUDGETRELATIONS STAFF BARE added",), ()),
    ("Relations", "Type of the child", "Aggregate", (), ()),
)
ADDED = ("BUDGET NEW added: 1 EUR Lyon SOFTWARE p.deboer 1 12.5",
         "BUDGETLINES NEW 2026-01-01..2026-12-31 added: 1000.0", "BUDGETRELATIONS STAFF NEW added")


class Columns(ExchangeTest):
    def setUp(self):
        super().setUp()
        self.sql("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE, CHARGETYPECODE, APPROVEINBUDGET) "
                 "VALUES ('BARE', 1, 'EUR', 'SOFTWARE', 0), ('LINED', 1, 'EUR', 'SOFTWARE', 0)")
        self.sql("INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT, USEDAPPROVEDAMNT, "
                 "AVAILABLEAMNT, AVAILABLEPERC) VALUES ('LINED', '2026-01-01T00:00:00', "
                 "'2026-12-31T00:00:00', 100, 40, 60, 0.6)")
        self.sql("INSERT INTO BUDGETRELATIONS (PARENTBUDGET, CHILDBUDGET) VALUES ('STAFF', 'LINED')")
        self.pages = {sheet.name: [sheet.row_values(row) for row in range(sheet.nrows)]
                      for sheet in xlrd.open_workbook(self.export()).sheets()}
        self.rows_before = self.all_rows()

    def all_rows(self):
        """{table: {key: {column: value}}}."""
        tables = {}
        for table, keys in KEYS.items():
            columns = [row[1] for row in self.sql(f"PRAGMA table_info({table})")]
            rows = (dict(zip(columns, row)) for row in self.sql(f"SELECT * FROM {table}"))
            tables[table] = {tuple(row[key] for key in keys): row for row in rows}
        return tables

    def effects(self):
        """What has changed in the tables, sorted; the rows are put back."""
        after, effects = self.all_rows(), []
        for table, rows in after.items():
            before = self.rows_before[table]
            self.assertEqual(before.keys() - rows.keys(), set(), "an import never deletes")
            for key, row in rows.items():
                if key not in before:
                    effects.append(self.added(table, row))
                    continue
                effects += [f"{self.name(table, row)} {column}: {before[key][column]}, now {value}"
                            for column, value in row.items() if value != before[key][column]]
        self.restore()
        return sorted(effects)

    @staticmethod
    def name(table, row):
        if table == "BUDGETLINES":
            return (f"{table} {row['BUDGETCODE']} {row['STARTDATE'][:10]}.."
                    f"{'' if row['ENDDATE'] is None else row['ENDDATE'][:10]}")
        return " ".join([table] + [str(row[key]) for key in KEYS[table]])

    def added(self, table, row):
        told = {"BUDGET": ("BUDGETTYPE", "CURRENCYCODE", "OFFICEDESCRIPTION", "CHARGETYPECODE", "USERID",
                           "APPROVEINBUDGET", "BUDGETWARNING"),
                "BUDGETLINES": ("BUDGETAMNT",), "BUDGETRELATIONS": ()}[table]
        if table == "BUDGETLINES":
            # Running totals are no part of an import, and what is available follows.
            used = [value for column, value in row.items() if column.startswith("USED")]
            self.assertEqual(used, [None] * 5)
            self.assertEqual(row["AVAILABLEAMNT"], row["BUDGETAMNT"])
        words = " ".join(str(row[column]) for column in told)
        return f"{self.name(table, row)} added" + (f": {words}" if words else "")

    def restore(self):
        for table, rows in self.rows_before.items():
            self.sql(f"DELETE FROM {table}")
            for row in rows.values():
                self.sql(f"INSERT INTO {table} VALUES ({', '.join('?' * len(row))})", *row.values())
        self.assertEqual(self.all_rows(), self.rows_before)

    def save(self, pages):
        """The workbook of these pages: what somebody saves who has edited the exported one."""
        book = xlwt.Workbook(encoding="utf-8")
        for name, rows in pages.items():
            sheet = book.add_sheet(name)
            for number, row in enumerate(rows):
                for column, value in enumerate(row):
                    is_day = name == "Lines" and number and column in (1, 2)
                    if value not in (None, ""):
                        sheet.write(number, column, value, *([DATE] if is_day else []))
        path = os.path.join(self.folder.name, "edited.xls")
        book.save(path)
        return path

    def edited(self, sheet, first_cells, column, value, pages=None):
        """The path of the workbook with one cell changed, in the row that starts with those cells."""
        pages = {name: [list(row) for row in rows] for name, rows in (pages or self.pages).items()}
        row, = (row for row in pages[sheet][1:] if tuple(row[:len(first_cells)]) == first_cells)
        row[pages[sheet][0].index(column)] = value
        return self.save(pages)

    def test_nothing_changes_when_nothing_is_edited(self):
        self.imported(self.save(self.pages))
        self.assertEqual(self.effects(), [])

    def test_every_column_of_an_existing_budget(self):
        for sheet, first_cells, column, value, effects in OF_EXISTING:
            with self.subTest(sheet=sheet, column=column, value=value):
                answer = self.imported(self.edited(sheet, first_cells, column, value))
                self.assertEqual(answer["errors"], [])
                self.assertEqual(self.effects(), sorted(effects))

    def test_every_column_of_a_new_budget(self):
        pages = dict(self.pages)
        for sheet, row in (("Budgets", NEW_BUDGET), ("Lines", NEW_LINE),
                           ("Relations", ("STAFF", "NEW", "Standard"))):
            pages[sheet] = pages[sheet] + [list(row)]
        self.imported(self.save(pages))
        self.assertEqual(self.effects(), sorted(ADDED))
        first_cells = {"Budgets": ("NEW",), "Lines": ("NEW",), "Relations": ("STAFF", "NEW")}
        for sheet, column, value, effects, errors in OF_NEW:
            with self.subTest(sheet=sheet, column=column, value=value):
                path = self.edited(sheet, first_cells[sheet], column, value, pages)
                answer = self.imported(path, status=NO if errors else 0)
                self.assertEqual(answer["errors"], list(errors))
                tables = {effect.split()[0] for effect in effects}
                others = [] if errors else [effect for effect in ADDED if effect.split()[0] not in tables]
                self.assertEqual(self.effects(), sorted([*effects, *others]))

    def test_every_column_is_edited(self):
        for sheet in ("Budgets", "Lines", "Relations"):
            headings = set(self.pages[sheet][0])
            self.assertEqual({row[2] for row in OF_EXISTING if row[0] == sheet}, headings)
            self.assertEqual({row[1] for row in OF_NEW if row[0] == sheet}, headings)


if __name__ == "__main__":
    unittest.main()
