"""No file of src is longer than a reader holds in mind, no function longer than a screen."""
import re
import sys
from pathlib import Path

root = Path(sys.argv[1])
FILE_LINES = 350
FUNCTION_LINES = 40
NO_FUNCTION = re.compile(r"^\s*(?:class|struct|enum|union|namespace|template|extern)\b")

# The line before a function's first: blank, a comment, a label, or the end of something else.
ENDS = re.compile(r"^\s*(?://.*)?$|[;{}:]\s*(?://.*)?$")


def functions(lines):
    """The name line and the number of lines of every body that opens on a line of its own."""
    for number, line in enumerate(lines):
        if line.strip() != "{":
            continue
        end = lines.index(line.replace("{", "}"), number) if line.replace("{", "}") in lines[number:] else None
        head = number - 1
        while head and not ENDS.search(lines[head - 1]):
            head -= 1
        if end and not NO_FUNCTION.match(lines[head]):
            yield lines[head].strip(), end - number - 1


def faults_of(path):
    lines = path.read_text().splitlines()
    if len(lines) > FILE_LINES:
        yield f"{len(lines)} lines, at most {FILE_LINES}"
    for name, length in functions(lines):
        if length > FUNCTION_LINES:
            yield f"{name}: {length} lines, at most {FUNCTION_LINES}"


def main():
    files = sorted((root / "src").rglob("*.h")) + sorted((root / "src").rglob("*.cpp"))
    faults = [f"{path.relative_to(root)}: {fault}" for path in files for fault in faults_of(path)]
    print("\n".join(faults) or f"{len(files)} files and their functions are short enough.")
    return 1 if faults else 0


sys.exit(main())
