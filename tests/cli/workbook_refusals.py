"""What is no workbook, or would be too much of one, ends as an error text: the process goes on, and nothing
is left behind, neither a process nor a file.

TALVEX_DAMAGED_FILES says how many damaged files are tried (2,000).
"""

import json
import os
import random
import socket
import struct
import subprocess
import tempfile
import time
import unittest

import xlwt
from _gateway import Gateway
from _talvex import SampleTest
from _workbooks import SHEET, protected, styled, told
from xlwt.CompoundDoc import XlsDoc

DAMAGED_FILES = int(os.environ.get("TALVEX_DAMAGED_FILES", "2000"))
NO_WORKBOOK, MISSING, NO_ACCESS, TOO_MUCH = 321, 53, 75, 7


def rich(path):
    """A workbook with something of everything that the format has a record for."""
    book = xlwt.Workbook()
    for name in ("Lines", "More"):
        sheet = book.add_sheet(name)
        sheet.write_merge(0, 0, 0, 5, "Title of " + name, styled("font: bold on, height 400"))
        for row in range(1, 60):
            sheet.write(row, 0, f"text {row % 7}")
            sheet.write(row, 1, 46000 + row, styled(number_format="yyyy-mm-dd"))
            sheet.write(row, 2, row * 1.25, styled("borders: bottom thin", "#,##0.00"))
            sheet.write(row, 3, row % 2 == 0)
            sheet.write(row, 4, xlwt.Formula(f"SUM(C2:C{row + 1})*2"))
            sheet.write(row, 5, xlwt.Formula(f'IF(D{row + 1};"yes";"no")'))
    book.save(path)


def endless(path):
    """A workbook whose formulas take minutes and next to no memory: each sums up all those above it."""
    book = xlwt.Workbook()
    sheet = book.add_sheet("Slow")
    sheet.write(0, 0, 1)
    for row in range(1, 60000):
        sheet.write(row, 0, xlwt.Formula(f"SUM(A$1:A{row})"))
    book.save(path)


def damaged(content, number):
    """The content with damage that depends on the number alone."""
    chance = random.Random(number)
    data = bytearray(content)
    kind = chance.randrange(5)
    if kind == 0:
        del data[chance.randrange(1, len(data)):]
    elif kind == 1:
        start = chance.randrange(len(data))
        data[start:start + chance.randrange(1, 600)] = bytes(chance.randrange(1, 600))
    else:
        for _ in range(chance.choice([1, 5, 50, 500])):
            data[chance.randrange(len(data))] = chance.choice([0, 1, 0x7F, 0x80, 0xFF, chance.randrange(256)])
    return bytes(data)


def children(parent):
    """The numbers of the processes that a process started and that are still there."""
    with open(f"/proc/{parent}/task/{parent}/children", encoding="ascii") as file:
        return file.read().split()


def with_record(path, code, content):
    """A workbook with one record put after its first."""
    book = xlwt.Workbook()
    book.add_sheet("Sheet").write(0, 0, "cell")
    data = book.get_biff_data()
    start = 4 + struct.unpack_from("<H", data, 2)[0]
    XlsDoc().save(path, data[:start] + struct.pack("<HH", code, len(content)) + content + data[start:])


