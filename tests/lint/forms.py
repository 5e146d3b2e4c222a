"""Every form holds exactly the controls of its roster docs/controls/<form>.csv.

A roster line is "name,class". Lines of controls that the window makes while running, or components that are no
widgets, carry a third field that says so ("run-time" or "component") and are not looked for in the form.
"""
import csv
import sys
import xml.etree.ElementTree as ElementTree
from pathlib import Path

root = Path(sys.argv[1])


def controls_of(form):
    tree = ElementTree.parse(form).getroot()
    found = {}
    for kind in ("widget", "action", "addaction"):
        for element in tree.iter(kind):
            name = element.get("name")
            if name and kind != "addaction":
                found[name] = element.get("class") or "QAction"
    extends = {c.findtext("class"): c.findtext("extends") for c in tree.iter("customwidget")}
    connections = tree.find("connections")
    wired = connections is not None and len(connections) > 0
    return found, extends, wired


def deaf_buttons_of(form):
    """Buttons that Enter does not press although they have the focus, because it presses another one instead.

    A Cancel that works only while a job runs is meant to be one: the Enter that began the job may come twice.
    """
    buttons = [w for w in ElementTree.parse(form).getroot().iter("widget") if w.get("class") == "QPushButton"]
    flags = {b.get("name"): {p.get("name"): p.findtext("bool") for p in b.findall("property")} for b in buttons}
    if not any(flag.get("default") == "true" for flag in flags.values()):
        return []
    return [name for name, flag in flags.items()
            if flag.get("autoDefault") == "false" and not (name == "cmdCancel" and flag.get("enabled") == "false")]


def muted_labels_of(form):
    """Labels whose texts no screen reader hears: a name of their own stands before the text, and its changes."""
    labels = [w for w in ElementTree.parse(form).getroot().iter("widget") if w.get("name", "").startswith("lbl")]
    return [w.get("name") for w in labels if any(p.get("name") == "accessibleName" for p in w.findall("property"))]


def roster_of(form):
    path = root / "docs" / "controls" / (form.stem + ".csv")
    if not path.exists():
        return None
    with path.open(newline="") as lines:
        rows = [row for row in csv.reader(lines) if row and not row[0].startswith("#")]
    if rows and rows[0][:2] == ["name", "class"]:
        rows = rows[1:]
    return rows


def main():
    faults = []
    forms = sorted((root / "src").rglob("*.ui"))
    for form in forms:
        roster = roster_of(form)
        if roster is None:
            faults.append(f"{form.name}: has no roster")
            continue
        found, extends, wired = controls_of(form)
        if wired:
            faults.append(f"{form.name}: wires events; that belongs into connectControls")
        for name in deaf_buttons_of(form):
            faults.append(f"{form.name}: Enter on {name} presses another button")
        for name in muted_labels_of(form):
            faults.append(f"{form.name}: {name} has another accessible name than its text")
        for row in roster:
            name, kind = row[0].strip(), row[1].strip()
            if len(row) > 2 and row[2].strip():
                continue
            actual = found.get(name)
            if actual is None:
                faults.append(f"{form.name}: {name} is missing")
            elif kind not in (actual, extends.get(actual)):
                faults.append(f"{form.name}: {name} is a {actual}, not a {kind}")
        listed = {row[0].strip() for row in roster}
        for name in sorted(set(found) - listed):
            faults.append(f"{form.name}: {name} is not in the roster")
    print("\n".join(faults) or f"{len(forms)} forms hold what their rosters say.")
    return 1 if faults else 0


sys.exit(main())
