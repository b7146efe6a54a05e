"""Exports and imports that cannot be done: what is told, and that nothing half done stays behind."""

import json
import os
import resource
import shutil
import sqlite3
import subprocess
import unittest

from _exchange import ExchangeTest
from _talvex import DONE, FAILED, NO, NOW, PROGRAM, environment

GARBAGE = "no such thing"
# Well-formed, but no stylesheet, and no schema.
OTHER_XML = "<something/>"
FAULTY = ("<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'><xsl:nonsense/>"
          "</xsl:stylesheet>")
# It works, but what it makes is no document.
PLAIN_TEXT = ("<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>"
              "<xsl:output method='text'/><xsl:template match='/'>plain text</xsl:template></xsl:stylesheet>")
SCHEMA = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element/></xs:schema>"

NO_STYLESHEET = "The stylesheet for the budget export could not be loaded"
NO_TEMPLATE = "The workbook template could not be opened"
NO_WORKBOOK = "The file is not a workbook of the expected kind"
NO_LAYOUT = "The contents of the workbook do not match the layout required for a budget import"
NO_DOCUMENT = "The budget data could not be read as an XML document"
UNUSABLE = "The stylesheet cannot be used"

# A file of the installation, what stands in its place (nothing: it is missing), and what is told.
EXPORT_FILES = (
    ("XSL/Budgets_Export.xsl", None, NO_STYLESHEET),
    ("XSL/Budgets_Export.xsl", "", NO_STYLESHEET),
    ("XSL/Budgets_Export.xsl", GARBAGE, NO_STYLESHEET),
    ("XSL/Budgets_Export.xsl", OTHER_XML, UNUSABLE),
    ("XSL/Budgets_Export.xsl", FAULTY, UNUSABLE),
    ("XLT/Budgets_Export.XLT", None, NO_TEMPLATE),
    ("XLT/Budgets_Export.XLT", "", NO_WORKBOOK),
    ("XLT/Budgets_Export.XLT", GARBAGE, NO_WORKBOOK),
)
IMPORT_FILES = (
    ("XSL/Budgets_Import.xslt", None, "File not found"),
    ("XSL/Budgets_Import.xslt", "", "Line 1: Document is empty"),
    ("XSL/Budgets_Import.xslt", GARBAGE, "Line 1: Start tag expected"),
    ("XSL/Budgets_Import.xslt", OTHER_XML, UNUSABLE),
    ("XSL/Budgets_Import.xslt", FAULTY, UNUSABLE),
    ("XSL/Budgets_Import.xslt", PLAIN_TEXT, NO_DOCUMENT),
    ("XSD/Bugets_Import1.xsd", None, NO_LAYOUT),
    ("XSD/Bugets_Import1.xsd", "", NO_LAYOUT),
    ("XSD/Bugets_Import1.xsd", GARBAGE, NO_LAYOUT),
    ("XSD/Bugets_Import1.xsd", OTHER_XML, NO_LAYOUT),
    ("XSD/Bugets_Import1.xsd", SCHEMA, NO_LAYOUT),
)
GOOD = ("NEW", "Standard", "EUR", "Lyon", "SOFTWARE", "p.deboer", "Yes", 10)


class FailureTest(ExchangeTest):
    def below(self, name):
        return os.path.join(self.site, "talvex", name)

    def replaced(self, name, content):
        path = self.below(name)
        os.remove(path)
        if content is not None:
            with open(path, "w", encoding="utf-8") as file:
                file.write(content)

    def exports(self):
        return os.listdir(self.below("exportedbudgets"))

    def log(self, answer):
        with open(os.path.join(self.site, answer["errorLog"]), encoding="cp1252", newline="") as file:
            return file.read()

    def causes(self):
        """The entries of the log."""
        path = os.path.join(self.site, "log/errors.jsonl")
        if not os.path.exists(path):
            return []
        with open(path, encoding="utf-8") as log:
            return [json.loads(line)["text"] for line in log]

    def check_told(self, answer, message):
        """The answer and the error log say the same, the message among it."""
        self.assertTrue(any(message in error for error in answer["errors"]), answer)
        self.assertEqual([line.rstrip("-") for line in self.log(answer).split("\r\n") if line.strip("-")],
                         answer["errors"])

    def put_in_the_way(self, name):
        """Makes a folder one that nobody can write to, root included: it is a file."""
        shutil.rmtree(self.below(name))
        with open(self.below(name), "w", encoding="utf-8") as file:
            file.write("in the way")


