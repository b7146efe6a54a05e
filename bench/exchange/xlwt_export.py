#!/usr/bin/python3
"""Writes the tables of an installation to the three sheets of an export, by python3-xlwt: for orientation.

xlwt_export.py SITE TARGET
"""

import datetime
import sqlite3
import sys

import xlwt

DATE = xlwt.easyxf(num_format_str="yyyy-mm-dd")
AMOUNT = xlwt.easyxf(num_format_str="#,##0.00;[RED]-#,##0.00")
SHEETS = (
    ("Budgets", ("Budget", "Type", "Currency", "Office", "Charge type", "Holder", "Approval",
                 "Warning step, %"),
     "SELECT BUDGETCODE, iif(BUDGETTYPE = 1, 'Standard', 'Aggregate'), CURRENCYCODE, OFFICEDESCRIPTION, "
     "CHARGETYPECODE, USERID, iif(APPROVEINBUDGET = 0, 'No', 'Yes'), BUDGETWARNING FROM BUDGET"),
    ("Lines", ("Budget", "From", "To", "Budget amount", "Not approved", "Approved", "Sent", "Received",
               "Closed", "Available"),
     "SELECT BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT, ifnull(USEDNOTAPPROVEDAMNT, 0), "
     "ifnull(USEDAPPROVEDAMNT, 0), ifnull(USEDSENDAMNT, 0), ifnull(USEDRECEIVEDAMNT, 0), "
     "ifnull(USEDCLOSEDAMNT, 0), AVAILABLEAMNT FROM BUDGETLINES ORDER BY BUDGETCODE, ID"),
    ("Relations", ("Parent budget", "Child budget", "Type of the child"),
     "SELECT PARENTBUDGET, CHILDBUDGET, iif(BUDGETTYPE = 1, 'Standard', 'Aggregate') FROM BUDGETRELATIONS "
     "JOIN BUDGET ON BUDGETCODE = CHILDBUDGET"))


def main(site, target):
    database = sqlite3.connect(f"{site}/talvex.db")
    book = xlwt.Workbook(encoding="utf-8")
    for name, headings, query in SHEETS:
        sheet = book.add_sheet(name)
        for column, heading in enumerate(headings):
            sheet.write(0, column, heading)
        for number, row in enumerate(database.execute(query), start=1):
            for column, value in enumerate(row):
                if name == "Lines" and column in (1, 2):
                    if value is not None:
                        sheet.write(number, column, datetime.datetime.fromisoformat(value), DATE)
                elif isinstance(value, float) and name == "Lines":
                    sheet.write(number, column, value, AMOUNT)
                elif value is not None:
                    sheet.write(number, column, value)
    book.save(target)


if __name__ == "__main__":
    main(*sys.argv[1:])
