"""A desktop without a screen, and hands to work on it.

Desktop starts an X server that draws into memory, a window manager and a session bus, runs programs
there, photographs the screen, moves the mouse and types. What is on the windows is found as
assistive technology finds it: by role and name.
"""

import os
import shutil
import subprocess
import time


class DesktopError(Exception):
    """Something that was expected on the desktop did not come."""


def wait_for(what, condition, seconds=15.0):
    """Polls until `condition` returns something true, and returns that."""
    end = time.monotonic() + seconds
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > end:
            raise DesktopError(f"waited {seconds:g} s in vain for {what}")
        time.sleep(0.05)


class Desktop:
    """Starts with the first use of `with`, ends with it, and ends only what it started."""

    programs = ("Xvfb", "openbox", "dbus-daemon", "xdotool", "import")

    def __init__(self, folder, width=1440, height=1000):
        self.folder = folder
        self.size = (width, height)
        self.environment = dict(os.environ)
        self._processes = []
        self._log = None

    def __enter__(self):
        missing = [name for name in self.programs if not shutil.which(name)]
        if missing:
            raise DesktopError("not installed: " + ", ".join(missing))
        os.makedirs(self.folder, exist_ok=True)
        self._log = open(os.path.join(self.folder, "desktop.log"), "wb")
        try:
            self._start()
        except BaseException:
            self.__exit__(None, None, None)
            raise
        return self

    def __exit__(self, *_):
        for process in reversed(self._processes):
            process.terminate()
        for process in reversed(self._processes):
            try:
                process.wait(5)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        self._processes.clear()
        if self._log:
            self._log.close()

    def _start(self):
        home = os.path.join(self.folder, "home")
        shutil.rmtree(home, ignore_errors=True)
        runtime = os.path.join(home, "runtime")
        os.makedirs(runtime, mode=0o700)
        self.environment.update(
            HOME=home,
            XDG_RUNTIME_DIR=runtime,
            XDG_CONFIG_HOME=os.path.join(home, "config"),
            XDG_CACHE_HOME=os.path.join(home, "cache"),
            XDG_DATA_HOME=os.path.join(home, "data"),
            QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
            QT_QPA_PLATFORM="xcb",
            NO_AT_BRIDGE="0",
        )
        for name in ("WAYLAND_DISPLAY", "QT_SCALE_FACTOR", "XDG_SESSION_TYPE"):
            self.environment.pop(name, None)
        self.environment["DISPLAY"] = ":" + self._start_x_server()
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = self._start_bus()
        os.environ.update(self.environment)
        self.run("openbox")
        wait_for("the window manager", self._has_window_manager)

    def _start_x_server(self):
        reading, writing = os.pipe()
        width, height = self.size
        self.run("Xvfb", "-displayfd", str(writing), "-screen", "0", f"{width}x{height}x24",
                 "-nolisten", "tcp", pass_fds=(writing,))
        os.close(writing)
        with os.fdopen(reading) as display:
            number = display.readline().strip()
        if not number:
            raise DesktopError("the X server did not start; see desktop.log")
        return number

    def _start_bus(self):
        bus = self.run("dbus-daemon", "--session", "--nofork", "--print-address",
                       stdout=subprocess.PIPE)
        address = bus.stdout.readline().decode().strip()
        if not address:
            raise DesktopError("the session bus did not start; see desktop.log")
        return address

    def _has_window_manager(self):
        return b"_NET_SUPPORTING_WM_CHECK" in self._output("xprop", "-root")

    def _output(self, *command):
        return subprocess.run(command, env=self.environment, stdout=subprocess.PIPE,
                              stderr=self._log, check=False).stdout

    def end(self, process):
        """Ends a program that was started here."""
        self._processes.remove(process)
        process.terminate()
        process.wait(10)
        if process.stdout:
            process.stdout.close()

    def run(self, *command, env=None, **options):
        """Starts a program that lives until the desktop ends; returns its process."""
        options.setdefault("stdout", self._log)
        options.setdefault("stderr", self._log)
        process = subprocess.Popen(command, env={**self.environment, **(env or {})}, **options)
        self._processes.append(process)
        return process

    def photograph(self, path):
        """The whole screen as a picture."""
        subprocess.run(["import", "-window", "root", path], env=self.environment, check=True)

    def window_of(self, process, title):
        """The X window of a process, once it shows."""
        def search():
            found = self._output("xdotool", "search", "--onlyvisible", "--pid", str(process.pid),
                                 "--name", f"^{title}$")
            return found.split()
        return wait_for(f"the window {title}", search)[0].decode()

    def xdotool(self, *arguments):
        subprocess.run(["xdotool", *map(str, arguments)], env=self.environment, check=True,
                       stdout=self._log)

    def place(self, window, x, y, width=None, height=None):
        """Moves a window, and resizes it where a size is given."""
        if width:
            self.xdotool("windowsize", "--sync", window, width, height)
        self.xdotool("windowmove", window, x, y)
        time.sleep(0.3)

    def click(self, point):
        self.xdotool("mousemove", *point, "sleep", 0.1, "click", 1)

    def drag(self, start, end, pause=0.0, before_drop=None):
        """Drags with the left button; `before_drop` is called while the button is still down."""
        self.xdotool("mousemove", *start, "mousedown", 1)
        for step in range(1, 11):
            x = start[0] + (end[0] - start[0]) * step // 10
            y = start[1] + (end[1] - start[1]) * step // 10
            self.xdotool("mousemove", x, y, "sleep", 0.05)
        time.sleep(pause)
        if before_drop:
            before_drop()
        self.xdotool("mouseup", 1)


