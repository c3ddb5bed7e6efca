#!/usr/bin/python3
"""Computes what the tests of the filters expect, and the photograph of the contact sheet.   figures.py

Writes bench/contact_sheet/photograph.jpg and tests/drawing/filters.png. There, pictures of 37 by 23 stand one below the
other: first a picture, then one that lies below it in the blend of two, then what a filter makes of them, 1 to 22, as a
target that was transparent keeps it: colours times alpha, and alpha squared. The images come from their files and the
curves from the engine's source.
"""
import functools

import numpy as np
from PIL import Image as Picture

from catalogue import IMAGES, as_bytes
from generate import RESOURCES, as_read
from looks import LOOKS, Inputs
from testpicture import test_picture as photograph
from tones import engine_curves

WIDTH, HEIGHT = 37, 23
OPAQUE = (2, 3)  # sunrise and sunset
PROJECT = RESOURCES.parents[1]
FIGURES = PROJECT / "tests" / "drawing" / "filters.png"
PHOTOGRAPH = PROJECT / "bench" / "contact_sheet" / "photograph.jpg"


@functools.cache
def image(name: str) -> np.ndarray:
    """An image as the engine's textures hold it, from its file, 0..1, three channels."""
    pixels = as_read(next(image for image in IMAGES if image.name == name))
    return (np.repeat(pixels[..., None], 3, axis=-1) if pixels.ndim == 2 else pixels) / 255


def test_picture() -> np.ndarray:
    """Colours without a symmetry, a hard shape, and the corners of the colour cube with the greys below them; RGBA."""
    x, y = np.meshgrid((np.arange(WIDTH) + 0.5) / WIDTH, (np.arange(HEIGHT) + 0.5) / HEIGHT)
    waves = (7 * x + 2 * y + 0.3, 3 * x - 8 * y + 0.6, 5 * y * y - 5 * x + 0.9)
    picture = np.stack([0.5 + 0.5 * np.sin(wave) for wave in waves] + [0.8 + 0.2 * np.sin(4 * x + 3 * y)], axis=-1)
    picture[np.hypot(x - 0.6, y - 0.4) < 0.15] *= (0.2, 0.9, 0.4, 1)
    for corner in range(8):
        picture[-2, corner * 4:corner * 4 + 4] = [corner & 1, corner >> 1 & 1, corner >> 2, 1]
        picture[-1, corner * 4:corner * 4 + 4] = [corner / 7] * 3 + [1]
    return np.round(picture * 255) / 255


def main() -> None:
    picture = test_picture()
    below = picture[::-1, ::-1]
    inputs = Inputs(image, engine_curves().__getitem__, HEIGHT, WIDTH)
    shown = [picture, below]
    for number, look in enumerate(LOOKS, 1):
        colour = np.clip(look(picture[..., :3], inputs), 0, 1)
        alpha = alpha_of(number, picture, below)
        shown.append(np.concatenate([colour * alpha, alpha * alpha], axis=-1))
    Picture.fromarray(as_bytes(np.vstack(shown)), "RGBA").save(FIGURES, optimize=True)
    Picture.fromarray(as_bytes(photograph())).save(PHOTOGRAPH, quality=92, subsampling=0, optimize=True)


def alpha_of(number: int, picture: np.ndarray, below: np.ndarray) -> np.ndarray:
    if number in OPAQUE:
        return np.ones((HEIGHT, WIDTH, 1))
    if number == 21:  # the zoom's alpha goes with its green
        return zoomed_alpha(picture)
    return (below if number == 22 else picture)[..., 3:]


def zoomed_alpha(picture: np.ndarray) -> np.ndarray:
    alpha = np.repeat(picture[..., 3:], 3, axis=-1)
    inputs = Inputs(image, {}.get, HEIGHT, WIDTH)
    return LOOKS[20](alpha, inputs)[..., 1:2]


if __name__ == "__main__":
    main()
