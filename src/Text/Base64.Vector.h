// The vector versions of base64, after W. Muła and D. Lemire, "Faster Base64 Encoding and Decoding Using AVX2
// Instructions", ACM Transactions on the Web 12 (2018).
#ifndef QB_TEXT_BASE64_VECTOR_H
#define QB_TEXT_BASE64_VECTOR_H

#include "Text/Base64.h"

namespace qb::text {

/// The bytes that are still to be encoded.
struct Base64Input {
    const char *bytes;
    std::size_t length;
};

// Each does as many groups as its loads and stores may touch, and goes on from where the last one ended.

namespace sse41 {
char *encodeBase64(Base64Input &input, char *target);
Base64Result decodeBase64(Base64Result from, const char *end);
} // namespace sse41

namespace avx2 {
char *encodeBase64(Base64Input &input, char *target);
Base64Result decodeBase64(Base64Result from, const char *end);
} // namespace avx2

} // namespace qb::text

#endif
