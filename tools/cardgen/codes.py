"""Invents codes of the eleven symbologies and draws each on a printed label.

The symbols themselves come from zint, a program that shares nothing with the reader under test.
"""

import io
import string
import subprocess

from PIL import Image

import tables
from canvas import Canvas

UPPER_AND_DIGITS = string.ascii_uppercase + string.digits

# Free edge of a label; the quiet zone around a symbol in modules.
MARGIN_MM = 5.0
# Width of the words beside a code, and of the narrowest label with its words above and below.
WORDS_MM, MIN_WIDTH_MM = 30.0, 44.0
QUIET_MODULES = {"matrix": 4, "linear": 10, "stacked": 4}
# Every module is enlarged by this before it is scaled to the label.
MODULE_PIXELS = 8

INKS = ((16, 16, 18), (16, 16, 18), (16, 16, 18), (30, 34, 78), (58, 32, 28))
PAPERS = ((255, 255, 255), (250, 250, 248), (246, 242, 232), (240, 244, 248), (252, 247, 210))
HEADINGS = ("快递运单", "商品标签", "仓储编号", "设备资产卡", "入场凭证", "取件码", "会员卡", "检验合格", "样品登记")
CAPTIONS = ("请妥善保管", "扫码查看详情", "轻拿轻放", "有问题请联系客服", "数量：壹", "规格：标准", "复核：已检")


def gs1_check_digit(digits):
    """The check digit after `digits` by the GS1 General Specifications (weights 3 and 1 from the right)."""
    total = sum(int(digit) * (3 if index % 2 == 0 else 1) for index, digit in enumerate(reversed(digits)))
    return str(-total % 10)


def expand_upc_e(seven):
    """The 11 digits of UPC-A that a number system and six UPC-E digits stand for (without check digit)."""
    system, d = seven[0], seven[1:]
    if d[5] in "012":
        return system + d[:2] + d[5] + "0000" + d[2:5]
    if d[5] == "3":
        return system + d[:3] + "00000" + d[3:5]
    if d[5] == "4":
        return system + d[:4] + "00000" + d[4]
    return system + d[:5] + "0000" + d[5]


def _digits(rng, count):
    return "".join(rng.choice(string.digits) for _ in range(count))


def _characters(rng, alphabet, least, most):
    return "".join(rng.choice(alphabet) for _ in range(rng.randint(least, most)))


def _with_check(digits):
    return digits + gs1_check_digit(digits)


def _upc_e(rng):
    """Eight digits in the one short form that the standard allows for their long form."""
    while True:
        seven = rng.choice("01") + _digits(rng, 6)
        digits, last = seven[1:], seven[6]
        shorter_exists = {"3": digits[2] in "012", "4": digits[3] == "0"}.get(last, last > "4" and digits[4] == "0")
        if not shorter_exists:
            return seven + gs1_check_digit(expand_upc_e(seven))


def _web_address(rng):
    return f"https://example.{rng.choice(('com', 'org', 'net'))}/{_characters(rng, string.ascii_lowercase, 3, 8)}" \
           f"?id={_digits(rng, rng.randint(3, 9))}"


def _chinese(rng):
    place = rng.choice(tables.DISTRICTS) + rng.choice(tables.STREETS)
    return rng.choice((
        f"你好，{place}{rng.randint(1, 300)}号", f"取件地址：{place}，取件码 {_digits(rng, 6)}",
        f"设备：水泵；编号：{_digits(rng, 8)}", f"{place}欢迎您！",
    ))


def _qr(rng):
    return rng.choice((_web_address, _web_address, _chinese, _chinese, _network, _long_number))(rng)


def _long_number(rng):
    return _digits(rng, rng.randint(6, 24))


def _network(rng):
    return f"WIFI:T:WPA;S:guest-{_digits(rng, 3)};P:{_characters(rng, UPPER_AND_DIGITS, 8, 12)};;"


def _tracking(rng):
    return _characters(rng, string.ascii_uppercase, 2, 2) + _digits(rng, rng.randint(6, 10))


def _part_number(rng):
    return f"{_characters(rng, string.ascii_uppercase, 2, 3)}-{_digits(rng, rng.randint(3, 5))}"


def _record(rng):
    return f"{_part_number(rng)};LOT {_digits(rng, 5)};{_characters(rng, UPPER_AND_DIGITS, 6, 18)}"


# Display name -> (zint's name, shape, payload maker, extra arguments of zint).
SYMBOLOGIES = {
    "QR Code": ("QRCODE", "matrix", _qr, ()),
    "Aztec": ("AZTEC", "matrix", _record, ()),
    "DataMatrix": ("DATAMATRIX", "matrix", _record, ("--square",)),
    "EAN-13": ("EANX_CHK", "linear", lambda r: _with_check("69" + _digits(r, 10)), ()),
    "EAN-8": ("EANX_CHK", "linear", lambda r: _with_check("6" + _digits(r, 6)), ()),
    "UPC-E": ("UPCE_CHK", "linear", _upc_e, ()),
    "Code 128": ("CODE128", "linear", _tracking, ()),
    "Code 39": ("CODE39", "linear", _part_number, ()),
    "Code 93": ("CODE93", "linear", _tracking, ()),
    "ITF-14": ("ITF14", "linear", lambda r: _with_check(r.choice("123456") + _digits(r, 12)), ()),
    "PDF417": ("PDF417", "stacked", _record, ("--cols=3",)),
}


