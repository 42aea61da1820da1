"""The panels that a private session can have, each with a status area and nothing else in a bar at
the display's upper edge."""

import dataclasses
import platform
import subprocess
from collections.abc import Callable

PANEL_HEIGHT = 32

_RELEASE = platform.freedesktop_os_release()
SYSTEM = f"{_RELEASE['ID']}-{_RELEASE.get('VERSION_ID', 'unreleased')}"

# What differs between the releases. One that is not here is taken for the last.
if SYSTEM == "debian-12":
    _KDE_VERSION = "5"
    _LXQT_PICTURES = {}
else:
    _KDE_VERSION = "6"
    _LXQT_PICTURES = {"/usr/lib/*/qt6/plugins/iconengines/libqsvgicon.so": "qt6-svg-plugins"}

# The status area is at the panel's right end, so that its only item is there too.
_XFCE_SETTINGS = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="dark-mode" type="bool" value="{dark}"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="length" type="double" value="100"/>
      <property name="size" type="uint" value="{height}"/>
      <property name="icon-size" type="uint" value="22"/>
      <property name="plugin-ids" type="array">
        <value type="int" value="1"/>
        <value type="int" value="2"/>
      </property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="separator">
      <property name="expand" type="bool" value="true"/>
      <property name="style" type="uint" value="0"/>
    </property>
    <property name="plugin-2" type="string" value="systray"/>
  </property>
</channel>
"""

_LXQT_SETTINGS = """[General]
panels=panel1

[panel1]
plugins=spacer, statusnotifier
position=Top
panelSize={height}
iconSize=22
desktop=0

[spacer]
type=spacer
expandable=true

[statusnotifier]
type=statusnotifier
alignment=Right
"""

_MATE_SETTINGS = [
    ("org.mate.panel", "toplevel-id-list", "['top']"),
    ("org.mate.panel", "object-id-list", "['area']"),
    ("org.mate.panel.toplevel:/org/mate/panel/toplevels/top/", "orientation", "top"),
    ("org.mate.panel.toplevel:/org/mate/panel/toplevels/top/", "expand", "true"),
    ("org.mate.panel.toplevel:/org/mate/panel/toplevels/top/", "size", str(PANEL_HEIGHT)),
    ("org.mate.panel.object:/org/mate/panel/objects/area/", "object-type", "applet"),
    ("org.mate.panel.object:/org/mate/panel/objects/area/", "applet-iid",
     "NotificationAreaAppletFactory::NotificationArea"),
    ("org.mate.panel.object:/org/mate/panel/objects/area/", "toplevel-id", "top"),
    ("org.mate.panel.object:/org/mate/panel/objects/area/", "panel-right-stick", "true"),
]

_GNOME_SETTINGS = [
    ("org.gnome.shell", "enabled-extensions", "['ubuntu-appindicators@ubuntu.com']"),
    ("org.gnome.shell", "welcome-dialog-last-shown-version", "99"),
    ("org.gnome.desktop.interface", "enable-animations", "false"),
    ("org.gnome.desktop.interface", "text-scaling-factor", "0.75"),  # submenus unfold in the menu
    ("org.gnome.desktop.notifications", "show-banners", "false"),
    ("org.gnome.desktop.background", "picture-options", "none"),
    ("org.gnome.desktop.background", "primary-color", "#000000"),
]

_PLASMA_ACTIVITY = "36470935-d009-4127-a32e-5e782c82b52c"

_PLASMA_ACTIVITIES = f"""[activities]
{_PLASMA_ACTIVITY}=Default

[main]
currentActivity={_PLASMA_ACTIVITY}
"""

_PLASMA_VIEWS = f"""[PlasmaViews][Panel 2]
floating=0

[PlasmaViews][Panel 2][Defaults]
thickness={PANEL_HEIGHT}
"""

# Its area shows status items alone: all that it could show besides is known and not chosen.
_PLASMA_SETTINGS = f"""[Containments][1]
activityId={_PLASMA_ACTIVITY}
formfactor=0
lastScreen=0
plugin=org.kde.desktopcontainment
wallpaperplugin=org.kde.color

[Containments][1][Wallpaper][org.kde.color][General]
Color=0,0,0

