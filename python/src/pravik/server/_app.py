"""The routes."""

from __future__ import annotations

import contextlib
import hmac
import json
import logging
import pathlib
import time
from collections.abc import AsyncIterator, Awaitable, Callable
from dataclasses import dataclass
from typing import Any

from fastapi import FastAPI, Request, Response
from starlette.exceptions import HTTPException
from starlette.requests import ClientDisconnect
from starlette.types import ASGIApp, Message, Receive, Scope, Send

import pravik

from ._bodies import MARGIN, Refusal, pass_over, picture_of
from ._desk import Desk
from ._metrics import Metrics

LOGGER = logging.getLogger("pravik.server")
PAGE = pathlib.Path(__file__).parent / "page"
PAGE_FILES = {"/": ("index.html", "text/html"), "/page.css": ("page.css", "text/css"),
              "/page.js": ("page.js", "text/javascript")}
# What anyone may see: it tells nothing of cards, and the page must be there to ask for the token.
OPEN_ROUTES = {*PAGE_FILES, "/healthz", "/v1/wordings/{language}"}
KINDS: dict[pravik.Kind, str] = {
    "cards": "Every card on a picture, of whatever kind and however it lies",
    "id-front": "The portrait side of an identity card", "id-back": "The emblem side of an identity card",
    "bank-card": "A bank card", "code": "A QR or bar code", "text": "All text, line by line"}
# Of answers with an error; that of a record is 200.
STATUS = {"recognition_failed": 500, "internal_error": 500, "cancelled": 503}
NOT_READ = 422
SECURITY = {
    "Content-Security-Policy": "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob:; "
                               "media-src 'self' blob:; connect-src 'self'; form-action 'none'; base-uri 'none'; "
                               "frame-ancestors 'none'",
    "X-Content-Type-Options": "nosniff", "Referrer-Policy": "no-referrer", "Cache-Control": "no-store"}
EXAMPLE = {"kind": "id-back", "result": {
    "issuingAuthority": "凤台县公安局", "validityPeriod": "20150301-20350301", "startDate": "20150301",
    "endDate": "20350301", "isLongTerm": False}, "checks": {"startBeforeEnd": True}, "warnings": ["blurred"]}
ERROR_EXAMPLE = {"kind": "id-back", "error": {"code": "insufficient_text", "message": "未能从图像中提取到足够的文字信息"},
                 "report": {"reason": "too_dark", "text": "图片太暗"}}


@dataclass(frozen=True, slots=True)
class Settings:
    """How the service is set up."""

    token: str | None = None
    """What a request must bring as `Authorization: Bearer TOKEN`; `None` for nothing."""
    workers: int = 1
    """How many pictures are read at the same time."""
    queue: int = 16
    """How many more may wait; others are answered 503 with Retry-After."""
    maximum_bytes: int = 16 << 20
    """Of a picture file."""
    body_seconds: float = 30
    """How long a picture may take to arrive."""


class Frame:
    """What stands around every route: the token, headers, the figures, and a line of the log, which tells the route and
    never what was asked."""

    def __init__(self, app: ASGIApp, token: str | None, metrics: Metrics, routes: Callable[[Scope], str]) -> None:
        self._app, self._metrics, self._routes = app, metrics, routes
        self._expected = None if token is None else f"Bearer {token}".encode()

    def _is_allowed(self, scope: Scope, route: str) -> bool:
        given = dict(scope["headers"]).get(b"authorization", b"")
        return self._expected is None or route in OPEN_ROUTES or hmac.compare_digest(given, self._expected)

    async def __call__(self, scope: Scope, receive: Receive, send: Send) -> None:
        if scope["type"] != "http":
            await self._app(scope, receive, send)
            return
        started, route = time.monotonic(), self._routes(scope)

        async def send_framed(message: Message) -> None:
            if message["type"] == "http.response.start":
                message["headers"] += [(name.lower().encode(), value.encode()) for name, value in SECURITY.items()]
                self._metrics.count_request(route, message["status"])
                LOGGER.info("%s %s %d %.0f ms", scope["method"], route, message["status"],
                            1000 * (time.monotonic() - started))
            await send(message)

        if self._is_allowed(scope, route):
            await self._app(scope, receive, send_framed)
        else:
            refusal = Refusal(401, "unauthorized", "the token is missing or wrong", {"WWW-Authenticate": "Bearer"})
            await _refused(refusal)(scope, receive, send_framed)


def _refused(refusal: Refusal) -> Response:
    body = json.dumps({"error": {"code": refusal.code, "message": refusal.message}})
    return Response(body, refusal.status, refusal.headers, "application/json")


async def _answer_refusal(_: Request, error: Exception) -> Response:
    if isinstance(error, Refusal):
        return _refused(error)
    assert isinstance(error, HTTPException)
    return _refused(Refusal(error.status_code, "not_found" if error.status_code == 404 else "invalid_request",
                            str(error.detail), dict(error.headers or {})))


