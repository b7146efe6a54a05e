"""The gateway: JSON-RPC on standard input and output, as a program in any language sees it."""

import json
import os
import subprocess
import unittest

from _talvex import NOW, PROGRAM, SampleTest, environment

LINE = {"$date": "2026-03-16"}
POSTING = ["IT-HW-AMS", LINE, 250, "EUR", "Approved"]


class GatewayTest(SampleTest):
    """Each test talks to a gateway of its own."""

    def setUp(self):
        super().setUp()
        self.gateway = subprocess.Popen([PROGRAM, "--config", self.site, "--now", NOW, "rpc"],
                                        env=environment(), stdin=subprocess.PIPE, stdout=subprocess.PIPE)

    def tearDown(self):
        self.gateway.communicate(timeout=60)
        self.assertEqual(self.gateway.returncode, 0,
                         "the gateway must outlive everything that a client sends")
        super().tearDown()

    def send(self, line):
        """The answer to one raw line."""
        self.gateway.stdin.write(line + b"\n")
        self.gateway.stdin.flush()
        return json.loads(self.gateway.stdout.readline())

    def request(self, method, /, **params):
        return self.send(json.dumps({"jsonrpc": "2.0", "id": 7, "method": method, "params": params}).encode())

    def result(self, method, /, **params):
        answer = self.request(method, **params)
        self.assertEqual((answer["jsonrpc"], answer["id"]), ("2.0", 7))
        self.assertIn("result", answer, answer)
        return answer["result"]

    def error(self, method, /, **params):
        return self.request(method, **params)["error"]

    def create(self, name):
        return self.result("create", **{"class": name})["object"]

    def approved(self):
        return self.sql("SELECT USEDAPPROVEDAMNT FROM BUDGETLINES WHERE ID IN (1, 2, 5) ORDER BY ID")


class Transactions(GatewayTest):
    def test_a_posting_between_begin_and_end_is_kept(self):
        before = self.approved()
        budgets = self.create("Talvex.BudgetT")
        self.assertEqual(self.result("begin"), {})
        posted = self.result("invoke", object=budgets, method="PostToBudget", args=POSTING)
        self.assertEqual(posted, {"result": 5, "out": {}})
        self.assertEqual(self.approved(), before)
        self.assertEqual(self.result("end"), {"outcome": "committed"})
        self.assertEqual(self.approved(), [(total + 250,) for (total,) in before])

    def test_a_rolled_back_posting_is_gone(self):
        before = self.approved()
        budgets = self.create("Talvex.BudgetT")
        self.result("begin")
        self.result("invoke", object=budgets, method="PostToBudget", args=POSTING)
        self.assertEqual(self.result("rollback"), {})
        self.assertEqual(self.approved(), before)

    def test_one_refused_posting_aborts_the_transaction(self):
        before = self.approved()
        budgets = self.create("Talvex.BudgetT")
        self.result("begin")
        self.result("invoke", object=budgets, method="PostToBudget", args=POSTING)
        refused = self.error("invoke", object=budgets, method="PostToBudget", args=POSTING[:4] + [6])
        self.assertEqual((refused["code"], refused["data"]["number"]), (-32000, -2147220603))
        self.assertEqual(refused["data"]["source"], "Talvex.PostToBudgetStructure")
        self.assertEqual(refused["message"], refused["data"]["description"])
        self.assertEqual(self.result("end"), {"outcome": "aborted"})
        self.assertEqual(self.approved(), before)
        self.assertEqual(self.mails(), [])

    def test_the_end_of_input_rolls_back(self):
        before = self.approved()
        budgets = self.create("Talvex.BudgetT")
        self.result("begin")
        self.result("invoke", object=budgets, method="PostToBudget", args=POSTING)
        self.gateway.communicate(timeout=60)
        self.assertEqual(self.approved(), before)

    def test_a_client_that_dies_leaves_nothing_behind(self):
        before = self.approved()
        budgets = self.create("Talvex.BudgetT")
        self.result("begin")
        self.result("invoke", object=budgets, method="PostToBudget", args=POSTING)
        self.gateway.kill()
        self.gateway.wait(timeout=60)
        self.assertEqual(self.approved(), before)
        self.gateway.returncode = 0  # It was killed on purpose.

    def test_begin_and_end_come_in_pairs(self):
        self.assertIn("no transaction is open", self.error("end")["message"])
        self.assertIn("no transaction is open", self.error("rollback")["message"])
        self.result("begin")
        self.assertIn("a transaction is open already", self.error("begin")["message"])
        self.assertEqual(self.result("end"), {"outcome": "committed"})


