#!/usr/bin/env python3
"""Prints the record of each picture as a line of JSON: read_a_card.py LIBRARY KIND PICTURE..., errors on standard error.

LIBRARY is the path or the name of Pravik's shared library, such as libpravik_c.so.1.
"""

import ctypes
import json
import sys

KINDS = ["id-front", "id-back", "bank-card", "code", "text", "cards"]
LOG_LEVELS = ["none", "error", "warning", "info", "debug", "verbose"]


class PravikError(Exception):
    """Why there is no record, in a sentence; `code` is stable, such as "scene_mismatch", `answer` the whole answer."""

    def __init__(self, code, message, answer):
        super().__init__(message)
        self.code, self.answer = code, answer


class Pravik:
    """Reads cards. May be used from several threads; close() it, or use it in a `with`."""

    LOG_FUNCTION = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_int, ctypes.c_char_p)

    def __init__(self, library, models=None, threads=0, report=False, date="", language=""):
        """`report` tells how each field was read, `date` ("2026-01-31") is the day by which a card has expired, "" for
        today, and `language` that of the errors: "zh", "en", or "" for the user's."""
        self._c = ctypes.CDLL(library)
        text, pointer, number, size = ctypes.c_char_p, ctypes.c_void_p, ctypes.c_int, ctypes.c_size_t
        for name, result, arguments in (
                ("pravik_create", pointer, (text, number)),
                ("pravik_destroy", None, (pointer,)),
                ("pravik_set_log", number, (pointer, number, self.LOG_FUNCTION, pointer)),
                ("pravik_set_report", number, (pointer, number)),
                ("pravik_set_date", number, (pointer, text)),
                ("pravik_set_language", number, (pointer, text)),
                ("pravik_recognize_file", pointer, (pointer, number, text)),
                ("pravik_recognize_memory", pointer, (pointer, number, text, size)),
                ("pravik_parse", pointer, (number, text)),
                ("pravik_result_status", number, (pointer,)),
                ("pravik_result_json", text, (pointer,)),
                ("pravik_result_error_code", text, (pointer,)),
                ("pravik_result_error_message", text, (pointer,)),
                ("pravik_result_free", None, (pointer,))):
            function = getattr(self._c, name)
            function.restype, function.argtypes = result, arguments
        self._handle = self._c.pravik_create(models.encode() if models else None, threads)
        if not self._handle:
            raise MemoryError("Pravik could not be set up")
        self._log = None
        for setting, value in (("report", report), ("date", date.encode()), ("language", language.encode())):
            if getattr(self._c, f"pravik_set_{setting}")(self._handle, value):
                self.close()
                raise ValueError(f"{setting} cannot be {value!r}")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        self._c.pravik_destroy(self._handle)
        self._handle = None

    def log(self, level, listener):
        """Hands every line of the log up to a level to listener(level, line)."""
        # The library keeps the function, so Python must keep it too.
        log = self.LOG_FUNCTION(lambda _, line_level, line: listener(LOG_LEVELS[line_level], line.decode()))
        self._c.pravik_set_log(self._handle, LOG_LEVELS.index(level), log, None)
        self._log = log

    def read_file(self, kind, path):
        return self._record(self._c.pravik_recognize_file(self._handle, KINDS.index(kind), str(path).encode()))

    def read_bytes(self, kind, picture):
        return self._record(
            self._c.pravik_recognize_memory(self._handle, KINDS.index(kind), picture, len(picture)))

    def parse(self, kind, observations):
        """The record of blocks of text that something else has read, as the keys of the command line name them."""
        text = json.dumps({"observations": observations}).encode()
        return self._record(self._c.pravik_parse(KINDS.index(kind), text))

    def _record(self, result):
        try:
            answer = json.loads(self._c.pravik_result_json(result))
            if self._c.pravik_result_status(result) == 0:
                return answer
            raise PravikError(self._c.pravik_result_error_code(result).decode(),
                              self._c.pravik_result_error_message(result).decode(), answer)
        finally:
            self._c.pravik_result_free(result)


def main(arguments):
    if len(arguments) < 3 or arguments[1] not in KINDS:
        print(f"usage: read_a_card.py LIBRARY {'|'.join(KINDS)} PICTURE...", file=sys.stderr)
        return 2
    library, kind, *pictures = arguments
    status = 0
    with Pravik(library) as pravik:
        pravik.log("error", lambda _, line: print(line, file=sys.stderr))
        for picture in pictures:
            try:
                print(json.dumps(pravik.read_file(kind, picture), ensure_ascii=False, separators=(",", ":")))
            except PravikError as error:
                print(f"{picture}: {error.code}: {error}", file=sys.stderr)
                status = 1
    return status


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
