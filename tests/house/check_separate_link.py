#!/usr/bin/env python3
"""Builds the link alone against an optimizer that lies elsewhere, and looks for its banner.

Usage: check_separate_link.py CMAKE ROOT SCRATCH INCLUDE LIBRARY
The two headers that the link needs are copied from INCLUDE, the library LIBRARY with them. The
banner must name the commit that the sources stand at when the link is built, not configured. SCRATCH
is kept, so that only the first run builds everything.
"""
import pathlib
import shutil
import subprocess
import sys

GIT = "#!/bin/sh\ncat '{}'\n"


def main(cmake, root, scratch, include, library):
    scratch, library = pathlib.Path(scratch), pathlib.Path(library).resolve()
    optimizer = scratch / "optimizer"
    optimizer.mkdir(parents=True, exist_ok=True)
    for file in (*(pathlib.Path(include) / f"localsolver.{suffix}" for suffix in ("h", "hpp")), library):
        shutil.copy2(file, optimizer)
    commit, git, build = scratch / "commit", scratch / "git", scratch / "build"
    git.write_text(GIT.format(commit))
    git.chmod(0o755)
    subprocess.run([cmake, "-S", root, "-B", build, "-G", "Ninja", "-DVEXCC_BUILT_IN_HOST=OFF",
                    f"-DVEXCC_LOCALSOLVER_INCLUDE={optimizer}", f"-DGIT_EXECUTABLE={git}",
                    f"-DVEXCC_LOCALSOLVER_LIBRARY={optimizer / library.name}"], check=True)
    for revision in ("aaaaaaa", "bbbbbbb"):
        commit.write_text(f"{revision}|2001-02-03\n")
        subprocess.run([cmake, "--build", build, "--target", "vexcclib64"], check=True)
        link = (build / "bin" / "vexcclib64.so").read_bytes()
        if f" {revision} Released 2001-02-03 ".encode() not in link:
            sys.exit(f"the banner does not name revision {revision}")
    if list(build.glob(f"**/{library.name}")):
        sys.exit("an optimizer was built")


if __name__ == "__main__":
    main(*sys.argv[1:])
