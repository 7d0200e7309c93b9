#include "Text/Blowfish.h"

#include "Text/Bytes.h"

#include <utility>

namespace qb::text {

namespace {

// Blocks that are deciphered side by side: each round of one waits for its own last round only, so that the
// others fill the time until its words have come from memory. More of them find no registers.
constexpr std::size_t kSideBySide = 6;

constexpr int kRounds = 16;

/// Halves of `count` blocks, in arrays of their own, so that each finds a register.
template <std::size_t count>
struct Halves {
    std::uint32_t l[count], r[count];
};

inline std::uint32_t wordAt(const char *bytes) {
    return __builtin_bswap32(loadWord<std::uint32_t>(bytes));
}

inline void storeHalves(char *bytes, std::uint32_t l, std::uint32_t r) {
    storeWord(bytes, __builtin_bswap32(l));
    storeWord(bytes + 4, __builtin_bswap32(r));
}

inline std::uint32_t mixed(const std::uint32_t *subkeys, std::uint32_t half) {
    const auto *const boxes = reinterpret_cast<const std::uint32_t(*)[256]>(subkeys + kRounds + 2);
    const std::uint32_t sum = boxes[0][half >> 24] + boxes[1][half >> 16 & 0xFF];
    return (sum ^ boxes[2][half >> 8 & 0xFF]) + boxes[3][half & 0xFF];
}

// In each round the one half and the subkey are joined first: they are there before the other half is mixed.

inline void encipher(const std::uint32_t *subkeys, std::uint32_t &l, std::uint32_t &r) {
    l ^= subkeys[0];
#pragma GCC unroll 8
    for (int i = 1; i <= kRounds; i += 2) {
        r = (r ^ subkeys[i]) ^ mixed(subkeys, l);
        l = (l ^ subkeys[i + 1]) ^ mixed(subkeys, r);
    }
    r = std::exchange(l, r ^ subkeys[kRounds + 1]);
}

template <std::size_t count>
inline void decipher(const std::uint32_t *subkeys, Halves<count> &halves) {
    auto &[l, r] = halves;
#pragma GCC unroll 8
    for (std::size_t k = 0; k < count; ++k)
        l[k] ^= subkeys[kRounds + 1];
#pragma GCC unroll 8
    for (int i = kRounds; i > 0; i -= 2) {
#pragma GCC unroll 8
        for (std::size_t k = 0; k < count; ++k)
            r[k] = (r[k] ^ subkeys[i]) ^ mixed(subkeys, l[k]);
#pragma GCC unroll 8
        for (std::size_t k = 0; k < count; ++k)
            l[k] = (l[k] ^ subkeys[i - 1]) ^ mixed(subkeys, r[k]);
    }
#pragma GCC unroll 8
    for (std::size_t k = 0; k < count; ++k)
        r[k] = std::exchange(l[k], r[k] ^ subkeys[0]);
}

template <std::size_t count>
inline void decipherChained(const std::uint32_t *subkeys, std::uint32_t (&chain)[2], const char *source,
                            char *target) {
    Halves<count> halves;
#pragma GCC unroll 8
    for (std::size_t k = 0; k < count; ++k) {
        halves.l[k] = wordAt(source + k * kBlowfishBlock);
        halves.r[k] = wordAt(source + k * kBlowfishBlock + 4);
    }
    decipher(subkeys, halves);
#pragma GCC unroll 8
    for (std::size_t k = 0; k < count; ++k) {
        storeHalves(target + k * kBlowfishBlock, halves.l[k] ^ chain[0], halves.r[k] ^ chain[1]);
        loadBlowfishBlock(chain, source + k * kBlowfishBlock);
    }
}

} // namespace

void mixBlowfishKey(std::uint32_t *subkeys, const char *key, std::size_t length) {
    std::size_t next = 0;
    for (int i = 0; i < kRounds + 2; ++i) {
        std::uint32_t word = 0;
        for (int k = 0; k < 4; ++k) {
            word = word << 8 | static_cast<unsigned char>(key[next]);
            next = next + 1 == length ? 0 : next + 1;
        }
        subkeys[i] ^= word;
    }
    std::uint32_t l = 0, r = 0;
    for (std::size_t i = 0; i < kBlowfishSubkeys; i += 2) {
        encipher(subkeys, l, r);
        subkeys[i] = l;
        subkeys[i + 1] = r;
    }
}

void loadBlowfishBlock(std::uint32_t *block, const char *bytes) {
    block[0] = wordAt(bytes);
    block[1] = wordAt(bytes + 4);
}

void storeBlowfishBlock(char *bytes, const std::uint32_t *block) {
    storeHalves(bytes, block[0], block[1]);
}

void encipherBlowfishBlock(const std::uint32_t *subkeys, std::uint32_t *block) {
    encipher(subkeys, block[0], block[1]);
}

void decipherBlowfishBlock(const std::uint32_t *subkeys, std::uint32_t *block) {
    Halves<1> halves = {{block[0]}, {block[1]}};
    decipher(subkeys, halves);
    block[0] = halves.l[0];
    block[1] = halves.r[0];
}

void encipherBlowfishChain(const std::uint32_t *subkeys, std::uint32_t *chain, const char *source,
                           std::size_t count, char *target) {
    std::uint32_t l = chain[0], r = chain[1];
    for (; count > 0; --count, source += kBlowfishBlock, target += kBlowfishBlock) {
        l ^= wordAt(source);
        r ^= wordAt(source + 4);
        encipher(subkeys, l, r);
        storeHalves(target, l, r);
    }
    chain[0] = l;
    chain[1] = r;
}

void decipherBlowfishChain(const std::uint32_t *subkeys, std::uint32_t *chain, const char *source,
                           std::size_t count, char *target) {
    constexpr std::size_t kStride = kSideBySide * kBlowfishBlock;
    std::uint32_t last[2] = {chain[0], chain[1]};
    for (; count >= kSideBySide; count -= kSideBySide, source += kStride, target += kStride)
        decipherChained<kSideBySide>(subkeys, last, source, target);
    for (; count > 0; --count, source += kBlowfishBlock, target += kBlowfishBlock)
        decipherChained<1>(subkeys, last, source, target);
    chain[0] = last[0];
    chain[1] = last[1];
}

} // namespace qb::text
