"""The tests: what they run, how long they take, which changes they reach."""
import json
import os
import re
import signal
import subprocess
import tempfile
import threading
import time
from dataclasses import dataclass, field, replace
from pathlib import Path

SLOW = {"drive", "road", "print", "pace"}
BLIND = {"lint", "help"}  # these look at texts, not at what the program does
# A change may ask for memory without end, and must not outlive whoever plays it.
BOUNDS = ["setpriv", "--pdeathsig", "KILL", "prlimit", "--data=4294967296", "--core=0"]
MIRRORED = {"drive/burn": "engines/burn", "drive/matrix": "engines/burn", "drive/rip": "engines/rip",
            "print": "engines/print"}  # folders of tests that are not named after theirs of src
LONG = 2.0  # seconds; a longer test is taken function by function
SHORTEST_PATIENCE = 10  # seconds; a test that takes longer, and five times as long as ever, hangs


RUNNING = set()  # the programs that play just now


def end(process):
    """With whatever it has started."""
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass


def end_all():
    for process in list(RUNNING):
        end(process)


@dataclass
class Test:
    """A test program, or one function of it."""
    name: str
    command: list
    place: str
    variables: dict
    labels: set
    program: Path
    folder: str  # of src, that it mirrors
    lock: threading.Lock = field(default_factory=threading.Lock)  # no program beside itself
    seconds: float = 0
    reached: frozenset = frozenset()

    @property
    def slow(self):
        return bool(self.labels & SLOW)

    def run(self, patience, **variables):
        """Whether it passes. One that hangs does not."""
        with self.lock, tempfile.TemporaryFile() as output:
            process = subprocess.Popen([*BOUNDS, *self.command], cwd=self.place, stdout=output, stderr=output,
                                       stdin=subprocess.DEVNULL, start_new_session=True,
                                       env={**os.environ, **self.variables, **variables})
            RUNNING.add(process)
            try:
                return process.wait(patience) == 0
            except subprocess.TimeoutExpired:
                return False
            finally:
                end(process)
                process.wait()
                RUNNING.discard(process)

    def look(self, changes):
        """Runs once with no change alive: notes the time and which changes are reached. Whether it passes."""
        with tempfile.NamedTemporaryFile(prefix="zib-reached-") as marks:
            marks.write(bytes(changes + 1))
            marks.flush()
            start = time.monotonic()
            passes = self.run(600, ZIB_MUTANT_REACHED=marks.name)
            self.seconds = time.monotonic() - start
            bytes_now = Path(marks.name).read_bytes()
        self.reached = self.reached | {number for number, mark in enumerate(bytes_now) if mark}
        return passes

    def fails_with(self, number):
        """Whether it fails with a change alive: twice, and passes between, for a busy machine notices nothing."""
        patience = max(SHORTEST_PATIENCE, 5 * self.seconds)
        alive = {"ZIB_MUTANT": str(number)}
        return not self.run(patience, **alive) and self.run(patience) and not self.run(patience, **alive)

    def functions(self):
        """The same test in parts: its functions, as far as it has more than one."""
        if not self.name.startswith("tst_"):
            return [self]
        listed = subprocess.run([*self.command, "-functions"], cwd=self.place, capture_output=True, text=True,
                                env={**os.environ, **self.variables}, check=False)
        names = re.findall(r"^(\w+)\(\)$", listed.stdout, re.M)
        if listed.returncode or len(names) < 2:
            return [self]
        return [self.part(f"{self.name} {name}") for name in names]

    def part(self, name, seconds=0, reached=()):
        """One function of it, or itself, by the name that told() gives."""
        return replace(self, name=name, command=[*self.command, *name.split()[1:]], seconds=seconds,
                       reached=frozenset(reached))

    def told(self):
        """What a look found, for part() to recall."""
        return {"name": self.name, "seconds": self.seconds, "reached": sorted(self.reached)}


def listed_tests(build):
    """What CTest knows, without the tests that are blind for changes."""
    listed = subprocess.run(["ctest", "--test-dir", build, "--show-only=json-v1"], check=True, capture_output=True,
                            text=True).stdout
    for entry in json.loads(listed)["tests"]:
        properties = {one["name"]: one["value"] for one in entry["properties"]}
        labels, place = set(properties.get("LABELS", [])), properties["WORKING_DIRECTORY"]
        if not labels & BLIND:
            command = entry.get("command") or [f"{place}/{entry['name']}"]  # CTest hides what is not yet built
            folder = os.path.relpath(place, f"{build}/tests")
            folder = MIRRORED.get(folder, folder)
            variables = dict(one.split("=", 1) for one in properties.get("ENVIRONMENT", []) if "=" in one)
            own = next((word for word in command if word.startswith(f"{build}/")), command[0])  # may be a script's
            yield Test(entry["name"], command, place, variables, labels, Path(own), folder)
