#!/usr/bin/env python3
"""The journals in docs/transcripts agree but for what is explained, and side_by_side.py sees when
they do not."""

import dataclasses
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import side_by_side
from explanations import EXPLANATIONS, Explanation

STORY = "engine-records-a-process-as-wav"


def check(folder=None):
    """Status and what was said."""
    command = [sys.executable, side_by_side.__file__] + ([folder] if folder else [])
    result = subprocess.run(command, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                            check=False)
    return result.returncode, result.stdout


class TreeTest(unittest.TestCase):
    def test_the_journals_agree_and_the_document_is_up_to_date(self):
        self.assertEqual(check(), (0, ""))

    def test_all_that_explanations_take_is_needed(self):
        for place, explanation in enumerate(EXPLANATIONS):
            before, behind = EXPLANATIONS[:place], EXPLANATIONS[place + 1:]
            if not explanation.rewrites:
                self.assert_too_little([*before, *behind], explanation.name)
            for rewrite in explanation.rewrites:
                others = tuple(each for each in explanation.rewrites if each is not rewrite)
                less = dataclasses.replace(explanation, rewrites=others)
                self.assert_too_little([*before, less, *behind], rewrite)

    def assert_too_little(self, explanations, what_lacks):
        with self.subTest(what_lacks):
            with self.assertRaisesRegex(side_by_side.Unexplained, "nothing explains"):
                side_by_side.document(side_by_side.FOLDER, explanations)


class CopyTest(unittest.TestCase):
    """On a copy of the transcripts, changed."""

    def setUp(self):
        self.folder = Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        shutil.copytree(side_by_side.FOLDER, self.folder, dirs_exist_ok=True)

    def change(self, name, old, new):
        path = self.folder / f"{name}.txt"
        text = path.read_text(encoding="utf-8")
        self.assertIn(old, text)
        path.write_text(text.replace(old, new, 1), encoding="utf-8")

    def assert_refused(self, reason):
        status, said = check(self.folder)
        self.assertEqual(status, 1, said)
        self.assertIn(reason, said)

    def test_a_call_that_macos_leaves_out_is_told(self):
        self.change("macos-" + STORY, "    AudioHardwareDestroyProcessTap(101) -> 0\n", "")
        self.assert_refused("AudioHardwareDestroyProcessTap(101) -> status 0")

    def test_a_call_that_the_interfaces_do_not_have_is_told(self):
        self.change("macos-" + STORY, "\nstop()\n", "\nstop()\n    AudioDeviceStop(201) -> 0\n")
        self.assert_refused("of macOS: AudioDeviceStop(201) -> 0")

    def test_another_order_is_told(self):
        stop = "    AudioDeviceStop(201, ioProc 1) -> 0\n"
        destroy = "    AudioDeviceDestroyIOProcID(201, ioProc 1) -> 0\n"
        self.change("macos-" + STORY, stop + destroy, destroy + stop)
        self.assert_refused("nothing explains the difference")

    def test_a_key_that_is_left_out_is_told(self):
        self.change("macos-" + STORY, "private: Boolean true, ", "")
        self.assert_refused("AudioHardwareCreateAggregateDevice")

    def test_another_value_is_told(self):
        self.change("macos-" + STORY, "double 48000.000000", "double 44100.000000")
        self.assert_refused("double 44100.000000")

    def test_a_line_of_the_log_is_told(self):
        self.change("macos-" + STORY, "underruns=0", "underruns=1")
        self.assert_refused("underruns=1")

    def test_what_is_left_in_the_end_is_told(self):
        self.change("macos-" + STORY, "open files: 0", "open files: 1")
        self.assert_refused("open files: 1")

    def test_an_item_that_lacks_in_a_menu_is_told(self):
        self.change("macos-session", '    menu 14.addItem: "Stop Recording"', "    NSNothing")
        self.assert_refused('menu 14.addItem("Stop Recording"')

    def test_a_change_of_the_interfaces_is_told_too(self):
        self.change(STORY, "AudioDeviceStart(201", "AudioDeviceStart(202")
        self.assert_refused("of the interfaces: AudioDeviceStart(202")

    def test_a_story_without_counterpart_is_told(self):
        for name in STORY, "macos-" + STORY:
            with self.subTest(name):
                shutil.copy(self.folder / f"{name}.txt", self.folder / f"{name}-again.txt")
                self.assert_refused(f"{STORY}-again is told on one side alone")
                (self.folder / f"{name}-again.txt").unlink()

    def test_an_explanation_that_nothing_needs_is_told(self):
        unneeded = Explanation("unneeded", "Of nothing.", ((r"^NoSuchCall\(", "NoCall("),))
        with self.assertRaisesRegex(side_by_side.Unexplained, "'unneeded'"):
            side_by_side.document(self.folder, [*EXPLANATIONS, unneeded])

    def test_a_document_that_is_not_up_to_date_is_told(self):
        path = self.folder / side_by_side.DOCUMENT
        path.write_text(path.read_text(encoding="utf-8") + "\n", encoding="utf-8")
        self.assert_refused("--update")

    def test_nothing_is_written_while_a_difference_is_left(self):
        self.change("macos-" + STORY, "AudioDeviceStart(201", "AudioDeviceStart(202")
        path = self.folder / side_by_side.DOCUMENT
        before = path.read_bytes()
        status = subprocess.run([sys.executable, side_by_side.__file__, "--update", self.folder],
                                stderr=subprocess.DEVNULL, check=False).returncode
        self.assertEqual((status, path.read_bytes()), (1, before))


if __name__ == "__main__":
    unittest.main()
