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
    def found(self, *parts):
        return check(b"".join(parts), LOOP)

    def test_a_recording_of_the_loop_is_whole_wherever_it_begins(self):
        self.assertEqual(self.found(played(1234, 300000)), Fidelity(lost=0, added=0))

    def test_silence_before_and_after_is_no_loss(self):
        self.assertEqual(self.found(silence(4321), played(5, 90000), silence(99)),
                         Fidelity(lost=0, added=0))

    def test_a_cycle_that_was_dropped_is_lost(self):
        self.assertEqual(self.found(played(0, 100000), played(101024, 200000)),
                         Fidelity(lost=1024, added=0))

    def test_a_cycle_that_silence_stands_for_is_lost_and_the_silence_is_added(self):
        self.assertEqual(self.found(played(0, 70000), silence(1024), played(71024, 200000)),
                         Fidelity(lost=1024, added=1024))

    def test_silence_between_frames_that_follow_each_other_is_added(self):
        self.assertEqual(self.found(played(0, 70000), silence(512), played(70000, 200000)),
                         Fidelity(lost=0, added=512))

    def test_frames_that_come_twice_are_added(self):
        self.assertEqual(self.found(played(0, 70000), played(69000, 200000)),
                         Fidelity(lost=0, added=1000))

    def test_a_single_wrong_frame_is_seen(self):
        self.assertEqual(self.found(played(0, 70001), b"\1\2\3\4", played(70002, 200000)),
                         Fidelity(lost=1, added=1))

    def test_holes_add_up_over_the_loops_end(self):
        self.assertEqual(
            self.found(played(90000, 95900), played(96100, 150000), played(150033, 200000)),
            Fidelity(lost=233, added=0))

    def test_audio_that_is_not_the_loop_sample_for_sample_is_not_judged(self):
        changed = bytes(byte & 0xFE for byte in played(0, 50000))
        self.assertIsNone(self.found(changed))


if __name__ == "__main__":
    unittest.main()
