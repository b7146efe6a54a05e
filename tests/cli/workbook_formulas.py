"""Formulas are in the grammar of workbooks, in both directions, and a value in a formula stays data.

Everything here goes through talvex-sheet; the files come from, and go to, independent programs.
"""

import os
import unittest
import xml.etree.ElementTree as tree
from xml.sax.saxutils import quoteattr

import xlrd
import xlwt
from _gateway import Gateway
from _talvex import SampleTest
from _workbooks import sheets

EMPTY = {"$empty": True}
NOT_WRITTEN = "\r\nThe data could not be written to the workbook-"
NOT_FILLED_IN = "\r\nThe column, row or value of a cell could not be filled in-"

# Sheets whose names mean something else in a formula, or nothing, unless they are in quotes.
NAMES = ['a"b', "it's", "a''b", "with blank", "bang!", "Q1", "R", "R1C1", "TRUE", "1st", ".x", "a-b", "a;b",
         "a,b", "a(b", "{x}", "a&b", "#REF!", "é€", "🙂"]
PLAIN_NAMES = ["Other", "x.y", "_u", "A1B", "Übersicht"]

# What a formula says, and what it gives. A1 holds "v" and A2 holds 7.
FORMULAS = [
    ('="say ""hi"""', 'say "hi"'),
    ('=""""', '"'),
    ('="C:\\temp\\"', "C:\\temp\\"),
    ('="\\""\\\\"', '\\"\\\\'),
    ('="it\'s ""it\'\'s"""', "it's \"it''s\""),
    ('="a;b,c|d"&"{1;2}"', "a;b,c|d{1;2}"),
    ('="#REF!"&"S!A1"', "#REF!S!A1"),
    ('="line\none"', "line\none"),
    ('="[%ROW%]"', "[%ROW%]"),
    ('=IF(A1="""","""","\'")', "'"),
    ('=A1&"\'"&A2', "v'7"),
    ('={"a""b","c;d\\";1,2}', 'a"b'),
    ("=SUM({1,2;3,4.5})", 10.5),
    ('=INDEX({"x","it\'s";"\\","🙂"},2,1)', "\\"),
    ('=LEN("a🙂b""")', 4.0),
    ("=ROUND(AVERAGE($A$2:A2,1),1)", 4.0),
    ("=A2>0.001", True),
    ("=0.1+1234567.125+1E+20", 0.1 + 1234567.125 + 1e20),
    ("=A2%", 0.07),
    ("=1/0", 7),  # Errors as xlrd numbers them.
    ("=#N/A", 42),
    ("=#REF!", 23),
    ("=ERROR.TYPE(#DIV/0!)", 2.0),
    ('=NOSUCH("a""b")', 29),
    ('="' + "x" * 250 + '""\\' + "y" * 100 + '"', "x" * 250 + '"\\' + "y" * 100),
]

# Formulas with texts, or results, that have characters beyond U+FFFF. Of these a file holds no result.
WIDE = ['="🙂"', '="a🙂""b\\"&A1', '={"🙂","x"}', "='🙂'!A1", '="' + "x" * 253 + '🙂"']

# What the engine's own grammar takes and a workbook's does not.
NO_FORMULAS = ["=SUM(A1", '="a', '="a\\"b"', "='it\\'s'!A1", "='a'", "='a'&A1", '="Other"!A1', '="Other" !A1',
               "='Other':'x.y'!A1", '=SUM("Other":"x.y"!A1)', "='", '="', "='Gone'!A1", "=unknown"]

# Values that would like to be more than data.
HOSTILE = ['19" monitor', "C:\\temp", "it's", '"', '""', '\\"', '"&A1&"', '\\"&A1&\\"', "A1", "=A1", "A1:A2",
           "1E5", "007", "1,5", "-", "TRUE", "#REF!", "'a\"b'!A1", '",1)', '")&A1&("', "{1}", "🙂", "a\nb",
           " 5 ", "[%ROW%]", "1234567890123456", "x" * 300 + '"']


