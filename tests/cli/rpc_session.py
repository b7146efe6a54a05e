"""The gateway over a whole session: postings in and out of transactions, record sets, clients that go away in
the middle of something, and messages too large to be dealt with.
"""

import os
import unittest

from _gateway import Gateway
from _talvex import DONE, FAILED, SampleTest

CODE = "IT-SW-AMS"
ANCESTORS = ["IT", "COMPANY"]
DAY = {"$date": "2026-03-16"}
EMPTY = {"$empty": True}
LONGEST_LINE = 64 * 1024 * 1024


class LedgerGateway(Gateway):
    def post(self, ledger, amount):
        return self.invoke(ledger, "PostToBudget", [CODE, DAY, amount, "EUR", "Approved"])["result"]


class SessionTest(SampleTest):
    def setUp(self):
        super().setUp()
        self.before = self.totals()

    def totals(self):
        """The approved totals of all lines, by budget and first day."""
        rows = self.sql("SELECT BUDGETCODE, STARTDATE, USEDAPPROVEDAMNT FROM BUDGETLINES")
        return {(code, start): total for code, start, total in rows}

    def assert_posted(self, amount):
        """The amount was posted to this year's lines of the budget and its ancestors, and to nothing else."""
        wanted = dict(self.before)
        for code in [CODE] + ANCESTORS:
            wanted[code, "2026-01-01T00:00:00"] += amount
        self.assertEqual(self.totals(), wanted)


class Postings(SessionTest):
    def test_a_session_of_many_transactions(self):
        with LedgerGateway(self.site) as gateway:
            ledger = gateway.create("Talvex.BudgetT")
            line = gateway.invoke(ledger, "GetBudgetLine", {"iBudgetCode": CODE, "iDate": DAY})["result"]
            self.assertEqual(gateway.post(ledger, 100), line)
            self.assert_posted(100)  # Without a transaction, at once.
            gateway.result("begin")
            gateway.post(ledger, 200)
            gateway.post(ledger, {"$currency": "34.5"})
            self.assert_posted(100)
            self.assertEqual(gateway.result("end"), {"outcome": "committed"})
            self.assert_posted(334.5)
            gateway.result("begin")
            gateway.post(ledger, 1000)
            gateway.result("rollback")
            self.assert_posted(334.5)
            gateway.result("begin")
            gateway.post(ledger, 1000)
            wrong = [CODE, DAY, 1, "EUR", 9]
            gateway.error_number("invoke", object=ledger, method="PostToBudget", args=wrong)
            self.assertEqual(gateway.result("end"), {"outcome": "aborted"})
            self.assert_posted(334.5)
            gateway.result("begin")
            gateway.post(ledger, -334.5)
            self.assertEqual(gateway.result("end"), {"outcome": "committed"})
            self.assert_posted(0)
            self.assertEqual(gateway.close_input(), DONE)

    def test_a_database_that_is_not_there_is_an_error_until_it_is(self):
        store = os.path.join(self.site, "talvex.db")
        os.rename(store, store + ".away")
        with LedgerGateway(self.site) as gateway:
            ledger = gateway.create("Talvex.BudgetT")
            call = {"object": ledger, "method": "GetBudgetLine", "args": [CODE, DAY]}
            self.assertNotEqual(gateway.error_number("invoke", **call), 0)
            os.rename(store + ".away", store)
            gateway.post(ledger, 11)
        self.assert_posted(11)


