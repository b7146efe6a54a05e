"""Workbooks filled through the gateway, read back by an independent program."""

import datetime
import os
import struct
import unittest

import olefile
import xlrd
import xlwt
from _gateway import Gateway
from _talvex import SampleTest
from _workbooks import sheets, styled

EMPTY = {"$empty": True}
# 15 March 2026, 14:30:05, in tenths of microseconds since 1601.
SINCE_1601 = datetime.datetime(2026, 3, 15, 14, 30, 5) - datetime.datetime(1601, 1, 1)
FILE_TIME = int(SINCE_1601.total_seconds()) * 10**7
LIVE = ["=1+1", "+1+1", "-1+1", "@SUM(1,2)", "'quoted", "=HYPERLINK(\"http://example.com\")", "1/2", "46096",
        "TRUE"]


def template(path, dates_1904=False):
    """A header in bold over a merged title, columns of set widths, one styled row of a block, and a total."""
    book = xlwt.Workbook()
    book.dates_1904 = dates_1904
    sheet = book.add_sheet("Lines")
    sheet.write_merge(0, 0, 0, 3, "Budget lines", styled("font: name Georgia, bold on, height 400"))
    for column, title in enumerate(["Code", "Start", "Amount", "Text"]):
        sheet.write(1, column, title, styled("font: bold on, color red"))
        sheet.col(column).width = 2000 + 1000 * column
    for column, number_format in enumerate(["General", "yyyy-mm-dd", "#,##0.00", "@"]):
        sheet.write(2, column, None, styled("font: italic on; borders: bottom thin", number_format))
    sheet.write_merge(2, 2, 4, 5, None, styled("font: italic on"))
    sheet.row(2).height_mismatch = True
    sheet.row(2).height = 600
    sheet.write(3, 2, xlwt.Formula("SUM(C3:C3)*2"), styled("font: bold on", "0.0"))
    book.add_sheet("Notes").write(0, 0, "kept")
    book.save(path)


