"""Makes hostile files: a good one changed at places that a random generator chooses, and things that are no files."""

import copy
import json
import os
import re

_NUMBERS = [b"0", b"-1", b"1", b"2", b"255", b"256", b"65535", b"65536", b"2147483647", b"4294967296",
            b"18446744073709551616", b"1e308", b"1e-308", b"-1e9", b"nan", b"inf", b"0x", b"0xFFFFFFFF", b"1.5", b""]
_VALUES = [None, True, -1, 0, 1, 1e308, 1e-308, 65536, 4294967296, "", "0x10", "x" * 300, [], {}, [[]], [0] * 5000]


def _place(random, data):
    return random.randrange(len(data) + 1)


def _flip(random, data):
    data = bytearray(data)
    for _ in range(random.choice([1, 1, 2, 8, 64])):
        if data:
            data[random.randrange(len(data))] ^= 1 << random.randrange(8)
    return bytes(data)


def _overwrite(random, data):
    at, byte = _place(random, data), random.choice([0, 1, 0x7F, 0x80, 0xFE, 0xFF, 10, 32])
    length = random.choice([1, 2, 4, 40, 400])
    return data[:at] + bytes([byte]) * length + data[at + length:]


def _cut(random, data):
    return data[:_place(random, data)]


def _remove(random, data):
    at = _place(random, data)
    return data[:at] + data[at + random.choice([1, 2, 16, 200]):]


def _insert(random, data):
    at = _place(random, data)
    return data[:at] + random.randbytes(random.choice([1, 3, 30, 3000])) + data[at:]


def _repeat(random, data):
    at = _place(random, data)
    piece = data[at:at + random.choice([1, 10, 100, 2000])]
    return data[:at] + piece * random.choice([2, 3, 50, 1000]) + data[at:]


def _number(random, data):
    found = list(re.finditer(rb"-?[0-9][0-9.xA-Fa-f]*", data))
    for match in sorted(random.sample(found, min(len(found), random.choice([1, 1, 3]))), key=lambda m: -m.start()):
        data = data[:match.start()] + random.choice(_NUMBERS) + data[match.end():]
    return data


def _lines(random, data):
    lines = data.splitlines(keepends=True)
    for _ in range(random.choice([1, 1, 2, 10])):
        if len(lines) < 2:
            break
        at, other = random.randrange(len(lines)), random.randrange(len(lines))
        change = random.randrange(4)
        if change == 0:
            del lines[at]
        elif change == 1:
            lines.insert(other, lines[at])
        elif change == 2:
            lines[at], lines[other] = lines[other], lines[at]
        else:
            lines[at:at] = [lines[other]] * random.choice([2, 100])
    return b"".join(lines)


def _json(random, data):
    try:
        whole = json.loads(data)
    except ValueError:
        return _flip(random, data)
    for _ in range(random.choice([1, 1, 2, 4])):
        places = []

        def collect(value):
            for key in value if isinstance(value, dict) else range(len(value)):
                places.append((value, key))
                if isinstance(value[key], (dict, list)):
                    collect(value[key])

        collect(whole)
        if not places:
            break
        holder, key = random.choice(places)
        change = random.randrange(4)
        if change == 0:
            del holder[key]
        elif change == 1 and isinstance(holder, list):
            holder.extend([holder[key]] * random.choice([1, 30, 3000]))
        elif change == 2:
            holder[key] = random.choice(places)[0]
            try:
                json.dumps(whole)
            except (ValueError, RecursionError):
                holder[key] = None
        else:
            holder[key] = copy.deepcopy(random.choice(_VALUES))  # the next change may be made inside
    return json.dumps(whole).encode()


_ANY = [_flip, _overwrite, _cut, _remove, _insert, _repeat]
_TEXT = [*_ANY, _number, _number, _number, _lines, _lines, _lines]
MUTATIONS = {"binary": _ANY, "text": _TEXT, "json": [*_TEXT, *[_json] * 8]}


def mutate(random, nature, data):
    for _ in range(random.choice([1, 1, 1, 2, 3])):
        data = random.choice(MUTATIONS[nature])(random, data)
    return data


def make_special(kind, path):
    """Puts something that is no usable file at the path, and gives the path that is to be named."""
    if kind == "pipe":
        os.mkfifo(path)
    elif kind == "link to a pipe":
        os.mkfifo(f"{path}.pipe")
        os.symlink(f"{path}.pipe", path)
    elif kind == "folder":
        path.mkdir()
    elif kind == "endless":
        return "/dev/zero"
    elif kind == "empty":
        path.touch()
    elif kind == "huge":
        with open(path, "wb") as file:
            file.truncate(1 << 40)
    elif kind == "loop":
        os.symlink(path, path)
    elif kind == "dangling":
        os.symlink(path.parent / "none" / "none", path)
    elif kind == "unreadable":
        path.touch(mode=0)
    elif kind == "unending text":
        path.write_bytes(b"9" * (1 << 20))
    return str(path)


SPECIALS = ["pipe", "link to a pipe", "folder", "endless", "empty", "huge", "loop", "dangling", "unreadable",
            "unending text"]
