"""Tries mutants of the product against its tests and prints what the tests noticed."""

import argparse
import json
import math
import os
import queue
import re
import resource
import signal
import subprocess
import sys
import threading
import time
from pathlib import Path

from killers import Killers
from report import print_report
from source_mutants import mutants_of
from workshop import TESTS, Fate, Workshop, programs_for

_SOURCE = Path(__file__).resolve().parents[2]


def read_arguments():
    parser = argparse.ArgumentParser(prog="hardening/mutate", description=__doc__)
    parser.add_argument("--mutants", type=int, default=600, help="how many to try; 600")
    parser.add_argument("--seed", type=int, default=1, help="decides which ones; 1")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="how many at a time; one a core")
    parser.add_argument("--only", default="", metavar="PATH", help="only files whose path begins with this")
    parser.add_argument("--since", metavar="REV", help="only lines that changed since this revision")
    parser.add_argument(
        "--every", action="store_true", help="run every quick test on each mutant, and tell what a test kills alone"
    )
    return parser.parse_args()


def read_sources(only):
    folders = {str(path.parent.relative_to(_SOURCE)) for path in (_SOURCE / "src").rglob("*.cpp")}
    if untold := sorted(folders - set(TESTS)):
        sys.exit(f"nobody tells in workshop.py which tests hold {', '.join(untold)}")
    names = sorted(
        str(path.relative_to(_SOURCE))
        for folder in TESTS
        for pattern in ("*.cpp", "*.h")
        for path in (_SOURCE / folder).glob(pattern)
    )
    return {name: (_SOURCE / name).read_text() for name in names if name.startswith(only)}


def changed_lines(revision):
    """The lines of each file that the revision does not have."""
    command = ["git", "diff", "--unified=0", "--no-prefix", "--no-color", "--no-ext-diff", revision, "--", "src"]
    diff = subprocess.run(command, cwd=_SOURCE, capture_output=True, text=True)
    if diff.returncode != 0:
        sys.exit(diff.stderr.strip())
    # A new file that git does not know yet is changed from its first line on.
    command = ["git", "ls-files", "--others", "--exclude-standard", "--", "src"]
    added = subprocess.run(command, cwd=_SOURCE, capture_output=True, text=True, check=True).stdout.splitlines()
    changed = {name: set(range(1, (_SOURCE / name).read_bytes().count(b"\n") + 2)) for name in added}
    file = None
    for line in diff.stdout.splitlines():
        if line.startswith("+++ "):
            file = line[4:]
        elif hunk := re.match(r"@@ \S+ \+(\d+)(?:,(\d+))? @@", line):
            first, count = int(hunk[1]), int(hunk[2] or 1)
            changed.setdefault(file, set()).update(range(first, first + count))
    return changed


def _weight(file):
    # A header's mutant costs ten times as much as another, for all that is built again.
    return 0.25 if file.endswith(".h") else 1


def shares(candidates, total):
    """How many mutants each file gets: by the root of what it offers, so that small files get theirs too."""
    weights = {file: math.sqrt(len(mutants)) * _weight(file) for file, mutants in candidates.items() if mutants}
    whole = sum(weights.values())
    exact = {file: total * weight / whole for file, weight in weights.items()}
    result = {file: min(max(1, int(share)), len(candidates[file])) for file, share in exact.items()}
    by_rest = sorted(exact, key=lambda file: (int(exact[file]) - exact[file], file))
    while sum(result.values()) < total:
        open_files = [file for file in by_rest if result[file] < len(candidates[file])]
        if not open_files:
            break
        for file in open_files[: total - sum(result.values())]:
            result[file] += 1
    return result


