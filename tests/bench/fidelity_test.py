#!/usr/bin/env python3
"""What compare-recorders says is missing from a recording."""

import random
import sys
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "bench"))
sys.dont_write_bytecode = True
from comparison.fidelity import FRAME_BYTES, Fidelity, check  # noqa: E402

LOOP_FRAMES = 96000
LOOP = random.Random(7).randbytes(LOOP_FRAMES * FRAME_BYTES)


def played(begin, end):
    """Frames of the loop as they are played, round and round."""
    return (LOOP * 4)[begin * FRAME_BYTES:end * FRAME_BYTES]


def silence(frames):
    return bytes(frames * FRAME_BYTES)


class FidelityTest(unittest.TestCase):
    def test_what_is_lost_and_what_is_added_is_counted(self):
        for what, lost, added, parts in (
                ("the loop, wherever it begins", 0, 0, [played(1234, 300000)]),
                ("silence before and after", 0, 0, [silence(4321), played(5, 90000), silence(99)]),
                ("a cycle that was dropped", 1024, 0, [played(0, 100000), played(101024, 200000)]),
                ("a cycle that silence stands for", 1024, 1024,
                 [played(0, 70000), silence(1024), played(71024, 200000)]),
                ("silence between frames that follow each other", 0, 512,
                 [played(0, 70000), silence(512), played(70000, 200000)]),
                ("frames that come twice", 0, 1000, [played(0, 70000), played(69000, 200000)]),
                ("a single wrong frame", 1, 1,
                 [played(0, 70001), b"\1\2\3\4", played(70002, 200000)]),
                ("holes on both sides of the loop's end", 233, 0,
                 [played(90000, 95900), played(96100, 150000), played(150033, 200000)])):
            with self.subTest(what):
                self.assertEqual(check(b"".join(parts), LOOP), Fidelity(lost, added))

    def test_audio_that_is_not_the_loop_sample_for_sample_is_not_judged(self):
        self.assertIsNone(check(bytes(byte & 0xFE for byte in played(0, 50000)), LOOP))


if __name__ == "__main__":
    unittest.main()
