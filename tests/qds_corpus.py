#!/usr/bin/env python3
"""Takes every shapefile below a directory through feature stores and back, and holds what comes out against what comes
out without a store between: Shape and delimited text byte for byte. Stores themselves are read here, after
docs/formats/qds.md: a store that was read and written again holds the same features, bit for bit, and no coordinate
that the shapefile does not have.

    tests/qds_corpus.py ORV DIRECTORY [PART OF A NAME...]

ORV_SHAPE_DATA in the environment names another directory."""
import os
import pathlib
import struct
import sys
import tempfile

from shape_corpus import TYPES, copy_set, names_of, quoted, read_fields, run_orv, type_text


class Cursor:
    def __init__(self, data, at=0):
        self.data, self.at = data, at

    def take(self, count):
        taken = self.data[self.at:self.at + count]
        if len(taken) != count:
            raise ValueError(f"cut at byte {self.at}")
        self.at += count
        return taken

    def u32(self):
        return struct.unpack("<I", self.take(4))[0]

    def text(self):
        return self.take(self.u32())


def read_store(path):
    """The features of one file: type, attributes, sequence, coordinate system, code, dimension, ordinates, commands."""
    data = path.read_bytes()
    marker, dictionary, count = struct.unpack("<3I", data[:12])
    if marker != 0:
        raise ValueError("the marker")
    region = Cursor(data, dictionary)
    by_name, by_index = {}, {}
    for _ in range(region.u32()):
        name = region.text()
        by_name[name] = region.u32()
    for _ in range(region.u32()):
        index = region.u32()
        by_index[index] = region.text()
    if region.at != len(data) or by_name != {name: index for index, name in by_index.items()}:
        raise ValueError("the dictionary")
    features, cursor = [], Cursor(data, 12)
    for _ in range(count):
        attributes = {}
        for _ in range(cursor.u32()):
            name = by_index[cursor.u32()]
            attributes[name] = cursor.text()
        sequence = [by_index[cursor.u32()] for _ in range(cursor.u32())]
        kind, system = cursor.text(), cursor.text()
        code, dimension, coordinates = struct.unpack("<HBI", cursor.take(7))
        ordinates = [cursor.take(8 * coordinates) for _ in range(dimension)]
        commands = [cursor.text() for _ in range(cursor.u32())]
        features.append((kind, attributes, sequence, system, code, dimension, ordinates, commands))
    if cursor.at != dictionary:
        raise ValueError(f"records end at byte {cursor.at} and not at {dictionary}")
    return features


