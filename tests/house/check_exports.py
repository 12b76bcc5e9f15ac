#!/usr/bin/env python3
"""Compares the functions of a table, of its library and maybe of a header with each other.

Usage: check_exports.py MACRO TABLE LIBRARY [--header HEADER]
TABLE has one "MACRO(function, ...)" a line. Exit status 0 when all name the same functions and the
library exports nothing else.
"""
import pathlib
import re
import sys

from library_tables import exports


def main(macro, table_file, library, _option=None, header=None):
    table = re.findall(rf"^{macro}\((\w+),", pathlib.Path(table_file).read_text(), re.M)
    others = {"library": exports(library)}
    if header:
        code = re.sub(r"/\*.*?\*/", "", pathlib.Path(header).read_text(), flags=re.S)
        others["header"] = re.findall(r"\b(ls_\w+)\(", code)
    faults = [] if table and len(table) == len(set(table)) else ["the table is empty or repeats itself"]
    for name, found in others.items():
        for function in sorted(set(table) ^ set(found)):
            side = "the table" if function in found else f"the {name}"
            faults.append(f"{function}: missing from {side}")
    print("\n".join(faults) or f"{len(table)} functions, the same everywhere")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