class InstallationFiles(FailureTest):
    def test_an_export_without_its_files(self):
        for name, content, message in EXPORT_FILES:
            with self.subTest(name=name, content=content):
                kept = self.below(name) + ".kept"
                shutil.copy(self.below(name), kept)
                self.replaced(name, content)
                answer = self.ask("export", "A", "ZZZ", status=NO)
                os.replace(kept, self.below(name))
                self.assertEqual((answer["exported"], answer["file"]), (False, None))
                self.check_told(answer, message)
                if message == NO_STYLESHEET:
                    self.assertIn(name.rsplit("/", 1)[1], self.causes()[-1])
                self.assertEqual(self.exports(), [])
                os.remove(os.path.join(self.site, answer["errorLog"]))

    def test_an_import_without_its_files(self):
        book = self.book(budgets=[GOOD], lines=[("NEW", "1/1/2026", None, 5)])
        before = self.tables()
        for name, content, message in IMPORT_FILES:
            with self.subTest(name=name, content=content):
                kept = self.below(name) + ".kept"
                shutil.copy(self.below(name), kept)
                self.replaced(name, content)
                answer = self.imported(book, status=NO)
                os.replace(kept, self.below(name))
                self.assertFalse(answer["imported"])
                self.check_told(answer, message)
                if message == NO_LAYOUT:
                    self.assertIn(name.rsplit("/", 1)[1], self.causes()[-1])
                self.assertEqual(self.tables(), before)
                os.remove(os.path.join(self.site, answer["errorLog"]))
        self.assertTrue(self.imported(book)["imported"])

    def test_the_export_schema_is_only_named(self):
        self.replaced("XSD/Budgets_Export.xsd", None)
        self.assertTrue(self.ask("export", "A", "ZZZ")["exported"])


class Folders(FailureTest):
    def test_an_export_with_nowhere_to_go(self):
        self.put_in_the_way("exportedbudgets")
        answer = self.ask("export", "A", "ZZZ", status=NO)
        self.assertFalse(answer["exported"])
        self.check_told(answer, "The data could not be written to the workbook")
        self.assertRegex(self.causes()[-1], r"exportedbudgets.*Not a directory")

    def test_an_error_log_with_nowhere_to_go_fails_the_call(self):
        self.put_in_the_way("errorlog")
        before = self.tables()
        bad = ("X",) + GOOD[1:2] + ("QQQ",) + GOOD[3:]
        failed = self.talvex("import", self.book(budgets=[bad]), status=FAILED)
        self.assertRegex(failed.stderr, "errorlog")
        self.assertEqual(self.tables(), before)
        self.replaced("XSL/Budgets_Export.xsl", None)
        failed = self.talvex("export", "A", "ZZZ", status=FAILED)
        self.assertRegex(failed.stderr, "errorlog")
        self.assertEqual(self.exports(), [])

    def test_nothing_is_kept_of_an_import_whose_error_log_cannot_be_written(self):
        self.put_in_the_way("errorlog")
        before = self.tables()
        book = self.book(budgets=[GOOD, ("X",) + GOOD[1:2] + ("QQQ",) + GOOD[3:]])
        self.talvex("import", book, status=FAILED)
        self.assertEqual(self.tables(), before)

    def test_a_workbook_whose_error_log_could_not_be_named_is_refused(self):
        before = self.tables()
        book = self.book(budgets=[GOOD, ("X",) + GOOD[1:2] + ("QQQ",) + GOOD[3:]])
        # What is added to the name is "3162026-100000.txt", in place of ".xls".
        long = os.path.join(self.folder.name, "n" * 238 + ".xls")
        shutil.move(book, long)
        for options in ((), ("--dry-run",)):
            failed = self.talvex("import", long, *options, status=FAILED)
            self.assertRegex(failed.stderr, "Path/File access error.*n3162026-100000")
            self.assertEqual(self.tables(), before)
        fitting = os.path.join(self.folder.name, "n" * 237 + ".xls")
        shutil.move(long, fitting)
        self.assertTrue(self.imported(fitting, status=NO)["imported"])

    def test_an_error_log_on_a_full_disk_fails_the_call(self):
        os.symlink("/dev/full", self.below("errorlog/Budgets_Export3162026-100000.txt"))
        self.replaced("XSL/Budgets_Export.xsl", None)
        failed = self.talvex("export", "A", "ZZZ", status=FAILED)
        self.assertRegex(failed.stderr, r"Budgets_Export3162026-100000\.txt")


