"""What a caller or a document names may be anything that has a name: only ordinary files are read, and not
without end. A read that waited, or that went on for ever, would never let the test come to its end."""

import os
import shutil
import socket
import tempfile
import unittest

from _gateway import Gateway
from _talvex import FAILED, SampleTest, run

SCHEMA = ('<?xml version="1.0"?><xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema">'
          '<xs:element name="a"/></xs:schema>')
LARGEST = 100_000_000


class HostileFiles(SampleTest):
    def setUp(self):
        super().setUp()
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.names = {name: os.path.join(folder.name, name) for name in ("pipe", "socket", "folder", "large")}
        os.mkfifo(self.names["pipe"])
        bound = socket.socket(socket.AF_UNIX)
        self.addCleanup(bound.close)
        bound.bind(self.names["socket"])
        os.mkdir(self.names["folder"])
        with open(self.names["large"], "wb") as file:
            file.truncate(LARGEST + 1)
        self.reasons = {"/dev/zero": "it is no ordinary file",
                        self.names["pipe"]: "it is no ordinary file",
                        self.names["socket"]: "No such device or address",
                        self.names["folder"]: "Is a directory",
                        self.names["large"]: "it is larger than 100000000 bytes"}

    def test_documents_and_schemas(self):
        with Gateway(self.site, memory=2 << 30) as gateway:
            for path, reason in self.reasons.items():
                naming = ('<a xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" '
                          f'xsi:noNamespaceSchemaLocation="{path}"/>')
                for method, argument, what in (("Load", path, "The document"),
                                               ("LoadXml", naming, "The schema")):
                    with self.subTest(path=path, method=method):
                        document = gateway.create("Platform.XmlDocument")
                        self.assertIs(gateway.invoke(document, method, [argument])["result"], False)
                        error = gateway.get(document, "ParseError")["$object"]
                        told = gateway.get(error, "Reason")
                        self.assertIn(what + " cannot be read", told)
                        self.assertIn(path, told)
                        self.assertIn(reason, told)
            schema = os.path.join(self.site, "schema.xsd")
            with open(schema, "w", encoding="utf-8") as file:
                file.write(SCHEMA)
            document = gateway.create("Platform.XmlDocument")
            self.assertIs(gateway.invoke(document, "Load", [schema])["result"], True)

    def test_the_configuration(self):
        file = os.path.join(self.site, "siteconfiguration.xml")
        for path, reason in self.reasons.items():
            os.remove(file)
            os.symlink(path, file)
            with self.subTest(path=path):
                ran = run("--config", self.site, "budgets")
                self.assertEqual(ran.returncode, FAILED)
                self.assertIn(reason, ran.stderr)

    def test_the_base_of_a_workbook(self):
        template = os.path.join(self.site, "talvex", "XLT", "Budgets_Export.XLT")
        with Gateway(self.site) as gateway:
            program = gateway.create("Platform.Spreadsheet")
            for path in self.reasons:
                with self.subTest(path=path):
                    answer = gateway.ask("invoke", object=program, method="Open", args=[path])
                    self.assertIn(answer["error"]["data"]["number"], (7, 75))
            book = gateway.invoke(program, "Open", [template])["result"]["$object"]
            os.remove(template)
            os.mkfifo(template)
            target = os.path.join(self.site, "copy.xls")
            answer = gateway.ask("invoke", object=book, method="SaveAs", args=[target])
            self.assertEqual(answer["error"]["data"]["number"], 75)
            self.assertFalse(os.path.exists(target))


class Modes(SampleTest):
    def test_a_saved_workbook_is_as_open_as_it_was(self):
        path = os.path.join(self.site, "book.xls")
        shutil.copyfile(os.path.join(self.site, "talvex", "XLT", "Budgets_Export.XLT"), path)
        with Gateway(self.site) as gateway:
            program = gateway.create("Platform.Spreadsheet")
            for mode in (0o600, 0o640, 0o664):
                with self.subTest(mode=oct(mode)):
                    os.chmod(path, mode)
                    book = gateway.invoke(program, "Open", [path])["result"]["$object"]
                    sheet = gateway.invoke(book, "Sheet", [1])["result"]["$object"]
                    gateway.invoke(sheet, "SetValue", [1, 1, "changed"])
                    gateway.invoke(book, "Save", [])
                    self.assertEqual(os.stat(path).st_mode & 0o7777, mode)
                    gateway.invoke(sheet, "SetValue", [1, 1, "again"])
                    gateway.invoke(book, "SaveAs", [path, True])
                    self.assertEqual(os.stat(path).st_mode & 0o7777, mode)


if __name__ == "__main__":
    unittest.main()
