#!/usr/bin/env python3
"""Runs whole translations that are written down in .case files.

    run_cases.py --orv BUILD/bin/orv [--data DIR] [--keep] [--update] FILE.case...

A case is one text file of sections. Text before the first section is a comment. Sections are carried out in order:

    === file NAME           the text below is written to NAME in the case's own empty directory
    === hexfile NAME        the same, with \\xNN, \\n, \\r, \\t, \\0 and \\\\ decoded and line ends left out
    === env K=V             sets a variable for the runs that follow
    === run ARGS            runs orv in that directory, ARGS as the shell splits them
    === exit N              exit value of the last run (0 when not told)
    === messages N N ...    numbers that stand in the last run's output or in its log
    === not-messages N ...  numbers that stand in neither
    === output-has          every line below stands in the last run's output or log
    === expect NAME         the text below is exactly what NAME holds
    === hexexpect NAME      the same, decoded as in hexfile
    === expect-absent NAME  there is no NAME
    === command CMD         a shell command; {data} is tests/data, {orv} the program. The case is skipped when its first word is missing
    === output              what the command wrote to standard output, exactly

After each run the directory for temporary files must be empty, and the exit value 0 or 255. A line end in front of a
section belongs to the section line, so that a text that ends without one is written with hexfile.
What the run added to the logs in the directory (*.log) is searched for messages. --update rewrites the texts of expect and output."""
import argparse
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile

SKIPPED = 77  # the exit value by which ctest knows a skipped test
TIMEOUT = 120
MESSAGE_NUMBER = re.compile(r"\(#(\d+)\)")


class Fault(Exception):
    pass


def sections_of(path):
    """Pairs of heading words and text, one a section."""
    found = []
    for line in path.read_text(encoding="latin-1").splitlines(keepends=True):
        if line.startswith("=== "):
            found.append((line[4:].strip(), []))
        elif found:
            found[-1][1].append(line)
    return [(heading, "".join(lines)) for heading, lines in found]


def decoded(text):
    marks = {"n": "\n", "r": "\r", "t": "\t", "0": "\0", "\\": "\\"}
    replace = lambda match: chr(int(match.group(1)[1:], 16)) if match.group(1)[0] == "x" else marks[match.group(1)]
    return re.sub(r"\\(x[0-9a-fA-F]{2}|[nrt0\\])", replace, text.replace("\n", ""))


def difference(wanted, got):
    return f"wanted:\n{wanted}\ngot:\n{got}\nwanted {wanted!r}\ngot    {got!r}"


