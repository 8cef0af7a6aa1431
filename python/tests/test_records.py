"""Records are those of the command line, whatever a picture is handed in as."""
import dataclasses
import json
import pathlib
import pickle
import subprocess
import sys
import typing

import numpy
import pytest
from PIL import Image

import pravik
from conftest import BACK, CODE, FRONT, ROOT, SAMPLES, c_interface, command_line
from pravik.server import create_app
from test_server import asked

KINDS = ("id-front", "id-back", "bank-card", "code")
BLOCKS = [{"text": text, "confidence": 0.9, "boundingBox": {"x": 0.1, "y": y, "width": 0.5, "height": 0.1}}
          for text, y in (("签发机关 凤台县公安局", 0.4), ("有效期限 2015.03.01-2035.03.01", 0.2))]


def samples() -> dict[str, list[pathlib.Path]]:
    kinds: dict[str, list[pathlib.Path]] = {}
    for path in sorted(SAMPLES.glob("*.jpg")):
        kinds.setdefault(next(kind for kind in KINDS if path.name.startswith(kind)),
                         []).append(path)
    return kinds


def test_package_service_and_c_give_what_the_command_line_gives_on_every_sample(reader: pravik.Reader) -> None:
    app, c_answer = create_app(reader), c_interface()
    for number, kind in enumerate(KINDS):
        read = getattr(reader, "read_" + kind.replace("-", "_"))
        pictures = samples()[kind]
        for picture, line in zip(pictures, command_line(kind, *pictures), strict=True):
            record, told = read(picture), json.loads(line)
            assert record.json == line, picture
            assert c_answer(number, picture) == line, picture
            assert asked(app, "POST", f"/v1/{kind}", files={"picture": picture.read_bytes()}).text == line, picture
            assert dataclasses.astuple(record)[:len(told["result"])] == tuple(told["result"].values())
            if kind != "code":
                assert dataclasses.astuple(record.checks) == tuple(told["checks"].values())
            assert pickle.loads(pickle.dumps(record)) == record


def test_cards_and_text_are_those_of_the_command_line(reader: pravik.Reader) -> None:
    pictures = [path for paths in samples().values() for path in paths[:1]]
    for picture, line in zip(pictures, command_line("cards", *pictures), strict=True):
        assert reader.answer("cards", picture) == line
    assert reader.read_text(BACK).json == command_line("text", BACK)[0]
    for card in reader.read(FRONT):
        assert isinstance(card.record, pravik.IdFront) and card.kind == "id-front" and card.error is None
        assert card.record.report.field("id_number").confidence > 0.5
        with pytest.raises(KeyError):
            card.record.report.field("idNumber")


def test_a_picture_may_be_handed_in_in_any_form(reader: pravik.Reader, tmp_path: pathlib.Path) -> None:
    image = Image.open(BACK)
    rgb = numpy.asarray(image.convert("RGB"))
    bgra = numpy.dstack([rgb[..., ::-1], numpy.zeros(rgb.shape[:2], numpy.uint8)])
    expected = reader.read_id_back(BACK)
    png = tmp_path / "名字 \udcff.png"
    image.save(png)
    turned = image.transpose(Image.Transpose.ROTATE_90)
    turned.getexif()[0x112] = 6
    data = BACK.read_bytes()
    wide = bytearray(2 * len(data))
    wide[::2] = data
    forms: list[tuple[str, typing.Any, pravik.Channels | None]] = [
        ("text", str(BACK), None), ("bytes", data, None), ("bytearray", bytearray(data), None),
        ("memoryview", memoryview(data), None), ("strided memoryview", memoryview(wide)[::2], None),
        ("png", png, None), ("rgb", rgb, "RGB"), ("bgr", rgb[..., ::-1].copy(), "BGR"), ("a view", rgb[..., ::-1], "BGR"),
        ("bgra", bgra, "BGRA"), ("read-only", numpy.frombuffer(rgb.tobytes(), numpy.uint8).reshape(rgb.shape), "RGB"),
        ("padded rows", numpy.pad(rgb, ((0, 0), (0, 7), (0, 0)))[:, :-7], "RGB"),
        ("upside down twice", rgb[::-1].copy()[::-1], "RGB"), ("image", image, None), ("turned image", turned, None),
        ("transparent", image.convert("RGBA"), None)]
    for name, picture, channels in forms:
        assert reader.read_id_back(picture, channels=channels) == expected, name
    grey = numpy.asarray(image.convert("L"))
    assert reader.read_id_back(grey) == reader.read_id_back(image.convert("L"))
    assert reader.read_code(numpy.asarray(Image.open(CODE).convert("RGB")), channels="RGB").payload == "6949410778762"


def test_parses_blocks_of_text() -> None:
    record = pravik.parse_id_back(BLOCKS)
    assert (record.issuing_authority, record.validity_period) == ("凤台县公安局", "20150301-20350301")
    blocks = [pravik.Block(block["text"], block["confidence"], **block["boundingBox"]) for block in BLOCKS]
    assert pravik.parse_id_back(blocks) == record and record.checks.start_before_end
    for parse, wrong, code in ((pravik.parse_id_front, BLOCKS, "insufficient_text"),
                               (pravik.parse_bank_card, [], "insufficient_text"),
                               (pravik.parse_id_back, [{}], "invalid_input"),
                               (pravik.parse_id_back, [pravik.Block("a", 2, 0, 0, 1, 1)], "invalid_input"),
                               (pravik.parse_id_back, [pravik.Block("a", float("nan"), 0, 0, 1, 1)], "invalid_input")):
        with pytest.raises(pravik.ReadingError) as caught:
            parse(wrong)
        assert caught.value.code == code


def test_the_words_name_every_kind_and_field() -> None:
    words = pravik.wordings("en")
    assert words["kinds"]["bank-card"]["fields"]["cardNumber"] == {"label": "Card number", "display": "masked"}
    assert pravik.wordings("zh")["reasons"]["too_dark"] != words["reasons"]["too_dark"]
    assert set(words) == {"kinds", "errors", "reasons", "warnings", "checks"}


def test_the_example_of_the_guide_runs(tmp_path: pathlib.Path) -> None:
    script = ROOT / "python/examples/read_cards.py"
    ended = subprocess.run([sys.executable, script, FRONT, BACK, tmp_path], capture_output=True, text=True, timeout=120)
    assert ended.stdout == "陈宇和 62061320120722875X right\n信阳市公安局南山分局 20221026-长期\n"
    assert ended.stderr.startswith(f"{tmp_path}: invalid_image: ")
