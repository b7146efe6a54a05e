"""Many writers on one tree of budgets, on a real PostgreSQL server."""

import os
import pathlib
import subprocess
import sys

from _postgresql import PostgreSql

TESTS = pathlib.Path(os.environ["TALVEX_PROGRAMS"]) / "talvex_server_tests"

with PostgreSql(fsync="off", max_connections=64) as server:
    ran = subprocess.run([TESTS, "--gtest_filter=ServerConcurrency.*"], check=False, timeout=1100,
                         env={**os.environ, "TALVEX_TEST_STORE": server.connection_string()})
sys.exit(ran.returncode)