class Calls(GatewayTest):
    def test_arguments_go_by_position_or_by_name_without_case(self):
        budgets = self.create("talvex.budgett")
        by_position = self.result("invoke", object=budgets, method="getbudgetline", args=["IT-HW-AMS", LINE])
        by_name = self.result("invoke", object=budgets, method="GetBudgetLine",
                              args={"IDATE": LINE, "ibudgetcode": "IT-HW-AMS"})
        self.assertEqual(by_position, {"result": 5, "out": {"iDate": LINE}})
        self.assertEqual(by_name, by_position)

    def test_a_null_result_is_null(self):
        budgets = self.create("Talvex.BudgetT")
        answer = self.result("invoke", object=budgets, method="GetBudgetLine", args=["NONE", LINE])
        self.assertIsNone(answer["result"])

    def test_what_is_wrong_with_a_call_is_said(self):
        budgets = self.create("Talvex.BudgetT")
        post = ("PostToBudget",)
        for args, method, number in (
            (POSTING[:4], *post, 449),
            (POSTING + [1], *post, 450),
            (["IT-HW-AMS", LINE, "ten", "EUR", 1], *post, 13),
            (["IT-HW-AMS", "no day", 1, "EUR", 1], *post, 13),
            (["IT-HW-AMS", LINE, None, "EUR", 1], *post, 94),
            (["IT-HW-AMS", LINE, [1], "EUR", 1], *post, 13),
            (["IT-HW-AMS", LINE, 1e300, "EUR", 1], *post, 6),
            (["IT-HW-AMS", LINE, 1, "EUR", "Postponed"], *post, 13),
            (["IT-HW-AMS", LINE, 1, "CHF", 1], *post, 5),
            ([], "NoSuchMethod", 438),
            ([{"$object": budgets}], "SetBudgetAvailable", 13),
            ([{"$empty": True}], "SetBudgetAvailable", 91),
        ):
            with self.subTest(args=args, method=method):
                before = self.approved()
                error = self.error("invoke", object=budgets, method=method, args=args)
                self.assertEqual((error["code"], error["data"]["number"]), (-32000, number), error)
                self.assertEqual(self.approved(), before)

    def test_an_unknown_class_is_an_error_that_names_it(self):
        error = self.error("create", **{"class": "No.Such"})
        self.assertEqual((error["code"], error["data"]["number"]), (-32000, 429))
        self.assertIn("No.Such", error["message"])

    def test_a_released_object_is_gone(self):
        budgets = self.create("Talvex.BudgetT")
        self.assertEqual(self.result("release", object=budgets), {})
        self.assertEqual(self.error("invoke", object=budgets, method="RepostAllBudgets")["code"], -32602)
        self.assertEqual(self.error("release", object=budgets)["code"], -32602)

    def test_describe_tells_members_directions_and_enumerations(self):
        classes = json.dumps(self.result("describe"))
        for name in ("Talvex.BudgetT", "Platform.Dictionary", "Platform.Recordset", "Mirelo.Currency"):
            self.assertIn(name, classes)
        described = json.dumps(self.result("describe", **{"class": "Talvex.BudgetT"}))
        for word in ("PostToBudget", "iBudgetCode", "TalvexType", "NotYetApproved", "RepostAllBudgets"):
            self.assertIn(word, described)


