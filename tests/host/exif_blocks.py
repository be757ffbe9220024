"""EXIF blocks made and read by a few lines of their own."""

import struct

BYTE, ASCII, SHORT, LONG, RATIONAL, UNDEFINED, SLONG = 1, 2, 3, 4, 5, 7, 9
BYTES_OF = {BYTE: 1, ASCII: 1, SHORT: 2, LONG: 4, RATIONAL: 8, UNDEFINED: 1, 6: 1, 8: 2, SLONG: 4}


def directory(order, position, entries, following=0):
    """A directory at a position, its longer values behind it. entries: (tag, type, count, bytes)."""
    table = struct.pack(order + "H", len(entries))
    place = position + 2 + 12 * len(entries) + 4
    values = b""
    for tag, kind, count, value in entries:
        if len(value) > 4:
            table += struct.pack(order + "HHII", tag, kind, count, place + len(values))
            values += value + b"\0" * (len(value) % 2)
        else:
            table += struct.pack(order + "HHI", tag, kind, count) + value.ljust(4, b"\0")
    return table + struct.pack(order + "I", following) + values


def head(order):
    return (b"II*\0" if order == "<" else b"MM\0*") + struct.pack(order + "I", 8)


def entries_of(block, position):
    """{tag: (type, count, bytes)} of a directory, and the position of the next one."""
    order = "<" if block[:2] == b"II" else ">"
    count, = struct.unpack_from(order + "H", block, position)
    found = {}
    for i in range(count):
        at = position + 2 + 12 * i
        tag, kind, number = struct.unpack_from(order + "HHI", block, at)
        size = number * BYTES_OF[kind]
        place = at + 8 if size <= 4 else struct.unpack_from(order + "I", block, at + 8)[0]
        found[tag] = (kind, number, block[place:place + size])
    return found, struct.unpack_from(order + "I", block, position + 2 + 12 * count)[0]


def numbers(block, field):
    order = "<" if block[:2] == b"II" else ">"
    kind, count, content = field
    letter = {BYTE: "B", SHORT: "H", LONG: "I", SLONG: "i"}[kind]
    return list(struct.unpack(order + str(count) + letter, content))


def first(block):
    order = "<" if block[:2] == b"II" else ">"
    return struct.unpack_from(order + "I", block, 4)[0]
