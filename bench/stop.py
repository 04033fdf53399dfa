#!/usr/bin/env python3
"""Measures how soon a conversion that is stopped has ended, and how soon the window shows it.

usage: stop.py PROGRAMS FOLDER FILM LARGE SOUND

PROGRAMS is where boxlift and boxlift-drive lie; FOLDER takes what is made on the way. FILM has
1080 lines and takes some seconds to encode, LARGE some tenths of a second to copy, SOUND some
seconds to encode on all cores.
"""

import glob
import json
import os
import signal
import statistics
import subprocess
import sys
import tempfile
import time

from window import Frames

from desktop import Desktop, DesktopError, Window, wait_for  # by window's path

STOPS = 15
GESTURES = 5
PATIENCE = 10.0
AFTERWARDS = 0.05


def in_milliseconds(seconds):
    return f"{statistics.median(seconds) * 1000:4.0f} ms, worst {max(seconds) * 1000:4.0f} ms"


def wait_for_event(process, name):
    for line in process.stdout:
        if json.loads(line)["event"] == name:
            return
    raise SystemExit(f"there was no \"{name}\" from {' '.join(process.args)}")


def stop_after(seconds, command):
    """Converts, and stops that so long after its begin. How long until the conversion says that it
    is cancelled, and until the program has ended."""
    with subprocess.Popen(command, stdout=subprocess.PIPE) as process:
        wait_for_event(process, "progress")
        time.sleep(seconds)
        begin = time.monotonic()
        process.send_signal(signal.SIGINT)
        wait_for_event(process, "cancelled")
        cancelled = time.monotonic() - begin
        process.wait()
        return cancelled, time.monotonic() - begin


def measure_conversions(programs, kinds):
    drive = os.path.join(programs, "boxlift-drive")
    for what, file, settings, latest in kinds:
        with tempfile.TemporaryDirectory(dir=os.path.dirname(file)) as output:
            command = [drive, "convert", *settings, "--output-dir", output, file]
            moments = (latest * i / (STOPS - 1) for i in range(STOPS))
            cancelled, ended = zip(*(stop_after(moment, command) for moment in moments))
            if os.listdir(output):
                raise SystemExit(f"{what}: something was left in the output folder")
        print(f"{what:24} cancelled {in_milliseconds(cancelled)}; "
              f"all ended {in_milliseconds(ended)}   budget 500")


class RunningWindow:
    """The window while it converts a file, its pointer on a button."""

    def __init__(self, desktop, programs, file, button):
        self.desktop = desktop
        self.frames = Frames(desktop, os.path.join(programs, "boxlift"), file)
        self.process = self.frames.process
        desktop.window_of(self.process, "Boxlift")
        window = Window("boxlift")
        run = window.find("button", "Convert All")
        wait_for("the analysis", lambda: "Reading…" not in window.names())
        desktop.click(window.centre(run))
        window.find("button", "Stop")
        self.button = window.find("button", button)
        desktop.xdotool("mousemove", *window.centre(self.button))
        time.sleep(1)

    def workers(self):
        found = []
        for path in glob.glob(f"/proc/{self.process.pid}/task/*/children"):
            with open(path, encoding="ascii") as children:
                found += [f"/proc/{child}" for child in children.read().split()]
        return found

    def until(self, begin, condition):
        while not condition():
            if time.monotonic() - begin > PATIENCE:
                raise DesktopError(f"nothing to be seen after {PATIENCE:g} s")
            time.sleep(0.001)
        return time.monotonic() - begin

    def click_until(self, condition):
        """Until the condition is true and the last frame drawn for it, if there is one afterwards;
        the click's own program counts."""
        begin = time.monotonic()
        self.desktop.run("xdotool", "click", "1")
        seconds = self.until(begin, condition)
        time.sleep(AFTERWARDS)
        return max(seconds, self.frames.started + self.frames.times[-1][0] - begin)

    def is_button_named(self, name):
        self.button.clear_cache()
        return self.button.get_name() == name


def stop(running):
    seconds = running.click_until(lambda: running.is_button_named("Convert All"))
    running.desktop.end(running.process)
    return seconds


def remove(running):
    window = Window("boxlift")
    seconds = running.click_until(lambda: "Remove from queue" not in window.names())
    running.desktop.end(running.process)
    return seconds


def quit_(running):
    processes = [f"/proc/{running.process.pid}", *running.workers()]
    begin = time.monotonic()
    running.desktop.xdotool("key", "alt+F4")
    return running.until(begin, lambda: running.process.poll() is not None
                         and not any(map(os.path.exists, processes)))


def measure_window(desktop, programs, file):
    for what, button, gesture, budget in (
            ("Stop, until the window shows it", "Stop", stop, 100),
            ("Remove, until the window shows it", "Remove from queue", remove, 100),
            ("Quit, until all has ended", "Stop", quit_, 500)):
        seconds = [gesture(RunningWindow(desktop, programs, file, button))
                   for _ in range(GESTURES)]
        print(f"{what:34} {in_milliseconds(seconds)}   budget {budget}")


def main():
    programs, folder, film, large, sound = map(os.path.abspath, sys.argv[1:6])
    measure_conversions(programs, (
        ("boxlift of 1 GiB", large, ("--target", "mp4"), 0.3),
        ("AAC on all cores", sound, ("--target", "aac"), 4),
        ("re-encode to 720 lines", film, ("--target", "mp4", "--size", "p720"), 4),
        ("re-encode to 1080 lines", film, ("--target", "mp4", "--size", "p1080"), 4)))
    with Desktop(folder) as desktop:
        measure_window(desktop, programs, sound)


if __name__ == "__main__":
    main()
