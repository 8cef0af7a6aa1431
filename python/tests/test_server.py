"""The service: answers, limits, the queue, the token, and a process of its own."""
import asyncio
import base64
import contextlib
import json
import logging
import os
import pathlib
import re
import signal
import socket
import subprocess
import sys
import threading
import time
import typing
from collections.abc import AsyncIterator, Iterator

import httpx
import pytest

import pravik
from conftest import BACK, CODE, FRONT, command_line
from pravik.server import Settings, create_app

SERVE = pathlib.Path(sys.executable).parent / "pravik-serve"


def asked(app: typing.Any, method: str, path: str, **options: typing.Any) -> httpx.Response:
    async def ask() -> httpx.Response:
        async with httpx.AsyncClient(transport=httpx.ASGITransport(app), base_url="http://pravik") as client:
            return await client.request(method, path, timeout=60, **options)

    return asyncio.run(ask())


def test_answers_are_those_of_the_command_line(reader: pravik.Reader) -> None:
    app = create_app(reader)
    picture = BACK.read_bytes()
    for options in ({"files": {"picture": ("../名字.jpg", picture)}},
                    {"files": [("note", (None, b"x")), ("picture", ("a.jpg", picture, "image/jpeg"))]},
                    {"json": {"picture": base64.b64encode(picture).decode()}},
                    {"content": picture, "headers": {"Content-Type": "image/jpeg"}}):
        answer = asked(app, "POST", "/v1/cards", **options)
        assert (answer.status_code, answer.text) == (200, command_line("cards", BACK)[0])
    for kind, path, status, code in (("code", CODE, 200, None), ("id-back", FRONT, 422, "scene_mismatch"),
                                     ("code", FRONT, 422, "insufficient_text")):
        answer = asked(app, "POST", f"/v1/{kind}", files={"picture": path.read_bytes()})
        assert (answer.status_code, answer.json().get("error", {}).get("code")) == (status, code)
        assert answer.headers["cache-control"] == "no-store"


@pytest.mark.parametrize(("content", "content_type", "status", "code"), [
    (b"", None, 415, "unsupported_media_type"),
    (b"a", "text/plain", 415, "unsupported_media_type"),
    (b"{", "application/json", 400, "invalid_input"),
    (b"[" * 50_000, "application/json", 400, "invalid_input"),
    (b'{"picture": 3}', "application/json", 400, "invalid_input"),
    (b'{"picture": "!!"}', "application/json", 400, "invalid_input"),
    (b"--x\r\n", "multipart/form-data", 400, "invalid_input"),
    (b"--y\r\n", "multipart/form-data; boundary=x", 400, "invalid_input"),
    (b'--x\r\nContent-Disposition: form-data; name="other"\r\n\r\na\r\n--x--\r\n', "multipart/form-data; boundary=x",
     400, "invalid_input"),
    (b"GIF89a", "image/gif", 422, "invalid_image"),
    (b"", "image/jpeg", 422, "invalid_image"),
    (b"a" * 50_000, "image/jpeg", 413, "too_large"),
    (json.dumps({"picture": "A" * 60_000}).encode(), "application/json", 413, "too_large"),
])
def test_what_is_no_picture_is_refused(reader: pravik.Reader, content: bytes, content_type: str | None, status: int,
                                       code: str) -> None:
    headers = {"Content-Type": content_type} if content_type else {}
    answer = asked(create_app(reader, Settings(maximum_bytes=40_000)), "POST", "/v1/id-front", content=content, headers=headers)
    assert (answer.status_code, answer.json()["error"]["code"]) == (status, code)


def test_a_body_that_does_not_arrive_is_given_up(reader: pravik.Reader) -> None:
    async def slow() -> AsyncIterator[bytes]:
        yield b"a"
        await asyncio.sleep(1)
        yield b"b"

    # The transport of these tests would wait for the whole body first; a server does not.
    app = create_app(reader, Settings(body_seconds=0.1))
    sent: list[typing.Any] = []

    async def ask() -> None:
        body = slow()

        async def receive() -> dict[str, typing.Any]:
            return {"type": "http.request", "body": await anext(body), "more_body": True}

        async def send(message: typing.Any) -> None:
            sent.append(message)

        await app({"type": "http", "method": "POST", "path": "/v1/code", "query_string": b"",
                   "headers": [(b"content-type", b"image/jpeg")], "app": app}, receive, send)

    asyncio.run(ask())
    assert sent[0]["status"] == 408