class WorkbookWriting(SampleTest):
    def setUp(self):
        super().setUp()
        self.template = os.path.join(self.site, "template.xls")
        self.target = os.path.join(self.site, "written.xls")
        self.gateway = Gateway(self.site).__enter__()
        self.addCleanup(self.gateway.__exit__)
        self.program = self.gateway.create("Platform.Spreadsheet")

    def call(self, number, method, *args):
        result = self.gateway.invoke(number, method, list(args))["result"]
        return result["$object"] if isinstance(result, dict) and "$object" in result else result

    def error(self, number, method, *args):
        answer = self.gateway.ask("invoke", object=number, method=method, args=list(args))
        self.assertIn("error", answer, answer)
        return answer["error"]["data"]["number"], answer["error"]["message"]

    def new(self, **options):
        """A new workbook of the template, and its first sheet."""
        template(self.template, **options)
        book = self.call(self.program, "FromTemplate", self.template)
        return book, self.call(book, "Sheet", 1)

    def saved(self, book):
        self.call(book, "SaveAs", self.target)
        return xlrd.open_workbook(self.target, formatting_info=True)

    @staticmethod
    def style(book, sheet, row, column):
        """(format, font's name, height, bold, italic, colour) of a cell, counted from 0."""
        form = book.xf_list[sheet.cell_xf_index(row, column)]
        font = book.font_list[form.font_index]
        return (book.format_map[form.format_key].format_str, font.name, font.height, font.bold, font.italic,
                font.colour_index)

    def test_every_kind_of_value_lands_as_what_it_is(self):
        book, sheet = self.new()
        day = {"$date": "2026-03-15"}
        moment = {"$date": "2026-03-15T14:30:05"}
        given = [1.5, -7, {"$currency": "12.3400"}, True, False, "text", day, moment]
        for row, value in enumerate(given, 10):
            self.call(sheet, "SetValue", row, 7, value)
        self.call(sheet, "SetValue", 3, 2, day)  # Has a date's format of its own.
        read = self.saved(book)
        lines = read.sheet_by_name("Lines")
        values = [lines.cell(row, 6) for row in range(9, 17)]
        self.assertEqual([cell.value for cell in values[:6]], [1.5, -7, 12.34, 1, 0, "text"])
        kinds = ([xlrd.XL_CELL_NUMBER] * 3 + [xlrd.XL_CELL_BOOLEAN] * 2 + [xlrd.XL_CELL_TEXT]
                 + [xlrd.XL_CELL_DATE] * 2)
        self.assertEqual([cell.ctype for cell in values], kinds)
        self.assertEqual([xlrd.xldate_as_datetime(cell.value, read.datemode) for cell in values[6:]],
                         [datetime.datetime(2026, 3, 15), datetime.datetime(2026, 3, 15, 14, 30, 5)])
        self.assertEqual(lines.cell(2, 1).ctype, xlrd.XL_CELL_DATE)
        self.assertEqual(self.style(read, lines, 2, 1)[0], "yyyy-mm-dd")
        self.assertEqual(self.style(read, lines, 15, 6)[0], "m/d/yyyy")

    def test_dates_in_a_workbook_that_counts_from_1904(self):
        book, sheet = self.new(dates_1904=True)
        self.call(sheet, "SetValue", 3, 2, {"$date": "2026-03-15T06:00:00"})
        read = self.saved(book)
        self.assertEqual(read.datemode, 1)
        self.assertEqual(read.sheet_by_index(0).cell(2, 1).value, 44634.25)
        self.assertEqual(sheets(self.target)["Lines"][0][3, 2], datetime.datetime(2026, 3, 15, 6))
        self.call(sheet, "SetValue", 3, 2, {"$date": "1903-12-31"})
        self.assertEqual(self.error(book, "Save")[0], 5)

    def test_text_stays_text(self):
        book, sheet = self.new()
        for row, text in enumerate(LIVE, 1):
            self.call(sheet, "SetValue", row, 9, text)
        lines = self.saved(book).sheet_by_name("Lines")
        self.assertEqual([lines.cell(row, 8).value for row in range(len(LIVE))], LIVE)
        self.assertEqual({lines.cell(row, 8).ctype for row in range(len(LIVE))}, {xlrd.XL_CELL_TEXT})
        values, formulas = sheets(self.target)["Lines"]
        self.assertEqual([place for place in formulas if place[1] == 9], [])
        self.assertEqual(values[1, 9], "=1+1")

    def test_the_template_keeps_its_looks(self):
        book, sheet = self.new()
        before = xlrd.open_workbook(self.template, formatting_info=True)
        self.call(sheet, "SetValue", 3, 1, "IT")
        self.call(sheet, "SetValue", 3, 3, 1234.5)
        after = self.saved(book)
        old, new = before.sheet_by_name("Lines"), after.sheet_by_name("Lines")
        self.assertEqual(after.sheet_names(), ["Lines", "Notes"])
        self.assertEqual(sorted(new.merged_cells), sorted(old.merged_cells))
        for row, column in [(0, 0), (1, 0), (1, 3), (2, 0), (2, 1), (2, 2), (2, 3), (2, 4), (3, 2)]:
            with self.subTest(row=row, column=column):
                self.assertEqual(self.style(after, new, row, column), self.style(before, old, row, column))
        for column in range(4):
            self.assertAlmostEqual(new.colinfo_map[column].width, old.colinfo_map[column].width, delta=40)
        self.assertEqual(new.rowinfo_map[2].height, 600)
        self.assertEqual(after.sheet_by_name("Notes").cell(0, 0).value, "kept")

    def test_formulas_are_calculated_anew(self):
        book, sheet = self.new()
        self.call(sheet, "SetValue", 3, 3, 21)
        self.call(sheet, "SetFormula", 5, 3, "=sum(C3,Notes!B1)")
        self.call(sheet, "SetFormula", 6, 3, 'IF(C3>20,"many","few")')
        lines = self.saved(book).sheet_by_name("Lines")
        self.assertEqual([lines.cell(row, 2).value for row in (3, 4, 5)], [42, 21, "many"])
        self.assertEqual(sheets(self.target)["Lines"][1], {(4, 3): "=SUM(C3)*2", (5, 3): "=SUM(C3,Notes!B1)",
                                                           (6, 3): '=IF(C3>20,"many","few")'})
        self.assertEqual(self.call(sheet, "Value", 4, 3), 42)  # In memory as well, once it is saved.
        self.assertEqual(self.call(sheet, "Formula", 5, 3), "=SUM(C3,Notes!B1)")

    def test_a_formula_that_cannot_be_read_is_refused(self):
        book, sheet = self.new()
        self.call(sheet, "SetFormula", 5, 3, "=SUM(C3")
        number, text = self.error(book, "SaveAs", self.target)
        self.assertEqual(number, 5)
        self.assertIn("No formula for the cell C5: =SUM(C3", text)
        self.assertFalse(os.path.exists(self.target))

    def test_a_block_is_repeated(self):
        book, sheet = self.new()
        self.call(sheet, "InsertRows", 4, 2)
        self.call(sheet, "CopyRowStyles", 3, 1, 4)
        self.call(sheet, "CopyRowStyles", 3, 1, 5)
        for row in range(3, 6):
            self.call(sheet, "SetValue", row, 3, row)
        read = self.saved(book)
        lines = read.sheet_by_name("Lines")
        for row in (3, 4):
            self.assertEqual(self.style(read, lines, row, 2), self.style(read, lines, 2, 2))
            self.assertEqual(lines.rowinfo_map[row].height, 600)
            self.assertIn((row, row + 1, 4, 6), lines.merged_cells)
        self.assertEqual([lines.cell(row, 2).value for row in range(2, 5)], [3, 4, 5])
        self.assertEqual(self.call(sheet, "Formula", 6, 3), "=SUM(C3)*2")
        self.assertEqual(lines.cell(5, 2).value, 6)

    def test_rows_are_copied_with_what_is_in_them(self):
        book, sheet = self.new()
        self.call(sheet, "SetValue", 3, 3, 5)
        self.call(sheet, "CopyRows", 3, 2, 8)
        lines = self.saved(book).sheet_by_name("Lines")
        self.assertEqual([lines.cell(row, 2).value for row in (7, 8)], [5, 10])
        self.assertEqual(self.call(sheet, "Formula", 9, 3), "=SUM(C8)*2")

    def test_cells_are_cleared_and_keep_their_format(self):
        book, sheet = self.new()
        self.call(sheet, "Clear", 2, 1)
        self.call(sheet, "SetValue", 2, 2, EMPTY)
        read = self.saved(book)
        lines = read.sheet_by_name("Lines")
        self.assertEqual([lines.cell(1, column).ctype for column in (0, 1)], [xlrd.XL_CELL_BLANK] * 2)
        self.assertEqual(self.style(read, lines, 1, 0), self.style(read, lines, 1, 2))

    def test_sheets_are_added_and_renamed(self):
        book, sheet = self.new()
        added = self.call(book, "AddSheet", "Übersicht")
        self.call(added, "SetValue", 65536, 256, "corner")
        self.gateway.result("set", object=sheet, property="Name", value="Renamed")
        self.assertTrue(self.call(book, "HasSheet", "RENAMED"))
        for name in ["notes", "", "a/b", "x" * 32]:
            self.assertEqual(self.error(book, "AddSheet", name)[0], 5)
        read = self.saved(book)
        self.assertEqual(read.sheet_names(), ["Renamed", "Notes", "Übersicht"])
        self.assertEqual(read.sheet_by_index(2).cell(65535, 255).value, "corner")

    def test_a_sheet_ends_at_row_65536_and_column_256(self):
        _, sheet = self.new()
        self.assertEqual(self.error(sheet, "SetValue", 65537, 1, "x"),
                         (9, "A sheet has the rows 1 to 65,536: there is no row 65,537"))
        self.assertEqual(self.error(sheet, "SetFormula", 1, 257, "=1"),
                         (9, "A sheet has the columns 1 to 256: there is no column 257"))
        self.assertEqual(self.error(sheet, "Value", 0, 1)[0], 9)
        self.assertEqual(self.error(sheet, "InsertRows", 2, 65535)[0], 9)
        self.assertEqual(self.error(sheet, "SetValue", 1, 1, "x" * 32768)[0], 5)

    def test_properties_of_the_four_types_come_back(self):
        book, _ = self.new()
        given = {"B2B-Sender": "Zoë; Łukasz", "Number": 12.5, "Day": {"$date": "2026-03-15T14:30:05"},
                 "Yes": True, "No": False}
        for name, value in given.items():
            self.call(book, "SetProperty", name, value)
        self.call(book, "SaveAs", self.target)
        again = self.call(self.program, "Open", self.target)
        self.assertEqual({name: self.call(again, "Property", name.upper()) for name in given}, given)
        types = [self.call(again, "PropertyTypeOf", name.lower()) for name in given]
        self.assertEqual(types, [10, 20, 30, 40, 40])
        self.assertEqual(self.call(again, "PropertyTypeOf", "other"), 0)
        # The section that holds custom properties, as an independent program reads it; names are in its
        # dictionary, which that program leaves out.
        with olefile.OleFileIO(self.target) as file:
            content = file.openstream("\x05DocumentSummaryInformation").read()
        self.assertIn(bytes.fromhex("05d5cdd59c2e1b10939708002b2cf9ae"), content)
        for layout, kind, value in ("<HHd", 5, 12.5), ("<HHh", 11, -1), ("<HHQ", 64, FILE_TIME):
            self.assertIn(struct.pack(layout, kind, 0, value), content)

    def test_the_longest_names_and_texts_of_properties_come_back(self):
        book, _ = self.new()
        given = {"Plain": "x" * 65534, "Wide": "🙂" * 16383 + "xx", "n" * 65534: "v",
                 "🙂" * 16383 + "nn": "v"}
        for name, value in given.items():
            self.call(book, "SetProperty", name, value)
        for name, value in [("Plain", "x" * 65535), ("n" * 65535, "v"), ("meta:x", "v"), ("dc:title", "v")]:
            self.assertEqual(self.error(book, "SetProperty", name, value)[0], 5)
        self.call(book, "SaveAs", self.target)
        again = self.call(self.program, "Open", self.target)
        self.assertEqual(self.gateway.get(again, "PropertyCount"), len(given))
        for name, value in given.items():
            self.assertEqual(self.call(again, "Property", name), value, name[:9])

    def test_a_property_is_replaced_in_any_case(self):
        book, _ = self.new()
        self.call(book, "SetProperty", "B2B-Show", "first")
        self.call(book, "SaveAs", self.target)
        again = self.call(self.program, "Open", self.target)
        self.call(again, "SetProperty", "b2b-SHOW", 2)
        self.call(again, "Save")
        last = self.call(self.program, "Open", self.target)
        self.assertEqual(self.gateway.get(last, "PropertyCount"), 1)
        self.assertEqual(self.call(last, "PropertyName", 1), "B2B-Show")
        self.assertEqual(self.call(last, "Property", "B2B-SHOW"), 2)

    def test_an_unchanged_template_comes_out_as_it_is(self):
        book, _ = self.new()
        self.call(book, "SaveAs", self.target)
        with open(self.template, "rb") as before, open(self.target, "rb") as after:
            self.assertEqual(before.read(), after.read())

    def test_a_taken_name_is_not_written_over_unless_that_is_said(self):
        book, sheet = self.new()
        self.call(sheet, "SetValue", 3, 1, "new")
        with open(self.target, "wb") as file:
            file.write(b"somebody's")
        self.assertEqual(self.error(book, "SaveAs", self.target)[0], 58)
        with open(self.target, "rb") as file:
            self.assertEqual(file.read(), b"somebody's")
        self.call(book, "SaveAs", self.target, True)
        self.assertEqual(sheets(self.target)["Lines"][0][3, 1], "new")

    def test_a_file_that_changed_meanwhile_is_not_written_over(self):
        template(self.template)
        book = self.call(self.program, "Open", self.template)
        self.call(self.call(book, "Sheet", "notes"), "SetValue", 1, 1, "mine")
        with open(self.template, "ab") as file:
            file.write(b" ")
        number, text = self.error(book, "Save")
        self.assertEqual(number, 75)
        self.assertIn("has been changed since the workbook was read from it", text)


if __name__ == "__main__":
    unittest.main()
