"""The tokens of which the server's answers are made."""

import struct

import _column_types

DONE, DONE_OF_CALL, DONE_IN_CALL = 0xFD, 0xFE, 0xFF
MORE, FAILED, IN_TRANSACTION, COUNTED, ATTENTION = 0x01, 0x02, 0x04, 0x10, 0x20
COMMANDS = {"SELECT": 0xC1, "INSERT": 0xC3, "DELETE": 0xC4, "UPDATE": 0xC5}

SERVER_NAME = "talvex-test"
PROGRAM_NAME = "Microsoft SQL Server"
# What a client of this version of the protocol expects of a server: 15.0.
VERSION = bytes((15, 0, 0x07, 0xD0))

DATABASE, LANGUAGE, PACKET_SIZE, COLLATION, BEGUN, COMMITTED, ROLLED_BACK = 1, 2, 4, 7, 8, 9, 10


def wide(text):
    return text.encode("utf-16-le", "surrogatepass")


def short_text(text):
    return bytes((len(wide(text)) // 2,)) + wide(text)


def long_text(text):
    return struct.pack("<H", len(wide(text)) // 2) + wide(text)


def token(code, body):
    return bytes((code,)) + struct.pack("<H", len(body)) + body


def text_change(kind, new, old):
    return token(0xE3, bytes((kind,)) + short_text(new) + short_text(old))


def data_change(kind, new, old):
    return token(0xE3, bytes((kind, len(new))) + new + bytes((len(old),)) + old)


def message(number, severity, state, text, line=1):
    """An error, or below severity 11 a message that tells something."""
    body = struct.pack("<iBB", number, state, severity) + long_text(text)
    body += short_text(SERVER_NAME) + short_text("") + struct.pack("<i", line)
    return token(0xAA if severity > 10 else 0xAB, body)


def login_acknowledged():
    return token(0xAD, b"\x01\x74\x00\x00\x04" + short_text(PROGRAM_NAME) + VERSION)


def features_acknowledged(utf8):
    return b"\xae" + (b"\x0a" + struct.pack("<I", 1) + b"\x01" if utf8 else b"") + b"\xff"


def columns(described):
    """The description of the columns of rows: (name, type, nullable, identity) each."""
    data = b"\x81" + struct.pack("<H", len(described))
    for name, kind, nullable, identity in described:
        flags = (0x01 if nullable else 0) | (0x10 if identity else 0x08)
        data += struct.pack("<IH", 0, flags) + _column_types.type_info(kind) + short_text(name)
    return data


def no_columns():
    return b"\x81\xff\xff"


def row(kinds, values):
    return b"\xd1" + b"".join(_column_types.encode(kind, value) for kind, value in zip(kinds, values))


def done(code, status=0, command="", count=None):
    counted = COUNTED if count is not None else 0
    return bytes((code,)) + struct.pack("<HHQ", status | counted, COMMANDS.get(command, 0), count or 0)


def return_status(status):
    return b"\x79" + struct.pack("<i", status)


def return_value(name, kind, value):
    body = struct.pack("<H", 0) + short_text(name) + b"\x01" + struct.pack("<IH", 0, 0)
    return b"\xac" + body + _column_types.type_info(kind) + _column_types.encode(kind, value)
