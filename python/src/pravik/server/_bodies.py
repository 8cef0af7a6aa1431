"""The picture in a request: in memory alone, and no larger and no slower than is allowed."""

from __future__ import annotations

import asyncio
import base64
import binascii
import contextlib
import json

from fastapi import Request
from python_multipart.multipart import MultipartParser, parse_options_header
from starlette.requests import ClientDisconnect

FIELD = "picture"
# Of base64, and of what stands around a picture.
JSON_SHARE, MARGIN = 4 / 3, 4096


class Refusal(Exception):
    """An answer that is no reading: its status, a stable code, and words."""

    def __init__(self, status: int, code: str, message: str, headers: dict[str, str] | None = None) -> None:
        super().__init__(message)
        self.status, self.code, self.message, self.headers = status, code, message, headers or {}


async def picture_of(request: Request, most_bytes: int, seconds: float) -> bytes:
    """The bytes of the picture file, whichever way it is sent."""
    content_type, options = parse_options_header(request.headers.get("content-type", ""))
    is_json = content_type == b"application/json"
    allowed = int(most_bytes * (JSON_SHARE if is_json else 1)) + MARGIN
    body = await _body_of(request, allowed, seconds)
    if is_json:
        picture = _in_json(body)
    elif content_type == b"multipart/form-data":
        picture = _in_form(body, options.get(b"boundary", b""))
    elif content_type.startswith(b"image/") or content_type in (b"application/pdf", b"application/octet-stream"):
        picture = body
    else:
        raise Refusal(415, "unsupported_media_type", 'send multipart/form-data with the file "picture", JSON '
                      '{"picture": base64}, or the bytes of the file themselves')
    if len(picture) > most_bytes:
        raise _too_large(most_bytes)
    return picture


async def pass_over(request: Request, most_bytes: int, seconds: float) -> None:
    """Takes a body and keeps nothing of it, so that a client that sends all of it before it listens hears the answer."""
    left = most_bytes
    with contextlib.suppress(TimeoutError, ClientDisconnect):
        async with asyncio.timeout(seconds):
            async for chunk in request.stream():
                left -= len(chunk)
                if left < 0:
                    return


def _too_large(most_bytes: int) -> Refusal:
    return Refusal(413, "too_large", f"the picture is larger than {most_bytes} bytes")


async def _body_of(request: Request, allowed: int, seconds: float) -> bytes:
    told = request.headers.get("content-length", "0")
    if told.isdigit() and int(told) > allowed:
        raise _too_large(allowed)
    body = bytearray()
    try:
        async with asyncio.timeout(seconds):
            async for chunk in request.stream():
                body += chunk
                if len(body) > allowed:
                    raise _too_large(allowed)
    except TimeoutError:
        raise Refusal(408, "timeout", f"the picture did not arrive within {seconds:g} seconds") from None
    return bytes(body)


def _in_json(body: bytes) -> bytes:
    try:
        document = json.loads(body)
        return base64.b64decode(document[FIELD], validate=True)
    except (ValueError, TypeError, KeyError, RecursionError, binascii.Error):
        raise Refusal(400, "invalid_input", 'the body is not JSON of the form {"picture": base64}') from None


def _in_form(body: bytes, boundary: bytes) -> bytes:
    names: list[bytes] = []
    header = {"field": b"", "value": b""}
    parts: dict[bytes, bytearray] = {}

    def add_to_header(what: str, data: bytes, start: int, end: int) -> None:
        header[what] += data[start:end]

    def end_header() -> None:
        if header["field"].lower() == b"content-disposition":
            names[-1] = parse_options_header(header["value"])[1].get(b"name", b"")
        header.update(field=b"", value=b"")

    try:
        parser = MultipartParser(boundary, {
            "on_part_begin": lambda: names.append(b""),
            "on_header_field": lambda data, start, end: add_to_header("field", data, start, end),
            "on_header_value": lambda data, start, end: add_to_header("value", data, start, end),
            "on_header_end": end_header,
            "on_part_data": lambda data, start, end: parts.setdefault(names[-1], bytearray()).extend(data[start:end])})
        parser.write(body)
        parser.finalize()
        return bytes(parts[FIELD.encode()])
    except (ValueError, KeyError):
        raise Refusal(400, "invalid_input", 'the form has no file "picture"') from None
