"""Pixels of both programs side by side: masks, differences, and a picture of them."""

import struct
import zlib

MARK = (255, 0, 255)
MARGIN = 24


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


def pixel(area, x, y):
    x, y = x - area.shift[0], y - area.shift[1]
    if not (0 <= y < len(area.rows) and 0 <= x < len(area.rows[0]) // 4):
        return 0, 0, 0
    blue, green, red = area.rows[y][4 * x:4 * x + 3]
    return red, green, blue


def save_difference(path, first, second, points):
    """The first, the second, and the second with the differing pixels marked, around them."""
    left, right = min(x for x, _ in points) - MARGIN, max(x for x, _ in points) + MARGIN
    top, bottom = min(y for _, y in points) - MARGIN, max(y for _, y in points) + MARGIN
    marked = set(points)
    gap = [(255, 255, 255)] * 8
    rows = []
    for y in range(max(top, 0), bottom + 1):
        columns = range(max(left, 0), right + 1)
        faded = [MARK if (x, y) in marked else tuple(128 + part // 2 for part in pixel(second, x, y)) for x in columns]
        rows.append([pixel(first, x, y) for x in columns] + gap + [pixel(second, x, y) for x in columns] + gap + faded)
    save_png(path, rows)


def save_png(path, rows):
    raw = b"".join(b"\0" + bytes(part for colour in row for part in colour) for row in rows)

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    header = struct.pack(">IIBBBBB", len(rows[0]), len(rows), 8, 2, 0, 0, 0)
    path.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(raw)) +
                     chunk(b"IEND", b""))
