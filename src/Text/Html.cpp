#include "Text/Html.h"

#include "Text/Avx2.h"
#include "Text/Bytes.h"
#include "Text/Cpu.h"

#include <algorithm>
#include <cstdint>

namespace qb::text {

namespace {

// Everything about one character that may be escaped. The four differ in their low halves, which index the
// tables.
struct Entity {
    char text[8]; // stored whole where there is room for it
    unsigned length;
};

struct EntityTable {
    Entity entities[16] = {};

    constexpr EntityTable() {
        entities['<' % 16] = {"&lt;", 4};
        entities['>' % 16] = {"&gt;", 4};
        entities['&' % 16] = {"&amp;", 5};
        entities['"' % 16] = {"&quot;", 6};
    }
};

constexpr EntityTable kEntities;

const Entity &entityFor(char character) {
    return kEntities.entities[character & 15];
}

// The characters and tables for one value of the flags.
struct Selection {
    ByteSet set;
    std::uint8_t characters[16] = {}; // the wanted characters in the slots of their low halves
    std::uint8_t growth[16] = {};     // how many bytes more each takes

    constexpr explicit Selection(unsigned flags) : set(htmlCharacters(flags)) {
        characters[0] = 0xFF; // no byte equals what its slot holds, a NUL neither
        for (const unsigned char character : {'<', '>', '&', '"'}) {
            if (!set.contains(character))
                continue;
            characters[character % 16] = character;
            growth[character % 16] = static_cast<std::uint8_t>(kEntities.entities[character % 16].length - 1);
        }
    }
};

constexpr Selection kSelections[16] = {
    Selection(0),  Selection(1),  Selection(2),  Selection(3),  Selection(4),  Selection(5),
    Selection(6),  Selection(7),  Selection(8),  Selection(9),  Selection(10), Selection(11),
    Selection(12), Selection(13), Selection(14), Selection(15),
};

std::size_t narrowed(std::uint64_t length) {
    return static_cast<std::size_t>(std::min<std::uint64_t>(length, SIZE_MAX));
}

} // namespace

std::size_t plain::escapedHtmlLength(const char *bytes, std::size_t length, unsigned flags) {
    const ByteSet &set = kSelections[flags & kHtmlAll].set;
    std::uint64_t total = length;
    for (std::size_t i = 0; i < length; ++i)
        if (set.contains(static_cast<unsigned char>(bytes[i])))
            total += entityFor(bytes[i]).length - 1;
    return narrowed(total);
}

char *plain::escapeHtml(const char *bytes, std::size_t length, unsigned flags, char *target) {
    const ByteSet &set = kSelections[flags & kHtmlAll].set;
    const char *end = bytes + length;
    for (const char *position = bytes; position != end; ++position) {
        if (!set.contains(static_cast<unsigned char>(*position))) {
            *target++ = *position;
            continue;
        }
        const Entity &entity = entityFor(*position);
        std::memcpy(target, entity.text, entity.length);
        target += entity.length;
    }
    return target;
}

namespace avx2 {

namespace {

[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline __m256i hitsIn(__m256i vector, __m256i characters) {
    return _mm256_cmpeq_epi8(_mm256_shuffle_epi8(characters, vector), vector);
}

// Returns the growth of the characters in `vector` as four partial sums.
[[gnu::target("avx2,popcnt"), gnu::always_inline]] inline __m256i growthOf(__m256i vector, __m256i characters,
                                                                           __m256i growth) {
    const __m256i hits = hitsIn(vector, characters);
    return _mm256_sad_epu8(_mm256_and_si256(_mm256_shuffle_epi8(growth, vector), hits),
                           _mm256_setzero_si256());
}

// Writes at most 32 bytes of text, whose characters to escape are `hits`, and no byte beyond them.
inline char *escapeExactly(const char *bytes, std::size_t length, std::uint32_t hits, char *target) {
    std::size_t done = 0;
    for (; hits; hits &= hits - 1) {
        const auto hit = static_cast<std::size_t>(__builtin_ctz(hits));
        copyShort(target, bytes + done, hit - done);
        target += hit - done;
        const Entity &entity = entityFor(bytes[hit]);
        copyShort(target, entity.text, entity.length);
        target += entity.length;
        done = hit + 1;
    }
    copyShort(target, bytes + done, length - done);
    return target + (length - done);
}

[[gnu::target("avx2,popcnt")]] std::uint64_t escapedLength(const char *bytes, std::size_t length,
                                                           const Selection &selection) {
    const __m256i characters = loadTable(selection.characters);
    const __m256i growth = loadTable(selection.growth);
    __m256i sums = _mm256_setzero_si256();
    std::size_t position = 0;
    for (; length - position >= 32; position += 32)
        sums = _mm256_add_epi64(sums, growthOf(load(bytes + position), characters, growth));
    const __m256i last = loadPart(bytes + position, length - position);
    sums = _mm256_add_epi64(sums, growthOf(last, characters, growth));
    alignas(32) std::uint64_t parts[4];
    _mm256_store_si256(reinterpret_cast<__m256i *>(parts), sums);
    return length + (parts[0] + parts[1] + parts[2] + parts[3]);
}

// While 64 bytes of text are left, whole vectors and entities are stored: what such a store writes too much
// is written over later, because the rest of the text needs at least as many bytes as it has.
[[gnu::target("avx2,popcnt")]] char *escape(const char *bytes, std::size_t length, const Selection &selection,
                                            char *target) {
    const __m256i characters = loadTable(selection.characters);
    std::size_t position = 0;
    for (; length - position >= 64; position += 32) {
        const char *block = bytes + position;
        const __m256i vector = load(block);
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(target), vector);
        std::size_t done = 0;
        for (std::uint32_t hits = topBits(hitsIn(vector, characters)); hits; hits &= hits - 1) {
            const auto hit = static_cast<std::size_t>(__builtin_ctz(hits));
            const Entity &entity = entityFor(block[hit]);
            target += hit - done;
            storeWord(target, loadWord<std::uint64_t>(entity.text));
            target += entity.length;
            done = hit + 1;
            _mm256_storeu_si256(reinterpret_cast<__m256i *>(target), load(block + done));
        }
        target += 32 - done;
    }
    for (; length - position >= 32; position += 32) {
        const __m256i vector = load(bytes + position);
        target = escapeExactly(bytes + position, 32, topBits(hitsIn(vector, characters)), target);
    }
    const std::size_t rest = length - position;
    const __m256i vector = loadPart(bytes + position, rest);
    return escapeExactly(bytes + position, rest, topBits(hitsIn(vector, characters)), target);
}

} // namespace

} // namespace avx2

std::size_t escapedHtmlLength(const char *bytes, std::size_t length, unsigned flags) {
    if (!hasAvx2())
        return plain::escapedHtmlLength(bytes, length, flags);
    return narrowed(avx2::escapedLength(bytes, length, kSelections[flags & kHtmlAll]));
}

char *escapeHtml(const char *bytes, std::size_t length, unsigned flags, char *target) {
    return hasAvx2() ? avx2::escape(bytes, length, kSelections[flags & kHtmlAll], target)
                     : plain::escapeHtml(bytes, length, flags, target);
}

std::size_t unescapeHtml(const char *bytes, std::size_t length, unsigned flags, char *target) {
    if (target != bytes && length)
        std::memcpy(target, bytes, length);
    const ByteSet &set = kSelections[flags & kHtmlAll].set;
    const char *end = target + length;
    std::size_t count = 0;
    for (const char *hit = findByte(target, end, '&'); hit != end; hit = findByte(hit + 1, end, '&')) {
        for (const char character : {'<', '>', '&', '"'}) {
            const Entity &entity = entityFor(character);
            if (!set.contains(static_cast<unsigned char>(character)) ||
                static_cast<std::size_t>(end - hit) < entity.length ||
                std::memcmp(hit, entity.text, entity.length) != 0)
                continue;
            target[hit - target] = character;
            ++count;
            break;
        }
    }
    return count;
}

} // namespace qb::text
