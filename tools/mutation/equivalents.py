"""Lists of mutations as text: those that change nothing, with the reason, and the last survivors.

An entry is a path, the lines that the mutation takes away (`- `), those that it puts there (`+ `)
and, indented, the reason; a blank line ends it. Without lines put there it means every mutation of
the others. Lines are compared without indentation and without their number, so an entry lives as
long as its line.
"""
import dataclasses


@dataclasses.dataclass(frozen=True)
class Entry:
    path: str
    old_lines: tuple
    new_lines: tuple
    reason: str

    @property
    def key(self):
        return self.path, self.old_lines, self.new_lines


def read(file):
    """The entries of `file`; ends the program with file and line at an entry that is none."""
    if not file.is_file():
        return []
    entries, block = [], []
    for number, line in enumerate([*file.read_text().splitlines(), ""], 1):
        if line.strip() and not line.startswith("#"):
            block.append(line)
        elif block and not line.strip():
            old = tuple(text[2:] for text in block if text.startswith("- "))
            new = tuple(text[2:] for text in block if text.startswith("+ "))
            reason = [text.strip() for text in block if text.startswith("  ")]
            if not old or 1 + len(old) + len(new) + len(reason) != len(block):
                raise SystemExit(f"{file}:{number - len(block)}: expected a path, lines with - and "
                                 "+, and an indented reason")
            entries.append(Entry(block[0], old, new, " ".join(reason)))
            block = []
    return entries


def split(mutations, entries):
    """The mutations that no entry names, and the entries that name none."""
    named = {mutation.key for mutation in mutations}
    named |= {(path, old, ()) for path, old, _ in named}
    keys = {entry.key for entry in entries}
    rest = [mutation for mutation in mutations
            if not keys & {mutation.key, (mutation.path, mutation.old_lines, ())}]
    return rest, [entry for entry in entries if entry.key not in named]


def text_of(mutations):
    return "\n".join("\n".join([mutation.path, *mutation.diff(), f"  line {mutation.line}, "
                                f"{mutation.operator}"]) + "\n" for mutation in mutations)
