"""Connections of clients that take their time."""

from __future__ import annotations

import asyncio

from uvicorn.protocols.http.h11_impl import H11Protocol

# How long a client may be without a whole head of a request, on which uvicorn has no limit.
IDLE_SECONDS = 10


class Connection(H11Protocol):
    """Closes when for a while no request has begun and none is answered."""

    def connection_made(self, transport: asyncio.Transport) -> None:  # type: ignore[override]
        super().connection_made(transport)
        self._look(self)

    def _look(self, before: object) -> None:
        if self.transport.is_closing():
            return
        if self.cycle is before and (self.cycle is None or self.cycle.response_complete):
            self.transport.close()
            return
        self.loop.call_later(IDLE_SECONDS, self._look, self.cycle)
