"""Reading what clients send: numbers, texts, and parameters with their types."""

import decimal
import struct

import _column_types
import _moments
from _column_types import Type


class Malformed(Exception):
    """The client sent what the protocol does not allow, or what this server has no reader for."""


class Reader:
    def __init__(self, data):
        self.data = data
        self.at = 0

    def more(self):
        return self.at < len(self.data)

    def bytes(self, count):
        taken = self.data[self.at:self.at + count]
        if len(taken) != count:
            raise Malformed(f"{count} bytes wanted at {self.at} of {len(self.data)}")
        self.at += count
        return taken

    def number(self, form):
        """A little-endian number in a form of the struct module."""
        return struct.unpack("<" + form, self.bytes(struct.calcsize("<" + form)))[0]

    def wide_text(self, characters):
        return self.bytes(2 * characters).decode("utf-16-le", "surrogatepass")

    def short_text(self):
        return self.wide_text(self.number("B"))


FIXED = {0x30: ("TINYINT", "B"), 0x34: ("SMALLINT", "h"), 0x38: ("INT", "i"), 0x7F: ("BIGINT", "q"),
         0x32: ("BIT", "B"), 0x3E: ("FLOAT", "d")}
INTEGER_OF_SIZE = {1: ("TINYINT", "B"), 2: ("SMALLINT", "h"), 4: ("INT", "i"), 8: ("BIGINT", "q")}
SHORT_LENGTH = {0xE7: "NVARCHAR", 0xEF: "NCHAR", 0xA7: "VARCHAR", 0xAF: "CHAR", 0xA5: "VARBINARY",
                0xAD: "BINARY"}
LONG_LENGTH = {0x63: "NVARCHAR", 0x23: "VARCHAR", 0x22: "VARBINARY"}


def read_value(reader):
    """(type, value) of a parameter. Dates come as texts, decimals as Decimal, Null as None."""
    code = reader.number("B")
    if code in FIXED:
        name, form = FIXED[code]
        return Type(name), reader.number(form)
    if code == 0x1F:
        return _column_types.INT, None
    if code == 0x26:
        name, form = INTEGER_OF_SIZE[reader.number("B")]
        return Type(name), reader.number(form) if reader.number("B") else None
    if code == 0x68:
        reader.number("B")
        return Type("BIT"), reader.number("B") if reader.number("B") else None
    if code == 0x6D:
        reader.number("B")
        size = reader.number("B")
        return _column_types.FLOAT, reader.number("d" if size == 8 else "f") if size else None
    if code in (0x6A, 0x6C):
        return read_decimal(reader)
    if code in (0x6F, 0x28, 0x29, 0x2A):
        return read_moment(reader, code)
    if code in SHORT_LENGTH:
        return read_text(reader, SHORT_LENGTH[code])
    if code in LONG_LENGTH:
        return read_long_text(reader, LONG_LENGTH[code])
    raise Malformed(f"a parameter of type 0x{code:02x}")


def read_decimal(reader):
    _, precision, scale = reader.bytes(3)
    kind = Type("DECIMAL", precision=precision, scale=scale)
    size = reader.number("B")
    if not size:
        return kind, None
    positive = reader.number("B")
    number = decimal.Decimal(int.from_bytes(reader.bytes(size - 1), "little"))
    return kind, (number if positive else -number).scaleb(-scale, decimal.Context(prec=60))


def read_moment(reader, code):
    scale = reader.number("B") if code != 0x28 else 0
    size = reader.number("B")
    data = reader.bytes(size)
    if code == 0x6F:
        kind = _column_types.DATETIME
        if size == 4:
            days, minutes = struct.unpack("<HH", data)
            return kind, _moments.text_of(_moments.from_ticks(days, minutes * 60 * 300))
        return kind, _moments.text_of(_moments.from_ticks(*struct.unpack("<iI", data))) if size else None
    kind = Type("DATE") if code == 0x28 else Type("DATETIME2", scale=scale)
    if not size:
        return kind, None
    # A time alone is one of the first day that DATETIME counts from.
    days = int.from_bytes(data[-3:], "little") if code != 0x29 else _moments.EPOCH
    time = data[:-3] if code != 0x29 else data
    fraction = int.from_bytes(time, "little") * 10 ** (7 - scale)
    try:
        return kind, _moments.text_of(days * _moments.DAY + fraction)
    except ValueError:
        raise Malformed(f"a date {days} days after the first") from None


def text_from(name, data):
    if "BINARY" in name:
        return bytes(data)
    return data.decode("utf-16-le", "surrogatepass") if name.startswith("N") else data.decode("utf-8")


def read_text(reader, name):
    size = reader.number("H")
    if "BINARY" not in name:
        reader.bytes(len(_column_types.COLLATION))
    if size == 0xFFFF:
        return Type(name, _column_types.MAX), read_chunks(reader, name)
    kind = Type(name, size // (2 if name.startswith("N") else 1))
    length = reader.number("H")
    return kind, None if length == 0xFFFF else text_from(name, reader.bytes(length))


def read_chunks(reader, name):
    if reader.number("Q") == 0xFFFFFFFFFFFFFFFF:
        return None
    data = b""
    while size := reader.number("I"):
        data += reader.bytes(size)
    return text_from(name, data)


def read_long_text(reader, name):
    reader.number("I")
    if name != "VARBINARY":
        reader.bytes(len(_column_types.COLLATION))
    length = reader.number("I")
    value = None if length == 0xFFFFFFFF else text_from(name, reader.bytes(length))
    return Type(name, _column_types.MAX), value
