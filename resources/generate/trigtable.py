"""sincosatan.png: sine, cosine and arctangent for a shader that looks them up.

A direction (x, y) of length 1 is looked up at ((x + 1) / 2, (y + 1) / 2) and gives in blue the turn from the y axis
towards the x axis, as a share of the whole turn plus a half. A turn t, with the half taken off again and any whole turn
cut, is looked up at (t, t) and gives in red (sin t + 1) / 2 and in green (cos t + 1) / 2. So only a ring of blue and the
diagonal of red and green are ever read, and everything else is left empty.

256 levels are few: 1.4 degrees of a turn. But each reading is the weighted mean of four texels, so levels are chosen such
that these means come right (`fit`): the mean error is about half of what rounding each texel by itself would give.
"""
import numpy as np

from fields import sample

SIZE = 512
SEAM = 1.5 / SIZE  # how near to the y axis (in units of the picture) readings mix the turn's end and its beginning


def bilinear(u: np.ndarray, v: np.ndarray) -> tuple[np.ndarray, np.ndarray]:
    """The four texels (indices in the flattened table) that a sample at (u, v) mixes, and their weights: (n, 4) each."""
    def axis(coordinate):
        place = np.clip(coordinate * SIZE - 0.5, 0, SIZE - 1)
        low = np.minimum(place.astype(int), SIZE - 2)
        return low, place - low

    column, fx = axis(u)
    row, fy = axis(v)
    first = row * SIZE + column
    texels = np.stack([first, first + 1, first + SIZE, first + SIZE + 1], axis=1)
    weights = np.stack([(1 - fx) * (1 - fy), fx * (1 - fy), (1 - fx) * fy, fx * fy], axis=1)
    return texels, weights


def fit(u: np.ndarray, v: np.ndarray, wanted: np.ndarray, sweeps: int = 12) -> np.ndarray:
    """A table of bytes whose samples at (u, v) come near to `wanted` (0..1). Texels that no sample touches are 0.

    Goes along the samples again and again and gives each texel the level that leaves the least error with the others as
    they are.
    """
    texels, weights = bilinear(u, v)
    used, place = np.unique(texels, return_inverse=True)
    place = place.reshape(texels.shape)
    levels = np.zeros(used.size)
    levels[place] = np.round(wanted * 255)[:, None]
    error = (levels[place] * weights).sum(axis=1) - wanted * 255

    order = np.argsort(place, axis=None, kind="stable")
    owners = place.ravel()[order]
    bounds = np.searchsorted(owners, np.arange(used.size + 1))
    samples, shares = order // 4, weights.ravel()[order]
    along = np.argsort([samples[bounds[i]] for i in range(used.size)], kind="stable")
    for _ in range(sweeps):
        for texel in along:
            touched = slice(bounds[texel], bounds[texel + 1])
            sample, share = samples[touched], shares[touched]
            step = np.round(-(share @ error[sample]) / max(share @ share, 1e-9))
            step = np.clip(levels[texel] + step, 0, 255) - levels[texel]
            levels[texel] += step
            error[sample] += step * share
    table = np.zeros(SIZE * SIZE, np.uint8)
    table[used] = levels
    return table.reshape(SIZE, SIZE)


def table() -> np.ndarray:
    """The table as the shader is to see it, (SIZE, SIZE, 3) bytes."""
    turn = (np.arange(16 * SIZE) + 0.5) / (16 * SIZE)
    sine, cosine = np.sin(2 * np.pi * turn), np.cos(2 * np.pi * turn)
    off_seam = ~((np.abs(sine) / 2 < SEAM) & (cosine < 0))
    blue = fit((sine[off_seam] + 1) / 2, (cosine[off_seam] + 1) / 2, ((turn + 0.5) % 1)[off_seam])
    close_the_seam(blue)
    return np.stack([fit(turn, turn, (sine + 1) / 2), fit(turn, turn, (cosine + 1) / 2), blue], axis=2)


def close_the_seam(blue: np.ndarray) -> None:
    """Gives the texels beside the seam, which no fit has seen, the turn's beginning or end."""
    middle = SIZE // 2
    blue[:4, middle - 2:middle] = 0
    blue[:4, middle:middle + 2] = 255


def direction_error(image: np.ndarray) -> float:
    """The largest error, in radians of direction and shares of length, of a direction looked up there and back."""
    turn = (np.arange(5000) + 0.5) / 5000
    x, y = np.sin(2 * np.pi * turn), np.cos(2 * np.pi * turn)
    away = ~((np.abs(x) / 2 < SEAM) & (y < 0))
    x, y = x[away], y[away]
    angle = sample(image / 255, (x + 1) / 2, (y + 1) / 2)[:, 2]
    back = (angle - 0.5) % 1
    found = sample(image / 255, back, back)[:, :2] * 2 - 1
    return float(np.hypot(found[:, 0] - x, found[:, 1] - y).max())
