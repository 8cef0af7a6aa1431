"""Writes a film as Motion JPEG in an AVI file, which every video reader knows without a codec.

The layout is that of Microsoft's "AVI RIFF File Reference": a header, the frames as JPEG files, and their index.
"""

import struct

KEY_FRAME, HAS_INDEX = 0x10, 0x10
FRAME_ID = b"00dc"


def _chunk(name, content):
    return name + struct.pack("<I", len(content)) + content + b"\0" * (len(content) % 2)


def _list(name, *chunks):
    return _chunk(b"LIST", name + b"".join(chunks))


def _header(size, rate, frames):
    """The header list; `frames` are the lengths of the frames in bytes."""
    width, height = size
    largest = max(frames, default=0)
    main = struct.pack("<14I", 1_000_000 // rate, largest * rate, 0, HAS_INDEX, len(frames), 0, 1, largest, width,
                       height, 0, 0, 0, 0)
    stream = struct.pack("<4s4sIHHIIIIIIII4H", b"vids", b"MJPG", 0, 0, 0, 0, 1, rate, 0, len(frames), largest,
                         0xFFFFFFFF, 0, 0, 0, width, height)
    form = struct.pack("<IiiHH4sIiiII", 40, width, height, 1, 24, b"MJPG", 3 * width * height, 0, 0, 0, 0)
    return _list(b"hdrl", _chunk(b"avih", main), _list(b"strl", _chunk(b"strh", stream), _chunk(b"strf", form)))


def write(path, size, rate, frames):
    """Writes JPEG files of one size as a film of `rate` pictures a second."""
    frames = list(frames)
    chunks = [_chunk(FRAME_ID, frame) for frame in frames]
    index, offset = [], 4  # counted from the name of the list of frames
    for frame, chunk in zip(frames, chunks):
        index.append(struct.pack("<4sIII", FRAME_ID, KEY_FRAME, offset, len(frame)))
        offset += len(chunk)
    content = (b"AVI ", _header(size, rate, [len(frame) for frame in frames]), _list(b"movi", *chunks),
               _chunk(b"idx1", b"".join(index)))
    path.write_bytes(_chunk(b"RIFF", b"".join(content)))
