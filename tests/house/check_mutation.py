#!/usr/bin/env python3
"""Mutates a small text and a table, and compares with what a reader would change in them.

Usage: check_mutation.py ROOT
"""
import itertools
import pathlib
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(sys.argv[1]) / "tools" / "mutation"))
import equivalents  # noqa: E402
from measurement import draws  # noqa: E402
from operators import mutations_of  # noqa: E402

FIXTURE = """\
#include "a < b"
// if (a < b) return 1;
static_assert(sizeof(int) == 4, "four");
template <class T>
std::array<T, 3> make(Shape shape, bool wide);
/* a && b */ int area(int a, int b) {
    assert(a < b);
    std::vector<std::pair<int, int>> rows;
    rows.reserve(20);
    for (int k = 0; k < a; ++k) {
        if (k == b && isWide(a, /*limit=*/2)) continue;
        add(rows, k - b);
    }
    switch (a) {
        case Shape::flat: return Shape::round;
        default: log("100% sure\\n");
    }
    return rows.front().first;
}
"""
EXPECTED = """\
10 constant: for (int k = 1; k < a; ++k) {
10 comparison: for (int k = 0; k <= a; ++k) {
10 comparison: for (int k = 0; k >= a; ++k) {
11 condition: if (!(k == b && isWide(a, /*limit=*/2))) continue;
11 comparison: if (k != b && isWide(a, /*limit=*/2)) continue;
11 logic: if (k == b || isWide(a, /*limit=*/2)) continue;
11 arguments: if (k == b && isWide(2, /*limit=*/a)) continue;
11 constant: if (k == b && isWide(a, /*limit=*/1)) continue;
11 constant: if (k == b && isWide(a, /*limit=*/3)) continue;
11 opposite: if (k == b && isWide(a, /*limit=*/2)) break;
12 statement: ;
12 arguments: add(k - b, rows);
12 arithmetic: add(rows, k + b);
15 result: case Shape::flat: return {};
16 statement: default: ;
16 text: default: log("100% xure\\n");
18 result: return {};
18 opposite: return rows.back().first;
18 opposite: return rows.front().second;
"""
TABLE = """\
OPERATION(one, text, void(int a))
OPERATION(two, plain, void(int a))
OPERATION(three, plain, int(int a))
"""
EXPECTED_OF_TABLE = """\
1 table_column: OPERATION(one, plain, void(int a))
2 table_column: OPERATION(two, text, void(int a))
3 table_column: OPERATION(three, text, int(int a))
"""


def expect(what, found, expected):
    if found != expected:
        sys.exit(f"{what}: expected\n{expected}\nfound\n{found}")


def as_text(mutations):
    return "".join(f"{m.line} {m.operator}: {' '.join(m.new_lines)}\n" for m in mutations)


def main():
    mutations = mutations_of("a.cpp", FIXTURE)
    expect("mutations of the code", as_text(mutations), EXPECTED)
    expect("mutations of the table", as_text(mutations_of("a.inc", TABLE)), EXPECTED_OF_TABLE)
    expect("no draw twice", len(set(draws(mutations, 7))), len(mutations))
    expect("one seed, one order", list(draws(mutations, 7)), list(draws(mutations, 7)))
    lines = {mutation.line for mutation in itertools.islice(draws(mutations, 7), 6)}
    expect("few draws spread over the lines", len(lines), 6)
    with tempfile.TemporaryDirectory() as folder:
        file = pathlib.Path(folder) / "known.txt"
        file.write_text("# a comment\n\n" + equivalents.text_of(mutations[:3]))
        file.write_text(file.read_text() + "\na.cpp\n- return rows.front().first;\n  speed\n"
                        "\na.cpp\n- gone();\n  a line that is no more\n")
        rest, outlived = equivalents.split(mutations, equivalents.read(file))
        expect("without those of the list", rest, mutations[3:-3])
        expect("what the list names for nothing", [e.old_lines for e in outlived], [("gone();",)])
    print("the mutations are those that a reader expects")


if __name__ == "__main__":
    main()
