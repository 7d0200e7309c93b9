#include <QBFoundation/QBBlowfishOutputFilter.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/Kept.h"
#include "System/Clock.h"
#include "System/Memory.h"
#include "System/Process.h"
#include "TargetClosing.h"
#include "Text/Blowfish.h"

#include <algorithm>
#include <cstring>

namespace sys = qb::sys;
namespace text = qb::text;

namespace {

constexpr std::uint32_t kBlock = text::kBlowfishBlock;

// What may be the end of a stream: the last block with bytes, and the one that counts them.
constexpr std::uint32_t kEnd = 2 * kBlock;

// The blocks that are joined into one write at most: as much as a stream likes to find room for at once.
constexpr std::uint32_t kJoinedBlocks = 1 << 16;

NSString *defaultKey() {
    return "Qv7-Rm2pWx9#Lt4k Zs8%Nd3fHy6!Jb"_ns;
}

std::uint32_t randomWord() {
    return static_cast<std::uint32_t>(sys::rand());
}

void storeBlock(char *bytes, std::uint32_t l, std::uint32_t r) {
    const std::uint32_t halves[] = {l, r};
    text::storeBlowfishBlock(bytes, halves);
}

void storeRandomBlock(char *bytes) {
    const std::uint32_t l = randomWord();
    storeBlock(bytes, l, randomWord());
}

} // namespace

Class *QBBlowfishOutputFilter::cls() {
    static const qb::Method methods[] = {
        qb::maker<"streamWithTarget:">(&QBBlowfishOutputFilter::setUpWithTarget),
        qb::initialiser<"initWithTarget:">(&QBBlowfishOutputFilter::setUpWithTarget),
        qb::maker<"streamWithTarget:randomSeed:">(&QBBlowfishOutputFilter::setUpWithTargetRandomSeed),
        qb::initialiser<"initWithTarget:randomSeed:">(&QBBlowfishOutputFilter::setUpWithTargetRandomSeed),
        qb::maker<"streamWithKey:decrypt:target:">(&QBBlowfishOutputFilter::setUpWithKeyAndTarget),
        qb::initialiser<"initWithKey:decrypt:target:randomSeed:">(&QBBlowfishOutputFilter::setUpWithKey),
        qb::method<"target">(&QBBlowfishOutputFilter::target),
        qb::method<"data">(&QBBlowfishOutputFilter::data),
        qb::method<"_blowfishEncryptBlock">(&QBBlowfishOutputFilter::_blowfishEncryptBlock),
        qb::method<"_blowfishDecryptBlock">(&QBBlowfishOutputFilter::_blowfishDecryptBlock),
    };
    static Class *const self = new Class("QBBlowfishOutputFilter", QBOutputStream::cls(), methods,
                                         qb::construct<QBBlowfishOutputFilter>);
    return self;
}

QBBlowfishOutputFilter::~QBBlowfishOutputFilter() {
    sys::wipe(&secrets_, sizeof secrets_);
}

// --- Creation ---

BOOL QBBlowfishOutputFilter::setUp() {
    throw InvalidUseOfMethodException("QBBlowfishOutputFilter init: must be made with a target.");
}

BOOL QBBlowfishOutputFilter::setUpWithTarget(QBOutputStream *target) {
    return setUpWithTargetRandomSeed(target, /*randomSeed=*/0);
}

BOOL QBBlowfishOutputFilter::setUpWithTargetRandomSeed(QBOutputStream *target, std::uint32_t randomSeed) {
    return setUpWithKey(defaultKey(), /*decrypt=*/NO, target, randomSeed);
}

BOOL QBBlowfishOutputFilter::setUpWithKey(id key, BOOL decrypt, QBOutputStream *target,
                                          std::uint32_t randomSeed) {
    if (!target)
        throw InvalidArgumentException("QBBlowfishOutputFilter initWithKey:decrypt:target:randomSeed: must "
                                       "have a target that is not nil.");
    target_ = target;
    if (!setKey(key))
        return NO;
    isDeciphering_ = decrypt != NO;
    if (!isDeciphering_)
        writeHeader(randomSeed);
    return YES;
}

// The text's bytes are taken where they are: `asData` would leave a copy of the key behind.
bool QBBlowfishOutputFilter::setKey(id key) {
    const qb::Kept kept(key); // whatever it does for its text
    const auto *const data = qb::castOrNil<NSData>(key);
    const NSString *const string = data || !key ? nullptr : key->stringValue();
    const auto *const bytes = data     ? static_cast<const char *>(data->bytes())
                              : string ? string->cString()
                                       : "";
    const std::uint32_t length = data ? data->length() : string ? string->cStringLength() : 0;
    if (length == 0)
        return false;
    std::memcpy(secrets_.subkeys, initial_PArray, sizeof initial_PArray);
    std::memcpy(secrets_.subkeys + std::size(initial_PArray), initial_SBoxes, sizeof initial_SBoxes);
    text::mixBlowfishKey(secrets_.subkeys, bytes, length);
    return true;
}

void QBBlowfishOutputFilter::writeHeader(std::uint32_t randomSeed) {
    const auto seed = randomSeed != 0 ? randomSeed : static_cast<std::uint32_t>(sys::wallSeconds());
    sys::srand(seed);
    char header[kBlock];
    storeBlock(header, seed, randomWord());
    writeBlocks(header, 1);
}

// --- Writing ---

