"""The panels that run on Wayland, in a compositor of their desktop. It is a window that fills the
private display, so that mouse, keyboard and pictures reach it as they reach panels on X11."""

import dataclasses
import subprocess
from pathlib import Path

import panels

_LABWC = {"labwc": "labwc", "wlr-randr": "wlr-randr"}


def _start_compositor(session, *command):
    session.start(*command, stderr=subprocess.DEVNULL)
    socket = Path(session.environment["XDG_RUNTIME_DIR"]) / "wayland-0"
    session.wait_until(socket.exists, "the compositor")
    session.environment |= {"XDG_SESSION_TYPE": "wayland", "WAYLAND_DISPLAY": socket.name,
                            "GDK_BACKEND": "wayland", "QT_QPA_PLATFORM": "wayland"}


def _labwc(session):
    session.environment |= {"WLR_BACKENDS": "x11", "WLR_RENDERER": "pixman"}
    _start_compositor(session, "labwc")
    subprocess.run(["wlr-randr", "--output", "X11-1", "--custom-mode",
                    f"{session.width}x{session.height}"], env=session.environment, check=True)


def _xfce(session):
    panels.XFCE.configure(session)
    _labwc(session)


def _lxqt(session):
    panels.LXQT.configure(session)
    _labwc(session)


def _plasma(session):
    panels.PLASMA.configure(session)
    _start_compositor(session, "kwin_wayland", "--width", str(session.width),
                      "--height", str(session.height), "--no-lockscreen", "--no-global-shortcuts")


def _gnome(session):
    panels.GNOME.configure(session)
    session.environment |= {
        "XDG_SESSION_TYPE": "wayland", "GDK_BACKEND": "wayland",
        "MUTTER_DEBUG_DUMMY_MODE_SPECS": f"{session.width}x{session.height}"}


def _on_wayland(panel, packages, **changes):
    return dataclasses.replace(panel, name=f"{panel.name}-Wayland",
                               packages=panel.packages | packages, **changes)


# Untried on Debian 12, which has no Wayland for Xfce and LXQt.
ALL = () if panels.SYSTEM == "debian-12" else (
    _on_wayland(panels.XFCE, _LABWC, configure=_xfce),
    _on_wayland(panels.LXQT, _LABWC, configure=_lxqt),
    _on_wayland(panels.PLASMA, {"kwin_wayland": "kwin-wayland"}, configure=_plasma),
    _on_wayland(panels.GNOME, {}, configure=_gnome, commands=(
        ("gnome-shell", "--nested", "--wayland", "--no-x11", "--sm-disable"),)))
