"""A private desktop session: display, session bus, and a real panel with a status area. Nothing of
it is seen or heard outside, and all of it is gone with its object."""

import glob
import os
import re
import shutil
import subprocess
import tempfile
import time
from pathlib import Path

import panels
from panels import PANEL_HEIGHT

PACKAGES = {"Xvfb": "xvfb", "dbus-daemon": "dbus", "xdotool": "xdotool", "ffmpeg": "ffmpeg"}

WIDTH, HEIGHT = 720, 405  # as pictures for documents have it

_TOOLKIT = """[Settings]
gtk-theme-name=Adwaita
gtk-icon-theme-name=Adwaita
gtk-enable-animations=0
"""


def missing_packages(panel=panels.XFCE):
    """The Debian packages of the programs that a session needs and this system lacks."""
    return sorted({package for program, package in (PACKAGES | panel.packages).items()
                   if shutil.which(program) is None and not glob.glob(program)})


class PanelSession:
    """A context manager. Inside it `environment` leads programs here, and `home` is their home."""

    def __init__(self, dark=True, panel=panels.XFCE, height=HEIGHT):
        self.dark = dark
        self.width, self.height = WIDTH, height
        self._choice = panel
        self._children = []

    def __enter__(self):
        self.folder = Path(tempfile.mkdtemp(prefix="audrel-panel-"))
        try:
            self._start()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        for child in reversed(self._children):
            child.kill()
            child.wait()
        shutil.rmtree(self.folder, ignore_errors=True)

    def start(self, *command, **options):
        """Starts a program in the session, which ends it at the latest."""
        child = subprocess.Popen(command, env=self.environment, stdin=subprocess.DEVNULL, **options)
        self._children.append(child)
        return child

    def user(self, *arguments):
        """What a user does with mouse and keyboard, in xdotool's words."""
        subprocess.run(["xdotool", *map(str, arguments)], env=self.environment, check=True,
                       stdout=subprocess.DEVNULL)

    def click(self, x, y, button=1):
        self.user("mousemove", x, y, "click", button)

    def click_item(self):
        """Clicks the status area's only item."""
        self.click(WIDTH - PANEL_HEIGHT // 2, PANEL_HEIGHT // 2)

    def choose_row(self, row):
        """Clicks a row of the open menu; the first one is 0."""
        x, y = WIDTH - 200, PANEL_HEIGHT + 16 + 26 * row

        def is_selected():
            color = self.pixels(2, 2, WIDTH - 240, y + 10)[0]  # below the letters
            return max(color) - min(color) > 40

        # The icon's tool tip may lie on the menu until the pointer has come away.
        self.user("mousemove", x, y)
        self.wait_until(is_selected, "the row under the pointer")
        self.click(x, y)

    def screenshot(self, file):
        """The whole display, as a PNG."""
        self._grab(self.width, self.height, 0, 0, "-y", file)

    def pixels(self, width, height, x, y):
        """The colours of a part of the display: a list of (red, green, blue)."""
        data = self._grab(width, height, x, y, "-f", "rawvideo", "-pix_fmt", "rgb24", "-")
        return list(zip(data[0::3], data[1::3], data[2::3]))

    def item_pixels(self):
        """What the panel shows at its right end."""
        return self.pixels(PANEL_HEIGHT, PANEL_HEIGHT, WIDTH - PANEL_HEIGHT, 0)

    def _grab(self, width, height, x, y, *output):
        return subprocess.run(["ffmpeg", "-v", "error", "-f", "x11grab", "-draw_mouse", "0",
                               "-video_size", f"{width}x{height}",
                               "-i", f"{self.environment['DISPLAY']}+{x},{y}",
                               "-frames:v", "1", *map(str, output)],
                              env=self.environment, check=True, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE).stdout

    def item(self):
        """The bus name of the only registered status item; None when there is none."""
        answer = self.call("org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
                           "org.freedesktop.DBus.Properties.Get", "org.kde.StatusNotifierWatcher",
                           "RegisteredStatusNotifierItems")
        names = re.findall(r"'(:[\d.]+)[@/']", answer)
        return names[0] if len(names) == 1 else None

    def item_property(self, name):
        """A property, as text, of the only item."""
        return self.call(self.item(), "/StatusNotifierItem",
                         "org.freedesktop.DBus.Properties.Get", "org.kde.StatusNotifierItem", name)

    def menu_layout(self):
        """The program's menu as it tells it, as text."""
        return self.call(self.item(), "/MenuBar", "com.canonical.dbusmenu.GetLayout",
                         "0", "--", "-1", "[]")

    def _start(self):
        self.home = self.folder / "home"
        configuration = self.home / ".config"
        runtime = self.folder / "run"
        runtime.mkdir(mode=0o700)
        (self.home / "Downloads").mkdir(parents=True)
        (configuration / "gtk-3.0").mkdir(parents=True)
        (configuration / "gtk-3.0/settings.ini").write_text(_TOOLKIT)
        kept = {name: value for name, value in os.environ.items()
                if not name.startswith(("XDG_", "DBUS_", "PIPEWIRE_", "PULSE_", "GTK_", "WAYLAND_"))}
        self.environment = kept | {
            "HOME": str(self.home), "XDG_RUNTIME_DIR": str(runtime), "LC_ALL": "C.UTF-8",
            "XDG_CURRENT_DESKTOP": self._choice.desktop, "GDK_BACKEND": "x11", "NO_AT_BRIDGE": "1",
            "DBUS_SESSION_BUS_ADDRESS": f"unix:path={runtime}/bus",
            "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={runtime}/no-system-bus"}
        self._start_display()
        self.start("dbus-daemon", "--session", "--nofork", "--nopidfile",
                   f"--address=unix:path={runtime}/bus", stderr=subprocess.DEVNULL)
        self.wait_until((runtime / "bus").exists, "the session bus")
        self._choice.configure(self)
        for command in self._choice.commands:
            self.start(*command, stderr=subprocess.DEVNULL)
        self.wait_until(self._has_host, "the panel")

    def _start_display(self):
        display = self.start("Xvfb", "-displayfd", "1", "-screen", "0",
                             f"{self.width}x{self.height}x24", "-nolisten", "tcp", "-noreset",
                             stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        with display.stdout as answer:
            number = answer.readline().decode().strip()
        if not number:
            raise RuntimeError("The display did not start.")
        self.environment["DISPLAY"] = f":{number}"

    def _has_host(self):
        return "true" in self.call("org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
                                   "org.freedesktop.DBus.Properties.Get",
                                   "org.kde.StatusNotifierWatcher",
                                   "IsStatusNotifierHostRegistered")

    def call(self, service, path, method, *arguments):
        """A method call on the session bus; its answer as text, empty when it failed."""
        return subprocess.run(["gdbus", "call", "--session", "--dest", service, "--object-path",
                               path, "--method", method, *arguments], env=self.environment,
                              capture_output=True, text=True, check=False).stdout

    def settle(self, below=0):
        """Waits until nothing moves on the display, `below` a pixel row."""
        def look():
            return self.pixels(self.width, self.height - below, 0, below)

        shown = [None, look()]

        def is_still():
            time.sleep(0.3)
            shown[:] = shown[1], look()
            return shown[0] == shown[1]

        self.wait_until(is_still, "the display to be still")

    @staticmethod
    def wait_until(condition, what, seconds=20):
        deadline = time.monotonic() + seconds
        while not condition():
            if time.monotonic() > deadline:
                raise RuntimeError(f"Waited {seconds} s for {what} in vain.")
            time.sleep(0.05)
