"""What a benchmark needs to be there before it begins, and how it ends."""

import shutil
import signal
import sys

_PACKAGES = {"dbus-daemon": "dbus", "ffmpeg": "ffmpeg", "ffprobe": "ffmpeg",
             "gdbus": "libglib2.0-bin", "pactl": "pulseaudio-utils", "parecord": "pulseaudio-utils",
             "pipewire": "pipewire", "pipewire-pulse": "pipewire-pulse", "prlimit": "util-linux",
             "pw-link": "pipewire-bin", "pw-record": "pipewire-bin", "setpriv": "util-linux",
             "wireplumber": "wireplumber"}
STACK = ("dbus-daemon", "pipewire", "wireplumber", "pipewire-pulse", "pactl")


def check(built, programs):
    """Ends the command where a path of `built` or a name of `programs` is missing."""
    for path in built:
        if not path.is_file():
            sys.exit(f"{path} is missing: build the preset \"release\" first.")
    missing = sorted({_PACKAGES[name] for name in programs if shutil.which(name) is None})
    if missing:
        sys.exit(f"Programs are missing. Install the packages: {' '.join(missing)}")


def end_on_signals():
    """So that what was started is ended too."""
    for ending in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(ending, lambda *_: sys.exit("ended by a signal"))
