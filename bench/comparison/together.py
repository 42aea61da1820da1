"""Several recordings at the same time."""

import dataclasses
from pathlib import Path

from . import fidelity, measure, processes
from .recorders import Ending
from .source import FRAME_BYTES, RATE


@dataclasses.dataclass
class Recording:
    path: Path
    cpu: float  # seconds, a second of audio
    reported_lost: int | None  # frames

    def lost(self, loop, rate=RATE):
        """Frames that are missing by comparison; nothing where the loop is not to be found."""
        found = fidelity.check(fidelity.wav_audio(self.path, rate), loop)
        return None if found is None else found.lost


def record(recorders, stack, seconds, rate=RATE):
    """A recording of each of `recorders`, WAV all, and what the servers did meanwhile, a second."""
    servers = measure.Servers(stack)
    children = []
    try:
        for number, recorder in enumerate(recorders):
            path, answer = stack.folder / f"{number}.wav", stack.folder / f"{number}.answer"
            path.unlink(missing_ok=True)
            with open(answer, "wb") as output:
                children.append(processes.start(recorder.command(str(path), seconds),
                                                stack.environment, stack.folder / "recorder.log",
                                                stdout=output))
            measure.link(recorder.links, stack)
        taken = [_finish(*each, stack, seconds, rate)
                 for each in zip(range(len(children)), recorders, children)]
        return taken, servers.load()
    finally:
        for child in children:
            processes.end(child)


def _finish(number, recorder, child, stack, seconds, rate):
    path = stack.folder / f"{number}.wav"
    if recorder.ending is Ending.SIGNAL:
        measure.wait_for_audio(path, seconds, rate)
        child.terminate()
    ended = processes.wait_with_usage(child, seconds + 60)
    if ended is None or (recorder.ending is Ending.ITSELF and ended[0] != 0):
        messages = (stack.folder / "recorder.log").read_text(errors="replace")
        raise RuntimeError(f"{recorder.name} failed:\n{messages}")
    recorded = len(fidelity.wav_audio(path, rate)) / FRAME_BYTES / rate
    lost = measure.reported_lost(stack.folder / f"{number}.answer") if recorder.reports else None
    return Recording(path, ended[1] / recorded, lost)
