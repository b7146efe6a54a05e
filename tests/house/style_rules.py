"""Keeps the house's style by numbers: sizes, names and blanks of what people write here, line by line.

Code (src, tests, bench, tools, cmake and the scripts at the top) keeps every rule; documents and installation
files only those about unfinished work and about places that exist on one machine.
"""

import pathlib
import re
import tempfile

import _tree

MAX_LINES = 500
MAX_COLUMNS = 110
# Functions go up to about 70 lines; the first and the last line are counted here too.
MAX_FUNCTION = 75

CODE_SUFFIXES = {".cpp", ".h", ".py", ".cmake", ".sh"}
CODE_FOLDERS = ("src", "tests", "bench", "tools", "cmake", ".ci")
TOP_SCRIPTS = ("run", "test")
BINARY_SUFFIXES = {".xls", ".png", ".db", ".ico"}

SNAKE_CASE = re.compile(r"_?[a-z][a-z0-9_]*(\.[a-z]+)?")
CPP_NAME = re.compile(r"[a-z][a-z0-9_]*\.(cpp|h)")
# Spelt in pieces, or this file would be its own first finding.
UNFINISHED = re.compile(r"\b(TO" r"DO|FIX" r"ME|XX" r"X|HA" r"CK)\b|\bnot (yet )?imple" r"mented\b")
SWITCHED_OFF = re.compile(r"GTEST_" r"SKIP|\bDIS" r"ABLED_")
# What stands before the first slash tells such a path from a piece of a longer one or an element's end.
ONE_MACHINE = re.compile(r"(?<![\w.:/<])/(?:home|work|farm|tmp|Users|mnt)\b")


LABEL = re.compile(r"(public|protected|private|default|case .*):")


def is_code(name):
    """Whether name, relative to the top, is code; a data file of the tests is not."""
    path = pathlib.PurePosixPath(name)
    if path.name == "CMakeLists.txt" or name in TOP_SCRIPTS or path.parts[0] == "src":
        return True
    if path.parts[0] not in CODE_FOLDERS:
        return False
    return path.suffix in CODE_SUFFIXES or (path.suffix == "" and path.parts[0] in ("tools", ".ci"))


def bad_name(name):
    """What is wrong with the names on the way to a code file; None when nothing is."""
    path = pathlib.PurePosixPath(name)
    if path.name == "CMakeLists.txt":
        return None
    wanted = CPP_NAME if path.suffix in (".cpp", ".h") or path.parts[0] == "src" else SNAKE_CASE
    folders = [part for part in path.parts[:-1] if part != ".ci"]
    if not wanted.fullmatch(path.name) or not all(SNAKE_CASE.fullmatch(part) for part in folders):
        return "file and folder names are snake_case"
    return None


def long_functions(lines):
    """(first line, length) of the functions of a C++ file that are too long.

    Formatted code closes a function with a "}" alone in the column where its first line starts, and no other
    line in between starts there. A block inside a function is measured as well; its function is longer.
    """
    found = []
    last_at = {}
    for number, line in enumerate(lines, 1):
        text = line.strip()
        if not text or text.startswith(("#", "//")) or LABEL.match(text):
            continue
        indent = len(line) - len(line.lstrip(" "))
        if text == "}" and indent in last_at and number - last_at[indent] + 1 > MAX_FUNCTION:
            found.append((last_at[indent], number - last_at[indent] + 1))
        last_at = {column: at for column, at in last_at.items() if column < indent}
        last_at[indent] = number
    return found


def check_code(name, text):
    findings = []
    wrong_name = bad_name(name)
    if wrong_name:
        findings.append(f"{name}: {wrong_name}")
    lines = text.split("\n")
    if lines[-1] != "":
        findings.append(f"{name}: the last line does not end")
    else:
        lines.pop()
    if len(lines) > MAX_LINES:
        findings.append(f"{name}: {len(lines)} lines, more than {MAX_LINES}")
    for number, line in enumerate(lines, 1):
        if len(line) > MAX_COLUMNS:
            findings.append(f"{name}:{number}: {len(line)} columns, more than {MAX_COLUMNS}")
        if "\t" in line:
            findings.append(f"{name}:{number}: a tab")
        if line != line.rstrip():
            findings.append(f"{name}:{number}: blanks at the end")
    if name.endswith((".cpp", ".h")):
        for number, length in long_functions(lines):
            findings.append(f"{name}:{number}: a function of {length} lines, more than {MAX_FUNCTION}")
    return findings


