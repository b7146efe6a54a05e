"""Undone means undone: what failures leave of a transaction, and what is kept of what comes after."""

import pathlib
import sys
import unittest

import _server
from _client import SiteTest, run

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "servers"))
from _failure_table import FIRST, GOES_ON, KEPT, MADE, OVER, SEED, STATEMENTS, TRIGGERS, Trial  # noqa: E402

POSTING = ["LEAF", {"$date": "2026-03-15"}, 1, "EUR", "Approved"]


class Left(SiteTest):
    """The table, over the wire."""

    def setUp(self):
        super().setUp()
        for statement in SEED:
            self.db.results(statement)
        self.trial = Trial(self, self.gateway(), self.string, self.kept)

    def kept(self):
        found = [row[0] for row in self.db.rows(KEPT)]
        self.db.results("DELETE CHARGETYPES")
        return found

    def test_failures_of_statements(self):
        for row in STATEMENTS:
            with self.subTest(row.what):
                self.trial.expect(row.sqlserver, row.statement, row.arrives_as())

    def test_numbers_that_the_server_is_told_to_answer_with(self):
        for number, left in MADE:
            with self.subTest(number):
                self.server.knobs.add("fail", number=number, containing="UPDATE BUDGET")
                self.trial.expect(left, "UPDATE BUDGET SET BUDGETTYPE = 2")

    def test_failures_that_a_trigger_makes(self):
        for what, body, number, left in TRIGGERS:
            with self.subTest(what):
                self.db.results(f"CREATE TRIGGER REFUSES ON BUDGET AFTER UPDATE AS {body}")
                self.trial.expect(left, "UPDATE BUDGET SET BUDGETTYPE = 2", number)
                self.db.results("DROP TRIGGER REFUSES")

    def test_what_a_trigger_keeps_on_its_own_behind_its_rollback_is_not_ours(self):
        self.db.results("CREATE TRIGGER REFUSES ON BUDGET AFTER UPDATE AS ROLLBACK TRANSACTION; "
                        "INSERT INTO CURRENCY (CURRENCYCODE) VALUES ('LOG')")
        self.trial.expect(OVER, "UPDATE BUDGET SET BUDGETTYPE = 2", 3609)
        self.assertEqual(self.db.rows("SELECT CURRENCYCODE FROM CURRENCY"), [("LOG",)])

    def test_a_statement_that_asks_for_xact_abort(self):
        for row in STATEMENTS:
            if row.number not in (102, 207, 208):
                with self.subTest(row.what):
                    self.trial.expect(OVER, row.statement, before=["SET XACT_ABORT ON"])
        # The next transaction does without it.
        self.trial.expect(GOES_ON, STATEMENTS[0].statement)

    def test_a_failure_whose_question_is_lost_is_the_end(self):
        self.server.knobs.add("fail", number=701, containing="XACT_STATE")
        self.trial.expect(OVER, STATEMENTS[0].statement)

    def test_a_transaction_that_a_statement_began_is_no_part_of_ours(self):
        gateway = self.trial.gateway
        connection = gateway.create("Platform.Connection")
        gateway.invoke(connection, "Open", [self.string])
        refused = gateway.ask("invoke", object=connection, method="Execute", args=["BEGIN TRANSACTION"])
        self.assertIn("the host does so", str(refused))
        self.assertIsNone(self.trial.execute(connection, "SET IMPLICIT_TRANSACTIONS ON"))
        self.assertIsNone(self.trial.execute(connection, FIRST))
        gateway.invoke(connection, "Close", [])
        gateway.result("release", object=connection)
        gateway.result("begin")
        connection = gateway.create("Platform.Connection")
        opened = gateway.ask("invoke", object=connection, method="Open", args=[self.string])
        self.assertIn("A transaction was open already", str(opened))
        gateway.result("rollback")
        self.assertEqual(self.kept(), [])
        self.trial.expect(GOES_ON, STATEMENTS[0].statement)


class Defaults(SiteTest):
    """A server whose new sessions have other settings than a session relies on."""

    def serve(self):
        return _server.Server(self.file, user_options=("XACT_ABORT", "IMPLICIT_TRANSACTIONS", "NOCOUNT"))

    def test_they_change_nothing(self):
        for statement in SEED:
            self.db.results(statement)
        self.db.results("COMMIT")
        gateway = self.gateway()

        def kept():
            return [row[0] for row in self.db.rows(KEPT)]

        # Outside a transaction a statement is kept at once.
        connection = gateway.create("Platform.Connection")
        gateway.invoke(connection, "Open", [self.string])
        gateway.invoke(connection, "Execute", ["INSERT INTO CHARGETYPES (CHARGETYPECODE) VALUES ('ALONE')"])
        self.assertEqual(kept(), ["ALONE"])
        counted = {"CommandText": "DELETE CHARGETYPES", "RecordsAffected": {"$empty": True}}
        self.assertEqual(gateway.invoke(connection, "Execute", counted)["out"], {"RecordsAffected": 1})
        self.db.results("COMMIT")
        Trial(self, gateway, self.string, kept).expect(GOES_ON, STATEMENTS[0].statement)


class Seen(SiteTest):
    """What callers of the component see."""

    def test_a_posting_behind_a_failure_is_not_kept(self):
        self.chain()
        gateway = self.gateway()
        budgets = gateway.create("Talvex.BudgetT")
        gateway.result("begin")
        gateway.invoke(budgets, "PostToBudget", POSTING)
        line = ["LEAF", 0, ["STARTDATE"], ["2026-02-30"]]
        self.assertIn("error", gateway.ask("invoke", object=budgets, method="InsertLine", args=line))
        posted = gateway.ask("invoke", object=budgets, method="PostToBudget", args=POSTING)
        self.assertIn("roll it back", str(posted))
        self.assertEqual(gateway.result("end"), {"outcome": "aborted"})
        self.assertEqual(self.used(), [None, None, None])
        self.assertEqual(self.db.rows("SELECT COUNT(*) FROM BUDGETLINES"), [(3,)])

    def test_a_dry_run_keeps_nothing_though_a_trigger_refuses_a_row(self):
        self.chain()
        exported = run("--config", self.site, "export", "LEAF", "TOP")
        self.assertEqual(exported.returncode, 0, exported.stdout + exported.stderr)
        book = next(pathlib.Path(self.site, "talvex", "exportedbudgets").glob("*.xls"))
        for table in ("BUDGETRELATIONS", "BUDGETLINES", "BUDGET"):
            self.db.results(f"DELETE {table}")
        self.db.results("CREATE TRIGGER REFUSES ON BUDGET AFTER INSERT AS IF EXISTS (SELECT 1 FROM inserted "
                        "WHERE BUDGETCODE = 'MIDDLE') ROLLBACK TRANSACTION")
        told = run("--config", self.site, "import", str(book), "--dry-run")
        self.assertIn("The transaction ended in the trigger", told.stdout + told.stderr)
        for table in ("BUDGET", "BUDGETLINES", "BUDGETRELATIONS"):
            self.assertEqual(self.db.rows(f"SELECT COUNT(*) FROM {table}"), [(0,)], told.stdout)


if __name__ == "__main__":
    unittest.main()
