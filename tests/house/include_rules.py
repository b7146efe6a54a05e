"""Reads every #include under src/ and refuses what the house's table of who may include whom does not allow.

Everything from automation to component is written with the standard library alone, so that it can be built,
tested and moved without any of the libraries that the adapters bring.
"""

import pathlib
import re
import tempfile

import _tree

BELOW_LEDGER = ["services", "types", "platform", "automation"]

# Folder: the folders it may include beside its own. "adapters/*" stands for every adapter. The program that
# is alone with its engine shares only the layout of their messages with the adapter that starts it.
MAY_INCLUDE = {
    "automation": [],
    "platform": ["automation"],
    "types": ["automation"],
    "services": ["types", "platform", "automation"],
    "ledger": BELOW_LEDGER,
    "accounting": BELOW_LEDGER,
    "exchange": BELOW_LEDGER,
    "component": ["ledger", "accounting", "exchange"] + BELOW_LEDGER,
    "adapters/*": ["platform", "automation"],
    "sheet": ["adapters/spreadsheet/message"],
    "host": ["component", "platform", "automation", "adapters/*"],
    "apps": ["host", "component", "platform", "automation"],
}

POSIX = r"((sys|netinet|arpa|net)/\w+|unistd|fcntl|poll|signal|spawn|pwd|netdb|termios|dirent|pthread)\.h"

# Folder: the headers in angle brackets that it may include beside the standard library's.
LIBRARIES = {
    "adapters/sqlite": r"sqlite3\.h",
    "adapters/odbc": r"sql\w*\.h|odbcinst\.h",
    "adapters/libxml2": r"(libxml|libxslt|libexslt)/\w+\.h",
    "adapters/spreadsheet": r"nlohmann/\w+\.hpp|" + POSIX,
    "adapters/suite": r"nlohmann/\w+\.hpp",
    "adapters/smtp": POSIX,
    "adapters/posix": POSIX,
    "sheet": r"[\w./+-]+\.(h|hpp)",  # Alone with its engine; the adapter and everybody else lack it.
    "apps": r"CLI/\w+\.hpp|nlohmann/\w+\.hpp|malloc\.h|" + POSIX,
}

STANDARD = set(
    """
    algorithm any array atomic barrier bit bitset charconv chrono codecvt compare complex concepts
    condition_variable coroutine deque exception execution filesystem format forward_list fstream functional
    future initializer_list iomanip ios iosfwd iostream istream iterator latch limits list locale map memory
    memory_resource mutex new numbers numeric optional ostream queue random ranges ratio regex
    scoped_allocator semaphore set shared_mutex source_location span sstream stack stdexcept stop_token
    streambuf string string_view strstream syncstream system_error thread tuple type_traits typeindex typeinfo
    unordered_map unordered_set utility valarray variant vector version
    cassert cctype cerrno cfenv cfloat cinttypes climits clocale cmath csetjmp csignal cstdarg cstddef cstdint
    cstdio cstdlib cstring ctime cuchar cwchar cwctype
    """.split()
)

DIRECTIVE = re.compile(r"^\s*#\s*(include\w*|import)\b\s*(.*)$")
ANGLED = re.compile(r"<([^>]+)>")
QUOTED = re.compile(r'"([^"]+)"')


def folder_of(path):
    """The table's name for the folder of a path relative to src/; None directly under src/ or adapters/."""
    parts = pathlib.PurePosixPath(path).parts
    if parts[0] == "adapters":
        return "/".join(parts[:2]) if len(parts) > 2 else None
    return parts[0] if len(parts) > 1 else None


def row_of(folder):
    return "adapters/*" if folder.startswith("adapters/") else folder


def judge(path, target, angled):
    """What is wrong with the file path including target, both relative to src/; None when nothing is."""
    folder = folder_of(path)
    if folder is None or row_of(folder) not in MAY_INCLUDE:
        return "lies in a folder that the table does not know"
    if angled:
        if target in STANDARD or re.fullmatch(LIBRARIES.get(folder, "$^"), target):
            return None
        return f"<{target}> is neither of the standard library nor of a library of {folder}"
    to = folder_of(target)
    if to is None or row_of(to) not in MAY_INCLUDE:
        return f'"{target}" is not written from src/'
    allowed = MAY_INCLUDE[row_of(folder)]
    if to == folder or row_of(to) in allowed or str(pathlib.PurePosixPath(target).parent) in allowed:
        return None
    return f"{folder} may not include {to}"


