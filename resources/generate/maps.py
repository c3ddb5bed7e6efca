"""The maps through which filters send a picture's values.

A one-row map holds a curve for each channel in that channel: a value is x. An overlay map is a picture of 256 by 256:
x is the value of what lies on top (a light, a luma), y the picture's own value, row 0 for 0. The cube holds a colour for
each colour: see `fairy_tale`.
"""
import numpy as np

from fields import mix, smoothstep
from tones import tone, tone_row

LUMA = np.array([0.299, 0.587, 0.114])


def two_values() -> tuple[np.ndarray, np.ndarray]:
    """The two values that a place of an overlay map stands for: that on top, and the picture's own."""
    return np.meshgrid(np.arange(256) / 255, np.arange(256) / 255)


def overlay(base, top):
    return np.where(base < 0.5, 2 * base * top, 1 - 2 * (1 - base) * (1 - top))


def soft_light(base, top):
    """Bends the base's gamma: 2^(1 - 2 top), which is 1 where the top is middle grey."""
    return np.power(np.maximum(base, 1e-6), np.exp2(1 - 2 * top))


# --- amaro and hudson --------------------------------------------------------------------------------------------------

def overlaymap():
    """What a light on top makes of a picture: half overlay, half soft light, so that no value is torn off."""
    top, base = two_values()
    return mix(overlay(base, top), soft_light(base, top), 0.5)


def amaromap():
    """Faded: blue shadows lifted, whites creamy."""
    return tone_row(tone((0, 16), (64, 72), (128, 150), (192, 214), (255, 252)),
                    tone((0, 12), (64, 70), (128, 146), (192, 208), (255, 248)),
                    tone((0, 44), (64, 96), (128, 152), (192, 196), (255, 230)))


def hudsonmap():
    """Cold: reds held back, blue in shadows and lights, whites that stay white."""
    return tone_row(tone((0, 8), (64, 52), (128, 124), (192, 200), (255, 250)),
                    tone((0, 14), (64, 64), (128, 138), (192, 208), (255, 252)),
                    tone((0, 34), (64, 88), (128, 156), (192, 216), (255, 255)))


# --- brannan -----------------------------------------------------------------------------------------------------------

def brannan_process():
    """As film in the wrong bath: shadows to blue-green, red steep."""
    return tone_row(tone((0, 0), (64, 44), (128, 130), (192, 214), (255, 255)),
                    tone((0, 8), (64, 62), (128, 134), (192, 206), (255, 252)),
                    tone((0, 38), (64, 78), (128, 122), (192, 172), (255, 222)))


def brannan_contrast():
    """Hard: an S for all channels, black and white reached early."""
    curve = tone((0, 0), (20, 2), (64, 40), (128, 130), (192, 218), (238, 253), (255, 255))
    return tone_row(curve, curve, curve)


def brannan_luma():
    """The grey that half of the colour gives way to: cool green in the shadows, yellow in the lights, as metal."""
    return tone_row(tone((0, 0), (64, 54), (128, 128), (192, 202), (255, 255)),
                    tone((0, 6), (64, 66), (128, 138), (192, 206), (255, 250)),
                    tone((0, 14), (64, 66), (128, 118), (192, 164), (255, 208)))


def brannan_screen():
    """A thin screen of green-grey: nothing stays quite black."""
    values = np.arange(256) / 255
    return tone_row(*(1 - (1 - values) * (1 - tint) for tint in (0.055, 0.075, 0.050)))


# --- brooklyn ----------------------------------------------------------------------------------------------------------

def brooklyn_curves1():
    """Open: shadows lifted, middle light."""
    return tone_row(tone((0, 16), (64, 82), (128, 148), (255, 250)), tone((0, 18), (64, 82), (128, 146), (255, 248)),
                    tone((0, 22), (64, 80), (128, 138), (255, 240)))


def filter_map_first():
    """The picture's value (y) under its own luma (x): shadows drift to teal, lights to a warm paper, colour gives way."""
    luma, value = two_values()
    shadow, light = np.array([0.92, 1.02, 1.05]), np.array([1.03, 1.0, 0.93])
    tint = mix(shadow, light, smoothstep(0.1, 0.9, luma)[..., None])
    return np.clip(mix(value, luma, 0.22)[..., None] * tint, 0, 1)


def brooklyn_curves2():
    """Matt: a soft end above and below."""
    return tone_row(tone((0, 12), (80, 82), (170, 182), (255, 246)), tone((0, 14), (80, 80), (170, 178), (255, 242)),
                    tone((0, 24), (80, 84), (170, 170), (255, 228)))


# --- earlybird ---------------------------------------------------------------------------------------------------------

