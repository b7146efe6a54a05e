"""Every scenario over SQL Server's wire protocol, and whether all that was sent is T-SQL.

Scenarios that may come out otherwise there than on the embedded database stand in scenarios_deviations.txt,
each with its reason.
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

import _grammar
import _server
import _tds
import program

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "servers"))
from _test_program import Deviations, passed  # noqa: E402

DEVIATIONS = Deviations(pathlib.Path(__file__).with_name("scenarios_deviations.txt"))
ROOMS = ("services", "ledger", "accounting", "exchange", "component", "host", "adapters/suite")
LITERAL = re.compile(r'"((?:[^"\\\n]|\\.)*)"')
BEGINS_A_STATEMENT = re.compile(r"(?:SELECT|INSERT|UPDATE|DELETE|SET TRANSACTION) ", re.IGNORECASE)

# What the server's language does not know, one text for each way to be wrong.
BAD_TEXTS = """
SELEC * FROM BUDGET
SELECT * FROM
SELECT A, FROM BUDGET
SELECT * BUDGET
SELECT * FROM BUDGET WHERE
SELECT * FROM BUDGET WHERE AND A = 1
SELECT * FROM BUDGET WHERE A = 1 AND
SELECT * FROM BUDGET WHERE A = 1 B = 2
SELECT * FROM BUDGET WHERE A IN ()
SELECT * FROM BUDGET WHERE A = 3,4
SELECT * FROM BUDGET WHERE ((A = 1)
SELECT * FROM BUDGET WHERE A = 'x
SELECT * FROM BUDGET WHERE A = 'O'Neil'
SELECT * FROM BUDGET WHERE A == 1
SELECT * FROM BUDGET WHERE A ISNULL
SELECT * FROM BUDGET WHERE A ILIKE 'x'
SELECT * FROM BUDGET WHERE A = ?
SELECT * FROM BUDGET ORDER BY
SELECT * FROM BUDGET ORDER BY A NULLS FIRST
SELECT * FROM BUDGET LIMIT 1
SELECT A || B FROM BUDGET
SELECT * FROM `BUDGET`
SELECT * FROM BUDGET; SELECT * FROM BUDGETLINES
INSERT INTO BUDGET (A VALUES (1)
INSERT INTO BUDGET (A) VALUES (1) RETURNING A
INSERT INTO BUDGET (A) VALUES (1) ON CONFLICT DO NOTHING
INSERT OR REPLACE INTO BUDGET (A) VALUES (1)
UPDATE BUDGET SET WHERE A = 1
DELETE BUDGET WHERE
DELETE FROM BUDGET WHERE A = 1 B
DROP TABLE
BEGIN IMMEDIATE
PRAGMA foreign_keys = ON
""".strip().splitlines()

# What a session sends as several statements in one text, by its beginning, and how many they are.
SEVERAL = {
    "SET NOCOUNT OFF; SET XACT_ABORT OFF; ": (4, 6),  # When it opens, and with each transaction.
    "COMMIT TRANSACTION; ": (2,),
    "DECLARE @ASSIGNED TABLE ": (3,),
}


def problem(text):
    """Why the text is not what a session sends; None when it is."""
    for begin, counts in SEVERAL.items():
        if text.startswith(begin):
            wrong, count = _grammar.parsed(text)
            return wrong or (None if count in counts else f"{count} statements")
    return _grammar.problem(text)


def statements_in_sources():
    """(file, text) of every literal in the sources that begins a statement."""
    found = []
    for room in ROOMS:
        for path in sorted((_tds.SOURCE_DIR / "src" / room).rglob("*.[ch]*")):
            for text in LITERAL.findall(path.read_text(encoding="utf-8")):
                if BEGINS_A_STATEMENT.match(text):
                    found.append((path.name, text))
    return found


class OnSqlServer(unittest.TestCase):
    """All tests share one server: the texts that the first ones send are looked at by the last."""

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.server = _server.Server(os.path.join(cls.folder.name, "server.db")).start()

    @classmethod
    def tearDownClass(cls):
        cls.server.stop()
        cls.folder.cleanup()

    def connection_string(self):
        return _tds.connection_string(self.server.port)

    def databases_made(self):
        return self.server.databases.copies

    def talvex(self, *arguments):
        subprocess.run([program.PROGRAM, *arguments], check=False, stdin=subprocess.DEVNULL, timeout=120,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def test_1_scenarios(self):
        before = self.databases_made()
        count = passed(self.connection_string(), DEVIATIONS.left_out("Scenario_*"))
        self.assertGreaterEqual(count, 170)
        # Each has worked here and nowhere else.
        self.assertEqual(self.databases_made() - before, count)

    def test_2_deviations_are_few_and_still_there(self):
        DEVIATIONS.expect_to_be_few_and_there(self.connection_string())

    def test_3_record_sets(self):
        self.assertGreaterEqual(passed(self.connection_string(), "StoredRecordset.*"), 4)

    def test_3_reading_transactions(self):
        # At READ COMMITTED there is no snapshot.
        filter_text = "ReadingTransaction.*-ReadingTransaction.SeesOneState*"
        self.assertGreaterEqual(passed(self.connection_string(), filter_text), 2)

    def test_4_commands(self):
        """Listings, and what goes into workbooks and comes out of them, are in no scenario."""
        with tempfile.TemporaryDirectory() as site:
            self.talvex("init", site + "/site", "--sample", "--database", self.connection_string())
            for _, *arguments in program.COMMANDS:
                self.talvex("--config", site + "/site", *arguments)
            self.talvex("--config", site + "/site", "export", "A", "Z")
            written = list(pathlib.Path(site, "site", "talvex", "exportedbudgets").glob("*.xls"))
            self.assertEqual(len(written), 1)
            self.talvex("--config", site + "/site", "import", str(written[0]))

    def test_5_all_that_was_sent_is_t_sql(self):
        sent = self.server.texts.all()
        self.assertEqual({text: reason for text in sent if (reason := problem(text))}, {})
        for begin in SEVERAL:
            self.assertTrue(any(text.startswith(begin) for text in sent), f"not sent: {begin}")
        print(f"{len(sent)} kinds of text were parsed")

    def test_6_all_that_the_sources_can_say_was_sent(self):
        sent = [text.lower() for text in self.server.texts.seen]
        missing = [(name, text) for name, text in statements_in_sources()
                   if not any(text.lower() in one for one in sent)]
        self.assertEqual(missing, [])

    def test_7_choosing_among_very_many_budgets(self):
        """After the look at what was sent: the parser takes minutes over conditions as long as these."""
        self.assertEqual(passed(self.connection_string(), "StoredSelection.*"), 3)

    def test_what_is_no_t_sql_is_refused(self):
        self.assertEqual([text for text in [*BAD_TEXTS, "", " "] if problem(text) is None], [])

    def test_the_tables_are_made_in_t_sql(self):
        script = (_tds.SOURCE_DIR / "schema" / "sqlserver.sql").read_text(encoding="utf-8")
        wrong, count = _grammar.parsed(script)
        self.assertIsNone(wrong)
        self.assertEqual(count, len(re.findall(r"^IF ", script, re.MULTILINE)))


if __name__ == "__main__":
    unittest.main()
