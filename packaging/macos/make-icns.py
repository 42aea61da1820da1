#!/usr/bin/env python3
"""Joins PNGs to an icon file of macOS: make-icns.py OUT PNG...

Each size stands for itself, and for half its size on a Retina display.
"""
import struct
import sys

ENTRIES = {
    16: ["icp4"],
    32: ["icp5", "ic11"],
    64: ["ic12"],
    128: ["ic07"],
    256: ["ic08", "ic13"],
    512: ["ic09", "ic14"],
    1024: ["ic10"],
}


def width_and_height(png):
    if png[:8] != b"\x89PNG\r\n\x1a\n":
        sys.exit("not a PNG")
    return struct.unpack(">II", png[16:24])


def main():
    out, *paths = sys.argv[1:]
    images = {}
    for path in paths:
        with open(path, "rb") as file:
            png = file.read()
        width, height = width_and_height(png)
        if width != height or width not in ENTRIES:
            sys.exit(f"{path} is {width} x {height}")
        images[width] = png
    missing = sorted(set(ENTRIES) - set(images))
    if missing:
        sys.exit(f"sizes missing: {missing}")
    body = b"".join(
        kind.encode() + struct.pack(">I", 8 + len(images[size])) + images[size]
        for size, kinds in ENTRIES.items()
        for kind in kinds
    )
    with open(out, "wb") as file:
        file.write(b"icns" + struct.pack(">I", 8 + len(body)) + body)


main()
