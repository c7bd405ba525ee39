"""Interrupts programs inside their calls that change the file system."""

import collections
import concurrent.futures
import itertools
import random
import re
import shutil
import signal
import tempfile
from pathlib import Path

from programs import half_written

# As strace takes them; what an architecture lacks is passed over.
_CALLS = ",".join(f"?{name}" for name in (
    "open openat write fchmod chmod fchmodat unlink unlinkat rename renameat renameat2 link linkat mkdir mkdirat").split())
# Opening changes something when it creates, writing when it is not to the standard streams.
_CHANGE = re.compile(r"(?!open(at)?\((?!.*O_CREAT)|write\([012],)(\w+)\(")
_SIGNALS = [signal.SIGINT, signal.SIGTERM, signal.SIGHUP]
_INTERRUPTED = 130


def _walks(seeds):
    """What is interrupted: a name, the words, and the files that lie there before."""
    profile = ["--profile", seeds.profile]
    image = {"out/device.bin": seeds.eeproms[0]}
    return [
        ("run", ["pictara-sim", "--run-all", *profile, "--output", "out", "--record", "out/record.txt"], {}),
        ("run on old files", ["pictara-sim", "--run-all", *profile, "--output", "out", "--eeprom", "out/device.bin"],
         {**image, "out/settings.ini": seeds.settings[0]}),
        ("script", ["pictara-sim", "--script", seeds.scripts[0], *profile, "--output", "out"], {}),
        ("replay of an EEPROM", ["pictara-sim", "--replay-eeprom", "out/device.bin", *profile, "--output", "out"],
         image),
        ("measuring", ["shading", "measure", "--sensor", seeds.plain, "-o", "out/lens.json", "--page", "out/lens.html"],
         {}),
        ("headboard-config", ["headboard-config", "--eeprom", "out/device.bin", "--settings", "out/config.ini",
                              "--screenshot", "out/page.png"], {}),
        ("headboard-image", ["headboard-image", "out/device.bin", "import", seeds.presets[1], "Lens Correction", "PGA"],
         image),
    ]


def _run(programs, walk, more, check):
    _, words, files = walk
    with tempfile.TemporaryDirectory(prefix="hostile-") as name:
        folder = Path(name)
        (folder / "out").mkdir()
        for target, source in files.items():
            shutil.copy(source, folder / target)
        before = _contents(folder / "out")
        tracer = ["strace", "-o", folder / "calls", "-e", f"trace={_CALLS}", *more]
        return check(programs.run(words, folder, tracer), folder, before)


def _contents(folder):
    return {path.name: path.read_bytes() for path in folder.rglob("*") if path.is_file()}


def _traced(end, folder, _):
    """The calls, each by its name and how often the program has made it by then."""
    if end.code != 0:
        raise SystemExit(f"What is to be interrupted does not end well: {end.told()}")
    made = collections.Counter()
    calls = []
    for line in (folder / "calls").read_text(errors="replace").splitlines():
        made[line.partition("(")[0]] += 1
        if change := _CHANGE.match(line):
            calls.append((change[2], made[change[2]]))
    return calls


def _judged(end, folder, before):
    """The end, and a finding or nothing."""
    if left := half_written(folder):
        return end, left
    # A signal may still kill as long as nothing was done.
    is_untouched = isinstance(end.code, int) and end.code < 0 and _contents(folder / "out") == before
    is_orderly = end.code in (0, _INTERRUPTED) and not end.was_asked
    return end, "" if is_untouched or is_orderly else f"it ended with {end.code}"


def interrupt_all(programs, seeds, arguments):
    """The walks in turn, each at its calls in random order; how many of each, and findings."""
    chance = random.Random(f"{arguments.seed}/interruptions")
    places = []
    for walk in _walks(seeds):
        calls = _run(programs, walk, [], _traced)
        chance.shuffle(calls)
        places.append([(walk, at) for at in calls])
    turns = zip(*map(itertools.cycle, places))
    tries = [(*place, number) for place, number in zip(
        itertools.islice(itertools.chain.from_iterable(turns), arguments.interruptions), itertools.cycle(_SIGNALS))]
    done, findings = collections.Counter(), []
    with concurrent.futures.ThreadPoolExecutor(3 * arguments.jobs) as pool:  # they mostly wait for an EEPROM
        jobs = {pool.submit(_run, programs, walk, ["-e", f"inject={call}:signal={number.name}:when={at}"],
                            _judged): (walk[0], f"{call} {at}", number) for walk, (call, at), number in tries}
        for job in concurrent.futures.as_completed(jobs):
            name, at, number = jobs[job]
            done[name] += 1
            end, finding = job.result()
            if finding:
                findings.append(f"{name}, {number.name} at {at}: {finding}\n    {end.told()}")
                print(findings[-1], flush=True)
    return done, findings
