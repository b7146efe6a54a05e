"""One session's work on the database: statements in, outcomes out."""

import dataclasses
import sqlite3
import time
import zlib

import _adapt
import _ddl
import _faults
import _functions
import _lexer
import _shape
import _sqlite_errors
import _tables
import _triggers
from _faults import Fault
from _outcomes import Changed, Counted, DroppedByTest, Rows, Told
from _transactions import Transactions

RESERVED_NAMES = {"VERSION": "Microsoft SQL Server 2019 (RTM) - the test server", "SERVERNAME": "talvex-test",
                  "MAX_PRECISION": 38, "LANGUAGE": "us_english"}
# Settings that change nothing here.
SILENT_SETTINGS = set("""ANSI_DEFAULTS ANSI_NULLS ANSI_NULL_DFLT_ON ANSI_PADDING ANSI_WARNINGS ARITHABORT
CONCAT_NULL_YIELDS_NULL CURSOR_CLOSE_ON_COMMIT DATEFORMAT DATEFIRST DEADLOCK_PRIORITY LANGUAGE
NUMERIC_ROUNDABORT QUOTED_IDENTIFIER ROWCOUNT TEXTSIZE""".split())


class Engine:
    """Statements of one session. `wait` sleeps a while and raises when the client is gone or cancels."""

    def __init__(self, server, database, number, wait):
        """`database` is (the name, the file)."""
        self.databases, self.knobs, self.number, self.wait = server.databases, server.knobs, number, wait
        self.texts, self.prepared = server.texts, server.prepared
        self.call = None  # Runs an EXEC; whoever has the procedures sets it.
        _faults.session.database, path = database
        self.connection = sqlite3.connect(path, isolation_level=None, timeout=5, cached_statements=256)
        self.fault = None
        self.schema_version, self.known_shapes = None, {}
        self.identity = None
        self.counts = {"ROWCOUNT": 0, "ERROR": 0}
        self.nocount = False
        self.format_only = False
        self.xact_abort = False
        self.told_by_triggers = []
        self.table_variables = ()
        self.code_page = self.databases.code_page(_faults.session.database)
        self.identity_insert = None
        self.transactions = Transactions(self.connection, server.lock_wait, wait)
        _functions.register(self.connection, self)
        self.connection.execute("PRAGMA foreign_keys = ON")
        self.connection.execute("PRAGMA synchronous = OFF")
        # Until here somebody who closes the database may have been in the way; from now on, waiting for locks
        # is the matter of the transactions.
        self.connection.execute("PRAGMA busy_timeout = 0")
        for option in server.user_options:
            list(self.run_batch(f"SET {option} ON"))

    def close(self):
        self.connection.close()

    # What the functions of the language ask for.

    def global_value(self, name):
        if name == "TRANCOUNT":
            return self.transactions.count
        if name == "IDENTITY":
            return self.identity
        if name == "SPID":
            return self.number
        return self.counts.get(name, RESERVED_NAMES.get(name))

    def now(self):
        return self.databases.now(_faults.database())

    def next_value(self, name):
        row = self.connection.execute("UPDATE tds_sequence SET next = next + step WHERE name = ? "
                                      "RETURNING next - step", (name,)).fetchall()
        if not row:
            raise _faults.unknown_table(name)
        return row[0][0]

    def object_id(self, name, kind=None):
        plain = name.replace("[", "").replace("]", "").split(".")[-1]
        known = self.connection.execute(
            "SELECT 'U' FROM tds_column WHERE table_name = ?1 UNION ALL "
            "SELECT kind FROM tds_constraint WHERE name = ?1 AND kind NOT IN ('UX', 'IX') "
            "UNION ALL SELECT 'SO' FROM tds_sequence WHERE name = ?1", (plain,)).fetchall()
        kinds = [row[0] for row in known if row[0] and (kind is None or row[0] == kind.strip().upper())]
        return zlib.crc32(plain.upper().encode()) & 0x7FFFFFFF if kinds else None

    def column_property(self, table_id, column, wanted):
        for (table,) in self.connection.execute("SELECT DISTINCT table_name FROM tds_column").fetchall():
            if self.object_id(table) != table_id:
                continue
            for found in _tables.columns_of(self.connection, table):
                if found.name.lower() == column.lower():
                    known = {"ISIDENTITY": found.identity, "ALLOWSNULL": found.nullable}
                    return known.get(wanted.upper())
        return None

    def count_prepared(self, text):
        self.prepared[text] += 1

    # Running.

    def run_batch(self, text, parameters=None):
        """Yields the outcomes of a batch: Rows, Counted, Told, Changed, and Fault, not always the last."""
        try:
            statements = _lexer.statements_of(text)
        except Fault as fault:
            self.texts.note_refused(text)
            yield fault
            return
        self.texts.note(text)
        try:
            yield from self.run_all(statements, text, parameters or {})
        finally:
            self.table_variables = ()

    def run_all(self, statements, text, parameters):
        for statement in statements:
            for outcome in self.run_one(statement, text, parameters):
                yield outcome
                if isinstance(outcome, Fault) and outcome.ends_batch:
                    return

    def run_one(self, statement, text, parameters):
        if isinstance(statement, list):
            yield from self.run_statement(statement, text, parameters)
        elif statement[0] == "block":
            yield from self.run_all(statement[1], text, parameters)
        else:
            _, condition, then, otherwise = statement
            try:
                chosen = then if self.holds(condition, parameters) else otherwise
            except Fault as fault:
                yield fault
                return
            if chosen is not None:
                yield from self.run_one(chosen, text, parameters)

    def holds(self, condition, parameters):
        adapted = self.adapted(condition, parameters)
        query = f"SELECT CASE WHEN {adapted.text} THEN 1 ELSE 0 END"
        values = self.values(adapted, parameters)
        return self.guarded("SELECT", lambda: self.connection.execute(query, values).fetchone()[0])

    def run_statement(self, tokens, batch, parameters):
        own = batch[tokens[0].at:tokens[-1].at + len(tokens[-1].text)]
        rules = [] if "TEST_" in own.upper() else self.knobs.hits(own)
        outer, self.told_by_triggers = self.told_by_triggers, []
        try:
            self.suffer(rules)
            outcomes = self.outcomes(tokens, parameters)
            # A generator would run beyond this handler.
            outcomes = list(outcomes)
            self.counts["ERROR"] = 0
        except Fault as fault:
            self.counts["ERROR"] = fault.number
            outcomes = [fault]
            aborts = self.xact_abort and not fault.raised
            if self.transactions.count and (fault.ends_transaction or aborts):
                outcomes.insert(0, self.transactions.end("ROLLBACK"))
                fault.ends_batch = True
        outcomes = [*self.told_by_triggers, *outcomes]
        self.told_by_triggers = outer
        if any(rule.action == "drop_late" for rule in rules):
            raise DroppedByTest
        yield from outcomes

    def suffer(self, rules):
        for rule in rules:
            if rule.action == "delay":
                self.sleep(rule.milliseconds / 1000)
            elif rule.action == "drop":
                raise DroppedByTest
            elif rule.action == "fail":
                raise _faults.made(rule.number, self.number, rule.text)

    def sleep(self, seconds):
        end = time.monotonic() + seconds
        while (left := end - time.monotonic()) > 0:
            self.wait(left)

    def outcomes(self, tokens, parameters):
        verb = tokens[0].word
        handlers = {"SELECT": self.query, "WITH": self.query, "INSERT": self.change, "UPDATE": self.change,
                    "DELETE": self.change, "TRUNCATE": self.truncate, "CREATE": self.define,
                    "DROP": self.define, "SET": self.set, "BEGIN": self.transaction,
                    "COMMIT": self.transaction, "ROLLBACK": self.transaction, "PRINT": self.tell,
                    "USE": self.use, "EXEC": self.execute, "EXECUTE": self.execute,
                    "DECLARE": self.declare, "THROW": self.throw, "RAISERROR": self.throw}
        if verb not in handlers:
            raise _faults.not_here(f"the statement {verb}") if verb in _lexer.STARTERS else _faults.syntax(
                tokens[0].text)
        return handlers[verb](tokens, parameters)

    def guarded(self, verb, action):
        """What the action returns; errors of SQLite become faults."""
        try:
            return action()
        except (sqlite3.Error, sqlite3.Warning) as error:
            if self.fault is not None:
                fault, self.fault = self.fault, None
                raise fault from error
            if _sqlite_errors.is_busy(error):
                raise _faults.deadlock_victim(self.number) from error
            raise _sqlite_errors.fault_of(self.connection, error, verb) from error
        except UnicodeEncodeError:
            raise _faults.not_here("texts with half a letter") from None

    @staticmethod
    def values(adapted, parameters):
        known = {_adapt.bound_name(name): value for name, (_, value) in parameters.items()}
        named = {**adapted.bound, **known}
        return {name: float(value) if hasattr(value, "as_tuple") else value for name, value in named.items()}

    def adapted(self, tokens, parameters):
        return _adapt.adapted(tuple(tokens), tuple(parameters), self.table_variables, self.code_page)

    def query(self, tokens, parameters):
        adapted = self.adapted(tokens, parameters)
        self.transactions.reading(adapted.changes_sequence)
        shapes = self.shapes(tokens, parameters)
        rows = []
        if not self.format_only:
            values = self.values(adapted, parameters)
            rows = self.guarded("SELECT", lambda: self.transactions.run(
                lambda: self.connection.execute(adapted.text, values).fetchall(), adapted.changes_sequence))
        for index, shape in enumerate(shapes):
            if shape.type is None:
                shape.type = _shape.from_values([row[index] for row in rows])
        self.counts["ROWCOUNT"] = len(rows)
        return [*self.transactions.news(), Rows(shapes, rows)]

    def shapes(self, tokens, parameters):
        """The columns of a query, known as long as no table changes."""
        version = self.connection.execute("PRAGMA schema_version").fetchone()[0]
        if version != self.schema_version:
            self.schema_version = version
            self.known_shapes.clear()
        key = (tuple(tokens), tuple((name, kind) for name, (kind, _) in parameters.items()))
        if key not in self.known_shapes:
            self.known_shapes[key] = self.guarded("SELECT", lambda: _shape.describe(
                self.connection, tokens, parameters, self.table_variables))
        return [dataclasses.replace(shape) for shape in self.known_shapes[key]]

    def change(self, tokens, parameters):
        verb = tokens[0].word
        tokens, output = _adapt.with_output_last(_adapt.change_tokens(tokens))
        target, at = _adapt.target_table(tokens)
        table = _tables.table_name(self.connection, target)
        if table is None:
            raise _faults.unknown_table(target)
        columns = _tables.columns_of(self.connection, table)
        triggers = _triggers.bodies(self.connection, table, verb)
        _triggers.refuse_output(triggers, output)
        if verb == "INSERT":
            self.refuse_identity(table, columns, tokens[at + 1:])
        adapted = self.adapted(tokens, parameters)
        text, values = adapted.text, self.values(adapted, parameters)
        names = [column.name for column in columns]
        if output is not None or triggers:
            text += " RETURNING " + ", ".join(map(_adapt.name_text, names))

        def run():
            rows, count = self.changed(text, values, verb, table)
            if output is not None:
                rows = self.put_out(output, names, rows)
            if triggers:
                _triggers.fire(self, table, verb, triggers, names, rows)
            return rows, count

        rows, count = self.guarded(verb, lambda: self.transactions.run(run, True))
        if verb == "INSERT" and count and any(column.identity for column in columns):
            self.identity = self.connection.execute("SELECT last_insert_rowid()").fetchone()[0]
        self.counts["ROWCOUNT"] = count
        news = self.transactions.news()
        if output is None or output.into is not None:
            return [*news, Counted(verb, count)]
        known = {column.name.lower(): column for column in columns}
        shapes = [_shape.Shape(found.name, found.type, found.nullable, found.identity)
                  for found in (known[token.name.lower()] for token in output.columns)]
        return [*news, Rows(shapes, rows, verb)]

    def put_out(self, output, names, rows):
        """The columns that OUTPUT names, of whole rows; they go into its table, if it has one."""
        places = [[name.lower() for name in names].index(token.name.lower()) for token in output.columns]
        chosen = [tuple(row[place] for place in places) for row in rows]
        if output.into is None:
            return chosen
        if output.into not in self.table_variables:
            raise _faults.undeclared(output.into)
        place, marks = _adapt.name_text(output.into), ", ".join("?" * len(places))
        self.connection.executemany(f"INSERT INTO temp.{place} VALUES ({marks})", chosen)
        return rows

    def declare(self, tokens, _parameters):
        """DECLARE @name TABLE (columns), for the rest of the batch."""
        if len(tokens) < 4 or tokens[2].word != "TABLE":
            raise _faults.not_here("variables that are no tables")
        name, columns = tokens[1].word, " ".join(token.text for token in tokens[4:-1])
        # Those of batches before are gone for the language, and here as soon as the name is needed.
        self.connection.execute(f"DROP TABLE IF EXISTS temp.{_adapt.name_text(name)}")
        self.connection.execute(f"CREATE TEMP TABLE {_adapt.name_text(name)} ({columns})")
        self.table_variables = (*self.table_variables, name)
        return []

    def throw(self, tokens, _parameters):
        """THROW number, text, state; RAISERROR (text, severity, state)."""
        found = [token for token in tokens[1:] if token.kind in ("text", "number")]
        if tokens[0].word == "THROW":
            raise _faults.thrown(int(found[0].text), found[1].value)
        raise _faults.raised(found[0].value, int(found[1].text))

    def refuse_identity(self, table, columns, rest):
        """A number that the table assigns itself cannot be given, unless that was asked for."""
        if not rest or rest[0].text != "(" or (self.identity_insert or "").lower() == table.lower():
            return
        given = {part[0].name.lower() for part in _lexer.split(rest[1:_lexer.closing(rest, 0)]) if part}
        if any(column.identity and column.name.lower() in given for column in columns):
            raise _faults.explicit_identity(table)

    def changed(self, text, values, verb, table):
        """(rows of OUTPUT, count) of a change; names the foreign key that it breaks."""
        connection = self.connection
        connection.execute("SAVEPOINT tds_change")
        try:
            connection.execute("PRAGMA defer_foreign_keys = ON")
            cursor = connection.execute(text, values)
            rows = cursor.fetchall()
            count = len(rows) if rows else max(cursor.rowcount, 0)
            fault = _sqlite_errors.broken_reference(connection, verb, table)
            if fault is not None:
                raise fault
        except BaseException:
            connection.execute("ROLLBACK TO tds_change")
            raise
        finally:
            connection.execute("RELEASE tds_change")
        return rows, count

    def truncate(self, tokens, parameters):
        name = tokens[-1]
        deletion = [_lexer.Token("name", word, 0) for word in ("DELETE", "FROM")]
        self.change([*deletion, name], parameters)
        return [Counted("TRUNCATE", None)]

    def execute(self, tokens, _parameters):
        return self.call(tokens)

    def define(self, tokens, _parameters):
        if len(tokens) > 2 and tokens[1].word == "DATABASE":
            return self.define_database(tokens)
        if len(tokens) > 2 and tokens[1].word == "TRIGGER":
            work = _triggers.create if tokens[0].word == "CREATE" else _triggers.drop
            self.guarded("CREATE", lambda: self.transactions.run(lambda: work(self.connection, tokens), True))
            return [*self.transactions.news(), Counted(tokens[0].word, None)]
        self.guarded("CREATE", lambda: self.transactions.run(lambda: _ddl.run(self.connection, tokens), True))
        return [*self.transactions.news(), Counted(tokens[0].word, None)]

    def define_database(self, tokens):
        """CREATE DATABASE name, whatever may follow, and DROP DATABASE [IF EXISTS] name."""
        if self.transactions.count:
            raise _faults.in_transaction(f"{tokens[0].word} DATABASE")
        name = tokens[4 if tokens[2].word == "IF" and len(tokens) > 4 else 2].name
        if tokens[0].word == "CREATE":
            collation = tokens[-1].name if tokens[-2].word == "COLLATE" else None
            self.databases.create(name, collation)
        elif tokens[2].word != "IF" or self.databases.find(name):
            self.databases.drop(name)
        return [Counted(tokens[0].word, None)]

    def set(self, tokens, _parameters):
        name = tokens[1].word if len(tokens) > 1 else ""
        value = tokens[-1].word
        if name == "NOCOUNT":
            self.nocount = value == "ON"
        elif name == "FMTONLY":
            self.format_only = value == "ON"
        elif name == "XACT_ABORT":
            self.xact_abort = value == "ON"
        elif name == "IDENTITY_INSERT":
            self.identity_insert = tokens[-2].name if value == "ON" else None
        elif name == "IMPLICIT_TRANSACTIONS":
            self.transactions.implicit = value == "ON"
        elif name == "LOCK_TIMEOUT":
            self.transactions.lock_timeout(int("".join(token.text for token in tokens[2:])))
        elif name == "TRANSACTION":
            self.transactions.isolate(" ".join(token.word for token in tokens[4:]))
        elif name not in SILENT_SETTINGS:
            raise _faults.unknown_setting(tokens[-1].text)
        return [Counted("SET", None)]

    def transaction(self, tokens, _parameters):
        return [*self.transactions.statement(tokens), Counted(tokens[0].word, None)]

    def tell(self, tokens, _parameters):
        text = "".join(token.value for token in tokens if token.kind == "text")
        return [Told(0, text), Counted("PRINT", None)]

    def use(self, tokens, _parameters):
        name = tokens[-1].name
        found = self.databases.find(name)
        if not found:
            raise _faults.unknown_database(name)
        if found[0] != _faults.database():
            raise _faults.not_here("how to change the database of a session")
        return [Changed(1, found[0], found[0]), Told(5701, f"Changed database context to '{found[0]}'."),
                Counted("USE", None)]