class FormulaTest(SampleTest):
    def setUp(self):
        super().setUp()
        self.path = os.path.join(self.site, "book.xls")
        self.target = os.path.join(self.site, "written.xls")
        self.gateway = Gateway(self.site).__enter__()
        self.addCleanup(self.gateway.__exit__)
        self.program = self.gateway.create("Platform.Spreadsheet")
        self.excel = self.gateway.create("Talvex.BudgetExcel")

    def call(self, number, method, *args):
        result = self.gateway.invoke(number, method, list(args))["result"]
        return result["$object"] if isinstance(result, dict) and "$object" in result else result

    @staticmethod
    def new_book():
        """The sheet "Lines", and one for each name, all with a text in A1 and a number in A2."""
        book = xlwt.Workbook()
        for name in ["Lines"] + NAMES + PLAIN_NAMES:
            sheet = book.add_sheet(name)
            sheet.write(0, 0, "v" if name == "Lines" else "of " + name)
            sheet.write(1, 0, 7)
        return book

    def opened(self):
        """The workbook's number and that of its first sheet."""
        self.new_book().save(self.path)
        book = self.call(self.program, "Open", self.path)
        return book, self.call(book, "Sheet", 1)


def quoted(name):
    return "'" + name.replace("'", "''") + "'"


class Reading(FormulaTest):
    def test_formulas_of_another_program_are_read_in_their_own_grammar(self):
        # xlwt separates by semicolons, knows no arrays and writes no unknown functions.
        beyond_xlwt = ("{", "NOSUCH", "#N/A", "=#REF!", "ERROR.TYPE", "E+20", "x" * 250)
        written = [(text, value) for text, value in FORMULAS
                   if not any(word in text for word in beyond_xlwt)]
        self.assertGreater(len(written), 8)
        book = self.new_book()
        sheet = book.get_sheet(0)
        for row, (text, _) in enumerate(written):
            # Outside of texts, where the pieces have even numbers.
            pieces = text[1:].split('"')
            pieces[::2] = [piece.replace(",", ";") for piece in pieces[::2]]
            sheet.write(row, 2, xlwt.Formula('"'.join(pieces)))
        for row, name in enumerate(NAMES + PLAIN_NAMES):
            sheet.write(row, 3, xlwt.Formula(quoted(name) + "!A1"))
        book.save(self.path)
        values, formulas = sheets(self.path)["Lines"]
        for row, (text, value) in enumerate(written, 1):
            with self.subTest(formula=text):
                self.assertEqual(formulas[row, 3], text)
                self.assertEqual(values[row, 3], {7: "#DIV/0!"}.get(value, value))
        for row, name in enumerate(NAMES + PLAIN_NAMES, 1):
            with self.subTest(sheet=name):
                expected = name if name in PLAIN_NAMES else quoted(name)
                self.assertEqual(formulas[row, 4], f"={expected}!A1")
                self.assertEqual(values[row, 4], "of " + name)

    def test_formulas_come_out_of_one_workbook_and_go_into_another_unchanged(self):
        book, sheet = self.opened()
        texts = [text for text, _ in FORMULAS] + WIDE[:4] + [f"={quoted(name)}!A1" for name in NAMES]
        for row, text in enumerate(texts, 1):
            self.call(sheet, "SetFormula", row, 3, text)
        self.call(book, "Save")
        answer = self.gateway.invoke(self.excel, "TransformExcelToXML", [self.path, EMPTY, "", "d.reed"])
        root = tree.fromstring(self.gateway.get(answer["out"]["o_oXml"]["$object"], "Xml"))
        told = {cell.get("Row"): cell.get("Formula") for cell in root.findall("WorkSheet[@Name='Lines']/Cell")
                if cell.get("Column") == "3"}
        markup = "".join(f'<v B2BVALUEPOS="D{row}" B2BVALUETYPE="formula" B2BVALUE={quoteattr(text)}/>'
                         for row, text in told.items() if "[%" not in text)
        self.assertEqual(len(told), len(texts))
        answer = self.gateway.invoke(self.excel, "TransformXMLToExcel", [
            f'<x B2BWORKSHEET="Lines">{markup}</x>', "Update", 0, False, "", "d.reed", self.path,
            self.target])
        self.assertEqual(answer["out"]["o_sError"], "")
        values, formulas = sheets(self.target)["Lines"]
        for row, text in enumerate(texts, 1):
            if "[%" not in text:
                with self.subTest(formula=text):
                    self.assertEqual((formulas[row, 3], formulas[row, 4]), (text, text))
                    self.assertEqual(values[row, 4], values[row, 3])


