#!/usr/bin/env python3
"""Translates every shapefile below a directory to Shape and to delimited text, and holds the results against what
ogrinfo says of the source: features, parts, coordinates, attributes.

    tests/shape_corpus.py ORV DIRECTORY [PART OF A NAME...]

ORV_SHAPE_DATA in the environment names another directory. What differs by rule is listed in KNOWN, by file and kind;
a difference that is not listed fails, and so does one that is listed and does not occur. Without ogrinfo the test is
skipped (exit 77)."""
import collections
import os
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import tempfile

TYPES = {0: "shape_null", 1: "shape_point", 3: "shape_polyline", 5: "shape_polygon", 8: "shape_multipoint",
         11: "shape_pointz", 13: "shape_polylinez", 15: "shape_polygonz", 18: "shape_multipointz",
         21: "shape_pointm", 23: "shape_polylinem", 25: "shape_polygonm", 28: "shape_multipointm"}

KINDS = {
    "empty": "no features: no file is written",
    "refused": "a type that is not read: the run fails with 207013",
    "mixed": "records of another type than the file's are refused",
    "repeats": "coordinates equal to their predecessor are dropped",
    "turned": "shells are written clockwise, holes counter-clockwise",
    "split": "a ring that comes back to its first point becomes two",
    "ring": "a ring without three edges is left out",
    "unclosed": "rings are closed",
    "no parts": "points without a part are no geometry",
    "no number": "a blank number is 0",
    "logical": "logical values are written T, F or blank",
    "unknown": "a number field of other text is blank or 0",
    "cut names": "field names of 11 bytes are cut, double ones told apart",
    "stale index": "entries that point into other records, or at none, are refused",
}

# File, without its ending: kinds that occur in it.
KNOWN = {
    "gdal/empty": {"empty"},
    "gdal/mixed_shape_type_non_conformant": {"mixed"},
    "gdal/polygonm_without_m": {"repeats", "unclosed"},
    "gdal/testpoly": {"turned"},
    "geotools/dup_column": {"cut names"},
    "geotools/empty-shapefile": {"empty"},
    "mapserver/7305-multipolygon": {"turned"},
    "mapserver/dateline_boxes": {"turned"},
    "mapserver/rmprdln3": {"empty"},
    "mbostock/boolean-property": {"logical"},
    "mbostock/number-null-property": {"no number"},
    "naturalearth/ne_10m_bathymetry_J_1000": {"split"},
    "naturalearth/ne_50m_lakes": {"repeats"},
    "nts/AllNulls": {"no number", "turned"},
    "nts/__emptyShapefile": {"empty"},
    "nts/chinese_encoding": {"no number"},
    "phpmyadmin/capitals": {"no number"},
    "pysal/Polygon_Holes": {"repeats"},
    "sf/storms_xyzm_feature": {"repeats"},
    "shapelib/3dpoints": {"stale index"},
    "shapelib/anno": {"repeats"},
    "shapelib/csah": {"repeats"},
    "shapelib/multipatch": {"refused"},
    "shapelib/pline": {"repeats"},
}


def read_fields(path):
    """Names, types, widths and decimals of a dBase table."""
    if not path.exists():
        return []
    data = path.read_bytes()
    length = struct.unpack("<H", data[8:10])[0]
    fields = []
    for at in range(32, min(length, len(data)) - 31, 32):
        if data[at] < 32:
            break
        name = data[at:at + 11].split(b"\0")[0].rstrip(b" ")
        fields.append((name, chr(data[at + 11]), data[at + 16], data[at + 17]))
    return [field for field in fields if field[1] in "CNFDL"]


def our_name(name):
    """A field name as the reader gives it: no hyphens, upper case but for two-byte characters."""
    out, at = bytearray(), 0
    name = name.replace(b"-", b"")
    while at < len(name):
        lead = 129 <= name[at] <= 175 or 224 <= name[at] <= 252
        if lead and at + 1 < len(name):
            out += name[at:at + 2]
            at += 2
            continue
        out += name[at:at + 1].upper() if name[at] < 128 else name[at:at + 1]
        at += 1
    return bytes(out)


def names_of(fields):
    """Source name and destination name of each column."""
    source, destination = [], []
    for index, (name, _, _, _) in enumerate(fields):
        wanted = our_name(name)
        unique, number = wanted, index + 1
        while not unique or unique in source:
            unique = wanted + b"_%d" % number if wanted else b"FIELD%d" % number
            number += 1
        source.append(unique)
        short = unique
        if len(unique) > 10 or unique in destination:
            short = b"F%d" % index
        destination.append(short)
    return source, destination