class Values(GatewayTest):
    def test_every_kind_of_value_comes_back_as_it_went_in(self):
        dictionary = self.create("Platform.Dictionary")
        for number, value in enumerate((
            None, {"$empty": True}, True, False, 0, -2147483648, 2147483647, 2147483648.0, 0.1, 1e-300, 1.5,
            "", "Büro 東京", "a\"b\\c\r\n\t", LINE, {"$date": "2026-11-21T14:30:05"},
            {"$currency": "12.3400"}, {"$currency": "-0.0001"},
            {"$currency": "922337203685477.5807"}, [], [1, [None, "x"], {"$currency": "1.0000"}],
            {"$dictionary": [["b", 1], ["a", {"$dictionary": []}]]}, {"$collection": [["k", 1], [None,
                                                                                                 LINE]]},
            {"$object": dictionary},  # It then holds itself, and can only be named.
        )):
            with self.subTest(value=value):
                key = str(number)
                self.result("invoke", object=dictionary, method="Add", args=[key, value])
                got = self.result("invoke", object=dictionary, method="Item", args=[key])["result"]
                self.assertEqual((got, type(got)), (value, type(value)))

    def test_what_is_no_value_is_refused_by_name(self):
        dictionary = self.create("Platform.Dictionary")
        for value, word in (
            ({"$date": "2026-02-30"}, "2026-02-30"), ({"$date": "3/15/2026"}, "3/15/2026"),
            ({"$currency": "1.00001"}, "1.00001"), ({"$currency": "922337203685477.5808"}, "5808"),
            ({"$currency": 1}, "1"), ({"$object": 99}, "99"),
            ({"$what": 1}, "$what"), ({}, "{}"), ({"a": 1}, "a"), ({"$dictionary": [["a", 1], ["a", 2]]},
                                                                   "a"),
            ({"$empty": False}, "false"),
        ):
            with self.subTest(value=value):
                error = self.error("invoke", object=dictionary, method="Add", args=["k", value])
                self.assertEqual(error["code"], -32602)
                self.assertIn(word, error["message"])
        self.assertEqual(self.result("get", object=dictionary, property="Count"), {"value": 0})

    def test_a_record_set_is_opened_walked_changed_and_passed_on(self):
        connection = self.create("Platform.Connection")
        self.result("invoke", object=connection, method="Open",
                    args=["Driver=SQLite;Database=" + self.site + "/talvex.db"])
        lines = self.create("Platform.Recordset")
        self.result("invoke", object=lines, method="Open",
                    args=["SELECT * FROM BUDGETLINES WHERE ID=5", {"$object": connection}, 1, 3, 1])
        self.assertEqual(self.result("get", object=lines, property="EOF"), {"value": False})
        self.assertEqual(self.result("get", object=lines, property="RecordCount"), {"value": 1})
        fields = self.result("get", object=lines, property="Fields")["value"]["$object"]
        amount = self.result("invoke", object=fields, method="Item", args=["budgetamnt"])["result"]["$object"]
        self.assertEqual(self.result("get", object=amount, property="Value"), {"value": 60000.0})
        self.result("set", object=amount, property="Value", value=70000)
        budgets = self.create("Talvex.BudgetT")
        passed = self.result("invoke", object=budgets, method="SetBudgetAvailable", args=[{"$object": lines}])
        self.assertEqual(passed, {"result": {"$empty": True}, "out": {"iRS": {"$object": lines}}})
        self.result("invoke", object=lines, method="Update", args=[])
        self.assertEqual(self.sql("SELECT BUDGETAMNT, AVAILABLEAMNT FROM BUDGETLINES WHERE ID = 5"),
                         [(70000.0, 40000.0)])


class Protocol(GatewayTest):
    def test_malformed_messages_get_the_standard_codes(self):
        for line, code in (
            (b"{", -32700), (b"nonsense", -32700), (b"\xff\xfe", -32700),
            (b'{"jsonrpc":"2.0","id":1,"method":"get","params":1e999}', -32700),
            (b"[" * 100000, -32700), (b"[]", -32600), (b"1", -32600), (b'{"id":1}', -32600),
            (b'{"jsonrpc":"1.0","id":1,"method":"begin"}', -32600),
            (b'{"jsonrpc":"2.0","id":1,"method":5}', -32600),
            (b'{"jsonrpc":"2.0","id":1,"method":"jump"}', -32601),
            (b'{"jsonrpc":"2.0","id":1,"method":"create"}', -32602),
            (b'{"jsonrpc":"2.0","id":1,"method":"create","params":{"class":1}}', -32602),
            (b'{"jsonrpc":"2.0","id":1,"method":"create","params":{"class":"x","extra":1}}', -32602),
        ):
            with self.subTest(line=line[:60]):
                self.assertEqual(self.send(line)["error"]["code"], code)
        self.assertEqual(self.result("begin"), {})

    def test_a_notification_gets_no_answer(self):
        self.gateway.stdin.write(b'{"jsonrpc":"2.0","method":"begin"}\n')
        self.assertEqual(self.result("end"), {"outcome": "committed"})

    def test_a_batch_is_answered_as_an_array(self):
        answers = self.send(b'[{"jsonrpc":"2.0","id":"a","method":"begin"},'
                            b'{"jsonrpc":"2.0","method":"rollback"},1,'
                            b'{"jsonrpc":"2.0","id":null,"method":"begin"}]')
        self.assertEqual([answer.get("id") for answer in answers], ["a", None, None])
        self.assertEqual([("result" in answer) for answer in answers], [True, False, True])

    def test_blank_lines_and_carriage_returns_do_not_matter(self):
        self.gateway.stdin.write(b"\n\r\n   \n")
        self.assertEqual(self.send(b'{"jsonrpc":"2.0","id":1,"method":"begin"}\r')["result"], {})

    def test_texts_of_any_length_pass(self):
        dictionary = self.create("Platform.Dictionary")
        long = "x" * 5_000_000
        self.result("invoke", object=dictionary, method="Add", args=["k", long])
        self.assertEqual(self.result("invoke", object=dictionary, method="Item", args=["k"])["result"], long)

    def test_the_database_is_opened_only_when_a_call_needs_it(self):
        self.result("describe")
        self.create("Talvex.BudgetT")
        files = f"/proc/{self.gateway.pid}/fd"
        opened = [os.readlink(f"{files}/{file}") for file in os.listdir(files)]
        self.assertFalse([name for name in opened if "talvex.db" in name])


if __name__ == "__main__":
    unittest.main()
