"""Pictures of every form as what the extension takes."""

from __future__ import annotations

import os
import sys
from collections.abc import Callable
from typing import TYPE_CHECKING, Any, Literal, TypeAlias, Union

if TYPE_CHECKING:
    import numpy
    import numpy.typing
    import PIL.Image

    from ._pravik import Answer, Call

Channels: TypeAlias = Literal["RGB", "BGR", "RGBA", "BGRA", "L"]
"""The order of the channels of an array, in its last dimension; "L" is grey, an array of two dimensions."""
Picture: TypeAlias = Union[str, bytes, bytearray, memoryview, "os.PathLike[str]", "os.PathLike[bytes]",
                           "numpy.typing.NDArray[numpy.uint8]", "PIL.Image.Image"]
"""A path, the bytes of a file (`bytes`, `bytearray`, `memoryview`), a NumPy array of H x W x 3, H x W x 4 or H x W and
type uint8, upright, or a Pillow image."""

# By the numbers of pravik_pixel_format.
FORMATS = {"BGRA": 0, "L": 1, "BGR": 2, "RGB": 3, "RGBA": 4}
# As in the library.
MAXIMUM_PIXELS = 100_000_000
# What the extension takes.
LARGEST_SIDE = 2**31 - 1
# Pillow's modes whose values are not those of a picture on a screen.
WIDE_MODES = ("I", "F", "I;")
# The tag of EXIF that tells how a picture is turned.
ORIENTATION = 0x112

Reading: TypeAlias = "Callable[[Call, int], Answer]"


def reading_of(picture: Picture, channels: Channels | None) -> Reading:
    """How a call reads the picture. Raises TypeError or ValueError for what is none."""
    if _is_instance(picture, "numpy", "ndarray"):
        return _array(picture, channels)
    if channels is not None:
        raise ValueError("channels is told for an array only: files and images tell it themselves")
    if isinstance(picture, (bytes, bytearray, memoryview)):
        return _memory(picture)
    if isinstance(picture, (str, os.PathLike)):
        path = os.fsencode(picture)
        if b"\0" in path:
            raise ValueError("a path holds no zero byte")
        return lambda call, kind: call.file(kind, path)
    if _is_instance(picture, "PIL.Image", "Image"):
        return _image(picture)
    raise TypeError(f"a picture is a path, the bytes of a file, a NumPy array or a Pillow image, not "
                    f"{type(picture).__name__}")


def _is_instance(value: object, module: str, name: str) -> bool:
    """Whether it is of a class of a module that only who uses it has installed."""
    loaded = sys.modules.get(module)
    return loaded is not None and isinstance(value, getattr(loaded, name))


def _memory(picture: bytes | bytearray | memoryview) -> Reading:
    data = picture.tobytes() if isinstance(picture, memoryview) and not picture.c_contiguous else picture
    return lambda call, kind: call.memory(kind, data)


def _refused(width: int, height: int) -> Reading | None:
    """How a picture that is too large is answered, before anything of it is copied."""
    if width < 1 or height < 1:
        raise ValueError(f"a picture has at least one pixel, not {width} x {height}")
    if width * height <= MAXIMUM_PIXELS:
        return None
    return lambda call, kind: call.too_large(kind, min(width, LARGEST_SIDE), min(height, LARGEST_SIDE))


def _array(array: Any, channels: Channels | None) -> Reading:
    import numpy

    if array.dtype != numpy.uint8:
        raise TypeError(f"an array is of type uint8, not {array.dtype}")
    if array.ndim not in (2, 3):
        raise ValueError(f"an array is H x W x 3, H x W x 4 or H x W, not of the shape {array.shape}")
    height, width = array.shape[:2]
    told = "L" if array.ndim == 2 and channels is None else channels
    if told is None:
        raise ValueError('say in which order the channels are: channels="RGB" or "BGR", "RGBA" or "BGRA"')
    if told not in FORMATS:
        raise ValueError(f"channels is one of {', '.join(FORMATS)}, not {told!r}")
    if array.shape[2:] != (() if told == "L" else (len(told),)):
        raise ValueError(f"an array of the shape {array.shape} has no channels {told}")
    if refused := _refused(width, height):
        return refused
    # Views that are turned over or cut out are copied; others stay where they are.
    pixels: Any = numpy.ascontiguousarray(array)
    return lambda call, kind: call.pixels(kind, pixels, width, height, FORMATS[told])


def _image(image: Any) -> Reading:
    from PIL import Image, ImageOps

    if image.mode.startswith(WIDE_MODES):
        raise ValueError(f"an image of the mode {image.mode} is no picture of 8 bits a channel: convert it first")
    if refused := _refused(*image.size):
        return refused
    # Either of these copies an image even when it has nothing to do.
    upright = image if image.getexif().get(ORIENTATION, 1) == 1 else ImageOps.exif_transpose(image)
    width, height = upright.size
    if upright.mode == "L":
        return lambda call, kind: call.pixels(kind, upright.tobytes(), width, height, FORMATS["L"])
    if upright.mode in ("RGBA", "LA", "PA", "La", "RGBa") or "transparency" in upright.info:
        # What is transparent lies over white, as in files.
        page = Image.new("RGBA", upright.size, "white")
        page.alpha_composite(upright.convert("RGBA"))
        upright = page
    colors = upright if upright.mode == "RGB" else upright.convert("RGB")
    pixels = colors.tobytes("raw", "BGRX")
    return lambda call, kind: call.pixels(kind, pixels, width, height, FORMATS["BGRA"])
