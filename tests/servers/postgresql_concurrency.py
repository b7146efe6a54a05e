"""Many writers on one tree of budgets, on a real PostgreSQL server."""

import unittest

from _postgresql import PostgreSql
from _test_program import passed


class Concurrency(unittest.TestCase):
    def test_writers_neither_lose_a_posting_nor_overspend(self):
        with PostgreSql(fsync="off", max_connections=64) as server:
            self.assertEqual(passed(server.connection_string(), "Concurrency.*:Overspending.*"), 3)


if __name__ == "__main__":
    unittest.main()
