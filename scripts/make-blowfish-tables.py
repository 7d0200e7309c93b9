#!/usr/bin/env python3
"""Prints src/QBBlowfishOutputFilter.Tables.cpp: the digits of pi behind the point, in base 16, 8 to a word."""

P_WORDS = 18
S_BOXES = 4
S_WORDS = 256
WORDS = P_WORDS + S_BOXES * S_WORDS
GUARD_BITS = 64


def arctan_of_inverse(number, one):
    """arctan(1 / number) in units of 1 / one, by its power series."""
    power = one // number
    total = power
    divisor = 1
    while power:
        power //= -number * number
        divisor += 2
        total += power // divisor
    return total


def words_of_pi():
    one = 1 << (32 * WORDS + GUARD_BITS)
    pi = 4 * (4 * arctan_of_inverse(5, one) - arctan_of_inverse(239, one))  # Machin's formula
    digits = (pi - 3 * one) >> GUARD_BITS
    return [digits >> (32 * place) & 0xFFFFFFFF for place in reversed(range(WORDS))]


def print_words(words, indent):
    for start in range(0, len(words), 8):
        print(indent + " ".join(f"0x{word:08X}," for word in words[start:start + 8]))


words = words_of_pi()
print("""// Where the subkeys of Blowfish begin: the digits of pi behind the point, in base 16.
// Written by scripts/make-blowfish-tables.py.
#include <QBFoundation/QBBlowfishOutputFilter.h>

// clang-format off
const std::uint32_t initial_PArray[18] = {""")
print_words(words[:P_WORDS], "    ")
print("};\n\nconst std::uint32_t initial_SBoxes[4][256] = {")
for box in range(S_BOXES):
    first = P_WORDS + box * S_WORDS
    print("    {")
    print_words(words[first:first + S_WORDS], "        ")
    print("    },")
print("};\n// clang-format on")
