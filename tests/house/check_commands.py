#!/usr/bin/env python3
"""Runs the commands that README and docs show: each line of a block of code that begins with
"norvsolve" or "./dev solve", in the order of the document, in a folder that has the examples. Lines
with a word in capital letters (FILE, STUB) show a shape and are left out.

    check_commands.py PROGRAM SOURCE
"""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile


def commands(document):
    for block in re.findall(r"^ *```\w*\n(.*?)^ *```", document.read_text(), re.M | re.S):
        for line in block.splitlines():
            line = line.split("#")[0].strip()
            if line.startswith(("norvsolve ", "./dev solve ")) and not re.search(r"\b[A-Z]{4,}\b", line.replace("-AMPL", "")):
                yield line


def main():
    program, source = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    count = 0
    for document in [source / "README.md", source / "examples/README.md", *sorted((source / "docs").glob("*.md"))]:
        with tempfile.TemporaryDirectory() as folder:
            shutil.copytree(source / "examples", pathlib.Path(folder) / "examples")
            for line in commands(document):
                words = line.split()[2 if line.startswith("./dev") else 1:]
                done = subprocess.run([program, *words], cwd=folder, capture_output=True, text=True)
                infeasible = "infeasible" in line
                if done.returncode != (2 if infeasible else 0) or done.stderr:
                    sys.exit(f"{document.name}: {line}: {done.returncode}\n{done.stdout}{done.stderr}")
                count += 1
    print(count, "commands")
    sys.exit(0 if count > 5 else "too few commands were found")


main()
