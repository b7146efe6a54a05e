"""What the tests of the command line share: running the program, and sample installations."""

import json
import os
import pathlib
import shutil
import sqlite3
import subprocess
import tempfile
import unittest

PROGRAM = os.environ["TALVEX_CLI"]
SOURCE_DIR = pathlib.Path(os.environ.get("TALVEX_SOURCE_DIR") or pathlib.Path(__file__).resolve().parents[2])
NOW = "2026-03-16T10:00:00"

DONE, NO, USAGE, FAILED = range(4)


def environment(**changes):
    """The environment of a run: a UTF-8 locale, no installation, no colours unless asked for."""
    names = ("TALVEX_CONFIG", "NO_COLOR", "LC_ALL", "LC_CTYPE", "LANG")
    kept = {name: value for name, value in os.environ.items() if name not in names}
    return {**kept, "LC_ALL": "C.UTF-8", **changes}


def run(*arguments, **changes):
    """Runs the program; the result has stdout and stderr as texts. Changes are of its environment."""
    return subprocess.run([PROGRAM, *arguments], env=environment(**changes), encoding="utf-8", check=False,
                          stdin=subprocess.DEVNULL, capture_output=True, timeout=120)


class SampleTest(unittest.TestCase):
    """Tests that each start from a fresh sample installation, with the clock at NOW."""

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.pristine = os.path.join(cls.folder.name, "pristine")
        made = run("init", cls.pristine, "--sample")
        assert made.returncode == DONE, made.stderr

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def setUp(self):
        self.site = os.path.join(self.folder.name, "site")
        shutil.copytree(self.pristine, self.site)

    def tearDown(self):
        shutil.rmtree(self.site)

    def talvex(self, *arguments, status=DONE, **changes):
        """Runs a command on the installation and checks its exit status and where its words went."""
        ran = run("--config", self.site, "--now", NOW, *arguments, **changes)
        self.assertEqual(ran.returncode, status, ran.stdout + ran.stderr)
        if status in (USAGE, FAILED):
            self.assertRegex(ran.stderr, r"\Atalvex: [^\n]+\n")
        elif status == DONE:
            self.assertEqual(ran.stderr, "")
        return ran

    def ask(self, *arguments, status=DONE):
        """The answer in JSON."""
        return json.loads(self.talvex("--json", *arguments, status=status).stdout)

    def sql(self, statement, *values):
        """Runs a statement on the database behind the program's back; returns the rows."""
        database = sqlite3.connect(os.path.join(self.site, "talvex.db"))
        try:
            with database:
                return database.execute(statement, values).fetchall()
        finally:
            database.close()

    def mails(self):
        return sorted(name for name in os.listdir(os.path.join(self.site, "outbox")) if name.endswith(".eml"))
