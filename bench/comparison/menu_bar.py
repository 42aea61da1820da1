"""The menu-bar program in a panel of its own."""

import subprocess
import time

from . import processes

_PROGRAM = ("io.github.audrel.Audrel", "/io/github/audrel/Audrel")


class Panel:
    """A desktop's watcher of status items, which asks nothing of them. A context manager."""

    def __init__(self, build, stack):
        self._command = [str(build / "status_watcher")]
        self._stack = stack

    def __enter__(self):
        self._process = processes.start(self._command, self._stack.environment,
                                        self._stack.folder / "panel.log", text=True,
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self._expect("ready")
        return self

    def __exit__(self, *_):
        processes.end(self._process)

    def wait_for_item(self):
        self._expect("RegisterStatusNotifierItem")

    def _expect(self, word):
        for line in self._process.stdout:
            if line.startswith(word):
                return
        raise RuntimeError((self._stack.folder / "panel.log").read_text(errors="replace"))


class Program:
    """The menu-bar program, with a home folder of its own. A context manager."""

    def __init__(self, build, stack, panel):
        self._command = [str(build / "audrel")]
        self._panel = panel
        self._environment = stack.environment | {
            "HOME": str(stack.folder), "DISPLAY": "", "WAYLAND_DISPLAY": ""}
        self.log = stack.folder / "program.log"
        self._recordings = stack.folder / "Downloads"
        self._recordings.mkdir(exist_ok=True)

    def __enter__(self):
        begin = time.perf_counter()
        self._process = processes.start(self._command, self._environment, self.log)
        self._panel.wait_for_item()
        self.ready_seconds = time.perf_counter() - begin
        return self

    def __exit__(self, *_):
        processes.end(self._process)

    @property
    def pid(self):
        return self._process.pid

    def recordings(self):
        return sorted(self._recordings.iterdir())

    def perform(self, action):
        """What an action of the desktop entry does."""
        self._call(_PROGRAM[1], "org.freedesktop.Application.ActivateAction", action, "[]", "{}")

    def open_menu(self):
        """Reports that the menu is shown, as a panel does."""
        self._call("/MenuBar", "com.canonical.dbusmenu.Event", "0", "opened", "<0>", "0")

    def _call(self, path, method, *arguments):
        subprocess.run(["gdbus", "call", "--session", "--dest", _PROGRAM[0], "--object-path", path,
                        "--method", method, *arguments], env=self._environment, check=True,
                       stdout=subprocess.DEVNULL)
