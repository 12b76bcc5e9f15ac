#!/usr/bin/env python3
"""Holds the sources to the house rules that a machine can see.

Usage: check_sources.py ROOT
No file is longer than 600 lines, every source is listed in the CMakeLists.txt beside it or above
it, and only the headers that mark exports ask which platform they are on: other differences are
files of their own, chosen by the build.
"""
import pathlib
import re
import sys

LONGEST_FILE = 600
CODE_FOLDERS = ("src", "engine", "norv", "hostapi", "tests", "bench")
PLATFORM = re.compile(r"^\s*#\s*(if|ifdef|ifndef|elif)\b.*\b(_WIN32|__linux__|__unix__|__MINGW32__)\b")
EXPORT_MARKS = ("src/host/exported.hpp", "norv/include/norv/export.hpp", "engine/include/localsolver.h")
PLATFORM_NAME = re.compile(r"_(posix|windows)\.cpp$")


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
            listed = (path.name, PLATFORM_NAME.sub("_${platform}.cpp", path.name))
            if path.suffix == ".cpp" and not any(name in listed_text(path, root) for name in listed):
                yield f"{source}:1: not listed in any CMakeLists.txt"
            if source not in EXPORT_MARKS:
                for number, line in enumerate(lines, 1):
                    if PLATFORM.match(line):
                        yield f"{source}:{number}: platform differences are files of their own"


def main():
    faults = list(faults_of(pathlib.Path(sys.argv[1]).resolve()))
    print("\n".join(faults) or "the sources keep the house rules")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
