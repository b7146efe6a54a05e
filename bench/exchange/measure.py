#!/usr/bin/python3
"""Measures Talvex.BudgetExcel against the bare workbook library: 10,000 rows of 10 cells read into XML, and
written from marked-up XML into a template.

Run it on a release build: bench/exchange/measure.py build/release/bin
"""

import os
import pathlib
import statistics
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "workbooks"))
from measure import make_workbook, run  # noqa: E402

RUNS = 5


def main(programs):
    floor, through = (str(pathlib.Path(programs, name)) for name in
                      ("talvex_workbook_floor", "talvex_exchange_through"))
    with tempfile.TemporaryDirectory() as folder:
        full, template, target = (os.path.join(folder, name) for name in ("full.xls", "base.XLT", "out.xls"))
        make_workbook(full, 10000)
        make_workbook(template, 1)
        for work, arguments in (("read", ["read", full]), ("write", ["write", template, target])):
            times, largest = {floor: [], through: []}, {floor: 0, through: 0}
            for _ in range(RUNS):
                for program in (floor, through):
                    pathlib.Path(target).unlink(missing_ok=True)
                    seconds, kilobytes = run([program, *arguments])
                    times[program].append(seconds)
                    largest[program] = max(largest[program], kilobytes)
            bare, ours = (statistics.median(times[program]) for program in (floor, through))
            print(f"{work:6} floor {bare:.3f} s, through {ours:.3f} s: {ours / bare:.2f} times; "
                  f"memory {largest[through] / 1024:.0f} MB")


if __name__ == "__main__":
    main(sys.argv[1])
