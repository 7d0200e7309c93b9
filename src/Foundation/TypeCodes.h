// Codes of C types, as coders take them.
#ifndef QBFOUNDATION_FOUNDATION_TYPECODES_H
#define QBFOUNDATION_FOUNDATION_TYPECODES_H

#include <QBFoundation/Runtime/Types.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace qb {

/// Returns the letter of a type code. Throws InvalidArgumentException for a text that is none: null, of
/// several letters, or of an unknown one.
char typeCode(const char *type);
/// As above, for a value at `variable`, which must not be null either.
char typeCode(const char *type, const void *variable);

/// Returns how many bytes a value of that type takes in memory.
std::uint32_t sizeOfTypeCode(char code);

template <class T>
T load(const void *place) {
    T value;
    std::memcpy(&value, place, sizeof value);
    return value;
}

template <class T>
void store(void *place, T value) {
    std::memcpy(place, &value, sizeof value);
}

/// Calls `visit` with a null value of the integer type behind `code`; returns false for other codes.
template <class F>
bool visitInteger(char code, F &&visit) {
    switch (code) {
    case 'c':
        visit(std::int8_t{});
        return true;
    case 'C':
    case 'B':
        visit(std::uint8_t{});
        return true;
    case 's':
        visit(std::int16_t{});
        return true;
    case 'S':
        visit(std::uint16_t{});
        return true;
    case 'i':
        visit(std::int32_t{});
        return true;
    case 'I':
        visit(std::uint32_t{});
        return true;
    case 'l':
        visit(long{});
        return true;
    case 'L':
        visit(static_cast<unsigned long>(0));
        return true;
    case 'q':
        visit(std::int64_t{});
        return true;
    case 'Q':
        visit(std::uint64_t{});
        return true;
    default:
        return false;
    }
}

} // namespace qb

#endif