class Writing(FormulaTest):
    def test_formulas_come_back_as_they_went_and_give_what_they_say(self):
        book, sheet = self.opened()
        rows = FORMULAS + [(f"={quoted(name)}!A1", "of " + name) for name in NAMES if name != "🙂"]
        rows += [("=SUM('a\"b:it''s'!A2)", 14.0), ("='bang!'!A1&\"!\"&Other!A1", "of bang!!of Other"),
                 ("=SUM('a\"b'!A1:A2,'it''s'!$A:$A)", 14.0)]
        for row, (text, _) in enumerate(rows, 1):
            self.call(sheet, "SetFormula", row, 3, text)
        self.call(book, "SaveAs", self.target)
        formulas = sheets(self.target)["Lines"][1]
        lines = xlrd.open_workbook(self.target).sheet_by_index(0)
        for row, (text, value) in enumerate(rows, 1):
            with self.subTest(formula=text):
                self.assertEqual(formulas[row, 3], text)
                self.assertEqual(self.call(sheet, "Formula", row, 3), text)  # In memory as well.
                self.assertEqual(lines.cell(row - 1, 2).value, value)

    def test_the_quotes_that_a_sheets_name_needs_are_put_there(self):
        book, sheet = self.opened()
        given = {"='Other'!A1": "=Other!A1", "=Q1!A1": "='Q1'!A1", "=true!A1": "='TRUE'!A1",
                 "=SUM('Other:Übersicht'!A2)": "=SUM(Other:Übersicht!A2)",
                 "=SUM('Other:_u'!A2)": "=SUM(Other:_u!A2)"}
        for row, text in enumerate(given, 1):
            self.call(sheet, "SetFormula", row, 3, text)
        self.call(book, "SaveAs", self.target)
        self.assertEqual([self.call(sheet, "Formula", row, 3) for row in range(1, len(given) + 1)],
                         list(given.values()))

    def test_characters_beyond_the_basic_plane(self):
        book, sheet = self.opened()
        for row, text in enumerate(WIDE, 1):
            self.call(sheet, "SetFormula", row, 3, text)
        self.call(sheet, "SetFormula", 9, 3, '=LEN(C1)&"x"')
        self.call(book, "SaveAs", self.target)
        results = ["🙂", 'a🙂"b\\v', "🙂", "of 🙂", "x" * 253 + "🙂"]
        self.assertEqual([self.call(sheet, "Value", row, 3) for row in range(1, 6)], results)
        lines = xlrd.open_workbook(self.target).sheet_by_index(0)
        self.assertEqual([lines.cell(row, 2).value for row in range(5)], [""] * 5)
        self.assertEqual(lines.cell(8, 2).value, "1x")
        values, formulas = sheets(self.target)["Lines"]
        self.assertEqual([formulas[row, 3] for row in range(1, 6)], WIDE)
        self.assertEqual([values[row, 3] for row in range(1, 6)], results)

    def test_a_text_that_the_file_would_hold_in_part_is_refused(self):
        book, sheet = self.opened()
        self.call(sheet, "SetFormula", 1, 3, '="' + "x" * 254 + '🙂"')
        answer = self.gateway.ask("invoke", object=book, method="SaveAs", args=[self.target])
        self.assertEqual(answer["error"]["data"]["number"], 5)
        self.assertIn("no text of more than 255 characters", answer["error"]["message"])
        self.assertFalse(os.path.exists(self.target))

    def test_what_is_no_formula_of_a_workbook_is_refused(self):
        book, sheet = self.opened()
        for text in NO_FORMULAS:
            with self.subTest(formula=text):
                self.call(sheet, "SetFormula", 3, 3, text)
                answer = self.gateway.ask("invoke", object=book, method="Calculate", args=[])
                self.assertIn("error", answer)
                self.assertEqual(answer["error"]["data"]["number"], 5)
                self.assertIn("No formula for the cell C3: " + text, answer["error"]["message"])


