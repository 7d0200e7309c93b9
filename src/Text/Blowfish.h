// The block cipher Blowfish (Schneier, "Description of a New Variable-Length Key, 64-Bit Block Cipher",
// 1993), alone and in cipher-block chaining.
#ifndef QB_TEXT_BLOWFISH_H
#define QB_TEXT_BLOWFISH_H

#include <cstddef>
#include <cstdint>

namespace qb::text {

/// Bytes of a block. In words it is two halves, whose highest byte is the first one.
constexpr std::size_t kBlowfishBlock = 8;

/// Words of the subkeys: 18, and then four boxes of 256.
constexpr std::size_t kBlowfishSubkeys = 18 + 4 * 256;

/// Makes the subkeys of a key from those that are the same for all, the digits of pi. `length`: at least 1;
/// bytes from the 73rd on don't count.
void mixBlowfishKey(std::uint32_t *subkeys, const char *key, std::size_t length);

/// Stores the two halves that the 8 bytes are.
void loadBlowfishBlock(std::uint32_t *block, const char *bytes);
void storeBlowfishBlock(char *bytes, const std::uint32_t *block);

/// Enciphers a block, two halves, in its place.
void encipherBlowfishBlock(const std::uint32_t *subkeys, std::uint32_t *block);
/// Undoes that.
void decipherBlowfishBlock(const std::uint32_t *subkeys, std::uint32_t *block);

/// Enciphers `count` blocks, each joined with the enciphered one before it, and leaves the last one in
/// `chain`. The areas do not overlap.
void encipherBlowfishChain(const std::uint32_t *subkeys, std::uint32_t *chain, const char *source,
                           std::size_t count, char *target);
/// Undoes that; `chain` becomes the last enciphered block.
void decipherBlowfishChain(const std::uint32_t *subkeys, std::uint32_t *chain, const char *source,
                           std::size_t count, char *target);

} // namespace qb::text

#endif
