// MD5 digests (RFC 1321): as a stream and as C functions.
#ifndef QBFOUNDATION_QBMD5OUTPUTSTREAM_H
#define QBFOUNDATION_QBMD5OUTPUTSTREAM_H

#include <QBFoundation/QBOutputStream.h>

#include <cstdint>

class NSData;

/// A digest that is being made.
struct MD5_CTX {
    std::uint32_t count[2];   // the bits that were added, the low word first
    std::uint32_t state[4];   // A, B, C, D
    unsigned char block[64];  // the beginning of the block that is not complete yet
    unsigned char digest[16]; // what `MD5Final` found
};

extern "C" {

/// Begins a digest.
QB_EXPORT void MD5Init(MD5_CTX *context);
/// Adds `length` bytes.
QB_EXPORT void MD5Update(MD5_CTX *context, const unsigned char *bytes, unsigned length);
/// Ends the digest and stores it in the context's `digest`.
QB_EXPORT void MD5Final(MD5_CTX *context);
/// Returns the digest of `*length` bytes, 16 bytes that the caller frees with `free`, and sets `*length`
/// to 16.
///
/// For null bytes the result is 16 zero bytes, and the length is left as it is. Null when there is no memory.
QB_EXPORT unsigned char *md5Hash(const unsigned char *bytes, unsigned *length);
}

/// Makes the digest of all bytes that are written to it.
class QB_EXPORT QBMD5OutputStream : public QBOutputStream {
public:
    QBMD5OutputStream() noexcept { MD5Init(&mdContext_); }

    static Class *cls();
    Class *classObject() const override { return cls(); }

    static QBMD5OutputStream *stream() { return init().autorelease(); }
    static Ref<QBMD5OutputStream> init() { return qb::init<QBMD5OutputStream>(&QBMD5OutputStream::setUp); }

    /// Returns the digest of what was written, 16 bytes, and begins a new one.
    virtual NSData *md5HashData();
    /// As above, as 32 lower-case hexadecimal digits.
    virtual NSString *md5Hash();

    void _writeBuffer(const void *buffer, std::uint32_t length) override;
    void writeByte(char byte) override;
    /// Drops what was written.
    void reset() override;

private:
    MD5_CTX mdContext_;
};

#endif