def earlybirdcurves():
    """Sepia begins: red up, blue kept between."""
    return tone_row(tone((0, 22), (64, 84), (128, 156), (192, 218), (255, 255)),
                    tone((0, 14), (64, 70), (128, 136), (192, 196), (255, 242)),
                    tone((0, 30), (64, 72), (128, 116), (192, 160), (255, 204)))


def earlybirdoverlaymap_new():
    """The picture's value (y) under its own luma (x): deeper darks, with a brown light on what is bright."""
    luma, value = two_values()
    brown = mix(np.array([0.47, 0.46, 0.44]), np.array([0.60, 0.56, 0.50]), luma[..., None])
    return mix(value[..., None], overlay(value[..., None], brown), 0.75)


def vignettemap_new():
    """The picture's value (y) at a squared distance from its middle (x, 1 at a corner): dark and red-brown outward."""
    distance, value = two_values()
    fall = smoothstep(0.18, 1.0, distance)[..., None]
    return value[..., None] * (1 - fall * np.array([0.52, 0.66, 0.74]))


def earlybirdblowout():
    """What the middle of the picture goes through: light that spills."""
    return tone_row(tone((0, 6), (64, 82), (128, 162), (192, 228), (255, 255)),
                    tone((0, 4), (64, 76), (128, 150), (192, 214), (255, 250)),
                    tone((0, 2), (64, 66), (128, 128), (192, 186), (255, 232)))


def earlybirdmap():
    """The print: yellowed whites, shadows of brown."""
    return tone_row(tone((0, 20), (64, 72), (128, 138), (192, 204), (255, 250)),
                    tone((0, 12), (64, 62), (128, 126), (192, 192), (255, 238)),
                    tone((0, 8), (64, 52), (128, 106), (192, 162), (255, 206)))


# --- inkwell -----------------------------------------------------------------------------------------------------------

def inkwellmap():
    """Black and white: deep ink, clear paper."""
    curve = tone((0, 0), (32, 18), (96, 88), (160, 172), (224, 238), (255, 252))
    return tone_row(curve, curve, curve)


# --- toaster -----------------------------------------------------------------------------------------------------------

def toastersoftlight():
    """The hot metal's light (x) on the picture's value (y)."""
    top, base = two_values()
    return mix(base, soft_light(base, top), 0.9)


def toastercurves():
    """Burnt: blacks to plum, whites to butter."""
    return tone_row(tone((0, 32), (64, 92), (128, 160), (192, 216), (255, 252)),
                    tone((0, 6), (64, 54), (128, 120), (192, 190), (255, 240)),
                    tone((0, 44), (64, 76), (128, 112), (192, 150), (255, 190)))


def toasteroverlaymapwarm():
    """A warm light (in every column the same curve, stronger where luma, x, is high) over the picture's value (y)."""
    luma, value = two_values()
    warm = mix(np.array([0.51, 0.50, 0.47]), np.array([0.58, 0.51, 0.42]), luma[..., None])
    return overlay(value[..., None], warm)


def toastercolorshift():
    """The last turn: reds hold, greens sink in the shadows, blues never reach white."""
    return tone_row(tone((0, 10), (128, 138), (255, 255)), tone((0, 4), (64, 56), (128, 126), (255, 250)),
                    tone((0, 26), (128, 124), (255, 214)))


# --- fairy tale --------------------------------------------------------------------------------------------------------

def fairy_tale():
    """A dream's colour for every colour: 8 by 8 tiles for 64 blues, row by row; in a tile red is x and green is y.

    Darks drift to violet, lights to rose and gold, greens to a deep sea, and faded colours find more of themselves.
    """
    steps = np.arange(64) / 63
    blue, green, red = np.meshgrid(steps, steps, steps, indexing="ij")
    colour = dream(np.stack([red, green, blue], axis=-1))
    tiles = colour.reshape(8, 8, 64, 64, 3)
    return tiles.transpose(0, 2, 1, 3, 4).reshape(512, 512, 3)


def dream(colour: np.ndarray) -> np.ndarray:
    """The fairy tale's colours for an array of colours."""
    luma = (colour @ LUMA)[..., None]
    spread = colour.max(axis=-1, keepdims=True) - colour.min(axis=-1, keepdims=True)
    colour = luma + (colour - luma) * (1.4 - 0.4 * spread)
    greenness = np.clip(colour[..., 1:2] - np.maximum(colour[..., :1], colour[..., 2:]), 0, 1)
    colour = colour + greenness * np.array([-0.22, -0.04, 0.34])
    violet, gold = np.array([0.11, 0.03, 0.21]), np.array([0.08, 0.01, -0.02])
    colour = colour + violet * (1 - smoothstep(0.0, 0.55, luma)) + gold * smoothstep(0.4, 0.95, luma)
    colour = np.clip(colour, 0, 1)
    return mix(colour, 1 - (1 - colour) ** 1.5, 0.6)