class Window:
    """What assistive technology sees of an application. `Desktop` must have been started; its
    library remembers the bus, so that a process can use it on one desktop only."""

    # Before AT-SPI 2.53.1 a button was called a push button.
    role_names = {"push button": "button"}

    def __init__(self, application):
        import gi
        gi.require_version("Atspi", "2.0")
        from gi.repository import Atspi
        self._atspi = Atspi
        self._application = application

    def _root(self):
        desktop = self._atspi.get_desktop(0)
        for index in range(desktop.get_child_count()):
            child = desktop.get_child_at_index(index)
            if child and child.get_name() == self._application:
                return child
        return None

    def _nodes(self, node):
        if node is None:
            return
        node.clear_cache()
        yield node
        for index in range(node.get_child_count()):
            yield from self._nodes(node.get_child_at_index(index))

    def nodes(self):
        """All that is showing, in reading order, as (role, name, node). Nothing at all when some of
        it goes away meanwhile: that a name is missing proves nothing alone."""
        result = []
        try:
            for node in self._nodes(self._root()):
                if self.is_showing(node):
                    result.append((self._role(node), node.get_name(), node))
        except self._gone():
            return []
        return result

    def is_showing(self, node):
        return node.get_state_set().contains(self._atspi.StateType.SHOWING)

    def _role(self, node):
        name = node.get_role_name()
        return self.role_names.get(name, name)

    def _gone(self):
        from gi.repository import GLib
        return GLib.Error

    def names(self, role=None):
        return [name for found, name, _ in self.nodes() if role in (None, found)]

    def find_all(self, role, name):
        return [node for found, text, node in self.nodes() if (found, text) == (role, name)]

    def find(self, role, name, index=0, seconds=15.0):
        """The index-th showing node of that role and name, once there is one."""
        def search():
            found = self.find_all(role, name)
            return found[index:index + 1] if index >= 0 else found[index:]
        return wait_for(f'the {role} "{name}"', search, seconds)[0]

    def focused(self):
        """Names of what has the keyboard's focus."""
        focus = self._atspi.StateType.FOCUSED
        return [name for _, name, node in self.nodes() if node.get_state_set().contains(focus)]

    def centre(self, node):
        """On the screen."""
        extents = node.get_component_iface().get_extents(self._atspi.CoordType.SCREEN)
        return extents.x + extents.width // 2, extents.y + extents.height // 2
