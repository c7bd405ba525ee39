"""Prints the coverage of every file of the product and fails below the bounds."""

import argparse
import json
import sys
from pathlib import Path

_SOURCE = Path(__file__).resolve().parents[1]
_PRODUCT = Path("src")
_KINDS = ("lines", "branches")


def read_arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("summary", type=Path, help="what llvm-cov exports")
    for kind in _KINDS:
        parser.add_argument(f"--{kind}", type=float, required=True, metavar="PERCENT", help="at least")
    return parser.parse_args()


def read_files(summary):
    """The summaries of the folders' files by their names."""
    measured = json.loads(summary.read_text())["data"][0]["files"]
    paths = ((Path(file["filename"]).resolve(), file["summary"]) for file in measured)
    inside = {
        str(path.relative_to(_SOURCE)): counts
        for path, counts in paths
        if path.is_relative_to(_SOURCE / _PRODUCT)
    }
    return dict(sorted(inside.items()))


def percent(covered, count):
    return 100 * covered / count if count else 100


def table_row(name, counts):
    columns = []
    for kind in _KINDS:
        covered, count = counts[kind]["covered"], counts[kind]["count"]
        columns.append(f"{covered:6} of {count:5} {percent(covered, count):6.1f} %")
    return f"{name:40}" + "".join(columns)


def total_of(files):
    return {
        kind: {key: sum(counts[kind][key] for counts in files) for key in ("covered", "count")} for kind in _KINDS
    }


def main():
    arguments = read_arguments()
    files = read_files(arguments.summary)
    print(f"\n{'file':40}{'lines':>23}{'branches':>23}")
    for name, counts in files.items():
        print(table_row(name, counts))
    total = total_of(files.values())
    print(table_row("total", total))

    faults = []
    for kind in _KINDS:
        bound = getattr(arguments, kind)
        if percent(total[kind]["covered"], total[kind]["count"]) < bound:
            faults.append(f"fewer than {bound:g} % of the {kind} are covered")
    # A file that no test program links is in no report: it would be missed in silence.
    sources = {str(path.relative_to(_SOURCE)) for path in (_SOURCE / _PRODUCT).rglob("*.cpp")}
    print(f"{len(sources & files.keys())} of {len(sources)} source files measured, and the headers that they use")
    faults += [f"no test program contains {name}" for name in sorted(sources - files.keys())]
    if faults:
        sys.exit("\n".join(faults))


if __name__ == "__main__":
    main()
