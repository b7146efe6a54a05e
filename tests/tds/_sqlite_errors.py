"""Which fault of a server an error of SQLite stands for."""

import re

import _faults
import _tables

BUSY = ("SQLITE_BUSY", "SQLITE_BUSY_SNAPSHOT", "SQLITE_LOCKED", "SQLITE_BUSY_RECOVERY")


def is_busy(error):
    return getattr(error, "sqlite_errorname", "") in BUSY


def check_failed(connection, name, verb):
    """The fault of a CHECK: the name begins with the number of the error."""
    number, _, place = name.partition(" ")
    table, _, column = place.partition(".")
    if number == "547":
        owner = next(found for found in _tables.constraints_of(connection) if found.name == place)
        return _faults.conflict(verb, "CHECK", place, owner.table, owner.columns[0] or None)
    columns = _tables.columns_of(connection, table)
    kind = next(found.type.name.lower() for found in columns if found.name == column)
    makers = {"8152": _faults.too_long, "245": lambda: _faults.not_a_number("of the row"),
              "8115": lambda: _faults.overflow(kind),
              "8114": lambda: _faults.not_convertible("nvarchar", kind),
              "241": _faults.not_a_date, "242": lambda: _faults.date_out_of_range(kind)}
    return makers[number]()


def duplicate(connection, text):
    """The fault of a key that is there already. SQLite tells the index, or the columns of a primary key."""
    index = re.fullmatch(r"index '(.*?)\.(.*)'", text)
    if index:
        table, name = index.groups()
        kind = next(found.kind for found in _tables.constraints_of(connection, table) if found.name == name)
        if kind == "UX":
            return _faults.duplicate_in_index(name, table)
        return _faults.duplicate_key("UNIQUE KEY", name, table)
    table = text.partition(".")[0]
    return _faults.duplicate_key("PRIMARY KEY", _tables.primary_key(connection, table).name, table)


def fault_of(connection, error, verb):
    """The fault for an error of sqlite3 that a statement raised."""
    text = str(error)
    code = getattr(error, "sqlite_errorname", "")
    kind, _, rest = text.partition(" failed: ")
    if kind == "NOT NULL constraint":
        table, _, column = rest.partition(".")
        return _faults.null_refused(table, column, verb)
    if kind == "UNIQUE constraint":
        return duplicate(connection, rest)
    if kind == "CHECK constraint":
        return check_failed(connection, rest, verb)
    if code == "SQLITE_MISMATCH":
        return _faults.not_a_number("of the row")
    patterns = [(r"no such table: (?:main\.|temp\.)?(.*)", _faults.unknown_table),
                (r"no such column: (?:.*\.)?(.*)", _faults.unknown_column),
                (r"table .* has no column named (.*)", _faults.unknown_column),
                (r'near "(.*)": syntax error', _faults.syntax),
                (r"incomplete input()", _faults.syntax)]
    for pattern, maker in patterns:
        found = re.fullmatch(pattern, text, re.DOTALL)
        if found:
            return maker(found[1])
    return _faults.not_here(f"what to make of: {text}")


def broken_reference(connection, verb, target):
    """The fault of the foreign key that the changes of this transaction break; None when none does.

    SQLite does not tell which one it is, so it has to be looked for while the change stands.
    """
    broken = connection.execute("PRAGMA foreign_key_check").fetchone()
    if broken is None:
        return None
    child, _, parent, number = broken
    columns = [row[3] for row in connection.execute(f"PRAGMA foreign_key_list([{child}])").fetchall()
               if row[0] == number]
    folded = [name.lower() for name in columns]
    name = next(found.name for found in _tables.constraints_of(connection, child)
                if found.kind == "F" and [column.lower() for column in found.columns] == folded)
    if target.lower() == child.lower():
        return _faults.conflict(verb, "FOREIGN KEY", name, parent, columns[0])
    return _faults.conflict(verb, "REFERENCE", name, child, columns[0])
