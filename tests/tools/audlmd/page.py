"""page.py AUDLMD: the page of a mix in Chromium: it draws, zooms, scrolls, jumps, plays, and loads nothing from elsewhere.

Exit status 77, which is a skipped test, where chromium is not installed.
"""

import json
import math
import pathlib
import shutil
import struct
import subprocess
import sys
import tempfile
import time
import wave

from browser import Browser

evil = "</script><img src=x onerror=window.owned=1>"
rate = 48000


def expect(condition, what):
    if not condition:
        raise RuntimeError(what)


def write_tone(path, seconds):
    """A second of silence, then a tone at half of full scale."""
    with wave.open(str(path), "wb") as file:
        file.setparams((1, 2, rate, 0, "NONE", ""))
        samples = (0 if n < rate else int(16384 * math.sin(n * 0.05)) for n in range(seconds * rate))
        file.writeframes(b"".join(struct.pack("<h", sample) for sample in samples))


def mix(*words):
    result = subprocess.run([audlmd, "mix", *words], cwd=folder, capture_output=True, text=True)
    expect(result.returncode in (0, 4), f"{words}: {result.stderr}")


def ink(row, left, right):
    """How many pixels of the mix's, or another, waveform there are between two shares of a canvas."""
    return browser.value(f"""(() => {{
        const canvas = document.querySelectorAll("#lanes canvas")[{row}];
        const probe = document.createElement("canvas").getContext("2d");
        const rgb = (name) => {{
            probe.fillStyle = getComputedStyle(document.documentElement).getPropertyValue(name);
            probe.fillRect(0, 0, 1, 1);
            return [...probe.getImageData(0, 0, 1, 1).data];
        }};
        const from = Math.round(canvas.width * {left});
        const image = canvas.getContext("2d").getImageData(from, 0, Math.round(canvas.width * {right}) - from, canvas.height).data;
        const counts = {{wave: 0, trouble: 0}};
        for (const name in counts) {{
            const colour = rgb("--" + name);
            for (let n = 0; n < image.length; n += 4)
                if ([0, 1, 2].every((each) => Math.abs(image[n + each] - colour[each]) < 3)) ++counts[name];
        }}
        return counts;
    }})()""")


def shown_range():
    """What the ruler shows, as text that changes with zoom and place."""
    time.sleep(0.1)
    return browser.value("document.querySelector('#ruler canvas').toDataURL()")


def position():
    hours, minutes, seconds = browser.value("document.getElementById('time').value").split(":")
    return int(hours) * 3600 + int(minutes) * 60 + float(seconds)


def cursor():
    return browser.value("document.getElementById('cursor').getBoundingClientRect().left")


def check_drawing():
    browser.wait_for("document.querySelectorAll('#lanes canvas')[2].width > 0")
    time.sleep(0.2)
    expect(browser.value("document.title") == evil, "the name of the timeline is not the title")
    expect(browser.value("document.images.length === 0 && window.owned === undefined"), "a name has become markup")
    expect(browser.value("document.getElementById('data').nextElementSibling.tagName") == "SCRIPT", "the data ends early")
    silent, loud = ink(2, 0.002, 0.045), ink(2, 0.06, 0.4)
    expect(loud["wave"] > 40 * silent["wave"] and loud["trouble"] == 0, f"the mix is not drawn: {silent}, {loud}")
    expect(ink(2, 0.6, 0.7)["trouble"] > 100, "what is beyond full scale is not marked in the mix")
    expect(ink(1, 0.8, 0.98)["trouble"] > 100, "the missing clip is not marked")
    expect(ink(0, 0.06, 0.4)["wave"] > 1000, "the waveform of a clip is not drawn")
    expect(ink(3, 0.2, 0.9)["wave"] > 500, "the loudness is not drawn")


def check_view():
    whole = shown_range()
    browser.press("+")
    near = shown_range()
    expect(near != whole, "+ does not zoom")
    browser.mouse("mouseWheel", 800, 400, deltaX=300, deltaY=0)
    expect(shown_range() not in (near, whole), "the wheel does not scroll")
    browser.mouse("mouseWheel", 800, 400, deltaX=0, deltaY=-300, modifiers=2)
    browser.press("0")
    expect(shown_range() == whole, "0 does not show the whole")


