#!/usr/bin/env python3
"""Prints src/Text/UnicodeTables.h, from the Unicode data that this Python was built with."""
import unicodedata

LAST = 0x10FFFF
WIDTH = 110


def characters():
    return (code for code in range(LAST + 1) if not 0xD800 <= code < 0xE000)


def class_ranges(categories):
    ranges = []
    for code in characters():
        if unicodedata.category(chr(code)) not in categories:
            continue
        if ranges and ranges[-1][1] == code - 1:
            ranges[-1][1] = code
        else:
            ranges.append([code, code])
    return ranges


def case_ranges(convert):
    """Runs of equal distance between a character and its counterpart; those of several characters are left out."""
    ranges = []
    for code in characters():
        other = convert(chr(code))
        if len(other) != 1 or ord(other) == code:
            continue
        distance = ord(other) - code
        if ranges and ranges[-1][2] == distance:
            run = ranges[-1]
            step = code - run[1]
            if step == run[3] or (run[0] == run[1] and step <= 2):
                run[1], run[3] = code, step
                continue
        ranges.append([code, code, distance, 1])
    return ranges


def print_table(comment, declaration, rows):
    print(f"\n/// {comment}\n{declaration} = {{")
    line = "   "
    for row in rows:
        cell = " {" + ", ".join([f"0x{row[0]:X}", f"0x{row[1]:X}"] + [str(value) for value in row[2:]]) + "},"
        if len(line) + len(cell) > WIDTH:
            print(line)
            line = "   "
        line += cell
    print(line + "\n};")


print(f"""// Characters by class and case: the Unicode Character Database, version {unicodedata.unidata_version}.
// Written by scripts/make-unicode-tables.py.
#ifndef QB_TEXT_UNICODETABLES_H
#define QB_TEXT_UNICODETABLES_H

#include <cstdint>

// clang-format off
namespace qb::text {{

/// The code points from `first` to `last`.
struct CodeRange {{
    std::uint32_t first, last;
}};

/// Every `step`th code point from `first` to `last` has its counterpart `distance` further on.
struct CaseRange {{
    std::uint32_t first, last;
    std::int32_t distance;
    std::uint32_t step;
}};""")
kinds = {category for category in map(unicodedata.category, map(chr, range(LAST + 1)))}
for comment, name, majors in (
    ("Letters and the marks on them.", "kLetters", "LM"),
    ("Decimal digits.", "kDigits", ("Nd",)),
    ("Numbers of all kinds, the decimal digits among them.", "kNumbers", "N"),
    ("Punctuation.", "kPunctuation", "P"),
    ("Symbols: of mathematics, currencies and others.", "kSymbols", "S"),
    ("Controls and invisible format characters.", "kControls", ("Cc", "Cf")),
    ("Marks on letters.", "kMarks", "M"),
    ("Letters whose first part is upper-case and whose second is lower-case.", "kTitleCase", ("Lt",)),
):
    chosen = set(majors) if isinstance(majors, tuple) else {kind for kind in kinds if kind[0] in majors}
    print_table(comment, f"inline constexpr CodeRange {name}[]", class_ranges(chosen))
print_table("Characters with an upper-case counterpart.", "inline constexpr CaseRange kToUpper[]", case_ranges(str.upper))
print_table("Characters with a lower-case counterpart.", "inline constexpr CaseRange kToLower[]", case_ranges(str.lower))
print("""
} // namespace qb::text
// clang-format on

#endif""")
