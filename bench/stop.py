#!/usr/bin/env python3
"""Measures how soon a conversion that is stopped has ended, and how soon the window shows it.

usage: stop.py PROGRAMS FOLDER FILM LARGE SOUND FOREIGN

PROGRAMS is where boxlift and boxlift-drive lie; FOLDER takes what is made on the way. FILM has
1080 lines and takes some seconds to encode, LARGE some tenths of a second to copy, SOUND some
seconds to encode on all cores. FOREIGN is a film whose pictures no target takes as they are, so
that the window encodes them without being asked to; it takes some seconds, too.

After each stop the output folder must be empty, and no worker may be left.
"""

import glob
import json
import os
import signal
import statistics
import subprocess
import sys
import tempfile
import threading
import time

from window import Frames

# Found because window puts its folder, tools/desktop, into the path.
from desktop import Desktop, DesktopError, Window, wait_for

STOPS = 15
GESTURES = 5
PATIENCE = 10.0
# How long after the first sign of a gesture's effect a frame still counts as brought by it. Colours
# that fade for longer than that are not waited for.
LAST_FRAME_WITHIN = 0.05


def in_milliseconds(seconds):
    return f"{statistics.median(seconds) * 1000:4.0f} ms, worst {max(seconds) * 1000:4.0f} ms"


def until(begin, condition):
    """Seconds from the beginning until the condition is true."""
    while not condition():
        if time.monotonic() - begin > PATIENCE:
            raise DesktopError(f"nothing to be seen after {PATIENCE:g} s")
        time.sleep(0.001)
    return time.monotonic() - begin


def workers_of(process):
    """The numbers of its processes."""
    found = []
    for path in glob.glob(f"/proc/{process.pid}/task/*/children"):
        with open(path, encoding="ascii") as children:
            found += children.read().split()
    return found


def are_gone(workers):
    return all(map(is_gone, workers))


def is_gone(worker):
    """One that nobody has asked for its outcome yet is gone as well."""
    try:
        with open(f"/proc/{worker}/stat", encoding="ascii") as stat:
            return stat.read().rsplit(")", 1)[1].split()[0] == "Z"
    except (FileNotFoundError, ProcessLookupError):
        return True


def writes_into(worker, folder):
    """Whether it has a file of that folder open, with a name or without one."""
    for descriptor in glob.glob(f"/proc/{worker}/fd/*"):
        try:
            if os.readlink(descriptor).startswith(folder + "/"):
                return True
        except FileNotFoundError:
            pass  # closed meanwhile
    return False


def expect_nothing_in(folder):
    left = os.listdir(folder)
    if left:
        raise SystemExit(f"something was left in the output folder: {left}")


def wait_for_event(process, name):
    for line in process.stdout:
        if json.loads(line)["event"] == name:
            return
    raise SystemExit(f"there was no \"{name}\" from {' '.join(process.args)}")


def stop_after(seconds, command):
    """Converts, and stops that so long after its begin. How long until the conversion says that it
    is cancelled, and until the program and its workers have ended."""
    with subprocess.Popen(command, stdout=subprocess.PIPE) as process:
        wait_for_event(process, "progress")
        time.sleep(seconds)
        workers = workers_of(process)
        if not workers:
            raise SystemExit(f"{seconds:g} s after the first progress there was no worker")
        begin = time.monotonic()
        process.send_signal(signal.SIGINT)
        wait_for_event(process, "cancelled")
        cancelled = time.monotonic() - begin
        process.wait()
        return cancelled, until(begin, lambda: are_gone(workers))


def measure_conversions(programs, kinds):
    drive = os.path.join(programs, "boxlift-drive")
    for what, file, settings, latest in kinds:
        found = []
        with tempfile.TemporaryDirectory(dir=os.path.dirname(file)) as output:
            command = [drive, "convert", *settings, "--output-dir", output, file]
            for i in range(STOPS):
                found.append(stop_after(latest * i / (STOPS - 1), command))
                expect_nothing_in(output)
        cancelled, ended = zip(*found)
        print(f"{what:24} cancelled {in_milliseconds(cancelled)}; "
              f"all ended {in_milliseconds(ended)}   budget 500")


class Sight:
    """Tells when a window goes off the screen. The X server says so at once, and xev prints it:
    what this adds is the time in which a line comes through a pipe."""

    def __init__(self, desktop, window):
        self.ended = None
        self._desktop = desktop
        self._process = desktop.run("xev", "-id", window, "-event", "structure",
                                    stdout=subprocess.PIPE)
        threading.Thread(target=self._read, daemon=True).start()
        # It has nothing to say when it is ready.
        time.sleep(0.5)

    def _read(self):
        for line in self._process.stdout:
            if line.startswith((b"UnmapNotify", b"DestroyNotify")):
                self.ended = time.monotonic()
                return

    def end(self):
        self._desktop.end(self._process)


