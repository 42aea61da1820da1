"""Disks in files, and what each of them holds at the moment of a power cut."""

import contextlib
import dataclasses
import fcntl
import os
import subprocess
import time
from pathlib import Path

# How each filesystem is made, and the Debian package that makes it.
FILESYSTEMS = {
    "ext4": (["mkfs.ext4", "-q", "-F"], "e2fsprogs"),
    "XFS": (["mkfs.xfs", "-q", "-f"], "xfsprogs"),
    "btrfs": (["mkfs.btrfs", "-q", "-f"], "btrfs-progs"),
}
_SIZE = 512 << 20  # bytes, of which a file takes what was written
_FICLONE = 0x40049409


class CannotTry(Exception):
    """What is needed is not there, so nothing was found out."""


def system(*command):
    """Runs what prepares a disk."""
    outcome = subprocess.run(list(map(str, command)), capture_output=True, text=True, check=False)
    if outcome.returncode != 0:
        raise CannotTry(f"{command[0]} failed: {(outcome.stderr or outcome.stdout).strip()}")
    return outcome.stdout


def make_room(folder):
    """Mounts a disk in memory at `folder` on which a file can be copied in one moment."""
    system("mount", "-t", "tmpfs", "-o", "size=4g", "tmpfs", folder)
    room = folder / "room"
    room.mkdir()
    _make_image(folder / "room.img", "btrfs", 8 * _SIZE)
    system("mount", "-o", "loop", folder / "room.img", room)
    return room


def _make_image(path, filesystem, size=_SIZE):
    with open(path, "wb") as image:
        os.truncate(image.fileno(), size)
    system(*FILESYSTEMS[filesystem][0], path)


@contextlib.contextmanager
def mounted(image, point):
    """The disk in a file, at the folder `point`."""
    point.mkdir(exist_ok=True)
    system("mount", "-o", "loop", image, point)
    device = system("findmnt", "-n", "-o", "SOURCE", point).strip()
    try:
        yield point
    finally:
        system("umount", point)
        # Btrfs remembers the last state that it saw, and takes no older one of the same disk.
        subprocess.run(["btrfs", "device", "scan", "--forget", device], capture_output=True,
                       check=False)


@dataclasses.dataclass
class Cut:
    """What the disk held at one moment."""
    name: str  # of the moment
    time: float  # by the clock of files, not after the moment
    stopped: bool  # whether stop had returned
    image: Path


class Disk:
    """A new disk, mounted while the context lasts. What is cut stays when it goes."""

    def __init__(self, room, filesystem, name):
        self._image = room / f"{name}.img"
        self.folder = room / name
        self.cuts = []
        _make_image(self._image, filesystem)
        self._mount = mounted(self._image, self.folder)

    def __enter__(self):
        self._mount.__enter__()
        return self

    def __exit__(self, *failure):
        self._mount.__exit__(*failure)
        self._image.unlink()

    def cut(self, name, stopped=False):
        """Keeps what the filesystem has sent to the disk by now: no write comes between the parts
        of the copy, since the file is locked meanwhile."""
        copy = self._image.with_suffix(f".{len(self.cuts)}.img")
        with open(self._image, "rb") as source, open(copy, "wb") as target:
            self.cuts.append(Cut(name, time.time(), stopped, copy))
            fcntl.ioctl(target, _FICLONE, source.fileno())
