"""What becomes of a photo on its way through phone and messenger: brightened, made small, sharpened, coded again."""

import io

import numpy as np
from PIL import Image, ImageFilter

import camera

# Width of the card in the picture that arrives, in pixels.
CARD_WIDTH = (450, 700)
QUALITY = (40, 76)
# A phone exposes so that this level is passed by few pixels, as far as the gain may go.
FEW, BRIGHT, GAINS = 95, (190, 255), (0.9, 1.6)
# Share of the photos whose focus lay elsewhere, and their Gaussian sigma in pixels that arrive.
SOFT_SHARE, SOFTNESS = 0.5, (0.3, 0.8)
SHARPENED_SHARE, SHARPENING = 0.35, (40, 160)
RESAMPLINGS = (Image.Resampling.BILINEAR, Image.Resampling.BICUBIC, Image.Resampling.BOX, Image.Resampling.NEAREST)
RESAMPLING_WEIGHTS = (0.4, 0.35, 0.2, 0.05)


def forward(picture, quality, card_width, rng):
    """The JPEG bytes of a photo as they arrive.

    `quality` is that of the camera's own JPEG, `card_width` the card's in the photo in pixels; a photo is never made
    larger. `rng` is a numpy generator.
    """
    gain = np.clip(rng.uniform(*BRIGHT) / max(1, np.percentile(picture.convert("L"), FEW)), *GAINS)
    exposed = picture.point([min(255, round(gain * level)) for level in range(256)] * 3)
    taken = Image.open(io.BytesIO(camera.jpeg(exposed, quality)))
    scale = min(1.0, rng.uniform(*CARD_WIDTH) / card_width)
    sent = taken.resize(tuple(round(side * scale) for side in taken.size),
                        RESAMPLINGS[rng.choice(len(RESAMPLINGS), p=RESAMPLING_WEIGHTS)])
    if rng.random() < SOFT_SHARE:
        sent = sent.filter(ImageFilter.GaussianBlur(rng.uniform(*SOFTNESS)))
    if rng.random() < SHARPENED_SHARE:
        sent = sent.filter(ImageFilter.UnsharpMask(1.5, int(rng.uniform(*SHARPENING)), 1))
    stream = io.BytesIO()
    sent.save(stream, "JPEG", quality=int(rng.integers(*QUALITY)), subsampling="4:2:0")
    return stream.getvalue()
