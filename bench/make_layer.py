#!/usr/bin/env python3
"""Makes a Shape dataset of polygons with a fixed seed: DIRECTORY/NAME.shp, .shx and .dbf.

    bench/make_layer.py DIRECTORY NAME [COUNT [VERTICES]]

Each polygon is one ring of VERTICES points on average, with the eight attributes of COLUMNS. With a spread above 1 they
overlap their neighbours, with a block their zones are squares of so many of them along a side."""
import array
import math
import pathlib
import random
import struct
import sys

COLUMNS = [("PARCEL_ID", "N", 10, 0), ("ZONE", "C", 8, 0), ("LANDUSE", "C", 16, 0), ("OWNER", "C", 24, 0),
           ("AREA_M2", "N", 14, 2), ("ASSESSED", "N", 12, 0), ("BUILT", "D", 8, 0), ("PUBLIC", "L", 1, 0)]


def definitions():
    """The columns as a _DEF row has them."""
    kinds = {"N": "number({0},{1})", "C": "char({0})", "D": "date", "L": "logical"}
    return [(name, kinds[kind].format(width, decimals)) for name, kind, width, decimals in COLUMNS]


def make(directory, name, count=500_000, vertices=20, spread=1.0, block=0):
    rng = random.Random(19980812)
    shapes = []  # rings around the origin, clockwise, of 15 to 25 points
    for _ in range(64):
        points = max(4, vertices + rng.randint(-vertices // 4, vertices // 4))
        angles = sorted((rng.random() * 2 * math.pi for _ in range(points - 1)), reverse=True)
        radii = [(6 + 4 * rng.random(), 6 + 4 * rng.random()) for _ in angles]
        if spread != 1.0:  # no ring may cross itself: peers refuse those
            radii = [(spread * r, spread * r) for r, _ in radii]
        ring = [(rx * math.cos(a), ry * math.sin(a)) for a, (rx, ry) in zip(angles, radii)]
        ring.append(ring[0])
        shapes.append((ring, [x for x, _ in ring], [y for _, y in ring]))
    owners = [f"{a} {b}" for a in ("Anna", "Boris", "Chen", "Dana", "Emre") for b in ("Meadow", "Hill", "Brook", "Stone")]
    uses = ["residential", "farm", "forest", "industry", "water", "road"]
    side = max(1, int(count ** 0.5))
    path = pathlib.Path(directory)
    path.mkdir(parents=True, exist_ok=True)
    row_length = 1 + sum(width for _, _, width, _ in COLUMNS)
    offset, entries = 100, bytearray()
    with open(path / f"{name}.shp", "wb") as shp, open(path / f"{name}.dbf", "wb") as dbf:
        shp.write(bytes(100))
        dbf.write(struct.pack("<4BIHH20x", 3, 124, 1, 1, count, 33 + 32 * len(COLUMNS), row_length))
        for column, kind, width, decimals in COLUMNS:
            dbf.write(struct.pack("<11sc4xBB14x", column.encode(), kind.encode(), width, decimals))
        dbf.write(b"\r")
        for i in range(count):
            ring, xs, ys = shapes[rng.randrange(64)]
            cx, cy = 400000 + 20 * (i % side), 5200000 + 20 * (i // side)
            coordinates = array.array("d", (value for x, y in ring for value in (cx + x, cy + y)))
            content = struct.pack("<i4d3i", 5, cx + min(xs), cy + min(ys), cx + max(xs), cy + max(ys), 1, len(ring), 0)
            words = (len(content) + 16 * len(ring)) // 2
            shp.write(struct.pack(">2i", i + 1, words) + content + coordinates.tobytes())
            entries += struct.pack(">2i", offset // 2, words)
            offset += 8 + 2 * words
            zone = i // side // block * (side // block + 1) + i % side // block if block else i % 97
            dbf.write(b" %10d%-8s%-16s%-24s%14.2f%12d%04d%02d%02d%s" % (
                i, b"Z%d" % zone, rng.choice(uses).encode(), rng.choice(owners).encode(), 100 + rng.random() * 900,
                rng.randrange(500_000), 1900 + i % 120, 1 + i % 12, 1 + i % 28, b"TF"[i % 2:i % 2 + 1]))
        dbf.write(b"\x1a")
        box = (400000 - 10, 5200000 - 10, 400000 + 20 * side + 10, 5200000 + 20 * (count // side + 1) + 10, 0, 0, 0, 0)
        header = struct.pack("<2i8d", 1000, 5, *box)
        shp.seek(0)
        shp.write(struct.pack(">i20xi", 9994, offset // 2) + header)
    (path / f"{name}.shx").write_bytes(struct.pack(">i20xi", 9994, (100 + len(entries)) // 2) + header + entries)


if __name__ == "__main__":
    make(sys.argv[1], sys.argv[2], *map(int, sys.argv[3:]))
