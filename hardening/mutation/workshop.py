"""A copy of the tree with a build of its own, in which a mutant lives and dies."""

import atexit
import enum
import json
import os
import re
import resource
import shutil
import signal
import subprocess
import tempfile
import time
from pathlib import Path
from typing import NamedTuple

# The programs that hold a folder, in the order in which they are built and run: a later one only for a mutant that
# survives those before it. Of those that are marked, which belong to other folders, the quick tests only.
_PAGE_TESTS = ["calibration_test", "entries_test", "plugin_test", "save_under_faults_test"]
TESTS = {
    "src/common": [
        "common_test", "headboard_test", "hoststate_test", "*calibration_test", "*config_page_test", "plugin_test",
    ],
    "src/headboard": [
        "headboard_test", "profile_rules_test", "headboard_image_test", "*calibration_test", "*config_page_test",
    ],
    "src/hoststate": ["hoststate_test", "*calibration_test"],
    "src/pictures": ["pictures_test", "*calibration_test"],
    "src/wizard": ["calibration_test", "config_page_test", "entries_test", "plugin_test"],
    "src/calibration": _PAGE_TESTS,
    "src/lsc_page": _PAGE_TESTS,
    "src/apga_page": _PAGE_TESTS,
    "src/config_page": ["config_page_test", "*entries_test", "plugin_test", "headboard_config_test"],
    "src/plugin": ["entries_test", "plugin_test", "orders_test"],
}


def programs_for(files):
    """All programs that hold one of the files."""
    return sorted({test.lstrip("*") for file in files for test in TESTS[_folder_of(file)]})


def _folder_of(file):
    return file.rpartition("/")[0]


_LONGEST_BUILD = 1800  # seconds; on a machine with other work
_LONG = 0.1  # seconds; tests that take longer run last, because most mutants die in the others
_FAVOURITES = 1.0  # seconds of tests that have killed mutants of the file before and run first
# A broken loop must not take the machine along, even when this script is stopped meanwhile.
_MEMORY = 4 << 30  # bytes
_LARGEST_FILE = 1 << 28  # bytes


class Fate(enum.Enum):
    KILLED = "killed"
    TIMED_OUT = "killed (time)"
    SURVIVED = "SURVIVED"
    NOT_BUILT = "does not compile"


class Step(NamedTuple):
    """Tests that run together."""

    program: str
    names: list
    is_long: bool = False


_running = set()


def _end(process):
    if process.poll() is None:
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()


@atexit.register
def _end_all():
    """Nothing outlives a script that is interrupted: a build that goes on would meddle with the next one."""
    for process in list(_running):
        _end(process)


def _run(command, seconds, **options):
    """The exit code, or None when the time was over; then whatever the command started is ended too."""
    process = subprocess.Popen(command, stderr=subprocess.DEVNULL, start_new_session=True, **options)
    _running.add(process)
    try:
        return process.wait(seconds)
    except subprocess.TimeoutExpired:
        return None
    finally:
        _end(process)
        _running.discard(process)


def _copy_tree(source, target):
    """Brings the copy up to date; files that are equal keep their time, so that they are not built again. A file that an
    interrupted run left broken becomes newer than what was built of it."""
    listed = subprocess.run(
        ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
        cwd=source, check=True, capture_output=True, text=True,
    )
    names = {name for name in listed.stdout.split("\0") if name and (source / name).is_file()}
    for name in names:
        original, copy = source / name, target / name
        if not copy.exists() or copy.read_bytes() != original.read_bytes():
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(original, copy)
    for copy in [path for path in target.rglob("*") if path.is_file()]:
        if str(copy.relative_to(target)) not in names:
            copy.unlink()


def _build_environment(folder):
    # What was built for one copy, or before a header was broken, is not compiled again.
    return dict(
        os.environ, CCACHE_DIR=str(folder / "ccache"), CCACHE_BASEDIR=str(folder), CCACHE_NOHASHDIR="1",
        CCACHE_SLOPPINESS="pch_defines,time_macros,include_file_ctime,include_file_mtime",
    )


_BEGUN = re.compile(r"\[ RUN      \] (\S+)")
_PASSED = re.compile(r"\[(?:       OK|  SKIPPED) \] (\S+) \(")


