#!/usr/bin/env python3
"""Holds the message numbers of the code against the texts in home/messages, both ways.

Every number of five or six digits in the code is a message number, unless it is listed in NOT_MESSAGES. Each must
have a text; each text must be used; and no text may hold a placeholder beyond the parameters that a direct call
of makeStatus, makeRejection, logMessage or formatMessage passes."""
import pathlib
import re
import sys

# Numbers of five or six digits in the code that are no messages.
NOT_MESSAGES = {10000, 16384, 20021, 30000, 32768, 50000, 65535, 65536, 99999, 100000, 262144, 500000, 999999}

root = pathlib.Path(sys.argv[1])
faults = []


def without_comments(text):
    text = re.sub(r'"(?:[^"\\\n]|\\.)*"', '""', text)
    text = re.sub(r"//[^\n]*", "", text)
    return re.sub(r"/\*.*?\*/", "", text, flags=re.S)


def arguments(text, start):
    """The top-level arguments of the call whose opening parenthesis is at start."""
    depth, pieces, begin = 0, [], start + 1
    for at in range(start, len(text)):
        c = text[at]
        if c in "([{":
            depth += 1
        elif c in ")]}":
            depth -= 1
            if depth == 0:
                pieces.append(text[begin:at].strip())
                return pieces
        elif c == "," and depth == 1:
            pieces.append(text[begin:at].strip())
            begin = at + 1
    return pieces


texts = {}
for path in sorted((root / "home/messages").iterdir()):
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        if not line or line.startswith("/"):
            continue
        head, comma, text = line.partition(",")
        if not comma or not head.isdigit():
            faults.append(f"{path.name}:{number}: not `number, text'")
            continue
        if int(head) in texts:
            faults.append(f"{path.name}:{number}: {head} has a text in {texts[int(head)][0]} already")
        texts[int(head)] = (path.name, text)

used = {}
calls = []
for path in sorted((root / "vex").rglob("*")):
    if path.suffix not in {".cpp", ".h", ".inc"}:
        continue
    text = without_comments(path.read_text(encoding="utf-8"))
    constants = {name: int(value) for name, value in re.findall(r"\b(k\w+)\s*=\s*(\d{4,6})\b", text)}
    for match in re.finditer(r"(?<![\w.'])(\d{5,6})(?![\w.'])", text):
        used.setdefault(int(match.group(1)), f"{path.name}")
    for match in re.finditer(r"\b(makeStatus|makeRejection|formatMessage|logMessage)\(", text):
        found = arguments(text, match.end() - 1)
        if match.group(1) == "logMessage":
            found = found[1:]
        if not found:
            continue
        number = int(found[0]) if found[0].isdigit() else constants.get(found[0])
        passed = 0
        if len(found) > 1:
            if not found[1].startswith("{"):
                continue
            inner = found[1][1:-1].strip()
            passed = len(arguments("(" + inner + ")", 0)) if inner else 0
        if number is not None:
            calls.append((path.name, number, passed))

for number, place in sorted(used.items()):
    if number not in texts and number not in NOT_MESSAGES:
        faults.append(f"{place}: message {number} has no text")
for number, (place, _) in sorted(texts.items()):
    if number not in used:
        faults.append(f"{place}: message {number} is used nowhere")
for place, number, passed in calls:
    if number in texts:
        for index in re.findall(r"%(\d)", texts[number][1]):
            if int(index) >= passed:
                faults.append(f"{place}: message {number} shows %{index}, and the call passes {passed} parameter(s)")

for fault in faults:
    print(fault)
print(f"{len(texts)} messages, {len(used)} numbers in the code, {len(calls)} calls, {len(faults)} faults")
sys.exit(1 if faults else 0)
