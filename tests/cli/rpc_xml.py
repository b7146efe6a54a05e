"""XML documents and their nodes through the gateway, and the XML helpers of the classes."""

import os
import unittest

from _talvex import SampleTest
from rpc_gateway import GatewayTest

EMPTY = {"$empty": True}


class XmlTest(GatewayTest):
    def invoke(self, target, method, *args):
        return self.result("invoke", object=target, method=method, args=list(args))

    def get(self, target, name):
        return self.result("get", object=target, property=name)["value"]

    def document(self, text):
        made = self.create("Platform.XmlDocument")
        self.assertEqual(self.invoke(made, "LoadXml", text), {"result": True, "out": {}})
        return made


class Documents(XmlTest):
    def test_a_document_is_read_and_selected_from(self):
        document = self.document("<a k='v'><b>1</b><b>é</b></a>")
        self.assertEqual(self.get(document, "Xml"), '<a k="v"><b>1</b><b>é</b></a>')
        root = self.get(document, "DocumentElement")["$object"]
        self.assertEqual([self.get(root, name) for name in ("Name", "Text")], ["a", "1é"])
        self.assertEqual(self.invoke(root, "Attribute", "k")["result"], "v")
        nodes = self.invoke(document, "SelectNodes", "//b")["result"]["$object"]
        self.assertEqual(self.get(nodes, "Count"), 2)
        second = self.invoke(nodes, "Item", 1)["result"]["$object"]
        self.assertEqual(self.get(second, "Xml"), "<b>é</b>")
        self.assertEqual(self.invoke(nodes, "Item", 2)["result"], EMPTY)
        self.assertEqual(self.invoke(document, "SelectSingleNode", "//c")["result"], EMPTY)
        error = self.error("invoke", object=document, method="SelectNodes", args=["//b["])
        self.assertEqual(error["data"]["number"], -2147467259)

    def test_a_malformed_text_says_why(self):
        document = self.create("Platform.XmlDocument")
        self.assertEqual(self.get(document, "DocumentElement"), EMPTY)
        self.assertEqual(self.invoke(document, "LoadXml", "<a>\n<b></a>")["result"], False)
        parse_error = self.get(document, "ParseError")["$object"]
        self.assertNotEqual(self.get(parse_error, "ErrorCode"), 0)
        self.assertIn("tag mismatch", self.get(parse_error, "Reason"))
        self.assertEqual(self.get(parse_error, "Line"), 2)

    def test_a_file_is_loaded(self):
        path = os.path.join(self.site, "siteconfiguration.xml")
        document = self.create("Platform.XmlDocument")
        self.assertEqual(self.invoke(document, "Load", path)["result"], True)
        self.assertEqual(self.invoke(document, "Load", path + ".missing")["result"], False)

    def test_a_node_outlives_its_document(self):
        document = self.document("<a><b>1</b></a>")
        node = self.invoke(document, "SelectSingleNode", "//b")["result"]["$object"]
        self.invoke(document, "LoadXml", "<other/>")
        self.result("release", object=document)
        self.assertEqual(self.get(node, "Text"), "1")

    def test_the_class_describes_itself(self):
        described = self.result("describe", **{"class": "Platform.XmlDocument"})
        self.assertEqual([method["name"] for method in described["methods"]],
                         ["LoadXml", "Load", "SelectSingleNode", "SelectNodes"])
        self.assertEqual([value["name"] for value in described["properties"]],
                         ["Xml", "ParseError", "DocumentElement"])


