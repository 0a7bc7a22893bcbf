# SPDX-License-Identifier: Apache-2.0
"""A copy of the sources with a build folder of its own, in which one mutant at a time is tried."""

import os
import re
import resource
import shutil
import signal
import subprocess
import time
from pathlib import Path

# A mutant that needs more than this is out of control.
_MEMORY_LIMIT = 4 << 30
_OBJECT = re.compile(r"src/CMakeFiles/norix_objects\.dir/.*\.o$")


class BuildError(Exception):
    pass


class Workspace:
    def __init__(self, project, folder, build_jobs):
        self._build_jobs = f"-j{build_jobs}"
        self._project = Path(project)
        self._tree = Path(folder) / "tree"
        self._build = Path(folder) / "build"
        self._seconds = {}  # executable → how long it takes when all is well
        self._kills = {}  # (file, executable) → how many mutants of the file it killed

    def prepare(self):
        """Brings the copy up to date, builds the tests and makes sure that they pass."""
        self._copy_sources()
        self._configure()
        executables = self._library_tests()
        self._must_run(["ninja", "-C", self._build, self._build_jobs, *executables])
        for executable in executables:
            started = time.monotonic()
            if self._run([self._build / executable], timeout=600) != 0:
                raise BuildError(f"{executable} fails, or not all of its cases pass in one process")
            self._seconds[executable] = time.monotonic() - started

    def try_mutant(self, mutant):
        """Returns "killed", "timeout", "survived" or "not compiled"."""
        self._write(mutant.file, mutant.text)
        for executable in self._most_likely_first(mutant.file):
            build = ["ninja", "-C", self._build, self._build_jobs, executable]
            if self._run(build, timeout=600) != 0:
                return "not compiled"
            status = self._run([self._build / executable, "--gtest_fail_fast", "--gtest_brief=1"],
                               timeout=10 + 10 * self._seconds[executable])
            if status != 0:
                self._count_kill(mutant.file, executable)
                return "timeout" if status is None else "killed"
        return "killed" if self._dies_case_by_case() else "survived"

    def restore(self, file):
        self._write(file, (self._project / file).read_text())

    def _dies_case_by_case(self):
        """The last chance of a survivor: each case in a process of its own, as ctest runs them."""
        names = "|".join(Path(executable).name for executable in self._seconds)
        status = self._run(["ctest", "--test-dir", self._build, "--stop-on-failure",
                            self._build_jobs, "-R", rf"^({names})\."], timeout=1800)
        return status != 0

    def _most_likely_first(self, file):
        """First what killed this file's mutants before, then the tests of the same folder."""
        folder = Path(file).parent.name
        return sorted(
            self._seconds,
            key=lambda executable: (-self._kills.get((file, executable), 0),
                                    not Path(executable).name.startswith(folder),
                                    self._seconds[executable]))

    def _count_kill(self, file, executable):
        self._kills[file, executable] = self._kills.get((file, executable), 0) + 1

    def _configure(self):
        """Everything as the preset dev has it, but as quick to build as can be."""
        header = self._build.parent / "precompiled.h"
        _write_if_other(header, self._foreign_includes().encode())
        hook = Path(__file__).with_name("precompile.cmake")
        linker = ["-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=gold"] if shutil.which("ld.gold") else []
        self._must_run(["cmake", "--preset", "dev", "-B", self._build, "-DCMAKE_BUILD_TYPE=",
                        f"-DCMAKE_PROJECT_norix_INCLUDE={hook}",
                        f"-DNORIX_MUTATION_HEADER={header}", *linker])

    def _foreign_includes(self):
        lines = set()
        for source in self._tree.glob("src/**/*"):
            if source.suffix in (".h", ".cpp"):
                lines |= set(re.findall(r"^#include <.*>$", source.read_text(), re.MULTILINE))
        return "\n".join(sorted(lines)) + "\n"

    def _library_tests(self):
        """The tests that are linked from the objects of the library itself.

        Fuzz targets are, too, but they replay files, and test nothing without.
        """
        listing = self._must_run(["ninja", "-C", self._build, "-t", "targets", "all"])
        executables = re.findall(r"^(bin/\S+_test): CXX_EXECUTABLE_LINKER", listing, re.MULTILINE)
        found = []
        for executable in executables:
            inputs = self._must_run(["ninja", "-C", self._build, "-t", "query", executable])
            if any(_OBJECT.match(line.strip()) for line in inputs.splitlines()):
                found.append(executable)
        if not found:
            raise BuildError("no test executable is linked from norix_objects")
        return found

    def _copy_sources(self):
        listing = subprocess.run(
            ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
            cwd=self._project, check=True, capture_output=True, text=True).stdout
        wanted = {name for name in listing.split("\0") if (self._project / name).is_file()}
        for name in wanted:
            _write_if_other(self._tree / name, (self._project / name).read_bytes())
        for copy in [path for path in self._tree.rglob("*") if path.is_file()]:
            if str(copy.relative_to(self._tree)) not in wanted:
                copy.unlink()

    def _write(self, file, text):
        (self._tree / file).write_text(text)

    def _must_run(self, command):
        done = subprocess.run([str(word) for word in command], cwd=self._tree, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        if done.returncode != 0:
            raise BuildError(f"{' '.join(str(word) for word in command)}\n{done.stdout[-4000:]}")
        return done.stdout

    def _run(self, command, timeout):
        """The exit status, or None when the time is over."""
        process = subprocess.Popen([str(word) for word in command], cwd=self._build,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL, start_new_session=True,
                                   preexec_fn=_limit_memory)
        try:
            return process.wait(timeout)
        except subprocess.TimeoutExpired:
            return None
        finally:
            # Also what a test may have left running.
            _kill_group(process)


def _write_if_other(file, content):
    """A file that is the same keeps its time, and what depends on it is not built again."""
    if not file.is_file() or file.read_bytes() != content:
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_bytes(content)


def _limit_memory():
    resource.setrlimit(resource.RLIMIT_AS, (_MEMORY_LIMIT, _MEMORY_LIMIT))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def _kill_group(process):
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass
    process.wait()
