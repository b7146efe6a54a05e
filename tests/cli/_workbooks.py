"""What the tests of workbooks share: what talvex-sheet says of a file, and files that other programs make."""

import datetime
import os
import pathlib
import struct
import subprocess

import olefile
import xlwt
from xlwt.CompoundDoc import XlsDoc

SHEET = str(pathlib.Path(os.environ["TALVEX_CLI"]).with_name("talvex-sheet"))
EPOCH = datetime.datetime(1970, 1, 1)
DAY_ZERO = datetime.datetime(1899, 12, 30)


class Cbor:
    """Reads one CBOR value; written from the standard, to share no code with what is tested."""

    def __init__(self, data):
        self.data, self.at = data, 0

    def take(self, count):
        self.at += count
        return self.data[self.at - count:self.at]

    def value(self):
        first = self.take(1)[0]
        kind, low = first >> 5, first & 31
        if kind == 7:
            return self.simple(low)
        size = low if low < 24 else int.from_bytes(self.take(1 << (low - 24)), "big")
        if kind == 0:
            return size
        if kind == 1:
            return -1 - size
        if kind == 2:
            return self.take(size)
        if kind == 3:
            return self.take(size).decode("utf-8")
        if kind == 4:
            return [self.value() for _ in range(size)]
        if kind == 5:
            return {self.value(): self.value() for _ in range(size)}
        raise ValueError(f"a value of kind {kind}")

    def simple(self, low):
        if low in (26, 27):
            return struct.unpack({26: ">f", 27: ">d"}[low], self.take(1 << (low - 24)))[0]
        return {20: False, 21: True, 22: None}[low]


def told(path):
    """What `talvex-sheet load` says."""
    ran = subprocess.run([SHEET, "load", path], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True,
                         timeout=120)
    reader = Cbor(ran.stdout)
    answer = reader.value()
    assert reader.at == len(ran.stdout), "there is more than one message"
    return answer


def packed_texts(data):
    texts, at = [], 0
    while at < len(data):
        size, = struct.unpack_from("=I", data, at)
        texts.append(data[at + 4:at + 4 + size].decode("utf-8"))
        at += 4 + size
    assert at == len(data), "a text is cut off"
    return texts


def cells(sheet):
    """{(row, column): value} of a sheet as it is told, dates as datetimes, and {(row, column): formula}."""
    columns = sheet["cells"]
    places = [(place // 256 + 1, place % 256 + 1) for place, in struct.iter_unpack("=I", columns["at"])]
    numbers = (number for number, in struct.iter_unpack("=d", columns["numbers"]))
    texts = iter(packed_texts(columns["texts"]))
    of_kind = {0: lambda: None, 1: lambda: next(numbers) == 1, 2: lambda: next(numbers),
               3: lambda: EPOCH + datetime.timedelta(seconds=next(numbers)), 4: lambda: next(texts)}
    values, formulas = {}, {}
    for place, kind in zip(places, columns["kinds"], strict=True):
        values[place] = of_kind[kind & 15]()
        if kind & 16:
            formulas[place] = next(texts)
    assert next(numbers, None) is None and next(texts, None) is None, "there are more values than cells"
    return values, formulas


def sheets(path):
    """{name: (values, formulas)}, in order."""
    return {sheet["name"]: cells(sheet) for sheet in told(path)["sheets"]}


def styled(font="", number_format="General"):
    return xlwt.easyxf(font, num_format_str=number_format)


def protected(path):
    """A workbook of which the first record says that the rest is enciphered."""
    book = xlwt.Workbook()
    book.add_sheet("Secret").write(0, 0, "hidden")
    data = book.get_biff_data()
    start = 4 + struct.unpack_from("<H", data, 2)[0]
    cipher = struct.pack("<HHHHH", 0x2F, 54, 1, 1, 1) + bytes(range(48))
    XlsDoc().save(path, data[:start] + cipher + data[start:])


def records(path):
    """(code, content) of every record of a workbook file."""
    data = olefile.OleFileIO(path).openstream("Workbook").read()
    at = 0
    while at + 4 <= len(data):
        code, size = struct.unpack_from("<HH", data, at)
        yield code, data[at + 4:at + 4 + size]
        at += 4 + size


def scatter(path):
    """Lays the workbook's stream out backwards in its file, one sector after the other."""
    with open(path, "rb") as file:
        data = bytearray(file.read())

    def sector(number):
        return slice(512 * (number + 1), 512 * (number + 2))

    tables = [number for number in struct.unpack_from("<109I", data, 76) if number < 0xFFFFFFFA]
    chain_of = [entry for table in tables for entry in struct.unpack("<128I", data[sector(table)])]
    entry = data.index("Workbook\0".encode("utf-16-le"), 512 * (1 + struct.unpack_from("<I", data, 48)[0]))
    chain = [struct.unpack_from("<I", data, entry + 116)[0]]
    while chain_of[chain[-1]] < 0xFFFFFFFA:
        chain.append(chain_of[chain[-1]])
    contents = [bytes(data[sector(number)]) for number in chain]
    chain.reverse()
    struct.pack_into("<I", data, entry + 116, chain[0])
    for number, following, content in zip(chain, chain[1:] + [0xFFFFFFFE], contents):
        data[sector(number)] = content
        struct.pack_into("<I", data, 512 * (tables[number // 128] + 1) + 4 * (number % 128), following)
    with open(path, "wb") as file:
        file.write(data)
