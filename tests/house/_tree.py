"""What the house tests share: where the tree is, which files are its own, and how findings are told."""

import os
import pathlib
import sys

# Made by builds or by tools, or not text that people wrote.
SKIPPED_FOLDERS = {".git", "build", "__pycache__", ".cache", ".vscode", ".idea"}

# More findings than this are counted and not told.
MAX_TOLD = 100


def source_dir():
    """The top of the tree: TALVEX_SOURCE_DIR, or else two folders above this file's."""
    given = os.environ.get("TALVEX_SOURCE_DIR")
    return pathlib.Path(given) if given else pathlib.Path(__file__).resolve().parents[2]


def files(root, *folders):
    """Every file below the named folders of root (or below root), sorted; a missing folder is empty."""
    found = []
    for top in [root / folder for folder in folders] or [root]:
        for folder, subfolders, names in os.walk(top):
            if "CMakeCache.txt" in names:  # A build folder, whatever its name.
                subfolders.clear()
                continue
            subfolders[:] = [name for name in subfolders if name not in SKIPPED_FOLDERS]
            found += [pathlib.Path(folder) / name for name in names]
    return sorted(found)


def cpp_files(root, *folders):
    return [path for path in files(root, *folders) if path.suffix in (".cpp", ".h")]


def finish(findings, checked):
    """Prints the findings and ends the program: status 0 if there are none and something was checked."""
    for finding in findings[:MAX_TOLD]:
        print(finding)
    print(f"{checked} checked, {len(findings)} findings")
    sys.exit(1 if findings or not checked else 0)


def write_tree(root, tree):
    """Writes {relative path: text} below root, for the self-checks."""
    for name, text in tree.items():
        path = root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(text.encode("utf-8"))


def expect(condition, what):
    """One step of a self-check: a checker that misses what it is for must not pass."""
    if not condition:
        print(f"self-check failed: {what}")
        sys.exit(1)
