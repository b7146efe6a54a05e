"""What each kind of failure leaves of a transaction on the embedded store."""

import pathlib
import sqlite3
import sys
import unittest

from _gateway import Gateway
from _talvex import SampleTest

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "servers"))
from _failure_table import GOES_ON, KEPT, OVER, SEED, STATEMENTS, Trial  # noqa: E402


class Left(SampleTest):
    def setUp(self):
        super().setUp()
        self.path = f"{self.site}/talvex.db"
        for table in ("ACCOUNTINGRULELINE", "ACCOUNTINGRULE", "REQUISITIONLINE", "LEDGERACCOUNT", "BUDGET",
                      "CHARGETYPES"):
            self.run_sql(f"DELETE FROM {table}")
        for statement in SEED:
            self.run_sql(statement)
        gateway = self.enterContext(Gateway(self.site))
        self.trial = Trial(self, gateway, f"Driver=SQLite;Database={self.path}", self.kept)

    def run_sql(self, statement):
        connection = sqlite3.connect(self.path)
        with connection:
            connection.execute(statement)
        connection.close()

    def kept(self):
        return [row[0] for row in self.sql(KEPT)]

    def test_failures_of_statements(self):
        for row in STATEMENTS:
            if row.embedded is None:
                continue
            with self.subTest(row.what):
                self.trial.expect(row.embedded, row.statement)
                self.run_sql("DELETE FROM CHARGETYPES")

    def test_failures_that_a_trigger_makes(self):
        for action, left in (("ABORT", GOES_ON), ("FAIL", GOES_ON), ("ROLLBACK", OVER)):
            with self.subTest(action):
                self.run_sql("CREATE TRIGGER REFUSES AFTER UPDATE ON BUDGET "
                             f"BEGIN SELECT RAISE({action}, 'No.'); END")
                self.trial.expect(left, "UPDATE BUDGET SET BUDGETTYPE = 2")
                self.run_sql("DROP TRIGGER REFUSES")
                self.run_sql("DELETE FROM CHARGETYPES")


if __name__ == "__main__":
    unittest.main()
