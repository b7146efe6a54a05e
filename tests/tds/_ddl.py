"""CREATE TABLE and its kin, rewritten for SQLite.

A type is kept as it is written, so that queries tell it again; what SQLite does not check is checked by
constraints whose names begin with the number of the error that a server would raise.
"""

import _adapt
import _column_types
import _faults
import _lexer
import _tables
from _adapt import name_text

RANGES = {"TINYINT": (0, 255), "SMALLINT": (-(1 << 15), (1 << 15) - 1), "INT": (-(1 << 31), (1 << 31) - 1),
          "BIGINT": (-(1 << 63), (1 << 63) - 1), "BIT": (0, 1)}


class Definition:
    """A walk over the tokens of a definition."""

    def __init__(self, tokens):
        self.tokens = tokens
        self.at = 0

    def word(self, ahead=0):
        return self.tokens[self.at + ahead].word if self.at + ahead < len(self.tokens) else ""

    def text(self, ahead=0):
        return self.tokens[self.at + ahead].text if self.at + ahead < len(self.tokens) else ""

    def skip(self, *words):
        """Steps over the words, if they come next."""
        if all(self.word(ahead) == word for ahead, word in enumerate(words)):
            self.at += len(words)
            return True
        return False

    def need(self, *words):
        if not self.skip(*words):
            raise _faults.syntax(self.text() or self.tokens[-1].text)

    def name(self):
        """The last part of a name that may be qualified."""
        while self.text(1) == ".":
            self.at += 2
        if self.at >= len(self.tokens) or self.tokens[self.at].kind not in ("name", "quoted"):
            raise _faults.syntax(self.text() or self.tokens[-1].text)
        self.at += 1
        return self.tokens[self.at - 1].name

    def parenthesis(self):
        """The tokens between the parentheses that come next."""
        if self.text() != "(":
            raise _faults.syntax(self.text() or self.tokens[-1].text)
        end = _lexer.closing(self.tokens, self.at)
        inside = self.tokens[self.at + 1:end]
        self.at = end + 1
        return inside

    def names(self):
        return [part[0].name for part in _lexer.split(self.parenthesis())]

    def more(self):
        return self.at < len(self.tokens)


def plain(tokens):
    """An expression with its literals in place, for a schema cannot bind them."""
    adapted = _adapt.adapted(tuple(tokens))
    text = adapted.text
    for name, value in sorted(adapted.bound.items(), reverse=True):
        literal = repr(value) if isinstance(value, float) else "'" + value.replace("'", "''") + "'"
        text = text.replace(":" + name, literal)
    return text


