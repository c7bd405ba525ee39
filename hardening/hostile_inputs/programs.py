"""The programs that are tried, the files they read and write, and how a run may end."""

import dataclasses
import json
import os
import re
import resource
import signal
import struct
import subprocess
import zlib
from pathlib import Path
from typing import Callable

_LONGEST = 60  # seconds; then the program is asked to end
_PATIENCE = 30  # seconds for it to do so
_MEMORY = 3 << 30
_PROCESSOR_TIME = 120
_CODES = {"pictara-sim": {*range(11)}, "headboard-config": {0, 1, 2}, "headboard-image": {0, 1, 2},
          "shading": {0, 1, 2, 4, 5, 6}}
_TEMPORARY = re.compile(r"\.[A-Za-z]{6}$")
_INTERRUPTED = 130
_SMALL = {"width": 160, "height": 120}


def half_written(folder):
    """What is wrong with the files that a run left; empty when each is whole."""
    for path in sorted(Path(folder).rglob("*")):
        if not path.is_file() or path.is_symlink():
            continue
        if _TEMPORARY.search(path.name) or path.name.endswith(".lock"):
            return f"{path.name} is left"
        if "out" not in path.parts:
            continue
        data = path.read_bytes()
        whole = {".png": data.endswith(b"IEND\xaeB`\x82"), ".html": data.rstrip().endswith(b"</html>"),
                 ".bin": len(data) == 8192, ".txt": data.endswith(b"\n")}
        if path.suffix == ".json":
            try:
                json.loads(data)
            except ValueError:
                return f"{path.name} is no JSON"
        elif not whole.get(path.suffix, bool(data)):
            return f"{path.name} is not whole"
    return ""


@dataclasses.dataclass
class End:
    """How a run ended. The code is "hang" when even a request to terminate did not help."""
    words: list
    code: object
    was_asked: bool
    messages: str

    def told(self):
        return f"{' '.join(self.words)} -> {self.code}: {self.messages[-400:]!r}"

    def finding(self, folder, may_last=False, refusal=False):
        program = os.path.basename(self.words[0])
        if self.code == "hang":
            return "it hangs and does not end when it is asked to"
        if self.was_asked:
            if self.code != _INTERRUPTED or not may_last:
                return f"it was asked to end after {_LONGEST} s"
        elif self.code not in _CODES[program]:
            return f"it ended with {self.code}"
        if refusal and self.code not in (1, 2):
            return "it was not refused"
        if self.code == 2:
            lines = [line for line in self.messages.splitlines() if line.startswith(f"{program}: ")]
            if len(lines) != 1:
                return "a refusal is not one line"
        return half_written(folder)


def _bounded():
    resource.setrlimit(resource.RLIMIT_AS, (_MEMORY, _MEMORY))
    resource.setrlimit(resource.RLIMIT_CPU, (_PROCESSOR_TIME, _PROCESSOR_TIME))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


class Programs:
    def __init__(self, build):
        self.folder = build / "bin"
        # A sanitizer's shadow needs more than any bound.
        cache = (build / "CMakeCache.txt").read_text()
        self.bound = None if re.search(r"KESTRA_SANITIZE:\w+=\w", cache) else _bounded

    def run(self, words, folder, tracer=()):
        words = [str(self.folder / words[0]), *map(str, words[1:])]
        environment = dict(os.environ, QT_QPA_PLATFORM="offscreen", LC_ALL="C.UTF-8")
        with subprocess.Popen([*tracer, *words], cwd=folder, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                              stderr=subprocess.PIPE, preexec_fn=self.bound) as process:
            was_asked = False
            try:
                messages = process.communicate(timeout=_LONGEST)[1]
            except subprocess.TimeoutExpired:
                was_asked = True
                process.send_signal(signal.SIGTERM)
                try:
                    messages = process.communicate(timeout=_PATIENCE)[1]
                except subprocess.TimeoutExpired:
                    process.kill()
                    return End(words, "hang", True, "")
        return End(words, process.returncode, was_asked, messages.decode(errors="replace"))


def _png(width, height):
    def chunk(name, data):
        return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))

    rows = b"".join(b"\0" + b"".join(struct.pack(">H", 1500 + 4 * x) for x in range(width)) for _ in range(height))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 16, 0, 0, 0, 0)) +
            chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


