"""Statements that are prepared once and run with parameters."""

import unittest

import _odbc
import _tds


class Prepared(_tds.ServerTest):
    def setUp(self):
        super().setUp()
        self.table("A INT, B NVARCHAR(50), C FLOAT")
        self.db.results("INSERT INTO T VALUES (1, 'one', 1.5), (2, 'two', 2.5), (3, NULL, NULL)")

    def test_the_columns_are_known_before_it_runs(self):
        with _odbc.Statement(self.db) as statement:
            statement.prepare("SELECT A, B AS NAME, C, COUNT(*) AS N FROM T WHERE A = ? GROUP BY A, B, C")
            self.assertEqual([(column.name, column.type) for column in statement.columns()],
                             [("A", 4), ("NAME", -9), ("C", 8), ("N", 4)])

    def test_it_runs_again_with_other_values(self):
        with _odbc.Statement(self.db) as statement:
            statement.prepare("SELECT B FROM T WHERE A = ? AND (C < ? OR C IS NULL)")
            for first, limit, expected in ((1, 9.0, [("one",)]), (2, 9.0, [("two",)]), (2, 1.0, []),
                                           (3, None, [(None,)])):
                self.assertEqual(statement.execute(first, limit)[0].rows, expected)

    def test_it_runs_again_with_the_buffers_it_has(self):
        """Nothing is bound anew, so the driver calls sp_execute with the handle it has."""
        with _odbc.Statement(self.db) as statement:
            statement.prepare("UPDATE T SET C = C + ? WHERE A = ?")
            counts = [statement.execute(1.0, 1)[0].count]
            buffer, _ = statement.kept[1]
            for key in (2, 7):
                buffer.value = key
                statement.check(_odbc._library.SQLExecute(statement.handle))
                counts.append(statement.results()[0].count)
        self.assertEqual(counts, [1, 1, 0])
        self.assertEqual(self.db.rows("SELECT C FROM T ORDER BY A"), [(2.5,), (3.5,), (None,)])

    def test_two_statements_of_one_session_are_told_apart(self):
        with _odbc.Statement(self.db) as first, _odbc.Statement(self.db) as second:
            first.prepare("SELECT B FROM T WHERE A = ?")
            second.prepare("SELECT A FROM T WHERE B = ?")
            for key, name in ((1, "one"), (2, "two"), (1, "one")):
                self.assertEqual(first.execute(key)[0].rows, [(name,)])
                self.assertEqual(second.execute(name)[0].rows, [(key,)])

    def test_quoted_texts_and_question_marks_in_them_stay(self):
        self.assertEqual(self.db.rows("SELECT 'is it ?', A FROM T WHERE A = ?", 1), [("is it ?", 1)])

    def test_values_in_every_place_a_statement_has(self):
        self.db.results("INSERT INTO T (A, B, C) VALUES (?, ?, ?)", 4, "four", None)
        self.assertEqual(self.db.count("UPDATE T SET B = ?, C = ? WHERE A IN (?, ?)", "x", 0.5, 1, 4), 2)
        rows = self.db.rows("SELECT A FROM T WHERE B = ? AND C = ? ORDER BY A", "X", 0.5)
        self.assertEqual(rows, [(1,), (4,)])
        self.assertEqual(self.db.count("DELETE T WHERE A BETWEEN ? AND ?", 1, 3), 3)

    def test_a_key_the_table_assigns_comes_back(self):
        self.table("ID INT NOT NULL IDENTITY(1, 1), A INT, CONSTRAINT PK_L PRIMARY KEY (ID)", "L")
        for number in (1, 2):
            self.assertEqual(self.db.rows("INSERT INTO L (A) OUTPUT INSERTED.ID VALUES (?)", 7), [(number,)])
        self.assertEqual(self.db.rows("INSERT INTO L OUTPUT INSERTED.ID DEFAULT VALUES"), [(3,)])
        self.assertEqual(self.db.rows("INSERT INTO L (A) VALUES (8); SELECT SCOPE_IDENTITY() AS ID"), [(4,)])
        self.assertEqual(self.db.rows("SELECT @@IDENTITY"), [(4,)])
        self.assertEqual(self.db.rows("DELETE L OUTPUT DELETED.ID, DELETED.A WHERE A = ?", 8), [(4, 8)])

    def test_an_assigned_key_is_not_given_twice(self):
        self.table("ID INT IDENTITY(1, 1) PRIMARY KEY, A INT", "L")
        self.db.results("INSERT INTO L (A) VALUES (1), (2)")
        self.db.results("DELETE L WHERE A = 2")
        self.assertEqual(self.db.rows("INSERT INTO L (A) OUTPUT INSERTED.ID VALUES (3)"), [(3,)])

    def test_an_assigned_key_is_the_callers_when_asked_for(self):
        self.table("ID INT IDENTITY(1, 1) PRIMARY KEY, A INT", "L")
        self.refused(544, "INSERT INTO L (ID, A) VALUES (?, ?)", 7, 1)
        self.db.results("SET IDENTITY_INSERT L ON")
        self.db.results("INSERT INTO L (ID, A) VALUES (?, ?)", 7, 1)
        self.db.results("SET IDENTITY_INSERT L OFF")
        self.assertEqual(self.db.rows("INSERT INTO L (A) OUTPUT INSERTED.ID VALUES (2)"), [(8,)])

    def test_a_failure_leaves_the_statement_able(self):
        self.table("A INT NOT NULL PRIMARY KEY", "L")
        with _odbc.Statement(self.db) as statement:
            statement.prepare("INSERT INTO L VALUES (?)")
            statement.execute(1)
            with self.assertRaises(_odbc.OdbcError):
                statement.execute(1)
            self.assertEqual(statement.execute(2)[0].count, 1)


