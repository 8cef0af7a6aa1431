"""Where readings wait: a fixed number are under way, a fixed number wait, and more are sent away."""

from __future__ import annotations

import asyncio
import contextlib
import math
import time
from collections.abc import Callable, Coroutine, Iterator
from concurrent.futures import ThreadPoolExecutor
from typing import Any

from pravik import Kind, Reader, Stop

from ._bodies import Refusal
from ._metrics import Metrics

# What one reading is taken to last before any has been seen, and the weight of the latest in the mean.
FIRST_SECONDS, WEIGHT = 0.5, 0.1


class Desk:
    def __init__(self, reader: Reader, workers: int, queue: int, metrics: Metrics) -> None:
        self._reader, self._workers, self._places, self._metrics = reader, workers, workers + queue, metrics
        self._taken = 0
        self._seconds = FIRST_SECONDS
        self._pool = ThreadPoolExecutor(workers, "pravik")

    @property
    def taken(self) -> int:
        return self._taken

    def refusal(self) -> Refusal | None:
        """What is said when no place is free."""
        if self._taken < self._places:
            return None
        seconds = max(1, math.ceil(self._seconds * self._taken / self._workers))
        return Refusal(503, "busy", "too many pictures are being read", {"Retry-After": str(seconds)})

    @contextlib.contextmanager
    def place(self) -> Iterator[None]:
        """One of the free places. It is taken before a body is received, so that pictures in memory are bounded too."""
        self._taken += 1
        try:
            yield
        finally:
            self._taken -= 1

    async def answer(self, kind: Kind, picture: bytes, gone: Callable[[], Coroutine[Any, Any, None]]) -> str:
        """Reads a picture unless `gone`, a coroutine function, returns before. The answer is JSON."""
        stop = Stop()
        reading = asyncio.get_running_loop().run_in_executor(self._pool, self._read, kind, picture, stop)
        watch = asyncio.create_task(gone())
        either: set[asyncio.Future[Any]] = {reading, watch}
        try:
            await asyncio.wait(either, return_when=asyncio.FIRST_COMPLETED)
        finally:
            watch.cancel()
            # The thread is waited for in any case: until then its place is taken.
            if not reading.done():
                stop.request()
        return await asyncio.shield(reading)

    def _read(self, kind: Kind, picture: bytes, stop: Stop) -> str:
        started = time.monotonic()
        answer = self._reader.answer(kind, picture, stop=stop)
        seconds = time.monotonic() - started
        self._seconds += WEIGHT * (seconds - self._seconds)
        self._metrics.time_reading(seconds)
        return answer

    def close(self) -> None:
        self._pool.shutdown(wait=True, cancel_futures=True)
