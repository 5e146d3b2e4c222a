"""What plays the same part bears the same name in every window, and no member carries a form's instance name."""
import re
import sys
from pathlib import Path

root = Path(sys.argv[1])
WINDOWS = ("app", "burn", "label", "settings", "tools")
# What a window is given or holds, and how it calls it.
PARTS = {
    "AudioFile": {"m_file", "m_fileReader", "m_fileWriter"},
    "AudioInformation": {"m_information"},
    "AudioPlayer": {"m_player"},
    "CDRipperX": {"m_ripper"},
    "DVDWriterPro": {"m_writer"},
    "Errands": {"m_errands"},
    "Messages": {"m_messages"},
    "Services": {"m_services"},
    "WaitPointer": {"m_wait"},
    "Worker": {"m_worker"},
}
MEMBER = re.compile(r"^    (?:const |mutable )?(?:std::\w+<)?(?:const )?(?:zib::)?(\w+)[>*& ]+(?:const )?(\w+)(?:;|\{| =)", re.M)
INSTANCE = re.compile(r"\bm_(?:[A-Z]\w*|[a-z]\w*\d)\b")


def faults_of(path):
    text = path.read_text()
    for name in sorted(set(INSTANCE.findall(text))):
        yield f"{name} is an instance's name: a member is named after its part"
    if path.suffix != ".h" or path.relative_to(root / "src").parts[0] not in WINDOWS:
        return
    for kind, name in MEMBER.findall(text):
        if name not in PARTS.get(kind, {name}) and name.startswith("m_") | (path.stem[:3] == "frm"):
            yield f"{kind} is called {name} here, elsewhere {' or '.join(sorted(PARTS[kind]))}"
        if kind == "QTimer" and not name.startswith("m_"):
            yield f"the timer {name} is a member: m_timer, if the form has one"


def main():
    files = sorted((root / "src").rglob("*.h")) + sorted((root / "src").rglob("*.cpp"))
    faults = [f"{path.relative_to(root)}: {fault}" for path in files for fault in faults_of(path)]
    print("\n".join(faults) or "What plays the same part bears one name.")
    return 1 if faults else 0


sys.exit(main())
