"""Workbooks written by an independent program are read exactly."""

import datetime
import os
import struct
import tempfile
import unittest

import xlwt
from _workbooks import DAY_ZERO, scatter, sheets, styled

FIRST = datetime.datetime(2026, 3, 15)
UNICODE = ["Zoë", "Łódź", "日本語", "Ελλάδα", "🙂 smile", "a\nb", "“quotes” – dash", "x" * 32767]

# Value as written, format, value as read; in a workbook that counts from 1900.
NUMBERS = [
    (0, "General", 0.0),
    (-1.5, "General", -1.5),
    (0.1, "0.00", 0.1),
    (1e300, "General", 1e300),
    (123456789012345, "General", 123456789012345.0),
    (46096, "General", 46096.0),
    (46096, "yyyy-mm-dd", FIRST),
    (46096, "d mmm yy", FIRST),
    (46096.604224537, "m/d/yyyy hh:mm:ss", FIRST + datetime.timedelta(hours=14, minutes=30, seconds=5)),
    (46096.999999, "yyyy-mm-dd", FIRST + datetime.timedelta(days=1)),  # Nearest to the next day's start.
    (0.5, "hh:mm", DAY_ZERO + datetime.timedelta(hours=12)),
    (1.5, "[h]:mm", 1.5),  # A lapse of time is a number.
    (0, "yyyy-mm-dd", DAY_ZERO),
    (1, "yyyy-mm-dd", datetime.datetime(1900, 1, 1)),
    (59, "yyyy-mm-dd", datetime.datetime(1900, 2, 28)),
    (60, "yyyy-mm-dd", 60.0),  # 29 February 1900 never was.
    (61, "yyyy-mm-dd", datetime.datetime(1900, 3, 1)),
    (2958465, "yyyy-mm-dd", datetime.datetime(9999, 12, 31)),
    (2958466, "yyyy-mm-dd", 2958466.0),
    (-1, "yyyy-mm-dd", -1.0),
]

# The same for one that counts from 1904.
NUMBERS_1904 = [
    (0, "yyyy-mm-dd", datetime.datetime(1904, 1, 1)),
    (60, "yyyy-mm-dd", datetime.datetime(1904, 3, 1)),
    (44634, "yyyy-mm-dd", FIRST),
    (44634.5, "m/d/yyyy hh:mm", FIRST + datetime.timedelta(hours=12)),
    (0.25, "hh:mm:ss", DAY_ZERO + datetime.timedelta(hours=6)),
]

FORMULAS = [
    ("1+1", "=1+1", 2.0),
    ("A1*2", "=A1*2", 3.0),
    ("SUM(A1:A2)", "=SUM(A1:A2)", 4.0),
    ('IF(A1>1;"yes";"no")', '=IF(A1>1,"yes","no")', "yes"),
    ("A1/0", "=A1/0", "#DIV/0!"),
    ("A1=1.5", "=A1=1.5", True),
    ("ROUND(AVERAGE($A$1:A2);2)", "=ROUND(AVERAGE($A$1:A2),2)", 2.0),
    ("Other!B2&\"!\"", "=Other!B2&\"!\"", "there!"),
]


