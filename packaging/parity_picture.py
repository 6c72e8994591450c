"""Pixels of both programs side by side: masks, differences, and a picture of them."""

import struct
import zlib

MARK = b"\xff\0\xff"
PALED = bytes(128 + part // 2 for part in range(256))
MARGIN = 24
GAP = 8


class Area:
    """The pixels of a client area: rows of four bytes a pixel, of which the last means nothing."""

    def __init__(self, rows, client):
        self.left, self.top = max(client.left, 0), max(client.top, 0)
        self.shift = (self.left - client.left, self.top - client.top)
        self.rows = [row[4 * self.left:4 * (client.left + client.width)]
                     for row in rows[self.top:client.top + client.height]]


def differing(first, second, masks):
    """The pixels, in client coordinates, that differ outside the masks."""
    shift_x = max(first.shift[0], second.shift[0])
    shift_y = max(first.shift[1], second.shift[1])
    found = []
    height = min(len(area.rows) + area.shift[1] for area in (first, second))
    for y in range(shift_y, height):
        ours, theirs = (bytearray(area.rows[y - area.shift[1]][4 * (shift_x - area.shift[0]):])
                        for area in (first, second))
        length = min(len(ours), len(theirs))
        del ours[length:], theirs[length:]
        ours[3::4] = theirs[3::4] = bytes(length // 4)
        if ours == theirs:
            continue
        for mask in masks:
            if mask.top <= y < mask.top + mask.height:
                left = 4 * min(max(mask.left - shift_x, 0), length // 4)
                right = 4 * min(max(mask.left + mask.width - shift_x, 0), length // 4)
                ours[left:right] = theirs[left:right] = bytes(max(right - left, 0))
        if ours != theirs:
            found += [(shift_x + x // 4, y) for x in range(0, length, 4) if ours[x:x + 4] != theirs[x:x + 4]]
    return found


def cut(area, left, top, right, bottom):
    """Rows of three bytes a pixel, black where there is none."""
    rows = []
    for y in range(top - area.shift[1], bottom - area.shift[1]):
        row = area.rows[y] if 0 <= y < len(area.rows) else b""
        start = left - area.shift[0]
        row = bytes(4 * max(-start, 0)) + row[4 * max(start, 0):4 * max(right - area.shift[0], 0)]
        row = row.ljust(4 * (right - left), b"\0")
        colours = bytearray(3 * (right - left))
        for part in range(3):
            colours[part::3] = row[2 - part::4]
        rows.append(colours)
    return rows


def save_difference(path, first, second, points):
    """The first, the second, and where they differ in the second, paled, around all such points."""
    left, right = max(min(x for x, _ in points) - MARGIN, 0), max(x for x, _ in points) + MARGIN
    top, bottom = max(min(y for _, y in points) - MARGIN, 0), max(y for _, y in points) + MARGIN
    ours, theirs = cut(first, left, top, right, bottom), cut(second, left, top, right, bottom)
    paled = [row.translate(PALED) for row in theirs]
    for x, y in points:
        paled[y - top][3 * (x - left):3 * (x - left) + 3] = MARK
    gap = b"\xff" * 3 * GAP
    save_png(path, [gap.join(three) for three in zip(ours, theirs, paled)])


def save_png(path, rows):
    raw = b"".join(b"\0" + row for row in rows)

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    header = struct.pack(">IIBBBBB", len(rows[0]) // 3, len(rows), 8, 2, 0, 0, 0)
    path.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(raw)) +
                     chunk(b"IEND", b""))