def type_text(kind, width, decimals):
    if kind == "C":
        return b"char(%d)" % width
    if kind in "NF":
        return b"number(%d,%d)" % (width, decimals)
    return b"date" if kind == "D" else b"logical"


def quoted(word):
    return b'"' + word.replace(b'"', b'\\"') + b'"' if re.search(rb"[^\w.()/,-]", word) else word


def run_orv(orv, directory, mapping, text):
    path = directory / mapping
    path.write_bytes(b"\n".join(text) + b"\n")
    log = directory / (mapping + ".log")
    environment = dict(os.environ, ORV_MSG_NUM_OUTPUT="1")
    result = subprocess.run([orv, str(path), "-LOG_FILENAME", str(log)], env=environment, capture_output=True)
    return result.returncode, log.read_bytes() if log.exists() else result.stdout + result.stderr


# ---- what ogrinfo says ----

Feature = collections.namedtuple("Feature", "number values geometry")
NUMBER = re.compile(rb"[^\s,()]+")


def parse_wkt(text):
    """A geometry as nested lists of points; a point is a tuple of texts."""
    word, _, rest = text.partition(b"(")
    if not rest:
        return word.split()[0], []
    stack, points = [[]], None
    for token in re.findall(rb"\(|\)|,|[^\s,()]+", b"(" + rest):
        if token == b"(":
            stack.append([])
            points = []
        elif token == b")":
            if points:
                stack[-1].append(tuple(points))
            points = []
            done = stack.pop()
            stack[-1].append(done)
        elif token == b",":
            if points:
                stack[-1].append(tuple(points))
            points = []
        else:
            points.append(token)
    return word.split()[0], stack[0][0]


def ogrinfo(path, *options):
    command = ["ogrinfo", "-ro", "-al", *options, "--config", "SHAPE_ENCODING", "", "--config", "OGR_ORGANIZE_POLYGONS",
               "SKIP", str(path)]
    environment = dict(os.environ)
    if not path.with_suffix(".shx").exists():
        environment["SHAPE_RESTORE_SHX"] = "YES"
    return subprocess.run(command, capture_output=True, env=environment).stdout


def ogr_columns(path):
    """Columns of a layer; the head is told from the lines behind it by its form."""
    head = re.split(rb"\nOGRFeature\(", ogrinfo(path))[0]
    return re.findall(rb"^(.*?): (?:String|Integer|Integer64|Real|Date)(?:\(Boolean\))? \(\d+\.\d+\)$", head, re.M)


def ogr_features(path, columns):
    """All features of a layer. Values are as ogrinfo shows them, by the order of the columns."""
    features = []
    pieces = re.split(rb"\nOGRFeature\([^\n]*\):(\d+)(?=\n)", ogrinfo(path))
    markers = [re.compile(rb"\n  " + re.escape(name) + rb" \((?:String|Integer|Integer64|Real|Date)(?:\(Boolean\))?\) = ")
               for name in columns]
    for number, body in zip(pieces[1::2], pieces[2::2]):
        shape = re.search(rb"\n  ([A-Z][A-Z ]*(?:\([^\n]*\)|EMPTY))\n\s*$", body)
        text = body[:shape.start()] if shape else body.rstrip(b"\n")
        places, at = [], 0
        for marker in markers:
            found = marker.search(text, at)
            places.append(found)
            at = found.end() if found else at
        values = []
        for index, found in enumerate(places):  # a value may hold line ends: it goes on to the next column
            ends = [other.start() for other in places[index + 1:] if other]
            values.append(text[found.end():ends[0] if ends else len(text)] if found else b"(null)")
        features.append(Feature(int(number), values, parse_wkt(shape.group(1)) if shape else (b"", [])))
    return features


# ---- geometry by rule ----

def rings_of(word, shape):
    """The lists of points that a geometry is made of."""
    if word.startswith(b"MULTIPOLYGON"):
        return [ring for polygon in shape for ring in polygon]
    if word.startswith((b"POLYGON", b"MULTILINESTRING")):
        return shape
    if word.startswith(b"MULTIPOINT"):
        return [[point] if isinstance(point, tuple) else point for point in shape]
    return [shape] if shape else []


def without_repeats(points):
    return [p for i, p in enumerate(points) if i == 0 or p[:2] != points[i - 1][:2]]


def signed_area(ring):
    xs, ys = [float(p[0]) for p in ring], [float(p[1]) for p in ring]
    return sum((xs[i] * (ys[i + 1] - ys[0]) - xs[i + 1] * (ys[i] - ys[0])) for i in range(len(ring) - 1)) / 2


def turned(ring):
    return ring[::-1] if signed_area(ring) > 0 else ring


def split(ring):
    pieces, start = [], 0
    for at in range(1, len(ring)):
        if at > start and ring[at][:2] == ring[start][:2]:
            pieces.append(ring[start:at + 1])
            start = at
    return pieces


