#!/usr/bin/env python3
"""What compare-starts makes of what it measures."""

import struct
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "bench"))
sys.dont_write_bytecode = True
from comparison.starts import seconds_in, without_its_seconds  # noqa: E402


class StartsTest(unittest.TestCase):
    def test_a_recording_that_costs_nothing_but_its_seconds_has_a_free_start(self):
        self.assertAlmostEqual(without_its_seconds(short=0.002, long=0.006), 0)

    def test_what_no_further_second_costs_is_the_start(self):
        self.assertAlmostEqual(without_its_seconds(short=0.012, long=0.016), 0.010)

    def test_a_wav_file_is_as_long_as_its_audio(self):
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "a.wav"
            audio = bytes(48000 * 4 // 2)
            path.write_bytes(b"RIFF" + struct.pack("<I", 36 + len(audio)) + b"WAVEfmt " +
                             struct.pack("<IHHIIHH", 16, 1, 2, 48000, 192000, 4, 16) +
                             b"data" + struct.pack("<I", len(audio)) + audio)
            self.assertEqual(seconds_in(path), 0.5)


if __name__ == "__main__":
    unittest.main()
