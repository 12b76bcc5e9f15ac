#!/usr/bin/env python3
"""Compares the functions of the table, the header and the library with each other.

Usage: check_exports.py INCLUDE_FOLDER LIBRARY
Exit status 0 when all three name the same functions and the library exports nothing else.
"""
import pathlib
import re
import subprocess
import sys


def main(folder, library):
    folder = pathlib.Path(folder)
    table = re.findall(r"^LS_FUNCTION\((\w+),", (folder / "localsolver_functions.inc").read_text(), re.M)
    header = re.findall(r"\b(ls_\w+)\(", re.sub(r"/\*.*?\*/", "", (folder / "localsolver.h").read_text(),
                                               flags=re.S))
    lines = subprocess.run(["nm", "-D", "--defined-only", library], check=True, capture_output=True,
                           text=True).stdout.splitlines()
    exported = [line.split()[-1] for line in lines]
    faults = 0
    for name, found in (("header", header), ("library", exported)):
        for function in sorted(set(table) ^ set(found)):
            side = "missing from the table" if function in found else f"missing from the {name}"
            print(f"{function}: {side}")
            faults += 1
    if len(table) != len(set(table)) or not table:
        print("the table is empty or names a function twice")
        faults += 1
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
