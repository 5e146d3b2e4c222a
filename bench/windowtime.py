"""The time from starting a program to its first window on an X display, and the times of two programs in turns."""
import ctypes
import os
import select
import shutil
import subprocess
import sys
import time

SUBSTRUCTURE_NOTIFY = 1 << 19  # X.h: SubstructureNotifyMask
MAP_NOTIFY = 19                # X.h: MapNotify
LARGEST_EVENT = 192            # Xlib.h: sizeof (XEvent)
PATIENCE_S = 30


class Display:
    """Tells when a window appears among those of the screen itself."""

    def __init__(self, name):
        self.x11 = ctypes.CDLL("libX11.so.6")
        self.x11.XOpenDisplay.restype = ctypes.c_void_p
        self.x11.XDefaultRootWindow.restype = ctypes.c_ulong
        self.display = ctypes.c_void_p(self.x11.XOpenDisplay(name.encode()))
        if not self.display.value:
            sys.exit(f"no X display {name}")
        root = self.x11.XDefaultRootWindow(self.display)
        self.x11.XSelectInput(self.display, ctypes.c_ulong(root), ctypes.c_long(SUBSTRUCTURE_NOTIFY))
        self.x11.XSync(self.display, 0)

    def forget(self):
        event = ctypes.create_string_buffer(LARGEST_EVENT)
        while self.x11.XPending(self.display):
            self.x11.XNextEvent(self.display, event)

    def await_window(self):
        event = ctypes.create_string_buffer(LARGEST_EVENT)
        end = time.monotonic() + PATIENCE_S
        while time.monotonic() < end:
            if not self.x11.XPending(self.display):
                select.select([self.x11.XConnectionNumber(self.display)], [], [], end - time.monotonic())
                continue
            self.x11.XNextEvent(self.display, event)
            if ctypes.cast(event, ctypes.POINTER(ctypes.c_int))[0] == MAP_NOTIFY:
                return time.monotonic()
        sys.exit("no window appeared")


def start(display, command, environment):
    """Seconds from exec to the first window; the program is ended as the session would end it."""
    display.forget()
    begun = time.monotonic()
    child = subprocess.Popen(command, env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    shown = display.await_window()
    child.terminate()
    child.wait(PATIENCE_S)
    return shown - begun


def with_display(work):
    """Runs work(name) beside an X server of its own."""
    reading, writing = os.pipe()
    server = subprocess.Popen(["Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x1024x24", "-nolisten", "tcp"],
                              pass_fds=[writing], stderr=subprocess.DEVNULL)
    try:
        return work(":" + os.read(reading, 16).decode().strip())
    finally:
        server.terminate()
        server.wait()


def quiet_program(program, folder):
    """A copy of the program's folder whose settings show neither splash nor tips."""
    place = folder / "starting"
    shutil.rmtree(place, ignore_errors=True)
    shutil.copytree(program.parent, place)
    (place / "settings.ini").write_text("[View]\nShow Splash Screen=False\nShow Tips Of Day=False\n")
    return place / program.name


def in_turns(commands, turns):
    """For each command the list of its times; the first turn only warms the caches."""
    def measure(name):
        display = Display(name)
        environment = {**os.environ, "DISPLAY": name, "QT_QPA_PLATFORM": "xcb"}
        environment.pop("WAYLAND_DISPLAY", None)
        times = [[start(display, command, environment) for command in commands] for _ in range(turns + 1)]
        return [list(column) for column in zip(*times[1:])]
    return with_display(measure)
