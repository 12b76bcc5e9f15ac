"""The mutations: each operator is a generator over the tokens of a file.

comparison         made strict or not, turned, negated
logic, arithmetic  && and ||, + and -, * and / exchanged; a sign dropped
constant           a number moved by one, a character by one bit
text               one character of a string
constant_name      a named constant becomes another of its family: an enumerator, LS_OP_...
table_column       a cell of a table of macro lines becomes another of its column
condition          a condition that is no single comparison negated
statement          an expression statement of up to three lines dropped
result             a returned value becomes that of {}
arguments          two neighbouring arguments exchanged
opposite           break/continue, true/false, min/max, floor/ceil, front/back, first/second,
                   lower_bound/upper_bound

Comments, preprocessor lines, assertions, case labels, types between angle brackets, sizes of arrays
and files of other platforms stay as they are.
"""
import dataclasses
import re

from source import CLOSING, SPEED, Source

COMPARISONS = {"<": ("<=", ">="), "<=": ("<", ">"), ">": (">=", "<="), ">=": (">", "<"),
               "==": ("!=",), "!=": ("==",)}
LOGIC = {"&&": "||", "||": "&&", "&": "|", "|": "&"}
ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*",
              "+=": "-=", "-=": "+=", "*=": "/=", "/=": "*=", "++": "--", "--": "++"}
WORDS = [("break", "continue"), ("true", "false")]
CALLS = [("min", "max"), ("floor", "ceil"), ("front", "back"), ("lower_bound", "upper_bound")]
MEMBERS = [("first", "second")]


def both_ways(pairs):
    return dict(pairs) | {b: a for a, b in pairs}


OPPOSITE_WORD, OPPOSITE_CALL, OPPOSITE_MEMBER = map(both_ways, (WORDS, CALLS, MEMBERS))
# What a statement that can be left out does not begin with.
KEPT = {"return", "break", "continue", "throw", "if", "else", "for", "while", "do", "switch",
        "case", "default", "try", "catch", "using", "namespace", "class", "struct", "enum", "union",
        "template", "typedef", "static", "const", "constexpr", "auto", "public", "private",
        "protected", "explicit", "virtual", "inline", "extern", "friend", "goto", "static_assert",
        "assert", "void", "bool", "char", "int", "double", "unsigned", "float", "long", "delete"}
LONGEST_STATEMENT = 3  # lines
# No calls, or calls whose result does not depend on the order.
NO_ORDER = {"if", "for", "while", "switch", "catch", "min", "max"}


@dataclasses.dataclass(frozen=True)
class Mutation:
    """`new` takes the place of text[start:end]; `old_lines` and `new_lines` are the lines that
    differ, without indentation: they name the mutation wherever the lines move to."""
    path: str
    line: int  # 1-based
    operator: str
    start: int
    end: int
    new: str
    old_lines: tuple
    new_lines: tuple

    @property
    def key(self):
        return self.path, self.old_lines, self.new_lines

    def diff(self):
        return [f"- {line}" for line in self.old_lines] + [f"+ {line}" for line in self.new_lines]


def comparison(source):
    for at, token in enumerate(source.tokens):
        if token.text in COMPARISONS and source.is_spaced(at):
            for new in COMPARISONS[token.text]:
                yield at, at, new


def logic(source):
    for at, token in enumerate(source.tokens):
        if token.text in LOGIC and source.is_spaced(at):
            yield at, at, LOGIC[token.text]


def arithmetic(source):
    for at, token in enumerate(source.tokens):
        if token.text in ARITHMETIC and source.is_spaced(at):
            yield at, at, ARITHMETIC[token.text]
        elif token.text in {"++", "--"} and source.word(source.within[at] - 1) != "for":
            yield at, at, ARITHMETIC[token.text]
        elif token.text == "-" and not source.is_spaced(at) and source.word(at + 1) != ">":
            yield at, at, ""  # the sign


def opposite(source):
    for at, token in enumerate(source.tokens):
        if token.text in OPPOSITE_WORD:
            yield at, at, OPPOSITE_WORD[token.text]
        elif token.text in OPPOSITE_CALL and source.word(at + 1) == "(":
            yield at, at, OPPOSITE_CALL[token.text]
        elif token.text in OPPOSITE_MEMBER and source.word(at - 1) in {".", "->"}:
            yield at, at, OPPOSITE_MEMBER[token.text]


