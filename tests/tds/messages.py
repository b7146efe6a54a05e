"""How often a posting asks the server, which sees every message."""

import unittest

from _client import SiteTest

POSTING = ["LEAF", {"$date": "2026-03-15"}, 1, "EUR", "Approved"]


class Messages(SiteTest):
    def setUp(self):
        super().setUp()
        self.chain("0")
        self.client = self.gateway()
        self.budgets = self.client.create("Talvex.BudgetT")

    def post(self):
        """How many messages one posting takes, with its transaction."""
        before = self.server.requests
        self.client.result("begin")
        self.client.invoke(self.budgets, "PostToBudget", POSTING)
        self.assertEqual(self.client.result("end"), {"outcome": "committed"})
        return self.server.requests - before

    def test_a_posting_sends_nothing_twice_and_nothing_that_is_not_needed(self):
        """Of each of the three budgets: the budget, its line, the currency's decimals, the warning step, the
        switch for warnings, the update, the parents; and the beginning and the end."""
        self.post()
        self.post()  # The first one prepares, and asks for tables.
        self.assertEqual([self.post() for _ in range(3)], [2 + 3 * 7] * 3)
        self.assertEqual(self.used(), [5.0, 5.0, 5.0])

    def test_an_update_is_prepared_once(self):
        for _ in range(3):
            self.post()
        prepared = [text for text in self.server.texts.seen if text.startswith("UPDATE BUDGETLINES")]
        self.assertEqual(len(prepared), 1, prepared)
        self.assertEqual(self.server.prepared[prepared[0]], 1)

    def test_a_transaction_is_begun_and_ended_in_one_message_each(self):
        self.post()
        before = self.server.requests
        self.client.result("begin")
        connection = self.client.create("Platform.Connection")
        self.client.invoke(connection, "Open", [self.string])
        for level in ("READ COMMITTED", "read committed", "SERIALIZABLE", "serializable"):
            self.client.invoke(connection, "Execute", [f"set TRANSACTION ISOLATION LEVEL {level}"])
        self.client.invoke(connection, "Close", [])
        self.client.result("end")
        self.assertEqual(self.server.requests - before, 1 + 1 + 1)
        # Another transaction does not inherit what was set.
        self.client.result("begin")
        connection = self.client.create("Platform.Connection")
        self.client.invoke(connection, "Open", [self.string])
        self.client.invoke(connection, "Execute", ["set TRANSACTION ISOLATION LEVEL SERIALIZABLE"])
        self.client.result("end")
        self.assertEqual(self.server.requests - before, 3 + 3)


if __name__ == "__main__":
    unittest.main()
