"""What goes wrong, and the number and state by which a client can tell."""

import threading
import unittest

import _odbc
import _tds

COLUMNS = """A INT NOT NULL, B NVARCHAR(5), C FLOAT, D DATETIME, E SMALLINT, F INT,
    CONSTRAINT PK_T PRIMARY KEY (A), CONSTRAINT UQ_T UNIQUE (F), CONSTRAINT CK_T CHECK (C > 0)"""

# (number, state, statement, part of the message)
REFUSED = [
    (2627, "23000", "INSERT INTO T (A, F) VALUES (1, 9)",
     "Violation of PRIMARY KEY constraint 'PK_T'. Cannot insert duplicate key in object 'dbo.T'."),
    (2627, "23000", "INSERT INTO T (A, F) VALUES (2, NULL)", "Violation of UNIQUE KEY constraint 'UQ_T'."),
    (515, "23000", "INSERT INTO T (B) VALUES ('x')",
     "Cannot insert the value NULL into column 'A', table 'talvex.dbo.T'; column does not allow nulls. "
     "INSERT fails."),
    (515, "23000", "UPDATE T SET A = NULL", "UPDATE fails."),
    (547, "23000", "UPDATE T SET C = 0",
     'The UPDATE statement conflicted with the CHECK constraint "CK_T". The conflict occurred in database '
     '"talvex", table "dbo.T".'),
    (8152, "22001", "UPDATE T SET B = '123456'", "String or binary data would be truncated."),
    (8152, "22001", "UPDATE T SET B = N'12345\U0001f600'", "truncated"),
    (8114, None, "UPDATE T SET C = 'x'", "Error converting data type nvarchar to float."),
    (241, None, "UPDATE T SET D = '2026-02-30'", "Conversion failed when converting date and/or time"),
    (242, None, "UPDATE T SET D = '1752-12-31'", "datetime data type resulted in an out-of-range value"),
    (8115, None, "UPDATE T SET E = 32768", "smallint"),
    (8115, None, "UPDATE T SET F = 2147483648", "int"),
    (245, None, "SELECT CAST('x' AS INT)", "'x'"),
    (102, "42000", "SELECT FROM WHERE", "Incorrect syntax near"),
    (208, "42S02", "SELECT * FROM NOWHERE", "Invalid object name 'NOWHERE'."),
    (208, "42S02", "DELETE NOWHERE", "Invalid object name 'NOWHERE'."),
    (207, "42S22", "SELECT NOTHING FROM T", "Invalid column name 'NOTHING'."),
    (207, "42S22", "INSERT INTO T (A, NOTHING) VALUES (5, 5)", "Invalid column name 'NOTHING'."),
    (2812, None, "EXEC sp_nothing", "Could not find stored procedure 'sp_nothing'."),
    (2714, "42S01", "CREATE TABLE T (A INT)", "There is already an object named 'T' in the database."),
    (3902, None, "COMMIT", "no corresponding BEGIN TRANSACTION"),
    (3903, None, "ROLLBACK TRANSACTION", "no corresponding BEGIN TRANSACTION"),
]


class Refusals(_tds.ServerTest):
    def setUp(self):
        super().setUp()
        self.table(COLUMNS)
        self.db.results("INSERT INTO T (A, C) VALUES (1, 1)")

    def test_each_has_its_number_and_state(self):
        for number, state, text, part in REFUSED:
            with self.subTest(text):
                error = self.refused(number, text)
                record = next(record for record in error.records if record.native == number)
                self.assertIn(part, record.text)
                if state:
                    self.assertEqual(record.state, state)
        self.assertEqual(self.db.rows("SELECT * FROM T"), [(1, None, 1.0, None, None, None)])

    def test_the_same_through_parameters(self):
        for number, text, values in ((2627, "INSERT INTO T (A) VALUES (?)", (1,)),
                                     (515, "INSERT INTO T (A) VALUES (?)", (None,)),
                                     (8152, "UPDATE T SET B = ?", ("123456",)),
                                     (241, "UPDATE T SET D = ?", ("no date",)),
                                     (547, "UPDATE T SET C = ? WHERE A = ?", (-1.0, 1))):
            with self.subTest(text):
                self.refused(number, text, *values)

    def test_a_unique_index_has_a_number_of_its_own(self):
        self.db.results("CREATE UNIQUE INDEX UX_T ON T (B) WHERE B IS NOT NULL")
        self.db.results("INSERT INTO T (A, B, F) VALUES (2, 'x', 2)")
        error = self.refused(2601, "INSERT INTO T (A, B, F) VALUES (3, 'X', 3)")
        self.assertIn("unique index 'UX_T'", str(error))
        self.db.results("INSERT INTO T (A, F) VALUES (4, 4)")