class Trial:
    """Tries the mutants of each file in their order until its share has compiled, several files at a time."""

    def __init__(self, workshops, candidates, wanted, every, record):
        self._workshops = workshops
        self._candidates = {file: list(reversed(mutants)) for file, mutants in candidates.items()}
        self._wanted = wanted
        self._every = every
        self._record = record
        self._lock = threading.Lock()
        self.results = []  # of triples: mutant, fate, tests that killed it

    def run(self):
        quotas = shares(self._candidates, self._wanted)
        while quotas and len(self.results) < self._wanted:
            self._run_round(quotas)
            # What did not compile is made up for by files that offer more.
            left = {file: mutants for file, mutants in self._candidates.items() if mutants}
            missing = self._wanted - len(self.results)
            quotas = dict.fromkeys(sorted(left, key=lambda file: -len(left[file]))[:missing], 1)

    def _run_round(self, quotas):
        files = queue.SimpleQueue()
        for file in sorted(quotas, key=lambda file: (-quotas[file], file)):
            files.put(file)
        threads = [
            threading.Thread(target=self._work, args=(shop, files, quotas), daemon=True) for shop in self._workshops
        ]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()

    def _work(self, workshop, files, quotas):
        while True:
            try:
                file = files.get_nowait()
            except queue.Empty:
                return
            for _ in range(quotas[file]):
                self._try_next(workshop, file)

    def _try_next(self, workshop, file):
        while self._candidates[file]:
            mutant = self._candidates[file].pop()
            # Where all is built again, the first test that kills has to do.
            fate, killers = workshop.fate_of(mutant, self._every and not file.endswith(".h"))
            if fate is not Fate.NOT_BUILT:
                self._note(mutant, fate, killers)
                return

    def _note(self, mutant, fate, killers):
        with self._lock:
            self.results.append((mutant, fate, killers))
            place = f"{mutant.file}:{mutant.line}"
            self._record.write(json.dumps([place, mutant.replacement, fate.value, *killers]) + "\n")
            self._record.flush()
            by = f" by {killers[0]}" if killers else ""
            print(f"[{len(self.results):3}/{self._wanted}] {fate.value:14} {place}: {mutant.kind}{by}", flush=True)


def open_workshops(folder, count, programs, killers):
    workshops, seconds = [], {}
    for number in range(count):
        print(f"building copy {number + 1} of {count}", flush=True)
        workshop = Workshop(_SOURCE, folder / str(number), programs, killers, seconds)
        if fault := workshop.open(count):
            sys.exit(fault)
        workshops.append(workshop)
    return workshops


def _processor_time():
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


def print_time(workshops, tried, wall, processor):
    parts = ", ".join(
        f"{sum(shop.spent[part] for shop in workshops) / tried:.1f} s {part}" for part in workshops[0].spent
    )
    print(f"\na mutant took {parts}, {processor / tried:.1f} s of a processor; all of them {wall / 60:.0f} minutes")


def main():
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("ended"))
    arguments = read_arguments()
    sources = read_sources(arguments.only)
    candidates = {file: mutants_of(file, text, arguments.seed) for file, text in sources.items()}
    wanted = arguments.mutants
    if arguments.since:
        changed = changed_lines(arguments.since)
        for file, mutants in candidates.items():
            candidates[file] = [mutant for mutant in mutants if mutant.line in changed.get(file, ())]
        wanted = min(wanted, sum(map(len, candidates.values())))
        if not wanted:
            print(f"nothing to try: no mutant's line has changed since {arguments.since}")
            return
    folder = _SOURCE / "build" / "mutation"
    folder.mkdir(parents=True, exist_ok=True)
    killers = Killers(folder / "killers.json")
    programs = programs_for(file for file, mutants in candidates.items() if mutants)
    workshops = open_workshops(folder, max(arguments.jobs, 1), programs, killers)
    begin, used = time.monotonic(), _processor_time()
    with open(folder / "results.jsonl", "w") as record:
        trial = Trial(workshops, candidates, wanted, arguments.every, record)
        trial.run()
    for workshop in workshops:
        workshop.close()
    page = _SOURCE / "docs" / "mutation.md"
    faults = print_report(trial.results, sources, page, arguments.every, arguments.since)
    tried = len(trial.results)
    if tried:
        print_time(workshops, tried, time.monotonic() - begin, _processor_time() - used)
    if tried < wanted and not arguments.since:
        faults.append(f"too few: {wanted} were asked for")
    if faults:
        sys.exit("\n".join(faults))


if __name__ == "__main__":
    main()
