"""The 22 filters, step by step, as the shader computes them. All values 0..1.

A look is a function of the picture (height, width, 3) and of `Inputs`, which reads the images and the curve textures as
the shader reads its textures: at their texels, the cube and the picture linear between them, all level outside.
"""
import numpy as np

from fields import sample, texel
from maps import LUMA, overlay

RED, GREEN, BLUE = 0, 1, 2


class Inputs:
    """The images and curves that looks read, for one picture size."""

    def __init__(self, image, curve, height: int, width: int):
        """`image(name)` gives an image of the catalogue, `curve(slot)` a curve texture; both 0..1, three axes."""
        self.image, self.curve = image, curve
        self.u, self.v = np.meshgrid((np.arange(width) + 0.5) / width, (np.arange(height) + 0.5) / height)

    def over(self, name: str) -> np.ndarray:
        """An image stretched over the picture, (height, width, 3)."""
        return texel(self.image(name), self.u, self.v)

    def weight(self, name: str) -> np.ndarray:
        """The red of an image stretched over the picture, as a weight for each pixel, (height, width, 1)."""
        return self.over(name)[..., :1]


# --- blocks ------------------------------------------------------------------------------------------------------------

def exclusion(a, b):
    return a + b - 2 * a * b


def normal(a, b, share):
    return (b - a) * share + a


def multiply(a, b):
    return a * b * 1.01


def screen(a, b):
    return 1 - (1 - a) * (1 - b)


def luma(colour):
    return (colour @ LUMA)[..., None]


def level(colour, table, row=0.0):
    """Each channel through its own channel of a row of the table."""
    return np.stack([texel(table, colour[..., c], np.full(colour.shape[:-1], row))[..., c] for c in range(3)], axis=-1)


def through(colour, table, channel, row=0.0):
    """Each channel through one and the same channel of a row."""
    return np.stack([texel(table, colour[..., c], np.full(colour.shape[:-1], row))[..., channel] for c in range(3)],
                    axis=-1)


def tone(value, table):
    """A colour for one value, (height, width, 1): all channels at one place of row 0."""
    return texel(table, value[..., 0], np.zeros(value.shape[:-1]))[..., :3]


def two_way(top, base, table):
    """Each channel through its own channel of an overlay map: x is the value on top, y the picture's own."""
    top = np.broadcast_to(top, base.shape)
    return np.stack([texel(table, top[..., c], base[..., c])[..., c] for c in range(3)], axis=-1)


def adjust(colour, brightness, contrast, saturation):
    colour = colour * (brightness + 1)
    colour = normal(luma(colour), colour, saturation + 1)
    return normal(0.5, colour, contrast + 1)


def vibrance(colour, amount):
    mean, most = colour.mean(axis=-1, keepdims=True), colour.max(axis=-1, keepdims=True)
    share = (most - mean) * -amount
    return colour * (1 - share) + most * share


def rgb_to_hsv(colour):
    most, least = colour.max(axis=-1), colour.min(axis=-1)
    chroma = most - least + 1e-10
    r, g, b = np.moveaxis(colour, -1, 0)
    hue = np.where(most == r, (g - b) / chroma % 6, np.where(most == g, (b - r) / chroma + 2, (r - g) / chroma + 4)) / 6
    return np.stack([hue, (most - least) / (most + 1e-10), most], axis=-1)


def hsv_to_rgb(hsv):
    hue, saturation, value = (hsv[..., i:i + 1] for i in range(3))
    ramp = np.clip(np.abs((hue + np.array([0, 2 / 3, 1 / 3])) % 1 * 6 - 3) - 1, 0, 1)
    return value * (1 - saturation + saturation * ramp)


# --- looks -------------------------------------------------------------------------------------------------------------

def fairytale(c, t):
    cube, blue = t.image("fairy_tale.png"), c[..., BLUE] * 63

    def tile(number):
        row = np.floor(number / 8)
        u = (number - 8 * row) * 0.125 + 0.5 / 512 + (0.125 - 1 / 512) * c[..., RED]
        v = row * 0.125 + 0.5 / 512 + (0.125 - 1 / 512) * c[..., GREEN]
        return sample(cube, u, v)

    return normal(tile(np.floor(blue)), tile(np.ceil(blue)), (blue - np.floor(blue))[..., None])


