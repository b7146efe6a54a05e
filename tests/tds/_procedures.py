"""The stored procedures that clients call: prepared statements, the catalogue, and the faults of tests."""

import dataclasses

import _catalogue
import _column_types
import _faults
import _lexer
from _faults import Fault
from _outcomes import Counted, Rows

BY_NUMBER = {10: "sp_executesql", 11: "sp_prepare", 12: "sp_execute", 13: "sp_prepexec", 15: "sp_unprepare"}


@dataclasses.dataclass
class Argument:
    name: str  # With its @; empty for one that is told by its place.
    type: _column_types.Type
    value: object
    returned: bool = False


@dataclasses.dataclass
class Prepared:
    text: str
    declared: list  # (name in capitals, type)


class Procedures:
    """The procedures of one session. Each yields outcomes; what it returns by parameters is in `returned`."""

    def __init__(self, engine):
        self.engine, self.knobs = engine, engine.knobs
        engine.call = self.run_text
        self.prepared = {}
        self.last_handle = 0
        self.returned = []  # Arguments with their new values.
        self.table = {
            "sp_executesql": self.execute_sql, "sp_prepare": self.prepare, "sp_execute": self.execute,
            "sp_prepexec": self.prepare_and_execute, "sp_unprepare": self.unprepare,
            "sp_columns": self.columns, "sp_columns_100": self.columns, "sp_pkeys": self.keys,
            "sp_tables": self.tables, "test_fail": self.fault("fail"), "test_delay": self.fault("delay"),
            "test_drop": self.fault("drop"), "test_drop_late": self.fault("drop_late"),
            "test_clear": self.clear, "test_copy_database": self.copy, "test_set_clock": self.set_clock,
        }

    def call(self, name, arguments):
        self.returned = []
        plain = name.replace("[", "").replace("]", "").split(".")[-1].lower()
        try:
            if plain not in self.table:
                raise _faults.unknown_procedure(name)
            yield from self.table[plain](arguments)
        except Fault as fault:
            yield fault

    def run_text(self, tokens):
        """EXEC procedure @name = value, ..; the outcomes."""
        at = 1
        while at + 2 < len(tokens) and tokens[at + 1].text == ".":
            at += 2
        arguments = []
        for part in _lexer.split(tokens[at + 1:]):
            named = len(part) > 2 and part[1].text == "="
            arguments.append(written_argument(part[0].text if named else "", part[2:] if named else part))
        return self.call(tokens[at].name, arguments)

    # Prepared statements.

    def parameters(self, declared, arguments):
        """The values for the declared parameters, by name or by place."""
        by_name = {argument.name.upper(): argument for argument in arguments if argument.name}
        by_place = [argument for argument in arguments if not argument.name]
        values = {}
        for index, (name, kind) in enumerate(declared):
            argument = by_name.get(name) or (by_place[index] if index < len(by_place) else None)
            if argument is None:
                raise _faults.missing_argument("sp_executesql", name)
            values[name] = (kind or argument.type, argument.value)
        return values

    def execute_sql(self, arguments):
        text = arguments[0].value
        declared = declarations(arguments[1].value if len(arguments) > 1 else "")
        yield from self.engine.run_batch(text, self.parameters(declared, arguments[2:]))

    def remember(self, arguments):
        """Keeps the statement, gives its handle back in the first argument."""
        handle, declared, text = arguments[:3]
        statement = Prepared(text.value, declarations(declared.value))
        self.engine.count_prepared(text.value)
        self.last_handle += 1
        self.prepared[self.last_handle] = statement
        self.returned.append(dataclasses.replace(handle, type=_column_types.INT, value=self.last_handle))
        return statement

    def prepare(self, arguments):
        statement = Prepared(arguments[2].value, declarations(arguments[1].value))
        tokens = _lexer.tokens_of(statement.text)
        if tokens and tokens[0].word == "SELECT":
            unknown = {name: (kind, None) for name, kind in statement.declared}
            shapes = self.engine.shapes(tokens, unknown)
            for shape in shapes:
                shape.type = shape.type or _column_types.text_type()
            yield Rows(shapes, [], counted=False)
        self.remember(arguments)

    def execute(self, arguments):
        statement = self.prepared.get(arguments[0].value)
        if statement is None:
            raise _faults.unknown_handle(arguments[0].value)
        yield from self.engine.run_batch(statement.text, self.parameters(statement.declared, arguments[1:]))

    def prepare_and_execute(self, arguments):
        statement = self.remember(arguments)
        yield from self.engine.run_batch(statement.text, self.parameters(statement.declared, arguments[3:]))

    def unprepare(self, arguments):
        if self.prepared.pop(arguments[0].value, None) is None:
            raise _faults.unknown_handle(arguments[0].value)
        return iter(())

    # The catalogue.

    def columns(self, arguments):
        yield _catalogue.columns(self.engine.connection, given(arguments, "table_name"),
                                 given(arguments, "column_name", 3), given(arguments, "odbcver") == 3)

    def keys(self, arguments):
        yield _catalogue.keys(self.engine.connection, given(arguments, "table_name"))

    def tables(self, arguments):
        yield _catalogue.tables(self.engine.connection, given(arguments, "table_name"))

    # What tests ask for.

    def fault(self, action):
        def add(arguments):
            details = {argument.name[1:].lower(): argument.value for argument in arguments}
            self.knobs.add(action, **details)
            yield Counted("EXEC", None)
        return add

    def copy(self, arguments):
        self.engine.databases.copy(given(arguments, "source"), given(arguments, "target", 1))
        yield Counted("EXEC", None)

    def set_clock(self, arguments):
        """GETDATE() of the session's database says this from now on."""
        self.engine.databases.clocks[_faults.database()] = given(arguments, "now")
        yield Counted("EXEC", None)

    def clear(self, _arguments):
        self.knobs.clear()
        yield Counted("EXEC", None)


def given(arguments, name, place=0):
    """The value of an argument by its name, or the one at its place; None when it is not there."""
    for argument in arguments:
        if argument.name.lower() == "@" + name:
            return argument.value
    unnamed = [argument for argument in arguments if not argument.name]
    return unnamed[place].value if place < len(unnamed) and name != "odbcver" else None


def written_argument(name, tokens):
    """A literal in the text of an EXEC."""
    text = "".join(token.text for token in tokens)
    if tokens and tokens[0].kind == "text":
        return Argument(name, _column_types.text_type(), tokens[0].value)
    if text.upper() == "NULL":
        return Argument(name, _column_types.text_type(), None)
    if text.lstrip("-").isdigit():
        return Argument(name, _column_types.INT, int(text))
    if len(tokens) == 1 and tokens[0].kind in ("name", "quoted"):
        return Argument(name, _column_types.text_type(), tokens[0].name)
    raise _faults.not_here(f"the argument {text}")


def declarations(text):
    """(name in capitals, type) of "@P1 int, @P2 nvarchar(50) OUTPUT"."""
    found = []
    for part in _lexer.split(_lexer.tokens_of(text or "")):
        words = [token.text for token in part[1:] if token.word not in ("OUT", "OUTPUT", "AS")]
        found.append((part[0].word, _column_types.parse_type("".join(words))))
    return found
