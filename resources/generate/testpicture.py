"""A picture to judge the looks by: a person before hills under an evening sky, beside a strip of known colours.

It has what looks are judged by: skin in light and in shade, a sky's slow gradient, leaves, whites near clipping, blacks.
"""
import numpy as np

from fields import mix, smoothstep, wave_noise

WIDTH, HEIGHT = 640, 360
NOISE = 1024  # a square of noise at least as wide as the picture

PATCHES = ((0.86, 0.66, 0.55), (0.45, 0.29, 0.21), (0.75, 0.12, 0.12), (0.95, 0.78, 0.10), (0.15, 0.55, 0.20),
           (0.10, 0.55, 0.62), (0.14, 0.20, 0.62), (0.60, 0.18, 0.52))


def noise(seed: int, falloff: float, longest: float, stretch: float = 1) -> np.ndarray:
    return wave_noise(NOISE, seed, falloff, longest, stretch=stretch)[:HEIGHT, :WIDTH]


def paint(picture: np.ndarray, colour, where: np.ndarray) -> None:
    """Lays a colour (one, or one for each pixel) over the picture where the mask says."""
    picture[:] = mix(picture, np.asarray(colour), where[..., None])


def inside(distance: np.ndarray, softness: float = 0.012) -> np.ndarray:
    """1 where a distance is below 1, with a soft edge."""
    return smoothstep(1 + softness, 1 - softness, distance)


def test_picture() -> np.ndarray:
    """The picture, (HEIGHT, WIDTH, 3) values 0..1."""
    x, y = np.meshgrid((np.arange(WIDTH) + 0.5) / HEIGHT, (np.arange(HEIGHT) + 0.5) / HEIGHT)
    picture = sky(x, y)
    hills(picture, x, y)
    person(picture, x, y)
    strip(picture, x, y)
    grain = 0.008 * np.random.default_rng(7).standard_normal(picture.shape)
    return np.clip(picture + grain, 0, 1)


def sky(x, y):
    height = np.clip(1 - y / 0.62, 0, 1)[..., None]
    picture = mix(np.array([0.93, 0.80, 0.66]), np.array([0.25, 0.48, 0.80]), height ** 0.75)
    clouds = smoothstep(0.1, 1.6, noise(21, 1.7, 3, stretch=2.6)) * smoothstep(0.62, 0.25, y)
    paint(picture, (0.97, 0.95, 0.93), 0.85 * clouds)
    sun = np.hypot(x - 1.42, y - 0.38)
    picture += (0.55 * np.exp(-(sun / 0.16) ** 2) + 0.2 * np.exp(-(sun / 0.5) ** 2))[..., None] * (1.0, 0.85, 0.6)
    return np.clip(picture, 0, 1)


def hills(picture, x, y):
    far = 0.56 + 0.05 * np.sin(3.1 * x + 0.4) + 0.02 * np.sin(9 * x)
    near = 0.70 + 0.06 * np.sin(2.3 * x + 2.0) + 0.015 * np.sin(14 * x + 1)
    paint(picture, (0.42, 0.50, 0.55), smoothstep(far, far + 0.006, y))
    leaves = np.clip(0.5 + 0.33 * noise(22, 0.9, 12), 0, 1)[..., None]
    foliage = mix(np.array([0.07, 0.16, 0.05]), np.array([0.45, 0.60, 0.22]), leaves)
    paint(picture, foliage, smoothstep(near, near + 0.008, y))
    trunk = inside(np.abs(x - 0.12 - 0.02 * np.sin(7 * y)) / 0.035) * smoothstep(0.1, 0.2, y)
    paint(picture, (0.16, 0.11, 0.08), trunk)
    crown = inside(np.hypot((x - 0.14) / 0.27, (y - 0.20) / 0.22) + 0.09 * noise(23, 1.0, 8), 0.08)
    paint(picture, 0.85 * foliage, crown)


def person(picture, x, y):
    u, v = (x - 0.80) / 0.165, (y - 0.47) / 0.225
    shirt = inside(np.hypot((x - 0.80) / 0.36, (y - 1.06) / 0.33))
    folds = 0.90 + 0.05 * noise(24, 1.6, 6)
    shade = mix(1.04, 0.62, smoothstep(-0.6, 1.6, -u))
    paint(picture, np.clip(folds * shade, 0, 1)[..., None] * (0.98, 0.98, 1.0), shirt)

    paint(picture, (0.13, 0.08, 0.06), inside(np.hypot(u / 1.22, (v + 0.16) / 1.2)))
    paint(picture, (0.13, 0.08, 0.06), inside(np.hypot(u / 1.2, (v - 0.5) / 1.1)) * smoothstep(1.35, 1.1, v))
    light = np.clip(0.64 + 0.30 * u - 0.14 * v - 0.14 * u * u, 0, 1)[..., None]
    skin = mix(np.array([0.38, 0.22, 0.16]), np.array([0.98, 0.80, 0.69]), light)
    paint(picture, 0.86 * skin, inside(np.abs(u) / 0.5) * inside(np.abs(v - 1.05) / 0.45))
    paint(picture, skin, inside(np.hypot(u / 0.95, v / (1.12 + 0.05 * v))))
    blush = np.exp(-((np.abs(u) - 0.5) ** 2 + (v - 0.25) ** 2) / 0.05) * 0.25
    paint(picture, (0.85, 0.42, 0.38), blush * inside(np.hypot(u / 0.95, v / 1.12)))
    fringe = inside(np.hypot(u / 1.08, (v + 0.95) / 0.5))
    paint(picture, (0.15, 0.09, 0.065), fringe)
    face(picture, u, v)


def face(picture, u, v):
    for side in (-1, 1):
        eye = np.hypot((u - side * 0.38) / 0.17, (v + 0.08) / 0.075)
        paint(picture, (0.93, 0.92, 0.90), inside(eye, 0.08))
        iris = np.hypot((u - side * 0.38) * 0.165, (v + 0.08) * 0.225)
        paint(picture, (0.20, 0.30, 0.22), inside(iris / 0.0165, 0.1))
        paint(picture, (0.02, 0.02, 0.02), inside(iris / 0.008, 0.15))
        brow = np.hypot((u - side * 0.39) / 0.23, (v + 0.27 + 0.25 * (u - side * 0.39) ** 2) / 0.035)
        paint(picture, (0.16, 0.10, 0.07), 0.9 * inside(brow, 0.2))
    paint(picture, (0.62, 0.38, 0.30), 0.55 * inside(np.hypot((u + 0.03) / 0.13, (v - 0.30) / 0.045), 0.4))
    paint(picture, (0.68, 0.25, 0.26), inside(np.hypot(u / 0.30, (v - 0.58) / 0.075), 0.06))
    paint(picture, (0.40, 0.12, 0.13), inside(np.hypot(u / 0.28, (v - 0.575) / 0.012), 0.3))


def strip(picture, x, y):
    """Colours above, grey steps below, at the right edge."""
    left, top, size = 1.45, 0.76, 0.065
    for number, patch in enumerate(PATCHES):
        row, column = divmod(number, 4)
        inside_patch = ((x - left) // size == column) & ((y - top) // size == row)
        picture[inside_patch] = patch
    step = (x - left) // (size / 2)
    greys = (step >= 0) & (step < 8) & ((y - top) // size == 2)
    picture[greys] = np.clip(step / 7, 0, 1)[greys][:, None]
