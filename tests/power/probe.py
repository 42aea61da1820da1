"""Whether a disk keeps up."""

import os
import threading
import time

_EVERY = 0.25  # seconds


class Probe:
    """Flushes a little to a disk of its own, four times a second, while the context lasts."""

    def __init__(self, disk):
        self._disk = disk
        self._ended = threading.Event()
        self._thread = threading.Thread(target=self._run)
        self._flushes = []  # when each was due, and when it was done

    def __enter__(self):
        self._thread.start()
        return self

    def __exit__(self, *_):
        self._ended.set()
        self._thread.join()

    def _run(self):
        with open(self._disk.folder / "probe", "wb", buffering=0) as file:
            while not self._ended.is_set():
                due = time.time() + _EVERY
                self._ended.wait(_EVERY)
                file.write(bytes(4096))
                os.fdatasync(file.fileno())
                self._flushes.append((due, time.time()))

    def slowest(self, since, until):
        """The longest that a flush took that was on its way at that time, in seconds, with what it
        began too late. To be asked after the context."""
        return max((done - due for due, done in self._flushes if done >= since and due <= until),
                   default=0)
