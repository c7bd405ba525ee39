"""Runs the proofs one after the other and keeps the table of what each tried and found last."""

import argparse
import datetime
import re
import subprocess
import sys
import time
from pathlib import Path

_SOURCE = Path(__file__).resolve().parents[1]
_LOGS = _SOURCE / "out" / "hardening"
_PAGE = _SOURCE / "docs" / "hardening.md"
_BEGIN, _END = "<!-- written by hardening/all -->\n", "<!-- to here -->\n"

# The command of each, and which of its lines tell how much was tried.
_PROOFS = {
    "definitions": ("./check --definitions", r"out of (\d+)$", "{} programs"),
    "tidy": ("./check --tidy", r"^static analysis of (\d+ files)", "{}"),
    "sanitize": ("./check --sanitize", r"^(\d+ tests) ran", "{}"),
    "thread": ("./check --thread", r"^(\d+ tests) ran", "{}"),
    "valgrind": ("./check --valgrind", r"^(\d+ tests) ran", "{}"),
    "coverage": (
        "hardening/coverage",
        r"^total +\d+ of +\d+ +([\d.]+ %) +\d+ of +\d+ +([\d.]+ %)",
        "{} of the lines, {} of the branches",
    ),
    "hostile-host": ("hardening/hostile-host", r"^(\d+ .*)", "{}"),
    "hostile-inputs": ("hardening/hostile-inputs", r"^(\d+ hostile files).* and (\d+ interruptions)", "{}, {}"),
    "fuzz": ("hardening/fuzz/run", r"^(\w+) +(\d+) ", "{1} runs of {0}"),
    "mutate": ("hardening/mutate", r"^all +(\d+) +(\d+) +\d+ +([\d.]+ %)", "{} mutants, {} killed ({})"),
    "power-cuts": ("hardening/power-cuts", r"^(\d+ saves, \d+ cuts)", "{}"),
}


def read_arguments():
    parser = argparse.ArgumentParser(prog="hardening/all", description=__doc__)
    parser.add_argument("proofs", nargs="*", metavar="PROOF", help="some of: " + ", ".join(_PROOFS))
    arguments = parser.parse_args()
    if unknown := set(arguments.proofs) - set(_PROOFS):
        parser.error("there is no proof " + ", ".join(sorted(unknown)))
    return arguments


def added_up(rows):
    """The rows as one text, in which rows that differ by their counts alone are one with the sums."""
    count = re.compile(r"(?<![\d.])\d+(?![\d.])")
    sums = {}
    for row in rows:
        form = count.sub("{}", row)
        counts = [int(number) for number in count.findall(row)]
        sums[form] = [sum(pair) for pair in zip(sums.get(form, [0] * len(counts)), counts)]
    return "; ".join(form.format(*counts) for form, counts in sums.items())


def run(name):
    """The cells of a row of the table, and whether nothing was found."""
    command, pattern, told = _PROOFS[name]
    log = _LOGS / f"{name}.txt"
    print(f"{command} ...", flush=True)
    begin = time.monotonic()
    with log.open("w") as output:
        code = subprocess.run(command.split(), cwd=_SOURCE, stdout=output, stderr=subprocess.STDOUT).returncode
    minutes = (time.monotonic() - begin) / 60
    found = re.findall(pattern, log.read_text(errors="replace"), re.MULTILINE)
    tried = added_up(told.format(*(groups if isinstance(groups, tuple) else (groups,))) for groups in found)
    # A proof that tells nothing has proved nothing.
    is_good = code == 0 and bool(found)
    result = "nothing" if is_good else f"exit {code}: see {log.relative_to(_SOURCE)}"
    today = datetime.date.today().isoformat()
    return f"| `{command}` | {tried or 'nothing told'} | {result} | {minutes:.1f} | {today} |", is_good


def keep(row):
    """Puts a row in the place of the one of the same command."""
    before, rest = _PAGE.read_text().split(_BEGIN)
    table, after = rest.split(_END)
    rows = dict((line.split("|")[1], line) for line in [*table.splitlines()[2:], row])
    places = [f" `{command}` " for command, _, _ in _PROOFS.values()]
    table = "| command | tried | found | minutes | day |\n|---|---|---|---|---|\n"
    table += "".join(f"{rows[place]}\n" for place in places if place in rows)
    _PAGE.write_text(before + _BEGIN + table + _END + after)


def main():
    arguments = read_arguments()
    _LOGS.mkdir(parents=True, exist_ok=True)
    are_good = True
    for name in arguments.proofs or _PROOFS:
        row, is_good = run(name)
        print(row, flush=True)
        keep(row)
        are_good = are_good and is_good
    sys.exit(0 if are_good else 1)


if __name__ == "__main__":
    main()
