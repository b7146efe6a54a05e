"""Installations on a real PostgreSQL server, made and used by the command line."""

import os
import pathlib
import stat
import sys
import tempfile
import unittest

from _postgresql import PostgreSql

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "cli"))
from _gateway import Gateway  # noqa: E402
from _talvex import DONE, FAILED, NOW, run  # noqa: E402


class Init(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = PostgreSql(fsync="off")
        cls.server.start()

    @classmethod
    def tearDownClass(cls):
        cls.server.__exit__()

    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.database = self.id().rsplit(".", maxsplit=1)[-1].lower()
        self.server.query(f"CREATE DATABASE {self.database}")

    def init(self, name, *more, status=DONE, connection=None):
        site = os.path.join(self.folder.name, name)
        connection = connection or self.server.connection_string(self.database)
        ran = run("init", site, "--database", connection, *more)
        self.assertEqual(ran.returncode, status, ran.stdout + ran.stderr)
        return site, ran

    def count(self, table):
        return int(self.server.query(f"SELECT count(*) FROM {table}", self.database)[0][0])

    def test_the_sample_reads_as_in_an_embedded_installation(self):
        site, _ = self.init("server", "--sample")
        embedded = os.path.join(self.folder.name, "embedded")
        self.assertEqual(run("init", embedded, "--sample").returncode, DONE)
        for command in (["tree"], ["budgets"], ["show", "IT-CLOUD"], ["loops"], ["verify"],
                        ["--json", "budgets"], ["--json", "show", "IT-HW-AMS"],
                        ["post", "IT-HW-AMS", "125.50", "USD", "--type", "Approved", "--date", "2026-03-15"],
                        ["--json", "show", "IT"]):
            ran = [run("--config", where, "--now", NOW, *command) for where in (site, embedded)]
            self.assertEqual(ran[0].returncode, ran[1].returncode, ran[0].stderr)
            self.assertEqual(ran[0].stdout, ran[1].stdout, command)
            self.assertNotEqual(ran[0].stdout, "")

    def test_a_second_installation_joins_the_database_as_it_is(self):
        first, _ = self.init("first", "--sample")
        texts = self.count("I18NTEXT")
        self.assertGreater(texts, 100)
        second, _ = self.init("second")
        self.assertEqual(self.count("I18NTEXT"), texts)
        trees = [run("--config", site, "tree").stdout for site in (first, second)]
        self.assertEqual(trees[0], trees[1])

    def test_a_sample_goes_into_a_database_without_budgets_only(self):
        self.init("first", "--sample")
        budgets = self.count("BUDGET")
        site, refused = self.init("second", "--sample", status=FAILED)
        self.assertIn("has budgets already", refused.stderr)
        self.assertFalse(os.path.exists(site))
        self.assertEqual(self.count("BUDGET"), budgets)

    def test_a_server_that_is_not_there_leaves_nothing_behind(self):
        connection = "Driver=PostgreSQL Unicode;Servername=/nowhere;Port=5432;Database=x;UID=u;PWD=secret"
        site, refused = self.init("site", status=FAILED, connection=connection)
        self.assertIn("Cannot open the database", refused.stderr)
        self.assertNotIn("secret", refused.stderr)
        self.assertFalse(os.path.exists(site))

    def test_the_connection_string_is_kept_from_others_and_read_back_whole(self):
        connection = self.server.connection_string(self.database) + ";PWD={a<b&c>d}"
        site, _ = self.init("site", connection=connection)
        path = os.path.join(site, "siteconfiguration.xml")
        self.assertEqual(stat.S_IMODE(os.stat(path).st_mode), 0o600)
        self.assertFalse(os.path.exists(os.path.join(site, "talvex.db")))
        self.assertEqual(run("--config", site, "budgets").returncode, DONE)

    def test_the_connection_string_may_come_from_a_file(self):
        path = os.path.join(self.folder.name, "database")
        pathlib.Path(path).write_text(self.server.connection_string(self.database) + "\n", encoding="utf-8")
        site = os.path.join(self.folder.name, "site")
        ran = run("init", site, "--sample", "--database-file", path)
        self.assertEqual((ran.returncode, ran.stderr), (DONE, ""))
        self.assertEqual(run("--config", site, "budgets").returncode, DONE)

    def test_the_clock_of_the_server_follows_now(self):
        site, _ = self.init("site")
        with Gateway(site) as gateway:
            rows = gateway.create("Platform.Recordset")
            gateway.invoke(rows, "Open", {"Source": "SELECT GETDATE() AS N",
                                          "ActiveConnection": self.server.connection_string(self.database)})
            fields = gateway.get(rows, "Fields")["$object"]
            field = gateway.invoke(fields, "Item", ["N"])["result"]["$object"]
            self.assertEqual(gateway.get(field, "Value"), {"$date": NOW})


if __name__ == "__main__":
    unittest.main()
