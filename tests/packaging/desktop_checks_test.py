#!/usr/bin/env python3
"""What check-desktop finds wrong with the files that desktops read."""

import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

PACKAGING = Path(__file__).resolve().parents[2] / "packaging" / "linux"
APPLICATION = "io.github.audrel.Audrel"


class DesktopChecksTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = Path(scratch.name) / "linux"
        shutil.copytree(PACKAGING, self.folder)
        self.icons = self.folder / "icons" / "hicolor"

    def replace(self, path, old, new):
        text = path.read_text(encoding="utf-8")
        self.assertIn(old, text)
        path.write_text(text.replace(old, new), encoding="utf-8")

    def check(self):
        return subprocess.run([PACKAGING / "check-desktop", self.folder], text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)

    def assert_refused(self, reason):
        result = self.check()
        self.assertEqual(result.returncode, 1, result.stdout)
        self.assertIn(reason, result.stdout)

    def test_what_is_there_is_good(self):
        result = self.check()
        self.assertEqual((result.returncode, result.stdout), (0, ""))

    def test_an_action_without_a_command_is_refused(self):
        self.replace(self.folder / f"{APPLICATION}.desktop",
                     f"Exec=gapplication action {APPLICATION} quit\n", "")
        self.assert_refused("Desktop Action quit")

    def test_even_a_hint_of_the_validator_is_heeded(self):
        self.replace(self.folder / f"{APPLICATION}.desktop", "AudioVideo;Audio;Recorder;",
                     "Recorder;")
        self.assert_refused("Recorder")

    def test_metainfo_without_a_licence_is_refused(self):
        self.replace(self.folder / f"{APPLICATION}.metainfo.xml",
                     "<metadata_license>CC0-1.0</metadata_license>", "")
        self.assert_refused("metadata-license")

    def test_metainfo_that_is_no_xml_is_refused(self):
        self.replace(self.folder / f"{APPLICATION}.metainfo.xml", "</component>", "")
        self.assert_refused("xml-markup-invalid")

    def test_a_drawing_that_is_no_xml_is_refused(self):
        self.replace(self.icons / f"scalable/status/{APPLICATION}-warning.svg", "</svg>", "")
        self.assert_refused("cannot be rendered")

    def test_a_drawing_that_is_no_svg_is_refused(self):
        self.replace(self.icons / f"scalable/status/{APPLICATION}-warning.svg", "svg", "gvs")
        self.assert_refused("cannot be rendered")

    def test_a_drawing_that_shows_nothing_is_refused(self):
        self.replace(self.icons / f"symbolic/apps/{APPLICATION}-symbolic.svg", "#2e3436", "none")
        self.assert_refused("shows nothing")

    def test_a_size_that_is_missing_is_refused(self):
        (self.icons / f"22x22/apps/{APPLICATION}.png").unlink()
        self.assert_refused(f"{APPLICATION}.png")

    def test_a_size_of_another_drawing_is_refused(self):
        self.replace(self.icons / f"scalable/apps/{APPLICATION}.svg", "#3f6fb5", "#3f6fb6")
        self.assert_refused("not what packaging/linux/icons/render makes")

    def test_a_size_that_nobody_renders_is_refused(self):
        shutil.copytree(self.icons / "48x48", self.icons / "40x40")
        self.assert_refused("40x40")


if __name__ == "__main__":
    unittest.main()
