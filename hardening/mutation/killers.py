"""Which tests killed mutants of which file, remembered from run to run."""

import json
import threading
from collections import Counter
from pathlib import PurePosixPath


class Killers:
    def __init__(self, path):
        self._path = path
        self._lock = threading.Lock()
        known = json.loads(path.read_text()) if path.exists() else {}
        self._by_file = {file: Counter(kills) for file, kills in known.items()}

    def of(self, file):
        """The tests by how often they killed mutants of the file, then those of its folder."""
        with self._lock:
            folder = Counter()
            for other, kills in self._by_file.items():
                if PurePosixPath(other).parent == PurePosixPath(file).parent:
                    folder += kills
            own = self._by_file.get(file, Counter())
            return sorted(folder, key=lambda test: (-own[test], -folder[test], test))

    def note(self, file, test):
        with self._lock:
            self._by_file.setdefault(file, Counter())[test] += 1
            # At once: what an interrupted run has learned is kept.
            self._path.write_text(json.dumps(self._by_file, indent=1, sort_keys=True) + "\n")
