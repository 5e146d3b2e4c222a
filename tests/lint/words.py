"""House words: no marks of unfinished work, no untyped connections, nothing thrown."""
import re
import sys
from pathlib import Path

root = Path(sys.argv[1])
MARKS = re.compile(r"\b(" + "|".join(["TO" + "DO", "FIX" + "ME", "HA" + "CK", "XX" + "X"]) + r")\b")
OLD_CONNECT = re.compile(r"\b(SIGNAL|SLOT)\s*\(")
THROW = re.compile(r"^\s*throw\b", re.M)


def sources():
    for folder in ("src", "tests", "bench", "fuzz", "demo"):
        for suffix in ("*.h", "*.cpp"):
            yield from sorted((root / folder).rglob(suffix))


def main():
    faults = []
    count = 0
    for path in sources():
        count += 1
        text = path.read_text()
        where = path.relative_to(root).as_posix()
        for pattern, words in ((MARKS, "a mark of unfinished work"), (OLD_CONNECT, "an untyped connection")):
            for match in pattern.finditer(text):
                line = text.count("\n", 0, match.start()) + 1
                faults.append(f"{where}:{line}: {words}: {match.group(0)}")
        if where.startswith("src/") and THROW.search(text):
            faults.append(f"{where}: throws; failures are values here")
    print("\n".join(faults) or f"{count} sources keep to the house words.")
    return 1 if faults else 0


sys.exit(main())
