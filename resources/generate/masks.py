"""The pictures that filters lay over a picture: where a step of a look acts, and what light falls on it.

All are stretched over the picture, whatever its proportions.
"""
import numpy as np

from fields import centred, grid, mix, smoothstep, wave_noise

SIZE = 384


def from_middle(x_middle: float = 0, y_middle: float = 0) -> np.ndarray:
    """The distance from a point near the middle, in half diagonals of the picture: 0 there, 1 at a corner."""
    x, y = grid(SIZE)
    return np.hypot(2 * x - 1 - x_middle, 2 * y - 1 - y_middle) / np.sqrt(2)


def amaro_mask1():
    """Sunrise, what darkens: the ground and the far corners, not the sky's light."""
    _, y = grid(SIZE)
    return mix(smoothstep(0.35, 1.05, from_middle()), y ** 2, 0.3)


def amaro_mask2():
    """Sunrise, where its first tone acts: a wide light above the middle."""
    return 1 - 0.55 * smoothstep(0.25, 1.1, from_middle(0, -0.25))


def toy_mask1():
    """Sunrise, where its second tone acts: the edge that a toy camera's lens leaves dark."""
    return smoothstep(0.45, 1.05, from_middle())


def bluevintage_mask1():
    """Warm, where its second tone acts: the upper left, as light leaks into an old camera, and a little everywhere."""
    x, y = centred(SIZE)
    leak = np.exp(-((x + 1.7) ** 2 / 1.6 + (y + 0.5) ** 2 / 1.8))
    return 0.25 + 0.75 * leak


def warm_layer1():
    """Warm, the light added: amber from the right edge, rose below it, over almost nothing."""
    x, y = centred(SIZE)
    amber = np.exp(-((x - 1.75) ** 2 / 0.75 + (y + 0.35) ** 2 / 1.1))[..., None] * (1.0, 0.62, 0.22)
    rose = np.exp(-((x - 1.2) ** 2 / 1.5 + (y - 1.0) ** 2 / 0.6))[..., None] * (0.75, 0.25, 0.28)
    return 1 - (1 - 0.9 * amber) * (1 - 0.8 * rose) * (1 - np.array([0.06, 0.03, 0.01]))


def calm_mask1():
    """Calm and healthy, what stays light: all of it, a little less towards the edge."""
    return 1 - 0.45 * smoothstep(0.4, 1.05, from_middle())


def calm_mask2():
    """Calm, where the last tone acts: a mist that lies on the lower third and drifts across it."""
    _, y = grid(SIZE)
    drift = 0.09 * wave_noise(SIZE, seed=17, falloff=2.2, longest=1, shortest=6, stretch=2.5)
    return np.clip(0.12 + 0.88 * smoothstep(0.35, 1.0, y + drift), 0, 1)


def rise_mask1():
    """Sunset, what darkens: everything that is far from the light low in the middle."""
    return smoothstep(0.4, 1.15, from_middle(0, 0.15))


def rise_mask2():
    """Sunset and sweets, what stays clear: the middle, out to a soft edge."""
    return 1 - 0.62 * smoothstep(0.45, 1.1, from_middle())


def brannan_blowout():
    """Amaro and brannan, the light blown out in the middle: mid grey leaves a pixel alone, lighter lifts it."""
    return 0.32 + 0.38 * (1 - smoothstep(0.0, 0.95, from_middle()))


def hudsonbackground():
    """Hudson, ice light: a pale window above the middle, the edge in the blue of shade."""
    light = (1 - smoothstep(0.05, 0.95, from_middle(0, -0.2)))[..., None]
    shade, ice = np.array([0.30, 0.36, 0.44]), np.array([0.60, 0.64, 0.67])
    return mix(shade, ice, light)


def toastermetal():
    """Toaster, the glow of hot metal: bright copper in the middle, burnt at the edge, brushed along the picture."""
    heat = (1 - smoothstep(0.0, 1.0, from_middle()))[..., None]
    burnt, copper = np.array([0.14, 0.09, 0.14]), np.array([0.86, 0.66, 0.46])
    brushed = wave_noise(SIZE, seed=32, falloff=0.6, longest=4, shortest=150, stretch=24)[..., None]
    return np.clip(mix(burnt, copper, heat ** 1.15) + 0.014 * brushed, 0, 1)
