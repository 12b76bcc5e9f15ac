"""C++ text as tokens: what is code, which brackets belong together, what kind of block it is."""
import bisect
import dataclasses
import re

TOKEN = re.compile(r"""
    (?P<space>\s+|//[^\n]*|/\*.*?\*/|\#(?:\\\n|[^\n])*)
  | (?P<string>(?:u8|[uUL])?(?:R"(?P<mark>[^()\s\\]*)\(.*?\)(?P=mark)"|"(?:\\.|[^"\\\n])*"))
  | (?P<char>(?:u8|[uUL])?'(?:\\.|[^'\\\n])+')
  | (?P<number>\.?\d(?:[eEpP][+-]|'?[\w.])*)
  | (?P<name>[A-Za-z_]\w*)
  | (?P<sign><<=|>>=|<=>|->\*|\.\.\.|::|->|\+\+|--|<<|>>|[-+*/%&|^<>=!]=|&&|\|\||\S)
""", re.VERBOSE | re.DOTALL)

CLOSING = {"(": ")", "[": "]", "{": "}"}
TYPE_WORDS = {"class", "struct", "union"}
# Conditions on the code itself, for the compiler or the developer, and hints: no behaviour.
SPEED = {"reserve", "__builtin_prefetch"}
CHECKS = {"static_assert", "assert", "noexcept", "alignas", "requires", "decltype"} | SPEED

BEFORE_CODE = {")", "]", "const", "noexcept", "override", "else", "do", "try", ";", "{", "}", ":"}


@dataclasses.dataclass(frozen=True)
class Token:
    kind: str  # string, char, number, name or sign
    text: str
    start: int  # offset in the file's text
    end: int


class Source:
    """One file. `tokens` are without comments and preprocessor lines; `partner` [nbTokens] is the
    index of the bracket that closes or opens this one, or -1; `within` [nbTokens] the index of the
    innermost bracket that is open there, or -1; `block` [nbTokens] the kind of the innermost
    braces: namespace, type, enum, code or list; `quiet` [nbTokens] tells what only the compiler
    reads or no behaviour hangs on (types between angle brackets, assertions)."""

    def __init__(self, path, text):
        self.path = path
        self.text = text
        self.tokens = [Token(match.lastgroup if match.lastgroup != "mark" else "string",
                             match.group(), match.start(), match.end())
                       for match in TOKEN.finditer(text) if match.lastgroup != "space"]
        self.line_starts = [0] + [match.end() for match in re.finditer("\n", text)]
        self.quiet = [False] * len(self.tokens)
        self._pair_brackets()
        self._quieten()
        self._name_blocks()

    def line_of(self, offset):
        return bisect.bisect_right(self.line_starts, offset)

    def word(self, at):
        """Text of a token; empty beyond the ends."""
        return self.tokens[at].text if 0 <= at < len(self.tokens) else ""

    def is_spaced(self, at):
        """Is there space on both sides? The formatter sets it around binary operators alone."""
        token = self.tokens[at]
        return (token.start > 0 and self.text[token.start - 1].isspace()
                and self.text[token.end:token.end + 1].isspace())

    def find(self, at, text):
        """Index of the next token `text` from `at` outside of brackets opened on the way."""
        while at < len(self.tokens) and self.word(at) != text:
            at = self.partner[at] + 1 if self.word(at) in CLOSING else at + 1
        return min(at, len(self.tokens) - 1)

    def _pair_brackets(self):
        self.partner = [-1] * len(self.tokens)
        self.within = []
        opened = [-1]
        for at, token in enumerate(self.tokens):
            if token.text in CLOSING.values() and len(opened) > 1:
                self.partner[at] = opened.pop()
                self.partner[self.partner[at]] = at
            self.within.append(opened[-1])
            if token.text in CLOSING:
                opened.append(at)

    def _angle_end(self, at):
        """Index of the sign that closes the angle bracket at `at`."""
        depth = 0
        for k in range(at, len(self.tokens)):
            text = self.word(k)
            depth += {"<": 1, ">": -1, ">>": -2}.get(text, 0)
            if depth <= 0 or text in {";", "{"}:
                return k
        return len(self.tokens) - 1

    def _quieten(self):
        for at, token in enumerate(self.tokens):
            if self.quiet[at]:
                continue
            end = at - 1
            if token.text == "<" and (self.word(at - 1) == "template" or not self.is_spaced(at)):
                end = self._angle_end(at)  # the formatter sets no space before these
            elif token.text in CHECKS and self.word(at + 1) == "(":
                end = self.partner[at + 1]
            elif token.text == "[" and self.word(at + 1) == "[":
                end = self.partner[at]
            elif token.text in {"using", "friend"}:
                end = self.find(at, ";")
            elif token.text in {"operator", "extern"}:
                end = at + 1
            elif token.text == "case":
                end = self.find(at, ":")
            for k in range(at, end + 1):
                self.quiet[k] = True

    def _kind_of_block(self, at, outer):
        head = []
        for k in range(at - 1, -1, -1):
            if self.word(k) in {";", "{", "}"}:
                break
            if not self.quiet[k]:
                head.insert(0, self.word(k))
        if "namespace" in head or (outer == "namespace" and head == []):
            return "namespace"
        if "enum" in head:
            return "enum"
        if TYPE_WORDS & set(head) and "(" not in head:
            return "type"
        before = self.word(at - 1)
        # Behind "]" begins a lambda without parameters, behind "->" stands a result type.
        if before in BEFORE_CODE:
            return "code" if outer != "list" or before in {")", "]"} else "list"
        return "code" if "->" in head[-6:] else "list"

    def _name_blocks(self):
        self.block = []
        blocks = ["namespace"]
        for at, token in enumerate(self.tokens):
            if token.text == "}" and len(blocks) > 1:
                blocks.pop()
            self.block.append(blocks[-1])
            if token.text == "{":
                blocks.append(self._kind_of_block(at, blocks[-1]))
