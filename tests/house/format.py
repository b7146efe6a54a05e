"""Every C++ source stands as clang-format writes it by the tree's .clang-format; tools/format does so."""

import pathlib
import shutil
import subprocess
import sys
import tempfile

import _tree

FOLDERS = ("src", "tests", "bench")


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


def self_check(root):
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
    _tree.finish([f"{name}: run tools/format" for name in unformatted(sources)], len(sources))