def source_points(path):
    """All pairs of x and y that a .shp holds, as bytes."""
    data, at, pairs = path.read_bytes(), 100, set()
    kind_of = {1: "point", 3: "parts", 5: "parts", 8: "points"}
    while at + 12 <= len(data):
        words = struct.unpack(">i", data[at + 4:at + 8])[0]
        content = data[at + 8:at + 8 + 2 * max(words, 2)]
        kind = kind_of.get(struct.unpack("<i", content[:4])[0] % 10)
        if kind == "point":
            pairs.add(content[4:20])
        elif kind == "points" and len(content) >= 40:
            count = struct.unpack("<i", content[36:40])[0]
            pairs.update(content[40 + 16 * i:56 + 16 * i] for i in range(count))
        elif kind == "parts" and len(content) >= 44:
            parts, count = struct.unpack("<2i", content[36:44])
            start = 44 + 4 * parts
            pairs.update(content[start + 16 * i:start + 16 + 16 * i] for i in range(min(count, len(content) // 16)))
        at += 8 + 2 * max(words, 2)
    return pairs


def without_date(path):
    data = path.read_bytes()
    return data[:1] + data[4:] if path.suffix == ".dbf" else data


def check_file(orv, shp, scratch):
    scratch.mkdir()
    original = copy_set(shp, scratch / "in")
    code = struct.unpack("<i", original.read_bytes()[32:36])[0]
    if code not in TYPES:
        return ["refused type"], []
    fields = read_fields(original.with_suffix(".dbf"))
    source_names, names = names_of(fields)
    name, columns = original.stem.encode(), range(len(fields))
    home = str(scratch).encode()
    shape_in = [b"READER_TYPE SHAPE", b"READER_KEYWORD IN", b"IN_DATASET " + quoted(str(original).encode())]
    if not original.with_suffix(".shx").exists():
        shape_in.append(b"IN_WITHOUT_INDEX YES")
    pair = b" ".join([b"IN", quoted(name)] + [quoted(n) + b" %%v%d" % i for i, n in enumerate(source_names)])

    def store_in(store):
        return [b"READER_TYPE QDS", b"READER_KEYWORD IN", b"IN_DATASET " + home + b"/" + store]

    def store_out(store):
        return [b"WRITER_TYPE QDS", b"WRITER_KEYWORD OUT", b"OUT_DATASET " + home + b"/" + store, b"IN *", b"OUT *"]

    def shape_out(directory):
        return [b"WRITER_TYPE SHAPE", b"WRITER_KEYWORD OUT", b"OUT_DATASET " + home + b"/" + directory,
                b" ".join([b"OUT_DEF", quoted(name), b"SHAPE_GEOMETRY", TYPES[code].encode()] +
                          [quoted(n) + b" " + type_text(*field[1:]) for n, field in zip(names, fields)]),
                pair + b" SHAPE_MEASURES %m",
                b" ".join([b"OUT", quoted(name)] + [quoted(n) + b" %%v%d" % i for i, n in enumerate(names)] +
                          [b"SHAPE_MEASURES %m"])]

    def text_out(directory):
        return [b"WRITER_TYPE TABLE", b"WRITER_KEYWORD OUT", b"OUT_DATASET " + home + b"/" + directory,
                b" ".join([b"OUT_DEF", quoted(name), b"CSV all.txt CSV_SEPARATOR (\x1f)"] +
                          [b"c%d char(254)" % i for i in columns]),
                pair, b" ".join([b"OUT", quoted(name)] + [b"c%d %%v%d" % (i, i) for i in columns])]

    text_in = [b"READER_TYPE TABLE", b"READER_KEYWORD IN", b"IN_DATASET " + home + b"/text",
               b" ".join([b"IN_DEF", quoted(name), b"CSV all.txt CSV_SEPARATOR (\x1f)"] +
                         [quoted(n) + b" char(254)" for n in source_names])]

    faults = []

    def run(mapping, rows):
        status, log = run_orv(orv, scratch, mapping, rows)
        if status != 0:
            faults.append(f"{mapping} failed: {log.decode(errors='replace')[-400:]}")
        return status == 0

    def same(one, other, endings=("",)):
        for ending in endings:
            a, b = scratch / (one + ending), scratch / (other + ending)
            if a.exists() != b.exists() or (a.exists() and without_date(a) != without_date(b)):
                faults.append(f"{a.relative_to(scratch)} and {b.relative_to(scratch)} differ")

    if not run("to_store.orv", shape_in + store_out(b"one.qds")):
        return [], faults
    if not (scratch / "one.qds").exists():
        return ["empty"], faults
    run("again.orv", store_in(b"one.qds") + store_out(b"two.qds"))
    one, two = read_store(scratch / "one.qds"), read_store(scratch / "two.qds")
    if one != two:
        faults.append("the store that was written again holds other features")
    there = source_points(original)
    for number, feature in enumerate(one):
        xs, ys = feature[6][:2]
        strange = [i for i in range(0, len(xs), 8) if xs[i:i + 8] + ys[i:i + 8] not in there]
        if strange:
            faults.append(f"feature {number} has a coordinate that the shapefile has not")
            break
    run("direct.orv", shape_in + shape_out(b"direct"))
    run("through.orv", store_in(b"one.qds") + shape_out(b"through"))
    base = original.stem.replace(".", "_")
    same("direct/" + base, "through/" + base, (".shp", ".shx", ".dbf"))
    if fields:
        run("text.orv", shape_in + text_out(b"text"))
        run("stored_text.orv", store_in(b"one.qds") + text_out(b"stored"))
        same("text/all.txt", "stored/all.txt")
        run("text_direct.orv", text_in + text_out(b"text_direct"))
        run("text_to_store.orv", text_in + store_out(b"text.qds"))
        if (scratch / "text.qds").exists():
            run("text_through.orv", store_in(b"text.qds") + text_out(b"text_through"))
            same("text_direct/all.txt", "text_through/all.txt")
    return [f"{len(one)} features", "z" if any(f[5] == 3 for f in one) else ""], faults


def main():
    orv = sys.argv[1]
    root = pathlib.Path(os.environ.get("ORV_SHAPE_DATA") or sys.argv[2])
    isolated = sys.argv[3:]
    failed = checked = 0
    with tempfile.TemporaryDirectory(prefix="orv_qds_") as scratch:
        for number, shp in enumerate(sorted(root.rglob("*.shp"))):
            name = str(shp.relative_to(root).with_suffix(""))
            if isolated and not any(part in name for part in isolated):
                continue
            notes, faults = check_file(orv, shp, pathlib.Path(scratch) / str(number))
            print(f"{'FAILED' if faults else 'ok':7}{name}  {' '.join(notes)}")
            for fault in faults:
                print("       " + fault)
            failed += bool(faults)
            checked += 1
    print(f"{checked} files, {failed} failed")
    return 1 if failed or not checked else 0


if __name__ == "__main__":
    sys.exit(main())