class SlowReader:
    """Reads until it is let go, or called off."""

    def __init__(self) -> None:
        self.go, self.stops = threading.Event(), list[pravik.Stop]()

    def answer(self, kind: str, picture: bytes, *, stop: pravik.Stop) -> str:
        self.stops.append(stop)
        while not self.go.wait(0.01) and not stop.requested:
            pass
        return '{"kind":"code","error":{"code":"cancelled","message":""}}' if stop.requested else '{"result":{}}'


def test_a_full_queue_sends_away_and_a_client_that_goes_ends_its_reading() -> None:
    slow = SlowReader()
    app = create_app(typing.cast(pravik.Reader, slow), Settings(workers=1, queue=1))

    async def run() -> None:
        async with httpx.AsyncClient(transport=httpx.ASGITransport(app), base_url="http://pravik") as client:
            waiting = [asyncio.create_task(client.post("/v1/code", files={"picture": b"a"})) for _ in range(2)]
            while not slow.stops:
                await asyncio.sleep(0.01)
            await asyncio.sleep(0.05)
            busy = await client.post("/v1/code", files={"picture": b"a"})
            assert busy.status_code == 503 and int(busy.headers["retry-after"]) >= 1
            assert "pravik_pictures_waiting 2" in (await client.get("/metrics")).text
            waiting[0].cancel()
            while not slow.stops[0].requested:
                await asyncio.sleep(0.01)
            slow.go.set()
            assert (await waiting[1]).status_code == 200
            figures = (await client.get("/metrics")).text
            assert 'pravik_requests_total{route="/v1/code",status="503"} 1' in figures
            assert "pravik_pictures_waiting 0" in figures

    asyncio.run(run())


def test_the_token_guards_what_reads(reader: pravik.Reader) -> None:
    app = create_app(reader, Settings(token="geheim ü"))
    right = "Bearer geheim ü".encode()
    for path, method, header, status in (
            ("/v1/code", "POST", None, 401), ("/v1/code", "POST", b"Bearer geheim", 401), ("/metrics", "GET", None, 401),
            ("/openapi.json", "GET", b"", 401), ("/v1/code", "POST", right, 415), ("/metrics", "GET", right, 200),
            ("/nothing", "GET", right, 404), ("/healthz", "GET", None, 200), ("/", "GET", None, 200),
            ("/page.js", "GET", None, 200), ("/v1/wordings/en", "GET", None, 200)):
        headers = {} if header is None else {b"Authorization": header}
        assert asked(app, method, path, headers=headers).status_code == status, (path, header)


def test_the_page_and_the_description_name_nothing_from_elsewhere(reader: pravik.Reader) -> None:
    app = create_app(reader)
    page = asked(app, "GET", "/")
    assert "default-src 'none'" in page.headers["content-security-policy"]
    for path in ("/", "/page.css", "/page.js"):
        assert not re.search(r"(src|href|url|import)\s*[=(]?\s*[\"']?https?:", asked(app, "GET", path).text)
    description = asked(app, "GET", "/openapi.json").json()
    assert {f"/v1/{kind}" for kind in ("cards", "id-front", "id-back", "bank-card", "code", "text")} <= set(description["paths"])
    assert "example" in description["paths"]["/v1/cards"]["post"]["responses"]["200"]["content"]["application/json"]
    for path in ("/docs", "/v1/wordings/fr", "/v1/wordings/..%2f..", "/page.js/../../_app.py", "/%2e%2e/_app.py",
                 "//etc/passwd", "/page.js%00", "/_app.py"):
        assert asked(app, "GET", path).status_code == 404, path


def test_the_log_tells_the_route_alone(reader: pravik.Reader, caplog: pytest.LogCaptureFixture) -> None:
    caplog.set_level(logging.INFO, "pravik.server")
    asked(create_app(reader), "POST", "/v1/id-front?id=62061320120722875X", files={"picture": FRONT.read_bytes()})
    asked(create_app(reader), "GET", "/62061320120722875X")
    lines = [record.getMessage() for record in caplog.records if record.name == "pravik.server"]
    assert [re.sub(r"\d+ ms$", "ms", line) for line in lines] == ["POST /v1/id-front 200 ms", "GET - 404 ms"]


