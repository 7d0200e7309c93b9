// Pages that are enciphered, in the site and in what becomes of it.
#ifndef PUBLISH_CIPHER_H
#define PUBLISH_CIPHER_H

#include <QBFoundation/QBFoundation.h>

#include <initializer_list>

namespace publish {

/// The extension of enciphered files, behind their own one.
inline NSString *encipheredExtension() {
    return "enc"_ns;
}

/// A key, and what can be done with it. Operations fail with an error raised.
class Cipher {
public:
    /// Takes the bytes of a file as the key, without the line ends behind them. Returns false when it can't
    /// be read, or there are none.
    bool readKey(NSString *file);
    /// Returns the bytes and their MD5 enciphered, which gives the same for the same bytes and key; nil
    /// without a key. `name`: of the file that needs it.
    NSData *enciphered(NSData *bytes, NSString *name) const;
    /// Returns the bytes that were enciphered; nil without a key, and when they don't have the MD5 behind
    /// them, for they are damaged or not of this key.
    NSData *deciphered(NSData *bytes, NSString *name) const;

private:
    bool hasKeyFor(NSString *name) const;
    NSData *converted(std::initializer_list<NSData *> parts, BOOL decrypt, std::uint32_t seed) const;
    std::uint32_t seedFor(NSData *bytes) const;

    Ref<NSData> key_; // null when there is none
};

} // namespace publish

#endif
