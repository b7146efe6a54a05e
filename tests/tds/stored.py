"""What a record set reads is what it compares, triggers hide nothing, and the database is of the right
kind."""

import os
import tempfile
import unittest

import _tds
from _client import SiteTest, run

EMPTY = {"$empty": True}
ROW_CHANGED = -2147217864


class Stored(SiteTest):
    def setUp(self):
        super().setUp()
        self.client = self.gateway()
        self.connection = self.client.create("Platform.Connection")
        self.client.invoke(self.connection, "Open", [self.string])

    def open(self, query):
        rows = self.client.create("Platform.Recordset")
        self.client.invoke(rows, "Open", [query, {"$object": self.connection}, 1, 3, 1])
        return rows

    def set(self, rows, column, value):
        fields = self.client.get(rows, "Fields")["$object"]
        field = self.client.invoke(fields, "Item", [column])["result"]["$object"]
        self.client.result("set", object=field, property="Value", value=value)

    def value(self, rows, column):
        fields = self.client.get(rows, "Fields")["$object"]
        field = self.client.invoke(fields, "Item", [column])["result"]["$object"]
        return self.client.get(field, "Value")

    def test_a_moment_with_a_fraction_can_be_changed(self):
        self.db.results("INSERT INTO BUDGETLINES (BUDGETCODE, ENDDATE) VALUES "
                        "('A', '2026-12-31T23:59:59.997')")
        rows = self.open("SELECT * FROM BUDGETLINES")
        self.assertEqual(self.value(rows, "ENDDATE"), {"$date": "2026-12-31T23:59:59"})
        self.set(rows, "ENDDATE", {"$date": "2027-01-01"})
        self.client.invoke(rows, "Update", [])
        self.assertEqual(self.db.rows("SELECT ENDDATE FROM BUDGETLINES"), [("2027-01-01T00:00:00",)])

    def test_another_fraction_is_another_value(self):
        self.db.results("INSERT INTO BUDGETLINES (BUDGETCODE, ENDDATE) VALUES "
                        "('A', '2026-12-31T23:59:59.997')")
        rows = self.open("SELECT * FROM BUDGETLINES")
        self.db.results("UPDATE BUDGETLINES SET ENDDATE = '2026-12-31T23:59:59.500'")
        self.set(rows, "ENDDATE", {"$date": "2027-01-01"})
        number = self.client.error_number("invoke", object=rows, method="Update", args=[])
        self.assertEqual(number, ROW_CHANGED)
        # Writing back what was read changes nothing.
        again = self.open("SELECT * FROM BUDGETLINES")
        self.set(again, "ENDDATE", self.value(again, "ENDDATE"))
        self.client.invoke(again, "Update", [])
        self.assertEqual(self.db.rows("SELECT ENDDATE FROM BUDGETLINES"), [("2026-12-31T23:59:59.5",)])

    def test_a_moment_with_a_fraction_may_be_part_of_a_key(self):
        self.table("AT DATETIME NOT NULL, RATE FLOAT, CONSTRAINT PK_RATED PRIMARY KEY (AT)", "RATED")
        self.db.results("INSERT INTO RATED VALUES ('2026-01-01T12:00:00.123', 1)")
        rows = self.open("SELECT * FROM RATED")
        self.set(rows, "RATE", 2)
        self.client.invoke(rows, "Update", [])
        self.assertEqual(self.db.rows("SELECT RATE FROM RATED"), [(2.0,)])

    def test_a_table_with_triggers_gives_the_number_of_an_added_row(self):
        self.db.results("CREATE TABLE LOG (A INT)")
        for table in ("BUDGETLINES", "CHARGELINES"):
            self.db.results(f"CREATE TRIGGER LOGS_{table} ON {table} AFTER INSERT AS "
                            "INSERT INTO LOG VALUES (7); SELECT A FROM LOG")
        for number in (1, 2):
            rows = self.open("SELECT * FROM BUDGETLINES WHERE BUDGETCODE = 'A'")
            self.client.invoke(rows, "AddNew", [["BUDGETCODE"], ["A"]])
            self.assertEqual(self.value(rows, "ID"), number)
        rows = self.open("SELECT * FROM CHARGELINES")
        self.client.invoke(rows, "AddNew", [["REVISION"], [1]])
        self.assertEqual(self.value(rows, "CHARGELINEID"), 1)
        self.assertEqual(self.db.rows("SELECT COUNT(*) FROM LOG"), [(3,)])

    def test_what_a_trigger_counts_hides_no_conflict(self):
        self.db.results("CREATE TABLE LOG (A INT)")
        self.db.results("INSERT INTO BUDGETLINES (BUDGETCODE, BUDGETAMNT) VALUES ('A', 1)")
        self.db.results("CREATE TRIGGER LOGS ON BUDGETLINES AFTER UPDATE AS INSERT INTO LOG VALUES (7); "
                        "INSERT INTO LOG VALUES (8)")
        rows = self.open("SELECT * FROM BUDGETLINES")
        self.set(rows, "BUDGETAMNT", 2)
        self.client.invoke(rows, "Update", [])
        self.db.results("UPDATE BUDGETLINES SET BUDGETAMNT = 3")
        self.set(rows, "BUDGETAMNT", 4)
        number = self.client.error_number("invoke", object=rows, method="Update", args=[])
        self.assertEqual(number, ROW_CHANGED)
        self.assertEqual(self.db.rows("SELECT BUDGETAMNT FROM BUDGETLINES"), [(3.0,)])
        update = {"CommandText": "UPDATE BUDGETLINES SET BUDGETAMNT = 5", "RecordsAffected": EMPTY}
        told = self.client.invoke(self.connection, "Execute", update)["out"]
        self.assertEqual(told, {"RecordsAffected": 1})
        update["CommandText"] = "UPDATE BUDGETLINES SET BUDGETAMNT = 5 WHERE BUDGETCODE = 'none'"
        told = self.client.invoke(self.connection, "Execute", update)["out"]
        self.assertEqual(told, {"RecordsAffected": 0})

    def test_rows_come_in_the_order_of_the_key(self):
        for text in ("select BUDGETCODE from BUDGET", "SELECT * FROM BUDGET; -- all", "SELECT * FROM BUDGET "
                     "ORDER BY USERID", "SELECT * FROM BUDGET ORDER BY budgetcode DESC",
                     "SELECT COUNT(*) AS N FROM BUDGET", "SELECT * FROM BUDGET ORDER BY LEN(USERID)",
                     "SELECT * FROM ACCOUNTINGPARAMETER", "SELECT PARENTBUDGET FROM BUDGETRELATIONS"):
            self.client.invoke(self.connection, "Execute", [text])
        wanted = ("select BUDGETCODE from BUDGET ORDER BY BUDGETCODE",
                  "SELECT * FROM BUDGET ORDER BY BUDGETCODE",
                  "SELECT * FROM BUDGET ORDER BY USERID, BUDGETCODE",
                  "SELECT * FROM BUDGET ORDER BY budgetcode DESC", "SELECT COUNT(*) AS N FROM BUDGET",
                  "SELECT * FROM BUDGET ORDER BY LEN(USERID)", "SELECT * FROM ACCOUNTINGPARAMETER",
                  "SELECT PARENTBUDGET FROM BUDGETRELATIONS ORDER BY PARENTBUDGET, CHILDBUDGET")
        self.assertEqual([text for text in wanted if text not in self.server.texts.seen], [])

    def test_a_constraint_is_recognised_in_letters_of_any_case(self):
        self.db.results("INSERT INTO LEDGERACCOUNT (LEDGERACCOUNT) VALUES ('4000')")
        self.db.results("INSERT INTO ACCOUNTINGRULE (LEDGERACCOUNT) VALUES ('4000')")
        text = 'The DELETE statement conflicted with the constraint "fk_accountingrule_ledgeraccount".'
        self.server.knobs.add("fail", number=547, containing="DELETE", text=text)
        manager = self.client.create("Talvex.BudgetManager")
        number = self.client.error_number("invoke", object=manager, method="DeleteLedgerAccount",
                                          args=["4000"])
        self.assertEqual(number, -2147216494)


class Kind(_tds.ServerTest):
    """`init` on a database whose collation is not the documented kind."""

    def test_it_is_refused_with_what_to_do(self):
        for collation, part in (("SQL_Latin1_General_CP1_CI_AS", "loses letters outside its code page"),
                                ("Latin1_General_100_CS_AS_SC_UTF8", "tells texts apart by case")):
            with self.subTest(collation), tempfile.TemporaryDirectory() as folder:
                self.db.results(f"CREATE DATABASE other COLLATE {collation}")
                made = run("init", os.path.join(folder, "site"), "--database",
                           _tds.connection_string(self.server.port, Database="other"))
                self.assertEqual(made.returncode, 3, made.stdout + made.stderr)
                for text in (part, f"collation {collation}", "COLLATE Latin1_General_100_CI_AS_SC_UTF8"):
                    self.assertIn(text, made.stderr)
                self.db.results("DROP DATABASE other")


if __name__ == "__main__":
    unittest.main()
