"""Every C++ source stands as clang-format writes it by the tree's .clang-format; tools/format does so. And no
text is left in scraps, as a formatter leaves one that it has broken and then sees edited."""

import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

import _tree

FOLDERS = ("src", "tests", "bench")
COLUMNS = 110
SHORT = 40  # A piece of a text that is as long as this is no scrap.
FULL = 80   # A line that is as long as this was broken for want of room.
ENDS_LINE = re.compile(r'^.*"((?:[^"\\]|\\.)*)"$')
ALONE = re.compile(r'^\s*"((?:[^"\\]|\\.)*)"$')
BEGINS = re.compile(r'^\s*"((?:[^"\\]|\\.)*)"')
# What a writer ends a piece with on purpose: a line, a statement, an element.
ENDS = ("\\n", ";", ">")


def unformatted(paths):
    """Those of the files that clang-format would write differently, by the .clang-format above them."""
    if not paths:
        return []
    command = ["clang-format", "--dry-run", "-Werror", "--style=file", "--fallback-style=none"]
    command += [str(path) for path in paths]
    result = subprocess.run(command, capture_output=True, text=True, check=False)
    _tree.expect(result.returncode == 0 or result.stderr, "clang-format failed without a word")
    # A finding is a line "path:line:column: error: ..." and two that show the place.
    return sorted({line.split(":")[0] for line in result.stderr.splitlines() if ": error: " in line})


def scraps(lines):
    """Numbers of lines that hold a short piece of a text, behind a full one, and room for the next word."""
    found = []
    for number, (before, line, after) in enumerate(zip(lines, lines[1:], lines[2:]), start=2):
        above, piece, below = ENDS_LINE.match(before), ALONE.match(line), BEGINS.match(after)
        if not (above and piece and below) or before.lstrip().startswith("//"):
            continue
        word = below[1].split(" ")[0]
        if (len(piece[1]) < SHORT and len(before) > FULL and len(line) + len(word) + 1 <= COLUMNS
                and not above[1].endswith(ENDS[:2]) and not piece[1].endswith(ENDS)):
            found.append(number)
    return found


def self_check(root):
    long = '    "' + "x" * FULL + ' "'
    _tree.expect(scraps([long, '    "is "', '    "available");']) == [2], "a scrap passed")
    _tree.expect(not scraps([long, '    "is available");']), "the end of a text was taken for a scrap")
    _tree.expect(not scraps([long, '    "DELETE FROM T;"', '    "x");']), "a statement was taken for a scrap")
    with tempfile.TemporaryDirectory() as folder:
        copy = pathlib.Path(folder)
        shutil.copy(root / ".clang-format", copy)
        _tree.write_tree(copy, {"good.cpp": "int Sum(int a, int b) { return a + b; }\n",
                                "bad.cpp": "int Sum( int a,int b )\n{ return a+b; }\n"})
        _tree.expect(not unformatted([copy / "good.cpp"]), "a well-formed file was refused")
        _tree.expect(unformatted([copy / "bad.cpp"]), "an ill-formed file passed")


if __name__ == "__main__":
    if not shutil.which("clang-format"):
        print("clang-format is not installed")
        sys.exit(1)
    top = _tree.source_dir()
    self_check(top)
    sources = _tree.cpp_files(top, *FOLDERS)
    problems = [f"{name}: run tools/format" for name in unformatted(sources)]
    for source in sources:
        problems += [f"{source}:{number}: a scrap of a text; break the text where its lines are full"
                     for number in scraps(pathlib.Path(source).read_text(encoding="utf-8").splitlines())]
    _tree.finish(problems, len(sources))
