"""Runs a recorder, or nothing, and measures it and the servers."""

import dataclasses
import json
import subprocess
import time

from . import fidelity, processes
from .recorders import Ending
from .source import FRAME_BYTES, RATE


@dataclasses.dataclass
class Load:
    """What servers did, a second."""
    cpu: float  # seconds of CPU
    wake_ups: float


@dataclasses.dataclass
class Run:
    seconds: float  # of audio recorded
    client_cpu: float  # seconds, a second of audio
    server: Load  # a second, what it does without a recorder included
    private_dirty: int  # bytes
    wake_ups: float  # of the client, a second
    reported_lost: int | None  # frames that the recorder says it lost
    fidelity: fidelity.Fidelity | None
    cycles: tuple  # shortest and longest of the graph, frames


class Servers:
    """What the servers have done since this was made."""

    def __init__(self, stack):
        self._pids = stack.servers().values()
        self._begin = self._sums()

    def _sums(self):
        return (time.monotonic(), sum(map(processes.cpu_seconds, self._pids)),
                sum(map(processes.wake_ups, self._pids)))

    def load(self):
        seconds, cpu, wake_ups = (now - then for now, then in zip(self._sums(), self._begin))
        return Load(cpu / seconds, wake_ups / seconds)


def idle_load(stack, seconds):
    """What the servers do while the source plays and nobody records."""
    servers = Servers(stack)
    time.sleep(seconds)
    return servers.load()


def record(recorder, stack, player, loop, seconds, path):
    """Records for `seconds` to `path`, which is left there."""
    answer_path = stack.folder / "answer"
    log = stack.folder / "recorder.log"
    player.cycle_lengths()
    servers = Servers(stack)
    with open(answer_path, "wb") as answer:
        child = processes.start(recorder.command(str(path), seconds), stack.environment, log,
                                stdout=answer)
    try:
        link(recorder.links, stack)
        private_dirty, wake_ups = _watch(child, seconds)
        if recorder.ending is Ending.SIGNAL:
            wait_for_audio(path, seconds)
            child.terminate()
        ended = processes.wait_with_usage(child, seconds + 30)
    finally:
        processes.end(child)
    if ended is None or (recorder.ending is Ending.ITSELF and ended[0] != 0):
        raise RuntimeError(f"{recorder.name} failed:\n{log.read_text(errors='replace')}")
    server = servers.load()
    audio = fidelity.wav_audio(path) if recorder.is_wav else None
    recorded = len(audio) / FRAME_BYTES / RATE if recorder.is_wav else probe_seconds(path)
    return Run(seconds=recorded, client_cpu=ended[1] / recorded, server=server,
               private_dirty=private_dirty, wake_ups=wake_ups,
               reported_lost=reported_lost(answer_path) if recorder.reports else None,
               fidelity=fidelity.check(audio, loop) if recorder.is_wav else None,
               cycles=player.cycle_lengths())


def link(links, stack):
    """Links ports by their names, as soon as they are there."""
    deadline = time.monotonic() + 5
    for ports in links:
        while subprocess.run(["pw-link", *ports], env=stack.environment, capture_output=True,
                             check=False).returncode != 0:
            if time.monotonic() > deadline:
                raise RuntimeError(f"{' and '.join(ports)} cannot be linked")
            time.sleep(0.05)


def _watch(child, seconds):
    """Memory near the end of the recording, and wake-ups a second of its middle."""
    head, tail = 1.0, 0.5
    time.sleep(head)
    begin, wake_ups = time.monotonic(), processes.wake_ups(child.pid)
    time.sleep(seconds - head - tail)
    private_dirty = processes.private_dirty_bytes(child.pid)
    return private_dirty, (processes.wake_ups(child.pid) - wake_ups) / (time.monotonic() - begin)


def wait_for_audio(path, seconds, rate=RATE):
    deadline = time.monotonic() + seconds + 30
    while not path.exists() or path.stat().st_size < seconds * rate * FRAME_BYTES:
        if time.monotonic() > deadline:
            raise RuntimeError(f"{path.name} does not grow")
        time.sleep(0.05)


def probe_seconds(path):
    answer = subprocess.run(["ffprobe", "-v", "error", "-show_entries", "format=duration", "-of",
                             "csv=p=0", path], capture_output=True, text=True, check=True)
    return float(answer.stdout)


def reported_lost(path):
    """What the recorder says that it lost, in frames."""
    return json.loads(path.read_text())["lostFrames"]


@dataclasses.dataclass
class Encoding:
    """What it costs to encode a recording when nothing is captured: CPU seconds, a second of
    audio."""
    ffmpeg: float  # ffmpeg from WAV to M4A, with the encoder's settings of ours
    encoder: float  # the encoder alone


def encode_offline(wav, seconds, helper, stack):
    target = wav.with_suffix(".offline.m4a")
    frames = round(seconds * RATE)
    commands = (["ffmpeg", "-nostdin", "-hide_banner", "-loglevel", "error", "-i", str(wav),
                 "-c:a", "aac", "-b:a", "256k", "-aac_is", "0", "-aac_pns", "0", str(target)],
                [helper, str(frames), str(wav)])
    log = stack.folder / "encoder.log"
    costs = []
    for command in commands:
        status, cpu = processes.wait_with_usage(
            processes.start(command, stack.environment, log), seconds + 60)
        if status != 0:
            raise RuntimeError(log.read_text(errors="replace"))
        costs.append(cpu / seconds)
    target.unlink()
    return Encoding(*costs)


def open_encoder_memory(helper, stack):
    """The private dirty memory of a program that has opened the encoder and does nothing."""
    child = processes.start([helper], stack.environment, stack.folder / "encoder.log",
                            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    try:
        if child.stdout.readline() != "ready\n":
            raise RuntimeError((stack.folder / "encoder.log").read_text(errors="replace"))
        return processes.private_dirty_bytes(child.pid)
    finally:
        processes.end(child)
