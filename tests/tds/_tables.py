"""What the database knows of its tables, kept beside them: SQLite forgets the names of constraints."""

import dataclasses
import json

import _column_types

SETUP = """
CREATE TABLE IF NOT EXISTS tds_column (
  table_name "NVARCHAR(128)" COLLATE NOCASE, position INT, name "NVARCHAR(128)" COLLATE NOCASE,
  type "NVARCHAR(128)", nullable INT, identity INT, default_text "NVARCHAR(4000)",
  PRIMARY KEY (table_name, position));
CREATE TABLE IF NOT EXISTS tds_constraint (
  table_name "NVARCHAR(128)" COLLATE NOCASE, name "NVARCHAR(128)" COLLATE NOCASE, kind "NVARCHAR(2)",
  columns TEXT, other_table TEXT, filtered INT, PRIMARY KEY (table_name, name));
CREATE TABLE IF NOT EXISTS tds_sequence (name "NVARCHAR(128)" COLLATE NOCASE PRIMARY KEY, next INT, step INT);
CREATE TABLE IF NOT EXISTS tds_trigger (name "NVARCHAR(128)" COLLATE NOCASE PRIMARY KEY,
  table_name "NVARCHAR(128)" COLLATE NOCASE, events TEXT, body TEXT);

CREATE VIEW IF NOT EXISTS sys_tables AS
  SELECT table_name AS name, tds_object_id(table_name) AS object_id, 1 AS schema_id
  FROM tds_column WHERE position = 1;
CREATE VIEW IF NOT EXISTS sys_sequences AS
  SELECT name, tds_object_id(name) AS object_id, 1 AS schema_id FROM tds_sequence;
CREATE VIEW IF NOT EXISTS sys_objects AS
  SELECT name, object_id, schema_id, 'U ' AS type FROM sys_tables
  UNION ALL SELECT name, object_id, schema_id, 'SO' FROM sys_sequences
  UNION ALL SELECT name, tds_object_id(name), 1, CASE WHEN kind IN ('PK', 'UQ') THEN kind ELSE kind || ' ' END
  FROM tds_constraint WHERE kind NOT IN ('IX', 'UX');
CREATE VIEW IF NOT EXISTS sys_indexes AS
  SELECT name, tds_object_id(table_name) AS object_id,
         CASE kind WHEN 'PK' THEN 1 ELSE rowid + 1 END AS index_id,
         kind IN ('PK', 'UQ', 'UX') AS is_unique, kind = 'PK' AS is_primary_key, filtered AS has_filter
  FROM tds_constraint WHERE kind IN ('PK', 'UQ', 'UX', 'IX')
  UNION ALL SELECT NULL, object_id, 0, 0, 0, 0
  FROM sys_tables WHERE name NOT IN (SELECT table_name FROM tds_constraint WHERE kind = 'PK');
CREATE VIEW IF NOT EXISTS sys_index_columns AS
  SELECT tds_object_id(i.table_name) AS object_id,
         CASE kind WHEN 'PK' THEN 1 ELSE i.rowid + 1 END AS index_id,
         c.position AS column_id, part.key + 1 AS key_ordinal, 0 AS is_included_column
  FROM tds_constraint i JOIN json_each(i.columns) part JOIN tds_column c
    ON c.table_name = i.table_name AND c.name = part.value
  WHERE kind IN ('PK', 'UQ', 'UX', 'IX');
CREATE VIEW IF NOT EXISTS sys_columns AS
  SELECT name, tds_object_id(table_name) AS object_id, position AS column_id, nullable AS is_nullable,
         identity AS is_identity,
         CASE WHEN default_text IS NULL THEN 0 ELSE rowid + 1000000 END AS default_object_id
  FROM tds_column;
CREATE VIEW IF NOT EXISTS sys_default_constraints AS
  SELECT rowid + 1000000 AS object_id, tds_object_id(table_name) AS parent_object_id,
         position AS parent_column_id, default_text AS definition
  FROM tds_column WHERE default_text IS NOT NULL;
CREATE VIEW IF NOT EXISTS information_schema_tables AS
  SELECT 'talvex' AS TABLE_CATALOG, 'dbo' AS TABLE_SCHEMA, name AS TABLE_NAME, 'BASE TABLE' AS TABLE_TYPE
  FROM sys_tables;
CREATE VIEW IF NOT EXISTS information_schema_columns AS
  SELECT 'talvex' AS TABLE_CATALOG, 'dbo' AS TABLE_SCHEMA, table_name AS TABLE_NAME, name AS COLUMN_NAME,
         position AS ORDINAL_POSITION, CASE nullable WHEN 1 THEN 'YES' ELSE 'NO' END AS IS_NULLABLE,
         default_text AS COLUMN_DEFAULT
  FROM tds_column;
"""


@dataclasses.dataclass
class Column:
    name: str
    type: _column_types.Type
    nullable: bool
    identity: bool
    default: str | None           # As the server shows it, in parentheses.
    own_default: str | None = None  # As SQLite reads it.


@dataclasses.dataclass
class Constraint:
    """kind is PK, UQ, F (foreign key), C (check), UX (unique index) or IX (index)."""

    table: str
    name: str
    kind: str
    columns: list
    other_table: str | None = None
    filtered: bool = False


def table_name(connection, name):
    """The name as it was given to the table; None when there is none of that name."""
    row = connection.execute("SELECT table_name FROM tds_column WHERE table_name = ? AND position = 1",
                             (name,)).fetchone()
    return row and row[0]


def columns_of(connection, table):
    rows = connection.execute("SELECT name, type, nullable, identity, default_text FROM tds_column "
                              "WHERE table_name = ? ORDER BY position", (table,))
    return [Column(name, _column_types.parse_type(kind), bool(nullable), bool(identity), default)
            for name, kind, nullable, identity, default in rows.fetchall()]


def constraints_of(connection, table=None):
    rows = connection.execute("SELECT table_name, name, kind, columns, other_table FROM tds_constraint "
                              "WHERE table_name = ?1 OR ?1 IS NULL", (table,))
    return [Constraint(owner, name, kind, json.loads(columns), other)
            for owner, name, kind, columns, other in rows.fetchall()]


def primary_key(connection, table):
    return next((found for found in constraints_of(connection, table) if found.kind == "PK"), None)


def add(connection, table, columns, constraints):
    connection.executemany("INSERT INTO tds_column VALUES (?, ?, ?, ?, ?, ?, ?)", [
        (table, position, column.name, column.type.written(), column.nullable, column.identity,
         column.default)
        for position, column in enumerate(columns, 1)])
    for constraint in constraints:
        add_constraint(connection, constraint)


def add_constraint(connection, constraint):
    connection.execute("INSERT INTO tds_constraint VALUES (?, ?, ?, ?, ?, ?)",
                       (constraint.table, constraint.name, constraint.kind, json.dumps(constraint.columns),
                        constraint.other_table, constraint.filtered))


def forget(connection, table):
    connection.execute("DELETE FROM tds_column WHERE table_name = ?", (table,))
    connection.execute("DELETE FROM tds_constraint WHERE table_name = ?", (table,))
