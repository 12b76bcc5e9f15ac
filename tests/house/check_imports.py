#!/usr/bin/env python3
"""Refuses DLLs and programs that need anything but Windows itself and each other.

Usage: check_imports.py FILE...
"""
import pathlib
import sys

from library_tables import needed_dlls

WINDOWS = {"kernel32.dll", "msvcrt.dll"}


def main(files):
    allowed = WINDOWS | {pathlib.Path(file).name.lower() for file in files}
    faults = [f"{file} needs {dll}" for file in files for dll in needed_dlls(file)
              if dll.lower() not in allowed]
    print("\n".join(faults) or "nothing but Windows is needed")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
