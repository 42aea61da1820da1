"""A private audio server with all that a desktop has, which nobody else can hear."""

import os
import shutil
import subprocess
import tempfile
import time
from pathlib import Path

from . import processes

SINK = "comparison-sink"

_SINK_CONFIGURATION = f"""context.objects = [
    {{ factory = adapter
      args = {{ factory.name = support.null-audio-sink node.name = {SINK}
               media.class = Audio/Sink audio.position = "FL,FR" object.linger = true }} }}
]
"""


class AudioStack:
    """Session bus, PipeWire, WirePlumber and pipewire-pulse in a temporary folder, with one sink
    that leads nowhere. `clock` has settings of the server's that differ from its own, by the names
    that follow "default.clock.". A context manager; inside it `environment` leads clients here."""

    def __init__(self, clock=None):
        self._clock = clock or {}
        self._children = {}

    def __enter__(self):
        self.folder = Path(tempfile.mkdtemp(prefix="compare-recorders-"))
        try:
            self._start()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        for child in reversed(self._children.values()):
            processes.end(child)
        shutil.rmtree(self.folder, ignore_errors=True)

    def servers(self):
        """The process ids by name of those whose work recorders cause."""
        return {name: child.pid for name, child in self._children.items() if name != "dbus-daemon"}

    def _start(self):
        runtime = self.folder / "run"
        runtime.mkdir(mode=0o700)
        self.environment = self._make_environment(runtime)
        sinks = self.folder / "config/pipewire/pipewire.conf.d"
        sinks.mkdir(parents=True)
        (sinks / "sink.conf").write_text(_SINK_CONFIGURATION)
        settings = "".join(f" default.clock.{name} = {value}"
                           for name, value in self._clock.items())
        (sinks / "clock.conf").write_text(f"context.properties = {{{settings} }}\n")
        self._launch("dbus-daemon", "--session", "--nofork", "--nopidfile",
                     f"--address=unix:path={runtime}/bus")
        self._wait_for("dbus-daemon", (runtime / "bus").exists)
        self._launch("pipewire")
        self._wait_for("pipewire", (runtime / "pipewire-0").exists)
        self._launch("wireplumber")
        self._launch("pipewire-pulse")
        self._wait_for("pipewire-pulse", (runtime / "pulse/native").exists)
        self._wait_for("wireplumber", self._has_default_sink)

    def _make_environment(self, runtime):
        kept = {name: value for name, value in os.environ.items()
                if not name.startswith(("PIPEWIRE_", "PULSE_", "DBUS_", "XDG_", "WIREPLUMBER_"))}
        return kept | {
            "LC_ALL": "C.UTF-8",
            "XDG_RUNTIME_DIR": str(runtime),
            "XDG_CONFIG_HOME": str(self.folder / "config"),
            "XDG_STATE_HOME": str(self.folder / "state"),
            "XDG_CACHE_HOME": str(self.folder / "cache"),
            "XDG_DATA_HOME": str(self.folder / "data"),
            "DBUS_SESSION_BUS_ADDRESS": f"unix:path={runtime}/bus",
            "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={runtime}/no-system-bus",
        }

    def _launch(self, *command):
        log = self.folder / f"{command[0]}.log"
        self._children[command[0]] = processes.start(command, self.environment, log)

    def _has_default_sink(self):
        answer = subprocess.run(["pactl", "get-default-sink"], env=self.environment,
                                capture_output=True, text=True, check=False)
        return answer.stdout.strip() == SINK

    def _wait_for(self, name, is_ready):
        deadline = time.monotonic() + 10
        while not is_ready():
            if self._children[name].poll() is not None or time.monotonic() > deadline:
                messages = (self.folder / f"{name}.log").read_text(errors="replace")
                raise RuntimeError(f"{name} did not start:\n{messages}")
            time.sleep(0.05)
