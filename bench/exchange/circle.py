#!/usr/bin/python3
"""Measures the whole circle, budgets out to a workbook and back in, against the same by hand.

10,000 budgets with 50,000 lines: `talvex export` and `talvex import` against a program written for nothing
else on the same libraries (floor.cpp). Whole processes, those they start included: processor time, the median
of several runs in turn, and the most memory, that of all processes added. Before it measures, it looks that
both programs write the same cells and the same rows. For orientation, xlwt_export.py writes the same three
sheets.

Run it on a release build: bench/exchange/circle.py build/release/bin [RUNS]
"""

import os
import pathlib
import shutil
import sqlite3
import statistics
import subprocess
import sys
import tempfile

import xlrd

HERE = pathlib.Path(__file__).resolve().parent
sys.path.append(str(HERE.parent))
from processes import run  # noqa: E402

SIZES = (1000, 10000)
MOST_TIMES = {"export": 1.5, "import": 2.0}
MOST_GROWTH, MOST_MEGABYTES = 12, 1024
TABLES = (
    "SELECT BUDGETCODE, BUDGETTYPE, CURRENCYCODE, OFFICEDESCRIPTION, CHARGETYPECODE, USERID, "
    "APPROVEINBUDGET, BUDGETWARNING FROM BUDGET ORDER BY BUDGETCODE",
    "SELECT BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT, AVAILABLEAMNT, AVAILABLEPERC FROM BUDGETLINES "
    "ORDER BY BUDGETCODE, STARTDATE",
    "SELECT PARENTBUDGET, CHILDBUDGET FROM BUDGETRELATIONS ORDER BY PARENTBUDGET, CHILDBUDGET")


def group_of(number):
    """The budget above one: every tenth is a group, and stands below another in its turn."""
    above = number // 10 if number % 10 == 0 else number
    return above // 10 * 10


def budget_rows(count):
    for number in range(count):
        yield (f"B{number:05}", 1 if number % 10 else 2, ("Amsterdam", "Hamburg", None)[number % 3],
               ("HARDWARE", "SOFTWARE")[number % 2], ("d.reed", "s.vermeer", "j.vogel", None)[number % 4],
               number % 2, (10, 12.5, None)[number % 3])


def line_rows(count):
    """Five years to a budget, the last open-ended for every other one."""
    for number in range(count):
        for year in range(2023, 2028):
            amount, used = 1000.5 + number * 7.25 + year, (number % 5) * 10.25
            end = None if year == 2027 and number % 2 else f"{year}-12-31T00:00:00"
            yield (f"B{number:05}", f"{year}-01-01T00:00:00", end, amount, used, amount - used,
                   (amount - used) / amount)


def fill(site, count):
    """Puts that company in place of the sample's."""
    empty(site)
    database = sqlite3.connect(os.path.join(site, "talvex.db"))
    with database:
        database.executemany(
            "INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE, OFFICEDESCRIPTION, CHARGETYPECODE, "
            "USERID, APPROVEINBUDGET, BUDGETWARNING) VALUES (?, ?, 'EUR', ?, ?, ?, ?, ?)", budget_rows(count))
        database.executemany(
            "INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT, USEDAPPROVEDAMNT, "
            "AVAILABLEAMNT, AVAILABLEPERC) VALUES (?, ?, ?, ?, ?, ?, ?)", line_rows(count))
        database.executemany("INSERT INTO BUDGETRELATIONS VALUES (?, ?)",
                             ((f"B{group_of(number):05}", f"B{number:05}") for number in range(1, count)))
    database.close()


def empty(site):
    database = sqlite3.connect(os.path.join(site, "talvex.db"))
    with database:
        for table in ("BUDGETLINES", "BUDGETRELATIONS", "BUDGET"):
            database.execute(f"DELETE FROM {table}")
    database.execute("VACUUM")
    database.close()


def rows(site):
    database = sqlite3.connect(os.path.join(site, "talvex.db"))
    try:
        return [database.execute(query).fetchall() for query in TABLES]
    finally:
        database.close()


def cells(path):
    book = xlrd.open_workbook(path)
    return {sheet.name: [sheet.row_values(row) for row in range(sheet.nrows)] for sheet in book.sheets()}