class ClientsThatGoAway(SessionTest):
    def begin_and_post(self, gateway):
        gateway.result("begin")
        gateway.post(gateway.create("Talvex.BudgetT"), 200)

    def assert_rolled_back(self):
        """Nothing of the posting is there, and nothing keeps the next one out."""
        self.assert_posted(0)
        with LedgerGateway(self.site) as gateway:
            gateway.post(gateway.create("Talvex.BudgetT"), 2)
        self.assert_posted(2)

    def test_an_input_that_ends_inside_a_message_rolls_back(self):
        with LedgerGateway(self.site) as gateway:
            self.begin_and_post(gateway)
            gateway.write(b'{"jsonrpc": "2.0", "id": 9, "method": "end", "par')
            gateway.process.stdin.close()
            self.assertEqual(gateway.read()["error"]["code"], -32700)
            self.assertEqual(gateway.process.wait(timeout=60), DONE)
        self.assert_rolled_back()

    def test_an_input_that_ends_after_an_unfinished_line_runs_it(self):
        with LedgerGateway(self.site) as gateway:
            self.begin_and_post(gateway)
            gateway.write(b'{"jsonrpc": "2.0", "id": 9, "method": "end"}')
            gateway.process.stdin.close()
            self.assertEqual(gateway.read()["result"], {"outcome": "committed"})
            self.assertEqual(gateway.process.wait(timeout=60), DONE)
        self.assert_posted(200)

    def test_a_client_that_reads_no_more_is_rolled_back(self):
        with LedgerGateway(self.site) as gateway:
            self.begin_and_post(gateway)
            gateway.process.stdout.close()
            gateway.write(b'{"jsonrpc": "2.0", "id": 9, "method": "describe"}\n')
            self.assertEqual(gateway.process.wait(timeout=60), FAILED)
        self.assert_rolled_back()

    def test_a_killed_gateway_leaves_nothing_half_done(self):
        with LedgerGateway(self.site) as gateway:
            self.begin_and_post(gateway)
            gateway.process.kill()
            gateway.process.wait(timeout=60)
        self.assert_rolled_back()


class LargeMessages(SessionTest):
    def assert_refused(self, gateway, line):
        """The message is answered as an unreadable one, and the session goes on."""
        answer = gateway.send(line)
        self.assertEqual((answer["error"]["code"], answer["id"]), (-32700, None))
        self.assertLess(len(answer["error"]["message"]), 200)
        gateway.result("describe")

    def test_lines_without_end_are_not_kept(self):
        with LedgerGateway(self.site) as gateway:
            self.assert_refused(gateway, b'"' + b"x" * LONGEST_LINE + b'"')

    def test_values_without_end_do_not_fill_the_memory(self):
        message = b'{"jsonrpc": "2.0", "id": 1, "method": "begin", "params": [%s]}'
        with LedgerGateway(self.site, memory=512 * 1024 * 1024) as gateway:
            self.assert_refused(gateway, message % (b"{}," * 10000000 + b"{}"))
            self.assert_refused(gateway, message % (b'{"a":' * 1000000))
            gateway.post(gateway.create("Talvex.BudgetT"), 5)
            self.assertEqual(gateway.close_input(), DONE)
        self.assert_posted(5)

    def test_a_chain_of_objects_without_end_is_let_go(self):
        links = 200000
        note = '{"jsonrpc":"2.0","method":"%s","params":%s}\n'
        create = note % ("create", '{"class":"Platform.Dictionary"}')
        lines = [create]
        for last in range(1, links):
            add = '{"object":%d,"method":"Add","args":["x",{"$object":%d}]}' % (last + 1, last)
            lines += [create, note % ("invoke", add), note % ("release", '{"object":%d}' % last)]
        with LedgerGateway(self.site) as gateway:
            gateway.write("".join(lines).encode())
            self.assertEqual(gateway.get(links, "Count"), 1)
            self.assertEqual(gateway.result("release", object=links), {})
            self.assertEqual(gateway.close_input(), DONE)


