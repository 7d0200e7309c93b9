#include <QBFoundation/QBMD5OutputStream.h>

#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "System/Memory.h"
#include "Text/Bytes.h"
#include "Text/Md5.h"

#include <algorithm>
#include <cstring>

namespace {

using qb::text::kMd5Block;

// Where the bit count stands in the last block, behind the padding.
constexpr std::size_t kCountPlace = kMd5Block - 8;

std::size_t bytesInBlock(const MD5_CTX &context) {
    return context.count[0] / 8 % kMd5Block;
}

void addToCount(MD5_CTX &context, unsigned length) {
    const std::uint32_t bits = std::uint32_t{length} << 3;
    context.count[0] += bits;
    context.count[1] += (context.count[0] < bits ? 1 : 0) + (std::uint32_t{length} >> 29);
}

} // namespace

void MD5Init(MD5_CTX *context) {
    *context = {};
    context->state[0] = 0x67452301;
    context->state[1] = 0xEFCDAB89;
    context->state[2] = 0x98BADCFE;
    context->state[3] = 0x10325476;
}

void MD5Update(MD5_CTX *context, const unsigned char *bytes, unsigned length) {
    if (length == 0) // no bytes may come without an address
        return;
    const std::size_t used = bytesInBlock(*context);
    addToCount(*context, length);
    if (used != 0) {
        const unsigned taken = std::min(static_cast<unsigned>(kMd5Block - used), length);
        std::memcpy(context->block + used, bytes, taken);
        if (used + taken < kMd5Block)
            return;
        qb::text::addMd5Blocks(context->state, context->block, kMd5Block);
        bytes += taken;
        length -= taken;
    }
    qb::text::addMd5Blocks(context->state, bytes, length);
    const unsigned rest = length % kMd5Block;
    if (rest != 0)
        std::memcpy(context->block, bytes + (length - rest), rest);
}

void MD5Final(MD5_CTX *context) {
    std::size_t used = bytesInBlock(*context);
    context->block[used++] = 0x80;
    if (used > kCountPlace) {
        std::memset(context->block + used, 0, kMd5Block - used);
        qb::text::addMd5Blocks(context->state, context->block, kMd5Block);
        used = 0;
    }
    std::memset(context->block + used, 0, kCountPlace - used);
    std::memcpy(context->block + kCountPlace, context->count, sizeof context->count);
    qb::text::addMd5Blocks(context->state, context->block, kMd5Block);
    std::memcpy(context->digest, context->state, sizeof context->digest);
}

unsigned char *md5Hash(const unsigned char *bytes, unsigned *length) {
    auto *const digest = static_cast<unsigned char *>(qb::sys::reallocate(nullptr, sizeof(MD5_CTX::digest)));
    if (!digest)
        return nullptr;
    MD5_CTX context = {};
    if (bytes) {
        MD5Init(&context);
        MD5Update(&context, bytes, *length);
        MD5Final(&context);
        *length = sizeof context.digest;
    }
    std::memcpy(digest, context.digest, sizeof context.digest);
    return digest;
}

Class *QBMD5OutputStream::cls() {
    static const qb::Method methods[] = {
        qb::method<"md5HashData">(&QBMD5OutputStream::md5HashData),
        qb::method<"md5Hash">(&QBMD5OutputStream::md5Hash),
    };
    static Class *const self =
        new Class("QBMD5OutputStream", QBOutputStream::cls(), methods, qb::construct<QBMD5OutputStream>);
    return self;
}

NSData *QBMD5OutputStream::md5HashData() {
    MD5_CTX finished = mdContext_; // so that without memory for the result nothing has changed
    MD5Final(&finished);
    NSData *const digest = NSData::dataWithBytes(finished.digest, sizeof finished.digest);
    MD5Init(&mdContext_);
    return digest;
}

NSString *QBMD5OutputStream::md5Hash() {
    const MD5_CTX before = mdContext_;
    try {
        return md5HashData()->asHexString();
    } catch (...) { // without memory for the text
        mdContext_ = before;
        throw;
    }
}

void QBMD5OutputStream::_writeBuffer(const void *buffer, std::uint32_t length) {
    MD5Update(&mdContext_, static_cast<const unsigned char *>(buffer), length);
}

void QBMD5OutputStream::writeByte(char byte) {
    MD5Update(&mdContext_, reinterpret_cast<const unsigned char *>(&byte), 1);
}

void QBMD5OutputStream::reset() {
    MD5Init(&mdContext_);
}
