"""The program on SQL Server's wire protocol: the same commands, on the same sample company, answer alike
there and on the embedded database."""

import os
import pathlib
import re
import subprocess
import tempfile
import unittest

import _tds

PROGRAM = os.environ["TALVEX_CLI"]
DAY = ("--date", "2026-03-16")

# What is asked, and the exit status; what changes something comes before what shows it.
COMMANDS = (
    (0, "verify"), (0, "budgets"), (0, "tree"),
    (0, "post", "IT-HW-AMS", "250", "EUR", "--type", "Approved", *DAY),
    (0, "post", "IT-CLOUD", "2500", "GBP", "--type", "send", *DAY),
    (3, "post", "IT-HW-AMS", "1", "CHF", "--type", "Approved", *DAY),
    (1, "check", "IT-HW-AMS", "40000", "EUR", "--simulate", *DAY),
    (0, "select", "--all", "--office", "Amsterdam", "--charge-type", "SOFTWARE", "RequisitionDepartment=IT",
     "RequisitionProject=ERP"),
    (0, "account", "--explain", "RequisitionChargeType=HARDWARE", "RequisitionAmount=1200",
     "RequisitionDepartment=IT", "RequisitionProject=ERP"),
    (0, "charge", "add", "4711", "1", "Lyon", "MKT-JAPAN", "62.5"),
    (1, "charge", "add", "4711", "1", "Lyon", "MKT-JAPAN", "62.5"),
    (0, "charge", "split", "4711", "1", "--share", "Lyon", "MKT-EVENTS", "60", "--share", "Lyon", "IT", "40"),
    (3, "charge", "delete-type", "SOFTWARE"),
    (0, "call", "Talvex.BudgetT", "Insert", "iBudgetCode=NEW 予算 O'Neil", 'iFields=["CURRENCYCODE", "USERID"]',
     'iValues=["EUR", ""]'),
    (0, "call", "Talvex.BudgetT", "InsertLine", "iBudgetCode=NEW 予算 O'Neil", "iID=0",
     'iFields=["STARTDATE", "BUDGETAMNT"]', 'iValues=[{"$date": "2026-01-01"}, 12.5]'),
    (0, "show", "NEW 予算 O'Neil"),
    (3, "call", "Talvex.BudgetManager", "DeleteLedgerAccount", "i_sLedgerAccount=4130"),
    (0, "call", "Talvex.BudgetT", "Delete", "iBudgetCode=NEW 予算 O'Neil"),
    (0, "loops"), (0, "budgets"), (0, "verify"),
)


def number_in(errors):
    """The number of the error that a run tells; None when it tells none."""
    found = re.search(r"\(error ([^)]+)\)$", errors, re.MULTILINE)
    return found and found.group(1)


class Program(_tds.ServerTest):
    def talvex(self, *arguments):
        environment = {**os.environ, "LC_ALL": "C.UTF-8"}
        environment.pop("TALVEX_CONFIG", None)
        return subprocess.run([PROGRAM, *arguments], encoding="utf-8", check=False, capture_output=True,
                              stdin=subprocess.DEVNULL, env=environment, timeout=120)

    def test_every_command_answers_as_on_the_embedded_database(self):
        with tempfile.TemporaryDirectory() as folder:
            sites = [str(pathlib.Path(folder, name)) for name in ("embedded", "server")]
            for site, options in zip(sites, ((), ("--database", _tds.connection_string(self.server.port)))):
                made = self.talvex("init", site, "--sample", *options)
                self.assertEqual(made.returncode, 0, made.stdout + made.stderr)
            for status, *arguments in COMMANDS:
                with self.subTest(arguments=arguments):
                    embedded, server = (self.talvex("--config", site, *arguments) for site in sites)
                    self.assertEqual(embedded.returncode, status, embedded.stdout + embedded.stderr)
                    self.assertEqual(server.returncode, status, server.stdout + server.stderr)
                    self.assertEqual(server.stdout, embedded.stdout)
                    # The databases word what they refuse in their own way; callers go by the number.
                    self.assertEqual(number_in(server.stderr), number_in(embedded.stderr))


if __name__ == "__main__":
    unittest.main()
