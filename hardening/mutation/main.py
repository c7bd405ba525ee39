"""Tries mutants of four folders against their tests and prints what the tests noticed."""

import argparse
import math
import os
import queue
import sys
import threading
from pathlib import Path

from source_mutants import mutants_of
from workshop import TESTS, Fate, Workshop

_SOURCE = Path(__file__).resolve().parents[2]
_LEAST_KILLED = 0.85


def read_arguments():
    parser = argparse.ArgumentParser(prog="hardening/mutate", description=__doc__)
    parser.add_argument("--mutants", type=int, default=300, help="how many to try; 300")
    parser.add_argument("--seed", type=int, default=1, help="decides which ones; 1")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="how many at a time; one a core")
    parser.add_argument("--only", default="", metavar="PATH", help="only files whose path begins with this")
    return parser.parse_args()


def read_sources(only):
    names = sorted(
        str(path.relative_to(_SOURCE))
        for folder in TESTS
        for pattern in ("*.cpp", "*.h")
        for path in (_SOURCE / folder).glob(pattern)
    )
    return {name: (_SOURCE / name).read_text() for name in names if name.startswith(only)}


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

    def __init__(self, workshops, candidates, wanted):
        self._workshops = workshops
        self._candidates = {file: list(reversed(mutants)) for file, mutants in candidates.items()}
        self._wanted = wanted
        self._lock = threading.Lock()
        self.results = []  # of pairs: mutant, fate

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
            fate = workshop.fate_of(mutant)
            if fate is not Fate.NOT_BUILT:
                self._note(mutant, fate)
                return

    def _note(self, mutant, fate):
        with self._lock:
            self.results.append((mutant, fate))
            place = f"{mutant.file}:{mutant.line}"
            print(f"[{len(self.results):3}/{self._wanted}] {fate.value:14} {place}: {mutant.kind}", flush=True)


def print_report(trial, sources):
    print(f"\n{'file':40} {'tried':>6} {'killed':>6} {'survived':>8}")
    survivors = []
    for file in sources:
        fates = [(mutant, fate) for mutant, fate in trial.results if mutant.file == file]
        alive = [mutant for mutant, fate in fates if fate is Fate.SURVIVED]
        survivors += alive
        if fates:
            print(f"{file:40} {len(fates):6} {len(fates) - len(alive):6} {len(alive):8}")
    if survivors:
        print("\nsurvivors:")
    for mutant in sorted(survivors, key=lambda mutant: (mutant.file, mutant.begin)):
        print("  " + mutant.describe(sources[mutant.file]))
    return len(survivors)


def open_workshops(count):
    workshops = []
    for number in range(count):
        print(f"building copy {number + 1} of {count}", flush=True)
        workshop = Workshop(_SOURCE, _SOURCE / "build" / "mutation" / str(number))
        if fault := workshop.open():
            sys.exit(fault)
        workshops.append(workshop)
    return workshops


def main():
    arguments = read_arguments()
    sources = read_sources(arguments.only)
    candidates = {file: mutants_of(file, text, arguments.seed) for file, text in sources.items()}
    workshops = open_workshops(max(arguments.jobs, 1))
    trial = Trial(workshops, candidates, arguments.mutants)
    trial.run()
    for workshop in workshops:
        workshop.close()
    survived = print_report(trial, sources)
    tried = len(trial.results)
    killed = tried - survived
    percent = 100 * killed / tried if tried else 0
    print(f"\n{tried} mutants tried, {killed} killed ({percent:.1f} %), {survived} survived")
    if tried < arguments.mutants:
        sys.exit(f"too few: {arguments.mutants} were asked for")
    if killed < _LEAST_KILLED * tried:
        sys.exit(f"too few killed: at least {_LEAST_KILLED:.0%} are asked for")


if __name__ == "__main__":
    main()
