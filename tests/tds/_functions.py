"""What the server's language has and SQLite has not: functions, and how texts and dates compare."""

import re

import _column_types
import _moments
from _faults import Fault, database, not_a_date, not_a_number, not_convertible, not_here, overflow


def folded(text):
    """Texts that compare the same: case does not count, nor do blanks at the end."""
    return text.rstrip(" ").casefold()


def compare_texts(left, right):
    left, right = folded(left), folded(right)
    return (left > right) - (left < right)


def moment_of(text):
    """The moment that a text names; a number counts days from 1900."""
    moment = _moments.parse(text)
    if moment is None and text.removeprefix("-").isdigit():
        return (_moments.EPOCH + int(text)) * _moments.DAY
    return moment


def compare_moments(left, right):
    first, second = moment_of(left), moment_of(right)
    if first is None or second is None:
        return compare_texts(left, right)
    return (first > second) - (first < second)


def like(pattern, text, escape=None):
    """LIKE with %, _ and sets in brackets, without regard to case."""
    if pattern is None or text is None:
        return None
    pieces, at = [], 0
    while at < len(pattern):
        letter = pattern[at]
        closing = pattern.find("]", at + 2) if letter == "[" else -1
        if escape and letter == escape and at + 1 < len(pattern):
            at += 1
            pieces.append(re.escape(pattern[at]))
        elif closing > 0:
            inside = pattern[at + 1:closing]
            no = "^" if inside.startswith("^") else ""
            pieces.append(f"[{no}{re.escape(inside.lstrip('^')).replace(chr(92) + '-', '-')}]")
            at = closing
        else:
            pieces.append({"%": ".*", "_": "."}.get(letter) or re.escape(letter))
        at += 1
    return 1 if re.fullmatch("".join(pieces), str(text), re.IGNORECASE | re.DOTALL) else 0


def units(text):
    """The length of a text as the server counts it: letters beyond the first plane count twice."""
    return len(text.encode("utf-16-le", "surrogatepass")) // 2


def fits(value, size):
    return 1 if value is None or units(str(value)) <= size else 0


def is_moment(value):
    return 1 if value is None or _moments.parse(value) is not None else 0


def is_datetime(value):
    moment = _moments.parse(value) if value is not None else _moments.FIRST_DATETIME
    return 1 if moment is None or moment >= _moments.FIRST_DATETIME else 0


def cast(value, written):
    """CAST(value AS written); failures are raised as Fault."""
    kind = _column_types.parse_type(written)
    if kind is None:
        raise not_here(f"a cast to {written}")
    if value is None:
        return None
    if kind.name in _column_types.INTEGERS:
        try:
            number = int(value)
        except ValueError:
            raise not_a_number(value) from None
        limit = 1 << (8 * _column_types.INTEGERS[kind.name] - 1)
        if not -limit <= number < limit:
            raise overflow(kind.name.lower())
        return number
    if kind.name in ("FLOAT", *_column_types.DECIMALS):
        try:
            return float(value)
        except ValueError:
            raise not_convertible("nvarchar", kind.name.lower()) from None
    if kind.name in _column_types.TEXTS:
        text = repr(value) if isinstance(value, float) else str(value)
        return text if kind.size == _column_types.MAX else text[:kind.size]
    if kind.name == "BIT":
        return 1 if int(value) else 0
    if not is_moment(value):
        raise not_a_date()
    text = _moments.text_of(_moments.parse(value))
    return text[:10] + "T00:00:00" if kind.name == "DATE" else text


def compare_exactly(left, right):
    left, right = left.rstrip(" "), right.rstrip(" ")
    return (left > right) - (left < right)


def register(connection, engine):
    """Makes all of it known to a connection; engine answers what depends on the session."""
    exact = any(mark in engine.databases.collation(database()).upper() for mark in ("_CS", "_BIN"))
    connection.create_collation("TDS_TEXT", compare_exactly if exact else compare_texts)
    connection.create_collation("TDS_MOMENT", compare_moments)

    def guarded(function):
        """SQLite tells only that a function failed; the engine keeps why."""
        def run(*arguments):
            try:
                return function(*arguments)
            except Fault as fault:
                engine.fault = fault
                raise
        return run

    fixed = {"tds_fits": (2, fits), "tds_is_moment": (1, is_moment), "tds_is_datetime": (1, is_datetime),
             "like": (2, like), "tds_cast": (2, cast),
             "tds_len": (1, lambda text: None if text is None else units(str(text).rstrip(" "))),
             "tds_datalength": (1, lambda text: None if text is None else 2 * units(str(text))),
             "tds_left": (2, lambda text, count: None if text is None else text[:count]),
             "tds_right": (2, lambda text, count: None if text is None else text[len(text) - count:])}
    for name, (count, function) in fixed.items():
        connection.create_function(name, count, guarded(function), deterministic=True)
    connection.create_function("like", 3, like, deterministic=True)
    moving = {"tds_now": (0, engine.now), "tds_identity": (0, lambda: engine.identity),
              "tds_global": (1, engine.global_value),
              "tds_xact_state": (0, engine.transactions.state),
              "tds_database_property": (2, engine.databases.property), "tds_next": (1, engine.next_value),
              "tds_object_id": (-1, engine.object_id), "tds_column_property": (3, engine.column_property),
              "tds_db_name": (0, database), "tds_schema_name": (0, lambda: "dbo"),
              "tds_user_name": (0, lambda: "dbo")}
    for name, (count, function) in moving.items():
        connection.create_function(name, count, guarded(function))
