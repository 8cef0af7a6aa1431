"""Figures in the text format of Prometheus (version 0.0.4)."""

from __future__ import annotations

import threading
from collections import Counter

# Upper bounds of the times of readings, in seconds.
BOUNDS = (0.1, 0.2, 0.5, 1.0, 2.0, 5.0, 10.0)


class Metrics:
    def __init__(self) -> None:
        self._lock = threading.Lock()
        self._requests: Counter[tuple[str, int]] = Counter()
        self._times: Counter[float] = Counter()
        self._count, self._seconds = 0, 0.0

    def count_request(self, route: str, status: int) -> None:
        with self._lock:
            self._requests[route, status] += 1

    def time_reading(self, seconds: float) -> None:
        with self._lock:
            self._count += 1
            self._seconds += seconds
            self._times.update(bound for bound in BOUNDS if seconds <= bound)

    def text(self, taken: int) -> str:
        with self._lock:
            lines = ["# TYPE pravik_requests_total counter"]
            lines += [f'pravik_requests_total{{route="{route}",status="{status}"}} {count}'
                      for (route, status), count in sorted(self._requests.items())]
            lines += ["# TYPE pravik_pictures_waiting gauge", f"pravik_pictures_waiting {taken}",
                      "# TYPE pravik_reading_seconds histogram"]
            lines += [f'pravik_reading_seconds_bucket{{le="{bound:g}"}} {self._times[bound]}' for bound in BOUNDS]
            lines += [f'pravik_reading_seconds_bucket{{le="+Inf"}} {self._count}',
                      f"pravik_reading_seconds_sum {self._seconds:.6f}", f"pravik_reading_seconds_count {self._count}"]
        return "\n".join(lines) + "\n"
