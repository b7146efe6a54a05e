"""The databases of a server, each a file of SQLite. One is there from the start; clients may make others."""

import os
import sqlite3
import threading

import _faults
import _functions
import _moments
import _tables

NAME = "talvex"
COLLATION = "Latin1_General_100_CI_AS_SC_UTF8"


class Databases:
    def __init__(self, path):
        self.folder = os.path.dirname(os.path.abspath(path))
        self.paths = {NAME: path}
        self.copies = 0
        self.collations = {}  # Of databases that have another than the usual one.
        self.clocks = {}  # The moments at which the clocks of some databases stand still.
        self.lock = threading.Lock()
        prepare(path)

    def now(self, name):
        return self.clocks.get(name) or _moments.now()

    def find(self, name):
        """(the name, the file) of a database; the first for an empty name, None for one that is not there."""
        with self.lock:
            for known, path in self.paths.items():
                if known.lower() == (name or NAME).lower():
                    return known, path
        return None

    def collation(self, name):
        return self.collations.get(name.lower(), COLLATION)

    def code_page(self, name):
        """The code page of quoted texts; None for UTF-8. There is one beside that."""
        return None if self.collation(name).upper().endswith("_UTF8") else "cp1252"

    def property(self, name, wanted):
        """DATABASEPROPERTYEX(name, wanted)."""
        return self.collation(name) if wanted.lower() == "collation" else None

    def create(self, name, collation=None):
        """Makes an empty database."""
        if self.find(name):
            raise _faults.database_exists(name)
        path = os.path.join(self.folder, f"database-{name}.db")
        prepare(path)
        with self.lock:
            self.paths[name] = path
            if collation:
                self.collations[name.lower()] = collation

    def copy(self, source, target):
        """Makes a database that holds what another does."""
        found = self.find(source)
        if not found:
            raise _faults.unknown_database(source)
        self.create(target)
        reader, writer = sqlite3.connect(found[1]), sqlite3.connect(self.paths[target])
        reader.backup(writer)
        reader.close()
        writer.close()
        with self.lock:
            self.copies += 1

    def drop(self, name):
        found = self.find(name)
        if not found or found[0] == NAME:
            raise _faults.cannot_drop("database", name)
        with self.lock:
            del self.paths[found[0]]
            self.clocks.pop(found[0], None)
        for ending in ("", "-wal", "-shm"):
            if os.path.exists(found[1] + ending):
                os.remove(found[1] + ending)


def prepare(path):
    """Makes a file what sessions expect: readers beside a writer, and a catalogue."""
    connection = sqlite3.connect(path)
    # The views of the catalogue name a function, which only has to be there.
    connection.create_function("tds_object_id", -1, lambda *_: None)
    connection.create_collation("TDS_TEXT", _functions.compare_texts)
    connection.execute("PRAGMA journal_mode = WAL")
    connection.execute("PRAGMA synchronous = OFF")
    connection.executescript(_tables.SETUP)
    connection.close()
