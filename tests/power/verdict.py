"""What a cut left of a recording, and whether that is what was promised."""

import dataclasses
import subprocess

from .recording import RATE

FRAME_BYTES = 4  # two channels of 16 bits
PROMISE = 3.0  # seconds: what is older than that is safe
KEEPS_UP = 0.5  # seconds that the machine may be behind while that is promised
_PADDING = 1023  # frames that FFmpeg 5.1 plays beyond the end of an M4A


@dataclasses.dataclass
class Found:
    """What is on the disk after a cut."""
    content: bytes | None  # of the file, if there is one
    intact: int  # frames that play as they were recorded, from the first on
    wrong: int  # frames that play after them and are none of the recording's
    unmended: str | None = None  # why repairing it failed


@dataclasses.dataclass
class Verdict:
    lost: float  # seconds that the cut cost
    problem: str | None  # how the promise was broken
    judged: bool  # not where the machine did not keep up


def play(path):
    """What FFmpeg plays of a file, as frames."""
    return subprocess.run(["ffmpeg", "-nostdin", "-v", "quiet", "-i", path, "-f", "s16le", "-"],
                          stdin=subprocess.DEVNULL, capture_output=True, check=False).stdout


def compare(audio, recorded):
    """How many frames of `audio` are the first of `recorded`, and how many others follow."""
    if recorded.startswith(audio):
        same = len(audio)
    else:
        low, high = 0, min(len(audio), len(recorded))
        while low < high:
            middle = (low + high + 1) // 2
            low, high = (middle, high) if audio[:middle] == recorded[:middle] else (low, middle - 1)
        same = low
    intact = same // FRAME_BYTES
    return intact, len(audio) // FRAME_BYTES - intact


def mend(program, path, recorded, intact):
    """Repairs a file in which `intact` frames play. What is wrong afterwards, if anything is."""
    def repair():
        return subprocess.run([program, "--repair", path], stdin=subprocess.DEVNULL, text=True,
                              capture_output=True, check=False)
    first = repair()
    if first.returncode != 0:
        return f"it cannot be repaired: {(first.stdout + first.stderr).strip()}"
    left, wrong = compare(play(path), recorded)
    if left < intact or wrong > 0:
        return f"repaired, {left} of {intact} frames play, and {wrong} that were not recorded"
    content = path.read_bytes()
    if repair().returncode != 0 or path.read_bytes() != content:
        return "repaired, it is not taken for whole"
    return None


def complaint(recording, played, file_format):
    """What is wrong with the file that the program itself left, if anything is."""
    beyond = len(played) // FRAME_BYTES - recording.frames
    if 0 <= beyond <= (_PADDING if file_format == "m4a" else 0):
        return None
    return f"the program tells {recording.frames} frames, and {beyond} more than that play"


def judge(cut, found, recording, behind):
    """`behind`: how late disk or audio server were at worst in the seconds before the cut."""
    if cut.stopped:
        lost = max(0, recording.frames - found.intact) / RATE
        whole = found.content == recording.content
        return Verdict(lost, None if whole else "the file is not the one that was left", True)
    # The first frame is later than the file, so this is no less than what was captured.
    captured = min(cut.time - recording.born, recording.frames / RATE)
    lost = max(0, captured - found.intact / RATE)
    problem = None
    if found.wrong > 0:
        problem = f"{found.wrong} frames play that were not recorded"
    elif found.intact / RATE < min(cut.time - recording.born - PROMISE, recording.frames / RATE):
        problem = f"{lost:.1f} s are gone" + ("" if found.content is not None else ": no file")
        if behind > KEEPS_UP:
            return Verdict(lost, f"{problem}, on a machine that was {behind:.1f} s behind", False)
    return Verdict(lost, problem or found.unmended, True)
