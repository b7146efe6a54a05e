"""Which commands read in one snapshot: what a real PostgreSQL server is sent when they run."""

import os
import pathlib
import sys
import tempfile
import unittest

from _postgresql import PostgreSql
from _test_program import passed

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "cli"))
from _reading import EXPORT, LISTINGS  # noqa: E402
from _talvex import DONE, NOW, run  # noqa: E402

SNAPSHOT = "SET TRANSACTION ISOLATION LEVEL REPEATABLE READ READ ONLY"
WRITING = ((DONE, "post", "IT-HW-AMS", "1", "EUR", "--type", "Approved"),
           (DONE, "call", "Talvex.BudgetT", "GetAllBudgets", "iUserID="))


class Reading(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = PostgreSql(fsync="off", log_statement="all")
        cls.server.start()

    @classmethod
    def tearDownClass(cls):
        cls.server.__exit__()

    def test_what_only_reads_sees_one_snapshot(self):
        with tempfile.TemporaryDirectory() as folder:
            site = os.path.join(folder, "site")
            self.server.query("CREATE DATABASE reading")
            made = run("init", site, "--sample", "--database", self.server.connection_string("reading"))
            self.assertEqual(made.returncode, DONE, made.stderr)
            for snapshots, commands in ((1, (EXPORT, *LISTINGS)), (0, WRITING)):
                for status, *command in commands:
                    with self.subTest(command=command):
                        before = len(self.server.log())
                        ran = run("--config", site, "--now", NOW, *command)
                        self.assertEqual(ran.returncode, status, ran.stdout + ran.stderr)
                        self.assertEqual(self.server.log()[before:].count(SNAPSHOT), snapshots)

    def test_reading_transactions(self):
        own = self.server.connection_string()
        self.assertGreaterEqual(passed(own, "ReadingTransaction.*"), 3)
        # With savepoints of the driver's, too.
        self.assertGreaterEqual(passed(own + ";Protocol=7.4-2", "ReadingTransaction.*"), 3)


if __name__ == "__main__":
    unittest.main()
