"""What it takes until a program has started: processor time, and time until audio is captured."""

import dataclasses
import time

from . import processes
from .fidelity import wav_audio
from .measure import probe_seconds
from .source import FRAME_BYTES, RATE

SHORT, LONG = 1, 3  # seconds that are recorded
_MOMENT = 0.5  # seconds


def cpu_of(command, stack):
    """CPU seconds of a program that ends by itself."""
    log = stack.folder / "start.log"
    ended = processes.wait_with_usage(processes.start(command, stack.environment, log), 10)
    if ended is None or ended[0] != 0:
        raise RuntimeError(f"{' '.join(command)} failed:\n{log.read_text(errors='replace')}")
    return ended[1]


@dataclasses.dataclass
class Recording:
    cpu: float  # seconds
    until_frame: float  # seconds until the first frame that was captured


def recording(recorder, stack, seconds, path):
    """One that is told to end after `seconds`. What is missing from its file then came too early."""
    log = stack.folder / "start.log"
    begin = time.monotonic()
    child = processes.start(recorder.command(str(path), 3600), stack.environment, log)
    try:
        time.sleep(begin + seconds - time.monotonic())
        taken = time.monotonic() - begin
        child.terminate()
        ended = processes.wait_with_usage(child, 30)
    finally:
        processes.end(child)
    if ended is None or not path.exists():
        raise RuntimeError(f"{recorder.name} failed:\n{log.read_text(errors='replace')}")
    recorded = seconds_in(path)
    path.unlink()
    return Recording(cpu=ended[1], until_frame=taken - recorded)


def seconds_in(path):
    if path.suffix == ".wav":
        return len(wav_audio(path)) / FRAME_BYTES / RATE
    return probe_seconds(path)


def without_its_seconds(short, long):
    """The part of a `SHORT` recording's cost that no further second of a `LONG` one has."""
    return short - SHORT * (long - short) / (LONG - SHORT)


def recording_from_menu(program, seconds):
    """Seconds from the choice in the menu, which is open, to the first frame."""
    before = program.recordings()
    program.open_menu()
    time.sleep(_MOMENT)  # so long at least does a hand take to the item
    begin = time.monotonic()
    program.perform("start-recording")
    time.sleep(begin + seconds - time.monotonic())
    taken = time.monotonic() - begin
    program.perform("stop-recording")
    time.sleep(_MOMENT)  # it is answered before it is done
    [path] = [path for path in program.recordings() if path not in before]
    return taken - seconds_in(path)
