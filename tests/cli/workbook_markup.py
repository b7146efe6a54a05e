"""Workbooks as XML and XML as workbooks, with independent programs at the other end of the files."""

import datetime
import os
import unittest
import xml.etree.ElementTree as tree
from xml.sax.saxutils import escape

import xlrd
import xlwt
from _gateway import Gateway
from _talvex import SampleTest
from _workbooks import protected, sheets, styled

EMPTY = {"$empty": True}
USER = "d.reed"
TEXTS = ["IT-HW", "=1+1", "+1+1", "-1+1", "@SUM(1,2)", "<&>\"'", "Zoë Łukasz 預算 🙂", "line one\nline two",
         " blanks ", "[%ROW%]", "46096", "TRUE", "3/15/2026"]


def template(path):
    """Titles in row 4, a record row with formats and a formula, a free row, and a total."""
    book = xlwt.Workbook()
    for name in ("Budgets", "Lines"):
        sheet = book.add_sheet(name)
        sheet.write(0, 0, name, styled("font: name Georgia, bold on, height 240"))
        for column, title in enumerate(["Code", "Start", "Amount", "Used", "Left", "Twice"]):
            sheet.write(3, column, title, styled("font: bold on"))
        for column, number_format in enumerate(["General", "yyyy-mm-dd", "#,##0.00", "#,##0.00", "0.0"]):
            sheet.write(4, column, None, styled("font: italic on; borders: bottom thin", number_format))
        sheet.write(4, 5, xlwt.Formula("C5*2"), styled("font: italic on", "0"))
        sheet.write_merge(4, 4, 6, 7, None, styled("font: italic on"))
        sheet.write(6, 0, "Total", styled("font: bold on"))
        sheet.write(6, 2, xlwt.Formula("SUM(C5:C6)"), styled("font: bold on", "#,##0.00"))
    book.save(path)


FIELDS = ('<Code B2BVALUEPOS="A5"/><Start B2BVALUEPOS="B5" B2BVALUETYPE="date"/>'
          '<Amount B2BVALUEPOS="C5" B2BVALUETYPE="number"/><Used B2BVALUEPOS="D5" B2BVALUETYPE="number"/>'
          '<Left B2BVALUEPOS="E5" B2BVALUETYPE="formula" B2BVALUE="=C[%ROW%]-D[%ROW%]"/>')


def record(code, amount, used=1, start="3/15/2026"):
    return (f"<l><Code>{escape(code)}</Code><Start>{start}</Start><Amount>{amount}</Amount>"
            f"<Used>{used}</Used></l>")


def block(records, fields=FIELDS, sheet="Lines"):
    return f'<s B2BWORKSHEET="{sheet}"><b B2BBLOCK="A5">{fields}{"".join(records)}</b></s>'


class MarkupTest(SampleTest):
    def setUp(self):
        super().setUp()
        self.template = os.path.join(self.site, "template.XLT")
        self.target = os.path.join(self.site, "written.xls")
        template(self.template)
        self.gateway = Gateway(self.site).__enter__()
        self.addCleanup(self.gateway.__exit__)
        self.excel = self.gateway.create("Talvex.BudgetExcel")

    def transform(self, markup, mode="Create", source=None, target=None, user=USER):
        """(the workbook's number or None, the error text)"""
        source = source or self.template
        answer = self.gateway.invoke(self.excel, "TransformXMLToExcel", {
            "i_sXml": markup, "i_nWriteMode": mode, "i_lDocID": 0,
            "i_bTemplateUsed": source.upper().endswith("XLT"), "o_sError": "", "i_sUser": user,
            "i_sFilePath": source, "i_sFilePathDest": target or self.target})
        book = None if answer["result"] == EMPTY else answer["result"]["$object"]
        return book, answer["out"]["o_sError"]

    def written(self, markup, **options):
        """The workbook that was written, as an independent program reads it."""
        book, error = self.transform(markup, **options)
        self.assertEqual(error, "")
        self.assertIsNotNone(book)
        return xlrd.open_workbook(options.get("target", self.target), formatting_info=True)

    def refused(self, markup, **options):
        book, error = self.transform(markup, **options)
        self.assertIsNone(book)
        self.assertFalse(os.path.exists(self.target))
        return error

    def read(self, path, user=USER):
        """(the root element or None, the error text)"""
        answer = self.gateway.invoke(self.excel, "TransformExcelToXML", [path, EMPTY, "", user])
        document = answer["out"]["o_oXml"]
        if document == EMPTY:
            return None, answer["out"]["o_sError"]
        return tree.fromstring(self.gateway.get(document["$object"], "Xml")), answer["out"]["o_sError"]

    def cells(self, path, sheet):
        """{(row, column): (text, formula or None)} of the workbook XML."""
        root, error = self.read(path)
        self.assertEqual(error, "")
        return {(int(cell.get("Row")), int(cell.get("Column"))): (cell.text, cell.get("Formula"))
                for cell in root.find(f"WorkSheet[@Name='{sheet}']")}

    @staticmethod
    def style(book, sheet, row, column):
        form = book.xf_list[sheet.cell_xf_index(row, column)]
        font = book.font_list[form.font_index]
        return book.format_map[form.format_key].format_str, font.name, font.bold, font.italic