class Values(FormulaTest):
    def fill(self, rows):
        """Writes a formula for each (pattern, value) into column C; the error text."""
        self.new_book().save(self.path)
        root = tree.Element("x", B2BWORKSHEET="Lines")
        for row, (pattern, value) in enumerate(rows, 1):
            cell = tree.SubElement(root, "v", B2BVALUEPOS=f"C{row}", B2BVALUETYPE="formula", B2BVALUE=pattern)
            cell.text = value
        return self.gateway.invoke(self.excel, "TransformXMLToExcel", [
            tree.tostring(root, encoding="unicode"), "Update", 0, False, "", "d.reed", self.path,
            self.target])["out"]["o_sError"]

    def check(self, rows):
        """Writes each (pattern, value) and compares what the formula gives with the third of the row."""
        self.assertEqual(self.fill([row[:2] for row in rows]), "")
        values = sheets(self.target)["Lines"][0]
        for number, row in enumerate(rows, 1):
            with self.subTest(pattern=row[0], value=row[1]):
                self.assertEqual(values[number, 3], row[2])
        xlrd.open_workbook(self.target)

    def test_a_value_is_data_whatever_it_holds(self):
        patterns = [("=[%VALUE%]", "{}"), ('="<[%VALUE%]>"', "<{}>"), ('="5\\"&[%VALUE%]', "5\\{}"),
                    ('="5"" pipe: "&[%VALUE%]', '5" pipe: {}'), ("='a\"b'!A1&[%VALUE%]", 'of a"b{}'),
                    ('=IF(A2=7, [%VALUE%] ,"")', "{}"), ('=\'a"b\'!A1&"\'[%VALUE%]"', 'of a"b\'{}')]
        self.check([(pattern, value, shown.replace("{}", value, 1))
                    for value in HOSTILE for pattern, shown in patterns])

    def test_a_number_in_plain_digits_is_a_number(self):
        numbers = ["12.5", "-7", "0", "123456789012345"]
        self.check([(pattern, value, expected) for value in numbers for pattern, expected in [
            ("=[%VALUE%]", float(value)), ("=2*[%VALUE%]", 2 * float(value)),
            ("=A2-[%VALUE%]", 7 - float(value)), ("={1,[%VALUE%]}", 1.0)]])

    def test_a_value_never_becomes_a_part_of_something_else(self):
        glued = ["=A[%VALUE%]", "=$A$[%VALUE%]", "=SUM([%VALUE%]:3)", "=SUM(2 : [%VALUE%])", "=[%VALUE%]!A1",
                 "=[%VALUE%](A2)", "=1[%VALUE%]", "=1.[%VALUE%]", "=[%VALUE%]E5", "=[%VALUE%][%VALUE%]",
                 "=[%ROW%][%VALUE%]", '="a"[%VALUE%]', '=[%VALUE%]"a"', "='[%VALUE%]'!A1",
                 "='a\"[%VALUE%]'!A1", "=A1 [%VALUE%]", "=#[%VALUE%]", "=(A1)[%VALUE%]", "=Other![%VALUE%]",
                "=1E+[%VALUE%]", "=1E-[%VALUE%]", "=A2*1.5e-[%VALUE%]"]
        for pattern in glued:
            with self.subTest(pattern=pattern):
                self.assertEqual(self.fill([(pattern, "2")]), NOT_FILLED_IN)
                self.assertFalse(os.path.exists(self.target))

    def test_a_formula_that_cannot_be_read_is_refused(self):
        self.assertEqual(self.fill([("=SUM(", "")]), NOT_WRITTEN)
        self.assertEqual(self.fill([('="a\\"b"', "")]), NOT_WRITTEN)


if __name__ == "__main__":
    unittest.main()
