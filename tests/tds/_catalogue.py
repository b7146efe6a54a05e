"""The answers of the catalogue's procedures."""

import _column_types
import _faults
import _functions
import _tables
from _outcomes import Rows
from _shape import Shape

NAME = _column_types.text_type(128)
SMALL = _column_types.Type("SMALLINT")

# ODBC's number of a type, and (precision, length, scale, radix) where they do not depend on the column.
ODBC_TYPES = {"INT": (4, 10, 4, 0, 10), "SMALLINT": (5, 5, 2, 0, 10), "TINYINT": (-6, 3, 1, 0, 10),
              "BIGINT": (-5, 19, 8, 0, 10), "BIT": (-7, 1, 1, None, None), "FLOAT": (6, 53, 8, None, 2),
              "DATETIME": (93, 23, 16, 3, None), "DATETIME2": (93, 27, 16, 7, None),
              "DATE": (91, 10, 6, None, None)}
TEXT_TYPES = {"NVARCHAR": -9, "NCHAR": -8, "VARCHAR": 12, "CHAR": 1}


def shapes(text):
    """Shapes from "NAME:n" (a name), "NAME:s" (a small number) and "NAME:i" (a number)."""
    kinds = {"n": NAME, "s": SMALL, "i": _column_types.INT, "t": _column_types.text_type()}
    return [Shape(name, kinds[kind]) for name, _, kind in (part.partition(":") for part in text.split())]


def matching(names, pattern):
    return [name for name in names if pattern is None or _functions.like(pattern, name, "\\") == 1]


def table_names(connection, pattern):
    rows = connection.execute("SELECT DISTINCT table_name FROM tds_column ORDER BY table_name COLLATE NOCASE")
    return matching([row[0] for row in rows.fetchall()], pattern)


def odbc_type(kind):
    """(number, precision, length, scale, radix) of a type."""
    if kind.name in ODBC_TYPES:
        return ODBC_TYPES[kind.name]
    if kind.name in TEXT_TYPES:
        wide = 2 if kind.name.startswith("N") else 1
        size = 0 if kind.size == _column_types.MAX else kind.size
        return TEXT_TYPES[kind.name], size, size * wide, None, None
    return (3 if kind.name == "DECIMAL" else 2), kind.precision, kind.precision + 2, kind.scale, 10


def column_row(table, column, position, third):
    number, precision, length, scale, radix = odbc_type(column.type)
    is_date = number in (91, 93)
    concise = number if third or not is_date else {91: 9, 93: 11}[number]
    name = column.type.name.lower() + (" identity" if column.identity else "")
    octets = length if column.type.name in TEXT_TYPES else None
    return (_faults.database(), "dbo", table, column.name, concise, name, precision, length, scale, radix,
            int(column.nullable), None, column.default, 9 if is_date else number,
            {91: 1, 93: 3}.get(number), octets, position, "YES" if column.nullable else "NO", 0)


def columns(connection, table, column, third):
    """sp_columns; `third` is for the numbers of the types as the third version of ODBC has them."""
    rows = []
    for name in table_names(connection, table):
        for position, found in enumerate(_tables.columns_of(connection, name), 1):
            if matching([found.name], column):
                rows.append(column_row(name, found, position, third))
    return Rows(shapes("TABLE_QUALIFIER:n TABLE_OWNER:n TABLE_NAME:n COLUMN_NAME:n DATA_TYPE:s TYPE_NAME:n "
                       "PRECISION:i LENGTH:i SCALE:s RADIX:s NULLABLE:s REMARKS:n COLUMN_DEF:t "
                       "SQL_DATA_TYPE:s SQL_DATETIME_SUB:s CHAR_OCTET_LENGTH:i ORDINAL_POSITION:i "
                       "IS_NULLABLE:n SS_DATA_TYPE:s"), rows)


def keys(connection, table):
    key = _tables.primary_key(connection, table)
    rows = [(_faults.database(), "dbo", key.table, column, number, key.name)
            for number, column in enumerate(key.columns, 1)] if key else []
    return Rows(shapes("TABLE_QUALIFIER:n TABLE_OWNER:n TABLE_NAME:n COLUMN_NAME:n KEY_SEQ:s PK_NAME:n"),
                rows)


def tables(connection, pattern):
    rows = [(_faults.database(), "dbo", name, "TABLE", None) for name in table_names(connection, pattern)]
    return Rows(shapes("TABLE_QUALIFIER:n TABLE_OWNER:n TABLE_NAME:n TABLE_TYPE:n REMARKS:n"), rows)
