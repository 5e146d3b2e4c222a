"""What the program loads late it does not load at its start, and every function that it takes from there exists."""
import ctypes
import re
import subprocess
import sys
from pathlib import Path

root, program = Path(sys.argv[1]), sys.argv[2]
LIBRARY = re.compile(r'LateLibrary (\w+)\("([^"]+)"\);')
FUNCTION = re.compile(r"ZIB_LATE_FUNCTION\((\w+), (\w+)\);")

if not Path(program).exists():
    print(f"{program} is not built")
    sys.exit(77)
linked = subprocess.run(["ldd", program], text=True, capture_output=True, check=True).stdout
faults, count = [], 0
for path in sorted((root / "src/engines").rglob("*Library.h")):
    text = path.read_text()
    for name, file in LIBRARY.findall(text):
        if file in linked:
            faults.append(f"{path.relative_to(root)}: {file} is loaded at the start")
        library = ctypes.CDLL(file)
        functions = [function for owner, function in FUNCTION.findall(text) if owner == name]
        faults += [f"{path.relative_to(root)}: {file} has no {function}" for function in functions
                   if not hasattr(library, function)]
        count += len(functions)
if count == 0:
    faults.append("no late function was found in src/engines")
print("\n".join(faults) or f"{count} functions come late.")
sys.exit(1 if faults else 0)
