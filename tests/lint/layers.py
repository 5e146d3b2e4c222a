"""Every include stays within the folders that the including folder depends on."""
import re
import sys
from pathlib import Path

root = Path(sys.argv[1])
src = root / "src"
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.M)
WIDGETS = re.compile(r'^\s*#\s*include\s+<(QWidget|QtWidgets|QApplication|QDialog|QMessageBox|QMainWindow)\b', re.M)
SHARED = re.compile(r'\b(gOptions|gSettingsFile|TotalMinutes|CurrentFile)\b|common/GenralMacro\.h')


def folders():
    """Folder name -> the folders it may include, itself among them."""
    found = {}
    for lists in src.rglob("CMakeLists.txt"):
        for call in re.findall(r"zib_folder\(([^)]*)\)", lists.read_text()):
            words = call.split()
            depends, reading = [], False
            for word in words[1:]:
                if word in ("SOURCES", "LIBS", "DEPENDS"):
                    reading = word == "DEPENDS"
                elif reading and not word.startswith("#"):
                    depends.append(word)
            found[words[0]] = set(depends) | {words[0]}
    return found


def folder_of(path, names):
    relative = path.relative_to(src).as_posix()
    fitting = [name for name in names if relative.startswith(name + "/")]
    return max(fitting, key=len) if fitting else None


def target_of(include, names):
    fitting = [name for name in names if include.startswith(name + "/")]
    return max(fitting, key=len) if fitting else None


def main():
    allowed = folders()
    faults = []
    for path in sorted(list(src.rglob("*.h")) + list(src.rglob("*.cpp"))):
        if path.name == "main.cpp":
            continue
        home = folder_of(path, allowed)
        text = path.read_text()
        where = path.relative_to(root)
        if home is None:
            faults.append(f"{where}: belongs to no library")
            continue
        for include in INCLUDE.findall(text):
            other = target_of(include, allowed)
            if other and other not in allowed[home]:
                faults.append(f"{where}: includes {include}, but {home} does not depend on {other}")
        if home.startswith("engines/") or home == "components":
            if WIDGETS.search(text) and home != "engines/print":
                faults.append(f"{where}: an engine knows no widgets")
        if home.startswith(("engines/", "components", "platform")) and SHARED.search(text):
            faults.append(f"{where}: names the shared state of the windows")
        if home != "platform" and re.search(r"<QMessageBox>", text):
            faults.append(f"{where}: message boxes go through zib::Messages")
    print("\n".join(faults) or f"{len(allowed)} folders keep to their neighbours.")
    return 1 if faults else 0


sys.exit(main())
