"""One client: its login, its requests one after the other, and their answers."""

import struct
import traceback

import _faults
import _login
import _moments
import _tokens
from _channel import (ATTENTION, BATCH, CALL, LOGIN, PRELOGIN, TRANSACTION, Cancelled, Channel, Closed)
from _engine import Engine
from _faults import Fault
from _outcomes import Changed, Counted, DroppedByTest, Rows, Told
from _procedures import BY_NUMBER, Argument, Procedures
from _reading import Malformed, Reader, read_value

BEGIN_REQUEST, COMMIT_REQUEST, ROLLBACK_REQUEST = 5, 7, 8


class Answer:
    """The tokens of one answer. Every DONE but the last says that there is more."""

    def __init__(self):
        self.data = bytearray()
        self.last_done = None

    def add(self, data):
        self.data += data

    def done(self, code, status=0, command="", count=None):
        self.last_done = len(self.data)
        self.data += _tokens.done(code, status | _tokens.MORE, command, count)

    def finished(self):
        if self.last_done is None:
            self.done(_tokens.DONE)
        self.data[self.last_done + 1] &= ~_tokens.MORE & 0xFF
        return bytes(self.data)


def sendable(shapes, row):
    """The values of a row as their types want them; raises Fault for one that does not fit."""
    values = []
    for shape, value in zip(shapes, row):
        name = shape.type.name
        if isinstance(value, bytes):
            raise _faults.not_here("binary values")
        if value is not None and name in ("DATETIME", "DATETIME2", "DATE") and _moments.parse(value) is None:
            raise _faults.not_a_date()
        if value is not None and name == "FLOAT":
            value = float(value)
        values.append(value)
    return values


