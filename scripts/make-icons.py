#!/usr/bin/env python3
"""Draws the fault widgets' icons (faults/ui/icons/*.png) with nothing but the standard
library: each icon is a list of filled shapes, sampled 4 x 4 times per pixel so that its
edges are smooth. Run it from the repository's root after changing a shape."""
import math
import struct
import zlib

SAMPLES = 4  # per pixel side


def png(path, size, pixels):
    """Writes RGBA rows (lists of (r, g, b, a) tuples) as an 8-bit RGBA PNG."""
    raw = b"".join(b"\x00" + bytes(v for p in row for v in p) for row in pixels)

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data) & 0xFFFFFFFF)

    header = struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0)
    with open(path, "wb") as f:
        f.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b""))


def render(size, shapes):
    """shapes: (colour, inside(x, y)) painted in order, later ones over earlier ones."""
    rows = []
    for py in range(size):
        row = []
        for px in range(size):
            acc = [0.0, 0.0, 0.0, 0.0]
            for sy in range(SAMPLES):
                for sx in range(SAMPLES):
                    x = px + (sx + 0.5) / SAMPLES
                    y = py + (sy + 0.5) / SAMPLES
                    colour = None
                    for c, inside in shapes:
                        if inside(x, y):
                            colour = c
                    if colour:
                        for k in range(3):
                            acc[k] += colour[k]
                        acc[3] += 255
            n = SAMPLES * SAMPLES
            covered = acc[3] / 255
            if covered == 0:
                row.append((0, 0, 0, 0))
            else:
                row.append(tuple(int(round(acc[k] / covered)) for k in range(3)) + (int(round(acc[3] / n)),))
        rows.append(row)
    return rows


def segment(ax, ay, bx, by, half_width):
    def inside(x, y):
        dx, dy = bx - ax, by - ay
        t = max(0.0, min(1.0, ((x - ax) * dx + (y - ay) * dy) / (dx * dx + dy * dy)))
        return math.hypot(x - ax - t * dx, y - ay - t * dy) <= half_width
    return inside


def triangle(p, q, r):
    def side(a, b, x, y):
        return (b[0] - a[0]) * (y - a[1]) - (b[1] - a[1]) * (x - a[0])

    def inside(x, y):
        s = [side(p, q, x, y), side(q, r, x, y), side(r, p, x, y)]
        return all(v >= 0 for v in s) or all(v <= 0 for v in s)
    return inside


def arc(cx, cy, radius, half_width, start, end):
    """A ring segment from angle `start` to `end` (degrees, counter-clockwise on screen)."""
    def inside(x, y):
        d = math.hypot(x - cx, y - cy)
        if abs(d - radius) > half_width:
            return False
        a = math.degrees(math.atan2(cy - y, x - cx)) % 360
        return (a - start) % 360 <= (end - start) % 360
    return inside


def mirrored(size, inside):
    return lambda x, y: inside(size - x, y)


ORANGE = (230, 100, 30)
BLUE = (40, 120, 230)
PURPLE = (120, 70, 160)
GREY = (60, 60, 60)

# Two faults (orange, blue) that come together into one.
merge = [
    (ORANGE, segment(6, 3, 15, 19, 2.6)),
    (BLUE, segment(26, 3, 17, 19, 2.6)),
    (PURPLE, segment(16, 18, 16, 29, 3.0)),
]
png("faults/ui/icons/faultmergeassistant.png", 32, render(32, merge))

# A half turn to the left ending in an arrow head: undo; its mirror image: redo.
undo = [
    (GREY, arc(13.0, 13.5, 6.5, 1.4, 300, 180)),
    (GREY, triangle((2.5, 12.0), (11.0, 12.0), (6.75, 18.5))),
]
png("faults/ui/icons/faultundo24.png", 24, render(24, undo))
png("faults/ui/icons/faultredo24.png", 24, render(24, [(c, mirrored(24, f)) for c, f in undo]))
