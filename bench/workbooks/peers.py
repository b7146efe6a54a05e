#!/usr/bin/python3
"""The work of floor.cpp by the Python packages xlrd and xlwt.

peers.py read FILE
peers.py write TEMPLATE TARGET ROWS   (the template is left alone: xlwt only makes new workbooks)
"""

import sys

import xlrd
import xlwt


def read(path):
    numbers = letters = 0
    for sheet in xlrd.open_workbook(path).sheets():
        for row in range(sheet.nrows):
            for cell in sheet.row(row):
                numbers += cell.ctype in (xlrd.XL_CELL_NUMBER, xlrd.XL_CELL_DATE)
                letters += len(cell.value) if cell.ctype == xlrd.XL_CELL_TEXT else 0
    print(numbers, letters)


def write(target, rows):
    book = xlwt.Workbook()
    sheet = book.add_sheet("Lines")
    for row in range(rows):
        for column in range(10):
            sheet.write(row + 1, column, row * 1.25 + column if column % 3 else f"text {row} {column}")
    book.save(target)


if sys.argv[1] == "read":
    read(sys.argv[2])
else:
    write(sys.argv[3], int(sys.argv[4]))
