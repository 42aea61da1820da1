"""One panel's trial: a user's recording from click to click, with notes on what works."""

import dataclasses
import json
import re
import subprocess

from panel_session import PANEL_HEIGHT, WIDTH
from screen_reading import Box, Picture

START_LINE, SOURCES_LINE, IDLE_LINES = 0, 1, 7  # of the idle menu
STOP_LINE, RECORDING_LINES = 1, 4  # of the menu while recording
LEFT, RIGHT = 1, 3  # mouse buttons

SOURCES_LINES = 3  # all audio, the player, and the line that asks again

DISPLAY_HEIGHT = 600  # GNOME unfolds submenus in the menu
PICTURE_HEIGHT = 240
LABEL_WIDTH = 20  # the least

NOT_REACHED = "not reached"
STEPS = ("the item appears", "its idle icon is visible", "the menu opens",
         "its submenu lists what plays now", "a click starts a recording", "the icon turns red",
         "the time runs", "a click stops the recording", "the icon is idle again",
         "the file is complete")


class Failure(Exception):
    """What did not happen, in words for the table."""


def require(condition, what):
    if not condition:
        raise Failure(what)


def is_red(color):
    """Panels may dim what they show."""
    red, green, blue = color
    return red >= 150 and red >= 3 * max(green, blue)


def works(results):
    return not any(each == NOT_REACHED or each.startswith("no:") for each in results.values())


