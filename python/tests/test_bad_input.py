"""Whatever is handed in gets a record or a clear exception."""
import datetime
import pathlib
import pickle
import typing

import numpy
import pytest
from PIL import Image

import pravik
from conftest import BACK, CODE, FRONT

SMALL = numpy.full((48, 64, 3), 200, numpy.uint8)


@pytest.mark.parametrize(("picture", "channels", "error", "words"), [
    (None, None, TypeError, "a picture is a path"),
    (3.5, None, TypeError, "a picture is a path"),
    ([[1, 2], [3, 4]], None, TypeError, "a picture is a path"),
    ("a\0b.jpg", None, ValueError, "zero byte"),
    (str(FRONT), "RGB", ValueError, "channels is told for an array only"),
    (SMALL, None, ValueError, "in which order"),
    (SMALL, "rgb", ValueError, "channels is one of"),
    (SMALL, "RGBA", ValueError, "has no channels RGBA"),
    (SMALL, "L", ValueError, "has no channels L"),
    (SMALL.astype(numpy.float32), "RGB", TypeError, "not float32"),
    (SMALL.astype(numpy.uint16), "RGB", TypeError, "not uint16"),
    (SMALL.astype(bool), "RGB", TypeError, "not bool"),
    (SMALL.astype(object), "RGB", TypeError, "not object"),
    (SMALL[0, 0], "RGB", ValueError, "of the shape (3,)"),
    (SMALL[None], "RGB", ValueError, "of the shape (1, 48, 64, 3)"),
    (SMALL[..., :2], "RGB", ValueError, "has no channels RGB"),
    (SMALL[:0], "RGB", ValueError, "at least one pixel"),
    (numpy.zeros((0, 0), numpy.uint8), None, ValueError, "at least one pixel"),
    (Image.new("F", (9, 9)), None, ValueError, "mode F"),
    (Image.new("I;16", (9, 9)), None, ValueError, "mode I;16"),
    (Image.new("RGB", (0, 9)), None, ValueError, "at least one pixel"),
])
def test_what_is_no_picture_is_told(reader: pravik.Reader, picture: typing.Any, channels: typing.Any,
                                    error: type[Exception], words: str) -> None:
    with pytest.raises(error) as caught:
        reader.read(picture, channels=channels)
    assert words in str(caught.value)


@pytest.mark.parametrize(("picture", "channels", "reason"), [
    ("no/such/file.jpg", None, "no such file"),
    (pathlib.Path(__file__).parent, None, "is a directory"),
    (b"", None, "the file is empty"),
    (bytearray(), None, "the file is empty"),
    (b"GIF89a", None, "not a picture"),
    (BACK.read_bytes()[:5000], None, "the file is truncated"),
    (numpy.broadcast_to(numpy.uint8(7), (100_000, 100_000, 3)), "BGR", "too large: 100000 x 100000 pixels"),
    (numpy.broadcast_to(numpy.uint8(7), (1, 2**40)), "L", "too large"),
])
def test_a_picture_that_cannot_be_read_says_why(reader: pravik.Reader, picture: typing.Any, channels: typing.Any,
                                                reason: str) -> None:
    with pytest.raises(pravik.ReadingError) as caught:
        reader.read_id_front(picture, channels=channels)
    error = caught.value
    assert error.code == "invalid_image" and reason in str(error.reason), error.reason
    assert error.message.startswith("there is no picture that can be read: ")
    assert pickle.loads(pickle.dumps(error)) == error


def test_every_form_of_a_blank_picture_has_the_same_reason(reader: pravik.Reader) -> None:
    blank = numpy.full((600, 800, 3), 90, numpy.uint8)
    for picture, channels in ((blank, "RGB"), (blank[::-1, ::-1, ::-1], "BGR"), (blank[..., 0], None),
                              (Image.fromarray(blank), None), (Image.fromarray(blank).convert("CMYK"), None),
                              (Image.fromarray(blank).convert("P"), None), (Image.fromarray(blank).convert("1"), None)):
        with pytest.raises(pravik.ReadingError) as caught:
            reader.read(picture, channels=channels)  # type: ignore[arg-type]
        assert caught.value.code == "insufficient_text"
        assert caught.value.reason in ("no_card_found", "too_dark")


def test_errors_tell_what_was_found(reader: pravik.Reader) -> None:
    for read, picture, code, reason, words in (
            (reader.read_id_back, FRONT, "scene_mismatch", "wrong_document", "another document was expected"),
            (reader.read_code, FRONT, "insufficient_text", "no_code_found", "no QR code"),
            (reader.read_bank_card, CODE, "insufficient_text", "no_number_found", "")):
        with pytest.raises(pravik.ReadingError) as caught:
            read(picture)
        assert (caught.value.code, caught.value.reason) == (code, reason)
        assert words in caught.value.message and caught.value.json.startswith('{"kind":"')
    with pytest.raises(pravik.ReadingError) as caught:
        pravik.Reader(models="no/such/folder").read_id_front(FRONT)
    assert caught.value.code == "recognition_failed"


@pytest.mark.parametrize("settings", [{"threads": -1}, {"time_limit": 0}, {"time_limit": float("nan")},
                                      {"time_limit": 1e9}, {"language": "fr"}, {"log_level": "all"},
                                      {"models": "a\0b"}])
def test_settings_that_cannot_be_are_refused(settings: dict[str, typing.Any]) -> None:
    with pytest.raises(ValueError):
        pravik.Reader(**settings)


def test_a_card_expires_by_the_day_that_is_told() -> None:
    picture = FRONT.parent / "id-back-clean-0000.jpg"
    for year, warnings in ((2010, ()), (2016, ("expired",))):
        assert pravik.Reader(date=datetime.date(year, 1, 1)).read_id_back(picture).report.warnings == warnings
