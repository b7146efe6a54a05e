"""The names and types of the columns of a result, known before there are rows.

SQLite tells the declared types of columns, by way of a view that is made of the query and never read. For the
rest the expression itself is looked at, and where that does not tell, the values are.
"""

import dataclasses
import re

import _lexer
import _tables
from _adapt import adapted, bound_name, name_text
from _column_types import BIGINT, DATETIME, FLOAT, IDENTITY, INT, Type, parse_type, text_type

RESULTS = {"GETDATE": DATETIME, "CURRENT_TIMESTAMP": DATETIME,
           "SYSDATETIME": Type("DATETIME2", scale=7), "SCOPE_IDENTITY": IDENTITY,
           "COUNT": INT, "LEN": INT, "DATALENGTH": INT, "OBJECT_ID": INT,
           "COLUMNPROPERTY": INT, "XACT_STATE": Type("SMALLINT"),
           "DATABASEPROPERTYEX": text_type(128), "DB_NAME": text_type(128),
           "SCHEMA_NAME": text_type(128), "USER_NAME": text_type(128),
           "SUSER_SNAME": text_type(128), "@@IDENTITY": IDENTITY, "@@ROWCOUNT": INT,
           "@@TRANCOUNT": INT, "@@ERROR": INT, "@@SPID": Type("SMALLINT"),
           "@@VERSION": text_type(300), "@@SERVERNAME": text_type(128)}
# Functions whose result has the type of their first argument.
LIKE_THEIR_ARGUMENT = {"MAX", "MIN", "ISNULL", "COALESCE", "NULLIF"}


@dataclasses.dataclass
class Shape:
    name: str
    type: Type | None  # None when only values can tell.
    nullable: bool = True
    identity: bool = False


def select_items(tokens):
    """(start, end) of the select list of the first SELECT, and its items; empty for another statement."""
    if not tokens or tokens[0].word != "SELECT":
        return 0, 0, []
    start = 1 + (len(tokens) > 1 and tokens[1].word in ("DISTINCT", "ALL"))
    if start < len(tokens) and tokens[start].word == "TOP":
        start = (_lexer.closing(tokens, start + 1) if tokens[start + 1].text == "(" else start + 1) + 1
    end, depth = start, 0
    while end < len(tokens) and not (depth == 0 and tokens[end].word in ("FROM", "WHERE", "UNION", "ORDER")):
        depth += {"(": 1, ")": -1}.get(tokens[end].text, 0)
        end += 1
    return start, end, _lexer.split(tokens[start:end])


def without_alias(item):
    """(the expression of an item, its alias or None)."""
    if len(item) > 2 and item[-2].word == "AS":
        return item[:-2], item[-1].value if item[-1].kind == "text" else item[-1].name
    names = ("name", "quoted")
    if len(item) > 1 and item[-1].kind in names and item[-1].word != "END" and (
            item[-2].text == ")" or item[-2].kind in (*names, "text", "number") and item[-2].word != "NOT"):
        return item[:-1], item[-1].name
    return item, None


def unwrapped(expression):
    """The column inside MAX(column) and the like, whose type is the same."""
    while len(expression) > 3 and expression[0].word in LIKE_THEIR_ARGUMENT and expression[1].text == "(" \
            and _lexer.closing(expression, 1) == len(expression) - 1:
        expression = _lexer.split(expression[2:-1])[0]
    return expression