class WorkbookReading(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.path = os.path.join(self.folder.name, "book.xls")
        self.book = xlwt.Workbook()

    def read(self):
        self.book.save(self.path)
        return sheets(self.path)

    def check_numbers(self, rows):
        sheet = self.book.add_sheet("Numbers")
        for row, (written, number_format, _) in enumerate(rows):
            sheet.write(row, 0, written, styled(number_format=number_format))
        values, formulas = self.read()["Numbers"]
        self.assertEqual(formulas, {})
        for row, (written, number_format, expected) in enumerate(rows, 1):
            with self.subTest(written=written, format=number_format):
                self.assertEqual(values[row, 1], expected)
                self.assertIs(type(values[row, 1]), type(expected))

    def test_numbers_and_dates_that_count_from_1900(self):
        self.check_numbers(NUMBERS)

    def test_numbers_and_dates_that_count_from_1904(self):
        self.book.dates_1904 = True
        self.check_numbers(NUMBERS_1904)

    def test_texts_and_booleans(self):
        sheet = self.book.add_sheet("Texts")
        for row, text in enumerate(UNICODE):
            sheet.write(row, 1, text)
        sheet.write(0, 3, True)
        sheet.write(1, 3, False)
        sheet.write(2, 3, "  blanks kept ")
        sheet.write(3, 3, "46096", styled(number_format="yyyy-mm-dd"))
        values, _ = self.read()["Texts"]
        self.assertEqual([values[row, 2] for row in range(1, len(UNICODE) + 1)], UNICODE)
        self.assertIs(values[1, 4], True)
        self.assertIs(values[2, 4], False)
        self.assertEqual(values[3, 4], "  blanks kept ")
        self.assertEqual(values[4, 4], "46096")

    def test_formulas_with_what_they_give(self):
        sheet = self.book.add_sheet("Formulas")
        sheet.write(0, 0, 1.5)
        sheet.write(1, 0, 2.5)
        other = self.book.add_sheet("Other")
        other.write(1, 1, "there")
        for row, (written, _, _) in enumerate(FORMULAS):
            sheet.write(row, 2, xlwt.Formula(written))
        values, formulas = self.read()["Formulas"]
        for row, (written, text, value) in enumerate(FORMULAS, 1):
            with self.subTest(written=written):
                self.assertEqual(formulas[row, 3], text)
                self.assertEqual(values[row, 3], value)
                self.assertIs(type(values[row, 3]), type(value))
        self.assertEqual(len(formulas), len(FORMULAS))

    def test_a_workbook_that_lies_in_pieces(self):
        # Formulas that reach over a sector, so that some end where a sector ends.
        sheet = self.book.add_sheet("Long")
        sheet.write(0, 0, 1)
        long_sum = "+".join(["A$1"] * 100)
        for row in range(300):
            sheet.write(row, 1, xlwt.Formula(long_sum + "+A1" * (row % 7)))
        whole = self.read()
        self.assertEqual(len(whole["Long"][1]), 300)
        self.assertEqual([whole["Long"][0][row + 1, 2] for row in range(300)],
                         [100 + row % 7 for row in range(300)])
        scatter(self.path)
        self.assertEqual(sheets(self.path), whole)

    def test_sheets_in_their_order_with_sparse_cells(self):
        places = [(0, 0), (0, 255), (7, 3), (65535, 0), (65535, 255)]
        names = ["Zeta", "alpha", "Müller & Co", "Empty"]
        for name in names[:3]:
            sheet = self.book.add_sheet(name)
            for row, column in places:
                sheet.write(row, column, f"{name} {row} {column}")
            sheet.write(100, 100, None, styled("font: bold on"))  # Formatted, and nothing in it.
        self.book.add_sheet("Empty")
        read = self.read()
        self.assertEqual(list(read), names)
        for name in names[:3]:
            expected = {(row + 1, column + 1): f"{name} {row} {column}" for row, column in places}
            self.assertEqual(read[name], (expected, {}))
        self.assertEqual(read["Empty"], ({}, {}))

    def test_bits_that_are_no_number(self):
        self.book.add_sheet("Numbers").write(0, 0, 1e300)
        self.book.save(self.path)
        with open(self.path, "rb") as file:
            content = file.read()
        for bits in ("000000000000f87f", "000000000000f0ff"):
            with open(self.path, "wb") as file:
                file.write(content.replace(struct.pack("<d", 1e300), bytes.fromhex(bits)))
            self.assertEqual(sheets(self.path)["Numbers"][0], {(1, 1): "#NUM!"})

    def test_as_many_rows_as_a_sheet_has(self):
        sheet = self.book.add_sheet("Long")
        for row in range(65536):
            sheet.write(row, 0, row)
            sheet.write(row, 1, f"row {row % 1000}")
        values, _ = self.read()["Long"]
        self.assertEqual(len(values), 2 * 65536)
        self.assertTrue(all(values[row + 1, 1] == row and values[row + 1, 2] == f"row {row % 1000}"
                            for row in range(65536)))


if __name__ == "__main__":
    unittest.main()
