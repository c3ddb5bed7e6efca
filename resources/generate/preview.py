#!/usr/bin/python3
"""Shows the looks: renders every filter over a picture.   preview.py FOLDER [PICTURE]

Writes FOLDER/looks.png, all looks side by side, and FOLDER/look-NN-name.png for each. Without a PICTURE it takes a scene
of its own. The images come from their functions and the curves from the engine's source, so a change shows at once.
"""
import functools
import pathlib
import sys

import numpy as np
from PIL import Image

from catalogue import IMAGES, as_bytes
from looks import LOOKS, Inputs
from sheet import contact_sheet
from testpicture import test_picture
from tones import engine_curves


@functools.cache
def image(name: str) -> np.ndarray:
    """An image of the catalogue as the engine's textures hold it: in bytes' steps, 0..1, three channels."""
    pixels = as_bytes(next(image for image in IMAGES if image.name == name).compute())
    return np.repeat(pixels[..., None], 3, axis=-1) / 255 if pixels.ndim == 2 else pixels / 255


def main(arguments: list[str]) -> int:
    if len(arguments) not in (1, 2):
        print(__doc__, file=sys.stderr)
        return 2
    folder = pathlib.Path(arguments[0])
    folder.mkdir(parents=True, exist_ok=True)
    picture = np.asarray(Image.open(arguments[1]).convert("RGB")) / 255 if arguments[1:] else test_picture()
    inputs = Inputs(image, engine_curves().__getitem__, *picture.shape[:2])
    shown = {"00 none": as_bytes(picture)}
    for number, look in enumerate(LOOKS, 1):
        shown[f"{number:02} {look.__name__}"] = as_bytes(look(picture, inputs))
    for name, pixels in shown.items():
        Image.fromarray(pixels).save(folder / f"look-{name.replace(' ', '-')}.png")
    contact_sheet(shown, columns=4, width=400, height=225).save(folder / "looks.png")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