class Case:
    def __init__(self, path, orv, data, keep):
        self.path, self.orv, self.data = path, orv, data
        self.home = pathlib.Path(tempfile.mkdtemp(prefix="orvcase"))
        self.directory = self.home / "work"
        self.temp = self.home / "temp"
        self.directory.mkdir()
        self.temp.mkdir()
        self.environment = {**os.environ, "ORV_MSG_NUM_OUTPUT": "1", "ORV_TEMP": str(self.temp), "TZ": "UTC"}
        self.keep = keep
        self.said = ""      # by the last run: both streams and the logs
        self.exit = None    # of a run whose exit value nobody has looked at yet
        self.output = ""    # of the last command

    def shown(self):
        """What the last run said, for the reader of a fault: without tables of counts."""
        return "\n".join(line for line in self.said.splitlines() if "|STATS |" not in line)

    def file(self, name):
        path = self.directory / name
        path.parent.mkdir(parents=True, exist_ok=True)
        return path

    def settle(self):
        """A run without an exit section must have ended well."""
        if self.exit not in (None, 0):
            raise Fault(f"exit value {self.exit}, wanted 0\n{self.shown()}")
        self.exit = None

    def run(self, arguments):
        self.settle()
        before = {log: log.stat().st_size for log in self.directory.rglob("*.log")}
        command = [self.orv] + [word.replace("{data}", self.data) for word in shlex.split(arguments)]
        done = subprocess.run(command, cwd=self.directory, env=self.environment, stdin=subprocess.DEVNULL,
                              capture_output=True, timeout=TIMEOUT)
        logs = b"".join(log.read_bytes()[before.get(log, 0):] for log in sorted(self.directory.rglob("*.log")))
        self.said = (done.stdout + done.stderr + logs).decode("latin-1")
        self.exit = done.returncode
        if done.returncode not in (0, 255):
            raise Fault(f"the program ended with {done.returncode}\n{self.shown()}")
        left = sorted(path.name for path in self.temp.iterdir())
        if left:
            raise Fault(f"temporary files left behind: {' '.join(left)}\n{self.shown()}")

    def command(self, text):
        self.settle()
        if shutil.which(shlex.split(text)[0]) is None:
            print(f"{self.path}: skipped, there is no {shlex.split(text)[0]}")
            sys.exit(SKIPPED)
        text = text.replace("{data}", shlex.quote(self.data)).replace("{orv}", shlex.quote(self.orv))
        done = subprocess.run(text, shell=True, cwd=self.directory,
                              env=self.environment, capture_output=True, timeout=TIMEOUT)
        self.output = done.stdout.decode("latin-1")

    def compare(self, wanted, got, what):
        if wanted != got:
            raise Fault(f"{what} differs\n{difference(wanted, got)}\n{self.shown()}")

    def messages(self, numbers, wanted):
        present = set(MESSAGE_NUMBER.findall(self.said))
        for number in numbers:
            if (number in present) != wanted:
                raise Fault(f"message {number} is {'missing' if wanted else 'there'}\n{self.shown()}")

    def do(self, heading, text):
        kind, _, rest = heading.partition(" ")
        if kind == "file":
            self.file(rest).write_bytes(text.encode("latin-1"))
        elif kind == "hexfile":
            self.file(rest).write_bytes(decoded(text).encode("latin-1"))
        elif kind == "env":
            key, _, value = rest.partition("=")
            self.environment[key] = value
        elif kind == "run":
            self.run(rest)
        elif kind == "exit":
            if self.exit != int(rest):
                raise Fault(f"exit value {self.exit}, wanted {rest}\n{self.shown()}")
            self.exit = None
        elif kind in ("messages", "not-messages"):
            self.messages((rest + " " + text).split(), kind == "messages")
        elif kind == "output-has":
            for line in text.splitlines():
                if line not in self.said:
                    raise Fault(f"not in output or log: {line!r}\n{self.shown()}")
        elif kind in ("expect", "hexexpect"):
            if not (self.directory / rest).is_file():
                raise Fault(f"there is no {rest}\n{self.shown()}")
            wanted = decoded(text) if kind == "hexexpect" else text
            self.compare(wanted, (self.directory / rest).read_bytes().decode("latin-1"), rest)
        elif kind == "expect-absent":
            if (self.directory / rest).exists():
                raise Fault(f"{rest} is there\n{self.shown()}")
        elif kind == "command":
            self.command(rest)
        elif kind == "output":
            self.compare(text, self.output, "output of the command")
        else:
            raise Fault(f"no such section: {heading}")

    def go(self, updates):
        written = []
        try:
            for heading, text in sections_of(self.path):
                kind, _, rest = heading.partition(" ")
                if updates and kind == "expect" and (self.directory / rest).is_file():
                    text = (self.directory / rest).read_bytes().decode("latin-1")
                elif updates and kind == "output":
                    text = self.output
                self.do(heading, text)
                written.append((heading, text))
            self.settle()
        except subprocess.TimeoutExpired:
            raise Fault(f"no end after {TIMEOUT} seconds") from None
        finally:
            if self.keep:
                print(f"{self.path}: kept {self.home}")
            else:
                shutil.rmtree(self.home, ignore_errors=True)
        if updates:
            head = self.path.read_text(encoding="latin-1").split("=== ", 1)[0]
            body = "".join(f"=== {heading}\n{text}" for heading, text in written)
            self.path.write_text(head + body, encoding="latin-1")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--orv", required=True)
    parser.add_argument("--data", default=str(pathlib.Path(__file__).resolve().parent / "data"))
    parser.add_argument("--keep", action="store_true")
    parser.add_argument("--update", action="store_true")
    parser.add_argument("cases", nargs="+", type=pathlib.Path)
    options = parser.parse_args()
    faults = 0
    for path in options.cases:
        try:
            Case(path, os.path.abspath(options.orv), os.path.abspath(options.data), options.keep).go(options.update)
        except Fault as fault:
            faults += 1
            print(f"{path}: {fault}")
    print(f"{len(options.cases)} cases, {faults} with faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
