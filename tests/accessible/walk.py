#!/usr/bin/python3
"""Walks every window of the real program as a screen reader and a keyboard see it, over AT-SPI.

walk.py PROGRAM: wants a session bus (dbus-run-session gives one) and brings a display of its own.
Checked in each window: every control that takes focus has a name and a role, the Tab key reaches all of them in the
order of the eye, and the focus is somewhere while a job disables controls; percentages and status lines are told.
Labels are printed by a print server of the walk's own, into nothing.
"""
import os
import shutil
import subprocess
import sys
import tempfile
import time
import wave

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

PATIENCE = 60
ROLELESS = {"unknown", "invalid", "filler", "panel", "redundant object"}
TABS = {"filler", "page tab"}  # the arrows move between tabs
CELLS = {"label", "table cell", "list item", "tree item", "menu item", "table column header", "table row header"}
failures = []
events = []


def fail(window, text):
    failures.append(f"{window}: {text}")
    print("FAIL", failures[-1], flush=True)


class NothingCame(Exception):
    pass


def wait_for(what, found):
    """The first true answer of found(); the events that came meanwhile are kept."""
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        while GLib.MainContext.default().iteration(False):
            pass
        try:
            answer = found()
        except GLib.Error:  # the object went away while it was asked
            answer = None
        if answer:
            return answer
        time.sleep(0.02)
    raise NothingCame(what)


def xdotool(*arguments):
    return subprocess.run(["xdotool", *arguments], capture_output=True, text=True, check=False).stdout.split()


def has(item, *states):
    held = item.get_state_set()
    return all(held.contains(getattr(Atspi.StateType, state)) for state in states)


def below(item):
    """All that is on show below an object, in the order of the tree."""
    for i in range(min(item.get_child_count(), 200)):
        child = item.get_child_at_index(i)
        if child and has(child, "SHOWING"):
            yield child
            yield from below(child)


def place(item):
    at = Atspi.Component.get_extents(item, Atspi.CoordType.SCREEN)
    return at.x, at.y, at.width, at.height


def own_display():
    """An X server on the first free display; it ends with its process."""
    told, tells = os.pipe()
    server = subprocess.Popen(["Xvfb", "-displayfd", str(tells), "-screen", "0", "1600x1200x24", "-nolisten", "tcp"],
                              pass_fds=[tells], stderr=subprocess.DEVNULL)
    os.close(tells)
    with os.fdopen(told) as number:
        os.environ["DISPLAY"] = ":" + number.readline().strip()
    return server


class PrintServer:
    """A private CUPS server on a socket of its own, with one queue, the default."""

    def __init__(self):
        self.folder = tempfile.mkdtemp(prefix="walk-cups-")
        os.chmod(self.folder, 0o755)  # the filters' account looks inside
        os.environ["PATH"] += ":/usr/sbin:/sbin"
        os.environ["CUPS_SERVER"] = os.path.join(self.folder, "socket")
        for name in ("conf", "cache", "state", "spool", "temporary"):
            os.mkdir(os.path.join(self.folder, name))
        self.write("files", "ServerRoot {0}/conf\nCacheDir {0}/cache\nStateDir {0}/state\nRequestRoot {0}/spool\n"
                            "TempDir {0}/temporary\nFileDevice Yes\nAccessLog {0}/access\nErrorLog {0}/error\n"
                            "PageLog {0}/page\n")
        self.write("server", "Listen {0}/socket\nBrowsing Off\nDefaultAuthType None\n<Location />\nAllow all\n"
                             "</Location>\n<Policy default>\n<Limit All>\n</Limit>\n</Policy>\n")
        self.process = subprocess.Popen(["setpriv", "--pdeathsig", "TERM", "cupsd", "-f", "-c", os.path.join(self.folder, "server"),
                                         "-s", os.path.join(self.folder, "files")])
        wait_for("the print server", lambda: self.told("lpadmin", "-p", "walk", "-v", "file:/dev/null", "-m", "raw", "-E"))
        wait_for("the default printer", lambda: self.told("lpadmin", "-d", "walk"))

    def write(self, name, text):
        with open(os.path.join(self.folder, name), "w", encoding="utf-8") as file:
            file.write(text.format(self.folder))

    @staticmethod
    def told(*command):
        return subprocess.run(command, capture_output=True, check=False).returncode == 0

    def end(self):
        self.process.terminate()
        self.process.wait(PATIENCE)
        shutil.rmtree(self.folder, ignore_errors=True)


