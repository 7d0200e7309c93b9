#include "Text/PlistText.h"

#include "Text/Cpu.h"
#include "Text/PlistBlock.h"
#include "Text/PlistEscapes.h"
#include "Text/Utf8.h"

#include <bit>

namespace qb::text {

namespace {

// Goes over a text that may stand bare; `plain(block, length)` gets its parts. Returns false as soon as it
// has to be quoted.
template <class Block, class Plain>
inline bool visitBare(const char *position, const char *end, Plain plain) {
    if (position == end)
        return false;
    for (unsigned slashBefore = 0; position != end;) {
        const std::size_t length = partLength(position, end);
        const Block block(position, length);
        const unsigned slashes = block.slashes();
        // "*" is not bare, so that of the beginnings of comments only two slashes are left to look for.
        const unsigned comments = slashes & (slashes << 1 | slashBefore);
        if ((~block.bare() & firstBits(length)) | comments)
            return false;
        slashBefore = slashes >> (Block::kBytes - 1) & 1;
        plain(block, length);
        position += length;
    }
    return true;
}

// The bytes of the block that are no ASCII and not seen to be valid at once, as whole characters of two bytes
// are.
template <class Block>
inline unsigned doubtful(const Block &block) {
    const unsigned high = block.high();
    if (high == 0)
        return 0;
    const unsigned pairs = block.leadsOfTwo() << 1 & block.continuations();
    return high & ~(pairs | pairs >> 1);
}

// Goes over what a text is written as between quotes. `plain(block, length)` gets what stands as it is, with
// the block that begins with it; `special(byte)` the rest.
template <class Block, class Plain, class Special>
inline void visitQuoted(const char *position, const char *end, Plain plain, Special special) {
    const char *validEnd = position; // so far the text is known to be valid UTF-8
    while (position != end) {
        const std::size_t length = partLength(position, end);
        const Block block(position, length);
        unsigned high = doubtful(block);
        if (high && validEnd > position)
            high &= ~firstBits(partLength(position, validEnd));
        const unsigned stops = (block.escaped() | high) & firstBits(length);
        if (stops == 0) {
            plain(block, length);
            position += length;
            continue;
        }
        const auto before = static_cast<std::size_t>(std::countr_zero(stops));
        plain(block, before);
        position += before;
        if (high >> before & 1) {
            validEnd = position + validPrefix(position, static_cast<std::size_t>(end - position));
            if (validEnd != position)
                continue;
        }
        special(*position++);
    }
}

template <class Block>
inline char *write(const char *bytes, std::size_t length, char *target) {
    const char *const end = bytes + length;
    char *const begin = target;
    const auto plain = [&target](const Block &block, std::size_t count) {
        block.store(target);
        target += count;
    };
    if (visitBare<Block>(bytes, end, plain))
        return target;
    target = begin;
    *target++ = '"';
    visitQuoted<Block>(bytes, end, plain, [&target](char byte) { target = plistEscape(byte).put(target); });
    *target++ = '"';
    return target;
}

} // namespace

std::uint64_t plistTextLength(const char *bytes, std::size_t length) {
    std::uint64_t result = 0;
    const auto plain = [&result](const PlistBlock &, std::size_t count) { result += count; };
    if (visitBare<PlistBlock>(bytes, bytes + length, plain))
        return length;
    result = 2;
    visitQuoted<PlistBlock>(bytes, bytes + length, plain,
                            [&result](char byte) { result += plistEscape(byte).length; });
    return result;
}

char *writePlistText(const char *bytes, std::size_t length, char *target) {
    return hasAvx512() ? avx512::writePlistText(bytes, length, target)
                       : write<PlistBlock>(bytes, length, target);
}

char *plain::writePlistText(const char *bytes, std::size_t length, char *target) {
    return write<plain::PlistBlock>(bytes, length, target);
}

} // namespace qb::text
