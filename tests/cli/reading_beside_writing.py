"""What only reads needs no lock, and whoever writes meanwhile does not wait for it."""

import os
import shutil
import sqlite3
import stat
import subprocess
import unittest

from _reading import EXPORT, LISTINGS
from _talvex import DONE, NOW, PROGRAM, SampleTest, environment

# Stands where the program looks for talvex-sheet, and is that, but for the first time: then it says that it
# was started and waits.
GATE = """#!/bin/sh
if [ ! -e {folder}/started ]; then
  : > {folder}/started
  read go < {folder}/gate
fi
exec {sheet} "$@"
"""


class ReadingBesideWriting(SampleTest):
    def setUp(self):
        super().setUp()
        path = os.path.join(self.site, "siteconfiguration.xml")
        with open(path, encoding="utf-8") as file:
            content = file.read()
        self.assertIn("talvex.db<", content)
        with open(path, "w", encoding="utf-8") as file:
            # Whoever meets a lock is told so at once.
            file.write(content.replace("talvex.db<", "talvex.db;BusyTimeout=0<"))

    def gated_program(self):
        """A copy of the program that waits for the gate when it wants talvex-sheet for the first time."""
        folder = os.path.join(self.site, "gated")
        os.mkdir(folder)
        copy = os.path.join(folder, "talvex")
        shutil.copy2(PROGRAM, copy)
        os.mkfifo(os.path.join(folder, "gate"))
        sheet = os.path.join(folder, "talvex-sheet")
        with open(sheet, "w", encoding="utf-8") as file:
            real = os.path.join(os.path.dirname(os.path.realpath(PROGRAM)), "talvex-sheet")
            file.write(GATE.format(folder=folder, sheet=real))
        os.chmod(sheet, stat.S_IRWXU)
        return folder, copy

    def test_a_posting_beside_an_export_does_not_wait(self):
        folder, program = self.gated_program()
        with subprocess.Popen([program, "--config", self.site, "--now", NOW, *EXPORT[1:]],
                              env=environment(), encoding="utf-8", stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE) as export:
            try:
                while not os.path.exists(os.path.join(folder, "started")):
                    self.assertIsNone(export.poll(), "the export ended before it needed talvex-sheet")
                posted = self.ask("post", "IT-HW-AMS", "1200", "EUR", "--type", "Approved")
                self.assertEqual([change["budget"] for change in posted["changes"]],
                                 ["IT-HW-AMS", "IT", "COMPANY"])
                self.assertIsNone(export.poll(), "the export did not wait for the gate")
            finally:
                with open(os.path.join(folder, "gate"), "w", encoding="ascii") as gate:
                    gate.write("go\n")
                told, complaints = export.communicate(timeout=60)
        self.assertEqual((export.returncode, complaints), (DONE, ""))
        self.assertIn("Exported to ", told)
        self.assertEqual(self.sql("SELECT USEDAPPROVEDAMNT FROM BUDGETLINES WHERE ID = 5"), [(7200,)])

    def test_what_only_reads_does_not_wait_for_a_writer(self):
        expected = [self.talvex(*command, status=status).stdout for status, *command in LISTINGS]
        writer = sqlite3.connect(os.path.join(self.site, "talvex.db"), isolation_level=None)
        self.addCleanup(writer.close)
        writer.execute("BEGIN IMMEDIATE")
        writer.execute("UPDATE BUDGETLINES SET AVAILABLEAMNT = 0")
        self.talvex(*EXPORT[1:], status=EXPORT[0])
        for (status, *command), text in zip(LISTINGS, expected):
            with self.subTest(command=command):
                self.assertEqual(self.talvex(*command, status=status).stdout, text)
        writer.execute("ROLLBACK")


if __name__ == "__main__":
    unittest.main()
