"""Processes that post to one line at the same time: each posting is in the total or told as a conflict."""

import json
import os
import sqlite3
import subprocess
import tempfile
import threading
import unittest

TALVEX = os.environ["TALVEX_CLI"]
PROCESSES = 3
POSTINGS = 60
CONFLICTS = {-2147217864, -2147467259}  # A changed row; a busy database.


class Gateway:
    """One `talvex rpc` process."""

    def __init__(self, site):
        self.process = subprocess.Popen(
            [TALVEX, "rpc", "--config", site], stdin=subprocess.PIPE, stdout=subprocess.PIPE
        )
        self.next_id = 0

    def call(self, method, /, **params):
        self.next_id += 1
        message = {"jsonrpc": "2.0", "id": self.next_id, "method": method, "params": params}
        self.process.stdin.write(json.dumps(message).encode() + b"\n")
        self.process.stdin.flush()
        answer = json.loads(self.process.stdout.readline())
        assert answer["id"] == self.next_id, answer
        return answer

    def close(self):
        self.process.communicate(timeout=60)
        return self.process.returncode


def post_many(site, in_transactions, acknowledged, failures):
    """Posts 1 EUR again and again; counts what the component said it has done."""
    gateway = Gateway(site)
    budgets = gateway.call("create", **{"class": "Talvex.BudgetT"})["result"]["object"]
    arguments = ["LEAF", {"$date": "2026-03-15"}, 1, "EUR", "Approved"]
    for _ in range(POSTINGS):
        if in_transactions:
            gateway.call("begin")
        answer = gateway.call("invoke", object=budgets, method="PostToBudget", args=arguments)
        done = "result" in answer
        if in_transactions:
            outcome = gateway.call("end")
            done = done and outcome.get("result", {}).get("outcome") == "committed"
        if done:
            acknowledged.append(1)
        else:
            failures.append(answer.get("error", {}).get("data", {}).get("number"))
    assert gateway.close() == 0


class ConcurrentPostings(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.site = os.path.join(self.folder.name, "site")
        subprocess.run([TALVEX, "init", self.site], check=True, stdout=subprocess.DEVNULL)
        self.sql(
            """
            INSERT INTO CURRENCY (CURRENCYCODE, DECIMALS) VALUES ('EUR', 2);
            INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE) VALUES
              ('LEAF', 1, 'EUR'), ('TOP', 2, 'EUR');
            INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT, AVAILABLEAMNT, AVAILABLEPERC)
              VALUES
              ('LEAF', '2026-01-01T00:00:00', '2026-12-31T00:00:00', 1000000, 1000000, 1),
              ('TOP', '2026-01-01T00:00:00', '2026-12-31T00:00:00', 1000000, 1000000, 1);
            INSERT INTO BUDGETRELATIONS (PARENTBUDGET, CHILDBUDGET) VALUES ('TOP', 'LEAF');
            """
        )

    def tearDown(self):
        self.folder.cleanup()

    def sql(self, script):
        database = sqlite3.connect(os.path.join(self.site, "talvex.db"))
        database.executescript(script)
        database.close()

    def totals(self):
        database = sqlite3.connect(os.path.join(self.site, "talvex.db"))
        rows = dict(database.execute("SELECT BUDGETCODE, COALESCE(USEDAPPROVEDAMNT, 0) FROM BUDGETLINES"))
        available = dict(database.execute("SELECT BUDGETCODE, AVAILABLEAMNT FROM BUDGETLINES"))
        database.close()
        return rows, available

    def run_processes(self, in_transactions):
        acknowledged, failures = [], []
        threads = [
            threading.Thread(target=post_many, args=(self.site, in_transactions, acknowledged, failures))
            for _ in range(PROCESSES)
        ]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(len(acknowledged) + len(failures), PROCESSES * POSTINGS)
        self.assertLessEqual(set(failures), CONFLICTS)
        print(f"acknowledged: {len(acknowledged)}, conflicts: {len(failures)}")
        return acknowledged, failures

    def test_in_transactions_every_acknowledged_posting_is_in_both_totals(self):
        acknowledged, _ = self.run_processes(True)
        totals, available = self.totals()
        self.assertEqual(totals, {"LEAF": len(acknowledged), "TOP": len(acknowledged)})
        self.assertEqual(available, {code: 1000000 - len(acknowledged) for code in totals})

    def test_without_transactions_no_acknowledged_posting_is_lost(self):
        acknowledged, failures = self.run_processes(False)
        totals, available = self.totals()
        # A posting that failed at the parent has been written to the child already, and stays written.
        self.assertEqual(totals["TOP"], len(acknowledged))
        self.assertGreaterEqual(totals["LEAF"], len(acknowledged))
        self.assertLessEqual(totals["LEAF"], len(acknowledged) + len(failures))
        for code, total in totals.items():
            self.assertEqual(available[code], 1000000 - total)


if __name__ == "__main__":
    unittest.main()
