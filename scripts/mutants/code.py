"""What the lines of a C++ file are made of, as far as changing them needs to know."""
import bisect
import re
from dataclasses import dataclass, field

TOKENS = re.compile(
    r'//[^\n]*|/\*.*?\*/|R"(?P<end>[^(\s]*)\(.*?\)(?P=end)"|"(?:\\.|[^"\\\n])*"'
    r"|(?<![0-9a-fA-F])'(?:\\.|[^'\\\n])+'|^[ \t]*#(?:\\\n|[^\n])*", re.S | re.M)
NOT_CODE = ("Q_", "using ", "namespace", "static_assert", "case ")
BODY_ENDS = re.compile(r"(\)|\]|\b(const|noexcept|override|final|mutable|else|do|try)|->\s*[\w:<>,\s*&]+)$")
EDGE = re.compile(r"[,;?]|(?<!:):(?!:)|(?<![=<>!])=(?!=)")  # where a value ends that no bracket ends
BRANCH = re.compile(r"\b(case\b[^?]*|default\s*):$")
KEYWORD_OF = {"namespace": "namespace", "extern": "namespace", "class": "class", "struct": "class", "union": "class",
              "enum": "values"}


def masked(text):
    """The text with blanks for comments, texts in quotes and directives; every character keeps its place."""
    return TOKENS.sub(lambda match: re.sub(r"[^\n]", " ", match[0]), text)


@dataclass
class Block:
    """What stands between two braces: statements, the branches of a switch, values, a class or a namespace."""
    kind: str
    begin: int
    parent: "Block" = None
    end: int = 0
    constant: bool = False  # of a function that may run while compiling


@dataclass
class Code:
    """One file: its text, its code without texts and comments, its blocks from the outside in."""
    text: str
    code: str = field(init=False)
    blocks: list = field(init=False, default_factory=list)
    starts: list = field(init=False)

    def __post_init__(self):
        self.code = masked(self.text)
        self.starts = [0] + [match.end() for match in re.finditer("\n", self.text)]
        self.find_blocks()

    def line_at(self, place):
        return bisect.bisect_right(self.starts, place)

    def line_text(self, start):
        return self.text[start:].split("\n", 1)[0]

    def lines(self):
        """The lines that hold code to change, as (place of the first character, code)."""
        for start, line in zip(self.starts, self.code.split("\n")):
            if line.strip() and not line.strip().startswith(NOT_CODE):
                yield start, line

    def find_blocks(self):
        open_blocks = [Block("namespace", 0, end=len(self.code))]
        for match in re.finditer(r"[{}]", self.code):
            if match[0] == "}":
                block = open_blocks.pop()
                block.end = match.start()
                self.blocks.append(block)
                continue
            head = self.head(match.start())
            block = Block(self.kind(head, match.start(), open_blocks[-1]), match.end(), open_blocks[-1])
            block.constant = open_blocks[-1].constant or bool(re.search(r"\bconst(expr|eval)\b", head)
                                                              and block.kind == "statements")
            open_blocks.append(block)

    def head(self, brace):
        """What stands before a brace, back to the end of the statement before."""
        start = max(self.code.rfind(mark, 0, brace) for mark in ";{}") + 1
        return self.code[start:brace].strip()

    def kind(self, head, brace, parent):
        within = parent.kind in ("statements", "branches")
        if not head:
            before = self.code[:brace].rstrip()[-1:]
            return "statements" if within or (before == "}" and parent.kind in ("namespace", "class")) else "values"
        if BODY_ENDS.search(head):
            return "branches" if self.opens_switch(brace) else "statements"
        if within and BRANCH.search(head):
            return "statements"
        word = re.search(r"\b(namespace|extern|enum|class|struct|union)\b", head)
        return KEYWORD_OF[word[1]] if word and "=" not in head else "values"

    def opens_switch(self, brace):
        place, depth = self.code.rfind(")", 0, brace), 0
        while place > 0:
            depth += {")": 1, "(": -1}.get(self.code[place], 0)
            if depth == 0:
                break
            place -= 1
        return bool(re.search(r"\bswitch\s*$", self.code[:place]))

    def statements_around(self, begin, end):
        """The innermost block of statements that holds a place whole; nothing outside of functions."""
        around = [b for b in self.blocks if b.begin <= begin and end <= b.end and b.kind == "statements"]
        return max(around, key=lambda block: block.begin, default=None)

    def blocks_around(self, place):
        """From the outermost to the innermost."""
        return sorted((b for b in self.blocks if b.begin <= place < b.end), key=lambda block: block.begin)

    def in_table(self, place):
        return self.blocks_around(place)[-1:] and self.blocks_around(place)[-1].kind == "values"

    def in_class(self, place):
        return self.blocks_around(place)[-1:] and self.blocks_around(place)[-1].kind == "class"

    def declaration_around(self, place):
        """Where the declaration begins whose value stands at a place outside of functions."""
        tables = [block for block in self.blocks_around(place) if block.kind == "values"]
        top = tables[0].begin - 1 if tables else place
        return max(self.code.rfind(mark, 0, top) for mark in ";{}") + 1

    def value_around(self, begin, end):
        """The whole value that a place belongs to, as (begin, end): up to the next comma, bracket or assignment."""
        begin, end = self.edge(begin - 1, -1) + 1, self.edge(end, 1)
        inside = self.code[begin:end]
        return begin + len(inside) - len(inside.lstrip()), begin + len(inside.rstrip())

    def edge(self, place, step):
        opening, closing = ("([{", ")]}") if step > 0 else (")]}", "([{")
        depth = 0
        while 0 <= place < len(self.code):
            mark = self.code[place]
            if depth == 0 and (mark in closing or EDGE.match(self.code, place)):
                break
            depth += (mark in opening) - (mark in closing)
            place += step
        return place
