"""The program of tests that need a database server, and the list of those that come out otherwise on one."""

import os
import pathlib
import subprocess
import sys

PROGRAM = pathlib.Path(os.environ["TALVEX_PROGRAMS"]) / "talvex_server_tests"
MOST_DEVIATIONS = 5


def run_tests(connection_string, filter_text, *options):
    environment = {**os.environ, "TALVEX_TEST_STORE": connection_string}
    return subprocess.run([PROGRAM, f"--gtest_filter={filter_text}", *options], env=environment,
                          capture_output=True, encoding="utf-8", errors="replace", check=False, timeout=1100)


def passed(connection_string, filter_text):
    """How many tests have passed; fails when one has not."""
    ran = run_tests(connection_string, filter_text, "--gtest_brief=1")
    assert ran.returncode == 0, ran.stdout[-8000:] + ran.stderr[-2000:]
    last = [line for line in ran.stdout.splitlines() if line.startswith("[  PASSED  ]")]
    count = int(last[-1].split()[3])
    sys.stdout.write("".join(line + "\n" for line in ran.stdout.splitlines() if " attempts" in line))
    print(f"{filter_text}: {count} passed")
    return count


class Deviations:
    """The tests of a list: one a line, its name, a colon and the reason. They are run, too, and must still
    come out otherwise, so that the list cannot outlive its reasons."""

    def __init__(self, path):
        lines = (line.strip() for line in path.read_text(encoding="utf-8").splitlines())
        parts = [line.partition(":") for line in lines if line and not line.startswith("#")]
        assert all(reason.strip() for _, _, reason in parts), f"{path}: a reason is missing"
        self.names = [name for name, _, _ in parts]

    def left_out(self, filter_text):
        return filter_text + ("-" + ":".join(self.names) if self.names else "")

    def expect_to_be_few_and_there(self, connection_string):
        assert len(self.names) <= MOST_DEVIATIONS, self.names
        for name in self.names:
            assert run_tests(connection_string, name).returncode == 1, f"{name} passes now"
