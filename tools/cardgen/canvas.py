"""A drawing surface measured in millimetres from the top left, and the fonts that are drawn on it."""

import functools

from PIL import Image, ImageDraw, ImageFont

# Debian's free fonts: style -> (file, index inside the collection).
FONTS = {
    "hei": ("/usr/share/fonts/opentype/noto/NotoSansCJK-Regular.ttc", 2),
    "hei-bold": ("/usr/share/fonts/opentype/noto/NotoSansCJK-Bold.ttc", 2),
    "zenhei": ("/usr/share/fonts/truetype/wqy/wqy-zenhei.ttc", 0),
    "song": ("/usr/share/fonts/opentype/noto/NotoSerifCJK-Regular.ttc", 2),
    "song-bold": ("/usr/share/fonts/opentype/noto/NotoSerifCJK-Bold.ttc", 2),
    "ocr-b": ("/usr/share/fonts/opentype/ocr-b/OCRB.otf", 0),
    "mono-bold": ("/usr/share/fonts/truetype/dejavu/DejaVuSansMono-Bold.ttf", 0),
    "mono": ("/usr/share/fonts/truetype/dejavu/DejaVuSansMono.ttf", 0),
    "sans": ("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf", 0),
    "sans-bold": ("/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf", 0),
}


@functools.lru_cache(maxsize=256)
def font(style, pixels):
    """The font of that style at an em size in pixels."""
    path, index = FONTS[style]
    try:
        return ImageFont.truetype(path, pixels, index=index, layout_engine=ImageFont.Layout.BASIC)
    except OSError as error:
        raise SystemExit(f"cardgen: font file {path} cannot be read ({error}); run tools/setup") from error


class Canvas:
    """An RGB picture of a flat object; every length is in millimetres, every colour an (r, g, b) triple."""

    def __init__(self, width, height, pixels_per_mm, background=(255, 255, 255)):
        self.scale = pixels_per_mm
        size = (round(width * pixels_per_mm), round(height * pixels_per_mm))
        if isinstance(background, Image.Image):
            self.image = background.resize(size, Image.Resampling.BICUBIC)
        else:
            self.image = Image.new("RGB", size, background)
        self._draw = ImageDraw.Draw(self.image)

    def text(self, x, y, text, style, size, colour, spacing=0.0, anchor="l"):
        """Draws a line centred vertically on `y` by the em box; `spacing` is added after each character.

        `anchor` says whether `x` is the left end ("l"), the middle ("m") or the right end ("r").
        """
        x -= {"l": 0.0, "m": 0.5, "r": 1.0}[anchor] * self.text_width(text, style, size, spacing)
        face = font(style, self._pixels(size))
        # The baseline lies about 0.36 em below the middle of a Chinese character.
        baseline = (y + 0.36 * size) * self.scale
        for character in text if spacing else (text,):
            self._draw.text((x * self.scale, baseline), character, font=face, fill=colour, anchor="ls")
            x += face.getlength(character) / self.scale + spacing

    def text_width(self, text, style, size, spacing=0.0):
        face = font(style, self._pixels(size))
        if spacing:
            return sum(face.getlength(c) / self.scale + spacing for c in text) - spacing
        return face.getlength(text) / self.scale

    def line(self, points, colour, width):
        self._draw.line([self._point(p) for p in points], fill=colour, width=self._pixels(width), joint="curve")

    def polygon(self, points, colour):
        self._draw.polygon([self._point(p) for p in points], fill=colour)

    def ellipse(self, x, y, radius_x, radius_y, colour):
        box = [self._point((x - radius_x, y - radius_y)), self._point((x + radius_x, y + radius_y))]
        self._draw.ellipse(box, fill=colour)

    def rectangle(self, left, top, right, bottom, colour, radius=0.0):
        box = [self._point((left, top)), self._point((right, bottom))]
        self._draw.rounded_rectangle(box, radius * self.scale, fill=colour)

    def paste(self, picture, left, top, width, height, mask=None, resample=Image.Resampling.LANCZOS):
        """Puts a picture, scaled to the given size, at the given place."""
        size = (max(1, round(width * self.scale)), max(1, round(height * self.scale)))
        place = (round(left * self.scale), round(top * self.scale))
        scaled_mask = mask.resize(size, resample) if mask else None
        self.image.paste(picture.resize(size, resample), place, scaled_mask)

    def _pixels(self, length):
        return max(1, round(length * self.scale))

    def _point(self, point):
        return (point[0] * self.scale, point[1] * self.scale)
