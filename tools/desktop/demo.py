#!/usr/bin/env python3
"""Shows Boxlift at work where there is no display.

usage: demo.py BOXLIFT DRAG_SOURCE FOLDER FILE...

Starts the program on a desktop without a screen, drops the files on its window, presses
"Convert All", and waits. FOLDER then holds what was converted, and a picture of each step.
"""

import os
import subprocess
import sys

from desktop import Desktop, DesktopError, Window, wait_for

LONGEST_RUN_SECONDS = 24 * 3600


def remember_movies_folder(desktop, folder):
    """Where outputs go on a first start."""
    config = desktop.environment["XDG_CONFIG_HOME"]
    os.makedirs(config, exist_ok=True)
    quoted = "".join("\\" + c if c in '"\\$`' else c for c in folder)
    with open(os.path.join(config, "user-dirs.dirs"), "w", encoding="utf-8") as file:
        file.write(f'XDG_VIDEOS_DIR="{quoted}"\n')


class Demo:
    def __init__(self, desktop, folder):
        self._desktop = desktop
        self._folder = folder
        self._pictures = 0

    def photograph(self, name):
        self._pictures += 1
        self._desktop.photograph(os.path.join(self._folder, f"{self._pictures} {name}.png"))

    def start(self, program):
        process = self._desktop.run(program)
        frame = self._desktop.window_of(process, "Boxlift")
        self._desktop.place(frame, 300, 120, 1000, 700)
        self.window = Window("boxlift")
        self.window.find("button", "Convert All")
        self.photograph("empty")

    def drop(self, drag_source, files):
        process = self._desktop.run(drag_source, *files, stdout=subprocess.PIPE)
        source = self._desktop.window_of(process, "Drag source")
        self._desktop.place(source, 60, 120)
        self._desktop.drag((130, 165), (800, 400), before_drop=lambda: self.photograph("drag"))
        process.stdout.readline()
        wait_for("the files", lambda: self.window.names("button").count("Remove from queue"))
        wait_for("their analysis", lambda: "Reading…" not in self.window.names())
        self.photograph("planned")

    def convert(self):
        button = self.window.find("button", "Convert All")
        if "Convert this file" not in self.window.names("button"):
            raise DesktopError("none of the files can be converted; see the picture")
        self._desktop.click(self.window.centre(button))
        self.window.find("button", "Clear Finished")
        wait_for("the end of the run", self._has_ended, LONGEST_RUN_SECONDS)
        self.photograph("done")

    def _has_ended(self):
        names = self.window.names("button")
        return "Convert All" in names and not any(
            text.endswith("%") for text in self.window.names("label"))


def show(program, drag_source, folder, files):
    before = set(os.listdir(folder))
    with Desktop(os.path.join(folder, "desktop")) as desktop:
        remember_movies_folder(desktop, folder)
        demo = Demo(desktop, folder)
        demo.start(program)
        demo.drop(drag_source, files)
        demo.convert()
        results = [name for name in demo.window.names("label")
                   if name.startswith(("Boxlifted in", "Re-encoded in"))]
    for name in sorted(set(os.listdir(folder)) - before - {"desktop"}):
        print(os.path.join(folder, name))
    return len(results) > 0


def main():
    if len(sys.argv) < 5:
        print(__doc__.strip().splitlines()[2], file=sys.stderr)
        return 2
    program, drag_source, folder, *files = map(os.path.abspath, sys.argv[1:])
    try:
        return 0 if show(program, drag_source, folder, files) else 1
    except DesktopError as error:
        print(f"demo: {error}", file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.exit(main())