void QBBlowfishOutputFilter::_writeBuffer(const void *buffer, std::uint32_t length) {
    const auto *const bytes = static_cast<const char *>(buffer);
    if (isDeciphering_)
        decipher(bytes, length);
    else
        encipher(bytes, length);
}

// Keeps bytes back until there are `wanted`, unless there are more already; returns whether there are enough.
bool QBBlowfishOutputFilter::gather(const char *&bytes, std::uint32_t &length, std::int32_t wanted) {
    if (pendingCount_ >= wanted)
        return true;
    const std::uint32_t taken = std::min(static_cast<std::uint32_t>(wanted - pendingCount_), length);
    std::memcpy(secrets_.pending + pendingCount_, bytes, taken);
    pendingCount_ += static_cast<std::int32_t>(taken);
    bytes += taken;
    length -= taken;
    return pendingCount_ == wanted;
}

void QBBlowfishOutputFilter::encipher(const char *bytes, std::uint32_t length) {
    while (static_cast<std::uint64_t>(pendingCount_) + length >= kBlock) {
        if (pendingCount_ != 0) {
            gather(bytes, length, kBlock);
            writePendingBlock();
            continue;
        }
        const std::uint32_t count = length / kBlock;
        writeBlocks(bytes, count);
        bytes += count * kBlock;
        length -= count * kBlock;
    }
    gather(bytes, length, kBlock);
}

void QBBlowfishOutputFilter::decipher(const char *bytes, std::uint32_t length) {
    if (!isHeaderTaken_) {
        if (!gather(bytes, length, kBlock))
            return;
        text::loadBlowfishBlock(secrets_.chain, secrets_.pending);
        pendingCount_ = 0;
        isHeaderTaken_ = true;
    }
    while (static_cast<std::uint64_t>(pendingCount_) + length >= kBlock + kEnd) {
        if (pendingCount_ != 0) {
            gather(bytes, length, kBlock);
            writePendingBlock();
            continue;
        }
        const std::uint32_t count = (length - kEnd) / kBlock;
        writeBlocks(bytes, count);
        bytes += count * kBlock;
        length -= count * kBlock;
    }
    gather(bytes, length, sizeof secrets_.pending);
}

void QBBlowfishOutputFilter::convert(const char *bytes, std::uint32_t count, char *target) {
    const auto chain = isDeciphering_ ? &text::decipherBlowfishChain : &text::encipherBlowfishChain;
    chain(secrets_.subkeys, secrets_.chain, bytes, count, target);
}

void QBBlowfishOutputFilter::writeBlocks(const char *bytes, std::uint32_t count) {
    while (count != 0) {
        std::uint32_t taken = std::min(count, kJoinedBlocks);
        if (char *const room = target_->beginJoinedWrite(kBlock, taken)) {
            convert(bytes, taken, room);
            target_->endJoinedWrite(room + taken * kBlock);
        } else {
            char block[kBlock];
            taken = 1;
            convert(bytes, taken, block);
            target_->writeBuffer(block, sizeof block);
        }
        bytes += taken * kBlock;
        count -= taken;
    }
}

// Writes the first block of those bytes. It is taken out first, for the target's error may be written here.
void QBBlowfishOutputFilter::writePendingBlock() {
    char block[kBlock];
    convert(secrets_.pending, 1, block);
    pendingCount_ -= kBlock;
    std::memmove(secrets_.pending, secrets_.pending + kBlock, static_cast<std::size_t>(pendingCount_));
    target_->writeBuffer(block, sizeof block);
}

void QBBlowfishOutputFilter::flush() {
    target_->flush();
    QBOutputStream::flush();
}

// --- The end ---

void QBBlowfishOutputFilter::close() {
    if (isClosed_)
        return;
    isClosed_ = true;
    qb::closeAfter(target_, [this] { isDeciphering_ ? endDeciphering() : endEnciphering(); });
}

void QBBlowfishOutputFilter::endEnciphering() {
    const auto count = static_cast<std::uint32_t>(pendingCount_);
    char block[kBlock];
    storeRandomBlock(block);
    std::memcpy(secrets_.pending + count, block + count, kBlock - count);
    const std::uint32_t l = randomWord();
    storeBlock(block, l, (randomWord() & ~15U) + count);
    const std::int64_t time = sys::wallNanoseconds();
    sys::srand(static_cast<std::uint32_t>(time ^ time >> 32)); // before anything is written: that may throw
    writeBlocks(secrets_.pending, 1);
    writeBlocks(block, 1);
}

void QBBlowfishOutputFilter::endDeciphering() {
    if (pendingCount_ < static_cast<std::int32_t>(kEnd)) {
        if (ERRORHANDLER)
            ERRORHANDLER->raiseErrorWithDefaultFormat("The blowfish encrypted data is corrupt."_ns,
                                                      qb::kErrorCorruptCipher);
        return;
    }
    char end[kEnd];
    text::decipherBlowfishChain(secrets_.subkeys, secrets_.chain, secrets_.pending, 2, end);
    const auto count = static_cast<unsigned char>(end[kEnd - 1]) & 7U;
    if (count != 0)
        target_->writeBuffer(end, count);
}

// --- The cipher alone ---

void QBBlowfishOutputFilter::_blowfishEncryptBlock() {
    text::encipherBlowfishBlock(secrets_.subkeys, data());
}

void QBBlowfishOutputFilter::_blowfishDecryptBlock() {
    text::decipherBlowfishBlock(secrets_.subkeys, data());
}
