#!/usr/bin/env python3
"""Renders the installation diagram in five languages from Diagram.svg and labels.txt, which lie beside this script.

A line of labels.txt is a label's name and its text in each language, with bars between them; "@Name@" stands for it in
the drawing. A label that lacks, is empty or is not used ends the build here, since nothing later would notice.
"""

import argparse
import re
import struct
import subprocess
import sys
from pathlib import Path
from xml.sax.saxutils import escape

# The languages in the order of their columns, with the name of the picture.
PICTURES = {
    "pol": "DiagramPolish",
    "ang": "DiagramEnglish",
    "rus": "DiagramRussian",
    "lit": "DiagramLithuanian",
    "cs": "DiagramCzech",
}
WIDTH, HEIGHT, DEPTH = 961, 636, 8
PLACE = re.compile(r"@(\w+)@")


def read_labels(path, errors):
    """Returns the texts by name, each a list in the order of PICTURES; adds to errors what is wrong with the file."""
    labels = {}
    lines = path.read_text(encoding="utf-8").splitlines()
    header = ["name", *PICTURES]
    for number, line in enumerate(lines, start=1):
        fields = [field.strip() for field in line.split("|")]
        place = f"read '{path}:{number}'"
        if number == 1:
            if fields != header:
                errors.append(f"{place}: the columns are not {' | '.join(header)}")
        elif len(fields) != len(header):
            errors.append(f"{place}: {len(fields)} fields, {len(header)} expected")
        elif "" in fields:
            errors.append(f"{place}: {header[fields.index('')]} is empty")
        elif fields[0] in labels:
            errors.append(f"{place}: '{fields[0]}' is there twice")
        else:
            labels[fields[0]] = fields[1:]
    return labels


def check_places(drawing, labels, errors):
    """Adds to errors every label that only one of the two files has."""
    places = set(PLACE.findall(drawing))
    errors.extend(f"fill '@{name}@': no such label" for name in sorted(places - labels.keys()))
    errors.extend(f"fill '{name}': the drawing does not use this label" for name in sorted(labels.keys() - places))
    if "@" in PLACE.sub("", drawing):
        errors.append("fill '@': one stands alone in the drawing")


def render(drawing, bitmap, rsvg_convert, image_magick):
    """Renders a filled drawing. The colours are few and flat, so none is mixed from dots."""
    png = bitmap.with_suffix(".png")
    size = ["-w", str(WIDTH), "-h", str(HEIGHT)]
    subprocess.run([rsvg_convert, *size, "-o", png], input=drawing.encode(), check=True)
    palette = ["-alpha", "off", "+dither", "-colors", "256", "-type", "Palette", "-compress", "None"]
    subprocess.run([image_magick, png, *palette, f"BMP3:{bitmap}"], check=True)


def check_bitmap(path, errors):
    """Adds to errors a bitmap whose header has not the size and depth that the page counts on."""
    width, height, _, depth = struct.unpack_from("<iiHH", path.read_bytes(), 18)
    if (width, height, depth) != (WIDTH, HEIGHT, DEPTH):
        errors.append(f"render '{path}': {width}x{height}, {depth} bits; {WIDTH}x{HEIGHT}, {DEPTH} bits expected")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("target", type=Path, help="folder for the bitmaps")
    parser.add_argument("--rsvg-convert", default="rsvg-convert")
    parser.add_argument("--image-magick", default="convert")
    arguments = parser.parse_args()

    errors = []
    source = Path(__file__).parent
    drawing = (source / "Diagram.svg").read_text(encoding="utf-8")
    labels = read_labels(source / "labels.txt", errors)
    check_places(drawing, labels, errors)
    if not errors:
        for column, picture in enumerate(PICTURES.values()):
            bitmap = arguments.target / f"{picture}.bmp"
            filled = PLACE.sub(lambda place: escape(labels[place[1]][column]), drawing)
            try:
                render(filled, bitmap, arguments.rsvg_convert, arguments.image_magick)
                check_bitmap(bitmap, errors)
            except (OSError, subprocess.CalledProcessError) as error:
                errors.append(f"render '{bitmap}': {error}")
    for error in errors:
        print(error, file=sys.stderr)
    return 1 if errors else 0


if __name__ == "__main__":
    sys.exit(main())
