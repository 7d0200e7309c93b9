// Deciphers any bytes, whole and in pieces, and compares the result with that of the frame's rules, block by
// block. What is enciphered is read again.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/QBArrayOutputStream.h>
#include <QBFoundation/QBBlowfishOutputFilter.h>
#include <QBFoundation/QBDataOutputStream.h>
#include <QBFoundation/QBErrorHandler.h>

#include "support/Require.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

struct Result {
    std::string text;
    bool hasFailed;

    bool operator==(const Result &) const = default;
};

std::string bytesOf(NSData *data) {
    return {static_cast<const char *>(data->bytes()), data->length()};
}

NSData *dataOf(std::string_view bytes) {
    return NSData::dataWithBytes(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

Result converted(NSData *key, BOOL decrypt, std::string_view bytes, std::size_t piece) {
    QBDataOutputStream *const target = QBDataOutputStream::stream();
    const Ref<QBBlowfishOutputFilter> filter =
        QBBlowfishOutputFilter::initWithKey(key, decrypt, target, /*randomSeed=*/1);
    for (; !bytes.empty(); bytes.remove_prefix(std::min(piece, bytes.size())))
        filter->writeBuffer(bytes.data(), static_cast<std::uint32_t>(std::min(piece, bytes.size())));
    filter->close();
    return {bytesOf(target->targetData()), ERRORHANDLER->clearErrorStack() != nullptr};
}

// Each write of this target is looked at by itself.
std::string writtenApart(NSData *key, std::string_view bytes) {
    QBArrayOutputStream *const target = QBArrayOutputStream::stream();
    const Ref<QBBlowfishOutputFilter> filter =
        QBBlowfishOutputFilter::initWithKey(key, /*decrypt=*/YES, target, /*randomSeed=*/1);
    if (!bytes.empty())
        filter->writeBuffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    filter->close();
    std::string all;
    for (const id write : *target->targetArray())
        all += bytesOf(static_cast<NSData *>(write));
    return all;
}

// What the frame's rules give.
Result expected(NSData *key, std::string_view stream) {
    if (stream.size() < 24)
        return {"", true};
    const Ref<QBBlowfishOutputFilter> cipher = QBBlowfishOutputFilter::initWithKey(
        key, /*decrypt=*/YES, QBDataOutputStream::stream(), /*randomSeed=*/1);
    std::string text;
    for (std::size_t i = 8; i + 8 <= stream.size(); i += 8) {
        std::uint32_t *const block = cipher->data();
        const auto halfAt = [&](std::size_t place) {
            std::uint32_t half = 0;
            for (const char byte : stream.substr(place, 4))
                half = half << 8 | static_cast<unsigned char>(byte);
            return half;
        };
        block[0] = halfAt(i);
        block[1] = halfAt(i + 4);
        cipher->_blowfishDecryptBlock();
        block[0] ^= halfAt(i - 8);
        block[1] ^= halfAt(i - 4);
        for (int k = 0; k < 8; ++k)
            text += static_cast<char>(block[k / 4] >> (24 - k % 4 * 8));
    }
    const std::size_t count = static_cast<unsigned char>(text.back()) & 7U;
    return {text.substr(0, text.size() - 16 + count), false};
}

} // namespace

// The first two bytes are the length of the pieces and that of the key, which stands behind them.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    static QBErrorHandler *const handler = QBErrorHandler::init().detach();
    ERRORHANDLER = handler;
    const NSAutoreleasePool pool;
    std::string_view input(reinterpret_cast<const char *>(bytes), size);
    if (size < 2 || bytes[0] == 0 || bytes[1] == 0 || size < 2U + bytes[1])
        return 0;
    NSData *const key = dataOf(input.substr(2, bytes[1]));
    const std::string_view stream = input.substr(2U + bytes[1]);
    const Result result = expected(key, stream);
    require(converted(key, /*decrypt=*/YES, stream, SIZE_MAX) == result, "whole");
    require(converted(key, /*decrypt=*/YES, stream, bytes[0]) == result, "in pieces");
    require(writtenApart(key, stream) == result.text, "write by write");
    ERRORHANDLER->clearErrorStack();
    const Result enciphered = converted(key, /*decrypt=*/NO, stream, bytes[0]);
    require(enciphered.text.size() == 8 * (stream.size() / 8 + 3), "the frame's length");
    require(converted(key, /*decrypt=*/YES, enciphered.text, bytes[0]) == Result{std::string(stream), false},
            "there and back");
    return 0;
}
