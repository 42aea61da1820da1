"""Finds a known loop of audio in a recording, and what is missing from it or does not belong."""

import dataclasses
import struct

from .source import FRAME_BYTES, RATE

_WINDOW = 16  # frames that tell a place in the loop from every other
_STRIDE = 64  # frames


@dataclasses.dataclass
class Fidelity:
    lost: int = 0  # frames that were played and are not in the recording
    added: int = 0  # frames of the recording that were not played


def wav_audio(path, expected_rate=RATE):
    """The audio of a WAV file of 16-bit stereo."""
    data = path.read_bytes()
    if data[:4] not in (b"RIFF", b"RF64") or data[8:12] != b"WAVE":
        raise ValueError(f"{path} is no WAV file")
    offset = 12
    while offset + 8 <= len(data):
        name, size = struct.unpack_from("<4sI", data, offset)
        if name == b"fmt ":
            channels, rate, _, _, bits = struct.unpack_from("<HIIHH", data, offset + 10)
            if (channels, rate, bits) != (2, expected_rate, 16):
                raise ValueError(f"{path} has {channels} channels, {rate} Hz, {bits} bits")
        if name == b"data":
            audio = data[offset + 8:offset + 8 + size]
            return audio[:len(audio) // FRAME_BYTES * FRAME_BYTES]
        offset += 8 + size + size % 2
    raise ValueError(f"{path} has no audio")


def check(audio, loop):
    """What is between the first and the last frame of the loop in `audio`. Nothing when the loop
    is not to be found, sample for sample."""
    twice = loop + loop
    place = _find_next(audio, 0, twice)
    if place is None:
        return None
    result = Fidelity()
    while True:
        start, source = place
        end = start + _common_length(audio, start, loop, source)
        expected = (source + end - start) % len(loop)
        place = _find_next(audio, end, twice)
        if place is None:
            return result
        begin, source = _reach_back(audio, end, twice, *place)
        skipped = (source - expected) % len(loop)
        if skipped <= len(loop) // 2:
            result.lost += skipped // FRAME_BYTES
        else:  # a step back: something is there twice
            result.added += (len(loop) - skipped) // FRAME_BYTES
        result.added += (begin - end) // FRAME_BYTES


def _find_next(audio, start, twice):
    """The next offset of `audio` at which the loop goes on, and where in the loop that is."""
    window = _WINDOW * FRAME_BYTES
    for offset in range(start, len(audio) - window + 1, _STRIDE * FRAME_BYTES):
        found = twice.find(audio[offset:offset + window])
        if found >= 0 and found % FRAME_BYTES == 0:
            return offset, found % (len(twice) // 2)
    return None


def _common_length(audio, start, loop, source):
    """For how many bytes, in whole frames, `audio` goes on as the loop does."""
    length = 0
    step = 1 << 16
    while start + length < len(audio):
        at = (source + length) % len(loop)
        part = min(step, len(loop) - at, len(audio) - start - length)
        if audio[start + length:start + length + part] == loop[at:at + part]:
            length += part
        elif part == FRAME_BYTES:
            break
        else:
            step = max(FRAME_BYTES, part // 2 // FRAME_BYTES * FRAME_BYTES)
    return length


def _reach_back(audio, end, twice, offset, source):
    """The first frame, not before `end`, from which audio and loop agree up to `offset`."""
    size = len(twice) // 2
    while offset > end:
        before = (source - FRAME_BYTES) % size
        if audio[offset - FRAME_BYTES:offset] != twice[before:before + FRAME_BYTES]:
            break
        offset -= FRAME_BYTES
        source = before
    return offset, source
