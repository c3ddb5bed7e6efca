"""Pictures side by side, each with its name."""
import numpy as np
from PIL import Image, ImageDraw

MARGIN, LINE = 6, 14


def contact_sheet(pictures: dict[str, np.ndarray], columns: int, width: int, height: int,
                  enlarge=Image.BILINEAR) -> Image.Image:
    """The pictures (bytes, grey or RGB) stretched to width by height, row by row."""
    rows = -(-len(pictures) // columns)
    size = (columns * (width + MARGIN) + MARGIN, rows * (height + LINE + MARGIN) + MARGIN)
    sheet = Image.new("RGB", size, (40, 40, 40))
    draw = ImageDraw.Draw(sheet)
    for number, (name, pixels) in enumerate(pictures.items()):
        row, column = divmod(number, columns)
        left, top = MARGIN + column * (width + MARGIN), MARGIN + row * (height + LINE + MARGIN)
        sheet.paste(Image.fromarray(pixels).convert("RGB").resize((width, height), enlarge), (left, top))
        draw.text((left, top + height + 1), name, fill=(230, 230, 230))
    return sheet
