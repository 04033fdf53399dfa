#!/usr/bin/env python3
"""Measures the window, on a desktop without a screen.

usage: window.py PROGRAMS FOLDER SOUND
       window.py PROGRAMS FOLDER --cards COUNT...

PROGRAMS is where boxlift and empty_window lie; FOLDER takes what is made on the way; SOUND is a file
whose conversion takes some seconds. With --cards nothing is measured but the list with so many
files. Frames are timed by what the scene graph logs of them.
"""

import argparse
import os
import re
import statistics
import sys
import tempfile
import threading
import time

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "tools", "desktop"))

from desktop import Desktop, Window, wait_for  # noqa: E402

FRAME = re.compile(rb"Frame rendered.*?in (\d+)ms")
STARTS = 9
CARDS = 10_000


class Frames:
    """The frames of one program, as they are drawn."""

    def __init__(self, desktop, *command):
        reading, writing = os.pipe()
        self.times = []
        self.started = time.monotonic()
        self.process = desktop.run(
            *command, stderr=writing, env={
                "QT_LOGGING_RULES": "qt.scenegraph.time.renderloop=true",
                "QT_FORCE_STDERR_LOGGING": "1"})
        os.close(writing)
        threading.Thread(target=self._read, args=(reading,), daemon=True).start()

    def _read(self, reading):
        with os.fdopen(reading, "rb") as lines:
            for line in lines:
                found = FRAME.search(line)
                if found:
                    self.times.append((time.monotonic() - self.started, int(found.group(1))))

    def first(self):
        wait_for("a frame", lambda: self.times)
        return self.times[0][0]


def memory_mib(process):
    with open(f"/proc/{process.pid}/status", encoding="ascii") as status:
        return next(int(line.split()[1]) for line in status if line.startswith("VmRSS")) / 1024


def cpu_seconds(process):
    with open(f"/proc/{process.pid}/stat", encoding="ascii") as stat:
        fields = stat.read().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def measure_start(desktop, programs):
    times = {"boxlift": [], "empty_window": []}
    memory = {}
    for _ in range(STARTS):
        for name, found in times.items():
            frames = Frames(desktop, os.path.join(programs, name))
            found.append(frames.first())
            time.sleep(0.3)
            memory[name] = memory_mib(frames.process)
            desktop.end(frames.process)
    ours, empty = (statistics.median(found) for found in times.values())
    ratio = statistics.median(a / b for a, b in zip(*times.values()))
    print(f"start to first frame   {ours * 1000:6.0f} ms   empty window {empty * 1000:.0f} ms   "
          f"ratio {ratio:.2f}   budget 1.3")
    print(f"memory after the start {memory['boxlift']:6.0f} MiB  "
          f"empty window {memory['empty_window']:.0f} MiB")


def settle(frames):
    """Waits until nothing has been drawn for a second: a list goes on for a moment."""
    frames.first()
    wait_for("the list to rest", lambda: time.monotonic() - frames.started
             - frames.times[-1][0] > 1, 30)


def make_files(folder, count):
    for index in range(count):
        parent = os.path.join(folder, f"{index // 500:02}")
        os.makedirs(parent, exist_ok=True)
        with open(os.path.join(parent, f"clip {index:05}.mov"), "wb"):
            pass


def measure_scrolling(desktop, frames):
    desktop.xdotool("mousemove", 500, 400)
    count = len(frames.times)
    desktop.xdotool("click", "--repeat", 200, "--delay", 16, 5)
    time.sleep(0.5)
    drawn = [milliseconds for _, milliseconds in frames.times[count:]]
    print(f"scrolling              {len(drawn):6} frames, median {statistics.median(drawn):.0f} ms, "
          f"worst {max(drawn)} ms   budget 16")


def measure_idleness(frames):
    start = cpu_seconds(frames.process)
    count = len(frames.times)
    time.sleep(5)
    print(f"idle for 5 s           {cpu_seconds(frames.process) - start:6.2f} s of CPU, "
          f"{len(frames.times) - count} frames")


def measure_list(desktop, programs, cards):
    with tempfile.TemporaryDirectory() as folder:
        make_files(folder, cards)
        frames = Frames(desktop, os.path.join(programs, "boxlift"), folder)
        window = desktop.window_of(frames.process, "Boxlift")
        before = memory_mib(frames.process)
        settle(frames)
        print(f"{f'memory with {cards} cards':22} {memory_mib(frames.process):6.0f} MiB  "
              f"(at first {before:.0f})")
        desktop.place(window, 100, 50, 1000, 800)
        measure_scrolling(desktop, frames)
        settle(frames)
        measure_idleness(frames)
        desktop.end(frames.process)


def measure_conversion(desktop, programs, sound):
    frames = Frames(desktop, os.path.join(programs, "boxlift"), sound)
    desktop.window_of(frames.process, "Boxlift")
    window = Window("boxlift")
    button = window.find("button", "Convert All")
    # A file that has been read can be converted.
    window.find("button", "Convert this file")
    settle(frames)
    desktop.click(window.centre(button))
    time.sleep(1)
    start, count, began = cpu_seconds(frames.process), len(frames.times), time.monotonic()
    time.sleep(3)
    seconds = time.monotonic() - began
    drawn = [moment for moment, _ in frames.times[count:]]
    rate = (len(drawn) - 1) / (drawn[-1] - drawn[0]) if len(drawn) > 1 else 0
    if "Stop" not in window.names("button"):
        raise SystemExit("the conversion was too short to be measured")
    print(f"while converting       {(cpu_seconds(frames.process) - start) / seconds * 100:6.1f} % of "
          f"a core, {rate:.1f} frames a second   budget 10")
    desktop.end(frames.process)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("programs", type=os.path.abspath)
    parser.add_argument("folder", type=os.path.abspath)
    measured = parser.add_mutually_exclusive_group(required=True)
    measured.add_argument("sound", type=os.path.abspath, nargs="?")
    measured.add_argument("--cards", type=int, nargs="+")
    arguments = parser.parse_args()
    with Desktop(arguments.folder) as desktop:
        if arguments.sound:
            measure_start(desktop, arguments.programs)
        for cards in arguments.cards or [CARDS]:
            measure_list(desktop, arguments.programs, cards)
        if arguments.sound:
            measure_conversion(desktop, arguments.programs, arguments.sound)


if __name__ == "__main__":
    main()
