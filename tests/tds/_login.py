"""The first messages of a session: what the server offers, and who the client is."""

import dataclasses
import struct

import _column_types
import _tokens
from _reading import Reader


@dataclasses.dataclass
class Login:
    user: str
    password: str
    database: str
    packet_size: int
    utf8: bool  # The client asked whether texts may come in UTF-8.
    extended: bool


def prelogin_answer():
    """No encryption, no other instance, one request at a time."""
    options = [(0x00, _tokens.VERSION + b"\x00\x00"), (0x01, b"\x02"), (0x02, b"\x00"), (0x03, b""),
               (0x04, b"\x00")]
    table, data = b"", b""
    start = 5 * len(options) + 1
    for kind, value in options:
        table += struct.pack(">BHH", kind, start + len(data), len(value))
        data += value
    return table + b"\xff" + data


def unscramble(data):
    return bytes(((byte ^ 0xA5) << 4 | (byte ^ 0xA5) >> 4) & 0xFF for byte in data)


def features(data, at):
    """The numbers of the features that the client asked for."""
    asked = []
    reader = Reader(data)
    reader.at = at
    while (kind := reader.number("B")) != 0xFF:
        asked.append(kind)
        reader.bytes(reader.number("I"))
    return asked


def read_login(data):
    packet_size = struct.unpack_from("<I", data, 8)[0]

    def field(at):
        start, length = struct.unpack_from("<HH", data, at)
        return data[start:start + 2 * length]

    extended = bool(data[27] & 0x10)
    asked = []
    if extended:
        start = struct.unpack_from("<H", data, 56)[0]
        asked = features(data, struct.unpack_from("<I", data, start)[0])
    return Login(field(40).decode("utf-16-le"), unscramble(field(44)).decode("utf-16-le"),
                 field(68).decode("utf-16-le"), packet_size, 0x0A in asked, extended)


def accepted(login, database):
    """The answer to a login that is accepted, and the size of the packets from here on."""
    size = min(max(login.packet_size or 4096, 512), 32767)
    answer = _tokens.text_change(_tokens.DATABASE, database, "master")
    answer += _tokens.message(5701, 10, 2, f"Changed database context to '{database}'.")
    answer += _tokens.data_change(_tokens.COLLATION, _column_types.COLLATION, b"")
    answer += _tokens.text_change(_tokens.LANGUAGE, "us_english", "")
    answer += _tokens.message(5703, 10, 1, "Changed language setting to us_english.")
    answer += _tokens.login_acknowledged()
    if login.extended:
        answer += _tokens.features_acknowledged(login.utf8)
    answer += _tokens.text_change(_tokens.PACKET_SIZE, str(size), "4096")
    return answer + _tokens.done(_tokens.DONE), size


def refused(login, database_known):
    answer = b""
    if not database_known:
        text = f'Cannot open database "{login.database}" requested by the login. The login failed.'
        answer += _tokens.message(4060, 11, 1, text)
    answer += _tokens.message(18456, 14, 1, f"Login failed for user '{login.user}'.")
    return answer + _tokens.done(_tokens.DONE, _tokens.FAILED)