def _dng(width, height):
    """One strip behind tags that fit into their entries (TIFF 6.0, DNG 1.4)."""
    byte, short, long = 1, 3, 4
    samples = b"".join(struct.pack("<H", 1500 + 4 * x) for x in range(width)) * height
    count = 14
    tags = [(256, long, 1, width), (257, long, 1, height), (258, short, 1, 16), (259, short, 1, 1),
            (262, short, 1, 32803), (273, long, 1, 14 + 12 * count), (277, short, 1, 1), (278, long, 1, height),
            (279, long, 1, len(samples)), (33421, short, 2, 2 | 2 << 16), (33422, byte, 4, 0x02010100),
            (50706, byte, 4, 0x0401), (50714, short, 1, 160), (50717, short, 1, 4095)]
    return (struct.pack("<2sHIH", b"II", 42, 8, count) + b"".join(struct.pack("<HHII", *tag) for tag in tags) +
            struct.pack("<I", 0) + samples)


class Seeds:
    """Good files of every kind, made by the programs themselves."""

    def __init__(self, folder, programs):
        self.folder = folder
        bases = ["polynomial", "ycbcr", "adaptive-76", "eeprom-bridge-71", "no-eeprom-25"]
        self.profiles = [self._small(programs, base) for base in bases]
        self.profile = self.profiles[0]
        self.plain = self._write("plain.json", json.dumps(json.loads(self.profile.read_text()) |
                                                          {"eeprom": {"kind": "none"}}))
        out = folder / "out"
        recording = folder / "run.txt"
        self._make(programs, ["pictara-sim", "--run-all", "--profile", self.profile, "--output", out])
        self._make(programs, ["pictara-sim", "--run-all", "--profile", self.plain, "--output", folder / "out2",
                              "--record", recording])
        self.eeproms = [out / "eeprom.bin", self._write("formatted.bin", b"VYEE\x01\xff" + b"\xff" * 8186)]
        self.settings = [out / "settings.ini"]
        self.presets = [programs.folder / "pictara.ini", next(out.glob("POLY*.ini"))]
        self.recordings = [recording, self._write("short.txt", "".join(
            recording.read_text().partition("\nframe 7\n")[0:2]))]
        self.few = self._write("few.txt", "press Run_All\nframes 12\n")
        self.scripts = [self._write("walk.txt", "# by hand\npress LensCalibSetup\nset FallOff 80%\nset Prom_Label "
                                                "\"By hand\"\nframes 6\nlight 3200 1\nfault error-12@9\npress AE\n"
                                                "wait AE_Status Done. 60\nexpect SETUP_Status Done.\ntick 2\n"
                                                f"screenshot \"{folder / 'picture.png'}\"\n")]
        shading = folder / "lens.json"
        self._make(programs, ["shading", "measure", "--sensor", self.plain, "-o", shading])
        self.shadings = [shading]
        self.pictures = [self._write("flat.png", _png(**_SMALL))]
        self.raws = [self._write("flat.dng", _dng(**_SMALL))]
        self.samples = [self._write("flat.raw", b"\xdc\x05" * (_SMALL["width"] * _SMALL["height"]))]
        self.settings_of_config = [folder / "config.ini"]
        self._make(programs, ["headboard-config", "--screenshot", folder / "page.png", "--eeprom", folder / "c.bin",
                              "--settings", self.settings_of_config[0]])
        if not self.settings_of_config[0].exists():
            self._write("config.ini", "[settings]\nLast%20Serial=ABC1234998\n[options]\nStill%20File=ABC_\n")

    def _write(self, name, text):
        path = self.folder / name
        path.write_bytes(text if isinstance(text, bytes) else text.encode())
        return path

    def _small(self, programs, base):
        profile = json.loads((programs.folder / f"profiles/{base}.json").read_text())
        profile.setdefault("array", {}).update(_SMALL)
        profile.setdefault("layout", {}).update(_SMALL)
        # So few pixels do not average the noise away; beyond the dialog's limit a run would not end well.
        profile.setdefault("readOut", {}).update({"electronsPerCount": 50, "readNoise": 0})
        return self._write(f"small-{base}.json", json.dumps(profile, indent=1))

    def _make(self, programs, words):
        end = programs.run(words, self.folder)
        if end.code != 0:
            raise SystemExit(f"A good file cannot be made: {end.told()}")


@dataclasses.dataclass
class Input:
    """A file that a program reads: how it is named on the command line, and good ones to begin with."""
    name: str
    nature: str
    seeds: list
    arguments: Callable
    file: str = "input"
    may_last: bool = False  # a good file may ask for hours of work
    companion: tuple = ()

    def prepare(self, folder):
        for name, source in [self.companion] if self.companion else []:
            (folder / name).write_bytes(source.read_bytes())


def _few_frames(seeds):
    """Reading comes first; a few frames tell whether what was read can be worked with."""
    return ["pictara-sim", "--output", "out", "--script", seeds.few]