[Containments][2]
formfactor=2
lastScreen=0
location=3
plugin=org.kde.panel

[Containments][2][Applets][3]
plugin=org.kde.plasma.panelspacer

[Containments][2][Applets][4]
plugin=org.kde.plasma.systemtray

[Containments][2][Applets][4][Configuration]
SystrayContainmentId=5

[Containments][2][General]
AppletOrder=3;4

[Containments][5]
formfactor=2
lastScreen=0
location=3
plugin=org.kde.plasma.private.systemtray

[Containments][5][General]
extraItems=
knownItems={",".join("org.kde.plasma." + name for name in (
    "battery", "clipboard", "devicenotifier", "keyboardindicator", "keyboardlayout",
    "manage-inputmethod", "mediacontroller", "notifications"))}
"""


def _write(file, text):
    file.parent.mkdir(parents=True, exist_ok=True)
    file.write_text(text)


def _apply(settings, session):
    for setting in settings:
        subprocess.run(["gsettings", "set", *setting], env=session.environment, check=True)


def _xfce(session):
    _write(session.home / ".config/xfce4/xfconf/xfce-perchannel-xml/xfce4-panel.xml",
           _XFCE_SETTINGS.format(dark=str(session.dark).lower(), height=PANEL_HEIGHT))


def _lxqt(session):
    _write(session.home / ".config/lxqt/panel.conf", _LXQT_SETTINGS.format(height=PANEL_HEIGHT))


def _mate(session):
    # As the desktop's settings daemon has it. Otherwise a label takes the icon's place.
    with open(session.home / ".config/gtk-3.0/settings.ini", "a", encoding="utf-8") as toolkit:
        toolkit.write("gtk-button-images=1\n")
    _apply(_MATE_SETTINGS, session)


def _gnome(session):
    # It wants a system bus, and nothing that is on one.
    session.environment |= {
        "XDG_SESSION_TYPE": "x11",
        "DBUS_SYSTEM_BUS_ADDRESS": session.environment["DBUS_SESSION_BUS_ADDRESS"]}
    _apply(_GNOME_SETTINGS, session)


def _plasma(session):
    session.environment |= {"KDE_FULL_SESSION": "true", "KDE_SESSION_VERSION": _KDE_VERSION,
                            "QT_QUICK_BACKEND": "software"}
    configuration = session.home / ".config"
    _write(configuration / "kactivitymanagerdrc", _PLASMA_ACTIVITIES)
    _write(configuration / "plasmashellrc", _PLASMA_VIEWS)
    _write(configuration / "plasma-org.kde.plasma.desktop-appletsrc", _PLASMA_SETTINGS)


@dataclasses.dataclass(frozen=True)
class Panel:
    """`configure` is called with the session, whose bus is there already."""
    name: str
    packages: dict[str, str]  # a program, or a path, and its Debian package; the panel's first
    desktop: str  # XDG_CURRENT_DESKTOP
    commands: tuple[tuple[str, ...], ...]  # the panel's own is the last one
    configure: Callable


XFCE = Panel("Xfce", {"xfce4-panel": "xfce4-panel"}, "XFCE",
             (("xfce4-panel", "--disable-wm-check"),), _xfce)
MATE = Panel("MATE", {"mate-panel": "mate-panel"}, "MATE", (("mate-panel",),), _mate)
LXQT = Panel("LXQt", {"lxqt-panel": "lxqt-panel"} | _LXQT_PICTURES, "LXQt",
             (("lxqt-panel",),), _lxqt)
_KDED = f"kded{_KDE_VERSION}"
PLASMA = Panel("Plasma", {"plasmashell": "plasma-workspace", _KDED: _KDED,
                          "/usr/share/plasma/plasmoids/org.kde.panel": "plasma-desktop"}, "KDE",
               ((_KDED,), ("plasmashell", "--no-respawn")), _plasma)
GNOME = Panel("GNOME", {"gnome-shell": "gnome-shell",
                        "/usr/share/gnome-shell/extensions/ubuntu-appindicators@ubuntu.com":
                        "gnome-shell-extension-appindicator"}, "GNOME",
              (("gnome-shell", "--x11", "--sm-disable"),), _gnome)
ALL = (XFCE, MATE, LXQT, PLASMA, GNOME)
