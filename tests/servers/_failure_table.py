"""What every kind of failure leaves of a transaction, on each store: rows, and how each is tried.

A transaction adds a row, meets the failure, adds another row and ends. Either the failed statement alone is
undone: then both rows are kept. Or the transaction is over: then everything but its end is refused with 3930,
and no row is kept. Never one row without the other.
"""

import dataclasses

GOES_ON, OVER = "goes on", "is over"
FIRST, SECOND = (f"INSERT INTO CHARGETYPES (CHARGETYPECODE) VALUES ('{name}')"
                 for name in ("FIRST", "SECOND"))
KEPT = "SELECT CHARGETYPECODE FROM CHARGETYPES ORDER BY CHARGETYPECODE"
SEED = ("INSERT INTO BUDGET (BUDGETCODE) VALUES ('B')",
        "INSERT INTO LEDGERACCOUNT (LEDGERACCOUNT) VALUES ('4000')",
        "INSERT INTO ACCOUNTINGRULE (LEDGERACCOUNT) VALUES ('4000')",
        "INSERT INTO BUDGETLINES (BUDGETCODE) VALUES ('B')")


# Values that do not fit, which all arrive as one number.
VALUES, REFUSED_VALUE = (241, 242, 245, 8114, 8115, 8152), 8152


@dataclasses.dataclass
class Failure:
    """A statement that fails. What is left of its transaction on the embedded store, PostgreSQL and SQL
    Server; None where it does not fail."""

    number: int  # As SQL Server's wire has it.
    what: str
    statement: str
    embedded: str | None
    postgresql: str | None
    sqlserver: str

    def arrives_as(self):
        return REFUSED_VALUE if self.number in VALUES else self.number


STATEMENTS = (
    Failure(2627, "a key that is there", "INSERT INTO BUDGET (BUDGETCODE) VALUES ('b')",
            GOES_ON, GOES_ON, GOES_ON),
    Failure(515, "no value for a column that must have one",
            "INSERT INTO BUDGETRELATIONS (PARENTBUDGET) VALUES ('B')", GOES_ON, GOES_ON, GOES_ON),
    Failure(547, "a row that others refer to", "DELETE LEDGERACCOUNT WHERE LEDGERACCOUNT = '4000'",
            GOES_ON, GOES_ON, GOES_ON),
    Failure(8152, "a text too long", f"UPDATE BUDGET SET USERID = '{'x' * 51}'", GOES_ON, GOES_ON, GOES_ON),
    Failure(8115, "a number too large", "UPDATE BUDGET SET BUDGETTYPE = 2147483648",
            GOES_ON, GOES_ON, GOES_ON),
    Failure(102, "no sentence of the language", "SELECT * FORM BUDGET", GOES_ON, GOES_ON, GOES_ON),
    Failure(207, "an unknown column", "SELECT NOSUCHCOLUMN FROM BUDGET", GOES_ON, GOES_ON, GOES_ON),
    Failure(208, "an unknown table", "SELECT * FROM NOSUCHTABLE", GOES_ON, GOES_ON, GOES_ON),
    Failure(241, "a text that is no date", "UPDATE BUDGETLINES SET STARTDATE = '2026-02-30'",
            GOES_ON, GOES_ON, OVER),
    Failure(242, "a date out of range", "UPDATE BUDGETLINES SET STARTDATE = '1752-12-31T00:00:00'",
            None, None, OVER),
    Failure(245, "a text that is no number, for whole ones", "UPDATE BUDGET SET BUDGETTYPE = 'x'",
            GOES_ON, GOES_ON, OVER),
    Failure(8114, "a text that is no number, for others", "UPDATE BUDGETLINES SET BUDGETAMNT = 'x'",
            GOES_ON, GOES_ON, OVER),
)

# Further numbers, which the test server is told to answer with: (number, what is left).
MADE = ((2601, GOES_ON), (2628, GOES_ON), (206, GOES_ON), (220, GOES_ON), (701, GOES_ON), (8134, GOES_ON),
        (295, OVER), (3960, OVER), (1205, OVER), (9002, OVER), (1105, OVER),
        # A wait that was too long undoes nothing by itself, but is a conflict, which ends the transaction.
        (1222, OVER))

# What a trigger can do: (what, its body in SQL Server's language, the number that arrives, what is left).
TRIGGERS = (
    ("ROLLBACK", "ROLLBACK TRANSACTION", 3609, OVER),
    ("ROLLBACK, and a message", "RAISERROR ('No.', 16, 1); ROLLBACK TRANSACTION", None, OVER),
    ("THROW", "THROW 50001, 'No.', 1", 50001, OVER),
    ("a failure of its own", "INSERT INTO CHARGETYPES (CHARGETYPECODE) VALUES (NULL)", 515, OVER),
    # Whether the change that set it off stands, nobody is told.
    ("RAISERROR alone", "RAISERROR ('No.', 16, 1)", 50000, OVER),
)


class Trial:
    """One client of a gateway, which tries what is left behind failures. `rows` is a function that gives the
    charge types kept."""

    def __init__(self, test, gateway, connection_string, rows):
        self.test, self.gateway, self.rows = test, gateway, rows
        self.connection_string = connection_string

    def execute(self, connection, statement):
        """The native number of the failure; None when there is none."""
        answer = self.gateway.ask("invoke", object=connection, method="Execute", args=[statement])
        if "error" not in answer:
            return None
        errors = self.gateway.get(connection, "Errors")["$collection"]
        return self.gateway.get(errors[0][1]["$object"], "NativeError")

    def expect(self, left, statement, number=None, before=()):
        gateway = self.gateway
        gateway.result("begin")
        connection = gateway.create("Platform.Connection")
        gateway.invoke(connection, "Open", [self.connection_string])
        self.test.assertIsNone(self.execute(connection, FIRST))
        for one in before:
            self.test.assertIsNone(self.execute(connection, one))
        failed = self.execute(connection, statement)
        self.test.assertIsNotNone(failed, "it does not fail")
        if number is not None:
            self.test.assertEqual(failed, number)
        refused = {self.execute(connection, one) for one in (SECOND, "SELECT * FROM CHARGETYPES",
                                                            "set TRANSACTION ISOLATION LEVEL READ COMMITTED")}
        ended = gateway.ask("end").get("result", {}).get("outcome")
        gateway.result("release", object=connection)
        over = left == OVER
        self.test.assertEqual(refused, {3930 if over else None})
        self.test.assertEqual(ended == "committed", not over)
        self.test.assertEqual(self.rows(), [] if over else ["FIRST", "SECOND"])
