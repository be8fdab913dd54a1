#!/usr/bin/env python3
"""Runs the examples of a document: run_docs.py <orv> <document.md> [<call_runner>]

An example begins with a fenced block ```orv NAME, a mapping file, and goes on with the blocks behind it, up to the
next ```orv block. Everything lies in a directory of its own, which is the current one of the run.

  ```file PATH      a file beside the mapping file
  ```args           words of the command line, behind the mapping file; quotes as in a shell
  ```command        the whole command line behind the program's name, in place of `NAME.orv args'
  ```rows           the rows that the mapping file gives, as the dump of the configuration shows them
  ```result PATH    the content of a file that the run writes; the run must succeed
  ```bytes PATH     the same as hexadecimal digits; what stands behind a `|' is a remark
  ```log            lines of the log, severity and text, that must come in this order
  ```message NUMBER the failure that ends the run, and its text; the text may be left out

Each example needs at least one of the last five. Blocks of any other kind are text for the reader.

An example of a function is one block ```call:

  row <row>         rows of a mapping file, when the function needs some
  <feature>         what every call of the block begins with, as `type {name=value, ...} line 0 0, 1 1'
  @Name(...)        a call on the destination side; `source @Name(...)' is one on the source side
  = <result>        of the call in front; without it the result must be empty
  -> <feature>      what it leaves; without it the feature must be as it was, and `-> nothing' says that it is gone
  ! <number>        the failure, in place of both"""
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

GIVEN = {"orv", "file", "args", "command"}
EXPECTED = {"rows", "result", "bytes", "log", "message"}
CALL = "call"


class Example:
    def __init__(self, name, line):
        self.name, self.line = name, line
        self.blocks = []  # (kind, word, text)

    def all(self, kind):
        return [(word, text) for block, word, text in self.blocks if block == kind]

    def words(self, kind):
        return [word for _, text in self.all(kind) for word in shlex.split(text, comments=False)]


def examples(document):
    """The mapping files with their blocks, and the blocks of calls as (line, rows of the block)."""
    found = []
    calls = []
    fence = None
    for number, line in enumerate(document.read_text(encoding="utf-8").splitlines(), 1):
        if fence is None:
            match = re.fullmatch(r"(`{3,})\s*(\w+)(?:\s+(\S+))?\s*", line)
            if match:
                fence, kind, word, body = match[1], match[2], match[3], []
                if kind == "orv":
                    found.append(Example(word or f"example{number}", number))
        elif line == fence:
            if kind == CALL:
                calls.append((number - len(body), body))
            elif kind in GIVEN | EXPECTED:
                if not found:
                    sys.exit(f"{document.name}:{number}: a block `{kind}' stands before the first mapping file")
                found[-1].blocks.append((kind, word, "".join(text + "\n" for text in body)))
            fence = None
        else:
            body.append(line)
    return found, calls


def run_calls(runner, body):
    """Runs one block of calls; gives its faults."""
    asked, wanted, feature = [], [], ""
    for line in body:
        if line.startswith("row "):
            asked.append(line)
        elif line.startswith(("@", "source @")):
            asked.append("extract " + line[7:] if line.startswith("source ") else "execute " + line)
            wanted.append([line, "0", "", feature])
        elif line.startswith("= "):
            wanted[-1][2] = line[2:]
        elif line.startswith("-> "):
            wanted[-1][3] = "" if line == "-> nothing" else line[3:]
        elif line.startswith("! "):
            wanted[-1][1:3] = [line[2:], None]
        elif line.strip():
            feature = line
            asked.append("feature " + line)
    done = subprocess.run([runner], input="".join(line + "\n" for line in asked), capture_output=True, text=True,
                          timeout=120, check=False)
    got = done.stdout.split("\n")
    faults = [] if wanted else ["no call stands in it"]
    for index, (call, number, result, after) in enumerate(wanted):
        shown = got[3 * index:3 * index + 3]
        if len(shown) < 3:
            return faults + [f"{call}: the runner stopped: {done.stderr}"]
        if shown[0] != number or (result is not None and shown[1] != result) or shown[2] != after:
            faults.append(f"{call}: expected {number}, `{result}', `{after}'\n  got {shown[0]}, `{shown[1]}', `{shown[2]}'")
    return faults