async def _answer_fault(_: Request, __: Exception) -> Response:
    return _refused(Refusal(500, "internal_error", "a fault of the service"))


def _status_of(answer: dict[str, Any]) -> int:
    return STATUS.get(answer["error"]["code"], NOT_READ) if "error" in answer else 200


def _described() -> dict[str, Any]:
    """What FastAPI cannot know of a route that takes its body by itself."""
    file = {"type": "string", "format": "binary"}
    content = {
        "multipart/form-data": {"schema": {"type": "object", "properties": {"picture": file}, "required": ["picture"]}},
        "application/json": {"schema": {"type": "object", "properties": {"picture": {
            "type": "string", "contentEncoding": "base64"}}, "required": ["picture"]},
            "example": {"picture": "/9j/4AAQ…"}},
        "image/*": {"schema": file}}
    return {"requestBody": {"required": True, "content": content}}


def _responses() -> dict[int | str, dict[str, Any]]:
    def told(words: str, example: Any) -> dict[str, Any]:
        return {"description": words, "content": {"application/json": {"example": example}}}

    def refusal(words: str, code: str) -> dict[str, Any]:
        return told(words, {"error": {"code": code, "message": "…"}})

    return {200: told("What was read, as the command line prints it", EXAMPLE),
            400: refusal("There is no picture in the body", "invalid_input"),
            401: refusal("The token is missing or wrong", "unauthorized"),
            408: refusal("The picture took too long to arrive", "timeout"),
            413: refusal("The picture is too large", "too_large"),
            415: refusal("The body is of another type", "unsupported_media_type"),
            422: told("The picture was not read, and why", ERROR_EXAMPLE),
            503: refusal("Too many pictures are being read: come back after Retry-After seconds", "busy")}


def create_app(reader: pravik.Reader | None = None, settings: Settings = Settings()) -> FastAPI:
    """The service. `reader` reads for it; one that uses one thread a picture unless it is told."""
    metrics = Metrics()
    desk = Desk(reader or pravik.Reader(threads=1), settings.workers, settings.queue, metrics)

    @contextlib.asynccontextmanager
    async def lifespan(_: FastAPI) -> AsyncIterator[None]:
        yield
        desk.close()

    app = FastAPI(title="Pravik", version=pravik.__version__, docs_url=None, redoc_url=None, lifespan=lifespan,
                  description="Reads Chinese identity cards, bank cards and codes. Answers are those of the command "
                              "line.")

    def reading_route(kind: pravik.Kind) -> Callable[[Request], Awaitable[Response]]:
        async def read(request: Request) -> Response:
            async def gone() -> None:
                while (await request.receive())["type"] != "http.disconnect":
                    pass

            if refusal := desk.refusal():
                await pass_over(request, settings.maximum_bytes + MARGIN, settings.body_seconds)
                raise refusal
            with desk.place():
                try:
                    picture = await picture_of(request, settings.maximum_bytes, settings.body_seconds)
                except ClientDisconnect:
                    return Response(status_code=499)
                answer = await desk.answer(kind, picture, gone)
            return Response(answer, _status_of(json.loads(answer)), media_type="application/json")

        return read

    for kind, words in KINDS.items():
        app.add_api_route(f"/v1/{kind}", reading_route(kind), methods=["POST"], summary=words, operation_id=kind,
                          response_class=Response, responses=_responses(), openapi_extra=_described())

    def page_route(name: str, media_type: str) -> Callable[[], Awaitable[Response]]:
        content = (PAGE / name).read_bytes()

        async def page() -> Response:
            return Response(content, media_type=media_type)

        return page

    for path, (name, media_type) in PAGE_FILES.items():
        app.add_api_route(path, page_route(name, media_type), include_in_schema=False)

    @app.get("/v1/wordings/{language}", summary="The words for people for what stands in answers, by code")
    async def words_of(language: str) -> dict[str, Any]:
        if language not in ("zh", "en"):
            raise HTTPException(404, "there are zh and en")
        return pravik.wordings("zh" if language == "zh" else "en")

    @app.get("/healthz", summary="Whether the service answers")
    async def health() -> dict[str, str]:
        return {"status": "ok", "version": pravik.__version__}

    @app.get("/metrics", summary="Figures for Prometheus", response_class=Response)
    async def figures() -> Response:
        return Response(metrics.text(desk.taken), media_type="text/plain; version=0.0.4")

    paths = {getattr(route, "path") for route in app.routes}

    def route_of(scope: Scope) -> str:
        path = str(scope["path"])
        known = "/v1/wordings/{language}" if path.startswith("/v1/wordings/") else path
        return known if known in paths else "-"

    app.add_exception_handler(Refusal, _answer_refusal)
    app.add_exception_handler(HTTPException, _answer_refusal)
    app.add_exception_handler(Exception, _answer_fault)
    app.add_middleware(Frame, token=settings.token, metrics=metrics, routes=route_of)
    return app
