"""What is encoded: speech, music, attacks and noise, made here. Each is a stereo signal at RATE, an
array of (frames, 2) floats within ±1, and the same each time."""

import functools
import subprocess

import numpy

RATE = 48000

_TEXTS = (("en-us+f3", "She sells six silk sashes, or so they say. Which of these switches starts "
                       "the machine, and what happens to the speech that it catches?"),
          ("en-gb+m3", "Peter packed a box of brittle cups and took the late train back. Nobody "
                       "asked him why; the morning was foggy, and the moon was low."))


def make(seconds):
    """The four kinds by name."""
    frames = seconds * RATE
    return {"speech": _speech(frames), "music": _music(frames), "attacks": _attacks(frames),
            "noise": _noise(frames)}


def _panned(mono, place):
    """`place`: 0 is left, 1 is right."""
    angle = place * numpy.pi / 2
    return mono[:, None] * numpy.array([numpy.cos(angle), numpy.sin(angle)])


def _to_level(signal, peak):
    return signal * (peak / numpy.abs(signal).max())


def _add(signal, begin, part):
    room = signal[begin:begin + len(part)]
    room += part[:len(room)]


def _speak(voice, text, frames):
    spoken = subprocess.run(["espeak-ng", "-v", voice, "-s", "160", "--stdout", text],
                            capture_output=True, check=True).stdout
    raw = subprocess.run(["ffmpeg", "-v", "error", "-i", "-", "-ar", str(RATE), "-ac", "1", "-f",
                          "f32le", "-"], input=spoken, capture_output=True, check=True).stdout
    samples = numpy.frombuffer(raw, "<f4").astype(float)
    return numpy.resize(samples, frames)  # said again until it is long enough


def _speech(frames):
    """Two people, a little to either side, the second one of whom joins after two seconds."""
    first, second = (_speak(voice, text, frames) for voice, text in _TEXTS)
    second = numpy.concatenate([numpy.zeros(min(2 * RATE, frames)), second])[:frames]
    return _to_level(_panned(first, 0.35) + _panned(second, 0.7), 0.7)


def _times(seconds):
    return numpy.arange(int(seconds * RATE)) / RATE


@functools.cache
def _plucked(pitch):
    """A string: overtones that fade the sooner the higher they are."""
    t = _times(1.5)
    count = int(18000 / pitch)
    return sum(numpy.sin(2 * numpy.pi * pitch * k * (1 + 0.0002 * k * k) ** 0.5 * t) / k *
               numpy.exp(-t * (1.5 + 0.6 * k)) for k in range(1, min(count, 40) + 1))


@functools.cache
def _bell(pitch):
    t = _times(2)
    return sum(numpy.sin(2 * numpy.pi * pitch * ratio * t) * numpy.exp(-t * ratio) / ratio
               for ratio in (0.56, 0.92, 1.19, 1.71, 2.0, 2.74, 3.0, 3.76, 4.07, 6.4, 9.1))


@functools.cache
def _pipe(pitch, seconds):
    """A pipe that sounds on, with a slow vibrato."""
    t = _times(seconds)
    phase = 2 * numpy.pi * pitch * t + 0.3 * numpy.sin(2 * numpy.pi * 5 * t)
    return sum(numpy.sin(k * phase) / k ** 1.2 for k in range(1, int(15000 / pitch)))


def _hat(chance):
    t = _times(0.12)
    return numpy.diff(chance.standard_normal(len(t) + 1)) * numpy.exp(-t * 60)


def _music(frames):
    """Strings and bells over a chord of pipes and a hi-hat, each in its place from left to right."""
    chance = numpy.random.default_rng(1)
    signal = numpy.zeros((frames, 2))
    bar = 2 * RATE
    for begin in range(0, frames, bar):
        root = (110.0, 146.83, 98.0, 130.81)[begin // bar % 4]
        for place, ratio in ((0.2, 1), (0.5, 1.5), (0.8, 2.52)):
            _add(signal, begin, _panned(0.12 * _pipe(root * ratio, 2), place))
        for step in range(8):
            at = begin + step * bar // 8
            note = root * (2, 3, 4, 5.04, 6, 5.04, 4, 3)[step]
            _add(signal, at, _panned(0.5 * _plucked(note), 0.3))
            _add(signal, at, _panned(0.15 * _hat(chance), 0.6))
            if step % 4 == 3:
                _add(signal, at, _panned(0.3 * _bell(note * 4), 0.85))
    return _to_level(signal, 0.7)


def _attacks(frames):
    """Castanets in either hand and claves between them, with silence before each stroke."""
    chance = numpy.random.default_rng(2)
    t = _times(0.08)
    signal = numpy.zeros((frames, 2))
    at = RATE // 10
    while at < frames:
        shell = sum(numpy.sin(2 * numpy.pi * f * chance.uniform(0.97, 1.03) * t) * numpy.exp(-t * d)
                    for f, d in ((1150, 180), (2650, 220), (4400, 300), (7300, 400), (11800, 600)))
        click = chance.standard_normal(len(t)) * numpy.exp(-t * 1500)
        _add(signal, at, _panned(chance.uniform(0.3, 1) * (shell + 2 * click),
                                 chance.choice([0.15, 0.5, 0.85])))
        at += int(chance.uniform(0.06, 0.35) * RATE)
    return _to_level(signal, 0.8)


def _coloured(white, slope):
    """White noise made to fall with frequency: power goes with f to the power of `slope`."""
    spectrum = numpy.fft.rfft(white)
    frequency = numpy.fft.rfftfreq(len(white), 1 / RATE)
    return numpy.fft.irfft(spectrum * numpy.maximum(frequency, 20) ** (slope / 2), len(white))


def _applause(frames, chance):
    t = _times(0.03)
    signal = numpy.zeros((frames, 2))
    for _ in range(frames * 300 // RATE):  # claps a second
        clap = chance.standard_normal(len(t)) * numpy.exp(-t * chance.uniform(150, 600))
        _add(signal, chance.integers(frames), _panned(chance.uniform(0.1, 1) ** 2 * clap,
                                                      chance.uniform()))
    return signal


def _noise(frames):
    """A third each of white noise, of pink noise (both unlike on either side), and of applause."""
    chance = numpy.random.default_rng(3)
    third = frames // 3
    white = chance.standard_normal((third, 2))
    pink = numpy.stack([_coloured(chance.standard_normal(third), -1) for _ in range(2)], axis=1)
    applause = _applause(frames - 2 * third, chance)
    return numpy.concatenate([_to_level(white, 0.3), _to_level(pink, 0.5),
                              _to_level(applause, 0.8)])