def run(program, example, directory):
    """Runs one example; gives its faults."""
    mapping = f"{example.name}.orv"
    (directory / mapping).write_text(example.all("orv")[0][1], encoding="utf-8")
    for path, text in example.all("file"):
        target = directory / path
        target.parent.mkdir(parents=True, exist_ok=True)
        target.write_text(text, encoding="utf-8")
    command = example.words("command") or [mapping] + example.words("args")
    if example.all("rows"):
        command += ["+ORV_DEBUG", "MAPPING_FILE"]
    if example.all("rows") or example.all("log"):
        command += ["-LOG_FILENAME", "run.log", "-LOG_APPEND", "no"]
    environment = dict(os.environ, ORV_MSG_NUM_OUTPUT="1")
    done = subprocess.run([program, *command], cwd=directory, env=environment, capture_output=True, timeout=120)
    printed = (done.stdout + done.stderr).decode("utf-8", "replace")
    log = directory / "run.log"
    lines = log.read_text(encoding="utf-8").splitlines() if log.exists() else []
    faults = []

    def expect(what, wanted, got):
        if wanted != got:
            faults.append(f"{what}: expected\n{wanted}\ngot\n{got}")

    for _, text in example.all("rows"):
        rows = [row for line in lines for row in re.findall(r"\|\(#236003\) Row \d+: (.+)$", line)]
        added = ("ORV_DEBUG MAPPING_FILE", "LOG_FILENAME run.log", "LOG_APPEND no")
        expect("rows", text, "".join(row + "\n" for row in rows if row not in added))
    for path, text in example.all("result"):
        target = directory / path
        content = target.read_bytes().decode("utf-8", "replace").replace("\r\n", "\n") if target.exists() else None
        expect(path, text, content)
        expect("exit value", 0, done.returncode)
    for path, text in example.all("bytes"):
        target = directory / path
        wanted = bytes.fromhex("".join(line.partition("|")[0] for line in text.splitlines()))
        expect(path, wanted.hex(" "), target.read_bytes().hex(" ") if target.exists() else None)
        expect("exit value", 0, done.returncode)
    for _, text in example.all("log"):
        shown = ["|".join(re.sub(r"\(#\d+\) ", "", line).split("|")[3:]) for line in lines]
        at = 0
        for wanted in text.splitlines():
            if wanted not in shown[at:]:
                faults.append(f"log: no line `{wanted}' in\n" + "\n".join(shown[at:]))
                break
            at = shown.index(wanted, at) + 1
    for number, text in example.all("message"):
        expect("exit value", 255, done.returncode)
        if f"(#{number}) {text.strip()}" not in printed:
            faults.append(f"message {number} `{text.strip()}' is not in\n{printed}")
    if not any(kind in EXPECTED for kind, _, _ in example.blocks):
        faults.append("nothing is expected of it")
    if faults and not example.all("message") and done.returncode != 0:
        faults.append(printed)
    return faults


def main():
    program, document = str(pathlib.Path(sys.argv[1]).resolve()), pathlib.Path(sys.argv[2])
    found, calls = examples(document)
    bad = 0
    if calls and len(sys.argv) < 4:
        sys.exit(f"{document.name}: the calls need the program call_runner")
    for line, body in calls:
        faults = run_calls(str(pathlib.Path(sys.argv[3]).resolve()), body)
        for fault in faults:
            print(f"{document.name}:{line}: {fault}")
        bad += bool(faults)
    for example in found:
        with tempfile.TemporaryDirectory(prefix="orv_docs_") as directory:
            faults = run(program, example, pathlib.Path(directory))
        for fault in faults:
            print(f"{document.name}:{example.line}: example {example.name}: {fault}")
        bad += bool(faults)
    count = len(found) + len(calls)
    print(f"{document.name}: {count} examples, {bad} wrong")
    sys.exit(1 if bad or count == 0 else 0)


main()
