"""The column types: their names in the language, and how their values look on the wire."""

import dataclasses
import decimal
import re
import struct

import _moments

MAX = -1  # The length of NVARCHAR(MAX).
# Latin1_General_100_CI_AS_SC_UTF8: the locale, the comparison flags with the one for UTF-8, no sort order.
COLLATION = bytes((0x09, 0x04, 0xD0, 0x24, 0x00))

INTEGERS = {"TINYINT": 1, "SMALLINT": 2, "INT": 4, "INTEGER": 4, "BIGINT": 8}
DECIMALS = ("DECIMAL", "NUMERIC")
TEXTS = ("NVARCHAR", "NCHAR", "VARCHAR", "CHAR")
WRITTEN = re.compile(r"\s*(\w+)\s*(?:\(\s*(\d+|MAX)\s*(?:,\s*(\d+)\s*)?\))?\s*", re.IGNORECASE)


@dataclasses.dataclass(frozen=True)
class Type:
    """A type; `size` counts characters (bytes of a VARCHAR), or is MAX."""

    name: str
    size: int = 0
    precision: int = 0
    scale: int = 0

    def written(self):
        if self.name in TEXTS or self.name == "VARBINARY":
            return f"{self.name}({'MAX' if self.size == MAX else self.size})"
        if self.name in DECIMALS:
            return f"{self.name}({self.precision}, {self.scale})"
        return f"{self.name}({self.scale})" if self.name == "DATETIME2" else self.name


INT = Type("INT")
BIGINT = Type("BIGINT")
FLOAT = Type("FLOAT")
DATETIME = Type("DATETIME")
IDENTITY = Type("NUMERIC", precision=38)


def text_type(size=4000):
    return Type("NVARCHAR", size if 0 < size <= 4000 else MAX)


def parse_type(text):
    """The type that a text such as `NVARCHAR(50)` names; None for any other text."""
    found = WRITTEN.fullmatch(text)
    if not found:
        return None
    name, first, second = found[1].upper(), (found[2] or "").upper(), found[3]
    if name in INTEGERS:
        return Type("INT" if name == "INTEGER" else name)
    if name in ("BIT", "FLOAT", "DATETIME", "DATE"):
        return Type(name)
    if name == "DATETIME2":
        return Type(name, scale=int(first or 7))
    if name in TEXTS:
        return Type(name, MAX if first == "MAX" else int(first or 1))
    if name in DECIMALS:
        return Type(name, precision=int(first or 18), scale=int(second or 0))
    return None


def decimal_bytes(precision):
    return 5 if precision <= 9 else 9 if precision <= 19 else 13 if precision <= 28 else 17


def type_info(kind):
    """What stands before values of the type: in the description of a column or of a returned value."""
    if kind.name in INTEGERS:
        return bytes((0x26, INTEGERS[kind.name]))
    if kind.name in DECIMALS:
        return bytes((0x6C, decimal_bytes(kind.precision), kind.precision, kind.scale))
    if kind.name in TEXTS:
        wide = kind.name.startswith("N")
        size = 0xFFFF if kind.size == MAX else kind.size * (2 if wide else 1)
        return bytes((0xE7 if wide else 0xA7,)) + struct.pack("<H", size) + COLLATION
    fixed = {"BIT": (0x68, 1), "FLOAT": (0x6D, 8), "DATETIME": (0x6F, 8), "DATE": (0x28,)}
    return bytes(fixed[kind.name]) if kind.name in fixed else bytes((0x2A, kind.scale))


def encode_text(kind, value):
    data = str(value).encode("utf-16-le" if kind.name.startswith("N") else "utf-8", "surrogatepass")
    if kind.size != MAX:
        return struct.pack("<H", len(data)) + data
    chunk = struct.pack("<I", len(data)) + data if data else b""
    return struct.pack("<Q", len(data)) + chunk + struct.pack("<I", 0)


def encode_decimal(kind, value):
    exact = decimal.Decimal(repr(value)) if isinstance(value, float) else decimal.Decimal(value)
    with decimal.localcontext() as context:
        context.prec = 60
        scaled = int(exact.scaleb(kind.scale).to_integral_value(decimal.ROUND_HALF_UP))
    size = decimal_bytes(kind.precision)
    return bytes((size, 1 if scaled >= 0 else 0)) + abs(scaled).to_bytes(size - 1, "little")


def encode_moment(kind, value):
    moment = _moments.parse(value)
    if kind.name == "DATETIME":
        return b"\x08" + struct.pack("<iI", *_moments.ticks_of(moment))
    days = struct.pack("<I", moment // _moments.DAY)[:3]
    if kind.name == "DATE":
        return b"\x03" + days
    size = 3 if kind.scale <= 2 else 4 if kind.scale <= 4 else 5
    time = moment % _moments.DAY // 10 ** (7 - kind.scale)
    return bytes((size + 3,)) + time.to_bytes(size, "little") + days


def encode(kind, value):
    """A value of the type, as rows carry it."""
    if value is None:
        if kind.name not in TEXTS:
            return b"\x00"
        return b"\xff" * 8 if kind.size == MAX else b"\xff\xff"
    if kind.name in INTEGERS:
        size = INTEGERS[kind.name]
        return bytes((size,)) + int(value).to_bytes(size, "little", signed=size > 1)
    if kind.name == "BIT":
        return bytes((1, 1 if value else 0))
    if kind.name == "FLOAT":
        return b"\x08" + struct.pack("<d", value)
    if kind.name in DECIMALS:
        return encode_decimal(kind, value)
    return encode_text(kind, value) if kind.name in TEXTS else encode_moment(kind, value)
