#include "Cipher.h"

#include "Collecting.h"
#include "Files.h"
#include "Messages.h"

namespace publish {

namespace {

// What the cipher makes of a page is whole blocks of so many bytes.
constexpr std::uint32_t kBlock = 8;
constexpr std::uint32_t kDigest = 16;

NSData *md5Of(std::initializer_list<NSData *> parts) {
    QBMD5OutputStream *const stream = QBMD5OutputStream::stream();
    for (NSData *part : parts)
        stream->writeObject(part);
    return stream->md5HashData();
}

// Returns what stands before the digest at the end; nil when the digest is none of it.
NSData *contentOf(NSData *data) {
    if (data->length() < kDigest)
        return nullptr;
    const std::uint32_t length = data->length() - kDigest;
    NSData *const content = data->subdataWithRange(NSMakeRange(0, length));
    NSData *const digest = data->subdataWithRange(NSMakeRange(length, kDigest));
    return md5Of({content})->isEqualToData(digest) ? content : nullptr;
}

} // namespace

bool Cipher::readKey(NSString *file) {
    NSData *const bytes = readBytes(file);
    if (!bytes)
        return false;
    const auto *const text = static_cast<const char *>(bytes->bytes());
    std::uint32_t length = bytes->length();
    while (length > 0 && (text[length - 1] == '\n' || text[length - 1] == '\r'))
        --length;
    if (length == 0)
        return fail(__LINE__, kErrorNoKey, file);
    key_ = bytes->subdataWithRange(NSMakeRange(0, length));
    return true;
}

bool Cipher::hasKeyFor(NSString *name) const {
    return key_ || fail(__LINE__, kErrorKeyNeeded, name);
}

NSData *Cipher::enciphered(NSData *bytes, NSString *name) const {
    return hasKeyFor(name) ? converted({bytes, md5Of({bytes})}, /*decrypt=*/NO, seedFor(bytes)) : nullptr;
}

NSData *Cipher::deciphered(NSData *bytes, NSString *name) const {
    if (!hasKeyFor(name))
        return nullptr;
    NSData *const data = converted({bytes}, /*decrypt=*/YES, /*seed=*/0);
    NSData *const content = data && bytes->length() % kBlock == 0 ? contentOf(data) : nullptr;
    if (!content)
        fail(__LINE__, kErrorNotDeciphered, name);
    return content;
}

// A page that is as it was has to become the file that it was. Other pages begin otherwise, because the seed
// does: nothing is seen of what they have in common.
std::uint32_t Cipher::seedFor(NSData *bytes) const {
    std::uint32_t seed = 0;
    md5Of({key_, bytes})->getBytes(&seed, sizeof seed);
    return seed != 0 ? seed : 1; // 0 is the time
}

NSData *Cipher::converted(std::initializer_list<NSData *> parts, BOOL decrypt, std::uint32_t seed) const {
    QBDataOutputStream *const target = collecting<QBDataOutputStream>(1024);
    const Ref<QBBlowfishOutputFilter> filter =
        QBBlowfishOutputFilter::initWithKey(key_, decrypt, target, seed);
    for (NSData *part : parts)
        filter->writeObject(part);
    filter->close();
    return hasFailed() ? nullptr : target->targetData();
}

} // namespace publish
