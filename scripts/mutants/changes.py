"""The small changes that are made to lines of src, and how they are drawn."""
import os
import re
import subprocess
import sys
from dataclasses import dataclass

from mutants.code import Code


def negated(condition):
    """The opposite of a condition, also of one that declares what it asks."""
    declared = re.match(r"[\w:<>&* ]+[&* ](\w+) = ", condition)
    return f"{condition}; !{declared[1]}" if declared else f"!({condition})"


# What is changed, and into what: each pattern finds one place of a line of code, its group the text that changes.
KINDS = [
    ("comparison", re.compile(r"(?<=[\w)\]] )(<=|>=|==|!=|<|>)(?= [\w(\-!*&:'\"]| *$)"),
     {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="}.get),
    ("sign", re.compile(r"(?<=[\w)\]] )([+-])(?= [\w(])"), {"+": "-", "-": "+"}.get),
    ("assignment", re.compile(r"(?<= )(\+=|-=)(?= )"), {"+=": "-=", "-=": "+="}.get),
    ("junction", re.compile(r"(?<= )(&&|\|\|)(?= |$)"), {"&&": "||", "||": "&&"}.get),
    ("boolean", re.compile(r"\b(true|false)\b"), {"true": "false", "false": "true"}.get),
    ("constant", re.compile(r"(?<![\w.'\"#%\\])(?<!\) = )(?<!const = )(\d+)(?![\w.'\"]|\s*:)"),
     lambda found: f"0{int(found, 8) + 1:o}" if found.startswith("0") and found != "0" else str(int(found) + 1)),
    ("condition", re.compile(r"\bif \((?:[^;]+; )?((?!constexpr)[^;]+)\)(?= \{?$|$)"), negated),
    ("call", re.compile(r"^\s+((?!return|throw|delete|emit|co_)[\w.:>\-]+\(.*\);)$"), lambda found: ";"),
]


@dataclass
class Change:
    """One change to one line of one file."""
    number: int
    path: str
    line: int
    kind: str
    begin: int  # what is taken out of the file's text ...
    end: int
    put: str  # ... and what comes in its place
    before: str
    after: str

    def __str__(self):
        return f"{self.path}:{self.line}: {self.kind}\n  - {self.before.strip()}\n  + {self.after.strip()}"


def lines_since(root, revision):
    """The lines that were changed after a revision, as a set of (path, number)."""
    found, path = set(), None
    told = subprocess.run(["git", "diff", "-U0", "--no-ext-diff", "--no-color", "--src-prefix=a/", "--dst-prefix=b/",
                           revision, "--", "src"], cwd=root, check=False, capture_output=True, text=True)
    if told.returncode:
        sys.exit(told.stderr.strip())
    for line in told.stdout.splitlines():
        if line.startswith("+++ b/"):
            path = line[6:]
        elif hunk := re.match(r"@@ .* \+(\d+)(?:,(\d+))? @@", line):
            first, count = int(hunk[1]), int(hunk[2] or 1)
            found.update((path, number) for number in range(first, first + count))
    return found


def sources(root, folder):
    """The files of code below a folder of src, or the one file of that name."""
    place = root / "src" / folder.removeprefix("src/")
    if not place.exists():
        sys.exit(f"There is no {folder} in src.")
    return [str(path.relative_to(root)) for path in (place, *place.rglob("*")) if path.suffix in (".cpp", ".h")]


class Deck:
    """All lines that can be changed, to be drawn from by chance; no line twice."""

    def __init__(self, root, folders, since, dice):
        wanted = lines_since(root, since) if since else None
        self.files, self.dice, self.drawn, self.lines = {}, dice, 0, []
        for name in sorted({name for folder in folders or [""] for name in sources(root, folder)}):
            code = self.files[name] = Code((root / name).read_text())
            self.lines += [(name, start, line) for start, line in code.lines()
                           if wanted is None or (name, code.line_at(start)) in wanted]

    def draw(self):
        """The next change; nothing when the lines are used up."""
        while self.lines:
            at = self.dice.randrange(len(self.lines))
            self.lines[at], self.lines[-1] = self.lines[-1], self.lines[at]
            path, start, line = self.lines.pop()
            if places := self.places(path, start, line):
                return self.change(path, start, *self.dice.choice(places))
        return None

    def places(self, path, start, line):
        """What can be changed in a line; what looks like a call outside of functions is a declaration."""
        inside = self.files[path].statements_around(start, start + len(line))
        return [(kind, match, put) for kind, pattern, put in KINDS for match in pattern.finditer(line.rstrip())
                if inside or kind != "call"]

    def find(self, played):
        """A change that was played before, in the line as it stands today; nothing when it is gone."""
        code, before, after = self.files.get(played["path"]), played["before"], played["after"]
        starts = [start for start, _ in code.lines() if code.line_text(start) == before] if code else []
        if not starts:
            return None
        start = min(starts, key=lambda start: abs(code.line_at(start) - played["line"]))
        same = len(os.path.commonprefix([before, after]))
        rest = len(os.path.commonprefix([before[same:][::-1], after[same:][::-1]]))
        return Change(played["number"], played["path"], code.line_at(start), played["kind"], start + same,
                      start + len(before) - rest, after[same:len(after) - rest], before, after)

    def change(self, path, start, kind, match, put):
        text, begin, end = self.files[path].text, start + match.start(1), start + match.end(1)
        new = put(text[begin:end])
        before = self.files[path].line_text(start)
        self.drawn += 1
        return Change(self.drawn, path, self.files[path].line_at(start), kind, begin, end, new, before,
                      before[:match.start(1)] + new + before[match.end(1):])
