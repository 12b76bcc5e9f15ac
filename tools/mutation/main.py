#!/usr/bin/env python3
"""Measures tests by the one-line mutations of the code that they kill.

FOLDER is src, engine/src, norv or hostapi, or a folder or file below them. Mutants of src meet all
programs of tests/ but those of engine, norv, norvsolve and house; of engine those of tests/engine; of
norv those of tests/norv and tests/norvsolve; of hostapi those of the link and the host. The scripts
among the tests (sweeps, checks of the sources) are not run.

Draws spread evenly over the lines that can be mutated, and the same seed draws the same mutants from
the same code. A mutant that does not compile, or that compiles to the same object files, is replaced
by the next draw. One that hangs is killed: each program has four times the processor time that it
takes on the unchanged code, and five seconds. Entries of the list of equivalents are not drawn; those
whose line is gone are reported.

Mutants are built in copies of the tree below build/mutate/, without debug information and through the
compiler cache, one in each copy. Each meets the programs that killed most in least processor time
first, up to the first failure, and only the programs that hold its object files are linked. That is
three seconds of one processor for most, twenty for one that survives.

Exit status 0 when the measurement is complete, whatever it shows."""
import argparse
import os
import pathlib
import sys
import threading
import time

import equivalents
from measurement import Measurement, draws
from operators import mutations_of
from scratch import Program, Scratch

ROOT = pathlib.Path(__file__).resolve().parents[2]
SCRATCH = ROOT / "build" / "mutate"
SURVIVORS = SCRATCH / "survivors.txt"
EQUIVALENTS = ROOT / "tools" / "mutation_equivalents.txt"
SUFFIXES = {".cpp", ".hpp", ".h", ".inc"}


def sources_of(folder):
    """Files whose code is compiled on this platform, relative to the root."""
    path = ROOT / folder
    files = [path] if path.is_file() else sorted(path.rglob("*"))
    return [file.relative_to(ROOT).as_posix() for file in files
            if file.suffix in SUFFIXES and not file.stem.endswith("_windows")]


def tests_belong(tests, folder):
    """Do the tests of tests/TESTS tell about the code of `folder`?"""
    owner = {"engine": "engine", "norv": "norv", "norvsolve": "norv", "house": ""}.get(tests, "src")
    top = folder.split("/")[0]
    return owner == top or (top == "hostapi" and owner in {"src", "norv"})


def prepare(folder, nb_jobs):
    """The scratch copies, built, and the folder's test programs, which pass."""
    nb_compilers = max(1, (os.cpu_count() or 1) // nb_jobs)
    copies = [Scratch(ROOT, SCRATCH / str(k), nb_compilers) for k in range(nb_jobs)]
    for copy in copies:
        copy.prepare()
    lines = (copies[0].tree / "test_programs.txt").read_text().splitlines()
    programs = [Program(tests, target, pathlib.Path(file).relative_to(copies[0].tree))
                for tests, target, file in (line.split("\t") for line in lines)
                if tests_belong(tests, folder)]
    if not programs:
        raise SystemExit(f"mutate: no tests belong to {folder}")
    for k, copy in enumerate(copies, 1):
        print(f"building copy {k} of {nb_jobs}", flush=True)
        copy.take_stock(programs)
    for program in programs:
        copies[0].measure(program)
        print(f"{program.target}: {program.seconds:.1f} s", flush=True)
    return copies, programs


def report(measurement, seed, seconds):
    survivors = measurement.survivors()
    print("\nsurvivors:")
    for mutation in survivors:
        print(f"{mutation.path}:{mutation.line}: {mutation.operator}")
        print("\n".join("    " + line for line in mutation.diff()))
    SURVIVORS.write_text(equivalents.text_of(survivors))
    nb_judged = len(measurement.verdicts)
    nb_killed = nb_judged - len(survivors)
    for kind, count in measurement.nb_replaced.items():
        print(f"replaced by another draw, {kind}: {count}")
    print(f"{seconds / max(1, nb_judged):.1f} seconds per mutant")
    rate = 100 * nb_killed / max(1, nb_judged)
    print(f"killed {nb_killed} of {nb_judged} ({rate:.1f} %), seed {seed}")


def arguments():
    parser = argparse.ArgumentParser(
        prog="./dev mutate", description="Runs the tests of a folder on one-line mutations of its "
        "code and prints those that survive.")
    parser.add_argument("folder", nargs="?", default="src", metavar="FOLDER",
                        help="src, engine/src, norv, hostapi, or what is in them (default: src)")
    parser.add_argument("--sample", type=int, default=100, metavar="N",
                        help="how many mutants (default: 100)")
    parser.add_argument("--seed", type=int, default=1, metavar="S", help="of the draw (default: 1)")
    parser.add_argument("--jobs", type=int, default=2, metavar="J", help="at a time (default: 2)")
    parser.add_argument("--again", action="store_true", help="only the survivors of the last run")
    parser.add_argument("--list", action="store_true", help="print the mutations, build nothing")
    return parser.parse_args()


def main():
    wanted = arguments()
    folder = wanted.folder.strip("/")
    mutations = [mutation for path in sources_of(folder)
                 for mutation in mutations_of(path, (ROOT / path).read_text())]
    if not mutations:
        sys.exit(f"mutate: nothing to mutate in {folder}")
    known = [entry for entry in equivalents.read(EQUIVALENTS)
             if (entry.path + "/").startswith(folder + "/")]
    mutations, outlived = equivalents.split(mutations, known)
    for entry in outlived:
        print(f"{EQUIVALENTS.name}: no mutation of {entry.path} is this any more: "
              f"{' '.join(entry.old_lines)}")
    if wanted.again:
        again = {entry.key for entry in equivalents.read(SURVIVORS)}
        mutations = [mutation for mutation in mutations if mutation.key in again]
    if wanted.list:
        for mutation in mutations:
            print(f"{mutation.path}:{mutation.line}: {mutation.operator}")
            print("\n".join("    " + line for line in mutation.diff()))
        return
    copies, programs = prepare(folder, wanted.jobs)
    nb_wanted = min(len(mutations), wanted.sample)
    measurement = Measurement(draws(mutations, wanted.seed), nb_wanted, programs)
    start = time.monotonic()
    threads = [threading.Thread(target=measurement.work, args=(copy,), daemon=True)
               for copy in copies]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    if measurement.has_failed:
        sys.exit("mutate: the measurement is not complete")
    report(measurement, wanted.seed, time.monotonic() - start)


if __name__ == "__main__":
    main()
