"""Every scenario, and every test of the ODBC adapter, on a real PostgreSQL server.

Scenarios that may come out otherwise there stand in postgresql_deviations.txt, each with its reason. They are
run too, and must still come out otherwise: the list cannot outlive its reasons.
"""

import os
import pathlib
import subprocess
import unittest

from _postgresql import PostgreSql

TESTS = pathlib.Path(os.environ["TALVEX_PROGRAMS"]) / "talvex_server_tests"
LIST = pathlib.Path(__file__).with_name("postgresql_deviations.txt")
MOST_DEVIATIONS = 5


def deviations():
    lines = (line.strip() for line in LIST.read_text(encoding="utf-8").splitlines())
    return [line.split(":")[0] for line in lines if line and not line.startswith("#")]


class OnPostgreSql(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        # No test here outlives the machine.
        cls.server = PostgreSql(fsync="off", max_connections=64, log_statement="ddl")
        cls.server.start()

    @classmethod
    def tearDownClass(cls):
        cls.server.__exit__()

    def run_tests(self, filter_text):
        environment = {**os.environ, "TALVEX_TEST_STORE": self.server.connection_string()}
        return subprocess.run([TESTS, f"--gtest_filter={filter_text}", "--gtest_brief=1"],
                              env=environment, capture_output=True, encoding="utf-8", errors="replace",
                              check=False, timeout=900)

    def expect_passed(self, filter_text, at_least):
        ran = self.run_tests(filter_text)
        self.assertEqual(ran.returncode, 0, ran.stdout[-8000:] + ran.stderr[-2000:])
        last = [line for line in ran.stdout.splitlines() if line.startswith("[  PASSED  ]")]
        count = int(last[-1].split()[3])
        self.assertGreaterEqual(count, at_least, ran.stdout)
        print(f"{filter_text}: {count} passed")
        return count

    def databases_made(self):
        return self.server.log().count("statement: CREATE DATABASE talvex_test_")

    def test_scenarios(self):
        excluded = ":".join(deviations())
        before = self.databases_made()
        passed = self.expect_passed("Scenario_*" + (f"-{excluded}" if excluded else ""), 150)
        # Each has worked here and nowhere else.
        self.assertEqual(self.databases_made() - before, passed)

    def test_deviations_are_few_and_still_there(self):
        self.assertLessEqual(len(deviations()), MOST_DEVIATIONS)
        for name in deviations():
            ran = self.run_tests(name)
            self.assertEqual(ran.returncode, 1, f"{name} passes now")

    def test_adapter(self):
        self.expect_passed("Odbc*", 25)


if __name__ == "__main__":
    unittest.main()
