"""The copy of the tree in which changes are made and built, and its tests."""
import filecmp
import os
import re
import shutil
import subprocess

from mutants.tests import listed_tests


def run(command, **more):
    return subprocess.run(command, capture_output=True, text=True, **more)


class House:
    """Lies in build/mutants, so that nothing changes where people work. Built as ./test builds."""

    def __init__(self, root):
        self.root, self.folder = root, root / "build/mutants"
        self.tree = self.folder / "tree"
        self.build = self.tree / "build/test"

    def prepare(self, switched):
        """Brings the copy up to date, with the texts of changed files in place of their own."""
        names = run(["git", "ls-files", "-co", "--exclude-standard"], cwd=self.root, check=True).stdout.splitlines()
        for name in set(names) - set(switched):
            self.renew(name)
        for name, text in switched.items():
            self.write(name, text)
        shutil.copy2(self.root / "scripts/mutants/Switch.h", self.tree / "src/Switch.h")
        self.forget({*names, "src/Switch.h"})
        self.configure()

    def renew(self, name):
        """What stayed the same keeps its time, and so is not built again."""
        old, new = self.tree / name, self.root / name
        if new.is_file() and not (old.is_file() and filecmp.cmp(old, new, shallow=False)):
            old.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(new, old)

    def write(self, name, text):
        path = self.tree / name
        if not path.is_file() or path.read_text() != text:
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text)

    def forget(self, names):
        for folder, inside, files in os.walk(self.tree):
            if folder == str(self.tree):
                inside.remove("build") if "build" in inside else None
            for name in (os.path.relpath(os.path.join(folder, file), self.tree) for file in files):
                if name not in names:
                    (self.tree / name).unlink()

    def configure(self):
        switch = self.folder / "Switch.o"
        compiler = os.environ.get("CXX", "c++")
        subprocess.run([compiler, "-std=c++20", "-O2", "-fPIC", "-c", self.root / "scripts/mutants/Switch.cpp",
                        "-o", switch], check=True)
        links = [f"-DCMAKE_{kind}_LINKER_FLAGS={switch}" for kind in ("EXE", "SHARED", "MODULE")]
        subprocess.run(["cmake", "--preset", "test", *links], cwd=self.tree, check=True, stdout=subprocess.DEVNULL)

    def make(self, *targets):
        """Builds as much as can be built. Returns what the compiler said where it could not, or nothing."""
        result = run(["setpriv", "--pdeathsig", "TERM", "ninja", "-C", self.build, "-k", "0",
                      "-j", str(os.cpu_count()), *targets])
        return "\n".join(re.findall(r"^FAILED: .*?(?=^\[\d+/\d+\]|\Z)", result.stdout, re.S | re.M)) or (
            result.stdout if result.returncode else "")

    def make_libraries(self):
        """The folders of src alone: whatever does not compile shows here at the least cost."""
        return self.make(*{f"zib_{library}" for library in re.findall(
            r"^libzib_(\w+)\.a: phony", run(["ninja", "-C", self.build, "-t", "targets", "all"]).stdout, re.M)})

    def built(self, test):
        """When what a test runs was built last: its program, and what the slow ones start or load besides."""
        besides = [self.build / "ZibCDBurner", *self.build.glob("tests/**/*.so")] if test.slow else []
        return max((path.stat().st_mtime_ns for path in [test.program, *besides] if path.exists()), default=0)

    def tests(self):
        return listed_tests(self.build)
