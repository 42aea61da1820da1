"""The programs that are compared, each told to record the same: stereo, 16-bit WAV or AAC at
256 kbit/s in M4A."""

import dataclasses
import enum
from typing import Callable

from .audio_stack import SINK
from .source import PLAYER, RATE

OWN = "audrel-record"


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
    links: tuple = ()  # pairs of ports to link once it has started
    is_peer: bool = True  # is what people use, and so counts for the goals

    @property
    def is_wav(self):
        return self.extension == "wav"


def links_to_player(streams=1):
    names = [PLAYER, *(f"{PLAYER}-{number}" for number in range(2, streams + 1))]
    return tuple((f"{name}:output_{channel}", f"pw-record:input_{channel}")
                 for name in names for channel in ("FL", "FR"))


def all_recorders(own, rate=RATE):
    """Every recorder; `own` is the path of the program that the others are compared with."""
    pulse_input = ["ffmpeg", "-nostdin", "-hide_banner", "-loglevel", "error", "-f", "pulse",
                   "-channels", "2", "-sample_rate", str(rate), "-i", f"{SINK}.monitor"]

    def record(path, seconds):
        return [own, "--duration", str(seconds), "--output", path, "--json"]

    def pw_record(path, _, target=(SINK, "-P", "{ stream.capture.sink = true }")):
        return ["pw-record", "--target", *target, "--rate", str(rate), "--channels", "2",
                "--format", "s16", path]

    def pw_record_application(path, seconds):
        return pw_record(path, seconds, target=("0",))

    def parecord(path, _):
        return ["parecord", f"--device={SINK}.monitor", f"--rate={rate}", "--channels=2",
                "--format=s16le", "--file-format=wav", path]

    def ffmpeg_wav(path, seconds):
        return [*pulse_input, "-t", str(seconds), "-c:a", "pcm_s16le", path]

    def ffmpeg_m4a(path, seconds):
        return [*pulse_input, "-t", str(seconds), "-c:a", "aac", "-b:a", "256k", path]

    return [
        Recorder(OWN, "wav", Ending.ITSELF, record, reports=True, is_peer=False),
        Recorder("pw-record", "wav", Ending.SIGNAL, pw_record),
        # What listening to the applications themselves costs, as audrel-record does for the sake of
        # exactness, instead of listening to the sink.
        Recorder("pw-record, linked to the player", "wav", Ending.SIGNAL, pw_record_application,
                 links=links_to_player(), is_peer=False),
        Recorder("parecord", "wav", Ending.SIGNAL, parecord),
        Recorder("ffmpeg -f pulse", "wav", Ending.ITSELF, ffmpeg_wav),
        Recorder(OWN, "m4a", Ending.ITSELF, record, reports=True, is_peer=False),
        Recorder("ffmpeg -f pulse", "m4a", Ending.ITSELF, ffmpeg_m4a),
    ]
