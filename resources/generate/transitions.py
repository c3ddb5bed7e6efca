"""The four images of the transitions that are no lumas."""
import numpy as np

from fields import equalise, fine_noise, grid, mix, smoothstep, wave_noise

CLOUDS_SIZE = 256
NOISE_SIZE = 256
BOARD_SIZE = 256


def clouds() -> np.ndarray:
    """Two clouds, in red and green, that know nothing of each other: a shader that pushes a picture about takes one for
    x and one for y. All levels are equally frequent, so the mean push is none, and a threshold that rises evenly reveals
    evenly. Tiles."""
    red, green = (equalise(wave_noise(CLOUDS_SIZE, seed, falloff=1.75, shortest=48)) for seed in (1, 2))
    red = with_lively_edge(red)
    return np.stack([red, green, red], axis=2)


def with_lively_edge(pattern: np.ndarray) -> np.ndarray:
    """A pattern that tiles, turned so that the first fifth of row 0 has the most ups and downs: a falling picture takes
    its ragged edge from there."""
    fifth = pattern.shape[1] // 5
    steps = np.abs(np.diff(pattern.astype(float), axis=1, append=pattern[:, :1]))
    climbs = np.cumsum(np.hstack([steps, steps[:, :fifth]]), axis=1)
    row, column = np.unravel_index(np.argmax(climbs[:, fifth:] - climbs[:, :-fifth]), pattern.shape)
    return np.roll(pattern, (-row, -column), axis=(0, 1))


def noise() -> np.ndarray:
    """Grain with few clumps, 0..1. Tiles.

    A picture has more pixels than the grain, and what is read between two grains is their mean. So the grains lie near
    black and white: then the readings, not the grains, are evenly spread.
    """
    centred = 2 * fine_noise(NOISE_SIZE, seed=3) - 1
    return 0.5 + 0.5 * np.sign(centred) * np.abs(centred) ** 0.25


def checkerboard() -> np.ndarray:
    """A board of 16 columns and 9 rows with soft edges, its dark squares and light squares each of uneven tone.

    Its top edge runs through the middle of a row: it is read as the unevenness of a flowing edge, drips beside gaps.
    """
    columns, rows = 16, 9
    x, y = grid(BOARD_SIZE)
    u, v = x * columns, y * rows + 0.5
    random = np.random.default_rng(4)
    dark = random.uniform(0, 0.4, (rows + 1, columns))
    light = random.uniform(0.6, 1, (rows + 1, columns))
    numbers = np.indices((rows + 1, columns)).sum(axis=0) % 2
    tones = np.where(numbers == 0, light, dark)
    return np.round(255 * soft_lookup(tones, u, v, edge=0.42)).astype(np.uint8)


def soft_lookup(tones: np.ndarray, u: np.ndarray, v: np.ndarray, edge: float) -> np.ndarray:
    """The tone of each cell, run into its neighbours' within `edge` of a cell around the border between them."""
    def axis(place, count):
        near = np.clip(place - 0.5, 0, count - 1)
        low = np.minimum(near.astype(int), count - 2)
        return low, smoothstep(0.5 - edge, 0.5 + edge, near - low)

    row, down = axis(v, tones.shape[0])
    column, right = axis(u, tones.shape[1])
    top = mix(tones[row, column], tones[row, column + 1], right)
    bottom = mix(tones[row + 1, column], tones[row + 1, column + 1], right)
    return mix(top, bottom, down)