def type_of(expression, parameters):
    """The type of an expression that is no column; None when it does not tell."""
    first = expression[0]
    if len(expression) == 1 and first.kind == "number":
        if "E" in first.text.upper():
            return FLOAT
        if first.text.isdigit():
            return INT if int(first.text) < 1 << 31 else BIGINT
        digits = first.text.lstrip("0").replace(".", "")
        return Type("NUMERIC", precision=max(len(digits), 1), scale=len(first.text.partition(".")[2]))
    if len(expression) == 1 and first.kind == "text":
        return text_type(max(len(first.value.encode("utf-16-le")) // 2, 1))
    if len(expression) == 1 and first.word in parameters:
        return parameters[first.word][0]
    called = len(expression) > 2 and expression[1].text == "("
    whole = called and _lexer.closing(expression, 1) == len(expression) - 1
    if whole and first.word == "CAST":
        at = max(index for index, token in enumerate(expression) if token.word == "AS")
        return parse_type("".join(token.text for token in expression[at + 1:-1]))
    if whole and first.word == "CONVERT":
        return parse_type("".join(token.text for token in _lexer.split(expression[2:-1])[0]))
    return RESULTS.get(first.word) if whole or len(expression) == 1 else None


def probe(connection, tokens, items, start, end, parameters, tables):
    """(name, declared type) of every column, as SQLite sees the query."""
    rebuilt = []
    for item in items:
        expression, alias = without_alias(item)
        inner = unwrapped(expression)
        rebuilt += [_lexer.Token("mark", ",", 0)] if rebuilt else []
        rebuilt += inner if alias is None else [*inner, _lexer.Token("name", "AS", 0),
                                                _lexer.Token("quoted", name_text(alias), 0)]
    whole = tokens[:start] + rebuilt + tokens[end:] if items else tokens
    text = adapted(tuple(whole), tuple(parameters), tables)
    words = text.text
    for name in sorted([*text.bound, *map(bound_name, parameters)], key=len, reverse=True):
        words = words.replace(":" + name, "NULL")
    connection.execute(f"CREATE TEMP VIEW tds_shape AS {words}")
    try:
        # A name that comes twice comes with ":1" the second time.
        return [(re.sub(r":\d+$", "", row[1]), row[2])
                for row in connection.execute("PRAGMA temp.table_info(tds_shape)").fetchall()]
    finally:
        connection.execute("DROP VIEW temp.tds_shape")


def only_table(connection, tokens, end):
    """The columns of the one table that the query reads; empty when there are more, or other things."""
    rest = [token for token in tokens[end:]]
    if not rest or rest[0].word != "FROM":
        return []
    at = 1
    while at + 1 < len(rest) and rest[at + 1].text == ".":
        at += 2
    after = rest[at + 1] if at + 1 < len(rest) else None
    if after is not None and after.word not in ("WHERE", "ORDER", "WITH"):
        return []
    return _tables.columns_of(connection, rest[at].name) if at < len(rest) else []


def describe(connection, tokens, parameters, tables=()):
    """The columns of a SELECT."""
    start, end, items = select_items(tokens)
    probed = probe(connection, tokens, items, start, end, parameters, tables)
    known = {column.name.lower(): column for column in only_table(connection, tokens, end)}
    plain = [without_alias(item) for item in items]
    stars = [index for index, (expression, _) in enumerate(plain) if expression[-1].text == "*"]
    shapes = []
    for index, (name, declared) in enumerate(probed):
        item = item_at(plain, stars, index, len(probed))
        shape = Shape(name, parse_type(declared.removesuffix(" TEXT")))
        column = known.get(name.lower())
        if item is not None:
            expression, alias = item
            if shape.type is None:
                shape.type = type_of(unwrapped(expression), parameters)
            is_column = expression[-1].kind in ("name", "quoted") and (
                len(expression) == 1 or expression[-2].text == ".") and not expression[0].text.startswith("@")
            shape.name = alias or (expression[-1].name if is_column else "")
            column = known.get(expression[-1].name.lower()) if is_column else None
        if column is not None:
            shape.nullable, shape.identity, shape.type = column.nullable, column.identity, column.type
        shapes.append(shape)
    return shapes


def item_at(items, stars, index, count):
    """The item that gave a column; None for a column that a star stands for."""
    if not stars:
        return items[index] if index < len(items) else None
    if index < stars[0]:
        return items[index]
    from_end = count - index
    return items[-from_end] if from_end < len(items) - stars[-1] else None


def from_values(values):
    """The type of a column that only its values tell."""
    present = [value for value in values if value is not None]
    if all(isinstance(value, int) for value in present):
        return INT if all(-(1 << 31) <= value < 1 << 31 for value in present) else BIGINT
    if all(isinstance(value, (int, float)) for value in present):
        return FLOAT
    return text_type(max(max(len(str(value)) * 2 for value in present), 1))
