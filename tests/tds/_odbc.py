"""A small client of ODBC over the driver manager's library, enough to test a server with."""

import ctypes
import dataclasses
import datetime
import decimal

SUCCESS, SUCCESS_WITH_INFO, NO_DATA = 0, 1, 100
ENVIRONMENT, CONNECTION, STATEMENT = 1, 2, 3
NTS = -3
NULL_DATA, NO_TOTAL = -1, -4
AUTOCOMMIT, ODBC_VERSION, QUERY_TIMEOUT = 102, 200, 0
C_CHAR, C_LONG, C_DOUBLE, C_TIMESTAMP, C_BIT, C_SBIGINT, C_WCHAR = 1, 4, 8, 93, -7, -25, -8
COMMIT, ROLLBACK = 0, 1
INTEGERS, DOUBLES, MOMENTS, BIT, DECIMALS = (4, 5, -6, -5), (6, 7, 8), (91, 93), -7, (2, 3)
AUTO_UNIQUE = 11

_library = ctypes.CDLL("libodbc.so.2")


class Timestamp(ctypes.Structure):
    _fields_ = [("year", ctypes.c_short), ("month", ctypes.c_ushort), ("day", ctypes.c_ushort),
                ("hour", ctypes.c_ushort), ("minute", ctypes.c_ushort), ("second", ctypes.c_ushort),
                ("fraction", ctypes.c_uint)]

    def text(self):
        """The moment as a text; the library of dates knows no fractions below the microsecond."""
        day = f"{self.year:04}-{self.month:02}-{self.day:02}T{self.hour:02}:{self.minute:02}:{self.second:02}"
        return day + (f".{self.fraction:09}".rstrip("0") if self.fraction else "")


@dataclasses.dataclass
class Record:
    state: str
    native: int
    text: str


class OdbcError(Exception):
    def __init__(self, records):
        super().__init__("; ".join(f"{record.state} {record.native} {record.text}" for record in records))
        self.records = records

    @property
    def native(self):
        """The number of the first record that has one."""
        return next((record.native for record in self.records if record.native), 0)

    @property
    def state(self):
        return self.records[0].state if self.records else ""


@dataclasses.dataclass
class Column:
    name: str
    type: int
    size: int
    digits: int
    nullable: bool


@dataclasses.dataclass
class Result:
    columns: list  # Empty for a statement without rows.
    rows: list
    count: int


def wide(text):
    return ctypes.create_string_buffer(text.encode("utf-16-le", "surrogatepass") + b"\0\0")


def number(value):
    return ctypes.c_void_p(value)


def diagnostics(kind, handle):
    records = []
    while True:
        state, native, length = ctypes.create_string_buffer(12), ctypes.c_int(), ctypes.c_short()
        text = ctypes.create_string_buffer(4096)
        place = ctypes.c_short(len(records) + 1)
        code = _library.SQLGetDiagRecW(kind, handle, place, state, ctypes.byref(native), text,
                                       ctypes.c_short(2000), ctypes.byref(length))
        if code not in (SUCCESS, SUCCESS_WITH_INFO):
            return records
        records.append(Record(state.raw[:10].decode("utf-16-le"), native.value,
                              text.raw[:2 * min(length.value, 2000)].decode("utf-16-le")))


class Handle:
    def __init__(self, kind, parent):
        self.kind = kind
        self.handle = ctypes.c_void_p()
        code = _library.SQLAllocHandle(ctypes.c_short(kind), parent, ctypes.byref(self.handle))
        if code != SUCCESS:
            raise OdbcError([])

    def check(self, code):
        if code in (SUCCESS, SUCCESS_WITH_INFO, NO_DATA):
            return code
        raise OdbcError(diagnostics(ctypes.c_short(self.kind), self.handle))

    def free(self):
        """Gives the handle back; a second time does nothing."""
        if self.handle:
            _library.SQLFreeHandle(ctypes.c_short(self.kind), self.handle)
        self.handle = None


