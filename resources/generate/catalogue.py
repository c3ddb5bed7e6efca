"""Every image of the store: its path, what computes it, and the order in which its channels are written.

Functions here give images as a shader reads them. The store uploads an image's bytes blue first into a texture whose
bytes count as red first, so a shader's red is the file's blue: coloured images are written with red and blue exchanged.
The one exception is fairy_tale.png, whose shader exchanges the two itself.
"""
import functools
from dataclasses import dataclass
from typing import Callable

import numpy as np

import lumas
import maps
import masks
import transitions
import trigtable

TRANSITIONS = "TransitionEffect/images"
FILTERS = "GPUImageFilter/pic"


@dataclass(frozen=True)
class Image:
    folder: str
    name: str
    compute: Callable[[], np.ndarray]
    exchanged: bool = True  # red and blue change places in the file

    @property
    def path(self) -> str:
        return f"{self.folder}/{self.name}"


MASKS = ("amaro_mask1", "amaro_mask2", "bluevintage_mask1", "calm_mask1", "calm_mask2", "rise_mask1", "rise_mask2",
         "toy_mask1", "warm_layer1")
PICTURES = ("brannan_blowout", "hudsonbackground", "toastermetal")
MAPS = {
    "amaromap": maps.amaromap,
    "brannan_contrast": maps.brannan_contrast,
    "brannan_luma": maps.brannan_luma,
    "brannan_process": maps.brannan_process,
    "brannan_screen": maps.brannan_screen,
    "brooklynCurves1": maps.brooklyn_curves1,
    "brooklynCurves2": maps.brooklyn_curves2,
    "earlybirdblowout": maps.earlybirdblowout,
    "earlybirdcurves": maps.earlybirdcurves,
    "earlybirdmap": maps.earlybirdmap,
    "earlybirdoverlaymap_new": maps.earlybirdoverlaymap_new,
    "filter_map_first": maps.filter_map_first,
    "hudsonmap": maps.hudsonmap,
    "inkwellmap": maps.inkwellmap,
    "overlaymap": maps.overlaymap,
    "toastercolorshift": maps.toastercolorshift,
    "toastercurves": maps.toastercurves,
    "toasteroverlaymapwarm": maps.toasteroverlaymapwarm,
    "toastersoftlight": maps.toastersoftlight,
    "vignettemap_new": maps.vignettemap_new,
}

IMAGES = (
    Image(TRANSITIONS, "clouds.png", transitions.clouds),
    Image(TRANSITIONS, "noise.png", transitions.noise),
    Image(TRANSITIONS, "sincosatan.png", trigtable.table),
    Image(TRANSITIONS, "checkerboard.png", transitions.checkerboard),
    *(Image(f"{TRANSITIONS}/lumas", f"{name}.png", functools.partial(lumas.luma, name)) for name in lumas.LUMAS),
    *(Image(FILTERS, f"{name}.jpg", getattr(masks, name)) for name in MASKS),
    *(Image(FILTERS, f"{name}.png", getattr(masks, name)) for name in PICTURES),
    *(Image(FILTERS, f"{name}.png", compute) for name, compute in MAPS.items()),
    Image(FILTERS, "fairy_tale.png", maps.fairy_tale, exchanged=False),
)


def as_bytes(field: np.ndarray) -> np.ndarray:
    """The picture as bytes; fields of floats are 0..1."""
    if field.dtype == np.uint8:
        return field
    return np.round(np.clip(field, 0, 1) * 255).astype(np.uint8)
