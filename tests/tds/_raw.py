"""A client that sends what it is told, byte by byte, where an ordinary one would not."""

import socket
import struct

import _server

PATIENCE = 120  # Seconds; a busy machine is no failure.


class RawSession:
    """A client that can send anything, once it has logged in."""

    def __init__(self, port):
        self.socket = socket.create_connection(("127.0.0.1", port), PATIENCE)
        user, password = _server.USER, _server.PASSWORD
        texts = [(40, user), (44, password), (68, "talvex")]
        fixed = bytearray(94)
        struct.pack_into("<III", fixed, 4, 0x74000004, 4096, 7)
        data = b""
        for at, text in texts:
            struct.pack_into("<HH", fixed, at, len(fixed) + len(data), len(text))
            raw = text.encode("utf-16-le")
            if text == password:
                raw = bytes(((byte << 4 | byte >> 4) & 0xFF) ^ 0xA5 for byte in raw)
            data += raw
        struct.pack_into("<I", fixed, 0, len(fixed) + len(data))
        self.answer = self.ask(16, bytes(fixed) + data)
        self.transaction = 0

    def headers(self):
        return struct.pack("<IIHQI", 22, 18, 2, self.transaction, 1)

    def batch(self, text):
        return self.ask(1, self.headers() + text.encode("utf-16-le"))

    def call(self, number, *parameters):
        """Calls the procedure of that number with parameters that are encoded already."""
        return self.ask(3, self.headers() + struct.pack("<HHH", 0xFFFF, number, 0) + b"".join(parameters))

    def ask(self, kind, data):
        self.send(kind, data)
        return self.receive()

    def send(self, kind, data, size=4096):
        """Sends a message in packets of a size."""
        room = size - 8
        pieces = [data[at:at + room] for at in range(0, len(data), room)] or [b""]
        for number, piece in enumerate(pieces, 1):
            last = number == len(pieces)
            header = struct.pack(">BBHHBB", kind, last, len(piece) + 8, 0, number % 256, 0)
            self.socket.sendall(header + piece)

    def receive(self):
        answer, last = b"", False
        while not last:
            _, status, length = struct.unpack(">BBH", self.read(8)[:4])
            answer += self.read(length - 8)
            last = status & 1
        return answer

    def read(self, count):
        data = b""
        while len(data) < count:
            part = self.socket.recv(count - len(data))
            assert part, "the server left"
            data += part
        return data

    def close(self):
        self.socket.close()


def integer(value, name=""):
    data = b"\x00" if value is None else b"\x04" + struct.pack("<i", value)
    return short_text(name) + b"\x00\x26\x04" + data


def text(value, name=""):
    data = value.encode("utf-16-le")
    kind = struct.pack("<BH", 0xE7, max(len(data), 2)) + bytes(5)
    return short_text(name) + b"\x00" + kind + struct.pack("<H", len(data)) + data


def short_text(value):
    return bytes((len(value),)) + value.encode("utf-16-le")


def last_done(answer):
    """(token, status, count) of the DONE that ends an answer."""
    token, status, _, count = struct.unpack("<BHHQ", answer[-13:])
    return token, status, count


def error_numbers(answer):
    """The numbers of the errors in an answer that begins with them."""
    found = []
    while answer and answer[0] in (0xAA, 0xAB):
        length, number = struct.unpack_from("<Hi", answer, 1)
        if answer[0] == 0xAA:
            found.append(number)
        answer = answer[3 + length:]
    return found