class Results(_tds.ServerTest):
    def test_all_results_of_a_batch_come_one_after_the_other(self):
        self.table("A INT")
        found = self.db.results("INSERT INTO T VALUES (1), (2); SELECT A FROM T; "
                                "UPDATE T SET A = 5 WHERE A = 2; SELECT A FROM T WHERE A > 2 SELECT 'end'")
        self.assertEqual([(result.rows, result.count) for result in found],
                         [([], 2), ([(1,), (2,)], 2), ([], 1), ([(5,)], 1), ([("end",)], 1)])

    def test_without_counts_only_rows_come(self):
        self.table("A INT")
        self.db.results("SET NOCOUNT ON")
        found = self.db.results("INSERT INTO T VALUES (1); UPDATE T SET A = 3; SELECT A FROM T")
        self.assertEqual([result.rows for result in found if result.columns], [[(3,)]])
        self.db.results("SET NOCOUNT OFF")
        self.assertEqual(self.db.count("UPDATE T SET A = 4"), 1)

    def test_an_error_stands_where_it_happened(self):
        """A broken constraint ends its statement alone; the batch goes on."""
        self.table("A INT NOT NULL PRIMARY KEY")
        with _odbc.Statement(self.db) as statement:
            with self.assertRaises(_odbc.OdbcError) as caught:
                statement.run("INSERT INTO T VALUES (1); INSERT INTO T VALUES (1); INSERT INTO T VALUES (2)")
            self.assertEqual(caught.exception.native, 2627)
        self.assertEqual(self.db.rows("SELECT COUNT(*) FROM T"), [(2,)])

    def test_a_batch_ends_with_a_name_that_is_unknown(self):
        self.table("A INT")
        with self.assertRaises(_odbc.OdbcError):
            self.db.results("INSERT INTO T VALUES (1); SELECT * FROM NOWHERE; INSERT INTO T VALUES (2)")
        self.assertEqual(self.db.rows("SELECT A FROM T"), [(1,)])

    def test_conditions_choose_what_runs(self):
        self.table("A INT")
        for text, expected in (("IF OBJECT_ID('T') IS NULL SELECT 1 ELSE SELECT 2", 2),
                               ("IF NOT EXISTS (SELECT 1 FROM T) BEGIN DELETE T; SELECT 3 END", 3),
                               ("IF @@TRANCOUNT > 0 COMMIT ELSE SELECT 4", 4),
                               ("IF EXISTS (SELECT 1 FROM sys.tables WHERE name = 't') SELECT 5", 5)):
            with self.subTest(text):
                self.assertEqual(self.db.rows(text), [(expected,)])

    def test_rows_left_unread_do_not_disturb_what_follows(self):
        self.table("A INT, B NVARCHAR(4000)")
        for number in range(50):
            self.db.results("INSERT INTO T VALUES (?, ?)", number, "x" * 4000)
        with _odbc.Statement(self.db) as statement:
            statement.prepare("SELECT * FROM T")
            statement.check(_odbc._library.SQLExecute(statement.handle))
            statement.check(_odbc._library.SQLFetch(statement.handle))
            statement.check(_odbc._library.SQLFreeStmt(statement.handle, 0))
        self.assertEqual(self.db.rows("SELECT COUNT(*) FROM T"), [(50,)])

    def test_the_first_rows_only(self):
        self.table("A INT")
        self.db.results("INSERT INTO T VALUES (3), (1), (2)")
        self.assertEqual(self.db.rows("SELECT TOP 2 A FROM T ORDER BY A"), [(1,), (2,)])
        self.assertEqual(self.db.rows("SELECT (SELECT TOP (1) A FROM T ORDER BY A DESC) AS M"), [(3,)])

    def test_what_the_server_would_not_read_is_refused(self):
        """SQLite would take each of these; a server does not."""
        self.table("A INT, B NVARCHAR(9)")
        for number, text in ((102, "SELECT A FROM T LIMIT 1"), (102, "SELECT 'a' || 'b'"),
                             (195, "SELECT IFNULL(A, 1) FROM T"),
                             (102, "INSERT OR REPLACE INTO T VALUES (1, 'x')"), (207, "SELECT rowid FROM T"),
                             (102, "SELECT A FROM T WHERE A == 1"), (102, "PRAGMA table_info(T)"),
                             (207, 'SELECT A FROM T WHERE B = "x"'),
                             (102, "INSERT INTO T VALUES (1, 'x') RETURNING A"),
                             (208, "SELECT * FROM sqlite_nothing"), (105, "SELECT 'a")):
            with self.subTest(text):
                self.refused(number, text)


if __name__ == "__main__":
    unittest.main()
