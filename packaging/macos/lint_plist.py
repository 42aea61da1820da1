#!/usr/bin/env python3
"""Says what is wrong with the Info.plist of Audrel.app; nothing, and status 0, when it is right.

lint_plist.py FILE VERSION MINIMUM_SYSTEM
"""
import base64
import binascii
import plistlib
import re
import sys

REQUIRED = {
    "CFBundleDevelopmentRegion": str,
    "CFBundleExecutable": str,
    "CFBundleIconFile": str,
    "CFBundleIdentifier": str,
    "CFBundleInfoDictionaryVersion": str,
    "CFBundleName": str,
    "CFBundlePackageType": str,
    "CFBundleShortVersionString": str,
    "CFBundleSupportedPlatforms": list,
    "CFBundleVersion": str,
    "LSApplicationCategoryType": str,
    "LSMinimumSystemVersion": str,
    "LSUIElement": bool,
    "NSAudioCaptureUsageDescription": str,
    "NSDownloadsFolderUsageDescription": str,
    "NSHighResolutionCapable": bool,
    "NSPrincipalClass": str,
}
# Both or neither: without a feed the updater reports an error at every start.
UPDATER = {"SUFeedURL": str, "SUPublicEDKey": str}


def complaints(plist, version, minimum_system):
    expected = dict(REQUIRED)
    if any(key in plist for key in UPDATER):
        expected.update(UPDATER)
    for key, kind in expected.items():
        if key not in plist:
            yield f"{key} is missing"
        elif type(plist[key]) is not kind:
            yield f"{key} is a {type(plist[key]).__name__}, not a {kind.__name__}"
        elif kind is str and not plist[key].strip():
            yield f"{key} is empty"
    for key in plist:
        if key not in expected:
            yield f"{key} is unknown, or has no place here"

    exact = {
        "CFBundleExecutable": "Audrel",
        "CFBundleIdentifier": "io.github.audrel.Audrel",
        "CFBundleInfoDictionaryVersion": "6.0",
        "CFBundlePackageType": "APPL",
        "CFBundleShortVersionString": version,
        "CFBundleVersion": version,
        "LSMinimumSystemVersion": minimum_system,
        "LSUIElement": True,
        "NSPrincipalClass": "NSApplication",
    }
    for key, value in exact.items():
        if key in plist and plist[key] != value:
            yield f"{key} is {plist[key]!r}, not {value!r}"
    if not re.fullmatch(r"\d+(\.\d+){0,2}", version):
        yield f"the version {version!r} is not one to three numbers"
    if not str(plist.get("SUFeedURL", "https://")).startswith("https://"):
        yield "SUFeedURL is not fetched by https"
    if "SUPublicEDKey" in plist and not is_ed25519_key(plist["SUPublicEDKey"]):
        yield "SUPublicEDKey is not 32 bytes in base 64"


def is_ed25519_key(text):
    try:
        return len(base64.b64decode(text, validate=True)) == 32
    except (binascii.Error, TypeError, ValueError):
        return False


def main():
    path, version, minimum_system = sys.argv[1:]
    try:
        with open(path, "rb") as file:
            plist = plistlib.load(file)
    except Exception as error:  # the parser's own, whichever it is
        sys.exit(f"{path} is no property list: {error}")
    found = list(complaints(plist, version, minimum_system))
    if found:
        sys.exit("\n".join(found))


if __name__ == "__main__":
    main()