def is_array_size(source, at):
    """`char text[256] = {}`: a larger room is no other behaviour."""
    return (source.word(at - 1) == "[" and source.word(at + 1) == "]"
            and source.tokens[at - 3].kind == "name" and source.word(at - 3) != "return"
            and source.word(at + 2) in {";", "=", "{"})


def constant(source):
    for at, token in enumerate(source.tokens):
        if token.kind == "char":
            yield at, at, token.text[:-2] + chr(ord(token.text[-2]) ^ 1) + "'"
        if token.kind != "number" or is_array_size(source, at):
            continue
        match = re.fullmatch(r"([\d']+)(\.\d*)?(.*)", token.text)
        if match and not token.text.lower().startswith("0x"):
            value = int(match[1].replace("'", ""))
            for moved in (value + 1, value - 1):
                if moved >= 0:
                    yield at, at, f"{moved}{match[2] or ''}{match[3]}"
        elif token.text[-1].isdigit():
            yield at, at, token.text[:-1] + str((int(token.text[-1]) + 1) % 10)


def text(source):
    """One character of a text, a letter or digit if there is one: the middle one."""
    for at, token in enumerate(source.tokens):
        if token.kind != "string":
            continue
        inside = token.text.index('"') + 1
        letters = [k for k in range(inside, len(token.text) - 1)
                   if token.text[k].isalnum() and token.text[k - 1] not in "\\%"]
        if letters:
            k = letters[len(letters) // 2]
            other = "x" if token.text[k] != "x" else "y"
            yield at, at, token.text[:k] + other + token.text[k + 1:]
        elif len(token.text) > inside + 1:
            yield at, at, token.text[:inside] + "x" + token.text[inside:]


def constant_name(source):
    """A named constant becomes the next of its family: `Shape::binary`, `LS_OP_EQ`."""
    families = {}
    members = []
    for at, token in enumerate(source.tokens):
        if token.kind != "name" or source.quiet[at]:
            continue
        scope = source.word(at - 2) if source.word(at - 1) == "::" else None
        if re.fullmatch(r"[A-Z][A-Z0-9]*(_[A-Z0-9]+){2,}", token.text):
            family = token.text.rsplit("_", 1)[0] + "_"
        elif (scope and scope != "std" and token.text[0].islower()
              and source.word(at + 1) not in {"(", "<", "::"}):
            family = scope + "::"
        else:
            continue
        families.setdefault(family, set()).add(token.text)
        members.append((at, family))
    for at, family in members:
        names = sorted(families[family])
        if len(names) > 1:
            yield at, at, names[(names.index(source.word(at)) + 1) % len(names)]


def condition(source):
    for at, token in enumerate(source.tokens):
        if token.text not in {"if", "while"} or source.word(at + 1) != "(":
            continue
        first, last = at + 2, source.partner[at + 1] - 1
        inside = [source.word(k) for k in range(first, last + 1)]
        if set(inside) & set(COMPARISONS) and not set(inside) & {"&&", "||"}:
            continue  # the comparison turned is the same
        if ";" not in inside and "=" not in inside:
            whole = source.text[source.tokens[first].start:source.tokens[last].end]
            yield first, last, f"!({whole})"


def is_statement(source, at):
    """Does an expression statement of a function body begin here, or a bare `return`?"""
    before = source.word(at - 1)
    if source.block[at] != "code" or source.word(source.within[at]) != "{":
        return False
    if before == ":":
        if not source.quiet[at - 1] and source.word(at - 2) != "default":
            return False
    elif before == ")":
        if source.word(source.partner[at - 1] - 1) not in {"if", "for", "while"}:
            return False
    elif before not in {";", "{", "}", "else"}:
        return False
    if source.word(at) in {"++", "--"}:
        return True
    if source.word(at) == "return":
        return source.word(at + 1) == ";"
    if source.tokens[at].kind != "name" or source.word(at) in KEPT:
        return False
    after = at + 1
    while source.word(after) == "::" or source.word(after - 1) == "::" or source.quiet[after]:
        after += 1
    is_declaration = source.tokens[after].kind == "name" or source.word(after) in {"*", "&", "&&"}
    return not is_declaration


def statement(source):
    for at, token in enumerate(source.tokens):
        if is_statement(source, at):
            end = source.find(at, ";")
            nb_breaks = source.text.count("\n", token.start, source.tokens[end].end)
            called = source.word(source.partner[end - 1] - 1)
            if nb_breaks < LONGEST_STATEMENT and called not in SPEED:
                yield at, end, ";" + "\n" * nb_breaks


def result(source):
    """The value returned becomes that of an empty initialiser."""
    for at, token in enumerate(source.tokens):
        if token.text != "return" or source.word(at + 1) in {";", "{", "true", "false"}:
            continue
        end = source.find(at, ";")
        nb_breaks = source.text.count("\n", token.start, source.tokens[end].end)
        is_number = end - at == 2 and source.tokens[at + 1].kind == "number"
        if nb_breaks < LONGEST_STATEMENT and not is_number:
            yield at + 1, end - 1, "{}" + "\n" * nb_breaks


def arguments(source):
    """Two neighbouring arguments of a call change places."""
    for at, token in enumerate(source.tokens):
        if token.text != "(" or source.block[at] not in {"code", "list"} or at == 0:
            continue
        if source.tokens[at - 1].kind != "name" or source.word(at - 1) in NO_ORDER:
            continue
        parts, first, k = [], at + 1, at + 1
        while k <= source.partner[at]:
            if source.word(k) == "," or k == source.partner[at]:
                parts.append((first, k - 1))
                first = k + 1
            k = source.partner[k] + 1 if source.word(k) in CLOSING else k + 1
        for (a, b), (c, d) in zip(parts, parts[1:]):
            if a > b or c > d:
                continue
            start = [source.tokens[k].start for k in (a, c)]
            end = [source.tokens[k].end for k in (b, d)]
            one, two = source.text[start[0]:end[0]], source.text[start[1]:end[1]]
            if one != two and "\n" not in one + two:
                yield a, d, two + source.text[end[0]:start[1]] + one


def table_column(source):
    """In a table of macro lines, a cell becomes another of those that its column repeats."""
    if not source.path.endswith(".inc"):
        return
    columns = {}
    for at in range(len(source.tokens) - 1):
        if source.word(at + 1) != "(" or source.within[at] >= 0:
            continue
        column, k = 0, at + 2
        while k < source.partner[at + 1]:
            if source.word(k) == ",":
                column += 1
                if source.word(k + 2) == ",":
                    columns.setdefault((source.word(at), column), []).append(k + 1)
            k = source.partner[k] + 1 if source.word(k) in CLOSING else k + 1
    for cells in columns.values():
        values = sorted({source.word(k) for k in cells})
        if 1 < len(values) < len(cells):
            for k in cells:
                yield k, k, values[(values.index(source.word(k)) + 1) % len(values)]


OPERATORS = (comparison, logic, arithmetic, opposite, constant, text, constant_name, condition,
             statement, result, arguments, table_column)
# The whole statement or call counts, not what it is made of.
MAY_HOLD_QUIET = (condition, statement, result, arguments)


def mutations_of(path, text):
    """All mutations of a file, in the order of the text; `path` is for the reports."""
    source = Source(path, text)
    found = {}
    for operator in OPERATORS:
        for first, last, new in operator(source):
            if source.quiet[first] or (operator not in MAY_HOLD_QUIET and source.quiet[last]):
                continue
            mutation = make_mutation(source, operator.__name__, source.tokens[first].start,
                                     source.tokens[last].end, new)
            if mutation.old_lines != mutation.new_lines:
                found.setdefault((mutation.start, mutation.end, mutation.new), mutation)
    return sorted(found.values(), key=lambda m: (m.start, m.end, m.operator, m.new))


def make_mutation(source, operator, start, end, new):
    text = source.text
    from_line = text.rfind("\n", 0, start) + 1
    to_line = text.find("\n", end)
    to_line = len(text) if to_line < 0 else to_line
    old = text[from_line:to_line].split("\n")
    changed = (text[from_line:start] + new + text[end:to_line]).split("\n")
    kept = [(a.strip(), b.strip()) for a, b in zip(old, changed) if a != b]
    return Mutation(source.path, source.line_of(start), operator, start, end, new,
                    tuple(a for a, _ in kept), tuple(b for _, b in kept if b))