class TableDefinition:
    def __init__(self, name, tokens):
        self.table = name
        self.columns = []
        self.constraints = []
        self.collations = {}
        self.checks = []  # (name, expression)
        for part in _lexer.split(tokens):
            self.part(Definition(part))
        key = next((found for found in self.constraints if found.kind == "PK"), None)
        for column in self.columns:
            if column.identity or (key and self.is_in(column, key)):
                column.nullable = False

    @staticmethod
    def is_in(column, constraint):
        return column.name.lower() in (name.lower() for name in constraint.columns)

    def part(self, walk):
        name = walk.name() if walk.skip("CONSTRAINT") else None
        if name or walk.word() in ("PRIMARY", "UNIQUE", "FOREIGN", "CHECK"):
            self.constraint(walk, name, None)
        else:
            self.column(walk)
        if walk.more():
            raise _faults.syntax(walk.text())

    def made_up(self, kind, column=""):
        return f"{kind}__{self.table}__{column}".rstrip("_")

    def add(self, name, kind, columns, other=None):
        self.constraints.append(_tables.Constraint(self.table, name, kind, columns, other))

    def constraint(self, walk, name, column):
        """A constraint of the table, or of the column that it stands at."""
        if walk.skip("PRIMARY", "KEY") or walk.skip("UNIQUE"):
            kind = "PK" if walk.tokens[walk.at - 1].word == "KEY" else "UQ"
            walk.skip("CLUSTERED") or walk.skip("NONCLUSTERED")
            columns = walk.names() if walk.text() == "(" else [column]
            self.add(name or self.made_up(kind, "_".join(columns)), kind, columns)
        elif walk.word() in ("FOREIGN", "REFERENCES"):
            columns = walk.names() if walk.skip("FOREIGN", "KEY") else [column]
            walk.need("REFERENCES")
            other = walk.name()
            others = walk.names() if walk.text() == "(" else columns
            while walk.skip("ON"):
                walk.at += 1
                if not walk.skip("NO", "ACTION"):
                    raise _faults.not_here("foreign keys that act")
            name = name or self.made_up("FK", "_".join(columns))
            self.add(name, "F", columns, f"{name_text(other)} ({', '.join(map(name_text, others))})")
        elif walk.skip("CHECK"):
            name = name or self.made_up("CK", column or len(self.checks))
            self.checks.append((f"547 {name}", plain(walk.parenthesis())))
            self.add(name, "C", [column or ""])
        else:
            raise _faults.syntax(walk.text())

    def column(self, walk):
        name = walk.name()
        written = walk.name()
        if walk.text() == "(":
            written += "(" + "".join(token.text for token in walk.parenthesis()) + ")"
        kind = _column_types.parse_type(written)
        if kind is None:
            raise _faults.not_here(f"the type {written}")
        column = _tables.Column(name, kind, True, False, None)
        self.columns.append(column)
        while walk.more():
            self.option(walk, column)

    def option(self, walk, column):
        if walk.skip("COLLATE"):
            self.collations[column.name] = walk.name().upper()
        elif walk.skip("NOT", "NULL"):
            column.nullable = False
        elif walk.skip("NULL"):
            return
        elif walk.skip("IDENTITY"):
            column.identity = True
            counting = [token.text for token in walk.parenthesis()] if walk.text() == "(" else ["1", ",", "1"]
            if counting != ["1", ",", "1"]:
                raise _faults.not_here("an identity that does not count from 1 by 1")
        else:
            name = walk.name() if walk.skip("CONSTRAINT") else None
            if walk.skip("DEFAULT"):
                tokens = self.default(walk)
                column.default = f"({' '.join(token.text for token in tokens)})"
                column.own_default = plain(tokens)
            else:
                self.constraint(walk, name, column.name)

    @staticmethod
    def default(walk):
        start = walk.at
        if walk.text() == "(":
            walk.parenthesis()
        elif walk.skip("NEXT", "VALUE", "FOR"):
            walk.name()
        else:
            walk.at += 2 if walk.text() in "+-" else 1
            if walk.text() == "(":
                walk.parenthesis()
        return walk.tokens[start:walk.at]

    def type_checks(self, column):
        """(name, expression) of what SQLite would let pass."""
        place, name, kind = f"{self.table}.{column.name}", name_text(column.name), column.type
        if kind.name in _column_types.TEXTS and kind.size != _column_types.MAX:
            return [(f"8152 {place}", f"tds_fits({name}, {kind.size})")]
        if kind.name in RANGES:
            low, high = RANGES[kind.name]
            return [(f"245 {place}", f"typeof({name}) IN ('null', 'integer')"),
                    (f"8115 {place}", f"{name} IS NULL OR {name} BETWEEN {low} AND {high}")]
        if kind.name in ("FLOAT", *_column_types.DECIMALS):
            return [(f"8114 {place}", f"typeof({name}) IN ('null', 'integer', 'real')")]
        if kind.name in ("DATETIME", "DATETIME2", "DATE"):
            checks = [(f"241 {place}", f"tds_is_moment({name})")]
            if kind.name == "DATETIME":
                checks.append((f"242 {place}", f"tds_is_datetime({name})"))
            return checks
        return []

    def column_text(self, column, alone_in_key):
        if column.identity:
            if not alone_in_key or column.type.name != "INT":
                raise _faults.not_here("an identity that is not an INT and the key")
            return f"{name_text(column.name)} INTEGER PRIMARY KEY AUTOINCREMENT"
        # The word behind the type makes SQLite keep dates as the texts they are.
        is_moment = column.type.name in ("DATETIME", "DATETIME2", "DATE")
        text = f'{name_text(column.name)} "{column.type.written()}{" TEXT" if is_moment else ""}"'
        if column.type.name in _column_types.TEXTS:
            exact = any(mark in self.collations.get(column.name, "") for mark in ("_CS", "_BIN"))
            text += " COLLATE " + ("BINARY" if exact else "TDS_TEXT")
        elif is_moment:
            text += " COLLATE TDS_MOMENT"
        text += "" if column.nullable else " NOT NULL"
        return text + (f" DEFAULT ({column.own_default})" if column.default else "")

    def statements(self):
        """The statements of SQLite that make the table."""
        key = next((found for found in self.constraints if found.kind == "PK"), None)
        single = key is not None and len(key.columns) == 1
        parts = [self.column_text(column, single and self.is_in(column, key)) for column in self.columns]
        assigned = any(column.identity for column in self.columns)
        if key and not assigned:
            parts.append(f"PRIMARY KEY ({', '.join(map(name_text, key.columns))})")
        checks = [check for column in self.columns for check in self.type_checks(column)] + self.checks
        parts += [f"CONSTRAINT {name_text(name)} CHECK ({expression})" for name, expression in checks]
        for found in self.constraints:
            if found.kind == "F":
                parts.append(f"FOREIGN KEY ({', '.join(map(name_text, found.columns))}) "
                             f"REFERENCES {found.other_table}")
        kept_by_key = " WITHOUT ROWID" if key and not assigned else ""
        made = [f"CREATE TABLE {name_text(self.table)} ({', '.join(parts)}){kept_by_key}"]
        for found in self.constraints:
            if found.kind == "UQ":
                made.append(index_text(self.columns, found, found.columns, "", True))
        return made


