"""Transactions of one session, as a server has them, over those of SQLite.

The isolation is read committed: SQLite's transaction, with its lock on the whole database, begins with the
first change, and what is read before sees whatever is committed. Readers never wait for writers. Who cannot
get the lock in time is told that it was chosen as the victim of a deadlock.
"""

import itertools
import sqlite3
import struct
import time

import _faults
import _sqlite_errors
import _tokens
from _outcomes import Changed

RETRY = 0.005
DESCRIPTORS = itertools.count(0x1_0000_0001)


class Transactions:
    def __init__(self, connection, lock_wait, wait):
        self.connection, self.lock_wait, self.wait = connection, lock_wait, wait
        self.count = 0           # @@TRANCOUNT
        self.descriptor = bytes(8)
        self.implicit = False
        self.locks_to_read = False
        self.times_out = False   # A wait for a lock ends with 1222 instead of 1205.
        self.told = []

    def begin(self):
        self.count += 1
        if self.count > 1:
            return []
        self.descriptor = struct.pack("<Q", next(DESCRIPTORS))
        return [Changed(_tokens.BEGUN, self.descriptor, b"")]

    def end(self, verb):
        """Ends the transaction; returns what the client has to know."""
        if self.connection.in_transaction:
            self.connection.execute(verb)
        ended, self.descriptor, self.count = self.descriptor, bytes(8), 0
        return Changed(_tokens.COMMITTED if verb == "COMMIT" else _tokens.ROLLED_BACK, b"", ended)

    def statement(self, tokens):
        """BEGIN TRANSACTION, COMMIT and ROLLBACK, with the words that may follow."""
        verb = tokens[0].word
        if verb == "BEGIN":
            return self.begin()
        if self.count == 0:
            raise _faults.no_transaction(verb)
        if verb == "COMMIT" and self.count > 1:
            self.count -= 1
            return []
        return [self.end(verb)]

    def state(self):
        """XACT_STATE(): here a transaction is never left that could not be committed."""
        return 1 if self.count else 0

    def news(self):
        told, self.told = self.told, []
        return told

    def isolate(self, level):
        """Above read committed, what was read may not change: reading takes the lock of writing."""
        self.locks_to_read = level in ("REPEATABLE READ", "SERIALIZABLE", "SNAPSHOT")

    def lock_timeout(self, milliseconds):
        self.times_out = milliseconds >= 0
        if self.times_out:
            self.lock_wait = milliseconds / 1000

    def open_implicitly(self):
        if self.implicit and self.count == 0:
            self.told += self.begin()

    def reading(self, writes):
        self.open_implicitly()
        if self.count and self.locks_to_read and not writes:
            self.lock()

    def lock(self):
        """Begins SQLite's transaction, which has the lock to write."""
        if self.connection.in_transaction:
            return
        end = time.monotonic() + self.lock_wait
        while True:
            try:
                self.connection.execute("BEGIN IMMEDIATE")
                return
            except sqlite3.OperationalError as error:
                if not _sqlite_errors.is_busy(error):
                    raise
                if time.monotonic() >= end:
                    if self.times_out:
                        raise _faults.lock_timed_out() from None
                    raise
            self.wait(RETRY)

    def run(self, action, writes):
        """What the action returns. One that writes does so in a transaction, its own if there is no other."""
        if not writes:
            return action()
        self.open_implicitly()
        self.lock()
        try:
            result = action()
            if self.count == 0:
                self.connection.execute("COMMIT")
            return result
        finally:
            if self.count == 0 and self.connection.in_transaction:
                self.connection.execute("ROLLBACK")