def check(root):
    """All findings below root/src, and how many includes were read."""
    findings, read = [], 0
    for path in _tree.cpp_files(root, "src"):
        name = path.relative_to(root / "src").as_posix()
        if folder_of(name) is None:
            findings.append(f"src/{name}: lies in no folder of the table")
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            directive = DIRECTIVE.match(line)
            if not directive:
                continue
            read += 1
            angled, quoted = ANGLED.match(directive[2]), QUOTED.match(directive[2])
            if directive[1] != "include" or not (angled or quoted):
                finding = "an include names its file in quotes or angle brackets"
            else:
                finding = judge(name, (angled or quoted)[1], bool(angled))
            if finding:
                findings.append(f"src/{name}:{number}: {finding}")
    return findings, read


GOOD = {
    "src/automation/a.h": "#include <vector>\n#include \"automation/b.h\"\n",
    "src/ledger/a.cpp": '#include "services/a.h"\n#include "types/a.h"\n',
    "src/component/a.cpp": '#include "exchange/a.h"\n#include "ledger/a.h"\n',
    "src/adapters/sqlite/a.cpp": '#include <sqlite3.h>\n#include "platform/a.h"\n',
    "src/adapters/posix/a.cpp": '#include <sys/stat.h>\n#include "adapters/posix/b.h"\n',
    "src/host/a.cpp": '#include "adapters/posix/a.h"\n#include "component/a.h"\n',
    "src/apps/cli/a.cpp": '#include <CLI/CLI.hpp>\n#include <unistd.h>\n#include "apps/rpc/b.h"\n',
    "src/sheet/a.cpp": '#include <gsf/gsf.h>\n#include "adapters/spreadsheet/message/a.h"\n',
}

# One line each that must be refused, in a file of its own.
BAD = [
    ("automation/a.h", '#include "platform/a.h"'),
    ("automation/a.h", "#include <sqlite3.h>"),
    ("automation/a.h", "#include <unistd.h>"),
    ("automation/a.h", "#include <stdint.h>"),
    ("automation/a.h", '#include "b.h"'),
    ("automation/deeper/a.h", '#  include "../b.h"'),
    ("automation/a.h", "#include SOME_MACRO"),
    ("automation/a.h", "#include_next <vector>"),
    ("platform/a.h", '#include "types/a.h"'),
    ("types/a.h", '#include "platform/a.h"'),
    ("services/a.h", '#include "ledger/a.h"'),
    ("ledger/a.h", '#include "accounting/a.h"'),
    ("accounting/a.h", '#include "ledger/a.h"'),
    ("exchange/a.cpp", '#include "ledger/a.h"'),
    ("exchange/a.cpp", "#include <libxml/tree.h>"),
    ("component/a.cpp", '#include "host/a.h"'),
    ("component/a.cpp", '#include "adapters/sqlite/a.h"'),
    ("adapters/sqlite/a.cpp", '#include "adapters/posix/a.h"'),
    ("adapters/sqlite/a.cpp", '#include "services/a.h"'),
    ("adapters/sqlite/a.cpp", "#include <libxml/tree.h>"),
    ("adapters/sqlite/a.cpp", '#include "sqlite3.h"'),
    ("adapters/a.cpp", "#include <vector>"),
    ("sheet/a.cpp", '#include "platform/a.h"'),
    ("sheet/a.cpp", '#include "adapters/spreadsheet/a.h"'),
    ("adapters/spreadsheet/a.cpp", '#include "sheet/a.h"'),
    ("adapters/spreadsheet/a.cpp", "#include <gsf/gsf.h>"),
    ("host/a.cpp", '#include "services/a.h"'),
    ("host/a.cpp", "#include <nlohmann/json.hpp>"),
    ("host/a.cpp", '#include "apps/cli/a.h"'),
    ("apps/cli/a.cpp", '#include "services/a.h"'),
    ("apps/cli/a.cpp", '#include "adapters/suite/a.h"'),
    ("apps/cli/a.cpp", "#include <sqlite3.h>"),
    ("elsewhere/a.cpp", "#include <vector>"),
    ("a.cpp", "#include <vector>"),
]


def self_check():
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        _tree.write_tree(root, GOOD)
        findings, read = check(root)
        _tree.expect(not findings and read == 17, f"the good tree was refused: {findings}, {read} read")
    for name, line in BAD:
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            _tree.write_tree(root, {f"src/{name}": f"// Fine.\n{line}\n"})
            _tree.expect(check(root)[0], f"src/{name} passed with {line}")


if __name__ == "__main__":
    self_check()
    _tree.finish(*check(_tree.source_dir()))
