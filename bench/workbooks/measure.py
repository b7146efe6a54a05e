#!/usr/bin/python3
"""Measures reading and writing workbooks of 10,000 rows of 10 cells against the bare library.

Whole processes, those they start included: processor time, the median of several runs in turn, and the most
memory of both together. Run it on a release build: bench/workbooks/measure.py build/release/bin
"""

import os
import pathlib
import statistics
import sys
import tempfile
import time

import xlwt

RUNS = 7
MOST_TIMES, MOST_MEGABYTES = 2.0, 300


def memory_of(root):
    """Kilobytes that a process and those below it have in memory now."""
    total, waiting = 0, [root]
    while waiting:
        process = waiting.pop()
        try:
            with open(f"/proc/{process}/statm", encoding="ascii") as file:
                total += int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE") // 1024
            with open(f"/proc/{process}/task/{process}/children", encoding="ascii") as file:
                waiting += file.read().split()
        except (FileNotFoundError, ProcessLookupError):
            pass
    return total


def run(arguments):
    """(processor seconds, largest kilobytes) of a program and what it starts."""
    process = os.posix_spawn(arguments[0], arguments, os.environ)
    largest, ended = 0, 0
    while not ended:
        largest = max(largest, memory_of(process))
        time.sleep(0.001)
        ended, status, usage = os.wait4(process, os.WNOHANG)
    if status:
        sys.exit(f"{' '.join(arguments)} failed")
    return usage.ru_utime + usage.ru_stime, largest


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


def main(programs):
    floor, through = (str(pathlib.Path(programs, f"talvex_workbook_{name}")) for name in ("floor", "through"))
    bad = False
    with tempfile.TemporaryDirectory() as folder:
        full, template, target = (os.path.join(folder, name) for name in ("full.xls", "empty.xls", "out.xls"))
        make_workbook(full, 10000)
        make_workbook(template, 1)
        for work, arguments in (("read", ["read", full]), ("write", ["write", template, target])):
            times, largest = {floor: [], through: []}, {floor: 0, through: 0}
            for _ in range(RUNS):
                for program in (floor, through):
                    seconds, kilobytes = run([program, *arguments])
                    times[program].append(seconds)
                    largest[program] = max(largest[program], kilobytes)
            bare, ours = (statistics.median(times[program]) for program in (floor, through))
            memory = largest[through] / 1024
            print(f"{work:6} floor {bare:.3f} s, through {ours:.3f} s: {ours / bare:.2f} times "
                  f"(at most {MOST_TIMES}); memory {memory:.0f} MB (at most {MOST_MEGABYTES})")
            bad |= ours / bare > MOST_TIMES or memory > MOST_MEGABYTES
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