def explain(source, result):
    """The kinds of rules that lead from the source's geometry to the result's; None when none do."""
    if source == result:
        return set()
    word, kinds = source[0], set()
    mine, theirs = rings_of(*result), rings_of(*source)
    if sorted(mine) == sorted(theirs):
        return kinds
    is_area = b"POLYGON" in word
    for rule in ("repeats", "unclosed", "ring", "turned", "split"):
        before = theirs
        if rule == "repeats":
            theirs = [without_repeats(ring) for ring in theirs]
        elif not is_area:
            continue
        elif rule == "unclosed":
            theirs = [ring if ring[0][:2] == ring[-1][:2] else ring + [ring[0]] for ring in theirs]
        elif rule == "ring":
            theirs = [ring for ring in theirs if len(ring) > 3]
        elif rule == "turned":
            mine, theirs = [turned(ring) for ring in mine], [turned(ring) for ring in theirs]
            before = rings_of(*source) if sorted(mine) == sorted(theirs) else theirs
        elif rule == "split":
            theirs = [turned(piece) for ring in theirs for piece in split(ring)]
            mine = [turned(piece) for ring in mine for piece in split(ring)]
        if theirs != before:
            kinds.add(rule)
        if sorted(mine) == sorted(theirs):
            return kinds
    if not mine and word and not theirs:
        return {"no parts"}
    return None


def explain_value(field, source, result):
    if source == result:
        return set()
    _, kind, _, _ = field
    if kind in "NF":
        if source in (b"(null)", b"") and float(result or b"nan") == 0:
            return {"no number"}
        try:
            if float(source) == float(result):
                return set()
        except ValueError:
            return {"unknown"}
    if kind == "L":
        truth = {b"Y": b"T", b"N": b"F", b"?": b"(NULL)"}
        same = truth.get(source.upper(), source.upper()) == result.upper()
        return {"logical"} if same and source.upper() != result.upper() else set() if same else None
    return None


# ---- one file ----

def copy_set(shp, directory):
    directory.mkdir()
    for path in shp.parent.iterdir():
        if path.stem == shp.stem and path.suffix.lower() in (".shp", ".shx", ".dbf", ".cpg"):
            shutil.copy(path, directory / path.name)
    return directory / shp.name


def check_file(orv, root, shp, scratch):
    """Kinds that occur, and faults."""
    kinds, faults = set(), []
    scratch.mkdir()
    original = copy_set(shp, scratch / "in")
    type_code = struct.unpack("<i", original.read_bytes()[32:36])[0]
    name = original.stem.encode()
    fields = read_fields(original.with_suffix(".dbf"))
    source_names, names = names_of(fields)
    has_index = original.with_suffix(".shx").exists()
    reader = [b"READER_TYPE SHAPE", b"READER_KEYWORD IN", b"IN_DATASET " + quoted(str(original).encode())]
    if not has_index:
        reader.append(b"IN_WITHOUT_INDEX YES")
    source = b" ".join([b"IN", quoted(name)] + [quoted(n) + b" %%v%d" % i for i, n in enumerate(source_names)])
    shape = reader + [
        b"WRITER_TYPE SHAPE", b"WRITER_KEYWORD OUT", b"OUT_DATASET " + str(scratch / "out").encode(),
        b" ".join([b"OUT_DEF", quoted(name), b"SHAPE_GEOMETRY", TYPES.get(type_code, "shape_null").encode()] +
                  [quoted(n) + b" " + type_text(*field[1:]) for n, field in zip(names, fields)]),
        source + b" SHAPE_MEASURES %m",
        b" ".join([b"OUT", quoted(name)] + [quoted(n) + b" %%v%d" % i for i, n in enumerate(names)] +
                  [b"SHAPE_MEASURES %m"])]
    code, log = run_orv(orv, scratch, "shape.orv", shape)
    if type_code not in TYPES:
        if code == 0 or b"#207013" not in log:
            faults.append("type is not refused")
        return {"refused"}, faults
    if code != 0:
        return kinds, ["to Shape failed: " + log.decode(errors="replace")[-600:]]
    if names != source_names or [n for n in source_names] != [our_name(field[0]) for field in fields]:
        kinds.add("cut names")

    # The source as ogrinfo sees it; a missing index is restored in the copy, after our own reading.
    if not fields and original.with_suffix(".dbf").exists():
        original.with_suffix(".dbf").unlink()  # ogrinfo shows no feature beyond the rows of a table
    theirs = ogr_features(original, ogr_columns(original))
    result = scratch / "out" / (original.stem.replace(".", "_") + ".shp")
    if not result.exists():
        if theirs:
            faults.append("nothing was written")
        return {"empty"}, faults
    ours = ogr_features(result, ogr_columns(result))
    refused = {int(number) - 1 for number in re.findall(rb"#231031\).*?[sS]hape (\d+) of '", log)}
    theirs = [feature for feature in theirs if feature.number not in refused]
    if b"ShapeType found is" in log:
        kinds.add("mixed")
    if b"#203016" in log or b"Read operation failed" in log:
        kinds.add("stale index")
    if len(ours) != len(theirs):
        return kinds, faults + [f"{len(ours)} features in place of {len(theirs)}"]
    for index, (mine, other) in enumerate(zip(ours, theirs)):
        found = explain(other.geometry, mine.geometry)
        if found is None:
            faults.append(f"feature {index}: geometry {str(other.geometry)[:300]} became {str(mine.geometry)[:300]}")
        kinds |= found or set()
        for field, value, old in zip(fields, mine.values, other.values):
            found = explain_value(field, old, value)
            if found is None:
                faults.append(f"feature {index}: {field[0]} {old} became {value}")
            kinds |= found or set()
        if len(faults) > 3:
            break
    check_text(orv, scratch, reader, source, name, fields, theirs, kinds, faults)
    return kinds, faults