class RecordSets(SessionTest):
    def connect(self, gateway):
        connection = gateway.create("Platform.Connection")
        gateway.invoke(connection, "Open", [f"Driver=SQLite;Database={self.site}/talvex.db"])
        return connection

    def test_rows_are_filtered_walked_and_written(self):
        with LedgerGateway(self.site) as gateway:
            connection = {"$object": self.connect(gateway)}
            rows = gateway.create("Platform.Recordset")
            gateway.invoke(rows, "Open", {"source": "SELECT * FROM BUDGET", "activeconnection": connection,
                                          "CURSOR": "static", "Lock": "Optimistic"})
            self.assertEqual([(gateway.get(rows, "RecordCount"),)], self.sql("SELECT COUNT(*) FROM BUDGET"))
            gateway.result("set", object=rows, property="Filter", value="CURRENCYCODE = 'jpy'")
            fields = gateway.get(rows, "Fields")["$object"]
            code, dimension = [gateway.invoke(fields, "Item", [name])["result"]["$object"]
                               for name in ("budgetcode", "BUDGETDIMENSION1")]
            self.assertEqual(gateway.get(code, "Value"), "MKT-JAPAN")
            gateway.result("set", object=dimension, property="Value", value="日本")
            gateway.invoke(rows, "Update", [])
            gateway.invoke(rows, "MoveNext", [])
            self.assertIs(gateway.get(rows, "EOF"), True)
            self.assertEqual(gateway.error_number("get", object=code, property="Value"), 3021)
            self.assertEqual(gateway.get(rows, "ActiveConnection"), connection)
            copy = gateway.invoke(rows, "Clone", [])["result"]["$object"]
            self.assertNotEqual(copy, rows)
            gateway.invoke(rows, "Close", [])
            self.assertEqual(gateway.error_number("invoke", object=rows, method="MoveFirst"), 3704)
        stored = self.sql("SELECT BUDGETCODE FROM BUDGET WHERE BUDGETDIMENSION1 = '日本'")
        self.assertEqual(stored, [("MKT-JAPAN",)])

    def test_statements_tell_how_many_rows_and_what_went_wrong(self):
        with LedgerGateway(self.site) as gateway:
            connection = self.connect(gateway)
            count = self.sql("SELECT COUNT(*) FROM BUDGET")[0][0]
            update = {"CommandText": "UPDATE BUDGET SET USERID = NULL", "RecordsAffected": EMPTY}
            answer = gateway.invoke(connection, "Execute", update)
            self.assertEqual(answer["out"], {"RecordsAffected": count})
            self.assertEqual(gateway.get(answer["result"]["$object"], "State"), 0)
            duplicate = ["INSERT INTO BUDGET (BUDGETCODE) SELECT BUDGETCODE FROM BUDGET"]
            number = gateway.error_number("invoke", object=connection, method="Execute", args=duplicate)
            self.assertEqual(number, -2147217873)
            errors = gateway.get(connection, "Errors")["$collection"]
            self.assertEqual([key for key, _ in errors], [None])
            self.assertEqual(gateway.get(errors[0][1]["$object"], "NativeError"), 2627)


class Descriptions(SessionTest):
    def test_every_class_describes_its_members(self):
        with LedgerGateway(self.site) as gateway:
            names = [described["class"] for described in gateway.result("describe")["classes"]]
            self.assertLessEqual({"Talvex.BudgetT", "Platform.Connection", "Platform.Recordset"}, set(names))
            for name in names:
                described = gateway.result("describe", **{"class": name.upper()})
                self.assertEqual(described["class"], name)
                members = described["methods"] + described["properties"]
                self.assertTrue(members, name)
                self.assertTrue(all(member["documentation"] for member in members), name)

    def test_enumerations_are_told_also_where_an_argument_may_be_left_out(self):
        with LedgerGateway(self.site) as gateway:
            described = gateway.result("describe", **{"class": "Platform.Recordset"})
            opened = [method for method in described["methods"] if method["name"] == "Open"][0]
            lock = [parameter for parameter in opened["parameters"] if parameter["name"] == "Lock"][0]
            self.assertIs(lock["optional"], True)
            self.assertIn({"name": "Optimistic", "number": 3}, lock["enumeration"])


if __name__ == "__main__":
    unittest.main()