@contextlib.contextmanager
def serving(*arguments: str, **environment: str) -> Iterator[tuple[subprocess.Popen[str], str]]:
    process = subprocess.Popen([SERVE, "--port", "0", *arguments], stderr=subprocess.PIPE, text=True,
                               env=os.environ | environment)
    try:
        assert process.stderr is not None
        line = process.stderr.readline()
        yield process, line.removeprefix("pravik-serve: ").strip()
    finally:
        process.kill()
        process.wait()


def test_a_process_serves_ends_gently_and_leaves_no_file(tmp_path: pathlib.Path) -> None:
    with serving("--workers", "1", "--access-log", TMPDIR=str(tmp_path)) as (process, url):
        assert url.startswith("http://127.0.0.1:")
        with httpx.Client(base_url=url, timeout=60) as client:
            assert client.post("/v1/id-front", files={"picture": FRONT.read_bytes()}).json()["result"]["name"] == "陈宇和"
            with pytest.raises(httpx.ReadTimeout):
                client.post("/v1/cards", files={"picture": FRONT.read_bytes()}, timeout=0.02)
            late: list[int] = []
            thread = threading.Thread(target=lambda: late.append(
                httpx.post(url + "v1/cards", files={"picture": FRONT.read_bytes()}, timeout=60).status_code))
            thread.start()
            time.sleep(0.1)
            process.send_signal(signal.SIGTERM)
            thread.join(60)
        assert process.wait(60) in (0, -signal.SIGTERM) and late == [200]
        assert process.stderr is not None
        log = process.stderr.read()
        assert "POST /v1/id-front 200" in log and "陈宇和" not in log
    assert list(tmp_path.iterdir()) == []


@pytest.mark.parametrize(("arguments", "words"), [
    (["--host", "0.0.0.0"], "name a token"), (["--host", "no.such.host.invalid", "--token-file", __file__], "cannot listen"),
    (["--token-file", "/no/such/file"], "no token in"), (["--port", "70000"], "number from 0 to 65535"),
    (["--tls-certificate", __file__], "cannot be used as a certificate"), (["--tls-key", __file__], "--tls-certificate")])
def test_a_wrong_use_is_told(arguments: list[str], words: str) -> None:
    ended = subprocess.run([SERVE, *arguments], capture_output=True, text=True, timeout=60)
    assert ended.returncode == 2 and words in ended.stderr


def test_clients_that_send_half_or_nothing_are_let_go() -> None:
    with serving("--workers", "1", "--queue", "0") as (_, url):
        address = url.removeprefix("http://").rstrip("/").split(":")
        silent, half, cut = (socket.create_connection((address[0], int(address[1])), timeout=60) for _ in range(3))
        half.sendall(b"POST /v1/cards HTTP/1.1\r\nHost: a\r\nX-")
        cut.sendall(b"POST /v1/cards HTTP/1.1\r\nHost: a\r\nContent-Type: image/jpeg\r\nContent-Length: 99\r\n\r\nabc")
        # The one place is taken until the client that has sent half of a picture goes.
        with httpx.Client(base_url=url, timeout=60) as client:
            while client.post("/v1/code", content=bytes(4 << 20), headers={"Content-Type": "image/png"}).status_code != 503:
                time.sleep(0.01)
            cut.close()
            while client.post("/v1/code", content=b"a", headers={"Content-Type": "image/png"}).status_code != 422:
                time.sleep(0.01)
        with silent, half:
            assert silent.recv(1) == b"" == half.recv(1)


def test_without_its_extra_the_service_says_what_is_missing(tmp_path: pathlib.Path) -> None:
    (tmp_path / "fastapi.py").write_text("raise ModuleNotFoundError(name='fastapi')")
    ended = subprocess.run([SERVE], env=os.environ | {"PYTHONPATH": str(tmp_path)}, capture_output=True, text=True, timeout=60)
    assert (ended.returncode, ended.stderr) == (3, "pravik-serve: fastapi is missing: pip install 'pravik[server]'\n")
