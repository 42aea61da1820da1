#!/usr/bin/env python3
"""When a cut has cost more than was promised, and what is said of it."""

import struct
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parents[1]))
from power.disk import Cut  # noqa: E402
from power.recording import Recording  # noqa: E402
from power.report import CANNOT_TRY, Report  # noqa: E402
from power.verdict import RATE, Found, Verdict, compare, complaint, judge, mend  # noqa: E402

COMMAND = Path(__file__).resolve().parents[1] / "power-cut"


def recording(seconds=60.0):
    return Recording(born=1000.0, frames=round(seconds * RATE), stalled=0, stop_took=0.1,
                     content=b"left")


def cut(seconds, stopped=False):
    return Cut(f"{seconds} s", 1000.0 + seconds, stopped, Path("unused"))


def found(seconds, wrong=0, content=b"something"):
    return Found(content, round(seconds * RATE), wrong)


class WhileItRecords(unittest.TestCase):
    def judged(self, seconds, what, behind=0.0, of=None):
        return judge(cut(seconds), what, of or recording(), behind)

    def test_what_is_younger_than_three_seconds_may_be_gone(self):
        self.assertEqual(self.judged(10, found(7)), Verdict(3.0, None, True))
        self.assertEqual(self.judged(2.5, Found(None, 0, 0)), Verdict(2.5, None, True))

    def test_what_is_older_has_to_play(self):
        self.assertEqual(self.judged(10, found(6.5)), Verdict(3.5, "3.5 s are gone", True))

    def test_a_file_that_is_not_there_is_said_to_be(self):
        self.assertEqual(self.judged(4, Found(None, 0, 0)).problem, "4.0 s are gone: no file")

    def test_what_was_not_recorded_must_not_play(self):
        self.assertEqual(self.judged(10, found(9, wrong=12)).problem,
                         "12 frames play that were not recorded")

    def test_what_is_left_has_to_be_of_use_for_a_repair(self):
        self.assertEqual(self.judged(10, Found(b"x", 9 * RATE, 0, "it cannot be repaired: why")),
                         Verdict(1.0, "it cannot be repaired: why", True))

    def test_a_machine_that_does_not_keep_up_is_not_judged_by_what_is_missing(self):
        self.assertEqual(self.judged(10, found(5), behind=0.6), Verdict(
            5.0, "5.0 s are gone, on a machine that was 0.6 s behind", False))
        self.assertEqual(self.judged(10, found(5), behind=0.5).judged, True)

    def test_a_machine_that_does_not_keep_up_excuses_nothing_wrong(self):
        self.assertTrue(self.judged(10, found(5, wrong=1), behind=9).judged)

    def test_a_recording_has_no_more_than_its_frames_while_it_stops(self):
        self.assertEqual(self.judged(10.2, found(10), of=recording(10)), Verdict(0, None, True))
        self.assertEqual(self.judged(14, found(9), of=recording(10)).problem, "1.0 s are gone")


class OnceStopHasReturned(unittest.TestCase):
    def test_the_file_is_the_one_that_was_left(self):
        self.assertEqual(judge(cut(60, True), found(60, content=b"left"), recording(), 0),
                         Verdict(0, None, True))

    def test_another_file_will_not_do_however_slow_the_machine_is(self):
        self.assertEqual(judge(cut(60, True), found(59), recording(), 9),
                         Verdict(1.0, "the file is not the one that was left", True))


class Playing(unittest.TestCase):
    def test_frames_are_intact_up_to_the_first_other_one(self):
        recorded = bytes(range(40))
        self.assertEqual(compare(recorded[:20], recorded), (5, 0))
        self.assertEqual(compare(recorded + b"more", recorded), (10, 1))
        self.assertEqual(compare(recorded[:19] + b"?" + recorded[20:28], recorded), (4, 3))
        self.assertEqual(compare(b"", recorded), (0, 0))

    def test_the_program_tells_how_much_plays(self):
        run = recording(1)
        self.assertIsNone(complaint(run, bytes(4 * RATE), "wav"))
        self.assertIsNone(complaint(run, bytes(4 * (RATE + 1023)), "m4a"))
        for frames, file_format in ((RATE + 1, "wav"), (RATE - 1, "wav"), (RATE - 1, "m4a"),
                                    (RATE + 1024, "m4a")):
            self.assertIsNotNone(complaint(run, bytes(4 * frames), file_format))


