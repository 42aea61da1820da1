"""The menu-bar program in a real panel: what a user sees and does, from click to click."""

import argparse
import json
import subprocess
import sys
import unittest

import panel_session
from panel_session import PANEL_HEIGHT, WIDTH, PanelSession

PROGRAM = None

RED = (0xE0, 0x1B, 0x24)


def is_red(color):
    return all(abs(one - other) <= 12 for one, other in zip(color, RED))


def facts_of(file):
    answer = subprocess.run(["ffprobe", "-v", "error", "-of", "json", "-show_entries",
                             "format=duration:stream=codec_name,channels", str(file)],
                            capture_output=True, text=True, check=True).stdout
    return json.loads(answer)


class PanelTest(unittest.TestCase):
    def setUp(self):
        self.assertEqual(panel_session.missing_packages(), [])
        self.session = self.enterContext(PanelSession())
        self.bare = self.session.item_pixels()
        self.program = self.session.start(PROGRAM, "--demo")
        self.session.wait_until(self.session.item, "the status item")
        self.session.wait_until(lambda: self.session.item_pixels() != self.bare, "its icon")

    def recordings(self):
        return sorted((self.session.home / "Downloads").iterdir())

    def open_menu(self):
        def is_open():
            return len(set(self.session.pixels(200, 40, WIDTH - 300, PANEL_HEIGHT + 4))) > 3

        self.assertFalse(is_open())
        self.session.click_item()
        self.session.wait_until(is_open, "the menu")

    def reds(self):
        return sum(map(is_red, self.session.item_pixels()))

    def test_a_click_starts_and_a_click_stops(self):
        self.assertEqual(self.reds(), 0)
        self.assertNotIn("Audrel Demo", self.session.menu_layout())
        self.open_menu()
        self.session.wait_until(lambda: "Audrel Demo" in self.session.menu_layout(),
                                "the player in the opened menu")
        self.session.choose_row(0)
        self.session.wait_until(self.recordings, "a recording")
        self.assertIn("'Stop Recording'", self.session.menu_layout())
        self.session.wait_until(lambda: self.reds() > 50, "the icon to turn red")
        self.session.wait_until(lambda: "00:03" in self.session.item_property("ToolTip"),
                                "the time to run")
        self.open_menu()
        self.session.choose_row(1)
        self.session.wait_until(lambda: self.reds() == 0, "the icon to be idle again")
        self.assertIn("'Start Recording'", self.session.menu_layout())
        recording, = self.recordings()
        facts = facts_of(recording)
        self.assertEqual(facts["streams"], [{"codec_name": "aac", "channels": 2}])
        self.assertGreater(float(facts["format"]["duration"]), 3)


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--program", required=True, help="the menu-bar program")
    arguments, rest = parser.parse_known_args()
    PROGRAM = arguments.program
    unittest.main(argv=[sys.argv[0], *rest], verbosity=2)
