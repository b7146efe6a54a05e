"""Posting through PostgreSQL, by the component and by a hand-written program that sends the same statements.

    python3 bench/servers/run.py build/release/bin

Prints the wall time of a posting to a leaf with two ancestors, committed to the disk, and its round trips.
"""

import pathlib
import statistics
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve()
sys.path.append(str(HERE.parents[2] / "tests" / "servers"))
from _postgresql import PostgreSql, Relay  # noqa: E402

COUNT = 100
ROUNDS = 15
WARM_UP = 20  # As in the program.

COMPANY = """
    INSERT INTO CURRENCY (CURRENCYCODE, DECIMALS) VALUES ('EUR', 2);
    INSERT INTO REQUISITIONPARAMETER (PARAMNAME, PARAMVALUE)
      VALUES ('SendEmailToBudgetHolderForBudgetWarning', 'True');
    INSERT INTO BUDGET (BUDGETCODE, BUDGETTYPE, CURRENCYCODE, USERID, BUDGETWARNING) VALUES
      ('LEAF', 1, 'EUR', 'anna', 50), ('MIDDLE', 2, 'EUR', 'anna', 50), ('TOP', 2, 'EUR', 'anna', 50);
    INSERT INTO BUDGETLINES (BUDGETCODE, STARTDATE, ENDDATE, BUDGETAMNT, USEDAPPROVEDAMNT, AVAILABLEAMNT,
                             AVAILABLEPERC)
      SELECT BUDGETCODE, '2026-01-01', '2026-12-31', 100000, 0, 100000, 1 FROM BUDGET;
    INSERT INTO BUDGETRELATIONS (PARENTBUDGET, CHILDBUDGET) VALUES ('MIDDLE', 'LEAF'), ('TOP', 'MIDDLE')
"""


def make_site(programs, folder, connection):
    subprocess.run([programs / "talvex", "init", folder, "--database", connection], check=True,
                   stdout=subprocess.DEVNULL)
    return folder


def seconds(programs, what, count, site):
    ran = subprocess.run([programs / "talvex_server_bench", what, str(count), site], check=True,
                         stdout=subprocess.PIPE, encoding="ascii")
    return float(ran.stdout)


def round_trips(programs, relay, what, site):
    """Those of one posting: the difference between many and few leaves out what is done once."""
    counts = []
    for count in (10, 60):
        before = relay.round_trips
        seconds(programs, what, count, site)
        counts.append(relay.round_trips - before)
    return (counts[1] - counts[0]) / 50


def main():
    programs = pathlib.Path(sys.argv[1])
    with PostgreSql() as server, Relay(server) as relay, tempfile.TemporaryDirectory() as folder:
        server.query("CREATE DATABASE bench")
        site = make_site(programs, folder + "/site", server.connection_string("bench"))
        watched = make_site(programs, folder + "/watched", server.connection_string("bench", relay.folder))
        server.query(COMPANY, "bench")
        times = {"floor": [], "talvex": []}
        for _ in range(ROUNDS):
            for what, measured in times.items():
                measured.append(seconds(programs, what, COUNT, site))
        for what, measured in times.items():
            trips = round_trips(programs, relay, what, watched)
            print(f"{what:8} {statistics.median(measured) * 1e3:8.3f} ms a posting {trips:8.1f} round trips")
        # The disk is seldom as fast as it was a minute ago, so neighbours are compared with each other.
        ratios = sorted(ours / floor for ours, floor in zip(times["talvex"], times["floor"]))
        print(f"talvex / floor: {statistics.median(ratios):.2f} "
              f"(of {ROUNDS} rounds; half of them {ratios[ROUNDS // 4]:.2f} to {ratios[-ROUNDS // 4]:.2f})")


if __name__ == "__main__":
    main()