def check_jumps():
    problems = json.loads(browser.value("JSON.stringify([...document.querySelectorAll('#problems .jump')].map((each) => each.textContent))"))
    for word in ["clipped", "beyond full scale by itself", "silent", "gone.wav"]:
        expect(any(word in problem for problem in problems), f"{word} is not among {problems}")
    number = next(n for n, text in enumerate(problems) if "gone.wav" in text)
    for _ in range(4):
        browser.press("+")
    before = shown_range()
    browser.value(f"document.querySelectorAll('#problems .jump')[{number}].click()")
    expect(abs(position() - 16) < 0.002, f"the jump went to {position()}")
    expect(shown_range() != before and browser.value("!document.getElementById('cursor').hidden"), "the place is not shown")
    expect("gone" in browser.value("document.getElementById('details').textContent"), "the clip is not chosen")
    browser.press("0")
    browser.press("Home")
    browser.press("ArrowRight")
    expect(abs(position() - 1) < 0.002, f"the arrow went to {position()}")
    box = json.loads(browser.value("JSON.stringify(document.querySelector('#lanes canvas').getBoundingClientRect())"))
    browser.click(box["x"] + box["width"] / 4, box["y"] + box["height"] / 2)
    expect(abs(position() - 5) < 0.05, f"the click went to {position()}")
    details = browser.value("document.getElementById('details').textContent")
    expect(evil in details and "tone.wav" in details and "1 s, linear" in details, f"the details are {details}")


def check_sound():
    browser.wait_for("document.querySelector('audio').readyState >= 3")
    start, place = position(), cursor()
    browser.press(" ")
    browser.wait_for(f"document.querySelector('audio').currentTime > {start} + 0.5")
    expect(abs(browser.value("document.querySelector('audio').currentTime") - position()) < 0.3, "the cursor lags")
    expect(cursor() > place + 5, "the cursor does not move")
    browser.press(" ")
    browser.wait_for("document.querySelector('audio').paused")


def check_page(name, sound):
    browser.open(folder / name)
    check_drawing()
    check_view()
    check_jumps()
    check_sound()
    for width in [400, 2500]:
        browser.open(folder / name, width)
        browser.wait_for("document.querySelectorAll('#lanes canvas')[2].width > 0")
        time.sleep(0.2)
        expect(ink(2, 0.06, 0.4)["wave"] > 500, f"nothing is drawn {width} pixels wide")
        expect(browser.value("document.documentElement.scrollWidth <= innerWidth"), f"{width} pixels are too few")
    asked = set(browser.requests)
    expect(asked == {(folder / name).as_uri(), *sound}, f"the page asks for {asked}")
    expect(browser.complaints == [], f"the browser complains: {browser.complaints}")


def check_mixes():
    write_tone(folder / "tone.wav", 16)
    clips = [{"name": evil, "media": "tone.wav", "to": 12 * rate, "fadeIn": {"length": rate, "curve": "linear"}},
             {"name": "loud", "media": "tone.wav", "at": 12 * rate, "from": rate, "to": 4 * rate, "gain": 10}]
    timeline = {"audlmd": 1, "name": evil, "sampleRate": rate, "length": 20 * rate,
                "tracks": [{"name": "<b>", "strips": clips},
                           {"strips": [{"name": "gone", "media": "gone.wav", "at": 16 * rate, "to": 4 * rate}]}],
                "markers": [{"name": "<i>here</i>", "at": 2 * rate}]}
    (folder / "film.json").write_text(json.dumps(timeline))
    mix("film.json", "-o", "the mix #1%.wav", "--format", "s16", "--page", "beside.html")
    page, sound = ((folder / name).stat() for name in ("beside.html", "the mix #1%.wav"))
    expect(sound.st_size > 2_000_000, "the sound is small")
    expect(page.st_mode == sound.st_mode, "the page is not for those that the sound is for")
    check_page("beside.html", [(folder / "the mix #1%.wav").as_uri()])
    mix("film.json", "-o", "mono.wav", "--format", "s16", "--channels", "mono", "--page", "alone.html")
    (folder / "mono.wav").unlink()
    check_page("alone.html", [])


def check_silence():
    """Where nothing can be played, the page says why."""
    for output, page, text in [(["-o", "mix.caf"], "caf.html", "cannot play"), ([], "none.html", "Nothing was mixed")]:
        mix("film.json", *output, "--page", page)
        browser.open(folder / page)
        browser.wait_for(f"document.getElementById('message').textContent.includes('{text}')")
        expect(browser.value("document.getElementById('play').disabled"), f"{page} offers to play")


chromium = shutil.which("chromium") or shutil.which("chromium-browser")
if chromium is None:
    print("not installed: chromium")
    sys.exit(77)
audlmd = pathlib.Path(sys.argv[1]).resolve()
with tempfile.TemporaryDirectory() as name:
    folder = pathlib.Path(name)
    browser = Browser(chromium)
    try:
        check_mixes()
        check_silence()
    finally:
        browser.close()
