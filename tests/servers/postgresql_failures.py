"""What is left of postings when a PostgreSQL server dies, a connection is cut, or a client dies; and how
often a posting asks the server."""

import os
import pathlib
import signal
import sys
import tempfile
import threading
import time
import unittest

from _postgresql import PostgreSql, Relay

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "cli"))
from _gateway import Gateway  # noqa: E402
from _talvex import DONE, run  # noqa: E402

LOST = "The connection to the database was lost"
CLIENTS = 3
POSTING = ["LEAF", {"$date": "2026-03-15"}, 1, "EUR", "Approved"]

TREE = """
    INSERT INTO CURRENCY (CURRENCYCODE, DECIMALS) VALUES ('EUR', 2);
    INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE) VALUES ('LEAF', 1, 'EUR'), ('TOP', 2, 'EUR');
    INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT, AVAILABLEAMNT, AVAILABLEPERC) VALUES
      ('LEAF', '2026-01-01', '2026-12-31', 1000000, 1000000, 1),
      ('TOP', '2026-01-01', '2026-12-31', 1000000, 1000000, 1);
    INSERT INTO BUDGETRELATIONS (PARENTBUDGET, CHILDBUDGET) VALUES ('TOP', 'LEAF')
"""


class Writer:
    """A gateway that posts 1 EUR again and again, each in a transaction, and counts what it was told."""

    def __init__(self, site):
        self.gateway = Gateway(site)
        self.budgets = self.gateway.create("Talvex.BudgetT")
        self.acknowledged = 0
        self.unknown = 0  # The server died while it was asked to keep one.
        self.errors = []

    def post(self):
        """True when the posting is kept."""
        self.gateway.ask("begin")
        posted = self.gateway.ask("invoke", object=self.budgets, method="PostToBudget", args=POSTING)
        ended = self.gateway.ask("end")
        kept = ended.get("result", {}).get("outcome") == "committed"
        self.acknowledged += kept
        if not kept:
            self.errors.append(posted.get("error") or ended.get("error"))
            self.unknown += "result" in posted and "error" in ended
        return kept

    def post_until(self, stop):
        while not stop.is_set():
            self.post()

    def post_soon(self):
        """A few calls may still meet what the failure has broken."""
        return any(self.post() for _ in range(10))


class Failures(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.server = PostgreSql()
        self.server.start()
        self.addCleanup(self.server.__exit__)
        self.server.query("CREATE DATABASE talvex")
        self.site = self.make_site(self.server.folder)
        self.server.query(TREE, "talvex")

    def make_site(self, socket_folder):
        site = os.path.join(self.folder.name, "site" + str(len(os.listdir(self.folder.name))))
        made = run("init", site, "--database", self.server.connection_string("talvex", socket_folder))
        self.assertEqual(made.returncode, DONE, made.stderr)
        return site

    def writer(self, site=None):
        writer = Writer(site or self.site)
        self.addCleanup(writer.gateway.__exit__)
        return writer

    def totals(self):
        rows = self.server.query("SELECT coalesce(USEDAPPROVEDAMNT, 0)::integer FROM BUDGETLINES ORDER BY ID",
                                 "talvex")
        return [int(row[0]) for row in rows]

    def expect_sound_books(self):
        verified = run("--config", self.site, "verify")
        self.assertEqual(verified.returncode, DONE, verified.stdout + verified.stderr)

    def test_a_server_that_is_killed_keeps_what_it_acknowledged(self):
        writers = [self.writer() for _ in range(CLIENTS)]
        stop = threading.Event()
        threads = [threading.Thread(target=writer.post_until, args=(stop,)) for writer in writers]
        for thread in threads:
            thread.start()
        while sum(writer.acknowledged for writer in writers) < 60:
            time.sleep(0.001)
        self.server.kill()
        stop.set()
        for thread in threads:
            thread.join(timeout=120)
            self.assertFalse(thread.is_alive())
        self.server.start()
        leaf, top = self.totals()
        acknowledged = sum(writer.acknowledged for writer in writers)
        unknown = sum(writer.unknown for writer in writers)
        print(f"{acknowledged} acknowledged, {unknown} unknown, {leaf} kept")
        self.assertEqual(leaf, top)
        self.assertGreaterEqual(leaf, acknowledged)
        self.assertLessEqual(leaf, acknowledged + unknown)
        self.expect_sound_books()
        for writer in writers:
            self.assertTrue(writer.post_soon(), writer.errors[-1])
        self.expect_sound_books()

    def test_a_cut_connection_is_told_and_the_next_call_connects_anew(self):
        with Relay(self.server) as relay:
            writer = self.writer(self.make_site(relay.folder))
            self.assertTrue(writer.post())
            relay.cut()
            self.assertFalse(writer.post())
            self.assertIn(LOST, str(writer.errors[-1]))
            self.assertEqual(self.totals(), [1, 1])
            self.assertTrue(writer.post(), writer.errors[-1])
            self.assertEqual(relay.connections, 2 + 1)  # The installer's, and two of the gateway.
        self.assertEqual(self.totals(), [2, 2])

    def test_a_posting_sends_nothing_twice_and_nothing_that_is_not_needed(self):
        """Of each of the two budgets: the budget, its line, the currency's decimals, the update, the parents,
        and a savepoint behind the update; the first one comes with the beginning of the transaction."""
        needed = 1 + 2 * (5 + 1) + 1
        with Relay(self.server) as relay:
            writer = self.writer(self.make_site(relay.folder))
            for _ in range(2):  # The first finds Null on the lines, and so sends another text.
                self.assertTrue(writer.post())
            connections, before = relay.connections, relay.round_trips
            for count in range(1, 4):
                self.assertTrue(writer.post())
                self.assertEqual(relay.round_trips - before, count * needed)
            self.assertEqual(relay.connections, connections)

    def test_a_transaction_of_a_client_that_dies_is_undone(self):
        dying = self.writer()
        dying.gateway.result("begin")
        dying.gateway.invoke(dying.budgets, "PostToBudget", POSTING)
        dying.gateway.process.send_signal(signal.SIGKILL)
        dying.gateway.process.wait()
        other = self.writer()
        self.assertTrue(other.post_soon())
        self.assertEqual(self.totals(), [1, 1])


if __name__ == "__main__":
    unittest.main()
