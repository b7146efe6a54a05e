"""What the tests of exports and imports share: tables that are compared, and workbooks made by hand."""

import os
import shutil

import xlwt

from _talvex import SampleTest

HEADERS = ("SELECT BUDGETCODE, BUDGETTYPE, CURRENCYCODE, OFFICEDESCRIPTION, CHARGETYPECODE, USERID, "
           "APPROVEINBUDGET, BUDGETWARNING FROM BUDGET ORDER BY BUDGETCODE")
LINES = "SELECT BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT FROM BUDGETLINES ORDER BY BUDGETCODE, STARTDATE"
RELATIONS = "SELECT PARENTBUDGET, CHILDBUDGET FROM BUDGETRELATIONS ORDER BY PARENTBUDGET, CHILDBUDGET"
TABLES = (HEADERS, LINES, RELATIONS)

BUDGETS_HEAD = ("Budget", "Type", "Currency", "Office", "Charge type", "Holder", "Approval",
                "Warning step, %")
LINES_HEAD = ("Budget", "From", "To", "Budget amount")
RELATIONS_HEAD = ("Parent budget", "Child budget")


def write_workbook(path, budgets=(), lines=(), relations=(), sheets=("Budgets", "Lines", "Relations")):
    """A workbook as somebody might make it without any export: only what the import reads."""
    book = xlwt.Workbook(encoding="utf-8")
    date = xlwt.easyxf(num_format_str="yyyy-mm-dd")
    for name, head, rows in zip(sheets, (BUDGETS_HEAD, LINES_HEAD, RELATIONS_HEAD),
                                (budgets, lines, relations)):
        sheet = book.add_sheet(name)
        for column, text in enumerate(head):
            sheet.write(0, column, text)
        for number, row in enumerate(rows, start=1):
            for column, value in enumerate(row):
                if value is None:
                    continue
                if hasattr(value, "year"):
                    sheet.write(number, column, value, date)
                else:
                    sheet.write(number, column, value)
    book.save(path)


class ExchangeTest(SampleTest):
    def tables(self):
        return [self.sql(query) for query in TABLES]

    def export(self, first="A", last="ZZZ"):
        """Exports everything; the path of the workbook."""
        answer = self.ask("export", first, last)
        self.assertEqual((answer["exported"], answer["errors"], answer["errorLog"]), (True, [], None))
        self.assertRegex(answer["file"], r"^talvex\\exportedbudgets\\Export_Budgets_3162026_100000\.xls$")
        kept = os.path.join(self.folder.name, "kept.xls")
        shutil.move(os.path.join(self.site, answer["file"].replace("\\", "/")), kept)
        return kept

    def book(self, **sheets):
        path = os.path.join(self.folder.name, "made.xls")
        write_workbook(path, **sheets)
        return path

    def imported(self, path, *options, status=0):
        """The answer of an import. Before it, a dry run must say the same and keep nothing; after it, the
        tables must hold what was said and nothing else."""
        if "--dry-run" in options:
            return self.ask("import", path, *options, status=status)
        before = self.tables()
        told = self.ask("import", path, "--dry-run", *options, status=status)
        self.assertEqual(self.tables(), before)
        answer = self.ask("import", path, *options, status=status)
        self.assertEqual({**told, "dryRun": False, "errorLog": answer["errorLog"]}, answer)
        self.check_outcomes(answer, before)
        return answer

    def check_outcomes(self, answer, before):
        outcomes = {row["outcome"] for row in answer["rows"]}
        after = self.tables()
        if not outcomes & {"inserted", "changed"}:
            self.assertEqual(after, before)
        for kind, old, new in zip(("budget", "line", "relation"), before, after):
            inserted = [(row["budget"], row["detail"]) for row in answer["rows"]
                        if (row["kind"], row["outcome"]) == (kind, "inserted")]
            if kind != "line":
                inserted = set(inserted)
            self.assertEqual(len(new) - len(old), len(inserted), kind)
