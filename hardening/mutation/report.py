"""What the tests noticed, by folder, by file and by test."""

import re
from collections import Counter
from pathlib import PurePosixPath

from workshop import Fate

_LEAST_IN_ALL = 93  # percent
_LEAST_IN_A_FOLDER = 90  # percent
_LEAST_TRIED = 10  # fewer say nothing about a folder
_MOST_TESTS = 20


def read_explanations(path):
    """The survivors that a document explains, each on a line: - `file`: `change`: why."""
    return set(re.findall(r"^- `([^`]+)`: `(.+?)`: ", path.read_text(), re.MULTILINE)) if path.exists() else set()


def _percent(results, prefix):
    """How many of the mutants of the files that begin so were tried, how many survived, and the percents killed."""
    fates = [fate for mutant, fate, _ in results if mutant.file.startswith(prefix)]
    alive = fates.count(Fate.SURVIVED)
    return len(fates), alive, 100 * (len(fates) - alive) / max(len(fates), 1)


def _print_table(title, names, results):
    print(f"\n{title:40} {'tried':>6} {'killed':>6} {'survived':>8}")
    for name in names:
        tried, alive, percent = _percent(results, name)
        if tried:
            print(f"{name or 'all':40} {tried:6} {tried - alive:6} {alive:8} {percent:6.1f} %")


def _missed_bounds(names, results):
    for name in names:
        tried, _, percent = _percent(results, name)
        least = _LEAST_IN_A_FOLDER if name else _LEAST_IN_ALL
        if tried >= _LEAST_TRIED and percent < least:
            yield f"too few killed in {name or 'all'}: at least {least} % are asked for"


def _print_survivors(results, sources, explanations):
    """Answers how many nobody explained."""
    alive = sorted((m for m, fate, _ in results if fate is Fate.SURVIVED), key=lambda m: (m.file, m.begin))
    lines = [(m, m.describe(sources[m.file])) for m in alive]
    for title, wanted in (("survivors that are explained", True), ("survivors that nobody explained", False)):
        chosen = [(m, line) for m, line in lines if ((m.file, line) in explanations) is wanted]
        if chosen:
            print(f"\n{title}: {len(chosen)}")
        for mutant, line in chosen:
            print(f"- `{mutant.file}`: `{line}`: ({mutant.kind}, line {mutant.line})")
    return len(chosen)


def _print_tests(results, every):
    kills, alone = Counter(), Counter()
    for _, _, killers in results:
        # The cases of one test are one.
        tests = {re.sub(r":(?:\w+/)?(\w+\.\w+)(?:/\w+)?$", r":\1", killer) for killer in killers}
        kills.update(tests)
        if len(tests) == 1:
            alone.update(tests)
    print(f"\n{'test':110} {'kills':>6}" + (f" {'alone':>6}" if every else ""))
    for test, count in kills.most_common(None if every else _MOST_TESTS):
        print(f"{test:110} {count:6}" + (f" {alone[test]:6}" if every else ""))


def print_report(results, sources, document, every, since):
    """Answers which bounds were missed. Of a few lines' mutants a share says little: there only the survivors count
    that nobody explained."""
    folders = [*sorted({f"{PurePosixPath(file).parent}/" for file in sources}), ""]
    _print_table("file", sources, results)
    _print_table("folder", folders, results)
    unexplained = _print_survivors(results, sources, read_explanations(document))
    _print_tests(results, every)
    faults = ["explain the survivors in docs/mutation.md, or kill them"] if unexplained else []
    return faults if since else faults + list(_missed_bounds(folders, results))
