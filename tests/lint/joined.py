"""The files of a folder can be compiled as one: no private name of one stands in another for something else."""
import re
import sys
from collections import defaultdict
from pathlib import Path

root = Path(sys.argv[1])
src = root / "src"
TYPE = re.compile(r"^(?:struct|class|enum(?: class)?|using)\s+(?!namespace)(\w+)\b(?!::)")
FUNCTION = re.compile(r"^(?:static |inline |constexpr |template<.*> |\[\[\w+\]\] )*[\w:<>,&*\s]+?[\s&*](\w+)\(([^;]*)$")
VALUE = re.compile(r"^(?:static |inline |constexpr |constinit |const )*[\w:<>,&*\s]+?[\s&*](\w+)(?:\[\w*\])?\s*(?:=|\{|;)")


def kinds_of(parameters):
    """A function's parameters without their names and defaults: two that differ there may share a name."""
    return tuple(re.sub(r"\s*=.*|\s*\b\w+$", "", p.strip()) for p in parameters.split(")")[0].split(","))


def private_name(line):
    """What a line of an unnamed namespace, or one with static before it, declares for its file alone."""
    if found := TYPE.match(line):
        return found.group(1)
    if found := FUNCTION.match(line):
        return found.group(1), *kinds_of(found.group(2))
    if found := VALUE.match(line):
        return found.group(1)
    return None


def private_names(text):
    depth, unnamed = 0, None
    text = re.sub(r",\n\s+", ", ", text)
    for line in text.splitlines():
        line = re.sub(r"\s*//.*", "", line)
        if re.match(r"namespace\s*\{", line):
            unnamed = depth + 1
        elif depth == unnamed or line.startswith("static "):
            if line[:1] not in (" ", "}", ")", "#", "") and not line.startswith("using namespace") and (name := private_name(line)):
                yield name
        depth += line.count("{") - line.count("}")
        if unnamed and depth < unnamed:
            unnamed = None


def folders():
    """A library's files, by the folder of its list."""
    for lists in src.rglob("CMakeLists.txt"):
        for call in re.findall(r"zib_folder\(([^)]*)\)", lists.read_text()):
            yield lists.parent, [lists.parent / word for word in call.split() if word.endswith(".cpp")]


def main():
    faults = []
    for folder, files in folders():
        holders = defaultdict(set)
        for path in files:
            for name in private_names(path.read_text()):
                holders[name].add(path.relative_to(folder).as_posix())
        faults += [f"{folder.relative_to(root)}: {name if isinstance(name, str) else name[0]} stands in "
                   + " and ".join(sorted(paths)) for name, paths in holders.items() if len(paths) > 1]
    print("\n".join(sorted(faults)) or "Every folder can be compiled as one file.")
    return 1 if faults else 0


sys.exit(main())
