#!/usr/bin/env python3
"""Holds the sources to the house rules that a machine can see.

Usage: check_sources.py ROOT
No file is longer than 600 lines, every source is listed in the CMakeLists.txt beside it or above
it, and only src/host asks which platform it is on.
"""
import pathlib
import re
import sys

LONGEST_FILE = 600
CODE_FOLDERS = ("src", "engine", "norv", "hostapi", "tests", "bench")
PLATFORM = re.compile(r"^\s*#\s*(if|ifdef|elif)\b.*\b(_WIN32|__linux__|__MINGW32__)\b")


def listed_text(path, root):
    text = ""
    for folder in path.parents:
        file = folder / "CMakeLists.txt"
        if file.is_file():
            text += file.read_text()
        if folder == root:
            return text
    return text


def faults_of(root):
    for top in CODE_FOLDERS:
        for path in sorted((root / top).rglob("*")):
            if path.suffix not in {".cpp", ".hpp", ".h", ".py"} or "__pycache__" in path.parts:
                continue
            source = path.relative_to(root).as_posix()
            lines = path.read_text().splitlines()
            if len(lines) > LONGEST_FILE:
                yield f"{source}:{len(lines)}: more than {LONGEST_FILE} lines"
            if path.suffix == ".cpp" and path.name not in listed_text(path, root):
                yield f"{source}:1: not listed in any CMakeLists.txt"
            if source.startswith("src/") and not source.startswith("src/host/"):
                for number, line in enumerate(lines, 1):
                    if PLATFORM.match(line):
                        yield f"{source}:{number}: platform differences belong to src/host"


def main():
    faults = list(faults_of(pathlib.Path(sys.argv[1]).resolve()))
    print("\n".join(faults) or "the sources keep the house rules")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
