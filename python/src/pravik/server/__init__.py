"""Pravik as a service: `create_app` makes it for any ASGI server, `pravik-serve` runs it on uvicorn. It needs the extra
`pravik[server]`. No picture is written to disk, and no log tells what is on a card."""

from ._app import Settings, create_app

__all__ = ["Settings", "create_app"]
