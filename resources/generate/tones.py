"""Tone curves through a few control points, and the curve tables that the engine's drawing code describes by them."""
import pathlib
import re

import numpy as np

CURVE_TABLE = pathlib.Path(__file__).parents[2] / "impl" / "drawing" / "FilterCurves.cpp"
CURVE_LINE = re.compile(r"\{(\d+), (\d), (Red|Green|Blue|Alpha|Rgb), \{(.*?)\}\},")
CHANNELS = {"Red": [0], "Green": [1], "Blue": [2], "Alpha": [3], "Rgb": [0, 1, 2]}


def monotone(points, x: np.ndarray) -> np.ndarray:
    """The cubic through rising (x, y) points that never overshoots them; level outside. Fritsch and Carlson, 1980."""
    px, py = np.asarray(points, float).T
    width = np.diff(px)
    secant = np.diff(py) / width
    slope = np.concatenate(([secant[0]], (secant[:-1] + secant[1:]) / 2, [secant[-1]]))
    for i, s in enumerate(secant):
        length = np.hypot(slope[i], slope[i + 1])
        if length > 3 * s:  # as multiples of the segment's own slope they stay within a circle of radius 3
            slope[i:i + 2] *= 3 * s / length
    x = np.clip(x, px[0], px[-1])
    i = np.clip(np.searchsorted(px, x, side="right") - 1, 0, len(secant) - 1)
    t = (x - px[i]) / width[i]
    return ((1 + 2 * t) * (1 - t) ** 2 * py[i] + t * (1 - t) ** 2 * width[i] * slope[i]
            + t * t * (3 - 2 * t) * py[i + 1] + t * t * (t - 1) * width[i] * slope[i + 1])


def tone(*points) -> np.ndarray:
    """A curve as 256 values 0..1; the points as levels 0..255."""
    return np.clip(monotone(points, np.arange(256)), 0, 255) / 255


def tone_row(red, green, blue) -> np.ndarray:
    """A map of one row, (1, 256, 3): each channel's curve in its own channel."""
    return np.stack([red, green, blue], axis=-1)[np.newaxis]


def engine_curves(path: pathlib.Path = CURVE_TABLE) -> dict[int, np.ndarray]:
    """The curve textures by slot, (rows, 256, 4) values 0..1, read from the table in the engine's source."""
    lines = CURVE_LINE.findall(path.read_text())
    if not lines:
        raise ValueError(f"{path}: no curve in it; does its table still have one curve on a line?")
    rows = {}
    for slot, row, *_ in lines:
        rows[int(slot)] = max(rows.get(int(slot), 0), int(row) + 1)
    identity = np.tile(np.arange(256)[:, None] / 255, 4)
    identity[:, 3] = 1
    textures = {slot: np.tile(identity, (count, 1, 1)) for slot, count in rows.items()}
    for slot, row, channels, text in lines:
        points = [(float(x), float(y)) for x, y in re.findall(r"\{(\d+), (\d+)\}", text)]
        for channel in CHANNELS[channels]:
            textures[int(slot)][int(row), :, channel] = np.round(tone(*points) * 255) / 255
    return textures
