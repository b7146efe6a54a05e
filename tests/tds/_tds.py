"""What the tests of the server share: a running server with a database of its own, and connections to it."""

import os
import pathlib
import tempfile
import unittest

import _odbc
import _server

DRIVER = "libtdsodbc.so"
PLACES = ("/usr/lib/x86_64-linux-gnu/odbc", "/usr/lib/aarch64-linux-gnu/odbc", "/usr/lib/odbc")
SOURCE_DIR = pathlib.Path(os.environ.get("TALVEX_SOURCE_DIR") or pathlib.Path(__file__).resolve().parents[2])


def driver():
    """The path of FreeTDS's driver; without it nothing here can be tested."""
    for place in PLACES:
        if os.path.exists(os.path.join(place, DRIVER)):
            return os.path.join(place, DRIVER)
    raise FileNotFoundError(f"{DRIVER} of the package tdsodbc")


def connection_string(port, **changes):
    parts = {"Driver": driver(), "Server": "127.0.0.1", "Port": port, "Database": "talvex",
             "UID": _server.USER, "PWD": _server.PASSWORD, "TDS_Version": "7.4", "ClientCharset": "UTF-8",
             **changes}
    return ";".join(f"{name}={value}" for name, value in parts.items())


class ServerTest(unittest.TestCase):
    """Each test has a server, `self.server`, and a connection to it, `self.db`."""

    lock_wait = 5.0

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.file = os.path.join(folder.name, "server.db")
        self.server = self.serve().start()
        self.addCleanup(self.server.stop)
        self.db = self.connect()

    def serve(self):
        return _server.Server(self.file, lock_wait=self.lock_wait)

    def connect(self, **changes):
        """One more connection, closed at the end of the test."""
        connection = _odbc.Connection(connection_string(self.server.port, **changes))
        self.addCleanup(connection.close)
        return connection

    def refused(self, number, text, *values, db=None):
        """Runs a statement that must fail with this native number; returns the error."""
        with self.assertRaises(_odbc.OdbcError) as caught:
            (db or self.db).results(text, *values)
        self.assertEqual(caught.exception.native, number, str(caught.exception))
        return caught.exception

    def table(self, columns, name="T"):
        self.db.results(f"CREATE TABLE {name} ({columns})")
