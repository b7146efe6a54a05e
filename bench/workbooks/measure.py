#!/usr/bin/python3
"""Measures reading and writing .xls workbooks, 10 cells a row, against the bare library in one process.

Whole processes, those they start included: processor time, the median of several runs in turn, and the most
memory, that of all processes added. Beside them, for orientation, run xlrd, xlwt and, when npm is there to
install it, the package xlsx. Run it on a release build: bench/workbooks/measure.py build/release/bin
"""

import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile

import xlwt

HERE = pathlib.Path(__file__).resolve().parent
sys.path.append(str(HERE.parent))
from processes import run  # noqa: E402

OURS = "Talvex.BudgetExcel"
RUNS = {10000: 7, 60000: 3}
MOST_TIMES, MOST_MEGABYTES = 2.0, 300


def make_workbook(path, rows):
    book = xlwt.Workbook()
    sheet = book.add_sheet("Lines")
    for column in range(10):
        sheet.write(0, column, f"Title {column}", xlwt.easyxf("font: bold on"))
    date = xlwt.easyxf(num_format_str="yyyy-mm-dd")
    for row in range(1, rows + 1):
        for column in range(10):
            if column == 1:
                sheet.write(row, column, 46000 + row % 1000, date)
            else:
                sheet.write(row, column, f"text {row} {column}" if column % 3 == 0 else row * 1.25 + column)
    book.save(path)


def peers(folder):
    """Programs of others, by name."""
    found = {"xlrd, xlwt": [sys.executable, str(HERE / "peers.py")]}
    if shutil.which("npm") is None:
        print("npm is not there: the package xlsx is left out")
        return found
    for name in ("package.json", "peers.cjs"):
        shutil.copy(HERE / name, folder)
    subprocess.run(["npm", "install", "--silent", "--no-audit", "--no-fund"], cwd=folder, check=True)
    return {**found, "npm xlsx": [shutil.which("node"), os.path.join(folder, "peers.cjs")]}


def medians(commands, runs, target):
    """(seconds, kilobytes) by name, all programs in turn."""
    times, largest = {name: [] for name in commands}, dict.fromkeys(commands, 0)
    for _ in range(runs):
        for name, command in commands.items():
            pathlib.Path(target).unlink(missing_ok=True)
            seconds, kilobytes = run(command)
            times[name].append(seconds)
            largest[name] = max(largest[name], kilobytes)
    return {name: (statistics.median(times[name]), largest[name]) for name in commands}


def shown(work, rows, found):
    """Prints what was found, and returns (times the floor, megabytes) of Talvex.BudgetExcel."""
    floor = found["floor"][0]
    for name, (seconds, kilobytes) in found.items():
        print(f"{work:5} {rows:6} rows  {name:18} {seconds:7.3f} s  {seconds / floor:6.2f} times  "
              f"{kilobytes / 1024:5.0f} MB")
    seconds, kilobytes = found[OURS]
    return seconds / floor, kilobytes / 1024


def main(programs):
    names = {"floor": "floor", "the engine's seam": "through", OURS: "budget_excel"}
    own = {name: str(pathlib.Path(programs, f"talvex_workbook_{ending}")) for name, ending in names.items()}
    bad = False
    with tempfile.TemporaryDirectory() as folder:
        others = peers(folder)
        full, template, target, markup = (os.path.join(folder, name)
                                          for name in ("full.xls", "empty.XLT", "out.xls", "markup.xml"))
        make_workbook(template, 1)
        for rows, runs in RUNS.items():
            make_workbook(full, rows)
            with open(markup, "wb") as file:
                run([own[OURS], "markup", str(rows)], file)
            for work in ("read", "write"):
                words = ["read", full] if work == "read" else ["write", template, target, str(rows)]
                commands = {name: [program, *words] for name, program in own.items()}
                if work == "write":
                    commands[OURS][-1] = markup
                found = medians(commands, runs, target)
                beside = {name: [*program, *words] for name, program in others.items()}
                found |= medians(beside, 1, target)
                times, megabytes = shown(work, rows, found)
                bad |= times > MOST_TIMES or (rows == 10000 and megabytes > MOST_MEGABYTES)
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
