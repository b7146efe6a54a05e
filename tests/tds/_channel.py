"""Messages over a socket: split into packets, and the packet with which a client cancels its request."""

import select
import struct

BATCH, CALL, ANSWER, ATTENTION, TRANSACTION, LOGIN, PRELOGIN = 1, 3, 4, 6, 14, 16, 18
LAST, IGNORED = 0x01, 0x02


class Closed(Exception):
    """The client is gone."""


class Cancelled(Exception):
    """The client wants no more of the answer to its request."""


class Channel:
    def __init__(self, connection):
        self.connection = connection
        self.packet_size = 4096
        self.attention = False

    def bytes(self, count):
        data = b""
        while len(data) < count:
            try:
                part = self.connection.recv(count - len(data))
            except OSError as error:
                raise Closed from error
            if not part:
                raise Closed
            data += part
        return data

    def packet(self):
        """(kind, status, data) of the next packet."""
        kind, status, length = struct.unpack(">BBH", self.bytes(8)[:4])
        return kind, status, self.bytes(length - 8)

    def read(self):
        """(kind, data) of the next message. One that its sender gave up half-way is passed over."""
        if self.attention:
            self.attention = False
            return ATTENTION, b""
        data = b""
        while True:
            kind, status, part = self.packet()
            data += part
            if kind == ATTENTION:
                return kind, b""
            if status & LAST:
                if not status & IGNORED:
                    return kind, data
                data = b""

    def write(self, data, kind=ANSWER):
        room = self.packet_size - 8
        pieces = [data[at:at + room] for at in range(0, len(data), room)] or [b""]
        sent = b""
        for number, piece in enumerate(pieces, 1):
            status = LAST if number == len(pieces) else 0
            sent += struct.pack(">BBHHBB", kind, status, len(piece) + 8, 0, number % 256, 0) + piece
        try:
            self.connection.sendall(sent)
        except OSError as error:
            raise Closed from error

    def wait(self, seconds):
        """Waits, unless the client cancels its request meanwhile (Cancelled) or leaves (Closed)."""
        readable, _, _ = select.select([self.connection], [], [], seconds)
        if readable:
            kind, _, _ = self.packet()
            if kind == ATTENTION:
                raise Cancelled
            raise Closed  # A client does not send a second request before the first is answered.

    def close(self):
        self.connection.close()
