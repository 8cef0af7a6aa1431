"""The page in a browser without a window."""
import base64
import contextlib
import pathlib
import shutil
import typing
from collections.abc import Iterator

import pytest
from selenium import webdriver
from selenium.webdriver.common.by import By
from selenium.webdriver.support.wait import WebDriverWait

from conftest import FRONT, SAMPLES
from test_server import serving

pytestmark = pytest.mark.browser
# What a drop of files does, which a driver cannot do with the mouse.
DROP = """
const bytes = Uint8Array.from(atob(arguments[0]), (letter) => letter.charCodeAt(0));
const files = new DataTransfer();
files.items.add(new File([bytes], arguments[1]));
document.getElementById("stage").dispatchEvent(new DragEvent("drop", {dataTransfer: files, bubbles: true, cancelable: true}));
"""


@contextlib.contextmanager
def page(*arguments: str, video: pathlib.Path | None = None, size: str = "1200,900", **environment: str) -> Iterator[webdriver.Chrome]:
    options = webdriver.ChromeOptions()
    for argument in ("--headless=new", "--no-sandbox", "--disable-dev-shm-usage", "--lang=en-US", f"--window-size={size}",
                     "--use-fake-ui-for-media-stream", "--use-fake-device-for-media-stream",
                     *([f"--use-file-for-fake-video-capture={video}"] if video else [])):
        options.add_argument(argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    with serving(*arguments, **environment) as (_, url):
        browser = webdriver.Chrome(options, webdriver.ChromeService(shutil.which("chromedriver")))
        try:
            browser.get(url)
            WebDriverWait(browser, 20).until(lambda b: b.find_element(By.ID, "language").text)
            yield browser
        finally:
            browser.quit()


def drop(browser: webdriver.Chrome, picture: bytes, name: str) -> None:
    browser.execute_script(DROP, base64.b64encode(picture).decode(), name)  # type: ignore[no-untyped-call]


def evaluated(browser: webdriver.Chrome, expression: str, *arguments: str) -> typing.Any:
    return browser.execute_script(f"return {expression}", *arguments)  # type: ignore[no-untyped-call]


def wait_for(browser: webdriver.Chrome, selector: str, words: str) -> None:
    WebDriverWait(browser, 60).until(
        lambda b: words in "|".join(evaluated(b, "[...document.querySelectorAll(arguments[0])].map((e) => e.innerText)",
                                              selector)), f"{selector}: {words}")


def value_of(browser: webdriver.Chrome, label: str) -> str:
    """What is shown beside a label."""
    found: str = evaluated(browser, "[...document.querySelectorAll('.field')].find((e) => e.querySelector('dt').innerText "
                                    "=== arguments[0])?.querySelector('.value').innerText", label)
    return found


def test_a_dropped_card_is_read_beside_its_picture() -> None:
    with page() as browser:
        drop(browser, FRONT.read_bytes(), "card.jpg")
        wait_for(browser, "h2", "Identity card, portrait side")
        assert value_of(browser, "Name") == "陈宇和"
        assert value_of(browser, "Identity number") == 14 * "•" + "875X"
        browser.find_element(By.CSS_SELECTOR, ".show:not([hidden])").click()
        assert value_of(browser, "Identity number") == "62061320120722875X"
        assert len(browser.find_elements(By.CSS_SELECTOR, "#outlines polygon")) == 1
        assert evaluated(browser, "document.getElementById('picture').naturalWidth > 0")
        browser.find_element(By.ID, "language").click()
        wait_for(browser, "h2", "身份证正面")
        assert value_of(browser, "姓名") == "陈宇和"
        drop(browser, b"GIF89a", "no.gif")
        wait_for(browser, "#status", "无法读取图片")
        drop(browser, (SAMPLES / "code-photo-0003.jpg").read_bytes(), "code.jpg")
        wait_for(browser, "h2", "无法识别的卡片")
        wrong = [entry for entry in browser.get_log("browser") if "Security" in entry["message"]]  # type: ignore[no-untyped-call]
        assert wrong == []


def test_the_page_asks_for_the_token_and_fits_a_phone() -> None:
    with page(size="400,800", PRAVIK_TOKEN="geheim") as browser:
        drop(browser, FRONT.read_bytes(), "card.jpg")
        WebDriverWait(browser, 20).until(lambda b: b.find_element(By.ID, "token").is_displayed())
        browser.find_element(By.ID, "token").send_keys("geheim\n")
        wait_for(browser, "h2", "Identity card")
        assert evaluated(browser, "document.documentElement.scrollWidth <= window.innerWidth")


def test_the_live_camera_stops_at_a_card_that_is_read(tmp_path: pathlib.Path) -> None:
    # A film of one frame, which the browser repeats.
    film = tmp_path / "card.mjpeg"
    film.write_bytes(FRONT.read_bytes())
    with page(video=film) as browser:
        browser.find_element(By.ID, "live").click()
        wait_for(browser, "h2", "Identity card, portrait side")
        assert value_of(browser, "Name") == "陈宇和"
        assert browser.find_element(By.ID, "live").text == "Live camera"
