"""The programs that are compared, each told to record the same: 48 kHz, stereo, 16-bit WAV or AAC at
256 kbit/s in M4A."""

import dataclasses
import enum
from typing import Callable

from .audio_stack import SINK


class Ending(enum.Enum):
    ITSELF = 1  # it is told the length
    SIGNAL = 2  # it records until it is told to end


@dataclasses.dataclass(frozen=True)
class Recorder:
    name: str
    extension: str
    ending: Ending
    command: Callable  # of the file's path and the seconds
    reports: bool = False  # prints a JSON object that tells its length and lost frames

    @property
    def is_wav(self):
        return self.extension == "wav"


def all_recorders(own):
    """Every recorder; `own` is the path of the program that the others are compared with."""
    pulse_input = ["ffmpeg", "-nostdin", "-hide_banner", "-loglevel", "error", "-f", "pulse",
                   "-channels", "2", "-sample_rate", "48000", "-i", f"{SINK}.monitor"]

    def record(path, seconds):
        return [own, "--duration", str(seconds), "--output", path, "--json"]

    def pw_record(path, _):
        return ["pw-record", "--target", SINK, "-P", "{ stream.capture.sink = true }",
                "--rate", "48000", "--channels", "2", "--format", "s16", path]

    def parecord(path, _):
        return ["parecord", f"--device={SINK}.monitor", "--rate=48000", "--channels=2",
                "--format=s16le", "--file-format=wav", path]

    def ffmpeg_wav(path, seconds):
        return [*pulse_input, "-t", str(seconds), "-c:a", "pcm_s16le", path]

    def ffmpeg_m4a(path, seconds):
        return [*pulse_input, "-t", str(seconds), "-c:a", "aac", "-b:a", "256k", path]

    return [
        Recorder("audrel-record", "wav", Ending.ITSELF, record, reports=True),
        Recorder("pw-record", "wav", Ending.SIGNAL, pw_record),
        Recorder("parecord", "wav", Ending.SIGNAL, parecord),
        Recorder("ffmpeg -f pulse", "wav", Ending.ITSELF, ffmpeg_wav),
        Recorder("audrel-record", "m4a", Ending.ITSELF, record, reports=True),
        Recorder("ffmpeg -f pulse", "m4a", Ending.ITSELF, ffmpeg_m4a),
    ]
