"""Writes all changes of a file into one text in which a number chooses, at run time, which of them is alive.

Inside a function the innermost block is there once for each change, changed, and once as it was:

    { if (zibMutant(7)) { changed } else { as it was } }

Everywhere else it is the value that is there twice: (zibMutantAlive(7) ? (changed) : (as it was)). A constant that
holds such a value is computed when the program starts instead of while compiling.
"""
import re
from dataclasses import dataclass, field


@dataclass
class Site:
    """A part of the text that is written anew for some changes: a block, a value, or a word of a declaration."""
    kind: str
    begin: int
    end: int
    changes: list = field(default_factory=list)


class Switched:
    """One file with the changes that are switched in it."""

    def __init__(self, path, code):
        self.path, self.code = path, code
        self.sites = {}

    def add(self, change):
        if block := self.code.statements_around(change.begin, change.end):
            self.site("block", block.begin, block.end, change)
            return
        self.site("value", *self.code.value_around(change.begin, change.end), change)
        begin = self.code.declaration_around(change.begin)
        if found := re.search(r"\bconstexpr\b", self.code.code[begin:change.begin]):
            self.site("constant", begin + found.start(), begin + found.end(), change)

    def site(self, kind, begin, end, change):
        self.sites.setdefault((begin, -end), Site(kind, begin, end)).changes.append(change)

    def remove(self, changes):
        for site in self.sites.values():
            site.changes = [change for change in site.changes if change not in changes]

    def changed(self, change, begin=0, end=None):
        """A part of the text with one change for good."""
        text = self.code.text
        return text[begin:change.begin] + change.put + text[change.end:len(text) if end is None else end]

    def text(self):
        """The whole text, every change behind its switch."""
        return f'#include "Switch.h"\n#line 1 "{self.path}"\n{self.written(0, len(self.code.text))}'

    def written(self, begin, end, around=None):
        text, place = "", begin
        for _, site in sorted(self.sites.items()):
            if site.changes and site is not around and place <= site.begin and site.end <= end:
                text += self.code.text[place:site.begin] + getattr(self, site.kind)(site)
                place = site.end
        return text + self.code.text[place:end]

    def block(self, site):
        text = ""
        for change in site.changes:
            text += f'if (zibMutant({change.number})) {{\n#line 1 "change-{change.number}"\n'
            text += self.changed(change, site.begin, site.end) + "\n} else "
        return (text + "{" + self.line_mark(site.begin) + self.written(site.begin, site.end, site) + "\n}"
                + self.line_mark(site.end))

    def line_mark(self, place):
        return f'\n#line {self.code.line_at(place)} "{self.path}"\n'

    def value(self, site):
        one, text = site.changes[0], self.written(site.begin, site.end, site)
        if self.code.in_table(site.begin) and text.isdigit():
            return f"ZibMutantNumber{{zibMutantAlive({one.number}) ? {one.put} : {text}}}"
        choices = (f"zibMutantAlive({c.number}) ? ({self.changed(c, site.begin, site.end)}) : " for c in site.changes)
        return "(" + "".join(choices) + f"({text}))"

    def constant(self, site):
        return "inline const" if self.code.in_class(site.begin) else "const"

    def blamed(self, line, kinds):
        """The changes of the smallest site of some kinds that a line of the file belongs to."""
        around = [site for site in self.sites.values() if site.kind in kinds and site.changes
                  and self.code.line_at(site.begin) <= line <= self.code.line_at(site.end)]
        smallest = min(around, key=lambda site: site.end - site.begin, default=None)
        return list(smallest.changes) if smallest else []