class Bench:
    def __init__(self, programs, folder):
        self.talvex = os.path.join(programs, "talvex")
        self.floor = os.path.join(programs, "talvex_exchange_floor")
        self.folder = folder
        self.sample = os.path.join(folder, "sample")
        subprocess.run([self.talvex, "init", self.sample, "--sample"], check=True, stdout=subprocess.DEVNULL)

    def installation(self, name, count):
        """One with that many budgets, beside users, offices, currencies and charge types of the sample."""
        site = os.path.join(self.folder, name)
        shutil.copytree(self.sample, site)
        if count:
            fill(site, count)
        else:
            empty(site)
        return site

    def exporting(self, program, site):
        """Exports everything; (seconds, kilobytes, path of the workbook)."""
        kept = os.path.join(self.folder, "kept.xls")
        pathlib.Path(kept).unlink(missing_ok=True)
        if program == "floor":
            return *run([self.floor, "export", site, "A", "Z", kept]), kept
        if program == "xlwt":
            return *run(["/usr/bin/python3", str(HERE / "xlwt_export.py"), site, kept]), kept
        used = run([self.talvex, "export", "A", "Z", "--config", site])
        made, = pathlib.Path(site, "talvex/exportedbudgets").iterdir()
        os.replace(made, kept)
        return *used, kept

    def importing(self, program, workbook):
        """Imports into an empty installation; (seconds, kilobytes, the installation)."""
        site = os.path.join(self.folder, "target")
        shutil.rmtree(site, ignore_errors=True)
        shutil.copytree(self.nothing, site)
        words = ([self.floor, "import", site, workbook] if program == "floor" else
                 [self.talvex, "import", workbook, "--config", site])
        return *run(words), site

    def check_that_both_do_the_same(self, site):
        ours = cells(self.exporting("talvex", site)[2])
        workbook = self.exporting("floor", site)[2]
        if cells(workbook) != ours:
            sys.exit("the two programs export different cells")
        for program in ("talvex", "floor"):
            _, _, target = self.importing(program, workbook)
            got, wanted = rows(target), rows(site)
            if got[0] != wanted[0] or got[2] != wanted[2] or [row[:4] for row in got[1]] != [
                    row[:4] for row in wanted[1]] or any(row[4:] != (row[3], 1) for row in got[1]):
                sys.exit(f"{program} does not import what was exported")

    def measure(self, count, runs):
        """{work: {program: (seconds, kilobytes)}} of an installation with that many budgets."""
        self.nothing = os.path.join(self.folder, "nothing")
        if not os.path.exists(self.nothing):
            self.installation("nothing", 0)
        site = self.installation(f"site{count}", count)
        if count == SIZES[0]:
            self.check_that_both_do_the_same(site)
        kept = os.path.join(self.folder, f"all{count}.xls")
        shutil.copy(self.exporting("talvex", site)[2], kept)
        exports = {"talvex": [], "floor": [], "xlwt": []}
        imports = {"talvex": [], "floor": []}
        for _ in range(runs):
            for program, used in exports.items():
                used.append(self.exporting(program, site)[:2])
            for program, used in imports.items():
                used.append(self.importing(program, kept)[:2])
        return {work: {program: (statistics.median(seconds for seconds, _ in used),
                                 max(kilobytes for _, kilobytes in used))
                       for program, used in programs.items()}
                for work, programs in (("export", exports), ("import", imports))}


def main(programs, runs=3):
    with tempfile.TemporaryDirectory() as folder:
        bench = Bench(programs, folder)
        small, large = (bench.measure(size, int(runs)) for size in SIZES)
    good = True
    for work, most in MOST_TIMES.items():
        seconds, kilobytes = large[work]["talvex"]
        bare = large[work]["floor"][0]
        growth = seconds / small[work]["talvex"][0]
        print(f"{work}: floor {bare:.2f} s, talvex {seconds:.2f} s: "
              f"{seconds / bare:.2f} times (at most {most}), "
              f"{growth:.1f} times what {SIZES[0]} budgets take (at most {MOST_GROWTH}), "
              f"memory {kilobytes / 1024:.0f} MB (at most {MOST_MEGABYTES})")
        good &= seconds / bare <= most and growth <= MOST_GROWTH and kilobytes / 1024 <= MOST_MEGABYTES
    print(f"for orientation, python3-xlwt writes the three sheets in {large['export']['xlwt'][0]:.2f} s")
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
