"""Reads Chinese resident identity cards, bank cards, and QR and bar codes from pictures, on this machine alone.

The functions share one `Reader`, which is made with the first call; make one of your own for other settings, or an
`AsyncReader` for asyncio.
"""

from __future__ import annotations

from collections.abc import Callable
from typing import Any, ParamSpec, TypeVar

from ._pictures import Channels, Picture
from ._pravik import version as __version__
from ._reader import (AsyncReader, Language, LogLevel, Reader, Stop, parse_bank_card, parse_id_back, parse_id_front,
                      wordings)
from ._reader import shared_reader as _shared_reader
from ._records import (BankCard, BankCardChecks, Block, Card, CardRecord, Code, Corners, FieldReport, IdBack,
                       IdBackChecks, IdFront, IdFrontChecks, Kind, Point, ReadingError, Record, Report, Text)

__all__ = ["AsyncReader", "BankCard", "BankCardChecks", "Block", "Card", "CardRecord", "Channels", "Code", "Corners",
           "FieldReport", "IdBack", "IdBackChecks", "IdFront", "IdFrontChecks", "Kind", "Language", "LogLevel", "Picture", "Point",
           "ReadingError", "Record", "Report", "Reader", "Stop", "Text", "__version__", "parse_bank_card",
           "parse_id_back", "parse_id_front", "read", "read_bank_card", "read_code", "read_id_back", "read_id_front",
           "read_text", "wordings"]


_Arguments = ParamSpec("_Arguments")
_Result = TypeVar("_Result")


def _shared(method: Callable[[Reader], Callable[_Arguments, _Result]], name: str,
            like: Callable[..., Any]) -> Callable[_Arguments, _Result]:
    def function(*arguments: _Arguments.args, **options: _Arguments.kwargs) -> _Result:
        return method(_shared_reader())(*arguments, **options)

    function.__name__ = function.__qualname__ = name
    function.__doc__ = like.__doc__
    return function


read = _shared(lambda reader: reader.read, "read", Reader.read)
read_id_front = _shared(lambda reader: reader.read_id_front, "read_id_front", Reader.read_id_front)
read_id_back = _shared(lambda reader: reader.read_id_back, "read_id_back", Reader.read_id_back)
read_bank_card = _shared(lambda reader: reader.read_bank_card, "read_bank_card", Reader.read_bank_card)
read_code = _shared(lambda reader: reader.read_code, "read_code", Reader.read_code)
read_text = _shared(lambda reader: reader.read_text, "read_text", Reader.read_text)
