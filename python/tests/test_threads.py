"""One reader serves threads, tasks and forked processes; readings are called off; the log is Python's."""
import asyncio
import concurrent.futures
import logging
import multiprocessing
import threading
import time

import pytest

import pravik
from conftest import BACK, FRONT, ROOT


def test_threads_share_a_reader_and_leave_the_interpreter_to_others(reader: pravik.Reader) -> None:
    expected = [reader.read_id_front(FRONT), reader.read_id_back(BACK)]
    ticks = 0
    done = threading.Event()

    def tick() -> None:
        nonlocal ticks
        while not done.wait(0.001):
            ticks += 1

    ticker = threading.Thread(target=tick)
    ticker.start()
    with concurrent.futures.ThreadPoolExecutor(4) as pool:
        readings = [pool.submit(reader.read_id_front, FRONT) if i % 2 == 0 else pool.submit(reader.read_id_back, BACK)
                    for i in range(8)]
        assert [reading.result() for reading in readings] == expected * 4
    done.set()
    ticker.join()
    assert ticks > 20


def test_tasks_read_and_are_cancelled(reader: pravik.Reader) -> None:
    async def run() -> None:
        tasks = pravik.AsyncReader(reader)
        front, back, cards = await asyncio.gather(tasks.read_id_front(FRONT), tasks.read_id_back(BACK), tasks.read(FRONT))
        assert (front, back) == (reader.read_id_front(FRONT), reader.read_id_back(BACK)) and len(cards) == 1
        stop = pravik.Stop()
        reading = asyncio.create_task(tasks.read(FRONT, stop=stop))
        await asyncio.sleep(0.01)
        reading.cancel()
        with pytest.raises(asyncio.CancelledError):
            await reading
        assert stop.requested

    asyncio.run(run())


def test_a_stop_ends_readings_under_way_and_later_ones(reader: pravik.Reader) -> None:
    stop = pravik.Stop()
    ended = []

    def read() -> None:
        with pytest.raises(pravik.ReadingError) as caught:
            for _ in range(100):
                reader.read(FRONT, stop=stop)
        ended.append(caught.value.code)

    thread = threading.Thread(target=read)
    thread.start()
    time.sleep(0.05)
    stop.request()
    thread.join(30)
    assert ended == ["cancelled"]
    with pytest.raises(pravik.ReadingError, match="cancelled"):
        reader.read_code(FRONT, stop=stop)
    assert reader.read_id_front(FRONT).name == "陈宇和"


def test_a_time_limit_ends_a_reading(reader: pravik.Reader) -> None:
    with pytest.raises(pravik.ReadingError) as caught:
        reader.read_bank_card(FRONT, time_limit=0.001)
    assert caught.value.reason == "time_spent"
    with pytest.raises(ValueError):
        reader.read_bank_card(FRONT, time_limit=-1)


def read_name(reader: pravik.Reader | None) -> str:
    return (reader.read_id_front(FRONT) if reader else pravik.read_id_front(FRONT)).name


def test_a_forked_process_reads_too(reader: pravik.Reader) -> None:
    assert read_name(reader) == read_name(None)
    with concurrent.futures.ProcessPoolExecutor(1, multiprocessing.get_context("fork")) as pool:
        assert pool.submit(read_name, None).result(60) == "陈宇和"


def test_the_log_is_off_until_it_is_asked_for(caplog: pytest.LogCaptureFixture, capfd: pytest.CaptureFixture[str],
                                              reader: pravik.Reader) -> None:
    caplog.set_level(logging.DEBUG)
    reader.read_id_front(FRONT)
    assert caplog.records == []
    talkative = pravik.Reader(log_level="warning")
    with pytest.raises(pravik.ReadingError):
        talkative.read_id_back(FRONT)
    assert [(record.name, record.levelname) for record in caplog.records] == [("pravik", "WARNING")]
    assert "场景不匹配" in caplog.text
    assert capfd.readouterr() == ("", "")


def test_the_types_hold() -> None:
    from mypy import api

    out, _, status = api.run(["--strict", "--config-file", str(ROOT / "python/pyproject.toml"), "-p", "pravik"])
    assert status == 0, out
