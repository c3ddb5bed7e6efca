#!/usr/bin/python3
"""Makes the images of the graphics resource store.   generate.py [--check] [--sheet FOLDER]

Without arguments it writes every image below resources/Resources. --check reads what lies there and fails when a file is
missing or strange, a luma uneven, a pattern's borders do not meet or the trigonometric table wrong. --sheet writes a
picture of all images, as shaders see them and with their names, into FOLDER.
"""
import argparse
import io
import pathlib
import sys

import numpy as np
from PIL import Image as Picture

from catalogue import FILTERS, IMAGES, Image, as_bytes
from checks import faults_of
from sheet import contact_sheet

RESOURCES = pathlib.Path(__file__).parents[1] / "Resources"
JPEG_QUALITY = 88


def encoded(image: Image) -> bytes:
    pixels = as_bytes(image.compute())
    if pixels.ndim == 3 and image.exchanged:
        pixels = np.ascontiguousarray(pixels[..., ::-1])
    file = io.BytesIO()
    if image.name.endswith(".jpg"):
        Picture.fromarray(pixels).save(file, "JPEG", quality=JPEG_QUALITY, subsampling=0, optimize=True)
    else:
        Picture.fromarray(pixels).save(file, "PNG", optimize=True)
    return file.getvalue()


def as_read(image: Image) -> np.ndarray:
    """The image's bytes as a shader reads them, from its file."""
    pixels = np.asarray(Picture.open(RESOURCES / image.path))
    return pixels[..., ::-1] if pixels.ndim == 3 and image.exchanged else pixels


def write() -> None:
    for image in IMAGES:
        path = RESOURCES / image.path
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(encoded(image))


def check() -> list[str]:
    faults = []
    for image in IMAGES:
        path = RESOURCES / image.path
        if not path.is_file():
            faults.append(f"{image.path}: missing")
            continue
        faults += [f"{image.path}: {fault}" for fault in faults_of(image.name, as_read(image), path.stat().st_size)]
    known = {RESOURCES / image.path for image in IMAGES}
    for folder in {path.parent for path in known}:
        strangers = (path for path in folder.glob("*.*") if path.is_file() and path not in known)
        faults += [f"{path.relative_to(RESOURCES)}: nothing makes it" for path in strangers]
    return faults


def write_sheets(folder: pathlib.Path) -> None:
    folder.mkdir(parents=True, exist_ok=True)
    shown = {image: as_read(image) for image in IMAGES}
    for name, pictures in (
        ("transitions", {i.name: p for i, p in shown.items() if i.folder != FILTERS}),
        ("filters", {i.name: p for i, p in shown.items() if i.folder == FILTERS}),
    ):
        contact_sheet(pictures, columns=6, width=256, height=144, enlarge=Picture.NEAREST).save(folder / f"{name}.png")


def main() -> int:
    options = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    options.add_argument("--check", action="store_true")
    options.add_argument("--sheet", type=pathlib.Path, metavar="FOLDER")
    chosen = options.parse_args()
    if not chosen.check and not chosen.sheet:
        write()
    if chosen.sheet:
        write_sheets(chosen.sheet)
    faults = check()
    print("\n".join(faults), end="\n" if faults else "", file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