class PanelTrial:
    def __init__(self, session, program):
        self._session = session
        self._program = program.resolve()
        self._pictures = 0

    def run(self):
        """A result for each of STEPS. After one that failed the others are not tried."""
        results = dict.fromkeys(STEPS, NOT_REACHED)
        actions = (self._item_appears, self._icon_is_visible, self._menu_opens,
                   self._submenu_lists_sources, self._click_starts, self._icon_turns_red,
                   self._time_runs, self._click_stops, self._icon_is_idle, self._file_is_complete)
        for step, action in zip(STEPS, actions, strict=True):
            try:
                results[step] = action() or "yes"
            except (Failure, RuntimeError) as failure:
                results[step] = f"no: {failure}"
                self._photograph()
                break
        return results

    def compose(self, file):
        """The upper parts of the pictures that were taken, one below the other."""
        subprocess.run(["ffmpeg", "-v", "error", "-y", "-start_number", "1",
                        "-i", self._session.folder / "%d.png",
                        "-vf", f"crop=in_w:{PICTURE_HEIGHT}:0:0,tile=1x{self._pictures}",
                        "-frames:v", "1", file], check=True, stdin=subprocess.DEVNULL)

    # The steps, in their order.

    def _item_appears(self):
        self._session.settle()
        self._session.user("key", "Escape")  # GNOME starts with an overview
        self._move_away()
        self._session.settle()
        self._bare = self._look()
        self._running = self._session.start(self._program, "--demo")
        self._session.wait_until(self._session.item, "the status item")

    def _icon_is_visible(self):
        self._session.wait_until(lambda: self._item_in(self._look()), "its icon")
        self._session.settle()
        self._item = self._item_in(self._look())
        require(self._item.bottom <= PANEL_HEIGHT, "what changed is not in the panel")
        require(self._reds() == 0, "it is red")

    def _menu_opens(self):
        self._knew_player = self._tells_of_player()
        try:
            self._button = LEFT
            self._open_menu(IDLE_LINES)
            return "by the left button"
        except RuntimeError:
            self._button = RIGHT
            self._open_menu(IDLE_LINES)
            return "by the right button only"

    def _submenu_lists_sources(self):
        require(self._tells_of_player(), "the player is not in the menu")
        self._hover(self._menu.center[0], self._lines[START_LINE])
        menu = self._look()  # with the pointer inside, where the desktop draws it
        self._hover(self._menu.center[0], self._lines[SOURCES_LINE])
        try:
            self._session.wait_until(lambda: self._beside_menu(menu), "the submenu", seconds=5)
            place = "beside the menu"
        except RuntimeError:
            self._session.user("click", LEFT)  # GNOME unfolds it
            place = "in the menu"
        self._session.settle(below=PANEL_HEIGHT)
        self._photograph()
        shown = self._look()
        unfolded = dataclasses.replace(self._menu, bottom=self._session.height)
        lines = shown.text_lines(self._beside_menu(menu) or unfolded)
        if place == "in the menu":  # whose end may be scrolled away
            require(len(lines) >= IDLE_LINES + SOURCES_LINES - 1, f"{len(lines)} lines in all")
        else:
            require(len(lines) == SOURCES_LINES, f"{len(lines)} lines")
        self._session.user("key", "Escape", "Escape")
        self._session.settle()
        return f"{place}, read already when the item came" if self._knew_player else place

    def _click_starts(self):
        self._open_menu(IDLE_LINES)
        self._choose(START_LINE)
        self._session.wait_until(self._recordings, "a recording")
        size = self._size()
        self._session.wait_until(lambda: self._size() > size, "the recording to grow")

    def _icon_turns_red(self):
        self._session.wait_until(lambda: self._reds() > 50, "a red icon")

    def _time_runs(self):
        self._session.wait_until(lambda: re.search("00:(0[3-9]|[1-5])",
                                                   self._session.item_property("ToolTip")),
                                 "three seconds")
        first = self._look()
        item = self._item_in(first)
        if item.width >= self._item.width + LABEL_WIDTH:
            self._session.wait_until(lambda: self._look().changes(first, left=item.left),
                                     "the label to change")
            self._photograph()
            return "as a label"
        self._hover(*item.center)
        self._session.wait_until(lambda: self._shows_text(first), "a label or a tooltip")
        self._photograph()
        self._move_away()
        return "as a tooltip"

    def _click_stops(self):
        self._open_menu(RECORDING_LINES)
        self._photograph()
        self._choose(STOP_LINE)
        self._session.wait_until(lambda: "'Start Recording'" in self._session.menu_layout(),
                                 "the recording to stop")

    def _icon_is_idle(self):
        self._session.wait_until(lambda: self._reds() == 0, "the icon to lose its colour")

    def _file_is_complete(self):
        recording, = self._recordings()
        answer = subprocess.run(["ffprobe", "-v", "error", "-of", "json", "-show_entries",
                                 "format=duration:stream=codec_name", recording],
                                capture_output=True, text=True, check=False)
        require(answer.returncode == 0 and not answer.stderr, answer.stderr.strip())
        facts = json.loads(answer.stdout)
        require(facts["streams"] == [{"codec_name": "aac"}], f"it holds {facts['streams']}")
        require(float(facts["format"]["duration"]) > 3, "it is too short")
        self._running.terminate()
        require(self._running.wait(20) == 0, "the program ended with an error")

    # What the user does and sees.

    def _look(self):
        return Picture(self._session.pixels(WIDTH, self._session.height, 0, 0), WIDTH)

    def _item_in(self, picture):
        # A clock may run in the middle of the panel.
        return picture.changes(self._bare, left=WIDTH * 2 // 3)

    def _photograph(self):
        self._pictures += 1
        self._session.screenshot(self._session.folder / f"{self._pictures}.png")

    def _hover(self, x, y):
        # Menus ignore the first movement: the pointer may have been where they came up.
        self._session.user("mousemove", x - 1, y, "sleep", 0.3, "mousemove", x, y,
                           "sleep", 0.3)

    def _move_away(self):
        self._session.user("mousemove", 0, self._session.height - 1)
        self._session.settle(below=PANEL_HEIGHT)

    def _reds(self):
        return sum(map(is_red, self._look().pixels(Box(0, 0, WIDTH, PANEL_HEIGHT))))

    def _open_menu(self, line_count):
        """Each line of it must be there to see."""
        self._move_away()
        closed = self._look()
        item = self._item_in(closed)
        require(item is not None, "the item has gone")
        self._hover(*item.center)
        hovered = self._look()  # with the pointer, where the desktop draws it
        self._session.user("click", self._button)
        self._session.wait_until(lambda: self._look().changes(hovered, top=PANEL_HEIGHT),
                                 "the menu", seconds=10)
        self._move_away()
        shown = self._look()
        self._menu = shown.changes(closed, top=PANEL_HEIGHT)
        require(self._menu is not None, "it does not stay open")
        self._lines = shown.text_lines(self._menu)
        require(len(self._lines) == line_count,
                f"the menu shows {len(self._lines)} lines instead of {line_count}")

    def _shows_text(self, before):
        shown = self._look()
        change = shown.changes(before, top=PANEL_HEIGHT)
        return change and shown.text_lines(change)

    def _beside_menu(self, before):
        """Where something came up at the menu's left or right; None when nothing did."""
        change = self._look().changes(before, top=PANEL_HEIGHT)
        if change and change.left < self._menu.left:
            return dataclasses.replace(change, right=self._menu.left)
        if change and change.right > self._menu.right:
            return dataclasses.replace(change, left=self._menu.right)
        return None

    def _choose(self, line):
        self._session.click(self._menu.center[0], self._lines[line])
        self._move_away()

    def _tells_of_player(self):
        return "Audrel Demo" in self._session.menu_layout()

    def _recordings(self):
        return sorted((self._session.home / "Downloads").iterdir())

    def _size(self):
        recording, = self._recordings()
        return recording.stat().st_size
