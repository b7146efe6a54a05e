"""The ledger's operations through the gateway: by-reference arguments, collections, arrays, dictionaries."""

import unittest

from _gateway import Gateway
from _talvex import SampleTest

EMPTY = {"$empty": True}
DAY = {"$date": "2026-03-16"}
SHARED = {"RequisitionChargeType": "SOFTWARE", "RequisitionRequisitionerOffice": "Amsterdam",
          "RequisitionDepartment": "x", "RequisitionProject": "ERP"}


class Ledger(SampleTest):
    def setUp(self):
        super().setUp()
        self.gateway = self.enterContext(Gateway(self.site))
        self.ledger = self.gateway.create("Talvex.BudgetT")

    def call(self, method, *args):
        return self.gateway.invoke(self.ledger, method, list(args))

    def test_a_check_hands_its_dictionary_back(self):
        answer = self.call("CheckBudgetStructure", "IT-HW-AMS", DAY, 40000, "EUR", EMPTY)
        self.assertEqual(answer["out"]["iBudgetHolders"],
                         {"$dictionary": [["p.deboer", "IT-HW-AMS"], ["d.reed", "COMPANY"]]})
        answer = self.call("SimCheckBudgetStructure", "IT-HW-AMS", DAY, 40000, "EUR",
                           {"$dictionary": [["d.reed", "mine"]]})
        self.assertEqual(answer["out"]["iBudgetHolders"], {"$dictionary": [
            ["d.reed", "mine"],
            ["p.deboer", ["IT-HW-AMS", {"$currency": "30000.0000"}, {"$currency": "40000.0000"}]]]})

    def test_a_selection_takes_a_collection(self):
        properties = {"$collection": [[name, value] for name, value in SHARED.items()]}
        answer = self.call("GetBudget", properties, "")
        self.assertEqual(answer["out"]["oBudgetCode"], "IT-ERP-AMS")
        answer = self.call("GetRelevantBudget", properties, "Amsterdam", "SOFTWARE")
        self.assertEqual(answer["result"], {"$dictionary": [["IT-ERP-AMS", "IT-ERP-AMS"],
                                                            ["IT-SW-AMS", "IT-SW-AMS"]]})

    def test_a_collection_made_before_is_passed_as_an_object(self):
        properties = self.gateway.create("Platform.Collection")
        for name, value in SHARED.items():
            self.gateway.invoke(properties, "Add", [value, name])
        answer = self.call("GetBudget", {"$object": properties}, "")
        self.assertEqual(answer["out"], {"iDBLinks": {"$object": properties}, "oBudgetCode": "IT-ERP-AMS"})

    def test_a_new_budget_hands_its_values_back(self):
        answer = self.call("Insert", "NEW", ["CURRENCYCODE", "USERID", "BUDGETWARNING"], ["EUR", "", 12.3456])
        self.assertEqual(answer["out"]["iValues"], ["EUR", None, 12.35])
        self.call("InsertLine", "NEW", 0, ["STARTDATE", "BUDGETAMNT"], [DAY, 10])
        lines = self.sql("SELECT STARTDATE, AVAILABLEAMNT FROM BUDGETLINES WHERE BUDGETCODE = 'NEW'")
        self.assertEqual(lines, [("2026-03-16T00:00:00", 10)])
        self.assertEqual(self.gateway.error_number(
            "invoke", object=self.ledger, method="Update", args=["NEW", ["USERID"], ["nobody"]]), -2147221497)
        self.call("Delete", "NEW")
        self.assertEqual(self.sql("SELECT * FROM BUDGET WHERE BUDGETCODE = 'NEW'"), [])

    def test_charge_lines_are_arrays(self):
        fields = ["REQUISITIONLINEID", "REQUISITIONLINENUMBER", "ADMINOFFICE", "BUDGETCODE"]
        self.assertEqual(self.call("createchargeline", fields, [4711, 1, "Lyon", "MKT-JAPAN"])["result"], 1)
        self.call("UpdateChargeline", 4711, 1, 2, [EMPTY, "Lyon"], [EMPTY, "MKT-EVENTS"], [EMPTY, 100])
        self.assertEqual(self.sql("SELECT BUDGETCODE FROM CHARGELINES WHERE REQUISITIONLINEID = 4711"),
                         [("MKT-EVENTS",)])

    def test_references_are_asked_for_by_the_interface(self):
        self.assertTrue(self.call("IReferentialIntegrity_Exists", ["USERID"], ["p.deboer"])["result"])
        self.assertTrue(self.call("IReferentialIntegrity_BeforeDelete", "USER", [], [])["result"])
        checker = self.gateway.create("Corvane.ReferentialChecker")
        allowed = self.gateway.invoke(checker, "MayDelete", ["CHARGETYPE", ["CHARGETYPECODE"], ["SOFTWARE"]])
        self.assertFalse(allowed["result"])

    def test_loops_are_a_dictionary(self):
        self.sql("INSERT INTO BUDGETRELATIONS (PARENTBUDGET, CHILDBUDGET) VALUES ('IT-HW-AMS', 'IT-HW-AMS')")
        path = "@@@IT-HW-AMS@@@IT-HW-AMS@@@IT-HW-AMS"
        self.assertEqual(self.call("CheckClosedLoop", "A", "Z")["result"], {"$dictionary": [[path, path]]})


if __name__ == "__main__":
    unittest.main()
