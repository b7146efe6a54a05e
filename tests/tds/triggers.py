"""Triggers of the test server, and what they leave of a transaction."""

import unittest

import _odbc
import _tds


class Triggers(_tds.ServerTest):
    def setUp(self):
        super().setUp()
        self.table("A INT NOT NULL PRIMARY KEY, B INT")
        self.table("N INT", "LOG")
        self.db.results("INSERT INTO T VALUES (1, 10), (2, 20)")

    def trigger(self, body, event="UPDATE"):
        self.db.results(f"CREATE TRIGGER TR ON T AFTER {event} AS {body}")

    def values(self):
        return [row[0] for row in self.db.rows("SELECT B FROM T ORDER BY A")]

    def logged(self):
        return [row[0] for row in self.db.rows("SELECT N FROM LOG ORDER BY N")]

    def test_one_sees_what_was_changed_and_its_counts_come_first(self):
        self.trigger("INSERT INTO LOG SELECT B FROM inserted")
        found = self.db.results("UPDATE T SET B = B + 1")
        self.assertEqual([result.count for result in found], [2, 2])
        found = self.db.results("UPDATE T SET B = 0 WHERE A = 7")
        self.assertEqual([result.count for result in found], [0, 0])
        self.assertEqual(self.logged(), [11, 21])

    def test_one_that_counts_nothing_says_nothing(self):
        self.trigger("SET NOCOUNT ON; INSERT INTO LOG VALUES (1)")
        self.assertEqual([result.count for result in self.db.results("UPDATE T SET B = 1 WHERE A = 1")], [1])
        self.db.results("CREATE TRIGGER TD ON T FOR INSERT, DELETE AS INSERT INTO LOG SELECT A FROM deleted")
        self.db.results("DELETE T WHERE A = 2")
        self.assertEqual(self.logged(), [1, 2])

    def test_rows_are_returned_from_its_table_into_another_only(self):
        self.trigger("INSERT INTO LOG VALUES (1)", "INSERT")
        self.refused(334, "INSERT INTO T (A) OUTPUT INSERTED.A VALUES (3)")
        found = self.db.results("DECLARE @K TABLE (N BIGINT); INSERT INTO T (A) OUTPUT INSERTED.A INTO @K "
                                "VALUES (3); SELECT N FROM @K")
        self.assertEqual([result.rows for result in found if result.columns], [[(3,)]])
        self.refused(137, "SELECT N FROM @K")
        self.assertEqual(self.logged(), [1])

    def test_its_rollback_ends_the_transaction_and_what_follows_is_kept(self):
        self.trigger("ROLLBACK TRANSACTION; INSERT INTO LOG VALUES (1)")
        self.db.autocommit(False)
        self.db.results("INSERT INTO T VALUES (3, 30)")
        self.refused(3609, "UPDATE T SET B = 0")
        self.assertEqual(self.db.rows("SELECT @@TRANCOUNT, XACT_STATE()"), [(0, 0)])
        self.db.results("INSERT INTO T VALUES (4, 40)")
        self.assertEqual(self.connect().rows("SELECT A FROM T ORDER BY A"), [(1,), (2,), (4,)])
        self.assertEqual(self.logged(), [1])

    def test_without_a_transaction_it_undoes_its_statement(self):
        self.trigger("ROLLBACK")
        self.refused(3609, "UPDATE T SET B = 0")
        self.assertEqual(self.values(), [10, 20])
        self.db.results("INSERT INTO T VALUES (3, 30)")
        self.assertEqual(self.values(), [10, 20, 30])

    def test_throw_and_a_failure_end_the_transaction(self):
        for body, number in (("THROW 50001, 'No.', 1", 50001), ("INSERT INTO T VALUES (1, 1)", 2627)):
            with self.subTest(body):
                self.trigger(body)
                self.db.results("BEGIN TRANSACTION")
                self.db.results("INSERT INTO LOG VALUES (5)")
                self.refused(number, "UPDATE T SET B = 0")
                self.assertEqual(self.db.rows("SELECT @@TRANCOUNT"), [(0,)])
                self.db.results("DROP TRIGGER TR")
        self.assertEqual((self.values(), self.logged()), ([10, 20], []))

    def test_raiserror_alone_leaves_the_change(self):
        self.trigger("RAISERROR ('No.', 16, 1)")
        self.db.results("BEGIN TRANSACTION")
        self.refused(50000, "UPDATE T SET B = 0")
        self.assertEqual(self.db.rows("SELECT @@TRANCOUNT, XACT_STATE()"), [(1, 1)])
        self.db.results("COMMIT")
        self.assertEqual(self.values(), [0, 0])

    def test_one_that_is_dropped_or_rolled_back_is_gone(self):
        self.db.autocommit(False)
        self.trigger("ROLLBACK")
        self.db.end(_odbc.ROLLBACK)
        self.db.autocommit(True)
        self.trigger("ROLLBACK")
        self.db.results("DROP TRIGGER TR")
        self.assertEqual(self.db.count("UPDATE T SET B = 0"), 2)


if __name__ == "__main__":
    unittest.main()
