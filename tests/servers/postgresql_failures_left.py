"""What each kind of failure leaves of a transaction on PostgreSQL."""

import os
import pathlib
import sys
import tempfile
import unittest

from _failure_table import GOES_ON, KEPT, SEED, STATEMENTS, Trial
from _postgresql import PostgreSql

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "cli"))
from _gateway import Gateway  # noqa: E402
from _talvex import DONE, run  # noqa: E402

RAISES = """
CREATE FUNCTION refuse() RETURNS trigger LANGUAGE plpgsql AS
  'BEGIN RAISE EXCEPTION USING MESSAGE = ''No.''; END';
CREATE TRIGGER refuses AFTER UPDATE ON BUDGET EXECUTE FUNCTION refuse()
"""


class Left(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.server = PostgreSql(fsync="off")
        self.server.start()
        self.addCleanup(self.server.__exit__)
        self.server.query("CREATE DATABASE talvex")
        site = os.path.join(folder.name, "site")
        string = self.server.connection_string("talvex")
        made = run("init", site, "--database", string)
        self.assertEqual(made.returncode, DONE, made.stderr)
        for statement in SEED:
            self.query(statement)
        gateway = self.enterContext(Gateway(site))
        self.trial = Trial(self, gateway, string, self.kept)

    def query(self, statement):
        return self.server.query(statement, "talvex")

    def kept(self):
        return [row[0] for row in self.query(KEPT)]

    def test_failures_of_statements(self):
        for row in STATEMENTS:
            if row.postgresql is None:
                continue
            with self.subTest(row.what):
                self.trial.expect(row.postgresql, row.statement)
                self.query("DELETE FROM CHARGETYPES")

    def test_failures_that_a_trigger_makes(self):
        self.query(RAISES)
        self.trial.expect(GOES_ON, "UPDATE BUDGET SET BUDGETTYPE = 2")


if __name__ == "__main__":
    unittest.main()
