"""What must hold of the images, whoever made them. Each check gives the faults it finds, in words."""
import numpy as np

import trigtable
from fields import sample
from lumas import LUMAS

LARGEST_FILE = 120 * 1024  # bytes
AREA_ERROR = 1.05 / 256    # of the picture: how far what a threshold uncovers may lie from the threshold
DIRECTION_ERROR = 0.02     # radians, for a direction that goes through the trigonometric table and back


def even_levels(pixels: np.ndarray) -> list[str]:
    """A threshold that rises evenly must uncover evenly, from the first level to the last."""
    if pixels.ndim == 3:
        return [fault for channel in (0, 1) for fault in even_levels(pixels[..., channel])]
    uncovered = np.cumsum(np.bincount(pixels.ravel(), minlength=256)) / pixels.size
    worst = np.abs(uncovered - np.arange(1, 257) / 256).max()
    faults = [f"levels are uneven: {100 * worst:.1f} % of the area off"] if worst > AREA_ERROR else []
    if pixels.min() > 1 or pixels.max() < 254:
        faults.append(f"uses the levels {pixels.min()} to {pixels.max()} only")
    return faults


def tiles(pixels: np.ndarray) -> list[str]:
    """Across the border the picture must change no more than it does inside."""
    faults = []
    for axis, name in ((0, "top and bottom"), (1, "left and right")):
        steps = np.abs(np.diff(pixels.astype(int), axis=axis))
        seam = np.abs(np.take(pixels, 0, axis).astype(int) - np.take(pixels, -1, axis))
        if seam.mean() > 1.25 * steps.mean():
            faults.append(f"{name} do not meet: a step of {seam.mean():.1f} against {steps.mean():.1f} inside")
    return faults


def is_fine_grain(pixels: np.ndarray) -> list[str]:
    """Of grain with few clumps, little is left when 8 by 8 pixels are averaged: of white noise like this 13 levels.
    Readings between the grains must be evenly spread."""
    blocks = pixels.reshape(pixels.shape[0] // 8, 8, -1, 8).mean(axis=(1, 3))
    faults = [f"clumps: blocks deviate by {blocks.std():.1f} levels"] if blocks.std() > 8 else []
    u, v = np.random.default_rng(0).random((2, 400, 400))
    readings = np.sort(sample(pixels[..., None] / 255, u, v), axis=None)
    worst = np.abs(readings - np.linspace(0, 1, readings.size)).max()
    return faults + ([f"readings are uneven: {100 * worst:.1f} % off"] if worst > 0.06 else [])


def has_ragged_edge(pixels: np.ndarray) -> list[str]:
    """The first fifth of row 0 is read as the edge of a falling picture."""
    edge = pixels[0, :pixels.shape[1] // 5, 0].astype(int)
    span = edge.max() - edge.min()
    return [] if span > 120 else [f"the first fifth of row 0 spans {span} levels only"]


def is_trig_table(pixels: np.ndarray) -> list[str]:
    error = trigtable.direction_error(pixels)
    return [f"a direction comes back {error:.3f} off"] if error > DIRECTION_ERROR else []


def is_uneven_edge(pixels: np.ndarray) -> list[str]:
    """Row 0 is read as the edge of flowing paint: it must have drips and gaps of differing length."""
    edge = pixels[0].astype(int)
    turns = int((np.diff(np.sign(np.diff(edge)[np.diff(edge) != 0])) != 0).sum())
    return [] if turns >= 8 and edge.max() - edge.min() > 120 else [f"row 0 is even: {turns} turns"]


def is_rising_map(pixels: np.ndarray) -> list[str]:
    """A one-row map must not turn a gradient back."""
    return ["a curve falls"] if (np.diff(pixels[0].astype(int), axis=0) < 0).any() else []


def is_overlay_map(pixels: np.ndarray) -> list[str]:
    """An overlay map must not turn a gradient of the picture (downward in it) back."""
    return ["a column falls"] if (np.diff(pixels.astype(int), axis=0) < 0).any() else []


def is_cube(pixels: np.ndarray) -> list[str]:
    """8 by 8 tiles of 64 by 64: neither in a tile nor from tile to tile may colours jump."""
    cube = pixels.reshape(8, 64, 8, 64, 3).transpose(0, 2, 1, 3, 4).reshape(64, 64, 64, 3).astype(int)
    jump = max(np.abs(np.diff(cube, axis=axis)).max() for axis in range(3))
    return [f"jumps by {jump} levels between neighbours"] if jump > 16 else []


ONE_ROW_MAPS = (
    "amaromap", "brannan_contrast", "brannan_luma", "brannan_process", "brannan_screen", "brooklynCurves1",
    "brooklynCurves2", "earlybirdblowout", "earlybirdcurves", "earlybirdmap", "hudsonmap", "inkwellmap",
    "toastercolorshift", "toastercurves")
OVERLAY_MAPS = (
    "earlybirdoverlaymap_new", "filter_map_first", "overlaymap", "toasteroverlaymapwarm", "toastersoftlight",
    "vignettemap_new")

# By name: height and width, and the checks.
EXPECTED = {
    "clouds.png": ((256, 256), (even_levels, tiles, has_ragged_edge)),
    "noise.png": ((256, 256), (tiles, is_fine_grain)),
    "sincosatan.png": ((trigtable.SIZE, trigtable.SIZE), (is_trig_table,)),
    "checkerboard.png": ((256, 256), (is_uneven_edge,)),
    "fairy_tale.png": ((512, 512), (is_cube,)),
    **{f"{name}.png": ((512, 512), (even_levels,)) for name in LUMAS},
    **{f"{name}.png": ((256, 256), (is_overlay_map,)) for name in OVERLAY_MAPS},
    **{f"{name}.png": ((1, 256), (is_rising_map,)) for name in ONE_ROW_MAPS},
}
GREY = {"noise.png", "checkerboard.png", "overlaymap.png", "toastersoftlight.png", *(f"{name}.png" for name in LUMAS)}


def faults_of(name: str, pixels: np.ndarray, file_size: int) -> list[str]:
    """The faults of an image, given as a shader reads it."""
    faults = [f"takes {file_size} bytes"] if file_size > LARGEST_FILE else []
    if pixels.max() - pixels.min() < 20:
        faults.append("shows nothing")
    if name not in EXPECTED:
        return faults
    size, checks = EXPECTED[name]
    shape = size if name in GREY else (*size, 3)
    if pixels.shape != shape:
        return faults + [f"has the shape {pixels.shape}, not {shape}"]
    return faults + [fault for check in checks for fault in check(pixels)]
