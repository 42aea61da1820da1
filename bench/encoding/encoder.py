"""FFmpeg's AAC encoder as its command line has it: what its settings cost and what comes out."""

import dataclasses
import re
import shutil
import subprocess

import numpy

from .material import RATE

_FFMPEG = ["ffmpeg", "-nostdin", "-hide_banner", "-v", "error", "-y"]


@dataclasses.dataclass(frozen=True)
class Setting:
    name: str
    options: str  # for FFmpeg's command line
    kilobits: int = 256  # a second

    def arguments(self):
        return ["-c:a", "aac", "-b:a", f"{self.kilobits}k", *self.options.split()]


DEFAULTS = Setting("FFmpeg's defaults", "")


def write_wav(signal, path):
    subprocess.run([*_FFMPEG, "-f", "f32le", "-ar", str(RATE), "-ac", "2", "-i", "-", "-c:a",
                    "pcm_f32le", str(path)], input=signal.astype("<f4").tobytes(), check=True)


def encode_and_decode(setting, wav, frames):
    """The decoded signal, `frames` long, and the bits a second that it took."""
    coded = wav.with_suffix(".m4a")
    subprocess.run([*_FFMPEG, "-i", str(wav), *setting.arguments(), str(coded)], check=True,
                   stderr=subprocess.DEVNULL)
    sizes = subprocess.run(["ffprobe", "-v", "error", "-show_entries", "packet=size", "-of",
                            "csv=p=0", str(coded)], capture_output=True, text=True, check=True)
    raw = subprocess.run([*_FFMPEG, "-i", str(coded), "-c:a", "pcm_f32le", "-f", "f32le", "-"],
                         capture_output=True, check=True).stdout
    signal = numpy.frombuffer(raw, "<f4").reshape(-1, 2).astype(float)[:frames]
    bits = 8 * sum(int(size.strip(",")) for size in sizes.stdout.split())
    return signal, bits * RATE / frames


def delay(original, coded):
    """By how many frames the second signal lags behind the first, by their correlation."""
    size = 2 * len(original)
    spectra = (numpy.fft.rfft(signal.sum(axis=1), size) for signal in (coded, original))
    correlation = numpy.fft.irfft(next(spectra) * next(spectra).conj(), size)
    best = int(correlation.argmax())
    return best if best < size // 2 else best - size


def instructions(setting, wav):
    """What encoding takes of the program's own, as the processor counts them, else as valgrind does.
    `None` stands for everything but the encoder."""
    codec = ["-c:a", "pcm_f32le"] if setting is None else setting.arguments()
    command = [*_FFMPEG, "-i", str(wav), *codec, "-f", "null", "-"]
    if shutil.which("perf"):
        perf = ["perf", "stat", "-x", ",", "-e", "instructions:u"]
        if found := re.search(r"^(\d+),,instructions:u", _errors(perf + command), re.MULTILINE):
            return int(found[1])
    valgrind = ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null"]
    return int(re.search(r"Collected : (\d+)", _errors(valgrind + command))[1])


def _errors(command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stderr
