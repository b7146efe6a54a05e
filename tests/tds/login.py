"""Who may log in, and what a client is told when it may not."""

import socket
import subprocess
import sys
import tempfile
import unittest

import _odbc
import _raw
import _server
import _tds


class Login(_tds.ServerTest):
    def refused_login(self, **changes):
        with self.assertRaises(_odbc.OdbcError) as caught:
            self.connect(**changes)
        return caught.exception

    def test_the_right_password_opens_a_session(self):
        self.assertEqual(self.db.rows("SELECT DB_NAME(), @@SPID"), [("talvex", 51)])

    def test_a_wrong_password_is_refused(self):
        error = self.refused_login(PWD="wrong")
        self.assertIn((18456, "Login failed for user 'talvex'."),
                      [(record.native, record.text.rpartition("]")[2]) for record in error.records])

    def test_a_wrong_user_is_refused(self):
        self.assertIn(18456, [record.native for record in self.refused_login(UID="other").records])

    def test_an_unknown_database_is_refused(self):
        self.assertIn(4060, [record.native for record in self.refused_login(Database="other").records])

    def test_encryption_cannot_be_had(self):
        self.refused_login(Encryption="require")

    def test_passwords_take_any_letters(self):
        server = _server.Server(self.file, user="Jörg", password="p@ss;{wörd €😀").start()
        self.addCleanup(server.stop)
        text = _tds.connection_string(server.port, UID="Jörg", PWD="{p@ss;{wörd €😀}")
        with _odbc.Connection(text) as connection:
            self.assertEqual(connection.rows("SELECT 1"), [(1,)])

    def test_a_refused_client_leaves_the_server_able(self):
        self.refused_login(PWD="wrong")
        self.assertEqual(self.connect().rows("SELECT 1"), [(1,)])


class Garbage(_tds.ServerTest):
    """What no client would send costs its sender the connection, and nobody else anything."""

    PACKETS = [b"", b"\x12", b"\x00" * 8, b"GET / HTTP/1.1\r\n\r\n", b"\x12\x01\x00\x09\x00\x00\x00\x00\xff",
               b"\x10\x01\x00\x0c\x00\x00\x00\x00\xff\xff\xff\xff", b"\x01\x01\x00\x04\x00\x00\x00\x00",
               b"\x10\x01\x01\x00" + b"\x00" * 252]

    def test_before_a_login(self):
        for packet in self.PACKETS:
            address = ("127.0.0.1", self.server.port)
            with self.subTest(packet), socket.create_connection(address, _raw.PATIENCE) as client:
                client.sendall(packet)
                client.shutdown(socket.SHUT_WR)
                while client.recv(4096):
                    pass
        self.assertEqual(self.connect().rows("SELECT 1"), [(1,)])


class Databases(_tds.ServerTest):
    def test_are_apart(self):
        self.table("A INT")
        self.db.results("CREATE DATABASE other")
        self.refused(1801, "CREATE DATABASE Other")
        other = self.connect(Database="other")
        self.assertEqual(other.rows("SELECT DB_NAME()"), [("other",)])
        self.refused(208, "SELECT * FROM T", db=other)
        other.results("CREATE TABLE T (B INT NOT NULL)")
        self.assertIn("table 'other.dbo.T'", str(self.refused(515, "INSERT INTO T VALUES (NULL)", db=other)))
        self.assertEqual([row[0] for row in other.columns("T").rows], ["other"])

    def test_are_copied_and_dropped(self):
        self.table("A INT")
        self.db.results("INSERT INTO T VALUES (1)")
        self.db.results("EXEC test_copy_database @source = 'talvex', @target = 'copy'")
        copy = self.connect(Database="copy")
        copy.results("UPDATE T SET A = 2")
        self.assertEqual((self.db.rows("SELECT A FROM T"), copy.rows("SELECT A FROM T")), ([(1,)], [(2,)]))
        copy.close()
        self.db.results("DROP DATABASE copy")
        self.db.results("DROP DATABASE IF EXISTS copy")
        self.refused(3701, "DROP DATABASE copy")
        with self.assertRaises(_odbc.OdbcError):
            self.connect(Database="copy")


class Program(unittest.TestCase):
    """The server as a process of its own."""

    def start(self, folder, *options):
        command = [sys.executable, "-B", _server.__file__, f"{folder}/server.db", *options]
        process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.addCleanup(process.stdout.close)
        word, port = process.stdout.readline().split()
        self.assertEqual(word, "port")
        return process, int(port)

    def test_keeps_its_tables_over_a_restart(self):
        with tempfile.TemporaryDirectory() as folder:
            for statement in ("CREATE TABLE T (A INT)", "INSERT INTO T VALUES (7)"):
                process, port = self.start(folder)
                with _odbc.Connection(_tds.connection_string(port)) as connection:
                    connection.results(statement)
                process.terminate()
                process.communicate(timeout=_raw.PATIENCE)
            process, port = self.start(folder, "--while-stdin-open")
            with _odbc.Connection(_tds.connection_string(port)) as connection:
                self.assertEqual(connection.rows("SELECT A FROM T"), [(7,)])
            process.stdin.close()
            self.assertEqual(process.wait(timeout=_raw.PATIENCE), 0)


if __name__ == "__main__":
    unittest.main()