def sunrise(c, t):
    curve = t.curve(38)
    c = normal(c, overlay(c, 0.0), 0.1019 * t.weight("amaro_mask1.jpg"))
    c = normal(c, exclusion(c, np.array([0.098, 0, 0.1843])), 0.6)
    c = normal(c, level(c, curve), t.weight("amaro_mask2.jpg"))
    c = normal(c, level(c, curve, 1.0), t.weight("toy_mask1.jpg"))
    c = overlay(c, 0.6117)
    return normal(c, exclusion(c, np.array([0.113725, 0.0039, 0])), 0.3)


def sunset(c, t):
    curve = t.curve(39)
    c = normal(c, level(c, curve), t.weight("rise_mask2.jpg"))
    c = through(c, curve, 3)
    c = normal(c, exclusion(c, np.array([0.08627, 0.03529, 0.15294])), 0.6784)
    c = overlay(c, np.array([0.6431, 0.5882, 0.5803]))
    return normal(c, overlay(c, 0.0), 0.549 * t.weight("rise_mask1.jpg"))


def healthy(c, t):
    hsv = rgb_to_hsv(c)
    hue = hsv[..., 0]
    beside = np.maximum(np.maximum(0.125 - hue, hue - 0.208), 0)
    hsv[..., 1] *= 1 - 0.06 * np.clip(1 - beside / 0.0833, 0, 1)
    c = hsv_to_rgb(hsv)
    c = normal(c, screen(c, c), 0.275)
    c = normal(c, overlay(c, np.array([1, 0.61176, 0.25098])), 0.04)
    c = normal(c, multiply(c, t.weight("calm_mask1.jpg")), 0.262)
    return through(through(c, t.curve(40), RED), t.curve(40), GREEN)


def sweets(c, t):
    c = adjust(c, 0.12, 0, 0.05)  # lightening with itself leaves a picture as it is
    c = vibrance(level(c, t.curve(41)), 0.5)
    return normal(c, overlay(c, 0.0), 1 - t.weight("rise_mask2.jpg"))


def romance(c, t):
    c = adjust(c, 0.04, -0.08, -0.10)
    c = level(c, t.curve(42))
    c = normal(c, screen(c, c), 0.15)
    return normal(c, overlay(c, np.array([0.98, 0.62, 0.68])), 0.18)


def warm(c, t):
    curve = t.curve(43)
    c = level(c, curve)
    c = normal(c, level(c, curve, 1.0), 0.6 * t.weight("bluevintage_mask1.jpg"))
    return normal(c, screen(c, t.over("warm_layer1.jpg")), 0.5)


def antique(c, t):
    curve = t.curve(44)
    c = level(c, curve)
    c = normal(c, luma(c), 0.45)
    c = normal(c, overlay(c, np.array([0.62, 0.53, 0.39])), 0.5)
    return level(c, curve, 1.0)


def calm(c, t):
    curve = t.curve(45)
    c = adjust(level(c, curve), 0, -0.06, -0.15)
    c = normal(c, level(c, curve, 0.5), t.weight("calm_mask1.jpg"))
    return normal(c, level(c, curve, 1.0), 0.6 * t.weight("calm_mask2.jpg"))


def latte(c, t):
    curve = t.curve(46)
    c = level(c, curve)
    c = normal(c, luma(c), 0.35)
    c = normal(c, multiply(c, np.array([0.96, 0.87, 0.76])), 0.5)
    return level(c, curve, 1.0)


def cool(c, t):
    curve = t.curve(47)
    c = level(adjust(c, 0.02, 0, -0.12), curve)
    return level(c, curve, 1.0)


def neighbours(picture):
    """The nine pixels around each pixel, (9, height, width) each of whatever the picture holds; level outside."""
    padded = np.pad(picture, ((1, 1), (1, 1)) + ((0, 0),) * (picture.ndim - 2), mode="edge")
    height, width = picture.shape[:2]
    return np.stack([padded[y:y + height, x:x + width] for y in range(3) for x in range(3)])


