"""pravik-serve: the service on uvicorn. Without the extra `pravik[server]` its parts are missing and cannot be imported
before that is told."""

from __future__ import annotations

import argparse
import ipaddress
import logging
import os
import pathlib
import socket
import sys
from collections.abc import Callable

import pravik

USAGE_ERROR, NOT_INSTALLED = 2, 3


def _is_loopback(host: str) -> bool:
    try:
        return host == "localhost" or ipaddress.ip_address(host).is_loopback
    except ValueError:
        return False


def _number(least: float, most: float, kind: type[int] | type[float]) -> Callable[[str], float]:
    def parse(text: str) -> float:
        value = kind(text)
        if not least <= value <= most:
            raise ValueError
        return value

    parse.__name__ = f"number from {least:g} to {most:g}"
    return parse


def _parser() -> argparse.ArgumentParser:
    cores = os.cpu_count() or 1
    parser = argparse.ArgumentParser(prog="pravik-serve",
                                     description="Reads cards and codes from the pictures that it is sent.")
    add = parser.add_argument
    add("--host", default="127.0.0.1", help="the address to listen at (%(default)s); any but the loopback needs a token")
    add("--port", type=_number(0, 65535, int), default=8000, help="%(default)s; 0 for any that is free")
    add("--token-file", type=pathlib.Path, metavar="FILE",
        help="the first line is what requests must bring as a bearer token; or the environment's PRAVIK_TOKEN")
    add("--workers", type=_number(1, 1024, int), default=cores,
        help="pictures that are read at the same time (%(default)s)")
    add("--queue", type=_number(0, 10_000, int), default=16, help="pictures that may wait beside them (%(default)s)")
    add("--time-limit", type=_number(0.1, 3600, float), default=10.0, metavar="SECONDS",
        help="of one reading (%(default)s)")
    add("--max-size", type=_number(1, 64, int), default=16, metavar="MIB",
        help="of a picture file (%(default)s)")
    add("--tls-certificate", metavar="FILE", help="answers HTTPS, which a browser asks for before it opens a camera")
    add("--tls-key", metavar="FILE")
    add("--access-log", action="store_true", help="a line a request on standard error: route, status and time")
    add("--version", action="version", version=f"pravik-serve {pravik.__version__}")
    return parser


def _token(file: pathlib.Path | None) -> str | None:
    if file is None:
        return os.environ.get("PRAVIK_TOKEN") or None
    lines = file.read_text(encoding="utf-8").splitlines()
    if not lines or not lines[0].strip():
        raise ValueError("the file is empty")
    return lines[0].strip()


def main() -> int:
    """Ends with 0 when it was stopped, 2 for a wrong use or an address that cannot be had, 3 when the extra is not
    installed."""
    parser = _parser()
    options = parser.parse_args()
    if options.tls_key and not options.tls_certificate:
        parser.error("--tls-key is the key of a --tls-certificate")
    try:
        import uvicorn

        from .server import Settings, create_app
        from .server._connections import Connection
    except ModuleNotFoundError as error:
        print(f"pravik-serve: {error.name} is missing: pip install 'pravik[server]'", file=sys.stderr)
        return NOT_INSTALLED
    try:
        token = _token(options.token_file)
    except (OSError, ValueError) as error:
        print(f"pravik-serve: there is no token in {options.token_file}: {error}", file=sys.stderr)
        return USAGE_ERROR
    if token is None and not _is_loopback(options.host):
        print(f"pravik-serve: {options.host} can be reached by others: name a token with --token-file or PRAVIK_TOKEN",
              file=sys.stderr)
        return USAGE_ERROR
    try:
        listener = socket.create_server((options.host, options.port), backlog=128,
                                        family=socket.AF_INET6 if ":" in options.host else socket.AF_INET)
    except OSError as error:
        print(f"pravik-serve: cannot listen at {options.host}, port {options.port}: {error.strerror}", file=sys.stderr)
        return USAGE_ERROR
    logging.basicConfig(stream=sys.stderr, format="%(message)s", level=logging.WARNING)
    logging.getLogger("pravik.server").setLevel(logging.INFO if options.access_log else logging.WARNING)
    reader = pravik.Reader(threads=max(1, (os.cpu_count() or 1) // options.workers), time_limit=options.time_limit)
    settings = Settings(token=token, workers=options.workers, queue=options.queue, maximum_bytes=options.max_size << 20)
    config = uvicorn.Config(create_app(reader, settings), http=Connection, access_log=False, log_config=None,
                            server_header=False,
                            # Beside the readings there are those who are told to wait, and those who ask for the page.
                            limit_concurrency=4 * (options.workers + options.queue) + 64,
                            timeout_graceful_shutdown=int(options.time_limit) + 5,
                            ssl_certfile=options.tls_certificate, ssl_keyfile=options.tls_key)
    try:
        config.load()
    except OSError as error:
        print(f"pravik-serve: {options.tls_certificate} cannot be used as a certificate: {error}", file=sys.stderr)
        return USAGE_ERROR
    host = f"[{options.host}]" if ":" in options.host else options.host
    print(f"pravik-serve: {'https' if options.tls_certificate else 'http'}://{host}:{listener.getsockname()[1]}/",
          file=sys.stderr, flush=True)
    uvicorn.Server(config).run(sockets=[listener])
    return 0
