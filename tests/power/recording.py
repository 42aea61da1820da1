"""A recorder that records a melody to a disk whose power is cut meanwhile."""

import dataclasses
import json
import os
import signal
import subprocess
import time

RATE = 48000
AFTER_STOP = ("stop returns", "a second later")


@dataclasses.dataclass
class Moments:
    """When power is cut, beside AFTER_STOP: names, and seconds after the file was created."""
    recording: dict
    end: float  # of the recording, by Ctrl-C
    stopping: float  # after that


@dataclasses.dataclass
class Recording:
    born: float  # when the file was created, by the clock of files
    frames: int  # as the program tells
    stalled: float  # seconds in which the audio server delivered nothing, as the program tells
    stop_took: float  # seconds
    content: bytes  # as the program left the file


def set_moments(short):
    """Seconds after the file was created, by name."""
    return {f"{seconds} s": seconds for seconds in ((4, 8) if short else (4, 12, 25, 40))}


def choose_moments(chance, short):
    """The set ones, and others as `chance` has it."""
    count, end = (3, 9) if short else (8, 42)
    others = (round(chance.uniform(0.1, end), 2) for _ in range(count))
    named = set_moments(short) | {f"at random, {seconds} s": seconds for seconds in others}
    return Moments(named, end, chance.uniform(0, 0.05))


def environment(folder):
    """Nothing of the user's; the state folder is on no disk that is cut."""
    kept = {name: os.environ[name] for name in ("PATH", "LD_PRELOAD") if name in os.environ}
    return kept | {
        "LC_ALL": "C.UTF-8",
        "HOME": str(folder),
        "XDG_STATE_HOME": str(folder / "state"),
        "DBUS_SESSION_BUS_ADDRESS": f"unix:path={folder}/no-bus",
        "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={folder}/no-bus",
    }


def record(program, file_format, disk, home, when):
    """Records to `disk`, cuts power at those Moments and after stop, and lets the program end."""
    path = disk.folder / f"recording.{file_format}"
    log = home / f"{file_format}.log"
    with open(log, "wb") as messages:
        child = subprocess.Popen([program, "--demo", "--json", "-o", path], env=environment(home),
                                 stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=messages)
    try:
        born = _birth(path, child, log)
        for name, seconds in sorted(when.recording.items(), key=lambda moment: moment[1]):
            _sleep_until(born + seconds)
            disk.cut(name)
        _sleep_until(born + when.end)
        interrupted = time.monotonic()
        child.send_signal(signal.SIGINT)
        time.sleep(when.stopping)
        disk.cut("while it stops")
        answer = child.stdout.readline()  # comes when stop has returned
        stop_took = time.monotonic() - interrupted
        disk.cut(AFTER_STOP[0], stopped=True)
        time.sleep(1)
        disk.cut(AFTER_STOP[1], stopped=True)
        if child.wait(timeout=30) != 0:
            raise RuntimeError(f"the recorder failed: {log.read_text(errors='replace')}")
    finally:
        child.kill()
        child.wait()
        child.stdout.close()
    told = json.loads(answer)
    return Recording(born, told["frames"], told["lostFrames"] / RATE, stop_took, path.read_bytes())


def _birth(path, child, log):
    """Waits for a file: when it was created."""
    deadline = time.monotonic() + 30
    while not path.exists():
        if child.poll() is not None or time.monotonic() > deadline:
            raise RuntimeError(f"the recorder did not start: {log.read_text(errors='replace')}")
        time.sleep(0.01)
    return float(subprocess.run(["stat", "--format=%.9W", path], capture_output=True, text=True,
                                check=True).stdout)


def _sleep_until(moment):
    time.sleep(max(0, moment - time.time()))
