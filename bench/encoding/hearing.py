"""How far the error of a coded signal stays below what the ear can hear beside the signal: the noise
to mask ratio of ITU-R BS.1387 (the method called PEAQ, its basic version's model of the ear).

A signal's spectrum is weighted by the outer ear and summed into quarters of a critical band (Bark);
with the ear's own noise, spread over the neighbouring bands and smeared in time, it is what masks. The
error is the difference of the two spectra's magnitudes, in the same bands. Below 0 dB, on average, it
is masked; a frame is disturbed when a band of it is above 1.5 dB.

The standard's window of 2048 frames is as long as the encoder's own, so it cannot see an error that is
heard before a stroke. Ours differs from it in that `Ear` can be made with a shorter window as well.
What it does not judge: frequencies above 18 kHz, and the place of sounds between left and right."""

import dataclasses

import numpy

from .material import RATE

_FULL_SCALE_LEVEL = 92  # dB of a sine of full scale, as played
_BAND = 0.25  # Bark
_LOWEST, _HIGHEST = 80, 18000  # Hz
_DISTURBED = 1.5  # dB


def _bark(frequency):
    return 7 * numpy.arcsinh(frequency / 650)


def _frequency(bark):
    return 650 * numpy.sinh(bark / 7)


def _decibels(ratio):
    with numpy.errstate(divide="ignore"):
        return 10 * numpy.log10(ratio)


@dataclasses.dataclass
class Quality:
    nmr: float  # dB, of the mean over frames and bands; minus infinity without any error
    disturbed: float  # share of the frames


class Ear:
    def __init__(self, window):
        self._window = window
        self._hop = window // 2
        self._hann = numpy.hanning(window)
        self._make_outer_ear()
        self._make_bands()

    def _make_outer_ear(self):
        khz = numpy.maximum(numpy.fft.rfftfreq(self._window, 1 / RATE), 1) / 1000
        weight = (-2.184 * khz ** -0.8 + 6.5 * numpy.exp(-0.6 * (khz - 3.3) ** 2) -
                  0.001 * khz ** 3.6)
        sine = self._hann.sum() / 2  # what a sine of full scale is in its bin
        self._gain = 10 ** ((weight + _FULL_SCALE_LEVEL) / 20) / sine

    def _make_bands(self):
        count = round((_bark(_HIGHEST) - _bark(_LOWEST)) / _BAND)
        edges = _frequency(numpy.minimum(_bark(_LOWEST) + _BAND * numpy.arange(count + 1),
                                         _bark(_HIGHEST)))
        width = RATE / self._window
        middle = numpy.fft.rfftfreq(self._window, 1 / RATE)[:, None]
        shared = (numpy.minimum(edges[1:], middle + width / 2) -
                  numpy.maximum(edges[:-1], middle - width / 2))
        self._grouping = numpy.maximum(shared, 0) / width
        bark = numpy.arange(count) * _BAND
        self._centre = _frequency((_bark(edges[1:]) + _bark(edges[:-1])) / 2)
        self._own_noise = 10 ** (0.1456 * (self._centre / 1000) ** -0.8)
        self._distance = bark[None, :] - bark[:, None]  # of the band that is masked, from the masker
        self._offset = 10 ** (numpy.where(bark <= 12, 3, 0.25 * bark) / 10)
        slowness = 0.008 + 100 / self._centre * (0.030 - 0.008)  # seconds
        self._keep = numpy.exp(-self._hop / RATE / slowness)
        self._norm = self._spread_sum(numpy.ones((1, count)))

    def _spectra(self, mono):
        frames = numpy.lib.stride_tricks.sliding_window_view(mono, self._window)[::self._hop]
        return numpy.abs(numpy.fft.rfft(frames * self._hann)) * self._gain

    def _spread_sum(self, energies):
        """All bands' energies, each spread over all bands, added as the ear adds them."""
        total = numpy.zeros_like(energies)
        for band, centre in enumerate(self._centre):
            level = 10 * numpy.log10(energies[:, band, None])
            upwards = -24 - 230 / centre + 0.2 * level
            distance = self._distance[band]
            shape = 10 ** (numpy.where(distance < 0, 27, upwards) * distance / 10)
            total += (energies[:, band, None] * shape / shape.sum(axis=1)[:, None]) ** 0.4
        return total ** 2.5

    def _mask(self, spectra):
        energies = numpy.maximum(spectra ** 2 @ self._grouping, 1e-12) + self._own_noise
        excitation = self._spread_sum(energies) / self._norm
        smeared = numpy.empty_like(excitation)
        state = excitation[0]
        for frame, now in enumerate(excitation):
            state = self._keep * state + (1 - self._keep) * now
            smeared[frame] = numpy.maximum(state, now)
        return smeared / self._offset

    def listen(self, original):
        """What `judge` needs of the original, for each channel."""
        spectra = [self._spectra(channel) for channel in original.T]
        return [(one, self._mask(one)) for one in spectra]

    def judge(self, heard, coded):
        """`heard`: what `listen` answered for the signal that was coded."""
        ratios = numpy.concatenate(
            [((spectra - self._spectra(channel)) ** 2 @ self._grouping) / mask
             for (spectra, mask), channel in zip(heard, coded.T)])
        return Quality(nmr=float(_decibels(ratios.mean())),
                       disturbed=float((_decibels(ratios.max(axis=1)) >= _DISTURBED).mean()))


def bandwidth(original, coded):
    """The highest frequency, in Hz, up to which each 250 Hz of the coded signal have at least a tenth
    of the original's power. The original is to have all frequencies."""
    size = 2048

    def power(signal):
        mono = numpy.concatenate(signal.T)
        frames = mono[:len(mono) // size * size].reshape(-1, size) * numpy.hanning(size)
        bins = (numpy.abs(numpy.fft.rfft(frames)) ** 2).sum(axis=0)[1:]
        step = round(250 * size / RATE)
        return bins[:len(bins) // step * step].reshape(-1, step).sum(axis=1), step * RATE / size

    (before, width), (after, _) = power(original), power(coded)
    missing = numpy.flatnonzero(after < before / 10)
    return float((missing[0] if len(missing) else len(before)) * width)
