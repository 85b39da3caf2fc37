#!/usr/bin/env python3
"""Fails when a sender or decoder writes the unit's protocol as numbers.

The protocol's codes, field places and masks are written once, in the
vocabulary (protocol/vocabulary*.h) and the protocol table built from it;
the framing bytes in protocol/frame.h. Everywhere else a message is built
and read by name. This check reads every tracked C++ file of the product
but the window's widgets and the help viewer, which draw and never talk to
the unit (so not tests, fuzzers, benchmarks or tools either, nor the
telnet layer of a device server's port and the recordings' file format,
which are formats of their own).
Outside comments and strings it reports

  - a hexadecimal literal that equals a message code of the vocabulary,
    wherever it stands;
  - any hexadecimal literal on a line that builds, sends or reads a
    message (one that names TxBuffer, RxBuffer, rx, reply, command, a
    sender, registerDecoder or a reply's .byte()): a code, mask or flag;
  - a message byte indexed by a bare number: TxBuffer[3], rx[1],
    message[2], reply[5], .byte(4) (byte 0, the code, is everybody's).

A line that carries bytes of another protocol (a camera's own commands) or
a value that only happens to equal a code ends with the comment
"// not the unit's protocol"; a file that is all another protocol's says so
on a line of its own.
"""
import os
import re
import subprocess
import sys

SKIP_DIRS = ("tests/", "fuzz/", "bench/", "tools/", "views/", "help/", "build")
VOCABULARY = re.compile(
    r"^protocol/(vocabulary[a-z_]*\.h|protocol_table\.(h|cpp)|protocol_reference\.cpp|"
    r"frame(_description)?\.(h|cpp)|line_recording\.(h|cpp)|"
    r"telnet\.(h|cpp)|rfc2217_port\.(h|cpp)|com_port_session\.(h|cpp))$")
HEX_BYTE = re.compile(r"\b0[xX]([0-9A-Fa-f]{1,2})\b")
MESSAGE_LINE = re.compile(
    r"TxBuffer|RxBuffer|\brx\b|\breply\b|\bcommand\b|sendMessage|sendHeld|sendAndAwaitReply|"
    r"registerDecoder|\.byte\(")
CODE = re.compile(r"Message<\s*0[xX]([0-9A-Fa-f]{2})\b")
# Byte 0 is the code in every message: reading it needs no name.
INDEXED = re.compile(
    r"\b(TxBuffer|RxBuffer|rx|message|reply|bytes)\s*\[\s*[1-9]\d*\s*\]|\.byte\(\s*[1-9]\d*\s*\)")
ALLOWED = "// not the unit's protocol"


def code_only(text):
    """The file with comments and string literals blanked, lines kept."""
    out = []
    i = 0
    n = len(text)
    while i < n:
        c = text[i]
        if text.startswith("//", i):
            end = text.find("\n", i)
            end = n if end < 0 else end
            out.append(" " * (end - i))
            i = end
        elif text.startswith("/*", i):
            end = text.find("*/", i + 2)
            end = n if end < 0 else end + 2
            out.append("".join("\n" if ch == "\n" else " " for ch in text[i:end]))
            i = end
        elif re.match(r'R"([^(\s]*)\(', text[i:i + 20]):
            delimiter = ")" + re.match(r'R"([^(\s]*)\(', text[i:i + 20]).group(1) + '"'
            end = text.find(delimiter, i)
            end = n if end < 0 else end + len(delimiter)
            out.append("".join("\n" if ch == "\n" else " " for ch in text[i:end]))
            i = end
        elif c in "\"'":
            j = i + 1
            while j < n and text[j] != c:
                j += 2 if text[j] == "\\" else 1
            out.append(c + " " * (min(j, n) - i - 1) + c)
            i = j + 1
        else:
            out.append(c)
            i += 1
    return "".join(out)


def sources():
    """The C++ files of the checkout; every file under it outside git."""
    listed = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard", "*.cpp", "*.h"], capture_output=True, text=True)
    if listed.returncode == 0:
        return listed.stdout.split()
    found = []
    for folder, _, names in os.walk("."):
        found += [os.path.relpath(os.path.join(folder, name)) for name in names
                  if name.endswith((".cpp", ".h"))]
    return sorted(found)


def vocabulary_codes(files):
    codes = set()
    for path in files:
        if re.match(r"^protocol/vocabulary[a-z_]*\.h$", path):
            with open(path, encoding="utf-8") as f:
                codes |= {int(code, 16) for code in CODE.findall(f.read())}
    return codes


def offends(line, codes):
    literals = [int(value, 16) for value in HEX_BYTE.findall(line)]
    if any(value in codes for value in literals):
        return True
    if literals and MESSAGE_LINE.search(line):
        return True
    return INDEXED.search(line) is not None


def main():
    os.chdir(os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
    files = sources()
    codes = vocabulary_codes(files)
    if not codes:
        print("no message codes found in protocol/vocabulary*.h", file=sys.stderr)
        return 1
    found = []
    for path in files:
        if path.startswith(SKIP_DIRS) or VOCABULARY.match(path):
            continue
        with open(path, encoding="utf-8") as f:
            text = f.read()
        original = text.split("\n")
        if any(line.strip().startswith(ALLOWED) for line in original):
            continue
        for number, line in enumerate(code_only(text).split("\n"), 1):
            if ALLOWED in original[number - 1]:
                continue
            if offends(line, codes):
                found.append(f"{path}:{number}: {original[number - 1].strip()}")
    for row in found:
        print(row)
    if found:
        print(f"{len(found)} protocol literal(s) outside the vocabulary: build and read the "
              "message by name (protocol/vocabulary*.h)", file=sys.stderr)
        return 1
    print("no protocol literal outside the vocabulary")
    return 0


if __name__ == "__main__":
    sys.exit(main())
