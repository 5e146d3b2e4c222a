"""Plays changes against the tests: all in one build where they can be switched, each in its own where not."""
import json
import re
import sys
import time
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass

from mutants.house import House
from mutants.switches import Switched
from mutants.tests import LONG

PLACE = re.compile(r"\b(src/[^:\s]+):(\d+)(?::\d+: (error|fatal error|note))?")
AT_ONCE = 2  # more make tests late that watch the clock
FAR = 4  # a test of another folder has to be so many times quicker than one of the same to go first


@dataclass
class Verdict:
    """What came of a change: who noticed it, or how many of the tests that might have were played."""
    noticed: str = ""
    played: int = 0
    able: int = 0

    def __str__(self):
        few = f", PLAYED AGAINST {self.played} OF {self.able} TESTS" if self.played < self.able else ""
        return self.noticed or ("SURVIVED" if self.able else "NOT REACHED") + few


class Game:
    def __init__(self, root, files, options):
        self.house, self.files, self.options = House(root), files, options
        self.sources, self.switched, self.alone, self.tests = {}, [], [], []
        self.failing = set()  # programs of which something fails as it is

    # Building

    def build(self, changes):
        """Builds with every change behind its switch. Returns the changes that may compile, in the order drawn."""
        self.switched = list(changes)
        for change in changes:
            self.sources.setdefault(change.path, Switched(change.path, self.files[change.path])).add(change)
        self.house.prepare(self.texts())
        self.tests = self.listed()
        for make in (self.house.make_libraries, self.make_tests):
            while complaints := make():
                self.take_back(*self.blamed(complaints), complaints)
        self.tests = self.listed()  # CTest tells the whole command only of what is built
        print(f"Built: {len(self.switched)} changes to switch, {len(self.alone)} for builds of their own.", flush=True)
        return [change for change in changes if change in self.switched or change in self.alone]

    def listed(self):
        return [test for test in self.house.tests() if self.is_wanted(test)]

    def is_wanted(self, test):
        if self.options.tests:
            return re.search(self.options.tests, test.name)
        return self.options.all_tests or not test.slow

    def make_tests(self):
        """The slow ones start programs of the tree besides their own, so they need it all."""
        if self.options.all_tests and not self.options.tests:
            return self.house.make()
        programs = {test.program.relative_to(self.house.build) for test in self.tests}
        return self.house.make(*programs, *(["ZibCDBurner"] if self.options.tests else []))

    def texts(self):
        return {path: source.text() for path, source in self.sources.items()}

    def blamed(self, complaints):
        """What the compiler stumbles over: changes that are no code, and switches that cannot stand where they do."""
        dead = {int(number) for number in re.findall(r"^change-(\d+):\d+:\d+: (?:fatal )?error", complaints, re.M)}
        switches = set()
        for kinds in (("value", "constant"), ("block",)):
            for path, line, weight in PLACE.findall(complaints):
                if path in self.sources and ("error" in weight or "block" not in kinds):
                    switches.update(change.number for change in self.sources[path].blamed(int(line), kinds))
            if dead or switches:
                break
        return dead, switches - dead

    def take_back(self, dead, switches, complaints):
        gone = [change for change in self.switched if change.number in dead | switches]
        if not gone:
            sys.exit(f"The tree does not build:\n{complaints}")
        self.alone += [change for change in gone if change.number in switches]
        self.switched = [change for change in self.switched if change not in gone]
        for path in {change.path for change in gone}:
            self.sources[path].remove(gone)
            self.house.write(path, self.sources[path].text())

    # Tests

    def look_at_tests(self, numbers):
        """Runs every test once as it is, or recalls it when nothing of it was built since; one that fails so is
        left out."""
        remembered = self.house.folder / "looks.json"
        looks = json.loads(remembered.read_text()) if remembered.is_file() else {}
        start = time.monotonic()
        with ThreadPoolExecutor(AT_ONCE) as pool:
            seen = list(pool.map(lambda test: self.parts(test, numbers, looks.get(test.name, {})), self.tests))
        for test, parts in zip(self.tests, seen):
            looks[test.name] = {"built": self.house.built(test), "seconds": sum(part.seconds for part in parts),
                                "parts": [] if test.program in self.failing else [part.told() for part in parts]}
        remembered.write_text(json.dumps(looks))
        self.tests = [part for parts in seen for part in parts]
        print(f"Looked at {len(self.tests)} tests in {time.monotonic() - start:.0f} s.", flush=True)

    def parts(self, test, numbers, look):
        """A test, or its functions when it is long or fails; nothing of what fails as it is."""
        if look.get("parts") and look["built"] == self.house.built(test):
            return [test.part(**part) for part in look["parts"]]
        if look.get("seconds", 0) <= LONG and test.look(numbers) and test.seconds <= LONG:
            return [test]
        return [part for part in test.functions() if self.passes(part, numbers)]

    def passes(self, test, numbers):
        if test.look(numbers) or test.look(numbers):
            return True
        self.failing.add(test.program)
        print(f"Fails as it is, left out: {test.name}", flush=True)
        return False

    # Playing

    def in_order(self, change, tests):
        path = change.path.removeprefix("src/")
        return sorted(tests, key=lambda test: test.seconds * (1 if path.startswith(f"{test.folder}/") else FAR))

    def play(self, change):
        """What comes of a change."""
        return self.played(change, [test for test in self.tests if change.number in test.reached], change.number)

    def played(self, change, able, number):
        """Plays the tests that are able to notice, until one does or the time for one change is over."""
        seconds = 0
        for count, test in enumerate(self.in_order(change, able)):
            if seconds > self.options.seconds:
                return Verdict(played=count, able=len(able))
            if test.fails_with(number):
                return Verdict(test.name)
            seconds += test.seconds
        return Verdict(played=len(able), able=len(able))

    def needs_own_build(self, change):
        """Whether the switch may not have shown it all: none, or in what the compiler can compute without it."""
        block = self.files[change.path].statements_around(change.begin, change.end)
        return change in self.alone or bool(block and block.constant)

    def play_alone(self, change):
        """The same in a build of its own; None when it does not compile."""
        source = Switched(change.path, self.files[change.path])
        self.house.write(change.path, source.changed(change))
        before = {test.program: test.program.stat().st_mtime_ns for test in self.tests}
        try:
            if self.house.make_libraries() or self.make_tests():
                return None
            able = [test for test in self.tests if test.program.stat().st_mtime_ns != before[test.program]]
            return self.played(change, able, 0)
        finally:
            self.house.write(change.path, self.sources[change.path].text())
