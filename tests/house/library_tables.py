"""What a shared library exports and needs, ELF or DLL."""
import re
import subprocess


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def exports(library):
    if not library.endswith(".dll"):
        return [line.split()[-1] for line in output_of("nm", "-D", "--defined-only", library).splitlines()]
    tables = output_of("x86_64-w64-mingw32-objdump", "-p", library)
    names = tables[tables.index("[Ordinal/Name Pointer] Table"):]
    return re.findall(r"^\t\[ *\d+\] (\S+)$", names, re.M)


def needed_dlls(file):
    return re.findall(r"DLL Name: (\S+)", output_of("x86_64-w64-mingw32-objdump", "-p", file))


def run_paths(file):
    """Those of an ELF file, as written: parts with colons between."""
    return re.findall(r"\((?:RUNPATH|RPATH)\) .*\[(.*)\]", output_of("readelf", "-d", file))