class Statement(Handle):
    def __init__(self, connection):
        super().__init__(STATEMENT, connection.handle)
        self.kept = []  # The buffers of bound parameters.

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.free()

    def set(self, attribute, value):
        self.check(_library.SQLSetStmtAttr(self.handle, attribute, number(value), 0))

    def run(self, text):
        """Runs a text at once; the results of all its statements."""
        self.check(_library.SQLExecDirectW(self.handle, wide(text), NTS))
        return self.results()

    def prepare(self, text):
        self.check(_library.SQLPrepareW(self.handle, wide(text), NTS))

    def execute(self, *values):
        self.bind(values)
        self.check(_library.SQLExecute(self.handle))
        return self.results()

    def cancel(self):
        """Ends what another thread waits for."""
        return _library.SQLCancel(self.handle)

    def bind(self, values):
        """Binds values by their Python type; a (value, ODBC type) tells the type of the parameter as well."""
        self.kept = []
        for place, value in enumerate(values, 1):
            value, wanted = value if isinstance(value, tuple) else (value, None)
            kind, odbc_type, size, digits, buffer, length = buffer_of(value)
            indicator = ctypes.c_ssize_t(NULL_DATA if value is None else length)
            self.kept.append((buffer, indicator))
            self.check(_library.SQLBindParameter(
                self.handle, ctypes.c_ushort(place), ctypes.c_short(1), ctypes.c_short(kind),
                ctypes.c_short(wanted or odbc_type), ctypes.c_size_t(size), ctypes.c_short(digits),
                ctypes.byref(buffer), ctypes.c_ssize_t(length), ctypes.byref(indicator)))

    def results(self):
        """All results that are there, drained. An error of a later one is raised when it is its turn."""
        found = [self.result()]
        while self.check(_library.SQLMoreResults(self.handle)) != NO_DATA:
            found.append(self.result())
        return found

    def result(self):
        columns = self.columns()
        count = ctypes.c_ssize_t()
        self.check(_library.SQLRowCount(self.handle, ctypes.byref(count)))
        rows = []
        if columns:
            while self.check(_library.SQLFetch(self.handle)) != NO_DATA:
                rows.append(tuple(self.value(place, column) for place, column in enumerate(columns, 1)))
            self.check(_library.SQLRowCount(self.handle, ctypes.byref(count)))
        return Result(columns, rows, count.value)

    def columns(self):
        count = ctypes.c_short()
        self.check(_library.SQLNumResultCols(self.handle, ctypes.byref(count)))
        return [self.column(place) for place in range(1, count.value + 1)]

    def column(self, place):
        name, length, kind = ctypes.create_string_buffer(512), ctypes.c_short(), ctypes.c_short()
        size, digits, nullable = ctypes.c_size_t(), ctypes.c_short(), ctypes.c_short()
        self.check(_library.SQLDescribeColW(self.handle, ctypes.c_ushort(place), name, ctypes.c_short(256),
                                            ctypes.byref(length), ctypes.byref(kind), ctypes.byref(size),
                                            ctypes.byref(digits), ctypes.byref(nullable)))
        return Column(name.raw[:2 * length.value].decode("utf-16-le"), kind.value, size.value, digits.value,
                      nullable.value == 1)

    def is_assigned(self, place):
        """Whether the database gives the column its values."""
        value = ctypes.c_ssize_t()
        wanted, nothing = ctypes.c_ushort(AUTO_UNIQUE), ctypes.c_short(0)
        self.check(_library.SQLColAttributeW(self.handle, ctypes.c_ushort(place), wanted, None, nothing, None,
                                             ctypes.byref(value)))
        return bool(value.value)

    def get(self, place, kind, buffer):
        """The indicator after reading a column into a buffer."""
        indicator = ctypes.c_ssize_t()
        room = ctypes.c_ssize_t(ctypes.sizeof(buffer))
        self.check(_library.SQLGetData(self.handle, ctypes.c_ushort(place), ctypes.c_short(kind),
                                       ctypes.byref(buffer), room, ctypes.byref(indicator)))
        return indicator.value

    def value(self, place, column):
        fixed = {**{kind: (C_SBIGINT, ctypes.c_longlong) for kind in INTEGERS},
                 **{kind: (C_DOUBLE, ctypes.c_double) for kind in DOUBLES},
                 **{kind: (C_TIMESTAMP, Timestamp) for kind in MOMENTS}, BIT: (C_BIT, ctypes.c_ubyte)}
        if column.type not in fixed:
            text = self.text(place)
            return decimal.Decimal(text) if text is not None and column.type in DECIMALS else text
        kind, maker = fixed[column.type]
        buffer = maker()
        if self.get(place, kind, buffer) == NULL_DATA:
            return None
        return buffer.text() if maker is Timestamp else buffer.value

    def text(self, place, kind=C_WCHAR):
        """A text, piece by piece; C_CHAR reads it in the encoding of the connection string."""
        ending = 2 if kind == C_WCHAR else 1
        data, room = b"", 1024
        while True:
            buffer = ctypes.create_string_buffer(room)
            left = self.get(place, kind, buffer)
            if left == NULL_DATA:
                return None
            if left != NO_TOTAL and left <= room - ending:
                data += buffer.raw[:left]
                return data.decode("utf-16-le" if kind == C_WCHAR else "utf-8")
            data += buffer.raw[:room - ending]


