"""The readers."""

from __future__ import annotations

import asyncio
import contextlib
import datetime
import functools
import json
import logging
import os
import pathlib
import threading
from collections.abc import Callable, Iterable, Iterator, Mapping
from typing import Any, Literal, TypeAlias, TypeVar

from . import _pravik
from ._pictures import Channels, Picture, reading_of
from ._records import (BankCard, Block, Card, Code, IdBack, IdFront, Kind, ReadingError, Text, blocks_json, card_of,
                       error_of, record_of)

Language: TypeAlias = Literal["zh", "en"]
LogLevel: TypeAlias = Literal["none", "error", "warning", "info", "debug", "verbose"]

# In the order of pravik_kind and pravik_log_level.
KINDS: tuple[Kind, ...] = ("id-front", "id-back", "bank-card", "code", "text", "cards")
LOG_LEVELS: tuple[LogLevel, ...] = ("none", "error", "warning", "info", "debug", "verbose")
# Those of Python's logging; the library's most detailed level has none of its own.
LOGGING_LEVELS = (logging.NOTSET, logging.ERROR, logging.WARNING, logging.INFO, logging.DEBUG, logging.DEBUG)
# Statuses of the C interface that are faults of the caller, or of the library.
INVALID_ARGUMENT, INTERNAL_ERROR = 7, 8

Result = TypeVar("Result")

LOGGER = logging.getLogger("pravik")
BUNDLED_MODELS = pathlib.Path(__file__).parent / "models"


class Stop:
    """Calls readings off. May be handed to any number of them, and requested from any thread."""

    def __init__(self) -> None:
        self._lock = threading.Lock()
        self._calls: set[_pravik.Call] = set()
        self._requested = False

    @property
    def requested(self) -> bool:
        return self._requested

    def request(self) -> None:
        """Ends the readings under way before their next stage, and later ones at once: with the code "cancelled"."""
        with self._lock:
            self._requested = True
            for call in self._calls:
                call.cancel()

    @contextlib.contextmanager
    def _over(self, call: _pravik.Call) -> Iterator[None]:
        with self._lock:
            self._calls.add(call)
            if self._requested:
                call.cancel()
        try:
            yield
        finally:
            with self._lock:
                self._calls.remove(call)


def _log(level: int, line: str) -> None:
    LOGGER.log(LOGGING_LEVELS[level], "%s", line)