class Workshop:
    """The copies share what they learn: `killers`, and `seconds`, how long each test of each program takes."""

    def __init__(self, source, folder, programs, killers, seconds):
        self._tree = folder / "tree"
        self._build = folder / "build"
        self._programs = programs
        self._killers = killers
        self._seconds = seconds
        self._environment = _build_environment(folder.parent)
        # Tests that write files to a disk wait for it.
        memory = Path("/dev/shm")
        self._scratch = tempfile.TemporaryDirectory(prefix="mutant", dir=memory if memory.is_dir() else None)
        self.spent = {"building": 0.0, "testing": 0.0}  # seconds
        _copy_tree(source, self._tree)

    def close(self):
        self._scratch.cleanup()

    def open(self, jobs):
        """Builds the tests and, once for all copies, runs them on the tree as it is; tells what went wrong, or None."""
        linker = next((f"-fuse-ld={name}" for name in ("lld", "gold") if shutil.which(f"ld.{name}")), "")
        options = ["-DCMAKE_BUILD_TYPE=None", f"-DCMAKE_CXX_FLAGS=-O0 {linker}", "-DKESTRA_TESTS=ON"]
        # Without running each program after each link to learn the names of its tests.
        options.append("-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST")
        if shutil.which("ccache"):
            options.append("-DCMAKE_CXX_COMPILER_LAUNCHER=ccache")
        configure = ["cmake", "-G", "Ninja", "-S", str(self._tree), "-B", str(self._build), *options]
        if _run(configure, _LONGEST_BUILD, stdout=subprocess.DEVNULL) != 0:
            return "the copy of the tree could not be configured"
        if not self._compile(self._programs, jobs):
            return "the copy of the tree does not build"
        for program in [] if self._seconds else self._programs:
            report = self._build / f"{program}.json"
            if self._run_tests(program, _LONGEST_BUILD, f"--gtest_output=json:{report}") != 0:
                return f"{program} fails on the unbroken tree"
            self._seconds[program] = {
                f"{suite['name']}.{test['name']}": float(test["time"].rstrip("s"))
                for suite in json.loads(report.read_text())["testsuites"]
                for test in suite["testsuite"]
            }
        self.spent = dict.fromkeys(self.spent, 0.0)
        return None

    def _compile(self, targets, jobs=1):
        begin = time.monotonic()
        command = ["cmake", "--build", str(self._build), f"-j{jobs}", "--target", *targets]
        result = _run(command, _LONGEST_BUILD, stdout=subprocess.DEVNULL, env=self._environment)
        self.spent["building"] += time.monotonic() - begin
        return result == 0

    def _run_tests(self, program, seconds, *options):
        def bound_resources():
            resource.setrlimit(resource.RLIMIT_AS, (_MEMORY, _MEMORY))
            resource.setrlimit(resource.RLIMIT_FSIZE, (_LARGEST_FILE, resource.RLIM_INFINITY))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
            # The bound is the processor's time, so that other work on the machine kills no mutant.
            resource.setrlimit(resource.RLIMIT_CPU, (int(seconds) + 1, int(seconds) + 1))

        begin = time.monotonic()
        environment = dict(os.environ, QT_QPA_PLATFORM="offscreen", TMPDIR=self._scratch.name)
        with open(self._build / "output", "wb") as output:
            result = _run(
                [str(self._build / "bin" / program), *options], 20 + 4 * seconds,
                stdout=output, env=environment, cwd=self._build, preexec_fn=bound_resources,
            )
        for left in Path(self._scratch.name).iterdir():
            shutil.rmtree(left, ignore_errors=True) if left.is_dir() else left.unlink()
        self.spent["testing"] += time.monotonic() - begin
        return result

    def _steps(self, file, every):
        """Known killers, the quick tests of one program after the other, and each long test for itself."""
        programs = [test.lstrip("*") for test in TESTS[_folder_of(file)]]
        times = {
            f"{test.lstrip('*')}:{name}": t
            for test in TESTS[_folder_of(file)]
            for name, t in self._seconds[test.lstrip("*")].items()
            if t <= _LONG or not test.startswith("*")
        }
        known = [test for test in self._killers.of(file) if test in times]
        favourites, left = [], 0.0 if every else _FAVOURITES
        for test in known:
            if times[test] <= left:
                left -= times[test]
                favourites.append(test)
        for program in programs:
            if names := [test.partition(":")[2] for test in favourites if test.startswith(program + ":")]:
                yield Step(program, names)
        for program in programs:
            quick = [name for name, t in self._seconds[program].items() if t <= _LONG]
            if names := [name for name in quick if f"{program}:{name}" not in favourites]:
                yield Step(program, names)
        rank = {test: place for place, test in enumerate(known)}
        long = [test for test, t in times.items() if t > _LONG and test not in favourites]
        for test in sorted(long, key=lambda test: (rank.get(test, len(rank)), times[test])):
            program, _, name = test.partition(":")
            yield Step(program, [name], is_long=True)

    def _failures(self, step, every):
        """What of the step fails, each as program:test; the first one only, or every one. And whether time ran out."""
        names, failures = step.names, []
        while names:
            seconds = 5 + 5 * sum(self._seconds[step.program][name] for name in names)
            options = [f"--gtest_filter={':'.join(names)}"] + ([] if every else ["--gtest_fail_fast"])
            result = self._run_tests(step.program, seconds, *options)
            if result == 0:
                break
            output = (self._build / "output").read_text(errors="replace")
            begun = _BEGUN.findall(output)
            passed = set(_PASSED.findall(output))
            failures += [name for name in begun if name not in passed] or ["(its end)"]
            if not every:
                break
            # A crash leaves tests behind it.
            names = [name for name in names if name not in begun] if begun else []
        late = bool(failures) and result in (None, -signal.SIGXCPU, -signal.SIGKILL)
        return [f"{step.program}:{name}" for name in failures], late

    def fate_of(self, mutant, every):
        """Tries a mutant and puts the copy in order again: its fate, and the tests that killed it. Those are the first
        one, or with `every` all quick ones, or all long ones when no quick one did."""
        path = self._tree / mutant.file
        text = path.read_text()
        built, killers, fate, died_quickly = set(), [], Fate.SURVIVED, False
        try:
            path.write_text(mutant.apply(text))
            for step in self._steps(mutant.file, every):
                if (killers and not every) or (died_quickly and step.is_long):
                    break
                if step.program not in built and not self._compile([step.program]):
                    return Fate.NOT_BUILT, []
                built.add(step.program)
                failures, late = self._failures(step, every)
                if failures:
                    fate = Fate.TIMED_OUT if late else Fate.KILLED
                    died_quickly |= not step.is_long
                    killers += failures
            for test in killers:
                self._killers.note(mutant.file, test)
            return fate, killers
        finally:
            path.write_text(text)
