#!/usr/bin/env python3
"""Renders the pictures of the program from their sources and looks at what came out: build_pictures.py KIND ...

icon SVG ICO, picture SVG WIDTH HEIGHT BMP, tag PBM COLOUR BMP (a language's tag: the letters white on the colour).
A picture that is read back as anything else ends the build.
"""

import io
import subprocess
import sys
from pathlib import Path

from PIL import Image, ImageChops

ICON_SIZES = (16, 24, 32, 48, 64)


def render(drawing, width, height):
    size = ["-w", str(width), "-h", str(height)]
    png = subprocess.run(["rsvg-convert", *size, drawing], check=True, capture_output=True).stdout
    return Image.open(io.BytesIO(png)).convert("RGBA")


def tag(letters, colour):
    ground = Image.open(letters).convert("1")
    return Image.composite(Image.new("RGB", ground.size, colour), Image.new("RGB", ground.size, "white"), ground)


def check(made, expected):
    if made.size != expected.size or ImageChops.difference(made.convert(expected.mode), expected).getbbox():
        raise ValueError("is not what its source shows")


def save_bitmap(picture, path):
    picture.save(path, format="BMP")
    check(Image.open(path), picture)


def save_icon(pictures, path):
    pictures[-1].save(path, format="ICO", bitmap_format="bmp", append_images=pictures[:-1],
                      sizes=[picture.size for picture in pictures])
    icon = Image.open(path).ico
    for picture in pictures:
        check(icon.getimage(picture.size), picture)


def main(kind, source, *rest):
    try:
        if kind == "icon":
            save_icon([render(source, size, size) for size in ICON_SIZES], rest[0])
        elif kind == "picture":
            save_bitmap(render(source, int(rest[0]), int(rest[1])).convert("RGB"), rest[2])
        else:
            save_bitmap(tag(source, rest[0]), rest[1])
    except (OSError, ValueError, subprocess.CalledProcessError) as error:
        return f"render '{Path(rest[-1])}': {error}"
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
