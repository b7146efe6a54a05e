"""What each kind of failure leaves of a transaction on PostgreSQL; moments compared as they are stored."""

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
        self.gateway = self.enterContext(Gateway(site))
        self.string = string
        self.trial = Trial(self, self.gateway, string, self.kept)

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

    def test_a_moment_with_a_fraction_can_be_changed(self):
        self.query("CREATE TABLE RATED (ID INTEGER PRIMARY KEY, AT TIMESTAMP(6))")
        for at, meanwhile, number in (("23:59:59.997", None, None), ("23:59:59.123456", None, None),
                                      ("23:59:59.997", "23:59:59.998", -2147217864)):
            with self.subTest(at=at, meanwhile=meanwhile):
                self.query("DELETE FROM RATED")
                self.query(f"INSERT INTO RATED VALUES (1, '2026-12-31T{at}')")
                connection, rows = (self.gateway.create(name)
                                    for name in ("Platform.Connection", "Platform.Recordset"))
                self.gateway.invoke(connection, "Open", [self.string])
                self.gateway.invoke(rows, "Open", ["SELECT * FROM RATED", {"$object": connection}, 1, 3, 1])
                if meanwhile:
                    self.query(f"UPDATE RATED SET AT = '2026-12-31T{meanwhile}'")
                update = {"object": rows, "method": "Update", "args": [["AT"], [{"$date": "2027-01-01"}]]}
                if number:
                    self.assertEqual(self.gateway.error_number("invoke", **update), number)
                else:
                    self.gateway.result("invoke", **update)
                    self.assertEqual(self.query("SELECT AT FROM RATED"), [["2027-01-01 00:00:00"]])

    def test_a_moment_before_midnight_does_not_become_the_next_day(self):
        columns = self.query("SELECT table_name, column_name FROM information_schema.columns "
                             "WHERE table_schema = 'public' AND data_type LIKE 'timestamp%'")
        self.assertEqual(len(columns), 7, columns)
        for table, column in columns:
            with self.subTest(table=table, column=column):
                self.query(f"CREATE TABLE ALONE AS SELECT {column} AS AT FROM {table} WHERE 1 = 0")
                self.query("INSERT INTO ALONE VALUES ('2026-12-31T23:59:59.997')")
                kept = self.query("SELECT AT FROM ALONE; DROP TABLE ALONE")
                self.assertEqual(kept, [["2026-12-31 23:59:59.997"]])


if __name__ == "__main__":
    unittest.main()
