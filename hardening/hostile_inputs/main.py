"""Hands hostile files to every program, and interrupts the programs where they write."""

import argparse
import collections
import concurrent.futures
import os
import random
import sys
import tempfile
from pathlib import Path

from interruptions import interrupt_all
from mutations import SPECIALS, make_special, mutate
from programs import Programs, Seeds, inputs_of, outputs_of

_SOURCE = Path(__file__).resolve().parents[2]
_SPECIAL_SHARE = 0.08


def read_arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--tries", type=int, default=4000, help="hostile files (default 4000)")
    parser.add_argument("--interruptions", type=int, default=400, help="signals (default 400)")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--build", type=Path, default=_SOURCE / "build/release", help="folder of the build that is tried")
    parser.add_argument("--only", default="", help="inputs whose name contains this text")
    return parser.parse_args()


def try_one(programs, seeds, seed, number, only):
    """One hostile file. Returns what was tried, how it ended, and a finding or None."""
    chance = random.Random(f"{seed}/{number}")
    inputs = [row for row in inputs_of(seeds) if only in row.name]
    outputs = [row for row in outputs_of(seeds) if only in row.name]
    with tempfile.TemporaryDirectory(prefix="hostile-") as name:
        folder = Path(name)
        is_special = not inputs or chance.random() < _SPECIAL_SHARE
        if is_special and outputs and (not inputs or chance.random() < 0.3):
            # An output that must not be replaced.
            row, kind = chance.choice(outputs), chance.choice(["pipe", "link to a pipe", "folder"])
            path = make_special(kind, folder / "target")
            before = os.stat(path).st_mode
            end = programs.run(row.arguments(path, chance), folder)
            finding = end.finding(folder, refusal=True)
            if not finding and os.stat(path).st_mode != before:
                finding = f"the {kind} was replaced"
            return row.name, f"output is a {kind}", end, finding
        row = chance.choice(inputs)
        path = folder / row.file
        path.parent.mkdir(exist_ok=True)
        if is_special:
            kind = chance.choice(SPECIALS)
            named = make_special(kind, path)
        else:
            kind = "mutated"
            data = mutate(chance, row.nature, chance.choice(row.seeds).read_bytes())
            path.write_bytes(data)
            named = str(path)
        row.prepare(folder)
        end = programs.run(row.arguments(named, chance), folder)
        return row.name, kind, end, end.finding(folder, may_last=row.may_last)


def main():
    arguments = read_arguments()
    with tempfile.TemporaryDirectory(prefix="hostile-seeds-") as name:
        programs = Programs(arguments.build)
        seeds = Seeds(Path(name), programs)
        findings, codes, kinds = [], collections.Counter(), collections.Counter()
        refused_lines = 0
        with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
            jobs = {pool.submit(try_one, programs, seeds, arguments.seed, number, arguments.only): number
                    for number in range(arguments.tries)}
            for done, job in enumerate(concurrent.futures.as_completed(jobs), 1):
                row, kind, end, finding = job.result()
                codes[end.code] += 1
                kinds[row, kind if kind != "mutated" else ""] += 1
                refused_lines += end.code == 2
                if finding:
                    findings.append(f"try {jobs[job]} ({row}, {kind}): {finding}\n    {end.told()}")
                    print(findings[-1], flush=True)
                if done % 500 == 0:
                    print(f"{done} of {arguments.tries} tried, {len(findings)} findings", flush=True)
        interrupted = collections.Counter()
        if not arguments.only:
            interrupted, more = interrupt_all(programs, seeds, arguments)
            findings += more
    for row in sorted({row for row, _ in kinds}):
        mutated = kinds[row, ""]
        special = sum(count for (other, kind), count in kinds.items() if other == row and kind)
        print(f"{row}: {mutated} mutated files, {special} special ones")
    print("exit codes: " + ", ".join(f"{code}: {count}" for code, count in sorted(codes.items(), key=str)))
    for row, count in sorted(interrupted.items()):
        print(f"interrupted {row}: {count}")
    tried, signals = sum(codes.values()), sum(interrupted.values())
    print(f"{tried} hostile files ({refused_lines} refused with one line) and {signals} interruptions: "
          f"{len(findings)} findings")
    if findings:
        sys.exit(1)
    # A campaign that refuses everything, or nothing, tries nothing.
    is_enough = tried >= arguments.tries and tried / 20 <= refused_lines <= tried * 19 / 20
    if not is_enough or (not arguments.only and signals < arguments.interruptions):
        print("Less was tried than it should be.", file=sys.stderr)
        sys.exit(1)


if __name__ == "__main__":
    main()
