"""An installation on the test server, and a gateway that works on it."""

import os
import pathlib
import sys
import tempfile

import _tds

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "cli"))
from _gateway import Gateway  # noqa: E402
from _talvex import DONE, run  # noqa: E402

# Budgets in a chain, the leaf first, each with a line for the year.
CHAIN = ("LEAF", "MIDDLE", "TOP")


class SiteTest(_tds.ServerTest):
    """Each test has an installation, `self.site`, whose database is that of `self.server`."""

    def setUp(self):
        super().setUp()
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.site = os.path.join(folder.name, "site")
        self.string = _tds.connection_string(self.server.port)
        made = run("init", self.site, "--database", self.string)
        self.assertEqual(made.returncode, DONE, made.stdout + made.stderr)

    def gateway(self):
        # The server's clock is its own, so it cannot be fixed.
        return self.enterContext(Gateway(self.site, now=None))

    def chain(self, amounts="NULL"):
        """Makes the budgets, with `amounts` in the columns for what was used."""
        self.db.results("INSERT INTO CURRENCY (CURRENCYCODE, DECIMALS) VALUES ('EUR', 2)")
        self.db.results("INSERT INTO CHARGETYPES (CHARGETYPECODE) VALUES ('SOFTWARE')")
        self.db.results("INSERT INTO SUITEUSER (USERID) VALUES ('holder')")
        for code in CHAIN:
            kind = 1 if code == "LEAF" else 2
            self.db.results("INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE, BUDGETWARNING, "
                            "USERID, CHARGETYPECODE) VALUES "
                            f"('{code}', {kind}, 'EUR', 10, 'holder', 'SOFTWARE')")
            self.db.results("INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT, "
                            "AVAILABLEAMNT, AVAILABLEPERC, USEDNOTAPPROVEDAMNT, USEDAPPROVEDAMNT, "
                            "USEDSENDAMNT, USEDRECEIVEDAMNT, USEDCLOSEDAMNT) VALUES "
                            f"('{code}', '2026-01-01T00:00:00', '2026-12-31T00:00:00', 1000, 1000, 100"
                            f"{(', ' + amounts) * 5})")
        for parent, child in zip(CHAIN[1:], CHAIN):
            self.db.results(f"INSERT INTO BUDGETRELATIONS (PARENTBUDGET, CHILDBUDGET) VALUES ('{parent}', "
                            f"'{child}')")

    def used(self):
        return [row[0] for row in self.db.rows("SELECT USEDAPPROVEDAMNT FROM BUDGETLINES ORDER BY ID")]
