"""A copy of the tree with a build of its own, in which a mutant lives and dies."""

import atexit
import enum
import itertools
import json
import os
import resource
import shutil
import signal
import subprocess
import time
from pathlib import Path

# The programs that test a folder.
TESTS = {
    "src/common": ["common_test", "headboard_test", "hoststate_test", "pictures_test", "headboard_image_test"],
    "src/headboard": ["profile_rules_test", "headboard_test", "headboard_image_test"],
    "src/hoststate": ["hoststate_test"],
    "src/pictures": ["pictures_test"],
}
_ALL_TESTS = sorted({test for tests in TESTS.values() for test in tests})

_LONGEST_BUILD = 1800  # seconds; on a machine with other work
_LONG = 0.1  # seconds; tests that take longer run last, because most mutants die in the others
# A broken loop must not take the machine along, even when this script is stopped meanwhile.
_MEMORY = 4 << 30  # bytes
_PROCESSOR_TIME = 300  # seconds


class Fate(enum.Enum):
    KILLED = "killed"
    TIMED_OUT = "killed (time)"
    SURVIVED = "SURVIVED"
    NOT_BUILT = "does not compile"


def _bound_resources():
    resource.setrlimit(resource.RLIMIT_AS, (_MEMORY, _MEMORY))
    resource.setrlimit(resource.RLIMIT_CPU, (_PROCESSOR_TIME, _PROCESSOR_TIME))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


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
    process = subprocess.Popen(
        command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True, **options
    )
    _running.add(process)
    try:
        return process.wait(seconds)
    except subprocess.TimeoutExpired:
        return None
    finally:
        _end(process)
        _running.discard(process)


def _copy_tree(source, target):
    """Brings the copy up to date; files that are equal keep their time, so that they are not built again."""
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


def _split(report):
    """The quick and the long tests of a program: filter and seconds of each."""
    times = {
        f"{suite['name']}.{test['name']}": float(test["time"].rstrip("s"))
        for suite in report["testsuites"]
        for test in suite["testsuite"]
    }
    long = {name: seconds for name, seconds in times.items() if seconds > _LONG}
    names = ":".join(long)
    # An empty filter runs nothing.
    return {
        "quick": (f"-{names}", sum(times.values()) - sum(long.values())),
        "long": (names, sum(long.values())),
    }


class Workshop:
    def __init__(self, source, folder):
        self._tree = folder / "tree"
        self._build = folder / "build"
        self._runs = {}
        self._unfinished = folder / "unfinished"
        # A run that was stopped may have left objects of a mutant that look up to date.
        if self._unfinished.exists():
            shutil.rmtree(self._build, ignore_errors=True)
        _copy_tree(source, self._tree)
        self._unfinished.touch()

    def close(self):
        self._unfinished.unlink()

    def open(self):
        """Builds the tests and runs them on the tree as it is; tells what went wrong, or None."""
        options = ["-DCMAKE_BUILD_TYPE=None", "-DCMAKE_CXX_FLAGS=-O0", "-DKESTRA_TESTS=ON"]
        # Without running each program after each link to learn the names of its tests.
        options.append("-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST")
        if shutil.which("ccache"):
            options.append("-DCMAKE_CXX_COMPILER_LAUNCHER=ccache")
        configure = ["cmake", "-G", "Ninja", "-S", str(self._tree), "-B", str(self._build), *options]
        if _run(configure, _LONGEST_BUILD) != 0:
            return "the copy of the tree could not be configured"
        if not self._compile(_ALL_TESTS):
            return "the copy of the tree does not build"
        for test in _ALL_TESTS:
            report = self._build / f"{test}.json"
            if self._test(test, _LONGEST_BUILD, f"--gtest_output=json:{report}") != 0:
                return f"{test} fails on the unbroken tree"
            self._runs[test] = _split(json.loads(report.read_text()))
        return None

    def _compile(self, targets):
        command = ["cmake", "--build", str(self._build), "-j1", "--target", *targets]
        return _run(command, _LONGEST_BUILD) == 0

    def _test(self, test, seconds, *options):
        command = [str(self._build / "bin" / test), "--gtest_fail_fast", "--gtest_brief=1", *options]
        environment = dict(os.environ, QT_QPA_PLATFORM="offscreen")
        return _run(command, seconds, env=environment, cwd=self._build, preexec_fn=_bound_resources)

    def fate_of(self, mutant):
        """Tries a mutant and puts the copy in order again."""
        path = self._tree / mutant.file
        text = path.read_text()
        tests = TESTS[mutant.file.split("/")[0]]
        try:
            path.write_text(mutant.apply(text))
            if not self._compile(tests):
                return Fate.NOT_BUILT
            for part, test in itertools.product(("quick", "long"), tests):
                names, seconds = self._runs[test][part]
                result = self._test(test, 5 + 5 * seconds, f"--gtest_filter={names}")
                if result is None:
                    return Fate.TIMED_OUT
                if result != 0:
                    return Fate.KILLED
            return Fate.SURVIVED
        finally:
            path.write_text(text)
