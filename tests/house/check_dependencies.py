#!/usr/bin/env python3
"""Reads every #include line and refuses an arrow that the architecture forbids.

Usage: check_dependencies.py ROOT
Exit status 0 when all arrows are allowed; otherwise one line `file:line: reason` per fault.
"""
import pathlib
import re
import sys
import tempfile

OPTIMIZER = "engine/include"

# The rooms of engine/src from the ground up: each may include those below it.
ROOMS = ["model", "operators", "evaluate", "linear", "nonlinear", "back_ends", "search", "global",
         "methods", "control", "api"]

# Folder of the including file -> folders whose headers it may include.
ALLOWED = {
    "src/host": {"src/host", "hostapi"},
    "src/diag": {"src/diag", OPTIMIZER},
    "src/defvars": {"src/defvars", "src/host"},
    "src/translate": {"src/translate", "src/defvars", "src/host", OPTIMIZER},
    "src/solve": {"src/solve", "src/translate", "src/defvars", "src/diag", "src/host", OPTIMIZER},
    "src/link": {"src/link", "src/solve", "src/translate", "src/defvars", "src/diag", "src/host",
                 OPTIMIZER},
    "engine/include": {OPTIMIZER},
    **{f"engine/src/{room}": {f"engine/src/{other}" for other in ROOMS[:k + 1]} | {OPTIMIZER}
       for k, room in enumerate(ROOMS)},
    "hostapi": {"hostapi"},
    "norv": {"norv", "hostapi"},
}

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"')
SUFFIXES = {".cpp", ".hpp", ".h", ".inc", ".in"}


def folder_of(path):
    """The longest key of ALLOWED that holds `path`, or None (tests, bench)."""
    for key in sorted(ALLOWED, key=len, reverse=True):
        if path.startswith(key + "/"):
            return key
    return None


def find_header(root, source, name):
    """Path of the included header relative to root, or None when it is not the project's."""
    owner = folder_of(source)
    roots = [pathlib.Path(source).parent]
    roots += {"s": ["src"], "e": ["engine/src", "engine/include"], "n": ["norv/include", "norv"],
              "h": []}[owner[0]]
    roots += ["src", "engine/include", "engine/src", "hostapi/include", "norv/include", "norv"]
    for base in roots:
        candidate = root / base / name
        if candidate.is_file():
            return candidate.resolve().relative_to(root).as_posix()
    return None


def faults_of(root):
    root = root.resolve()
    for top in ("src", "engine", "hostapi", "norv"):
        for path in sorted((root / top).rglob("*")):
            if path.suffix not in SUFFIXES:
                continue
            source = path.relative_to(root).as_posix()
            owner = folder_of(source)
            if owner is None:
                yield f"{source}:1: the folder has no row in the table of allowed arrows"
                continue
            for number, line in enumerate(path.read_text().splitlines(), 1):
                match = INCLUDE.match(line)
                header = match and find_header(root, source, match.group(1))
                if header and folder_of(header) not in ALLOWED[owner]:
                    yield f"{source}:{number}: {owner} may not include {header}"


def check_myself():
    """A forbidden arrow must be found, an allowed one must not."""
    with tempfile.TemporaryDirectory() as name:
        root = pathlib.Path(name)
        for file, text in {
            "src/diag/a.cpp": '#include "host/b.hpp"\n#include "localsolver.h"\n',
            "src/host/b.hpp": "",
            "engine/include/localsolver.h": "",
        }.items():
            (root / file).parent.mkdir(parents=True, exist_ok=True)
            (root / file).write_text(text)
        found = list(faults_of(root))
        if found != ["src/diag/a.cpp:1: src/diag may not include src/host/b.hpp"]:
            sys.exit(f"the check does not see what it should: {found}")


def main():
    check_myself()
    faults = list(faults_of(pathlib.Path(sys.argv[1])))
    print("\n".join(faults) or "all arrows are allowed")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