class Reader:
    """Reads pictures. One serves any number of threads, and any number of them may read at the same time.

    The models are loaded with the first reading; a reader takes about 250 MB then.
    """

    def __init__(self, *, models: str | os.PathLike[str] | None = None, threads: int = 0, time_limit: float = 10.0,
                 date: datetime.date | None = None, language: Language | None = None,
                 log_level: LogLevel = "none") -> None:
        """`models` is the folder of the text models: unless it is told, what the environment variable PRAVIK_MODELS
        names, else those of this package. `threads` is how many one reading may use, 0 for one a core; 1 suits a
        program that reads several pictures at once. `time_limit` is how many seconds a reading may take; then what was
        read so far decides. `date` is the day by which a card has expired or is not yet valid; today (UTC) unless it is
        told. `language` is that of the messages of errors; that of the environment unless it is told. `log_level` sends
        the library's log up to a level to the logger "pravik". Levels from "warning" on hold what is on the cards.
        """
        if log_level not in LOG_LEVELS:
            raise ValueError(f"log_level is one of {', '.join(LOG_LEVELS)}, not {log_level!r}")
        if threads < 0:
            raise ValueError("threads is 0 or more")
        folder = os.fsencode(models or os.environ.get("PRAVIK_MODELS") or BUNDLED_MODELS)
        if b"\0" in folder:
            raise ValueError("a path holds no zero byte")
        self._settings = (folder, threads, "" if date is None else date.isoformat(), language or "")
        self._time_limit = time_limit
        self._log_level = LOG_LEVELS.index(log_level)
        self._start()
        self._call(time_limit)  # refuses a time that is none

    def _start(self) -> None:
        models, threads, date, language = self._settings
        self._process = os.getpid()
        self._engine = _pravik.Engine(models, threads)
        self._engine.set_date(date)
        self._engine.set_language(language)

    def _call(self, time_limit: float) -> _pravik.Call:
        if os.getpid() != self._process:
            self._engine.abandon()
            self._start()
        call = self._engine.call()
        call.set_time_limit(time_limit)
        if self._log_level:
            call.set_log(self._log_level, _log)
        return call

    def answer(self, kind: Kind, picture: Picture, *, channels: Channels | None = None,
               time_limit: float | None = None, stop: Stop | None = None) -> str:
        """The answer as JSON on one line, a record or an error, as the command line prints it with `--report` and
        without the name of the file. Raises what is no fault of the picture's content: TypeError, ValueError, MemoryError."""
        return self._read(kind, picture, channels, time_limit, stop)[1]

    def _read(self, kind: Kind, picture: Picture, channels: Channels | None, time_limit: float | None,
              stop: Stop | None) -> tuple[int, str, str]:
        if kind not in KINDS:
            raise ValueError(f"kind is one of {', '.join(KINDS)}, not {kind!r}")
        read = reading_of(picture, channels)
        call = self._call(self._time_limit if time_limit is None else time_limit)
        with stop._over(call) if stop is not None else contextlib.nullcontext():
            answer = read(call, KINDS.index(kind))
        return _checked(answer)

    def _record(self, kind: Kind, picture: Picture, channels: Channels | None, time_limit: float | None,
                stop: Stop | None) -> Any:
        return _record_in(kind, self._read(kind, picture, channels, time_limit, stop))

    def read(self, picture: Picture, *, channels: Channels | None = None, time_limit: float | None = None,
             stop: Stop | None = None) -> tuple[Card, ...]:
        """Reads every card on a picture, of whatever kind and however it lies: from top to bottom, those of a row from
        left to right, at least one.

        `channels` is the order of the channels of an array, for which it must be told. `time_limit` in seconds and
        `stop` are those of this reading. Of a TIFF or PDF file the first page is read. Raises ReadingError when there is no
        card; what is wrong with one of them stands in its `error`.
        """
        status, text, message = self._read("cards", picture, channels, time_limit, stop)
        answer = json.loads(text)
        if answer.get("cards"):
            return tuple(map(card_of, answer["cards"]))
        error = {"code": "insufficient_text", "message": message}
        raise error_of({"error": error} | answer, text, message)

    def read_id_front(self, picture: Picture, *, channels: Channels | None = None, time_limit: float | None = None,
                      stop: Stop | None = None) -> IdFront:
        """Reads the portrait side of an identity card, with the arguments of `read`. Raises ReadingError."""
        record: IdFront = self._record("id-front", picture, channels, time_limit, stop)
        return record

    def read_id_back(self, picture: Picture, *, channels: Channels | None = None, time_limit: float | None = None,
                     stop: Stop | None = None) -> IdBack:
        """Reads the emblem side of an identity card, with the arguments of `read`. Raises ReadingError."""
        record: IdBack = self._record("id-back", picture, channels, time_limit, stop)
        return record

    def read_bank_card(self, picture: Picture, *, channels: Channels | None = None, time_limit: float | None = None,
                       stop: Stop | None = None) -> BankCard:
        """Reads a bank card, with the arguments of `read`. Raises ReadingError."""
        record: BankCard = self._record("bank-card", picture, channels, time_limit, stop)
        return record

    def read_code(self, picture: Picture, *, channels: Channels | None = None, time_limit: float | None = None,
                  stop: Stop | None = None) -> Code:
        """Reads a QR or bar code, with the arguments of `read`. Raises ReadingError."""
        record: Code = self._record("code", picture, channels, time_limit, stop)
        return record

    def read_text(self, picture: Picture, *, channels: Channels | None = None, time_limit: float | None = None,
                  stop: Stop | None = None) -> Text:
        """Reads all text, line by line, with the arguments of `read`. Raises ReadingError."""
        record: Text = self._record("text", picture, channels, time_limit, stop)
        return record