class Writing(MarkupTest):
    def test_a_template_is_filled_and_keeps_its_looks(self):
        read = self.written(block([record("a", "1000", 250), record("=b", "500.5", 0, ""),
                                   record("c", "-1", "")]))
        lines = read.sheet_by_name("Lines")
        self.assertEqual([[cell.value for cell in lines.row(row)[:6]] for row in range(4, 9)],
                         [["a", 46096, 1000, 250, 750, 2000], ["=b", "", 500.5, 0, 500.5, 1001],
                          ["c", 46096, -1, "", -1, -2], [""] * 6, ["Total", "", 1499.5, "", "", ""]])
        self.assertEqual([lines.cell(4, column).ctype for column in range(3)],
                         [xlrd.XL_CELL_TEXT, xlrd.XL_CELL_DATE, xlrd.XL_CELL_NUMBER])
        before = xlrd.open_workbook(self.template, formatting_info=True)
        old = before.sheet_by_name("Lines")
        for column in range(7):
            for row in range(4, 7):
                with self.subTest(row=row, column=column):
                    self.assertEqual(self.style(read, lines, row, column), self.style(before, old, 4, column))
        for row in range(4, 7):
            self.assertIn((row, row + 1, 6, 8), lines.merged_cells)
        self.assertEqual(self.style(read, lines, 8, 2), self.style(before, old, 6, 2))
        self.assertEqual(self.style(read, lines, 0, 0), self.style(before, old, 0, 0))
        formulas = sheets(self.target)["Lines"][1]
        self.assertEqual(formulas, {(5, 5): "=C5-D5", (6, 5): "=C6-D6", (7, 5): "=C7-D7", (5, 6): "=C5*2",
                                    (6, 6): "=C6*2", (7, 6): "=C7*2", (9, 3): "=SUM(C5:C8)"})
        self.assertEqual(read.sheet_by_name("Budgets").cell(6, 0).value, "Total")

    def test_texts_stay_texts(self):
        fields = '<t B2BVALUEPOS="A5"/>'
        read = self.written(block([f"<l><t>{escape(text)}</t></l>" for text in TEXTS], fields))
        cells = [read.sheet_by_name("Lines").cell(4 + row, 0) for row in range(len(TEXTS))]
        self.assertEqual([cell.value for cell in cells], TEXTS)
        self.assertEqual({cell.ctype for cell in cells}, {xlrd.XL_CELL_TEXT})
        self.assertEqual([place for place in sheets(self.target)["Lines"][1] if place[1] == 1], [])

    def test_every_type_comes_back_as_it_went(self):
        given = [("text", TEXTS[6]), ("number", "1234.5"), ("number", "-0.001"), ("number", "1E+20"),
                 ("date", "3/15/2026"), ("date", "3/15/2026 14:30:05"), ("boolean", "True"),
                 ("boolean", "False")]
        values = "".join(f'<v B2BVALUEPOS="J{row}" B2BVALUETYPE="{kind}">{text}</v>'
                         for row, (kind, text) in enumerate(given, 1))
        read = self.written(f'<x B2BWORKSHEET="Lines">{values}'
                            '<v B2BVALUEPOS="J9" B2BVALUETYPE="formula" B2BVALUE="=J2*[%ROW%]"/></x>')
        kinds = [xlrd.XL_CELL_TEXT] + [xlrd.XL_CELL_NUMBER] * 3 + [xlrd.XL_CELL_DATE] * 2
        kinds += [xlrd.XL_CELL_BOOLEAN] * 2 + [xlrd.XL_CELL_NUMBER]
        self.assertEqual([read.sheet_by_name("Lines").cell(row, 9).ctype for row in range(9)], kinds)
        cells = self.cells(self.target, "Lines")
        self.assertEqual([cells[row, 10] for row in range(1, 9)], [(text, None) for _, text in given])
        self.assertEqual(cells[9, 10], ("11110.5", "=J2*9"))

    def test_a_template_without_markup_comes_out_as_it_is(self):
        root, _ = self.read(self.template)
        for markup in ("<nothing/>", tree.tostring(root, encoding="unicode")):
            self.written(markup)
            with open(self.template, "rb") as before, open(self.target, "rb") as after:
                self.assertEqual(before.read(), after.read())
            os.remove(self.target)

    def test_records_are_appended_and_updated(self):
        self.written(block([record("a", 1), record("b", 2)]))
        second, third = (os.path.join(self.site, name) for name in ("second.xls", "third.xls"))
        self.written(block([record("c", 3)]), mode="Append", source=self.target, target=second)
        fields = FIELDS.replace('"A5"', '"A5" B2BSEARCHOPTION="Equals"')
        changes = ["<l><Code>B</Code><Amount>20</Amount></l>", record("d", 4)]
        read = self.written(block(changes, fields), mode=30, source=second, target=third)
        lines = read.sheet_by_name("Lines")
        self.assertEqual([[cell.value for cell in lines.row(row)[:6]] for row in range(4, 10)],
                         [["a", 46096, 1, 1, 0, 2], ["B", 46096, 20, 1, 19, 40], ["c", 46096, 3, 1, 2, 6],
                          ["d", 46096, 4, 1, 3, 8], [""] * 6, ["Total", "", 28, "", "", ""]])
        self.assertEqual(self.style(read, lines, 7, 1)[0], "yyyy-mm-dd")

    def test_records_are_scattered(self):
        read = self.written('<x B2BWORKSHEET="Lines"><b B2BBLOCK="B2" B2BINDEXMODE="Scattered">'
                            '<v B2BVALUEPOS="B2" B2BVALUE="[%VALUE%] in [%ADDRESS%]"/>'
                            '<r B2BBLOCK="J2"><v>one</v></r><r B2BBLOCK="K9"><v>two</v></r></b></x>')
        lines = read.sheet_by_name("Lines")
        self.assertEqual([lines.cell(1, 9).value, lines.cell(8, 10).value], ["one in J2", "two in K9"])
        self.assertEqual(lines.cell(6, 0).value, "Total")

    def test_results_outlive_the_temporary_values(self):
        read = self.written('<x B2BWORKSHEET="Lines">'
                            '<v B2BVALUEPOS="Z1" B2BVALUETYPE="number" B2BTEMPVALUE="2.5"/>'
                            '<v B2BVALUEPOS="J1" B2BVALUETYPE="number">4</v>'
                            '<v B2BVALUEPOS="J2" B2BVALUETYPE="result" B2BVALUE="=J1*Z1"/>'
                            '<v B2BVALUEPOS="J3" B2BVALUETYPE="formula" B2BVALUE="=J1+Z1"/></x>')
        self.assertEqual([read.sheet_by_name("Lines").cell(row, 9).value for row in range(3)], [4, 10, 4])
        values, formulas = sheets(self.target)["Lines"]
        self.assertNotIn((1, 26), values)
        self.assertNotIn((2, 10), formulas)

    def test_document_properties_come_back(self):
        self.written('<x B2BORIGINALFILENAME="Zoë.xls"><p B2BPROPLABEL="B2B-SENDER" B2BPROPVALUE="a;ë"/>'
                     '<p B2BPROPLABEL="Count" B2BPROPVALUE="12.5" B2BPROPTYPE="number"/>'
                     '<p B2BPROPLABEL="Day" B2BPROPVALUE="3/15/2026" B2BPROPTYPE="date"/>'
                     '<p B2BPROPLABEL="Yes" B2BPROPVALUE="yes" B2BPROPTYPE="boolean"/></x>')
        program = self.gateway.create("Platform.Spreadsheet")
        opened = self.gateway.invoke(program, "Open", [self.target])["result"]
        names = ["B2B-ORIGINALNAME", "b2b-sender", "Count", "Day", "Yes", "Other"]
        values = [self.gateway.invoke(self.excel, "GetCustomerPropertyFromExcel", [opened, name])["result"]
                  for name in names]
        self.assertEqual(values, ["Zoë.xls", "a;ë", 12.5, {"$date": "2026-03-15"}, True, EMPTY])
        root, _ = self.read(self.target)
        self.assertEqual([element.text for element in root.findall("SENDER")], ["a", "ë"])
        set_one = "SetCustomerPropertyInExcel"
        answer = self.gateway.invoke(self.excel, set_one, [opened, "Count", "x", "number", ""])
        not_written = "\r\nThe data could not be written to the workbook-"
        self.assertEqual(answer["out"]["o_sError"], not_written)
        for day in ("12/31/1969", "2/8/2106"):
            answer = self.gateway.invoke(self.excel, set_one, [opened, "Day", day, "date", ""])
            self.assertEqual(answer["out"]["o_sError"], not_written)
        self.gateway.invoke(self.excel, set_one, [opened, "Last", "2/7/2106", "date", ""])
        self.gateway.invoke(self.excel, set_one, [opened, "First", "1/1/1970", "date", ""])
        self.gateway.invoke(self.excel, set_one, [opened, "count", "7", "Number", ""])
        copy = os.path.join(self.site, "copy.xls")
        out = self.gateway.invoke(self.excel, "WriteExcelObjectToFile", [opened, copy, True])["out"]
        self.assertEqual(out, {"i_oExcelWorkBook": EMPTY})
        again = self.gateway.invoke(program, "Open", [copy])["result"]
        self.assertEqual([self.gateway.invoke(again["$object"], "Property", [name])["result"]
                          for name in ("Count", "Day", "First", "Last")],
                         [7, *({"$date": day} for day in ("2026-03-15", "1970-01-01", "2106-02-07"))])
        self.gateway.invoke(self.excel, "CloseWorkBook", [again])
        self.assertEqual(self.gateway.error_number("get", object=again["$object"], property="Name"), 3704)

    def test_a_failing_property_leaves_one_entry_in_the_log(self):
        self.read(self.template)  # Somebody's texts are looked up, and then those of nobody.
        self.refused("<x>")
        log = os.path.join(self.site, "log", "errors.jsonl")
        with open(log, encoding="utf-8") as file:
            before = len(file.readlines())
        program = self.gateway.create("Platform.Spreadsheet")
        opened = self.gateway.invoke(program, "Open", [self.template])["result"]
        for _ in range(2):
            self.gateway.invoke(self.excel, "SetCustomerPropertyInExcel", [opened, "Day", "x", "date", ""])
        with open(log, encoding="utf-8") as file:
            self.assertEqual(len(file.readlines()) - before, 2)

    def test_what_cannot_be_saved_is_refused_though_nothing_is_saved(self):
        values = ['<v B2BVALUEPOS="A1" B2BVALUETYPE="formula" B2BVALUE="=SUM("/>',
                  '<v B2BVALUEPOS="A1" B2BVALUETYPE="date">1/1/1850</v>']
        for value in values:
            with self.subTest(value=value):
                book, error = self.transform(f'<x B2BWORKSHEET="Lines">{value}</x>', target=" ")
                self.assertIsNone(book)
                self.assertEqual(error, "\r\nThe data could not be written to the workbook-")
        book, error = self.transform('<x B2BWORKSHEET="Lines"><v B2BVALUEPOS="J1">x</v>'
                                     '<v B2BVALUEPOS="J2" B2BVALUETYPE="formula" B2BVALUE="=J1&amp;1"/></x>',
                                     target=" ")
        self.assertEqual(error, "")
        sheet = self.gateway.invoke(book, "Sheet", ["Lines"])["result"]["$object"]
        self.assertEqual(self.gateway.invoke(sheet, "Value", [2, 10])["result"], "x1")

    def test_the_last_row_is_row_65536(self):
        fields = '<t B2BVALUEPOS="A65535"/>'
        rows = '<s B2BWORKSHEET="Lines"><b B2BBLOCK="A65535">' + fields
        read = self.written(f"<x>{rows}<l><t>1</t></l><l><t>2</t></l></b></s></x>")
        self.assertEqual(read.sheet_by_name("Lines").cell(65535, 0).value, "2")
        os.remove(self.target)
        self.assertEqual(self.refused(f"<x>{rows}" + "<l><t>1</t></l>" * 3 + "</b></s></x>"),
                         "\r\nThe position of a value in the workbook could not be determined-")

    def test_failures_are_told_in_the_users_language(self):
        bad_formula = '<v B2BVALUEPOS="A1" B2BVALUETYPE="formula" B2BVALUE="=SUM("/>'
        rows = [
            ("<x>", "The data could not be written to the workbook"),
            (f'<x B2BWORKSHEET="Lines">{bad_formula}</x>', "The data could not be written to the workbook"),
            ('<x B2BPROPLABEL="p" B2BPROPVALUE="1/2/1899" B2BPROPTYPE="date"/>',
             "The data could not be written to the workbook"),
            ('<x B2BWORKSHEET="Lines"><v B2BVALUEPOS="A"/></x>',
             "The position of a value in the workbook could not be determined"),
            ('<x B2BWORKSHEET="Lines"><v B2BVALUEPOS="A1" B2BVALUE="[%X%]"/></x>',
             "The column, row or value of a cell could not be filled in"),
        ]
        for markup, text in rows:
            with self.subTest(markup=markup):
                self.assertEqual(self.refused(markup), f"\r\n{text}-")
        self.assertEqual(self.refused("<x/>", source=os.path.join(self.site, "none.XLT"), user="p.deboer"),
                         "\r\nHet werkmapsjabloon kon niet worden geopend-")