def inputs_of(seeds):
    run = _few_frames(seeds)
    profile = ["--profile", seeds.profile]
    plain = ["--profile", seeds.plain]
    config = ["headboard-config", "--screenshot", "out.png", "--settings", "config.ini"]

    def image(path, chance):
        return ["headboard-image", path, *chance.choice([
            ["list"], ["check"], ["show", str(chance.choice([5, 0x38, chance.randrange(8300)]))],
            ["import", str(seeds.presets[1]), "Lens Correction", "PGA"], ["delete", "PGA"], ["format"]])]

    replay = ["pictara-sim", "--replay-eeprom"]
    measure = ["shading", "measure", "-o", "out/lens.json", "--light", "5000", "--sensor", seeds.plain]
    return [
        Input("headboard-image IMAGE", "binary", seeds.eeproms, image),
        Input("headboard-image import FILE", "text", seeds.presets, lambda path, _: [
            "headboard-image", "image.bin", "import", path, "Lens Correction", "PGA"],
              companion=("image.bin", seeds.eeproms[1])),
        Input("headboard-config --eeprom", "binary", seeds.eeproms, lambda path, _: [*config, "--eeprom", path]),
        Input("headboard-config --settings", "text", seeds.settings_of_config, lambda path, _: [
            "headboard-config", "--screenshot", "out.png", "--eeprom", "e.bin", "--settings", path]),
        Input("headboard-config --profile", "json", seeds.profiles, lambda path, _: [
            *config, "--eeprom", "e.bin", "--profile", path], file="input.json"),
        Input("--eeprom", "binary", seeds.eeproms, lambda path, _: [*run, *profile, "--eeprom", path]),
        Input("--replay-eeprom", "binary", seeds.eeproms, lambda path, _: [
            *replay, path, *profile, "--output", "out"]),
        Input("--profile", "json", seeds.profiles, lambda path, _: [*run, "--profile", path], file="input.json",
              may_last=True),
        Input("shading measure --sensor", "json", seeds.profiles, lambda path, _: [
            "shading", "measure", "-o", "lens.json", "--sensor", path], file="input.json", may_last=True),
        Input("--shading", "json", seeds.shadings, lambda path, _: [*run, *plain, "--shading", path]),
        Input("shading compare", "json", seeds.shadings, lambda path, _: [
            "shading", "compare", path, seeds.shadings[0], "--page", "out/page.html"]),
        Input("shading measure PNG", "binary", seeds.pictures, lambda path, _: [
            *measure, path], file="flat.png"),
        Input("shading check DNG", "binary", seeds.raws, lambda path, _: [
            "shading", "check", path, "--page", "out/page.html"], file="flat.dng"),
        Input("shading rate", "binary", seeds.pictures, lambda path, _: [
            "shading", "rate", path, "--page", "out/page.html"], file="flat.png"),
        Input("shading solve", "json", seeds.shadings, lambda path, _: [
            "shading", "solve", path, "--sensor", seeds.plain, "-o", "out/lens.ini"]),
        Input("shading units", "binary", seeds.eeproms, lambda path, _: [
            "shading", "units", "units", "--sensor", seeds.profile], file="units/board.bin"),
        Input("shading measure samples", "binary", seeds.samples, lambda path, _: [*measure, path]),
        Input("--ini", "text", seeds.presets, lambda path, _: [*run, *plain, "--ini", path]),
        Input("settings", "text", seeds.settings, lambda _, __: [*run, *plain], file="out/settings.ini"),
        Input("--script", "text", seeds.scripts, lambda path, _: [
            "pictara-sim", "--script", path, *profile, "--output", "out"], may_last=True),
        Input("--replay", "text", seeds.recordings, lambda path, _: ["pictara-sim", "--replay", path],
              may_last=True),
    ]


@dataclasses.dataclass
class Output:
    """A file that a program writes, named on the command line."""
    name: str
    words: list

    def arguments(self, path, _):
        return [*self.words, path]


def outputs_of(seeds):
    few = [*_few_frames(seeds), "--profile", seeds.plain]
    config = ["headboard-config", "--eeprom", "e.bin", "--settings", "c.ini", "--screenshot", "p.png"]
    return [Output("to --record", [*few, "--record"]),
            Output("to --eeprom", [*_few_frames(seeds), "--profile", seeds.profile, "--eeprom"]),
            Output("to shading measure", ["shading", "measure", "--sensor", seeds.plain, "-o"]),
            Output("to headboard-config --screenshot", [*config[:-2], "--screenshot"]),
            Output("to headboard-config --eeprom", [*config, "--eeprom"]),
            Output("to headboard-config --settings", [*config, "--settings"])]