class AsyncReader:
    """The readings of a `Reader` for asyncio, each on a thread of the loop's default executor. A task that is cancelled
    calls its reading off."""

    def __init__(self, reader: Reader | None = None) -> None:
        """`reader` is the one that the module's functions share unless it is told."""
        self._reader = reader

    async def _run(self, work: Callable[..., Result], picture: Picture, **options: Any) -> Result:
        stop = options["stop"] = options["stop"] or Stop()
        reading = asyncio.get_running_loop().run_in_executor(None, functools.partial(work, picture, **options))
        try:
            return await reading
        except asyncio.CancelledError:
            stop.request()
            raise

    async def read(self, picture: Picture, *, channels: Channels | None = None, time_limit: float | None = None,
                   stop: Stop | None = None) -> tuple[Card, ...]:
        """As Reader.read."""
        return await self._run(self.reader.read, picture, channels=channels, time_limit=time_limit, stop=stop)

    async def read_id_front(self, picture: Picture, *, channels: Channels | None = None,
                            time_limit: float | None = None, stop: Stop | None = None) -> IdFront:
        """As Reader.read_id_front."""
        return await self._run(self.reader.read_id_front, picture, channels=channels, time_limit=time_limit, stop=stop)

    async def read_id_back(self, picture: Picture, *, channels: Channels | None = None,
                           time_limit: float | None = None, stop: Stop | None = None) -> IdBack:
        """As Reader.read_id_back."""
        return await self._run(self.reader.read_id_back, picture, channels=channels, time_limit=time_limit, stop=stop)

    async def read_bank_card(self, picture: Picture, *, channels: Channels | None = None,
                             time_limit: float | None = None, stop: Stop | None = None) -> BankCard:
        """As Reader.read_bank_card."""
        return await self._run(self.reader.read_bank_card, picture, channels=channels, time_limit=time_limit, stop=stop)

    async def read_code(self, picture: Picture, *, channels: Channels | None = None, time_limit: float | None = None,
                        stop: Stop | None = None) -> Code:
        """As Reader.read_code."""
        return await self._run(self.reader.read_code, picture, channels=channels, time_limit=time_limit, stop=stop)

    async def read_text(self, picture: Picture, *, channels: Channels | None = None, time_limit: float | None = None,
                        stop: Stop | None = None) -> Text:
        """As Reader.read_text."""
        return await self._run(self.reader.read_text, picture, channels=channels, time_limit=time_limit, stop=stop)

    @property
    def reader(self) -> Reader:
        """What reads."""
        return self._reader or shared_reader()


def _checked(answer: tuple[int, str, str]) -> tuple[int, str, str]:
    """Raises what is no fault of a picture."""
    status, _, message = answer
    if status == INVALID_ARGUMENT:
        raise ValueError(message)
    if status == INTERNAL_ERROR:
        raise MemoryError(message) if "memory" in message else RuntimeError(message)
    return answer


def _record_in(kind: Kind, read: tuple[int, str, str]) -> Any:
    status, text, message = read
    answer = json.loads(text)
    if status:
        raise error_of(answer, text, message)
    return record_of(kind, answer, text)


def _parsed(kind: Kind, blocks: Iterable[Block | Mapping[str, Any]]) -> Any:
    return _record_in(kind, _checked(_pravik.parse(KINDS.index(kind), blocks_json(blocks))))


def parse_id_front(blocks: Iterable[Block | Mapping[str, Any]]) -> IdFront:
    """Makes a record of text that something else has read: blocks, or mappings {"text":…,"confidence":…,
    "boundingBox":{"x":…,"y":…,"width":…,"height":…}}. Raises ReadingError: "insufficient_text", "invalid_input" for what is no block."""
    record: IdFront = _parsed("id-front", blocks)
    return record


def parse_id_back(blocks: Iterable[Block | Mapping[str, Any]]) -> IdBack:
    """As `parse_id_front`."""
    record: IdBack = _parsed("id-back", blocks)
    return record


def parse_bank_card(blocks: Iterable[Block | Mapping[str, Any]]) -> BankCard:
    """As `parse_id_front`."""
    record: BankCard = _parsed("bank-card", blocks)
    return record


@functools.cache
def wordings(language: Language | None = None) -> dict[str, dict[str, Any]]:
    """The words for people for what stands in answers, by code: "kinds" (with the labels of their fields, and which
    of them are to be "masked" or "hidden"), "errors", "reasons", "warnings" and "checks". The names are those of the JSON."""
    words: dict[str, dict[str, Any]] = json.loads(_checked(_pravik.wordings(language or ""))[1])
    return words


@functools.cache
def shared_reader() -> Reader:
    """The reader that the module's functions share, made when it is first asked for."""
    return Reader()