def check_words(name, text):
    findings = []
    for number, line in enumerate(text.split("\n"), 1):
        unfinished = UNFINISHED.search(line)
        if unfinished:
            findings.append(f"{name}:{number}: {unfinished[0]}: finish it, or say in words why not")
        if SWITCHED_OFF.search(line):
            findings.append(f"{name}:{number}: a test that is switched off")
        machine = ONE_MACHINE.search(line)
        if machine:
            findings.append(f"{name}:{number}: {machine[0]}: a place that not every machine has")
    return findings


def check(root):
    """All findings below root, and how many files were read."""
    findings, read = [], 0
    for path in _tree.files(root):
        name = path.relative_to(root).as_posix()
        if path.suffix in BINARY_SUFFIXES:
            continue
        try:
            text = path.read_bytes().decode("utf-8")
        except UnicodeDecodeError:
            if is_code(name):
                findings.append(f"{name}: not UTF-8")
            continue
        read += 1
        if is_code(name):
            findings += check_code(name, text)
        findings += check_words(name, text)
    return findings, read


def function_of(lines):
    """A function of so many lines, with blocks, labels and a signature that is broken over two lines."""
    body = ["  switch (number) {", "    case 1:", "      return;", "  }"]
    body += ["  number += 1;"] * (lines - len(body) - 3)
    signature = ["void Sample::LongName(int number,", "                      int other) {"]
    return "\n".join(signature + body + ["}\n"])


# Everything here comes close to a limit and keeps it.
GOOD = {
    "src/ledger/budget_t.cpp": function_of(MAX_FUNCTION) + "\n" + function_of(MAX_FUNCTION),
    "src/ledger/table.h": "constexpr int kTable[] = {\n" + "    1,\n" * 200 + "};\n",
    "tests/house/_shared.py": "x = '</work>'\n",
    "tests/data/Sample File.txt": "tabs\tand blanks \n",
    "CMakeLists.txt": "project(x)\n",
    "docs/guide.md": "See https://example.org/home/page and docs/work/x. " + "long " * 40 + "\n",
}

# Each must be refused, alone.
BAD = [
    ("src/ledger/a.cpp", "int a;\n" * (MAX_LINES + 1)),
    ("src/ledger/a.cpp", "// " + "x" * (MAX_COLUMNS - 2) + "\n"),
    ("src/ledger/a.cpp", function_of(MAX_FUNCTION + 1)),
    ("src/ledger/a.h", "class A {\n public:\n  int F() {\n" + "    ++a;\n" * MAX_FUNCTION + "  }\n};\n"),
    ("src/ledger/a.cpp", "int a; \n"),
    ("src/ledger/a.cpp", "int a;\r\n"),
    ("src/ledger/a.cpp", "\tint a;\n"),
    ("src/ledger/a.cpp", "int a;"),
    ("src/ledger/BudgetT.cpp", "int a;\n"),
    ("src/ledger/a.cc", "int a;\n"),
    ("src/Ledger/a.cpp", "int a;\n"),
    ("tests/cli/post-check.py", "a = 1\n"),
    ("tools/Demo", "true\n"),
    ("run", "true \n"),
    ("src/ledger/a.cpp", "// TO" "DO: later\n"),
    ("docs/guide.md", "FIX" "ME\n"),
    ("tests/unit/a_test.cpp", "TEST(A, DIS" "ABLED_B) {}\n"),
    ("tests/unit/a_test.cpp", "TEST(A, B) { GTEST_" "SKIP(); }\n"),
    ("README.md", "This is not yet imple" "mented.\n"),
    ("src/ledger/a.cpp", 'auto path = "/wo' 'rk/main/x";\n'),
    ("tools/demo", "cd /tm" "p\n"),
    ("docs/guide.md", "Look into `/ho" "me/me/x`.\n"),
]


def self_check():
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        _tree.write_tree(root, GOOD)
        findings, read = check(root)
        _tree.expect(not findings and read == len(GOOD), f"the good tree was refused: {findings}")
    for name, text in BAD:
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            _tree.write_tree(root, {name: text})
            _tree.expect(check(root)[0], f"{name} passed with {text[:60]!r}")


if __name__ == "__main__":
    self_check()
    _tree.finish(*check(_tree.source_dir()))