class RunningWindow:
    """The window while it encodes a file, its pointer on a button."""

    def __init__(self, desktop, programs, file, button):
        self.desktop = desktop
        # Nobody has chosen an output folder, so that it is the one for films.
        self.output = os.path.join(desktop.environment["HOME"], "Videos")
        self.frames = Frames(desktop, os.path.join(programs, "boxlift"), file)
        self.process = self.frames.process
        self.number = desktop.window_of(self.process, "Boxlift")
        self.window = Window("boxlift")
        self.starter = self._convert()
        self.button = self.window.find("button", button)
        desktop.xdotool("mousemove", *self.window.centre(self.button))
        time.sleep(1)
        self.workers = workers_of(self.process)
        self.writers = [worker for worker in self.workers if writes_into(worker, self.output)]
        if not self.writers:
            raise DesktopError(f"no worker writes into {self.output}")

    def _convert(self):
        """The button that starts it and can stop it."""
        # A file that has been read can be converted.
        self.window.find("button", "Convert this file")
        if "RE-ENCODE" not in self.window.names("label"):
            raise DesktopError("the file would not be encoded")
        self.desktop.click(self.window.centre(self.window.find("button", "Convert All")))
        return self.window.find("button", "Stop")

    def click_until(self, condition):
        """Until the condition is true and the last frame drawn for it, if one comes soon after; the
        click's own program counts."""
        begin = time.monotonic()
        self.desktop.run("xdotool", "click", "1")
        seconds = until(begin, condition)
        time.sleep(LAST_FRAME_WITHIN)
        return max(seconds, self.frames.started + self.frames.times[-1][0] - begin)

    # Asking for all names of the window would take a tenth of a second.

    def offers(self, name):
        """Whether the button that starts and stops is called that. Throws where the window does not
        answer."""
        self.starter.clear_cache()
        return self.starter.get_name() == name

    def is_button_showing(self):
        """Throws where the window does not answer: it would only seem to show nothing."""
        self.button.clear_cache()
        is_showing = self.window.is_showing(self.button)
        self.offers("")
        return is_showing

    def end(self):
        """After its conversion has been stopped."""
        wait_for("the end of the worker", lambda: are_gone(self.writers))
        expect_nothing_in(self.output)
        self.desktop.end(self.process)


def stop(running):
    """Presses "Stop". Seconds until the window offers to convert again."""
    seconds = running.click_until(lambda: running.offers("Convert All"))
    running.end()
    return (seconds,)


def remove(running):
    """Removes the only job. Seconds until its card is gone from the window."""
    seconds = running.click_until(lambda: not running.is_button_showing())
    names = running.window.names()
    if "Drop videos or audio here" not in names or "Remove from queue" in names:
        raise DesktopError("the job was removed, and the window is not empty")
    running.end()
    return (seconds,)


def close_window(running):
    """Closes the window. Seconds until it is off the screen, and until all processes have ended."""
    sight = Sight(running.desktop, running.number)
    begin = time.monotonic()
    running.desktop.xdotool("key", "alt+F4")
    ended = until(begin, lambda: running.process.poll() is not None and are_gone(running.workers))
    until(begin, lambda: sight.ended is not None)
    if running.process.returncode != 0:
        raise DesktopError(f"the program ended with {running.process.returncode}")
    sight.end()
    running.end()
    return sight.ended - begin, ended


# Where the pointer is, what is done, and what is measured of that with its budget.
GESTURES_MEASURED = (
    ("Stop", stop, (("Stop, until the window shows it", 100),)),
    ("Remove from queue", remove, (("Remove, until the window shows it", 100),)),
    ("Stop", close_window, (("Quit, until the window is off the screen", 100),
                            ("Quit, until all has ended", 500))))


def measure_window(desktop, programs, what, file):
    for button, gesture, measured in GESTURES_MEASURED:
        found = [gesture(RunningWindow(desktop, programs, file, button)) for _ in range(GESTURES)]
        for (name, budget), seconds in zip(measured, zip(*found)):
            print(f"{what + ': ' + name:54} {in_milliseconds(seconds)}   budget {budget}")


def main():
    programs, folder, film, large, sound, foreign = map(os.path.abspath, sys.argv[1:7])
    measure_conversions(programs, (
        ("boxlift of 1 GiB", large, ("--target", "mp4"), 0.3),
        ("AAC on all cores", sound, ("--target", "aac"), 4),
        ("re-encode to 720 lines", film, ("--target", "mp4", "--size", "p720"), 4),
        ("re-encode to 1080 lines", film, ("--target", "mp4", "--size", "p1080"), 4)))
    with Desktop(folder) as desktop:
        measure_window(desktop, programs, "AAC", sound)
        measure_window(desktop, programs, "pictures", foreign)


if __name__ == "__main__":
    main()