def record(index, rng):
    """The record of code `index` of a set; the symbologies follow each other in turn."""
    symbology = list(SYMBOLOGIES)[index % len(SYMBOLOGIES)]
    return {"payload": SYMBOLOGIES[symbology][2](rng), "symbology": symbology}


def symbol(payload, symbology, arguments=()):
    """The bare symbol as a black-on-white picture, one pixel a module across."""
    barcode, _, _, extra = SYMBOLOGIES[symbology]
    data = payload
    if symbology == "ITF-14":
        data = payload[:-1]  # zint appends the check digit itself
    command = ["zint", f"--barcode={barcode}", "--notext", "--scale=0.5", "--direct", "--filetype=PNG",
               *extra, *arguments, f"--data={data}"]
    try:
        done = subprocess.run(command, capture_output=True, check=True)
    except FileNotFoundError:
        raise SystemExit("cardgen: zint is not installed; run tools/setup") from None
    except subprocess.CalledProcessError as error:
        raise ValueError(f"{symbology} {payload!r}: {error.stderr.decode().strip()}") from error
    picture = Image.open(io.BytesIO(done.stdout)).convert("L")
    return picture.crop(picture.point(lambda value: 255 - value).getbbox())


class Label:
    """A printed label that carries one code; `rng` settles its size, paper and words."""

    foil = False

    def __init__(self, code, rng):
        self._code = code
        symbology = code["symbology"]
        shape = SYMBOLOGIES[symbology][1]
        # Without --binary zint announces UTF-8 with an ECI; both forms are met on real labels.
        arguments = ("--binary",) if symbology == "QR Code" and rng.random() < 0.5 else ()
        self._symbol = symbol(code["payload"], symbology, arguments)
        self.finest = rng.uniform(*{"matrix": (0.7, 1.1), "linear": (0.36, 0.5), "stacked": (0.42, 0.55)}[shape])
        self._code_width = self._symbol.width * self.finest
        self._code_height = self._symbol.height * self.finest if shape != "linear" else rng.uniform(13, 20)
        self._quiet = QUIET_MODULES[shape] * self.finest
        self._ink, self._paper = rng.choice(INKS), rng.choice(PAPERS)
        self._heading, self._caption = rng.choice(HEADINGS), rng.choice(CAPTIONS)
        self._style = rng.choice(("hei", "zenhei", "hei-bold"))
        self._beside = shape == "matrix" and rng.random() < 0.5
        self._serial = f"No. {_digits(rng, 5)}"
        code_width = self._code_width + 2 * self._quiet + 2 * MARGIN_MM
        self.width = code_width + WORDS_MM if self._beside else max(MIN_WIDTH_MM, code_width)
        self.height = self._code_height + 2 * self._quiet + (10.0 if self._beside else 20.0)
        self.corner = rng.choice((0.2, 0.2, 2.0))
        self.gloss = rng.choice((0.0, 0.3))

    def draw(self, pixels_per_mm):
        """The flat label as an RGB picture."""
        canvas = Canvas(self.width, self.height, pixels_per_mm, self._paper)
        left = MARGIN_MM + self._quiet if self._beside else (self.width - self._code_width) / 2
        top = self._quiet + (5.0 if self._beside else 10.0)
        size = (self._symbol.width * MODULE_PIXELS, self._symbol.height * MODULE_PIXELS)
        enlarged = self._symbol.resize(size, Image.Resampling.NEAREST)
        mask = enlarged.point(lambda value: 255 - value)
        canvas.paste(Image.new("RGB", size, self._ink), left, top, self._code_width, self._code_height, mask)
        self._words(canvas, top)
        return canvas.image

    def _words(self, canvas, top):
        payload = self._code["payload"]
        if self._beside:
            left = self.width - WORDS_MM
            canvas.text(left, top + 3, self._heading, self._style, 4.2, self._ink)
            canvas.text(left, top + 10, self._caption, self._style, 2.6, self._ink)
            canvas.text(left, top + 15, self._serial, "sans", 2.6, self._ink)
            return
        canvas.text(self.width / 2, 5.0, self._heading, self._style, 4.0, self._ink, anchor="m")
        below = top + self._code_height + self._quiet
        if SYMBOLOGIES[self._code["symbology"]][1] == "linear":
            canvas.text(self.width / 2, top + self._code_height + 3.0, payload, "ocr-b", 3.6, self._ink, 0.5, "m")
            below += 1.5
        canvas.text(self.width / 2, below + 3.0, self._caption, self._style, 2.8, self._ink, anchor="m")