def buffer_of(value):
    """(C type, ODBC type, size, digits, buffer, length) of a value that is a parameter."""
    if isinstance(value, bool):
        return C_BIT, BIT, 1, 0, ctypes.c_ubyte(value), 1
    if isinstance(value, int):
        small = -(1 << 31) <= value < 1 << 31
        buffer = ctypes.c_int(value) if small else ctypes.c_longlong(value)
        return (C_LONG, 4, 10, 0, buffer, 4) if small else (C_SBIGINT, -5, 19, 0, buffer, 8)
    if isinstance(value, float):
        return C_DOUBLE, 8, 15, 0, ctypes.c_double(value), 8
    if isinstance(value, datetime.datetime):
        moment = Timestamp(value.year, value.month, value.day, value.hour, value.minute, value.second,
                           value.microsecond * 1000)
        return C_TIMESTAMP, 93, 23, 3, moment, ctypes.sizeof(moment)
    if isinstance(value, decimal.Decimal):
        digits = max(-value.as_tuple().exponent, 0)
        data = ctypes.create_string_buffer(str(value).encode())
        return C_CHAR, 3, 38, digits, data, len(data.value)
    data = (value or "").encode("utf-16-le", "surrogatepass")
    units = len(data) // 2
    # A text beyond what NVARCHAR(n) can hold is sent as one of NVARCHAR(MAX).
    odbc_type, size = (-9, max(units, 1)) if units <= 4000 else (-10, units)
    return C_WCHAR, odbc_type, size, 0, ctypes.create_string_buffer(data + b"\0\0"), len(data)


class Connection(Handle):
    """An open connection; raises OdbcError when it cannot be opened."""

    def __init__(self, connection_string):
        self.environment = Handle(ENVIRONMENT, None)
        _library.SQLSetEnvAttr(self.environment.handle, ODBC_VERSION, number(3), 0)
        super().__init__(CONNECTION, self.environment.handle)
        self.open = False
        try:
            text, end = wide(connection_string), ctypes.c_short(NTS)
            self.check(_library.SQLDriverConnectW(self.handle, None, text, end, None, ctypes.c_short(0), None,
                                                  ctypes.c_ushort(0)))
            self.open = True
        finally:
            if not self.open:
                self.close()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        """Ends the session and undoes what it has not committed; a second time does nothing."""
        if self.open:
            if _library.SQLDisconnect(self.handle) not in (SUCCESS, SUCCESS_WITH_INFO):
                # An open transaction keeps a connection open.
                _library.SQLEndTran(ctypes.c_short(CONNECTION), self.handle, ctypes.c_short(ROLLBACK))
                _library.SQLDisconnect(self.handle)
        self.open = False
        self.free()
        self.environment.free()

    def autocommit(self, on):
        self.check(_library.SQLSetConnectAttrW(self.handle, AUTOCOMMIT, number(1 if on else 0), 0))

    def end(self, how):
        self.check(_library.SQLEndTran(ctypes.c_short(CONNECTION), self.handle, ctypes.c_short(how)))

    def results(self, text, *values):
        """The results of all statements of a text; with values it is prepared first."""
        with Statement(self) as statement:
            if not values:
                return statement.run(text)
            statement.prepare(text)
            return statement.execute(*values)

    def rows(self, text, *values):
        """The rows of the only result that has any."""
        found = [result.rows for result in self.results(text, *values) if result.columns]
        assert len(found) == 1, found
        return found[0]

    def count(self, text, *values):
        """How many rows a statement changed."""
        return self.results(text, *values)[0].count

    def native_error(self, text, *values):
        """The number of the error that a text is refused with; 0 when it is not."""
        try:
            self.results(text, *values)
        except OdbcError as error:
            return error.native
        return 0

    def catalogue(self, function, *names):
        """The rows of SQLColumnsW or SQLPrimaryKeysW; each name is a text or None."""
        arguments = []
        for name in names:
            arguments += [None if name is None else wide(name), ctypes.c_short(0 if name is None else NTS)]
        with Statement(self) as statement:
            statement.check(getattr(_library, function)(statement.handle, *arguments))
            return statement.results()[0]

    def columns(self, table, column=None):
        return self.catalogue("SQLColumnsW", None, None, table, column)

    def primary_keys(self, table):
        return self.catalogue("SQLPrimaryKeysW", None, None, table)

    def tables(self, table=None):
        return self.catalogue("SQLTablesW", None, None, table, None)
