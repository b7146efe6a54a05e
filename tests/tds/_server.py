"""A server that speaks the protocol of SQL Server (TDS 7.4) over a database of SQLite, for tests.

    python3 _server.py FILE [--port N] [--user NAME] [--password TEXT] [--lock-wait SECONDS]
                            [--while-stdin-open]

listens on the loopback interface only, at a port of its own choice unless told, writes "port N" and serves
until it is ended by SIGTERM (or, on demand, until its standard input closes, so that it does not outlive a
test).

The database is named talvex. CREATE DATABASE makes others in the folder of FILE, and
EXEC test_copy_database @source = 'talvex', @target = 'copy' makes one that is filled. Tables are made by
running CREATE TABLE through the wire. Faults are asked for by any client:

    EXEC test_fail @number = 1205, @containing = 'UPDATE BUDGETLINES', @after = 2, @times = 1
    EXEC test_delay @milliseconds = 500, @containing = 'SELECT'
    EXEC test_drop @containing = 'COMMIT'       (the connection is lost before the statement runs)
    EXEC test_drop_late @containing = 'COMMIT'  (it is lost after the statement ran, before the answer)
    EXEC test_clear

They hold for the statements of all sessions; see _knobs.py. And in a database of its own, a test may let the
clock stand still:

    EXEC test_set_clock @now = '2026-03-16T10:00:00'

Every text that clients sent is noted; see _texts.py.
"""

import argparse
import collections
import itertools
import os
import signal
import socket
import sys
import threading

from _databases import Databases
from _knobs import Knobs
from _session import Session
from _texts import Texts

USER, PASSWORD = "talvex", "Talvex-Test-1"


class Server:
    """Serves from its start() to its stop(), a thread for each client."""

    def __init__(self, path, port=0, user=USER, password=PASSWORD, lock_wait=5.0,
                 user_options=()):
        """`user_options` are settings, such as XACT_ABORT, that are on in every new session."""
        self.user, self.password, self.lock_wait = user, password, lock_wait
        self.databases = Databases(path)
        self.knobs = Knobs()
        self.texts = Texts()
        self.user_options = user_options
        self.requests = 0  # Messages of clients behind their login.
        self.prepared = collections.Counter()  # How often each text was prepared.
        self.numbers = itertools.count(51)
        self.clients = set()
        self.lock = threading.Lock()
        self.socket = socket.create_server(("127.0.0.1", port))
        self.port = self.socket.getsockname()[1]

    def start(self):
        threading.Thread(target=self.accept, daemon=True).start()
        return self

    def accept(self):
        while True:
            try:
                connection, _ = self.socket.accept()
            except OSError:
                return  # Stopped.
            connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            threading.Thread(target=self.serve, args=(connection,), daemon=True).start()

    def serve(self, connection):
        with self.lock:
            self.clients.add(connection)
        try:
            Session(self, connection, next(self.numbers)).run()
        finally:
            with self.lock:
                self.clients.discard(connection)

    def stop(self):
        """Takes no more clients and drops those there are."""
        # Closing alone would not wake the thread that accepts.
        self.socket.shutdown(socket.SHUT_RDWR)
        self.socket.close()
        with self.lock:
            for connection in self.clients:
                try:
                    connection.shutdown(socket.SHUT_RDWR)
                except OSError:
                    pass  # It is gone already.


def main():
    parser = argparse.ArgumentParser(description="A server for tests of the SQL Server driver.")
    parser.add_argument("file")
    parser.add_argument("--port", type=int, default=0)
    parser.add_argument("--user", default=USER)
    parser.add_argument("--password", default=PASSWORD)
    parser.add_argument("--lock-wait", type=float, default=5.0)
    parser.add_argument("--while-stdin-open", action="store_true")
    options = parser.parse_args()
    server = Server(options.file, options.port, options.user, options.password, options.lock_wait).start()
    print(f"port {server.port}", flush=True)
    if options.while_stdin_open:
        signal.signal(signal.SIGTERM, lambda *_: os._exit(0))
        sys.stdin.buffer.read()
    else:
        signal.sigwait({signal.SIGTERM, signal.SIGINT})
    server.stop()


if __name__ == "__main__":
    main()
