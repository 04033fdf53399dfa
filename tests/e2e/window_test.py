#!/usr/bin/env python3
"""The program as people use it: real drags, clicks and keys, on a desktop without a screen.

usage: window_test.py PROGRAMS FOLDER [unittest's arguments]

PROGRAMS is where boxlift, boxlift-sample and boxlift-drag-source lie. FOLDER is for what is made on
the way: the screen is photographed at each step.
"""

import os
import shutil
import subprocess
import sys
import time
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "..", "tools", "desktop"))

from desktop import Desktop, Window, wait_for  # noqa: E402

PROGRAMS = FOLDER = ""
FRAME = (300, 60, 1000, 760)


class WindowTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.media = os.path.join(FOLDER, "media")
        shutil.rmtree(cls.media, ignore_errors=True)
        os.makedirs(cls.media)
        cls.clip = cls.make("clip.mov", 2)
        cls.long_sound = cls.make("long sound.wav", 420)
        cls.desktop = cls.enterClassContext(Desktop(os.path.join(FOLDER, "desktop")))
        cls.home = cls.desktop.environment["HOME"]
        cls.asked = os.path.join(cls.home, "asked.txt")
        services = cls.desktop.run(
            sys.executable, os.path.join(os.path.dirname(__file__), "services.py"), cls.asked,
            "2", stdout=subprocess.PIPE)
        services.stdout.readline()

    @classmethod
    def make(cls, name, seconds):
        path = os.path.join(cls.media, name)
        subprocess.run([os.path.join(PROGRAMS, "boxlift-sample"), path, str(seconds)], check=True)
        return path

    def setUp(self):
        self.output = os.path.join(self.home, "Videos")
        for folder in (self.output, self.desktop.environment["XDG_CONFIG_HOME"]):
            shutil.rmtree(folder, ignore_errors=True)
        if os.path.exists(self.asked):
            os.remove(self.asked)
        self.pictures = 0
        # They live as long as the test: what a program has dropped leaves it only a little later.
        self.sources = []
        self.start()

    def tearDown(self):
        self.photograph("end")
        for process in (self.process, *self.sources):
            self.desktop.end(process)

    def start(self, *arguments, env=None):
        self.process = self.desktop.run(os.path.join(PROGRAMS, "boxlift"), *arguments, env=env)
        self.frame = self.desktop.window_of(self.process, "Boxlift")
        self.desktop.place(self.frame, *FRAME)
        self.window = Window("boxlift")
        self.window.find("button", "Choose…")

    def start_again(self, *arguments, env=None):
        self.desktop.end(self.process)
        self.start(*arguments, env=env)

    def photograph(self, step):
        self.pictures += 1
        name = self._testMethodName.removeprefix("test_")
        self.desktop.photograph(os.path.join(FOLDER, f"{name} {self.pictures} {step}.png"))

    def copy_of(self, name, original=None):
        path = os.path.join(self.media, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        shutil.copyfile(original or self.clip, path)
        return path

    def drop(self, *items, before_drop=None):
        source = self.desktop.run(os.path.join(PROGRAMS, "boxlift-drag-source"), *items,
                                  stdout=subprocess.PIPE)
        window = self.desktop.window_of(source, "Drag source")
        self.desktop.place(window, 60, 120)
        self.desktop.drag((130, 165), (800, 300), before_drop=before_drop)
        self.sources.append(source)
        return source.stdout.readline().decode().strip()

    def add(self, *items):
        """Drops files and waits for their analysis."""
        before = self.window.names().count("Remove from queue")
        self.assertEqual(self.drop(*items), "accepted")
        wait_for("the new cards", lambda: self.window.names().count("Remove from queue") ==
                 before + len(items))
        wait_for("their analysis", lambda: "Reading…" not in self.window.names())

    def press(self, name, index=0):
        button = self.window.find("button", name, index)
        self.desktop.click(self.window.centre(button))

    def texts_with(self, beginning):
        return [name for name in self.window.names("label") if name.startswith(beginning)]

    def wait_for_text(self, beginning, seconds=30.0):
        return wait_for(f'the text "{beginning}"', lambda: self.texts_with(beginning), seconds)[0]

    def has(self, *names):
        return set(names) <= set(self.window.names())

    def asked_for(self, beginning):
        """What the desktop's services were asked in this test."""
        if not os.path.exists(self.asked):
            return []
        with open(self.asked, encoding="utf-8") as file:
            return [line for line in file.read().splitlines() if line.startswith(beginning)]

    def outputs(self):
        return sorted(os.listdir(self.output)) if os.path.isdir(self.output) else []

    def test_an_empty_window_invites_to_drop_files(self):
        self.photograph("empty")
        self.assertTrue(self.has("Drop videos or audio here", "New files", "~/Videos"))
        self.assertEqual(self.window.names("button").count("Add Files…"), 2)
        self.assertNotIn("Stop", self.window.names())

    def test_a_drop_takes_files_of_any_name_and_folders_but_no_addresses(self):
        names = ["with spaces.mov", "Élise à l'été.mov", "🎬 take 1.mov"]
        files = [self.copy_of(name) for name in names]
        self.copy_of("trip/day one.mov")
        self.copy_of("trip/.hidden.mov")
        folder = os.path.join(self.media, "trip")
        answer = self.drop(*files, folder, "https://example.org/film.mp4",
                           before_drop=lambda: self.photograph("drag"))
        self.assertEqual(answer, "accepted")
        wait_for("four cards", lambda: self.window.names().count("Remove from queue") == 4)
        wait_for("their analysis", lambda: "Reading…" not in self.window.names())
        self.photograph("dropped")
        self.assertTrue(self.has(*names, "day one.mov"))
        self.assertNotIn("film.mp4", self.window.names())
        self.assertEqual(self.window.names().count("BOXLIFT"), 4)

    def test_addresses_alone_are_refused(self):
        self.assertEqual(self.drop("https://example.org/film.mp4"), "refused")
        self.assertTrue(self.has("Drop videos or audio here"))

    def test_convert_all_converts_one_after_the_other(self):
        self.add(self.clip, self.copy_of("second.mov"))
        self.press("Convert All")
        wait_for("both done", lambda: len(self.texts_with("Boxlifted in")) == 2)
        self.photograph("done")
        self.assertEqual(self.outputs(), ["clip.mp4", "second.mp4"])
        self.press("Clear Finished")
        wait_for("the empty window", lambda: self.has("Drop videos or audio here"))

    def test_stop_ends_the_run_and_leaves_nothing(self):
        self.add(self.long_sound)
        self.press("Convert All")
        wait_for("progress", lambda: any(text.endswith("%") and text not in ("0%", "100%")
                                         for text in self.window.names("label")))
        self.photograph("running")
        self.press("Stop")
        self.window.find("button", "Convert All")
        wait_for("the plan", lambda: self.has("RE-ENCODE"))
        self.photograph("stopped")
        self.assertEqual(self.outputs(), [])

    def test_removing_the_running_job_stops_the_run(self):
        second = self.copy_of("after.mov")
        self.add(self.long_sound, second)
        self.press("Convert All")
        self.window.find("button", "Stop")
        self.photograph("running")
        self.press("Remove from queue", 0)
        self.window.find("button", "Convert All")
        self.photograph("removed")
        self.assertNotIn("long sound.wav", self.window.names())
        self.assertTrue(self.has("after.mov"))
        self.assertEqual(self.outputs(), [])

    def test_a_changed_setting_makes_a_done_file_ready_again(self):
        self.add(self.clip)
        self.press("Convert this file")
        self.wait_for_text("Boxlifted in")
        self.photograph("done")
        toggle = self.window.find("check box", "Remove audio")
        self.desktop.click(self.window.centre(toggle))
        wait_for("the plan", lambda: self.has("Convert this file"))
        self.photograph("ready again")
        self.assertEqual(self.texts_with("Boxlifted in"), [])
        self.press("Convert this file")
        self.wait_for_text("Boxlifted in")
        self.assertEqual(self.outputs(), ["clip 2.mp4", "clip.mp4"])

    def test_the_chooser_takes_files_and_says_what_for(self):
        self.desktop.xdotool("windowactivate", "--sync", self.frame, "key", "ctrl+o")
        wait_for("the panel", lambda: self.has("Choose video or audio files to convert"))
        self.photograph("chooser")
        self.desktop.xdotool("key", "ctrl+o")
        time.sleep(0.5)
        self.photograph("still one chooser")
        self.desktop.xdotool("type", self.clip)
        self.desktop.xdotool("key", "Return")
        wait_for("the card", lambda: self.has("clip.mov", "Remove from queue"))
        self.photograph("chosen")
        self.assertNotIn("Choose video or audio files to convert", self.window.names())

    def test_the_chosen_output_folder_is_remembered(self):
        chosen = os.path.join(self.home, "Out, and about")
        os.makedirs(chosen, exist_ok=True)
        self.press("Choose…")
        wait_for("the panel", lambda: self.has("Choose"))
        self.photograph("folder chooser")
        self.desktop.xdotool("type", chosen)
        self.desktop.xdotool("key", "Return")
        wait_for("the folder", lambda: self.has("~/Out, and about"))
        self.start_again()
        self.assertTrue(self.has("~/Out, and about"))

    def test_reveal_shows_the_output_in_the_file_manager(self):
        self.add(self.copy_of("Élise à l'été.mov"))
        self.press("Convert All")
        self.wait_for_text("Boxlifted in")
        self.photograph("done")
        self.press("Reveal in Finder")
        shown = wait_for("the file manager", lambda: self.asked_for("show "))
        self.photograph("revealed")
        self.assertEqual(shown[0].rsplit("/", 1)[1], "%C3%89lise%20%C3%A0%20l'%C3%A9t%C3%A9.mp4")

    def with_a_decimal_comma(self):
        """The environment of a user whose language has one."""
        folder = os.path.join(FOLDER, "locale")
        os.makedirs(folder, exist_ok=True)
        made = shutil.which("localedef") and subprocess.run(
            ["localedef", "-i", "de_DE", "-f", "UTF-8", os.path.join(folder, "de_DE.UTF-8")],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False).returncode == 0
        if not made:
            self.skipTest("no locale with a decimal comma can be made; the package locales can")
        env = {"LOCPATH": folder, "LC_ALL": "de_DE.UTF-8"}
        point = subprocess.run(
            [sys.executable, "-c", "import locale; locale.setlocale(locale.LC_ALL, ''); "
             "print(locale.localeconv()['decimal_point'])"],
            env={**os.environ, **env}, stdout=subprocess.PIPE, check=True).stdout
        self.assertEqual(point, b",\n")
        return env

    def test_numbers_have_a_point_where_people_write_a_comma(self):
        env = self.with_a_decimal_comma()
        sound = self.make("short sound.wav", 3)
        self.start_again(env=env)
        self.add(self.clip, sound)
        self.press("Convert All")
        copied = self.wait_for_text("Boxlifted in")
        encoded = self.wait_for_text("Re-encoded in")
        self.photograph("done")
        self.assertRegex(copied, r"^Boxlifted in \d+\.\ds, no quality loss$")
        self.assertRegex(encoded, r"^Re-encoded in \d+\.\ds$")
        self.assertEqual(self.outputs(), ["clip.mp4", "short sound.m4a"])

    def test_files_handed_over_at_the_start_are_in_the_list(self):
        self.start_again(self.clip)
        wait_for("the card", lambda: self.has("clip.mov"))

    def test_a_second_start_hands_its_files_over(self):
        second = self.desktop.run(os.path.join(PROGRAMS, "boxlift"), self.copy_of("as well.mov"))
        self.assertEqual(second.wait(20), 0)
        wait_for("the card", lambda: self.has("as well.mov"))

    def test_the_desktop_learns_of_a_run(self):
        self.add(self.clip, self.make("sound.wav", 120))
        self.press("Convert this file")
        self.wait_for_text("Boxlifted in")
        wait_for("sleep", lambda: self.asked_for("asleep"))
        self.assertEqual(self.asked_for("notify"), [])
        self.press("Convert All")
        other = self.desktop.window_of(self.sources[0], "Drag source")
        self.desktop.xdotool("windowactivate", "--sync", other)
        wait_for("the notification", lambda: self.asked_for("notify"), 120)
        self.assertEqual(self.asked_for("notify"), ["notify Conversion finished: 1 file is done."])
        self.assertEqual(len(self.asked_for("awake")), 2)

    def test_every_control_is_reached_with_tab(self):
        self.add(self.clip)
        reached = []
        self.desktop.xdotool("windowactivate", "--sync", self.frame)
        for _ in range(24):
            self.desktop.xdotool("key", "Tab")
            time.sleep(0.05)
            reached += self.window.focused()
        for name in ("Choose…", "Open", "Add Files…", "Convert All", "Convert this file",
                     "Remove from queue", "Remove audio", "Target", "Size", "Apply to All"):
            self.assertIn(name, reached)


def main():
    global PROGRAMS, FOLDER
    PROGRAMS, FOLDER = (os.path.abspath(path) for path in sys.argv[1:3])
    os.makedirs(FOLDER, exist_ok=True)
    unittest.main(argv=sys.argv[:1] + sys.argv[3:], verbosity=2)


if __name__ == "__main__":
    main()