def check_text(orv, scratch, reader, source, name, fields, theirs, kinds, faults):
    """The same source to delimited text: a row a feature, its values those of ogrinfo."""
    if not fields:
        return
    text = reader + [
        b"WRITER_TYPE TABLE", b"WRITER_KEYWORD TXT", b"TXT_DATASET " + str(scratch / "out").encode(),
        b" ".join([b"TXT_DEF", quoted(name), b"CSV all.txt CSV_SEPARATOR (\x1f)"] +
                  [b"c%d char(254)" % i for i in range(len(fields))]),
        source, b" ".join([b"TXT", quoted(name)] + [b"c%d %%v%d" % (i, i) for i in range(len(fields))])]
    code, log = run_orv(orv, scratch, "text.orv", text)
    if code != 0:
        faults.append("to text failed: " + log.decode(errors="replace")[-600:])
        return
    if any(c in value for feature in theirs for value in feature.values for c in b"\r\n"):
        return  # a line of text cannot hold them
    lines = (scratch / "out/all.txt").read_bytes().split(b"\n")[:-1] if theirs else []
    if len(lines) != len(theirs):
        faults.append(f"{len(lines)} lines of text for {len(theirs)} features")
        return
    for index, (line, feature) in enumerate(zip(lines, theirs)):
        for field, value, old in zip(fields, line.split(b"\x1f"), feature.values):
            if not same_text(field[1], value, old):
                faults.append(f"line {index}: {field[0]} {old} became {value}")
        if len(faults) > 3:
            return


def same_text(kind, value, old):
    if old == b"(null)":
        return value in (b"", b"0", b"00000000") or kind != "C"
    if kind in "NF":
        try:
            shown = len(old.partition(b".")[2])  # ogrinfo rounds to the decimals of the field
            return abs(float(value) - float(old)) <= 0.5 * 10 ** -shown
        except ValueError:
            return kind != "C"
    if kind == "D":
        return value == old.replace(b"/", b"")
    if kind == "L":
        return (value[:1] or b"?").upper() == {b"Y": b"T", b"N": b"F"}.get(old.upper(), old.upper())
    return value.strip() == old.strip()


def main():
    if shutil.which("ogrinfo") is None:
        print("skipped: ogrinfo is missing (.ci/install test brings it)")
        return 77
    orv = sys.argv[1]
    root = pathlib.Path(os.environ.get("ORV_SHAPE_DATA") or sys.argv[2])
    isolated = sys.argv[3:]
    files = sorted(root.rglob("*.shp"))
    failed = 0
    with tempfile.TemporaryDirectory(prefix="orv_shape_") as scratch:
        for number, shp in enumerate(files):
            name = str(shp.relative_to(root).with_suffix(""))
            if isolated and not any(part in name for part in isolated):
                continue
            kinds, faults = check_file(orv, root, shp, pathlib.Path(scratch) / str(number))
            listed = KNOWN.get(name, set())
            faults += [f"not listed: {kind} ({KINDS[kind]})" for kind in sorted(kinds - listed)]
            faults += [f"listed, and does not occur: {kind}" for kind in sorted(listed - kinds)]
            print(f"{'FAILED' if faults else 'ok':7}{name}{'  ' + ', '.join(sorted(kinds)) if kinds else ''}")
            for fault in faults:
                print("       " + fault)
            failed += bool(faults)
    print(f"{len(files)} files, {failed} failed")
    return 1 if failed or not files else 0


if __name__ == "__main__":
    sys.exit(main())
