#!/usr/bin/env python3
"""Posts an amount to a budget from another language, through the gateway.

    examples/post_through_gateway.py build/release/bin/talvex build/sample IT-HW-AMS 250
"""

import json
import subprocess
import sys


class Gateway:
    """One `talvex rpc` process: a message a line in, an answer a line out."""

    def __init__(self, program, installation):
        self.process = subprocess.Popen([program, "rpc", "--config", installation],
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, encoding="utf-8")

    def call(self, method, /, **params):
        """The result of a method; an error of the component ends the program with its description."""
        print(json.dumps({"jsonrpc": "2.0", "id": 1, "method": method, "params": params}),
              file=self.process.stdin, flush=True)
        answer = json.loads(self.process.stdout.readline())
        if "error" in answer:
            sys.exit(answer["error"]["message"])
        return answer["result"]


def main():
    program, installation, budget, amount = sys.argv[1:]
    gateway = Gateway(program, installation)
    ledger = gateway.call("create", **{"class": "Talvex.BudgetT"})["object"]

    # Between begin and end everything is kept together or undone together.
    gateway.call("begin")
    posted = gateway.call("invoke", object=ledger, method="PostToBudget",
                          args={"iBudgetCode": budget, "iDate": {"$date": "2026-03-16"}, "iAmount": float(amount),
                                "iCurrencyCode": "EUR", "iBudgetType": "Approved"})
    outcome = gateway.call("end")["outcome"]
    print(f"line {posted['result']} of {budget}: {outcome}")


if __name__ == "__main__":
    main()
