#!/usr/bin/env python3
"""Refuses programs and libraries that look for others anywhere but relative to themselves.

Usage: check_run_paths.py FOLDER
An empty part of a run path is the current folder: whoever leaves a library there has it loaded.
"""
import pathlib
import sys

from library_tables import run_paths


def main(folder):
    files = [file for file in sorted(pathlib.Path(folder).rglob("*"))
             if file.is_file() and file.open("rb").read(4) == b"\x7fELF"]
    faults = [f"{file}: run path {path!r}" for file in files for path in run_paths(file)
              if not all(part.startswith("$ORIGIN") for part in path.split(":"))]
    if not any(run_paths(file) for file in files):
        faults.append(f"{folder}: no file with a run path")
    print("\n".join(faults) or f"{len(files)} files, all run paths start beside them")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
