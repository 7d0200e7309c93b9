#include "Cipher.h"

#include "Collecting.h"
#include "Files.h"
#include "Messages.h"

namespace publish {

// What the cipher makes of a page is whole blocks of so many bytes.
static constexpr std::uint32_t kBlock = 8;

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
    return hasKeyFor(name) ? converted(bytes, /*decrypt=*/NO, seedFor(bytes)) : nullptr;
}

NSString *Cipher::deciphered(NSData *bytes, NSString *name) const {
    if (!hasKeyFor(name))
        return nullptr;
    NSData *const data = converted(bytes, /*decrypt=*/YES, /*seed=*/0);
    NSString *const text = data ? NSString::initWithData(data).autorelease() : nullptr;
    const bool isWhole = bytes->length() % kBlock == 0;
    if (text && isWhole && text->indexOfFirstCorruptUtf8Character() < 0)
        return text;
    fail(__LINE__, kErrorNotDeciphered, name);
    return nullptr;
}

// A page that is as it was has to become the file that it was. Other pages begin otherwise, because the seed
// does: nothing is seen of what they have in common.
std::uint32_t Cipher::seedFor(NSData *bytes) const {
    QBMD5OutputStream *const stream = QBMD5OutputStream::stream();
    stream->writeObject(key_);
    stream->writeObject(bytes);
    std::uint32_t seed = 0;
    stream->md5HashData()->getBytes(&seed, sizeof seed);
    return seed != 0 ? seed : 1; // 0 is the time
}

NSData *Cipher::converted(NSData *bytes, BOOL decrypt, std::uint32_t seed) const {
    QBDataOutputStream *const target = collecting<QBDataOutputStream>(1024);
    const Ref<QBBlowfishOutputFilter> filter =
        QBBlowfishOutputFilter::initWithKey(key_, decrypt, target, seed);
    filter->writeObject(bytes);
    filter->close();
    return hasFailed() ? nullptr : target->targetData();
}

} // namespace publish