def index_text(columns, constraint, ordered, condition, unique):
    """An index. To a server one Null is a duplicate of another, so a unique index is over expressions."""
    texts = {column.name.lower() for column in columns if column.type.name in _column_types.TEXTS}
    parts = []
    for name in ordered:
        collation = " COLLATE TDS_TEXT" if name.lower() in texts else ""
        parts.append(f"coalesce({name_text(name)}, x''){collation}" if unique else name_text(name))
    where = f" WHERE {condition}" if condition else ""
    name = name_text(constraint.table + "." + constraint.name)
    return (f"CREATE {'UNIQUE ' if unique else ''}INDEX {name} ON "
            f"{name_text(constraint.table)} ({', '.join(parts)}){where}")


def create_table(connection, walk):
    name = walk.name()
    definition = TableDefinition(name, walk.parenthesis())
    if _tables.table_name(connection, name):
        raise _faults.exists_already(name)
    for statement in definition.statements():
        connection.execute(statement)
    _tables.add(connection, name, definition.columns, definition.constraints)


def create_index(connection, walk, unique):
    name = walk.name()
    walk.need("ON")
    written = walk.name()
    table = _tables.table_name(connection, written)
    if table is None:
        raise _faults.no_such_object(written)
    names = walk.names()
    if walk.skip("INCLUDE"):
        walk.parenthesis()
    condition = ""
    if walk.skip("WHERE"):
        start = walk.at
        while walk.more() and walk.word() != "WITH":
            walk.at += 1
        condition = plain(walk.tokens[start:walk.at])
    kind = "UX" if unique else "IX"
    constraint = _tables.Constraint(table, name, kind, names, filtered=bool(condition))
    known = {found.name.lower() for found in _tables.constraints_of(connection, table)}
    if name.lower() in known:
        raise _faults.index_exists(name, table)
    columns = _tables.columns_of(connection, table)
    connection.execute(index_text(columns, constraint, names, condition, unique))
    _tables.add_constraint(connection, constraint)


def create_sequence(connection, walk):
    name, first, step = walk.name(), 1, 1
    while walk.more():
        if walk.skip("START", "WITH"):
            first = int(walk.text())
        elif walk.skip("INCREMENT", "BY"):
            step = int(walk.text())
        walk.at += 1
    if connection.execute("SELECT 1 FROM tds_sequence WHERE name = ?", (name,)).fetchone():
        raise _faults.exists_already(name)
    connection.execute("INSERT INTO tds_sequence VALUES (?, ?, ?)", (name, first, step))


def drop(connection, walk):
    kind = walk.word()
    walk.at += 1
    silent = walk.skip("IF", "EXISTS")
    name = walk.name()
    if kind == "TABLE":
        table = _tables.table_name(connection, name)
        found = table is not None
        if found:
            connection.execute(f"DROP TABLE {name_text(table)}")
            _tables.forget(connection, table)
    elif kind == "SEQUENCE":
        found = connection.execute("DELETE FROM tds_sequence WHERE name = ?", (name,)).rowcount > 0
    elif kind == "INDEX":
        walk.need("ON")
        table = walk.name()
        found = connection.execute("DELETE FROM tds_constraint WHERE table_name = ? AND name = ?",
                                   (table, name)).rowcount > 0
        if found:
            connection.execute(f"DROP INDEX {name_text(table + '.' + name)}")
    else:
        raise _faults.not_here(f"DROP {kind}")
    if not found and not silent:
        raise _faults.cannot_drop(kind.lower(), name)


def run(connection, tokens):
    """Runs a CREATE or DROP."""
    walk = Definition(tokens)
    if walk.skip("DROP"):
        return drop(connection, walk)
    walk.need("CREATE")
    if walk.skip("TABLE"):
        return create_table(connection, walk)
    if walk.skip("SEQUENCE"):
        return create_sequence(connection, walk)
    unique = walk.skip("UNIQUE")
    walk.skip("CLUSTERED") or walk.skip("NONCLUSTERED")
    if not walk.skip("INDEX"):
        raise _faults.not_here(f"CREATE {walk.text()}")
    return create_index(connection, walk, unique)
