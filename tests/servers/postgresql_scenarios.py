"""Every scenario, and every test of the ODBC adapter, on a real PostgreSQL server.

Scenarios that may come out otherwise there stand in postgresql_deviations.txt, each with its reason.
"""

import pathlib
import unittest

from _postgresql import PostgreSql
from _test_program import Deviations, passed

DEVIATIONS = Deviations(pathlib.Path(__file__).with_name("postgresql_deviations.txt"))


class OnPostgreSql(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        # No test here outlives the machine.
        cls.server = PostgreSql(fsync="off", max_connections=64, log_statement="ddl")
        cls.server.start()

    @classmethod
    def tearDownClass(cls):
        cls.server.__exit__()

    def databases_made(self):
        return self.server.log().count("statement: CREATE DATABASE talvex_test_")

    def test_scenarios(self):
        before = self.databases_made()
        count = passed(self.server.connection_string(), DEVIATIONS.left_out("Scenario_*"))
        self.assertGreaterEqual(count, 170)
        # Each has worked here and nowhere else.
        self.assertEqual(self.databases_made() - before, count)

    def test_deviations_are_few_and_still_there(self):
        DEVIATIONS.expect_to_be_few_and_there(self.server.connection_string())

    def test_record_sets(self):
        self.assertGreaterEqual(passed(self.server.connection_string(), "StoredRecordset.*"), 4)

    def test_choosing_among_very_many_budgets(self):
        self.assertEqual(passed(self.server.connection_string(), "StoredSelection.*"), 3)

    def test_adapter(self):
        self.assertGreaterEqual(passed(self.server.connection_string(), "Odbc*"), 25)


if __name__ == "__main__":
    unittest.main()
