"""Files survive the way into the program byte for byte: embeds awkward ones and compares what comes out."""

import os
import pathlib
import subprocess
import tempfile

import _tree

FILES = {
    "config/all bytes.bin": bytes(range(256)) * 3 + b"\x00",
    "config/deep/er/text.xsl": "<a>\"\\ ?? \u20ac; [x] ${y} @z@</a>\r\nabc123".encode(),
    "config/empty.txt": b"",
    "config/one_row.txt": b"f" * 24,
    "schema/large.bin": os.urandom(300_000),
}

# Writes every resource as path, size and content, so that a wrong size shows as well.
PROGRAM = """#include <iostream>
#include "host/resources.h"
int main() {
  for (const talvex::host::Resource& file : talvex::host::InstallationFiles()) {
    std::cout << file.path << '\\n' << file.content.size() << '\\n' << file.content;
  }
}
"""


def embedded(root, folder, names):
    """What a program prints that holds the files names of folder."""
    (folder / "list.txt").write_text("".join(f"{name}\n" for name in names), encoding="utf-8")
    (folder / "main.cpp").write_text(PROGRAM, encoding="utf-8")
    subprocess.run(["cmake", f"-DROOT={folder}", f"-DLIST={folder}/list.txt", f"-DOUTPUT={folder}/files.cpp",
                    "-P", root / "cmake/embed_files.cmake"], check=True)
    subprocess.run(["g++", "-std=c++20", "-Wall", "-Wextra", "-Wpedantic", "-Werror", "-I", root / "src",
                    folder / "files.cpp", folder / "main.cpp", "-o", folder / "program"], check=True)
    return subprocess.run([folder / "program"], check=True, capture_output=True).stdout


def check(root):
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        for path, content in FILES.items():
            (folder / path).parent.mkdir(parents=True, exist_ok=True)
            (folder / path).write_bytes(content)
        wanted = b"".join(b"%s\n%d\n%s" % (path.encode(), len(content), content)
                          for path, content in FILES.items())
        findings = []
        if embedded(root, folder, FILES) != wanted:
            findings.append("the program does not hold what the files hold")
        if embedded(root, folder, []) != b"":
            findings.append("the program holds files though it was given none")
        (folder / "config/bad\"name").write_bytes(b"")
        (folder / "list.txt").write_text("config/bad\"name\n", encoding="utf-8")
        refused = subprocess.run(["cmake", f"-DROOT={folder}", f"-DLIST={folder}/list.txt",
                                  f"-DOUTPUT={folder}/files.cpp", "-P", root / "cmake/embed_files.cmake"],
                                 check=False, capture_output=True)
        if refused.returncode == 0:
            findings.append("a file name that breaks the generated source was accepted")
        return findings, len(FILES)


if __name__ == "__main__":
    _tree.finish(*check(_tree.source_dir()))
