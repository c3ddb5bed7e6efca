"""The 32 luma images: where a pixel is dark, the new picture comes first.

Each function gives a field whose order alone counts; `luma` gives every level the same area. "h" in a name is what moves
or lies horizontally, "v" vertically; a corner is where the new picture begins, or the corner that a diagonal runs from.
"""
import numpy as np

from fields import PICTURE_ASPECT, centred, equalise, fraction, grid, to_unit, triangle, wave_noise

SIZE = 512


def turn(x, y):
    """The angle clockwise from twelve o'clock, 0..1."""
    return fraction(np.arctan2(x, -y) / (2 * np.pi))


def cells(columns, rows):
    """Coordinates inside a grid's cells, -1..1, and the numbers of column and row."""
    x, y = grid(SIZE)
    u, v = x * columns, y * rows
    return 2 * fraction(u) - 1, 2 * fraction(v) - 1, np.floor(u), np.floor(v)


def blinds():
    """Eight slats that lie horizontally; each opens a little after the one above."""
    _, y = grid(SIZE)
    return fraction(y * 8) + 0.25 * y


def burst():
    x, y = centred(SIZE)
    rays = triangle(turn(x, y) * 14)
    return np.hypot(x, y) * (1 + 1.1 * rays)


def checkerboard_small():
    """The light squares of the board wipe from the left, their edges a little aslant, then the dark ones."""
    u, v, column, row = cells(16, 9)
    return (column + row) % 2 + to_unit(u + 0.3 * v)


def circles():
    u, v, _, _ = cells(7, 4)
    return np.hypot(u * PICTURE_ASPECT * 4 / 7, v)


def clock():
    return turn(*centred(SIZE))


def cloud():
    return wave_noise(SIZE, seed=94, falloff=2.1, longest=2, shortest=40, stretch=0.7)


def curtain():
    """Two curtains drawn apart and gathered at the top, their hems in folds."""
    x, y = grid(SIZE)
    side = np.abs(2 * x - 1)
    drape = 0.9 * (1 - y) ** 1.6
    folds = 0.035 * y * np.sin(2 * np.pi * (9 * side ** 0.8 - 0.6 * y))
    return side + drape + folds


def fan():
    """A hand fan that opens to both sides above the bottom edge, its sticks ahead of its paper."""
    x, y = centred(SIZE)
    angle = np.abs(np.arctan2(x, 1.15 - y)) / np.pi
    return angle + 0.028 * triangle(angle * 24)


def iris():
    """Eight blades that turn while they open."""
    x, y = centred(SIZE)
    radius, angle = np.hypot(x, y), np.arctan2(y, x) + 0.35 * np.hypot(x, y)
    sector = 2 * np.pi / 8
    return radius * np.cos((angle % sector) - sector / 2)


def parallel_zigzag(along, across):
    return fraction(along * 4 + 0.5 * triangle(across * 4)) + 0.15 * along


def zigzag(along, across, depth):
    return along + depth * triangle(across * 6)


def spiral():
    """An arm that winds outward from the middle, clockwise."""
    x, y = centred(SIZE)
    angle = turn(x, y)
    return np.floor(np.hypot(x, y) * 3.5 - angle + 1) + angle


def square():
    x, y = grid(SIZE)
    return np.maximum(np.abs(2 * x - 1), np.abs(2 * y - 1))


def squares():
    """Squares that grow in the cells of a grid, those in the middle a little ahead."""
    u, v, column, row = cells(7, 4)
    return np.maximum(np.abs(u), np.abs(v)) + 0.04 * np.hypot(column - 3, row - 1.5)


def stripes():
    x, y = grid(SIZE)
    return fraction((x * PICTURE_ASPECT + y) * 4)


def strips(along, across):
    """Eight strips that travel in turns one way and the other."""
    return np.where(np.floor(across * 8) % 2 == 0, along, 1 - along)


def watercolor():
    """Wet colour: stains that spread from a few drops, drawn out by the paper's grain."""
    x, y = centred(SIZE)
    warp_x, warp_y = (wave_noise(SIZE, seed, falloff=1.7, longest=2, shortest=24) for seed in (1101, 1102))
    x, y = x + 0.085 * warp_x, y + 0.085 * warp_y
    drops = np.random.default_rng(1103).uniform((-1.7, -0.95), (1.7, 0.95), (9, 2))
    heads = np.linspace(0, 0.45, len(drops))
    stain = np.min([np.hypot(x - px, y - py) + head for (px, py), head in zip(drops, heads)], axis=0)
    return stain + 0.012 * wave_noise(SIZE, seed=1104, falloff=1.2, longest=12, shortest=48)


X, Y = grid(SIZE)

# In the order of the transition kinds.
LUMAS = {
    "barndoor-botleft": lambda: np.abs(X + Y - 1),
    "barndoor-h": lambda: np.abs(2 * X - 1),
    "barndoor-topleft": lambda: np.abs(X - Y),
    "barndoor-v": lambda: np.abs(2 * Y - 1),
    "blinds-h": blinds,
    "box-botleft": lambda: np.maximum(X, 1 - Y),
    "box-botright": lambda: np.maximum(1 - X, 1 - Y),
    "box-topleft": lambda: np.maximum(X, Y),
    "box-topright": lambda: np.maximum(1 - X, Y),
    "burst": burst,
    "checkerboard-small": checkerboard_small,
    "circles": circles,
    "clock": clock,
    "cloud": cloud,
    "curtain": curtain,
    "fan": fan,
    "iris": iris,
    "linear-h": lambda: X,
    "linear-topleft": lambda: X + Y,
    "linear-topright": lambda: 1 - X + Y,
    "linear-v": lambda: Y,
    "parallel-zigzag-h": lambda: parallel_zigzag(X, Y),
    "parallel-zigzag-v": lambda: parallel_zigzag(Y, X),
    "spiral": spiral,
    "square": square,
    "squares": squares,
    "stripes": stripes,
    "strips-h": lambda: strips(X, Y),
    "strips-v": lambda: strips(Y, X),
    "watercolor": watercolor,
    "zigzag-h": lambda: zigzag(X, Y, 0.14),
    "zigzag-v": lambda: zigzag(Y, X, 0.22),
}


def luma(name: str) -> np.ndarray:
    """A luma image, (SIZE, SIZE) bytes, all 256 levels of equal area."""
    return equalise(to_unit(LUMAS[name]()))
