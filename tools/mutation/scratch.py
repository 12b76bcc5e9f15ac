"""A copy of the tree with a build of its own, in which mutants are built and judged."""
import dataclasses
import hashlib
import json
import os
import pathlib
import re
import resource
import shutil
import signal
import subprocess
import time

# As the debug preset builds, but without debug information: that takes half of the linker's time.
FLAGS = ["-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=", "-DVEXCC_BENCH=OFF",
         "-DCMAKE_CXX_FLAGS=-w", "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON"]
LARGEST_PROCESS = 8 << 30  # bytes of address space
LARGEST_FILE = 1 << 30


@dataclasses.dataclass
class Program:
    """A test program, and what is known about it."""
    folder: str  # of tests/
    target: str
    file: pathlib.Path  # relative to the build folder
    inputs: frozenset = frozenset()  # object files, relative to the build folder
    seconds: float = 0.0
    cpu_seconds: float = 0.0
    nb_kills: int = 0


@dataclasses.dataclass
class Verdict:
    """What became of a mutant: killed, survived, equivalent, or does not compile."""
    kind: str
    by: str = ""
    seconds: float = 0.0


class Scratch:
    def __init__(self, root, folder, nb_compilers):
        self.root = root
        self.source = folder / "source"
        self.tree = folder / "tree"
        self.temporary = folder / "tmp"
        self.nb_compilers = nb_compilers
        # Equal relative paths: the copies then share what the cache holds.
        self.environment = dict(os.environ, CCACHE_BASEDIR=str(folder), CCACHE_NOHASHDIR="1",
                                TMPDIR=str(self.temporary), TEST_TMPDIR=str(self.temporary),
                                GTEST_COLOR="no")

    def prepare(self):
        """Brings the copy up to date with the working tree and configures it."""
        self.temporary.mkdir(parents=True, exist_ok=True)
        listed = subprocess.run(["git", "ls-files", "-z", "-co", "--exclude-standard"],
                                cwd=self.root, capture_output=True, check=True, text=True).stdout
        files = {name for name in listed.split("\0") if name and (self.root / name).is_file()}
        for name in sorted(files):
            original, copy = self.root / name, self.source / name
            if not copy.is_file() or copy.read_bytes() != original.read_bytes():
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(original, copy)
        for copy in [path for path in self.source.rglob("*") if path.is_file()]:
            if copy.relative_to(self.source).as_posix() not in files:
                copy.unlink()
        linker = "-fuse-ld=gold" if shutil.which("ld.gold") else ""
        self._expect(["cmake", "-S", self.source, "-B", self.tree, *FLAGS,
                      f"-DVEXCC_INSTANCES={self.root.parent / 'shared/instances'}",
                      f"-DCMAKE_EXE_LINKER_FLAGS={linker}",
                      f"-DCMAKE_SHARED_LINKER_FLAGS={linker}"])

    def _expect(self, command):
        done = self._call(command)
        if done.returncode != 0:
            raise SystemExit(f"mutate: this failed: {command}\n{done.stdout[-4000:]}")

    def _call(self, command):
        return subprocess.run(command, cwd=self.root, env=self.environment, text=True,
                              errors="replace", stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT)

    def build(self, targets):
        return self._call(["ninja", "-C", self.tree, "-j", str(self.nb_compilers), *targets])

    def take_stock(self, programs):
        """Builds everything unchanged; notes which objects the programs consist of."""
        self._expect(["ninja", "-C", self.tree, *(program.target for program in programs)])
        self.objects = {}  # object file -> source, of the product's code that the programs need
        commands = json.loads((self.tree / "compile_commands.json").read_text())
        for command in commands:
            source = pathlib.Path(command["file"])
            if self.source / "tests" not in source.parents and self.source in source.parents:
                output = re.search(r" -o (\S+)", command["command"])[1]
                self.objects[output] = source.relative_to(self.source).as_posix()
        for program in programs:
            inputs = self._call(["ninja", "-C", self.tree, "-t", "inputs", program.target]).stdout
            program.inputs = frozenset(inputs.split()) & frozenset(self.objects)
        needed = frozenset().union(*(program.inputs for program in programs))
        self.objects = {file: source for file, source in self.objects.items() if file in needed}
        self.digests = {file: self._digest(file) for file in self.objects}

    def _digest(self, file):
        return hashlib.sha256((self.tree / file).read_bytes()).hexdigest()

    def measure(self, program):
        """Runs a program on the unchanged code; it has to pass."""
        before, start = resource.getrusage(resource.RUSAGE_CHILDREN), time.monotonic()
        failure = self.run(program, cpu_limit=600, time_limit=1200)
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        program.seconds = time.monotonic() - start
        program.cpu_seconds = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
        if failure:
            raise SystemExit(f"mutate: {program.target} fails on the code as it is: {failure}")

    def run(self, program, cpu_limit=None, time_limit=None):
        """Name of the first test that fails, or the way the program ended; empty: all pass."""
        # By processor time, so that a busy machine kills nobody; by the clock for what waits.
        cpu_limit = cpu_limit or int(5 + 4 * program.cpu_seconds)
        time_limit = time_limit or 60 + 20 * program.seconds
        log = self.temporary / "test.log"
        with open(log, "w") as output:
            test = subprocess.Popen(
                ["prlimit", f"--cpu={cpu_limit}", f"--as={LARGEST_PROCESS}",
                 f"--fsize={LARGEST_FILE}", "--core=0", self.tree / program.file,
                 "--gtest_fail_fast", "--gtest_brief=1"],
                cwd=self.tree / "tests", env=self.environment, stdin=subprocess.DEVNULL,
                stdout=output, stderr=subprocess.STDOUT, start_new_session=True)
            try:
                code = test.wait(time_limit)
            except subprocess.TimeoutExpired:
                code = "time is up"
            finally:
                try:
                    os.killpg(test.pid, signal.SIGKILL)  # children that outlive it
                except ProcessLookupError:
                    pass
                test.wait()
        if code == 0:
            return ""
        failed = re.search(r"\[  FAILED  \] ([\w./]+)", log.read_text(errors="replace"))
        return failed[1] if failed else f"status {code}"

    def judge(self, mutation, programs):
        """Builds one mutant and runs the programs until one fails. Leaves the copy as it was."""
        start = time.monotonic()
        path = self.source / mutation.path
        original = path.read_text()
        path.write_text(original[:mutation.start] + mutation.new + original[mutation.end:])
        try:
            verdict = self._judge(mutation.path, programs)
        finally:
            path.write_text(original)
        verdict.seconds = time.monotonic() - start
        return verdict

    def _judge(self, path, programs):
        own = [file for file, source in self.objects.items() if source == path]
        # A header has no object of its own; the source beside it is the first to refuse it.
        beside = own or [file for file, source in self.objects.items()
                         if source.rpartition(".")[0] == path.rpartition(".")[0]]
        if beside and self.build(beside).returncode != 0:
            return Verdict("does not compile")
        if own and self._is_equivalent(own):
            return Verdict("equivalent")
        for program in programs:
            if own and not program.inputs & set(own):
                continue
            if self.build([program.target]).returncode != 0:
                # Product code that compiles: then an assertion in the test's code refused it.
                if self.build(sorted(self.objects)).returncode == 0:
                    return Verdict("killed", f"compiling {program.target}")
                return Verdict("does not compile")
            failure = self.run(program)
            if failure:
                program.nb_kills += 1
                return Verdict("killed", f"{program.target} {failure}")
        if own:
            return Verdict("survived")
        if self.build(sorted(self.objects)).returncode != 0:
            return Verdict("does not compile")
        return Verdict("equivalent" if self._is_equivalent(self.objects) else "survived")

    def _is_equivalent(self, files):
        return all(self._digest(file) == self.digests[file] for file in files)