class Session:
    def __init__(self, server, connection, number):
        self.server, self.number = server, number
        self.channel = Channel(connection)
        self.engine = None
        self.procedures = None

    def run(self):
        try:
            if self.login():
                while True:
                    self.request(*self.channel.read())
        except (Closed, DroppedByTest):
            pass
        finally:
            if self.engine is not None:
                self.engine.close()
            self.channel.close()

    def login(self):
        """Whether the client may stay."""
        kind, data = self.channel.read()
        if kind == PRELOGIN:
            self.channel.write(_login.prelogin_answer())
            kind, data = self.channel.read()
        if kind != LOGIN:
            return False
        try:
            login = _login.read_login(data)
        except (Malformed, struct.error, IndexError, UnicodeDecodeError):
            return False
        server = self.server
        database = server.databases.find(login.database)
        if (login.user, login.password) != (server.user, server.password) or not database:
            self.channel.write(_login.refused(login, database is not None))
            return False
        self.engine = Engine(server, database, self.number, self.channel.wait)
        self.procedures = Procedures(self.engine)
        answer, size = _login.accepted(login, database[0])
        self.channel.write(answer)
        self.channel.packet_size = size
        return True

    def request(self, kind, data):
        self.server.requests += 1
        answer = Answer()
        try:
            if kind == ATTENTION:
                raise Cancelled
            if kind == BATCH:
                self.batch(self.after_headers(data), answer)
            elif kind == CALL:
                self.calls(self.after_headers(data), answer)
            elif kind == TRANSACTION:
                self.transaction(self.after_headers(data), answer)
            else:
                raise Malformed(f"a message of kind {kind}")
        except Cancelled:
            self.channel.write(_tokens.done(_tokens.DONE, _tokens.ATTENTION))
            return
        except Malformed as problem:
            self.fail(answer, _faults.not_here(str(problem)), _tokens.DONE)
        except Fault as fault:
            self.fail(answer, fault, _tokens.DONE)
        except (Closed, DroppedByTest):
            raise
        except Exception as problem:  # A mistake in this server is told to who can mend it.
            traceback.print_exc()
            self.fail(answer, _faults.not_here(f"why it failed: {problem!r}"), _tokens.DONE)
        self.channel.write(answer.finished())

    def after_headers(self, data):
        """A reader of what follows the headers; they must name the transaction that is open."""
        reader = Reader(data)
        end = reader.number("I")
        while reader.at < end:
            start, size, kind = reader.at, reader.number("I"), reader.number("H")
            if kind == 2 and reader.bytes(8) != self.engine.transactions.descriptor:
                raise _faults.stale_transaction()
            reader.at = start + size
        return reader

    def batch(self, reader, answer):
        text = reader.bytes(len(reader.data) - reader.at).decode("utf-16-le", "surrogatepass")
        for outcome in self.engine.run_batch(text):
            self.tell(answer, outcome, _tokens.DONE)

    def calls(self, reader, answer):
        while True:
            self.call(reader, answer)
            if not reader.more() or reader.number("B") not in (0x80, 0xFE, 0xFF) or not reader.more():
                return

    def call(self, reader, answer):
        length = reader.number("H")
        name = BY_NUMBER.get(reader.number("H"), "") if length == 0xFFFF else reader.wide_text(length)
        reader.number("H")
        arguments = []
        while reader.more() and reader.data[reader.at] not in (0x80, 0xFE, 0xFF):
            parameter, status = reader.short_text(), reader.number("B")
            arguments.append(Argument(parameter, *read_value(reader), bool(status & 1)))
        failed = 0
        for outcome in self.procedures.call(name, arguments):
            failed = outcome.number if isinstance(outcome, Fault) else failed
            self.tell(answer, outcome, _tokens.DONE_IN_CALL)
        answer.add(_tokens.return_status(failed))
        for argument in self.procedures.returned:
            answer.add(_tokens.return_value(argument.name, argument.type, argument.value))
        answer.done(_tokens.DONE_OF_CALL, _tokens.FAILED if failed else 0)

    def transaction(self, reader, answer):
        """A request of the transaction manager: begin, or an end that may begin the next."""
        kind = reader.number("H")
        words = {BEGIN_REQUEST: "BEGIN TRANSACTION", COMMIT_REQUEST: "COMMIT TRANSACTION",
                 ROLLBACK_REQUEST: "ROLLBACK TRANSACTION"}
        if kind not in words:
            raise Malformed(f"transaction request {kind}")
        again = False
        if kind != BEGIN_REQUEST:
            reader.bytes(reader.number("B"))
            again = bool(reader.number("B") & 1)
        outcomes = list(self.engine.run_batch(words[kind]))
        if again and not any(isinstance(outcome, Fault) for outcome in outcomes):
            outcomes += self.engine.run_batch(words[BEGIN_REQUEST])
        for outcome in outcomes:
            self.tell(answer, outcome, _tokens.DONE)

    def fail(self, answer, fault, code):
        answer.add(_tokens.message(fault.number, fault.severity, fault.state, fault.text))
        answer.done(code, _tokens.FAILED)

    def tell(self, answer, outcome, code):
        """Adds the tokens of an outcome."""
        silent = self.engine.nocount
        if isinstance(outcome, Fault):
            self.fail(answer, outcome, code)
        elif isinstance(outcome, Told):
            answer.add(_tokens.message(outcome.number, 0, 1, outcome.text))
        elif isinstance(outcome, Changed):
            change = _tokens.text_change if isinstance(outcome.new, str) else _tokens.data_change
            answer.add(change(outcome.kind, outcome.new, outcome.old))
        elif isinstance(outcome, Rows):
            self.rows(answer, outcome, code, silent)
        elif isinstance(outcome, Counted) and not (silent and outcome.count is not None):
            answer.done(code, 0, outcome.verb, outcome.count)

    def rows(self, answer, outcome, code, silent):
        kinds = [shape.type for shape in outcome.shapes]
        described = [(shape.name, shape.type, shape.nullable, shape.identity) for shape in outcome.shapes]
        answer.add(_tokens.columns(described))
        try:
            for row in outcome.rows:
                answer.add(_tokens.row(kinds, sendable(outcome.shapes, row)))
        except (Fault, OverflowError, ValueError) as problem:
            self.fail(answer, problem if isinstance(problem, Fault) else _faults.overflow("int"), code)
            return
        count = len(outcome.rows) if outcome.counted and not silent else None
        answer.done(code, 0, outcome.verb, count)