class References(_tds.ServerTest):
    def setUp(self):
        super().setUp()
        self.table("CODE NVARCHAR(50) NOT NULL PRIMARY KEY", "P")
        self.table("ID INT IDENTITY(1, 1) PRIMARY KEY, CODE NVARCHAR(50), "
                   "CONSTRAINT FK_C_P FOREIGN KEY (CODE) REFERENCES P (CODE)", "C")
        self.table("A INT PRIMARY KEY, CODE NVARCHAR(50) CONSTRAINT FK_D_P REFERENCES P", "D")
        self.db.results("INSERT INTO P VALUES ('a'), ('b'), ('c')")
        self.db.results("INSERT INTO C (CODE) VALUES ('a'), (NULL)")
        self.db.results("INSERT INTO D VALUES (1, 'B')")

    def test_the_broken_constraint_is_named(self):
        head = "statement conflicted with the"
        tail = 'The conflict occurred in database "talvex", table "dbo.'
        for text, part in (
                ("INSERT INTO C (CODE) VALUES ('x')",
                 f"The INSERT {head} FOREIGN KEY constraint \"FK_C_P\". {tail}P\", column 'CODE'."),
                ("UPDATE D SET CODE = 'x'", f'The UPDATE {head} FOREIGN KEY constraint "FK_D_P".'),
                ("DELETE P WHERE CODE = 'a'",
                 f"The DELETE {head} REFERENCE constraint \"FK_C_P\". {tail}C\", column 'CODE'."),
                ("DELETE P WHERE CODE = 'b'", f'The DELETE {head} REFERENCE constraint "FK_D_P".'),
                ("UPDATE P SET CODE = 'z' WHERE CODE = 'a'",
                 f'The UPDATE {head} REFERENCE constraint "FK_C_P".')):
            with self.subTest(text):
                self.assertIn(part, str(self.refused(547, text)))
        self.assertEqual(self.db.count("DELETE P WHERE CODE = 'c'"), 1)

    def test_a_refused_change_leaves_the_transaction_as_it_was(self):
        self.db.autocommit(False)
        self.db.results("INSERT INTO P VALUES ('d')")
        self.refused(547, "DELETE P WHERE CODE = 'a'")
        self.db.end(_odbc.COMMIT)
        self.assertEqual(self.db.rows("SELECT COUNT(*) FROM P"), [(4,)])


class AskedFor(_tds.ServerTest):
    """Faults that a test orders, here for the tests of others."""

    def setUp(self):
        super().setUp()
        self.table("A INT")
        self.db.results("INSERT INTO T VALUES (1)")

    def test_a_statement_fails_with_the_number_wanted(self):
        self.server.knobs.add("fail", number=701, text="There is no memory.", containing="update t")
        self.assertEqual(self.db.rows("SELECT A FROM T"), [(1,)])
        self.assertIn("There is no memory.", str(self.refused(701, "UPDATE T SET A = 2")))
        self.assertEqual(self.db.count("UPDATE T SET A = ?", 2), 1)

    def test_the_third_statement_fails_and_the_fourth(self):
        self.db.results("EXEC test_fail @number = 1205, @containing = 'UPDATE', @after = 2, @times = 2")
        numbers = [self.db.native_error("UPDATE T SET A = A + 1") for _ in range(6)]
        self.assertEqual(numbers, [0, 0, 1205, 1205, 0, 0])
        self.assertEqual(self.db.rows("SELECT A FROM T"), [(5,)])

    def test_a_fault_meets_the_next_session_that_qualifies(self):
        self.connect().results("EXEC test_fail @number = 1205")
        self.refused(1205, "SELECT A FROM T WHERE A = ?", 1)

    def test_orders_can_be_taken_back(self):
        self.db.results("EXEC test_fail @number = 1205")
        self.db.results("EXEC test_clear")
        self.assertEqual(self.db.rows("SELECT A FROM T"), [(1,)])

    def test_a_lost_connection_is_an_error_and_stays_one(self):
        self.server.knobs.add("drop", containing="UPDATE")
        with self.assertRaises(_odbc.OdbcError):
            self.db.results("UPDATE T SET A = 2")
        with self.assertRaises(_odbc.OdbcError) as caught:
            self.db.results("SELECT A FROM T")
        self.assertEqual(caught.exception.state[:2], "08")
        self.assertEqual(self.connect().rows("SELECT A FROM T"), [(1,)])

    def test_a_lost_transaction_is_undone(self):
        self.db.autocommit(False)
        self.db.results("UPDATE T SET A = 2")
        self.server.knobs.add("drop", containing="COMMIT")
        with self.assertRaises(_odbc.OdbcError):
            self.db.end(_odbc.COMMIT)
        self.assertEqual(self.connect().rows("SELECT A FROM T"), [(1,)])

    def test_a_commit_may_be_kept_though_its_answer_is_lost(self):
        self.db.autocommit(False)
        self.db.results("UPDATE T SET A = 2")
        self.server.knobs.add("drop_late", containing="COMMIT")
        with self.assertRaises(_odbc.OdbcError):
            self.db.end(_odbc.COMMIT)
        self.assertEqual(self.connect().rows("SELECT A FROM T"), [(2,)])

    def test_a_late_statement_runs_into_the_clients_time_limit(self):
        self.server.knobs.add("delay", milliseconds=200000, containing="SELECT")
        with _odbc.Statement(self.db) as statement:
            statement.set(_odbc.QUERY_TIMEOUT, 1)
            with self.assertRaises(_odbc.OdbcError) as caught:
                statement.run("SELECT A FROM T")
        self.assertEqual(caught.exception.state, "HYT00")
        self.assertEqual(self.db.rows("SELECT A FROM T"), [(1,)])

    def test_a_late_statement_can_be_cancelled(self):
        self.server.knobs.add("delay", milliseconds=200000, containing="SELECT")
        with _odbc.Statement(self.db) as statement:
            timer = threading.Timer(0.5, statement.cancel)
            timer.start()
            with self.assertRaises(_odbc.OdbcError) as caught:
                statement.run("SELECT A FROM T")
            timer.join()
        self.assertEqual(caught.exception.state, "HY008")
        self.assertEqual(self.db.rows("SELECT A FROM T"), [(1,)])


if __name__ == "__main__":
    unittest.main()