class Values(XmlTest):
    def test_a_document_is_written_as_its_text(self):
        budget = self.create("Talvex.Budget")
        for text, value in (("<a><b> x </b></a>", " x "),
                            ("<a><b>1</b><b>2</b></a>", ""),
                            ("<a><b>1</b>", "")):
            with self.subTest(text=text):
                answer = self.invoke(budget, "GetXMLTagValue", {"$xml": text}, "b")
                self.assertEqual(answer, {"result": value, "out": {}})

    def test_a_node_is_written_with_the_expression_that_selects_it(self):
        collection = self.create("Platform.Collection")
        self.invoke(collection, "Add", {"$xml": "<a><b k='1'/><b/></a>", "$node": "//b"})
        node = self.invoke(collection, "Item", 1)["result"]["$object"]
        self.assertEqual(self.get(node, "Xml"), '<b k="1"/>')

    def test_what_is_no_such_value_is_refused(self):
        collection = self.create("Platform.Collection")
        for value, words in (
            ({"$xml": "<a/>", "$node": "//b"}, "there is no node"),
            ({"$xml": "<a/>", "$node": "//b["}, "XPath expression"),
            ({"$xml": "<a>", "$node": "/a"}, "no XML document"),
            ({"$xml": 1}, "a text is wanted"),
            ({"$xml": "<a/>", "$node": 1}, "a text is wanted"),
            ({"$xml": None, "$node": "/a"}, "a text is wanted"),
            ({"$node": "/a"}, "no form of value"),
            ({"$xml": "<a/>", "other": 1}, "no value is written"),
        ):
            with self.subTest(value=value):
                error = self.error("invoke", object=collection, method="Add", args=[value])
                self.assertEqual(error["code"], -32602, error)
                self.assertIn(words, error["message"])
        self.assertEqual(self.get(collection, "Count"), 0)

    def test_a_hostile_text_is_a_document_with_a_parse_error(self):
        excel = self.create("Talvex.BudgetExcel")
        for text in ("<!DOCTYPE a [<!ENTITY x SYSTEM 'file:///etc/passwd'>]><a>&x;</a>",
                     "<!DOCTYPE a SYSTEM 'http://localhost:1/a.dtd'><a>1</a>",
                     "<a>" * 100000):
            with self.subTest(text=text[:60]):
                answer = self.invoke(excel, "ExecuteXSLPattern", {"$xml": text}, "//a")
                self.assertEqual(answer["result"], "")


class Helpers(XmlTest):
    def test_a_document_is_built_node_by_node(self):
        budget = self.create("Talvex.Budget")
        document = self.document("<Budgets/>")
        root = self.get(document, "DocumentElement")
        this = {"$object": document}
        added = self.invoke(budget, "AddXMLNode", this, root, "Budget", "   ")
        self.assertEqual(added["out"]["io_oDOMXML"], this)
        self.assertEqual(added["out"]["io_oParent"], root)
        self.invoke(budget, "AddXMLNode", this, added["result"], "Code", " A ")
        self.invoke(budget, "AddXMLNode", this, root, "Budget", "")
        set_one = self.invoke(budget, "AddXMLAttribute", this, root, "n", " 12 ", "")
        self.assertEqual(set_one["out"]["o_sError"], "")
        self.assertEqual(self.get(set_one["result"]["$object"], "Text"), "12")
        self.assertEqual(self.get(document, "Xml"),
                         '<Budgets n="12"><Budget><Code>A</Code></Budget><Budget/></Budgets>')

    def test_the_ways_to_fail(self):
        budget, excel = self.create("Talvex.Budget"), self.create("Talvex.BudgetExcel")
        document = self.document("<a><b> x </b></a>")
        this, root = {"$object": document}, self.get(document, "DocumentElement")
        error = self.error("invoke", object=budget, method="AddXMLNode", args=[this, root, "1", "x"])
        self.assertEqual((error["data"]["number"], error["data"]["source"]), (5, "Talvex.Budget.AddXMLNode"))
        answer = self.invoke(budget, "AddXMLAttribute", this, root, "1", "x", "first")
        self.assertEqual(answer["result"], EMPTY)
        self.assertEqual(answer["out"]["o_sError"], "first\r\nInvalid procedure call: '1' is no name in XML-")
        error = self.error("invoke", object=budget, method="GetXMLTagValue", args=[EMPTY, "b"])
        self.assertEqual((error["data"]["number"], error["message"]), (91, "Object not set: the document"))
        for pattern, text in (("//b", "x"), ("a/b", "x"), ("a/*", "x"), ("b", ""), ("//b[", ""), ("", "")):
            self.assertEqual(self.invoke(excel, "ExecuteXSLPattern", this, pattern)["result"], text)
        error = self.error("invoke", object=excel, method="ExecuteXSLPattern", args=[EMPTY, "//b"])
        self.assertIn("METHOD: Talvex.BudgetExcel.ExecuteXSLPattern", error["message"])
        all_nodes = "ExecuteXSLPatternReturnAllNodes"
        self.assertEqual(self.invoke(excel, all_nodes, this, "//b[")["result"], EMPTY)
        for pattern in ("//b", "a/b", "a/*"):
            nodes = self.invoke(excel, all_nodes, this, pattern)["result"]["$object"]
            self.assertEqual(self.get(nodes, "Count"), 1)
            nodes = self.invoke(document, "SelectNodes", pattern)["result"]["$object"]
            self.assertEqual(self.get(nodes, "Count"), 1)


class CommandLine(SampleTest):
    def test_a_document_is_an_argument_on_the_command_line(self):
        answer = self.ask("call", "Talvex.Budget", "GetXMLTagValue",
                          'i_oXMLDOM={"$xml": "<a><b>1</b></a>"}', "i_sTagName=b")
        self.assertEqual(answer["result"], "1")


if __name__ == "__main__":
    unittest.main()
