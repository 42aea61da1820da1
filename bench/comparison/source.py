"""The audio that is recorded, and its player."""

import array
import math
import random
import subprocess
import sys

from . import processes

RATE = 48000
FRAME_BYTES = 4
PLAYER = "loop-player"  # its node's name
_SECONDS = 20
_NOTES = (220.0, 277.18, 329.63, 440.0, 369.99, 293.66, 246.94, 329.63)  # Hz
_VOICES = ((1.0, 0.9, 0.3), (1.5, 0.6, 0.6), (2.0, 0.3, 0.9))  # pitch, left, right


def make_loop():
    """Stereo frames of 16 bits, little-endian: chords with overtones over a quiet noise, which
    makes every stretch of it unlike every other."""
    size = 4096
    period = [sum(math.sin(2 * math.pi * k * i / size) / k for k in range(1, 13))
              for i in range(size)]
    noise = array.array("h", random.Random(1).randbytes(_SECONDS * RATE * FRAME_BYTES))
    samples = array.array("h", bytes(len(noise) * noise.itemsize))
    note_frames = RATE // 2
    for frame in range(_SECONDS * RATE):
        note = _NOTES[frame // note_frames % len(_NOTES)] * size / RATE
        loudness = 3000 * math.exp(-3 * (frame % note_frames) / note_frames)
        left = right = 0.0
        for pitch, to_left, to_right in _VOICES:
            value = period[int(frame * note * pitch) % size]
            left += to_left * value
            right += to_right * value
        samples[2 * frame] = int(loudness * left) + (noise[2 * frame] >> 7)
        samples[2 * frame + 1] = int(loudness * right) + (noise[2 * frame + 1] >> 7)
    if sys.byteorder == "big":
        samples.byteswap()
    return samples.tobytes()


class Player:
    """Plays the loop for as long as the context lasts, in `streams` streams each, at `rate` frames
    a second."""

    def __init__(self, program, stack, loop, quantum, streams=1, rate=RATE):
        self._command = [program, str(stack.folder / "loop.raw"), str(quantum), str(streams),
                         str(rate)]
        self._stack = stack
        self._loop = loop

    def __enter__(self):
        (self._stack.folder / "loop.raw").write_bytes(self._loop)
        self._process = processes.start(self._command, self._stack.environment,
                                        self._stack.folder / "player.log", text=True,
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        if self._process.stdout.readline() != "ready\n":
            self.__exit__()
            raise RuntimeError((self._stack.folder / "player.log").read_text())
        return self

    def __exit__(self, *_):
        processes.end(self._process)

    def cycle_lengths(self):
        """The shortest and the longest cycle of the graph since the last call, in frames."""
        self._process.stdin.write("\n")
        self._process.stdin.flush()
        return tuple(int(word) for word in self._process.stdout.readline().split())