class Reading(MarkupTest):
    def test_a_workbook_of_another_program_is_read(self):
        path = os.path.join(self.site, "~in.xls")
        book = xlwt.Workbook()
        sheet = book.add_sheet("Übersicht")
        sheet.write(2, 1, 1234.5)
        sheet.write(2, 2, datetime.date(2026, 3, 15), styled(number_format="yyyy-mm-dd"))
        sheet.write(2, 3, True)
        sheet.write(4, 0, xlwt.Formula("B3*2"))
        sheet.write(4, 1, "   ")
        for row, text in enumerate(TEXTS, 10):
            sheet.write(row, 0, text)
        book.add_sheet("Empty")
        book.save(path)
        root, error = self.read(path)
        self.assertEqual(error, "")
        self.assertEqual((root.tag, root.attrib), ("B2BEXCEL", {"WorkBook": "in.xls"}))
        self.assertEqual([(child.tag, child.attrib) for child in root],
                         [("WorkSheet", {"Name": "Übersicht"}), ("WorkSheet", {"Name": "Empty"})])
        self.assertEqual(self.cells(path, "Übersicht"), {
            (3, 2): ("1234.5", None), (3, 3): ("3/15/2026", None), (3, 4): ("True", None),
            (5, 1): ("2469", "=B3*2"), **{(11 + row, 1): (text, None) for row, text in enumerate(TEXTS)}})

    def test_files_that_are_no_workbooks(self):
        no_workbook = "\r\nThe file is not a workbook of the expected kind-"
        for name, content in (("empty.xls", b""), ("text.xls", b"hello"), ("page.XLT", b"<html></html>"),
                              ("text.txt", b"hello")):
            path = os.path.join(self.site, name)
            with open(path, "wb") as file:
                file.write(content)
            with self.subTest(name=name):
                self.assertEqual(self.read(path), (None, no_workbook))
        path = os.path.join(self.site, "secret.xls")
        protected(path)
        self.assertEqual(self.read(path), (None, no_workbook))
        self.assertEqual(self.read(os.path.join(self.site, "none.xls")),
                         (None, "\r\nThe workbook could not be opened-"))
        self.assertEqual(self.read(os.path.join(self.site, "none.XLT"), "j.vogel"),
                         (None, "\r\nDie Arbeitsmappenvorlage konnte nicht geöffnet werden-"))

    def test_a_control_character_cannot_be_put_into_xml(self):
        path = os.path.join(self.site, "control.xls")
        book = xlwt.Workbook()
        book.add_sheet("S").write(0, 0, "bell \x07")
        book.save(path)
        self.assertEqual(self.read(path), (None, "\r\nThe workbook could not be read-"))


class CommandLine(MarkupTest):
    def test_the_transformations_are_called_from_the_command_line(self):
        answer = self.ask("call", "Talvex.BudgetExcel", "TransformXMLToExcel",
                          "i_sXml=" + block([record("a", 1)]), "i_nWriteMode=Create", "i_lDocID=0",
                          "i_bTemplateUsed=true", "o_sError=", "i_sUser=" + USER,
                          "i_sFilePath=" + self.template, "i_sFilePathDest=" + self.target)
        self.assertEqual(answer["out"]["o_sError"], "")
        self.assertEqual(self.cells(self.target, "Lines")[5, 1], ("a", None))


if __name__ == "__main__":
    unittest.main()