class Mending(unittest.TestCase):
    """With a program that does to a WAV file what the test wants."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.program = Path(folder.name) / "program"
        self.file = Path(folder.name) / "a.wav"
        self.audio = bytes(range(200))
        size = len(self.audio)
        self.file.write_bytes(b"RIFF" + struct.pack("<I", 36 + size) + b"WAVEfmt " + struct.pack(
            "<IHHIIHH", 16, 1, 2, RATE, 4 * RATE, 4, 16) + b"data" + struct.pack("<I", size) +
            self.audio)

    def mended(self, *commands, intact=50):
        self.program.write_text("\n".join(["#!/bin/sh", *commands]) + "\n")
        self.program.chmod(0o755)
        return mend(self.program, self.file, self.audio, intact)

    def test_a_file_that_stays_as_it_is_is_well(self):
        self.assertIsNone(self.mended('[ "$1" = --repair ]'))

    def test_a_refusal_is_told_in_its_words(self):
        self.assertEqual(self.mended("echo not ours; exit 1"), "it cannot be repaired: not ours")

    def test_nothing_may_get_lost(self):
        self.assertEqual(self.mended('truncate -s 144 "$2"'),
                         "repaired, 25 of 50 frames play, and 0 that were not recorded")

    def test_what_is_repaired_is_whole(self):
        self.assertEqual(self.mended('printf x >>"$2"'), "repaired, it is not taken for whole")


class Reports(unittest.TestCase):
    def setUp(self):
        self.report = Report(["4 s", "stop returns"])

    def test_a_promise_that_was_kept_is_a_row_and_nothing_more(self):
        self.report.add("ext4", "wav", {"4 s": Verdict(1.5, None, True), "a": Verdict(.2, None, True),
                                        "stop returns": Verdict(0, None, True),
                                        "b": Verdict(.3, None, True)})
        self.assertEqual(str(self.report).splitlines()[2:], [
            "| filesystem | file | 4 s | stop returns | random moments, at most |",
            "|---|---|---:|---:|---:|", "| ext4 | WAV | 1.5 | 0.0 | 0.3 |"])
        self.assertEqual(self.report.status(), 0)

    def add(self, **changed):
        good = Verdict(0, None, True)
        self.report.add("XFS", "m4a", {"4 s": good, "stop returns": good, "a": good} |
                        {"4 s": Verdict(4.0, "it is gone", **changed)})

    def test_a_promise_that_was_broken_is_told_and_is_a_failure(self):
        self.add(judged=True)
        self.report.add_untried("btrfs", "not known")
        self.assertIn("Not as promised:\n  XFS, M4A, 4 s: it is gone", str(self.report))
        self.assertEqual(self.report.status(), 1)

    def test_what_was_not_judged_is_no_failure_and_no_success(self):
        self.add(judged=False)
        self.assertIn("| (4.0) |", str(self.report))
        self.assertIn("Not judged:\n  XFS, M4A, 4 s: it is gone", str(self.report))
        self.assertEqual(self.report.status(), CANNOT_TRY)

    def test_a_filesystem_that_could_not_be_tried_is_named(self):
        self.report.add_untried("btrfs", "not known")
        self.assertIn("Not judged:\n  btrfs: not known", str(self.report))
        self.assertEqual(self.report.status(), CANNOT_TRY)

    def test_what_the_program_told_wrongly_is_a_failure(self):
        good = Verdict(0, None, True)
        self.report.add("ext4", "wav", {"4 s": good, "stop returns": good, "a": good}, "too long")
        self.assertIn("  ext4, WAV: too long", str(self.report))
        self.assertEqual(self.report.status(), 1)


class Command(unittest.TestCase):
    """How it is called; the disks themselves need root."""

    def call(self, *words, **options):
        run = subprocess.run([sys.executable, COMMAND, *words], text=True, stdin=subprocess.DEVNULL,
                             stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False, **options)
        return run.returncode, run.stdout.splitlines()[-1]

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        (Path(self.folder) / "audrel-record").touch()

    def test_a_filesystem_that_it_does_not_know_is_refused(self):
        self.assertEqual(self.call("--build", self.folder, "ext5"), (
            2, 'tests/power-cut: error: "ext5" is none of ext4, XFS, btrfs'))

    def test_a_program_that_is_not_built_is_no_reason_to_skip(self):
        status, line = self.call("--build", "/nowhere")
        self.assertEqual((status, line), (
            2, "tests/power-cut: error: /nowhere/audrel-record is missing: build it first"))

    def test_what_is_missing_to_try_it_is_named(self):
        status, line = self.call("--build", self.folder, env={"PATH": self.folder})
        self.assertEqual(status, CANNOT_TRY)
        self.assertEqual(line, "tests/power-cut: this cannot be tried here: programs are missing: "
                         "install the packages btrfs-progs e2fsprogs ffmpeg mount pipewire util-linux "
                         "xfsprogs.")


if __name__ == "__main__":
    unittest.main()
