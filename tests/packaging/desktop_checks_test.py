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

    def test_a_file_with_a_fault_is_refused(self):
        warning = f"icons/hicolor/scalable/status/{APPLICATION}-warning.svg"
        for fault, name, old, new, reason in (
                ("an action without a command", f"{APPLICATION}.desktop",
                 f"Exec=gapplication action {APPLICATION} quit\n", "", "Desktop Action quit"),
                ("what the validator only hints at", f"{APPLICATION}.desktop",
                 "AudioVideo;Audio;Recorder;", "Recorder;", "Recorder"),
                ("metainfo without a licence", f"{APPLICATION}.metainfo.xml",
                 "<metadata_license>CC0-1.0</metadata_license>", "", "metadata-license"),
                ("metainfo that is no XML", f"{APPLICATION}.metainfo.xml", "</component>", "",
                 "xml-markup-invalid"),
                ("a drawing that is no XML", warning, "</svg>", "", "cannot be rendered"),
                ("a drawing that is no SVG", warning, "svg", "gvs", "cannot be rendered"),
                ("a drawing that shows nothing",
                 f"icons/hicolor/symbolic/apps/{APPLICATION}-symbolic.svg", "#2e3436", "none",
                 "shows nothing"),
                ("a drawing that the sizes are not of",
                 f"icons/hicolor/scalable/apps/{APPLICATION}.svg", "#3f6fb5", "#3f6fb6",
                 "not what packaging/linux/icons/render makes")):
            with self.subTest(fault):
                path = self.folder / name
                good = path.read_text(encoding="utf-8")
                self.assertIn(old, good)
                path.write_text(good.replace(old, new), encoding="utf-8")
                self.assert_refused(reason)
                path.write_text(good, encoding="utf-8")

    def test_a_size_that_is_missing_is_refused(self):
        (self.icons / f"22x22/apps/{APPLICATION}.png").unlink()
        self.assert_refused(f"{APPLICATION}.png")

    def test_a_size_that_nobody_renders_is_refused(self):
        shutil.copytree(self.icons / "48x48", self.icons / "40x40")
        self.assert_refused("40x40")


if __name__ == "__main__":
    unittest.main()
