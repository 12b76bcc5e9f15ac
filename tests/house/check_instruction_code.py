#!/usr/bin/env python3
"""Does docs/instruction-code.md tell the opcodes and functions of the host's tables, and no others?

Usage: check_instruction_code.py ROOT
"""
import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])
tables = root / "hostapi/include/hostapi"
page = (root / "docs/instruction-code.md").read_text()
FIELDS = {"variable": "variable", "constant": "pool entry", "callOne": "function", "callTwo": "function",
          "callMany": "function", "announce": "count"}
ARGUMENTS = {"any": "anyCount"}

opcodes = {(number, name, FIELDS.get(operand, FIELDS.get(action, "")), action == "refuse")
           for number, name, action, operand in re.findall(
               r"^HOST_OPCODE\((\d+), +(\w+), +(\w+), +(\w+)\)$", (tables / "opcodes.inc").read_text(), re.M)}
functions = set(re.findall(r"^HOST_FUNCTION\((\d+), +(\w+), +(\w+)\)$",
                           (tables / "functions.inc").read_text(), re.M))
toldOpcodes = {(number, name, field, effect == "refused in a model") for number, name, field, effect in
               re.findall(r"^\| (\d+) \| `(nl\w+)` \| ([\w ]*?) ?\| (.+) \|$", page, re.M)}
toldFunctions = {(code, name, ARGUMENTS.get(count, count))
                 for code, name, count in re.findall(r"^\| (\d+) \| `(\w+)` \| (\w+) \|$", page, re.M)}
toldFunctions |= {(code, name, "unused") for code, name in re.findall(r"(\d+)\s`(\w+)`[,.]", page)}

differences = sorted(opcodes ^ toldOpcodes) + sorted(functions ^ toldFunctions)
for each in differences:
    print("only in the table or only on the page:", *each)
sys.exit(1 if differences or len(opcodes) != 31 or len(functions) != 113 else 0)
