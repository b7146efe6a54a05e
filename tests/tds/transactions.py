"""Transactions: what is kept, what is undone, and what others see meanwhile."""

import threading
import unittest

import _odbc
import _tds


class Transactions(_tds.ServerTest):
    lock_wait = 0.3

    def setUp(self):
        super().setUp()
        self.table("A INT NOT NULL PRIMARY KEY, B INT")
        self.db.results("INSERT INTO T VALUES (1, 10), (2, 20)")
        self.other = self.connect()

    def values(self, db=None):
        return [row[0] for row in (db or self.db).rows("SELECT B FROM T ORDER BY A")]

    def test_without_one_every_statement_is_kept(self):
        self.db.results("UPDATE T SET B = 11 WHERE A = 1")
        self.assertEqual(self.values(self.other), [11, 20])

    def test_a_commit_keeps_all_and_begins_the_next(self):
        self.db.autocommit(False)
        self.db.results("UPDATE T SET B = 11 WHERE A = 1")
        self.assertEqual(self.values(), [11, 20])
        self.assertEqual(self.values(self.other), [10, 20])
        self.db.end(_odbc.COMMIT)
        self.assertEqual(self.values(self.other), [11, 20])
        self.assertEqual(self.db.rows("SELECT @@TRANCOUNT"), [(1,)])
        self.db.results("UPDATE T SET B = 12 WHERE A = 1")
        self.db.end(_odbc.ROLLBACK)
        self.assertEqual(self.values(self.other), [11, 20])

    def test_a_rollback_undoes_all(self):
        self.db.autocommit(False)
        self.db.results("UPDATE T SET B = ?", 0)
        self.db.results("DELETE T")
        self.db.results("CREATE TABLE U (A INT)")
        self.db.end(_odbc.ROLLBACK)
        self.assertEqual(self.values(), [10, 20])
        self.refused(208, "SELECT * FROM U")

    def test_switching_back_ends_the_transaction(self):
        self.db.autocommit(False)
        self.db.results("DELETE T")
        self.db.autocommit(True)
        self.assertEqual(self.db.rows("SELECT @@TRANCOUNT"), [(0,)])
        self.assertEqual(self.values(), [10, 20])

    def test_statements_of_the_language_do_the_same(self):
        self.db.results("BEGIN TRANSACTION")
        self.db.results("UPDATE T SET B = 0")
        self.db.results("BEGIN TRAN")
        self.assertEqual(self.db.rows("SELECT @@TRANCOUNT"), [(2,)])
        self.db.results("COMMIT TRAN")
        self.assertEqual(self.values(self.other), [10, 20])
        self.db.results("IF @@TRANCOUNT > 0 COMMIT TRANSACTION")
        self.assertEqual(self.values(self.other), [0, 0])
        self.db.results("IF @@TRANCOUNT > 0 COMMIT TRANSACTION")

    def test_implicit_transactions(self):
        self.db.results("SET IMPLICIT_TRANSACTIONS ON")
        self.db.results("UPDATE T SET B = 0")
        self.assertEqual(self.values(self.other), [10, 20])
        self.db.results("ROLLBACK")
        self.db.results("SET IMPLICIT_TRANSACTIONS OFF")
        self.assertEqual(self.values(), [10, 20])

    def test_a_failed_statement_undoes_itself_alone(self):
        self.db.autocommit(False)
        self.db.results("UPDATE T SET B = 0 WHERE A = 1")
        self.refused(2627, "INSERT INTO T VALUES (3, 30), (1, 0)")
        self.db.end(_odbc.COMMIT)
        self.assertEqual(self.values(), [0, 20])

    def test_or_all_when_that_was_asked_for(self):
        self.db.results("SET XACT_ABORT ON")
        self.db.results("BEGIN TRAN")
        self.db.results("UPDATE T SET B = 0")
        self.refused(2627, "INSERT INTO T VALUES (1, 0)")
        self.assertEqual(self.db.rows("SELECT @@TRANCOUNT"), [(0,)])
        self.assertEqual(self.values(), [10, 20])

    def test_a_value_that_cannot_be_converted_ends_all(self):
        for number, text in ((245, "UPDATE T SET B = 'x'"), (245, "SELECT CAST('x' AS INT)"),
                             (241, "SELECT CAST('2026-02-30' AS DATETIME)")):
            with self.subTest(text):
                self.db.results("BEGIN TRANSACTION")
                self.db.results("UPDATE T SET B = 0")
                self.refused(number, text)
                self.assertEqual(self.db.rows("SELECT @@TRANCOUNT, XACT_STATE()"), [(0, 0)])
                self.assertEqual(self.values(self.other), [10, 20])

    def test_what_comes_behind_such_an_end_is_kept_on_its_own(self):
        self.db.autocommit(False)
        self.db.results("UPDATE T SET B = 11 WHERE A = 1")
        self.refused(245, "UPDATE T SET B = 'x'")
        self.db.results("UPDATE T SET B = 22 WHERE A = 2")
        self.assertEqual(self.values(self.other), [10, 22])

    def test_settings_may_be_on_in_every_new_session(self):
        self.server.user_options = ("XACT_ABORT", "IMPLICIT_TRANSACTIONS", "NOCOUNT")
        client = self.connect()
        client.results("UPDATE T SET B = 0")
        self.refused(2627, "INSERT INTO T VALUES (1, 1)", db=client)
        self.assertEqual(self.values(), [10, 20])

    def test_a_client_that_leaves_undoes_what_it_did(self):
        self.other.autocommit(False)
        self.other.results("DELETE T")
        self.other.close()
        self.assertEqual(self.db.count("UPDATE T SET B = 1"), 2)

    def test_reading_sees_what_others_have_committed_meanwhile(self):
        self.db.autocommit(False)
        self.assertEqual(self.values(), [10, 20])
        self.other.results("UPDATE T SET B = 11 WHERE A = 1")
        self.assertEqual(self.values(), [11, 20])
        self.assertEqual(self.db.count("UPDATE T SET B = 12 WHERE A = 1 AND B = 10"), 0)

    def test_the_second_who_changes_is_a_deadlocks_victim(self):
        self.db.autocommit(False)
        self.other.autocommit(False)
        self.db.results("UPDATE T SET B = 11 WHERE A = 1")
        self.refused(1205, "UPDATE T SET B = 12 WHERE A = 1", db=self.other)
        self.db.end(_odbc.COMMIT)
        self.assertEqual(self.values(), [11, 20])

    def test_a_victim_has_nothing_left_to_undo_and_is_told_so(self):
        """The client does not know that its transaction is over, and asks for the end of it."""
        self.db.autocommit(False)
        self.db.results("UPDATE T SET B = 11")
        self.server.knobs.add("fail", number=1205, containing="DELETE")
        self.refused(1205, "DELETE T")
        with self.assertRaises(_odbc.OdbcError) as caught:
            self.db.end(_odbc.ROLLBACK)
        self.assertEqual(caught.exception.native, 3903)

    def test_a_victim_loses_the_whole_transaction(self):
        self.db.autocommit(False)
        self.db.results("UPDATE T SET B = 11")
        self.server.knobs.add("fail", number=1205, containing="DELETE")
        self.refused(1205, "DELETE T")
        self.assertEqual(self.db.rows("SELECT @@TRANCOUNT, B FROM T WHERE A = 1"), [(0, 10)])

    def test_who_limits_the_wait_is_told_of_the_limit(self):
        self.db.autocommit(False)
        self.db.results("UPDATE T SET B = 11")
        self.other.results("SET LOCK_TIMEOUT 50")
        self.refused(1222, "UPDATE T SET B = 12", db=self.other)

    def test_a_higher_isolation_keeps_what_was_read(self):
        self.db.results("SET TRANSACTION ISOLATION LEVEL SERIALIZABLE")
        self.db.autocommit(False)
        self.values()
        self.refused(1205, "UPDATE T SET B = 12", db=self.other)
        self.db.results("set TRANSACTION ISOLATION LEVEL READ COMMITTED")

    def test_clients_in_parallel_lose_nothing(self):
        self.server.lock_wait = 30
        failures = []

        def add():
            with _odbc.Connection(_tds.connection_string(self.server.port)) as client:
                for _ in range(20):
                    try:
                        client.results("UPDATE T SET B = B + ? WHERE A = 1", 1)
                    except _odbc.OdbcError as error:
                        failures.append(error)

        threads = [threading.Thread(target=add) for _ in range(4)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(failures, [])
        self.assertEqual(self.values(), [90, 20])


if __name__ == "__main__":
    unittest.main()