class Refusals(SampleTest):
    def setUp(self):
        super().setUp()
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.path = os.path.join(self.folder.name, "book.xls")
        self.open_gateway()

    def open_gateway(self, **limits):
        self.gateway = Gateway(self.site, **limits).__enter__()
        self.addCleanup(self.gateway.__exit__)
        self.program = self.gateway.create("Platform.Spreadsheet")

    def write(self, content):
        with open(self.path, "wb") as file:
            file.write(content)

    def open(self, path):
        return self.gateway.ask("invoke", object=self.program, method="Open", args=[path])

    def refused(self, number, words, path=None):
        """The file is refused with that number and words; the gateway opens a good one afterwards."""
        error = self.open(path or self.path).get("error", {})
        self.assertEqual(error.get("data", {}).get("number"), number, error)
        self.assertIn(words, error["message"])
        self.assertIn(path or self.path, error["message"])
        good = os.path.join(self.folder.name, "good.xls")
        rich(good)
        self.assertIn("result", self.open(good))
        os.remove(good)
        self.assertEqual(children(self.gateway.process.pid), [])

    def test_a_missing_file(self):
        self.refused(MISSING, "File not found")
        self.refused(MISSING, "File not found", os.path.join(self.folder.name, "no", "book.xls"))

    def test_a_directory(self):
        self.refused(NO_ACCESS, "it is a directory", self.folder.name)

    def test_a_thing_that_is_no_file(self):
        os.mkfifo(self.path)
        self.refused(NO_ACCESS, "it is no ordinary file")
        self.refused(NO_ACCESS, "it is no ordinary file", "/dev/zero")
        other = os.path.join(self.folder.name, "socket.xls")
        with socket.socket(socket.AF_UNIX) as bound:
            bound.bind(other)
            self.refused(NO_ACCESS, "No such device or address", other)

    def test_talvex_sheet_itself_waits_for_no_pipe(self):
        os.mkfifo(self.path)
        self.assertEqual(told(self.path), {"refusal": "access", "text": "it is no ordinary file"})

    def test_an_empty_file(self):
        self.write(b"")
        self.refused(NO_WORKBOOK, "is empty")

    def test_files_of_another_kind(self):
        for content in [b"x", b"Code;Amount\nIT;5\n", b"<html><table/></html>", b"PK\x03\x04" + bytes(500),
                        b"%PDF-1.4", bytes(5000)]:
            with self.subTest(content=content[:10]):
                self.write(content)
                self.refused(NO_WORKBOOK, "is no .xls workbook")
        XlsDoc().save(self.path, b"")  # A container whose workbook is empty.
        self.refused(NO_WORKBOOK, "is ")

    def test_a_protected_workbook(self):
        protected(self.path)
        self.refused(NO_WORKBOOK, "is protected by a password")

    def test_a_workbook_cut_short(self):
        rich(self.path)
        with open(self.path, "rb") as file:
            content = file.read()
        self.write(content[:700])
        self.refused(NO_WORKBOOK, "is damaged")

    def test_a_file_too_large_to_be_read(self):
        with open(self.path, "wb") as file:
            file.truncate(64 * 1024 * 1024 + 1)
        self.refused(TOO_MUCH, "is larger than 64 MB")

    def test_damaged_workbooks(self):
        original = os.path.join(self.folder.name, "original.xls")
        rich(original)
        with open(original, "rb") as file:
            content = file.read()
        opened = 0
        for number in range(DAMAGED_FILES):
            self.write(damaged(content, number))
            answer = self.open(self.path)
            if "result" in answer:
                opened += 1
                self.gateway.result("release", object=answer["result"]["result"]["$object"])
            else:
                error = answer["error"]
                self.assertIn(error["data"]["number"], (NO_WORKBOOK, TOO_MUCH), (number, error))
                self.assertIn(self.path, error["message"])
        self.assertGreater(opened, 0)
        self.assertLess(opened, DAMAGED_FILES)
        self.assertEqual(children(self.gateway.process.pid), [])
        self.assertEqual(sorted(os.listdir(self.folder.name)), ["book.xls", "original.xls"])

    def test_a_workbook_that_claims_more_texts_than_memory_holds(self):
        with_record(self.path, 0xFC, struct.pack("<II", 0x07000000, 0x07000000))
        self.refused(TOO_MUCH, "needs more memory than is allowed")

    def test_work_without_end_is_ended(self):
        endless(self.path)
        self.gateway.__exit__()
        self.open_gateway(processor=4)
        error = self.open(self.path)["error"]
        self.assertEqual(error["data"]["number"], TOO_MUCH, error)
        self.assertIn("needs more processor time than is allowed", error["message"])
        self.assertEqual(children(self.gateway.process.pid), [])

    def test_the_program_is_caged_before_it_is_told_anything(self):
        with subprocess.Popen([SHEET, "save"], stdin=subprocess.PIPE, stdout=subprocess.DEVNULL) as program:
            state = {"Seccomp": "0"}
            end = time.monotonic() + 60
            while state["Seccomp"] == "0" and time.monotonic() < end:
                time.sleep(0.01)
                with open(f"/proc/{program.pid}/status", encoding="ascii") as file:
                    state = dict(line.rstrip("\n").split(":\t", 1) for line in file)
            self.assertEqual((state["NoNewPrivs"], state["Seccomp"]), ("1", "2"))
            program.stdin.close()

    def test_nothing_outlives_the_process_that_wanted_it(self):
        endless(self.path)
        message = {"jsonrpc": "2.0", "id": 9, "method": "invoke",
                   "params": {"object": self.program, "method": "Open", "args": [self.path]}}
        self.gateway.write(json.dumps(message).encode() + b"\n")
        started = []
        while not started:
            started = children(self.gateway.process.pid)
        self.gateway.process.kill()
        self.gateway.process.wait()
        end = time.monotonic() + 20
        while time.monotonic() < end and any(os.path.exists(f"/proc/{child}/exe") for child in started):
            time.sleep(0.05)
        self.assertFalse(any(os.path.exists(f"/proc/{child}/exe") for child in started))


if __name__ == "__main__":
    unittest.main()
