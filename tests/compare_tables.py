#!/usr/bin/env python3
"""dBase tables beside another reader: what orv makes of files of others, and what ogrinfo makes of ours.

    tests/compare_tables.py ORV DATA_DIRECTORY

Exit value 77 (skipped) without ogrinfo."""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

FILES = ["chinese", "nan", "padding_after_field_defns", "weird_header_length", "dbase_03", "dbase_03_cyrillic", "mazovia"]
ROWS = [["12", "Main street", "19990131", "true"], ["-0.5", "", "", "false"], ["123456789", "x" * 40, "20240229", ""],
        ["1e3", " led by a blank", "", "no"], ["n/a", "last", "", "yes"]]

if shutil.which("ogrinfo") is None:
    print("ogrinfo is not installed")
    sys.exit(77)
orv, data = sys.argv[1:3]
work = pathlib.Path(tempfile.mkdtemp())
faults = []


def peer(path):
    """The records of a table as ogrinfo tells them: lists of (name, value)."""
    text = subprocess.run(["ogrinfo", "-ro", "-al", "-q", "--config", "SHAPE_ENCODING", "", path],
                          capture_output=True, check=True).stdout
    records = []
    for line in text.decode("latin-1").splitlines():
        if line.startswith("OGRFeature("):
            records.append([])
        found = re.match(r"  (\S+) \(\w+(?:\([\d.]+\))?\) = (.*)", line)
        if found and records:
            records[-1].append(found.groups())
    return records


def translate(columns, *rows):
    path = work / "job.orv"
    pairs = " ".join(f'"{column}" %v{i}' for i, column in enumerate(columns))
    path.write_bytes("\n".join(("READER_TYPE TABLE", "READER_KEYWORD IN", "WRITER_TYPE TABLE", "WRITER_KEYWORD OUT",
                                f"OUT_DATASET {work}/out", f"IN t {pairs}", f"OUT t {pairs}") + rows).encode("latin-1"))
    subprocess.run([orv, str(path)], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def plain(value):
    """A value in the form that both programs reach: no date strokes, numbers by their worth."""
    value = value.strip().replace("(null)", "")
    value = re.sub(r"^(\d{4})/(\d\d)/(\d\d)$", r"\1\2\3", value)
    try:
        return float(value) if value not in ("nan", "") else value
    except ValueError:
        return value


def compare(what, ours, theirs):
    if len(ours) != len(theirs):
        faults.append(f"{what}: {len(ours)} records, the other reader has {len(theirs)}")
    for number, (own, other) in enumerate(zip(ours, theirs)):
        values = dict(other)
        for (name, _), text in zip(theirs[0], own):
            value = values.get(name, "")  # dates without a value are left out
            same = plain(value) == plain(text) or (plain(value) == "" and plain(text) == 0)
            if not same:
                faults.append(f"{what}, record {number}, {name}: `{text}', the other reader has `{value}'")


for name in FILES:
    table = f"{data}/dbf/{name}.dbf"
    theirs = peer(table)
    columns = [column.upper() if column.isascii() else column for column, _ in theirs[0]]
    if columns[-1] in columns[:-1]:
        columns.pop()  # one file has a name twice, at its end; orv gives that column a name of its own
    translate(columns, f"IN_DATASET {table}", "IN_DEF t DBF x", "OUT_DEF t CSV t.csv CSV_SEPARATOR \"(|)\" " +
              " ".join(f'"{column}" char(9)' for column in columns))
    lines = (work / "out/t.csv").read_bytes().decode("latin-1").split("\n")[:-1]
    compare(name, [line.split("|") for line in lines], [record[:len(columns)] for record in theirs])

(work / "rows.csv").write_text("".join("|".join(row) + "\n" for row in ROWS))
translate("NTDL", f"IN_DATASET {work}", "IN_DEF t CSV rows.csv CSV_SEPARATOR \"(|)\" N x T x D x L x",
          "OUT_DEF t DBF t.dbf N number(12,2) T char(30) D date L logical")
expected = [["12", "Main street", "19990131", "t"], ["-0.5", "", "", "f"], ["123456789", "x" * 30, "20240229", ""],
            ["1000", " led by a blank", "", "n"], ["", "last", "", "y"]]
compare("written table", expected, peer(str(work / "out/t.dbf")))

shutil.rmtree(work)
print("\n".join(faults[:40]) if faults else f"{len(FILES)} tables read and 1 written agree with the other reader")
sys.exit(1 if faults else 0)