class FullDisk(FailureTest):
    def limited(self, size, *arguments):
        """Runs the program where no file may grow beyond that size, as on a disk that is full then."""
        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))
        # Without restored signals writing beyond the limit is an error and does not end the program.
        return subprocess.run([PROGRAM, "--config", self.site, "--now", NOW, *arguments], check=False,
                              env=environment(), encoding="utf-8", capture_output=True, timeout=120,
                              stdin=subprocess.DEVNULL, preexec_fn=limit, restore_signals=False)

    def test_an_export_leaves_no_file_whatever_room_there_is(self):
        whole = os.path.getsize(self.export())
        outcomes = set()
        for size in (0, 1, 512, 4096, whole // 2, whole - 1, 10 * whole):
            with self.subTest(size=size):
                ran = self.limited(size, "export", "A", "ZZZ")
                outcomes.add(ran.returncode)
                exports = self.exports()
                self.assertEqual(exports == [], ran.returncode != DONE, (exports, ran.stdout, ran.stderr))
                if ran.returncode == DONE:
                    self.assertEqual(os.path.getsize(self.below("exportedbudgets/" + exports[0])), whole)
                else:
                    self.assertTrue(ran.stdout or ran.stderr)
        self.assertIn(DONE, outcomes)
        self.assertGreater(len(outcomes), 1)

    def test_an_import_leaves_the_database_as_it_was_whatever_room_there_is(self):
        book = self.book(budgets=[(f"N{n:03}", *GOOD[1:]) for n in range(300)],
                         lines=[(f"N{n:03}", "1/1/2026", None, 5) for n in range(300)])
        before, outcomes = self.tables(), set()
        for size in (0, 65536, 131072, 200000, 4 * 1024 * 1024):
            with self.subTest(size=size):
                ran = self.limited(size, "import", book)
                outcomes.add(ran.returncode)
                if ran.returncode != DONE:
                    self.assertTrue(ran.stdout or ran.stderr)
                    self.assertEqual(self.tables(), before)
        self.assertIn(DONE, outcomes)
        self.assertGreater(len(outcomes), 1)
        self.assertEqual(self.sql("SELECT COUNT(*) FROM BUDGET WHERE BUDGETCODE GLOB 'N[0-9]*'"), [(300,)])


class Broken(FailureTest):
    def test_an_import_that_breaks_in_the_middle_is_undone(self):
        before = self.tables()
        self.sql("CREATE TRIGGER BREAKS BEFORE INSERT ON BUDGET WHEN NEW.BUDGETCODE = 'BREAKS' "
                 "BEGIN SELECT RAISE(ABORT, 'out of order'); END")
        book = self.book(budgets=[GOOD, ("BREAKS",) + GOOD[1:], ("LAST",) + GOOD[1:]],
                         lines=[("NEW", "1/1/2026", None, 5)], relations=[("IT", "NEW"), ("IT", "IT-HW-AMS")])
        answer = self.imported(book, status=NO)
        self.assertEqual((answer["imported"], answer["undone"]), (False, True))
        self.check_told(answer, "out of order")
        self.assertEqual(self.tables(), before)
        outcomes = {(row["sheet"], row["row"]): (row["outcome"], row["messages"]) for row in answer["rows"]}
        for place in (("Budgets", 2), ("Budgets", 4), ("Lines", 2)):
            self.assertEqual(outcomes[place], ("refused", ["the whole import was undone"]))
        self.assertEqual(outcomes[("Relations", 3)], ("left alone", []))
        text = self.talvex("import", book, "--dry-run", status=NO).stdout
        self.assertIn("The import would be undone: something breaks on the way.", text)
        text = self.talvex("import", book, status=NO).stdout
        self.assertIn("The import was undone: something broke on the way.", text)

    def test_an_import_while_somebody_else_writes_fails_and_can_be_repeated(self):
        book = self.book(budgets=[GOOD])
        before = self.tables()
        other = sqlite3.connect(os.path.join(self.site, "talvex.db"), isolation_level=None)
        other.execute("BEGIN IMMEDIATE")
        self.talvex("import", book, status=FAILED)
        other.execute("ROLLBACK")
        other.close()
        self.assertEqual(self.tables(), before)
        self.assertTrue(self.imported(book)["imported"])


if __name__ == "__main__":
    unittest.main()