def crayon(c, t, strength=0.5):
    """Wax over paper: the colour rubbed to its neighbours' mean and made strong, dark lines where the luma turns."""
    around = neighbours(c)
    grey = around @ LUMA
    across = (grey[2] + 2 * grey[5] + grey[8]) - (grey[0] + 2 * grey[3] + grey[6])
    down = (grey[6] + 2 * grey[7] + grey[8]) - (grey[0] + 2 * grey[1] + grey[2])
    line = np.clip(np.hypot(across, down) * 3.2 * strength - 0.08, 0, 1)[..., None]
    wax = np.clip(adjust(around.mean(axis=0), 0.12, 0.05, 0.45), 0, 1)
    return wax * (1 - 0.85 * line)


def sketch(c, t, strength=0.5):
    """Pencil: the luma divided by the lightest of its neighbours leaves white paper and dark lines."""
    grey = neighbours(c) @ LUMA
    line = np.clip((grey[4] + 0.05) / (grey.max(axis=0) + 0.05), 0, 1) ** (5 * strength)
    tone = 0.72 + 0.28 * np.clip(grey.mean(axis=0) * 1.5, 0, 1)
    return np.repeat((line * tone)[..., None], 3, axis=-1)


def amaro(c, t, strength=1.0):
    look = two_way(t.over("brannan_blowout.png"), c, t.image("overlaymap.png"))
    return normal(c, level(look, t.image("amaromap.png")), strength)


def brannan(c, t, strength=1.0):
    look = level(c, t.image("brannan_process.png"))
    look = overlay(look, t.over("brannan_blowout.png"))
    look = level(look, t.image("brannan_contrast.png"))
    look = normal(look, tone(luma(look), t.image("brannan_luma.png")), 0.5)
    return normal(c, level(look, t.image("brannan_screen.png")), strength)


def brooklyn(c, t, strength=1.0):
    look = level(c, t.image("brooklynCurves1.png"))
    look = two_way(luma(look), look, t.image("filter_map_first.png"))
    return normal(c, level(look, t.image("brooklynCurves2.png")), strength)


def earlybird(c, t):
    distance = (2 * ((t.u - 0.5) ** 2 + (t.v - 0.5) ** 2))[..., None]
    c = level(c, t.image("earlybirdcurves.png"))
    c = normal(c, luma(c), 0.4)
    c = two_way(luma(c), c, t.image("earlybirdoverlaymap_new.png"))
    spilled = level(c, t.image("earlybirdblowout.png"))
    c = two_way(distance, c, t.image("vignettemap_new.png"))
    c = normal(c, spilled, np.clip(1 - 2.5 * distance, 0, 1))
    return level(c, t.image("earlybirdmap.png"))


def hudson(c, t, strength=1.0):
    look = two_way(t.over("hudsonbackground.png"), c, t.image("overlaymap.png"))
    return normal(c, level(look, t.image("hudsonmap.png")), strength)


def inkwell(c, t):
    return np.repeat(tone(luma(c), t.image("inkwellmap.png"))[..., :1], 3, axis=-1)


def toaster2(c, t):
    c = two_way(t.over("toastermetal.png"), c, t.image("toastersoftlight.png"))
    c = level(c, t.image("toastercurves.png"))
    c = two_way(luma(c), c, t.image("toasteroverlaymapwarm.png"))
    return level(c, t.image("toastercolorshift.png"))


def dy(c, t, scale=0.5):
    u, v = (scale - 1) * 0.5 + t.u / scale, (scale - 1) * 0.5 + t.v / scale
    shift = scale - 1
    return np.stack([sample(c, u - 0.1 * shift, v - 0.1 * shift)[..., RED], sample(c, u, v)[..., GREEN],
                     sample(c, u - 0.05 * shift, v - 0.05 * shift)[..., BLUE]], axis=-1)


def screen_blend(c, t):
    """With the picture turned half round as the second picture."""
    return screen(c, c[::-1, ::-1])


# By filter number, 1 to 22.
LOOKS = (fairytale, sunrise, sunset, healthy, sweets, romance, warm, antique, calm, latte, cool, crayon, sketch, amaro,
         brannan, brooklyn, earlybird, hudson, inkwell, toaster2, dy, screen_blend)