class Program:
    def __init__(self, executable):
        self.folder = tempfile.mkdtemp(prefix="walk-")
        self.home = os.path.dirname(executable)
        if os.access(self.home, os.W_OK):
            self.copy(os.path.join(self.folder, "program"))
        environment = dict(os.environ, QT_QPA_PLATFORM="xcb", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
                           SDL_AUDIODRIVER="dummy", HOME=self.folder, LC_ALL="C.UTF-8",
                           XDG_RUNTIME_DIR=self.folder)
        self.process = subprocess.Popen([os.path.join(self.home, "ZibCDBurner")], env=environment)

    def copy(self, home):
        """The portable program keeps its files beside itself; an installed one runs where it is."""
        os.mkdir(home)
        for name in ("ZibCDBurner", "TIPOFDAY.TXT", "Sample1.jpg", "zibburn.chm"):
            shutil.copy(os.path.join(self.home, name), home)
        self.home = home

    def end(self):
        self.process.terminate()
        self.process.wait(PATIENCE)
        shutil.rmtree(self.folder, ignore_errors=True)

    def windows(self):
        desktop = Atspi.get_desktop(0)
        for i in range(desktop.get_child_count()):
            application = desktop.get_child_at_index(i)
            if application and application.get_process_id() == self.process.pid:
                for k in range(application.get_child_count()):
                    window = application.get_child_at_index(k)
                    if window and has(window, "SHOWING"):
                        yield window

    def window(self, title, roles=("dialog", "frame", "window", "alert", "file chooser")):
        """The window of this title once it is on show; of several the last that was opened."""
        def named():
            found = [w for w in self.windows() if w.get_name().startswith(title) and w.get_role_name() in roles]
            return found[-1] if found else None
        window = wait_for(f"the window {title!r}", named)
        self.take_focus(title)
        return window

    def take_focus(self, title):
        ids = wait_for(f"the window {title!r} on the screen",
                       lambda: xdotool("search", "--onlyvisible", "--name", f"^{title}"))
        self.shown = ids[-1]
        xdotool("windowfocus", "--sync", self.shown)

    def press(self, *keys):
        xdotool("windowfocus", self.shown, "key", "--clearmodifiers", *keys)

    def menu_is_open(self):
        return any(i.get_role_name() == "popup menu" for w in self.windows() for i in (w, *below(w)))

    def choose(self, menu, item):
        """An item of a menu by its letter, the menu by its own; a window that came just now may miss a key."""
        def opened():
            if not self.menu_is_open():
                self.press(menu)
                time.sleep(0.3)
            return self.menu_is_open()
        wait_for(f"the menu of {menu}", opened)
        xdotool("key", item)

    def click(self, window, name):
        button = wait_for(f"the button {name!r}",
                          lambda: [i for i in below(window) if i.get_name() == name and has(i, "ENABLED")])[0]
        x, y, width, height = place(button)
        xdotool("mousemove", str(x + width // 2), str(y + height // 2), "click", "1")

    def close(self, title, *keys):
        """Closes a window by keys; on a busy machine the first may come before the window listens."""
        def closed():
            if not any(w.get_name().startswith(title) for w in self.windows()):
                return True
            self.press(*keys)
            time.sleep(0.5)
            return False
        wait_for(f"the end of {title!r}", closed)

    def gone(self, title):
        wait_for(f"the end of {title!r}", lambda: not [w for w in self.windows() if w.get_name().startswith(title)])


def takers(window):
    """What takes the focus in a window; cells belong to their list."""
    return [i for i in below(window) if has(i, "FOCUSABLE") and i.get_role_name() not in CELLS]


def check_names(title, window):
    for item in takers(window):
        role = item.get_role_name()
        if not item.get_name().strip():
            fail(title, f"a {role} at {place(item)} has no name")
        if role in ROLELESS and not any(i.get_role_name() == "page tab list" for i in below(item)):
            fail(title, f"{item.get_name()!r} has the role {role!r}")


def focused(window):
    holders = [i for i in below(window) if has(i, "FOCUSED")]
    others = [i for i in holders if i.get_role_name() != "page tab"]  # the front tab always says that it has it
    return (others or holders or [None])[-1]


def goes_back(before, after):
    """Whether the eye has to jump back from one control to the next: up, but not to a column further right."""
    (x1, y1, w1, h1), (x2, y2, _, h2) = before, after
    above = y2 + h2 <= y1 + h1 // 4
    same_row = not above and y2 < y1 + h1 * 3 // 4
    return (above and x2 < x1 + w1) or (same_row and x2 + 2 < x1)


def jumps_back(order):
    """Where the Tab key goes against the eye, within one box, on the way from the first control to the last."""
    return [f"from {before.get_name()!r} the Tab key jumps back to {after.get_name()!r}"
            for before, after in zip(order, order[1:])
            if before.get_parent() == after.get_parent() and goes_back(place(before), place(after))]


def check_tab_order(program, title, window):
    reachable = [i for i in takers(window) if has(i, "ENABLED") and i.get_role_name() not in TABS | {"radio button"}]
    if len(reachable) < 2:
        return
    xdotool("windowfocus", "--sync", program.shown)
    start = wait_for(f"the focus in {title}", lambda: focused(window))
    order = [start]
    for _ in range(len(reachable) + 3):
        last = order[-1]
        program.press("Tab")
        order.append(wait_for(f"the focus behind {last.get_name()!r} in {title}",
                              lambda: (lambda f: f if f and f != last else None)(focused(window))))
        if order[-1] == start:
            break
    else:
        fail(title, "the Tab key does not come round: " + ", ".join(i.get_name() for i in order))
    for item in reachable:
        if item not in order:
            fail(title, f"the Tab key does not reach {item.get_name()!r}, a {item.get_role_name()}")
    round_trip = order[:-1]
    turns = [jumps_back(round_trip[i:] + round_trip[:i]) for i in range(len(round_trip))]
    for jump in min(turns, key=len):
        fail(title, jump + ", on the way " + ", ".join(i.get_name() for i in round_trip))


def check(program, title, close=("Escape",), tabs=True):
    """A window that has just been opened, and its closing by the keyboard."""
    window = program.window(title)
    print("looking at", title, flush=True)
    check_names(title, window)
    if tabs:
        check_tab_order(program, title, window)
    if close:
        program.close(title, *close)
    return window


def watch_job(program, title, seconds=PATIENCE):
    """Looks after the focus while a window works, until it has gone or its first button waits again."""
    lost, looked = 0, 0
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        while GLib.MainContext.default().iteration(False):
            pass
        window = next((w for w in program.windows() if w.get_name().startswith(title)), None)
        if window is None:
            break
        looked += 1
        try:
            lost = 0 if focused(window) or not takers(window) else lost + 1
        except GLib.Error:
            continue
        if lost > 20:
            fail(title, "nothing holds the focus while the window works")
            break
        if box_of(program) or any("Completed" in i.get_name() for i in below(window)):
            break
        time.sleep(0.05)
    return looked


def on_show(window):
    """What a window is called and what it reads, for whoever looks for the reason of a failure."""
    try:
        return window.get_name(), [i.get_name() for i in below(window) if i.get_role_name() == "label"]
    except GLib.Error:
        return window.get_name(), []


def box_of(program):
    return next((w for w in program.windows() if w.get_role_name() == "alert"), None)


def long_wav(folder):
    name = os.path.join(folder, "long.wav")
    with wave.open(name, "wb") as file:
        file.setparams((1, 2, 22050, 0, "NONE", ""))
        file.writeframes(b"\x10\x00\xf0\xff" * (22050 * 60 * 15 // 2))
    return name


def check_told(title, texts=()):
    """What a job has to tell while it runs: its percentage, more than once, and these beginnings of its labels."""
    percentages = [1 for kind, role, _ in events if kind == "accessible-value" and role == "progress bar"]
    if len(percentages) < 2:
        fail(title, f"the percentage is told {len(percentages)} times")
    names = [name for kind, role, name in events if kind == "accessible-name" and role == "label"]
    for text in texts:
        if not any(name.startswith(text) for name in names):
            fail(title, f"{text!r} is not told")


def check_reads(title, window, text):
    """A label is read by its text, whatever else it could be called."""
    if not any(i.get_role_name() == "label" and text in i.get_name() for i in below(window)):
        fail(title, f"no label reads {text!r}: {[i.get_name() for i in below(window) if i.get_role_name() == 'label']}")


def note(event):
    try:
        events.append((event.type.split(":")[-1], event.source.get_role_name(), event.source.get_name()))
    except GLib.Error:
        pass


def add_file(program, path):
    program.choose("alt+f", "f")
    program.window("Open Audio Files")
    xdotool("type", "--delay", "10", path)
    xdotool("key", "Return")
    program.gone("Open Audio Files")
    program.window("Zib CD Burner")


def main():
    display = own_display()
    printing = PrintServer()
    listener = Atspi.EventListener.new(note)
    for kind in ("accessible-name", "accessible-value"):
        listener.register(f"object:property-change:{kind}")
    program = Program(os.path.abspath(sys.argv[1]))
    try:
        program = walk_splash(program)
        walk(program)
    except NothingCame as waited:
        fail("the walk", f"nothing came of {waited}; there are {[on_show(w) for w in program.windows()]}")
    finally:
        program.end()
        printing.end()
        display.terminate()
    print(f"{len(failures)} findings")
    return 1 if failures else 0


def walk_splash(program):
    """The picture of the start has a name. It goes by itself, and where it went unseen a new start shows it again."""
    for _ in range(5):
        first = wait_for("the first window", lambda: [(w, w.get_role_name()) for w in program.windows()])[-1]
        pictures = [i.get_name() for i in below(first[0])] if first[1] == "dialog" else []
        if "Zib CD Burner" in pictures:
            print("looking at the splash", flush=True)
            return program
        program.end()
        program = Program(os.path.abspath(sys.argv[1]))
    fail("the splash", "is never seen with a picture that has a name")
    return program


def walk(program):
    tip = check(program, "Tip of the Day", close=None)
    with open(os.path.join(program.home, "TIPOFDAY.TXT"), encoding="utf-8") as file:
        tips = [line.strip() for line in file if line.strip()]
    if not any(i.get_name() in tips for i in below(tip)):
        fail("Tip of the Day", "the tip is not read")
    program.close("Tip of the Day", "Escape")
    main_window = check(program, "Zib CD Burner", close=None)
    if not any(i.get_role_name() == "progress bar" and i.get_name() for i in below(main_window)):
        fail("Zib CD Burner", "the gauge is no progress bar with a name")
    for title, keys in (("Rip CD to WAV", ("alt+t", "r")), ("MP3 To WAV Converter", ("alt+t", "c")),
                        ("Player", ("alt+t", "p")), ("Options", ("alt+t", "o")), ("About", ("alt+h", "a"))):
        program.take_focus("Zib CD Burner")
        program.choose(*keys)
        check(program, title)
    walk_label(program)
    walk_writing(program)
    walk_copying(program)


def walk_label(program):
    program.take_focus("Zib CD Burner")
    program.choose("alt+t", "m")
    designer = check(program, "CD Label Maker", close=None)
    for button, title in (("Title...", "Label Title Properties"), ("Background...", "Label Background Properties"),
                          ("List...", "Label List Properties"), ("Calibrate...", "Printer Calibration")):
        program.take_focus("CD Label Maker")
        program.click(designer, button)
        window = check(program, title, close=None)
        if title == "Printer Calibration":
            check_reads(title, window, "walk, ")
        program.close(title, "Escape")
    program.take_focus("CD Label Maker")
    program.click(designer, "Print...")
    preview = check(program, "Sent to walk", close=None)  # what it is called once it has printed itself
    check_reads("the preview", preview, "Your CD Title")
    program.close("Sent to walk", "Escape")
    program.take_focus("CD Label Maker")
    program.close("CD Label Maker", "alt+c")  # the label would be lost, so Escape does not


def walk_writing(program):
    program.take_focus("Zib CD Burner")
    add_file(program, long_wav(program.folder))
    program.choose("alt+k", "p")
    check(program, "Play...")
    program.take_focus("Zib CD Burner")
    events.clear()
    program.choose("alt+f", "w")
    check(program, "Prepare Tracks", close=None, tabs=False)
    watch_job(program, "Prepare Tracks")
    check_told("Prepare Tracks")
    window = check(program, "Write Audio CD", close=None)
    events.clear()
    program.click(window, "Start Writing")
    watch_job(program, "Write Audio CD")
    check_told("Write Audio CD", ("Writing Track", "Percent:", "Writing Completed."))
    program.click(wait_for("the box of the end", lambda: box_of(program)), "OK")
    wait_for("the end of the box", lambda: box_of(program) is None)
    program.take_focus("Write Audio CD")
    program.close("Write Audio CD", "alt+x")


def walk_copying(program):
    """The ripper at work, on the image that was just written."""
    program.take_focus("Zib CD Burner")
    program.choose("alt+t", "r")
    program.window("Rip CD to WAV")
    program.press("Home", "space")
    events.clear()
    program.press("alt+s")
    watch_job(program, "Rip CD to WAV")
    check_told("Rip CD to WAV", ("Progress:",))


if __name__ == "__main__":
    sys.exit(main())
