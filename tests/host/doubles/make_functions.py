#!/usr/bin/env python3
"""Turns the operation tables into the functions that a host library exports.

Usage: make_functions.py TABLES OUTPUT INTERFACE...
For each interface reads TABLES/<interface>_operations.inc and writes one line per operation:
HOST_FUNCTION(name, symbol, result, (typed parameters), (parameter names)).
"""
import pathlib
import re
import sys

OPERATION = re.compile(r"^HOST_OPERATION\((\w+),\s*(plain|text),\s*(.*?)\((.*)\)\)$")


def split_type(parameter):
    """`std::int32_t* rows` -> `std::int32_t*`; a parameter without a name stays as it is."""
    match = re.match(r"^(.*[\w*&:>])\s+(\w+)$", parameter)
    return match.group(1) if match and match.group(1) != "const" else parameter


def function_of(line):
    match = OPERATION.match(line)
    if match is None:
        raise SystemExit(f"not an operation: {line}")
    name, form, result, parameters = match.groups()
    symbol = ("C" if form == "text" else "") + name
    types = [split_type(p.strip()) for p in parameters.split(",")]
    typed = ", ".join(f"{type} a{k}" for k, type in enumerate(types))
    names = ", ".join(f"a{k}" for k in range(len(types)))
    return f"HOST_FUNCTION({name}, {symbol}, {result}, ({typed}), ({names}))"


def main():
    tables, output, *interfaces = sys.argv[1:]
    lines = []
    for interface in interfaces:
        table = pathlib.Path(tables) / f"{interface}_operations.inc"
        lines += [function_of(line) for line in table.read_text().splitlines()
                  if line.startswith("HOST_OPERATION")]
    pathlib.Path(output).write_text("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
