"""What the pictures are computed from: coordinates, noise that tiles, tones.

A field is an array of floats, (height, width) or (height, width, 3), mostly within 0..1. Row 0 is the top of the picture.
"""
import numpy as np

PICTURE_ASPECT = 16 / 9  # what the square fields are stretched to in a show


def grid(width: int, height: int | None = None) -> tuple[np.ndarray, np.ndarray]:
    """The texture coordinates x and y of the pixel centres, 0..1, y downward."""
    height = height or width
    x = (np.arange(width) + 0.5) / width
    y = (np.arange(height) + 0.5) / height
    return np.meshgrid(x, y)


def centred(width: int, height: int | None = None) -> tuple[np.ndarray, np.ndarray]:
    """Coordinates around the middle in units of half the picture's height: circles in them are round in a show."""
    x, y = grid(width, height)
    return (2 * x - 1) * PICTURE_ASPECT, 2 * y - 1


def smoothstep(low: float, high: float, value: np.ndarray) -> np.ndarray:
    """0 below low, 1 above high, 3t² - 2t³ between; low may lie above high."""
    t = np.clip((value - low) / (high - low), 0, 1)
    return t * t * (3 - 2 * t)


def fraction(value: np.ndarray) -> np.ndarray:
    return value - np.floor(value)


def triangle(value: np.ndarray) -> np.ndarray:
    """A triangle wave of period 1 between 0 (at whole numbers) and 1."""
    return 1 - np.abs(2 * fraction(value) - 1)


def mix(a, b, t):
    return a + (b - a) * t


def sample(texture: np.ndarray, u: np.ndarray, v: np.ndarray) -> np.ndarray:
    """The texture (height, width, channels) at (u, v), linear between texels, level outside: u.shape + (channels,)."""
    def axis(coordinate, count):
        place = np.clip(coordinate * count - 0.5, 0, count - 1)
        low = np.minimum(place.astype(int), max(count - 2, 0))
        return low, np.minimum(low + 1, count - 1), (place - low)[..., None]

    x0, x1, fx = axis(u, texture.shape[1])
    y0, y1, fy = axis(v, texture.shape[0])
    top = texture[y0, x0] * (1 - fx) + texture[y0, x1] * fx
    bottom = texture[y1, x0] * (1 - fx) + texture[y1, x1] * fx
    return top * (1 - fy) + bottom * fy


def texel(texture: np.ndarray, u: np.ndarray, v: np.ndarray) -> np.ndarray:
    """The texel of (height, width, channels) in which (u, v) lies, the nearest outside: u.shape + (channels,)."""
    def axis(coordinate, count):
        return np.clip(np.floor(coordinate * count), 0, count - 1).astype(int)

    return texture[axis(v, texture.shape[0]), axis(u, texture.shape[1])]


def to_unit(field: np.ndarray) -> np.ndarray:
    """The field stretched so that its smallest value is 0 and its largest 1."""
    low, high = field.min(), field.max()
    return (field - low) / (high - low)


def rank(field: np.ndarray) -> np.ndarray:
    """Each value's share of the smaller ones, 0..1; equal values share the middle of their ranks."""
    _, inverse, counts = np.unique(np.round(field, 9), return_inverse=True, return_counts=True)
    middles = np.cumsum(counts) - counts / 2
    return (middles[inverse] / field.size).reshape(field.shape)


def equalise(field: np.ndarray) -> np.ndarray:
    """The field in 256 levels of equal area, as bytes: a threshold that rises evenly uncovers evenly."""
    return np.floor(rank(field) * 256).astype(np.uint8)


def wave_noise(size: int, seed: int, falloff: float, longest: float = 1, shortest: float = 1e9,
               stretch: float = 1) -> np.ndarray:
    """Noise of waves that fit the picture whole, so that it tiles; mean 0, deviation 1.

    The waves are between `longest` and `shortest` periods to the picture and lose strength as periods^-falloff.
    `stretch` above 1 draws the pattern out horizontally.
    """
    white = np.random.default_rng(seed).standard_normal((size, size))
    periods = np.fft.fftfreq(size) * size
    distance = np.hypot(*np.meshgrid(periods * stretch, periods))
    inside = (distance >= longest) & (distance <= shortest)
    strength = np.where(inside, np.maximum(distance, 1e-9) ** -falloff, 0)
    noise = np.fft.ifft2(np.fft.fft2(white) * strength).real
    return (noise - noise.mean()) / noise.std()


def fine_noise(size: int, seed: int, rounds: int = 8) -> np.ndarray:
    """Noise that tiles and has no long waves, all values 0..1 equally frequent: grain with few clumps.

    Alternates between cutting the long waves and giving each value back its rank.
    """
    field = np.random.default_rng(seed).random((size, size))
    frequencies = np.fft.fftfreq(size)
    distance = np.hypot(*np.meshgrid(frequencies, frequencies))
    high_pass = 1 - np.exp(-(distance / 0.1) ** 2)
    for _ in range(rounds):
        field = rank(np.fft.ifft2(np.fft.fft2(field) * high_pass).real)
    return field
