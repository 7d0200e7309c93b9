// Reads any text as base64, as uuencoded lines and as hexadecimal digits, against plain readers, and any
// bytes there and back.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBArrayOutputStream.h>
#include <QBFoundation/QBBase64OutputFilter.h>
#include <QBFoundation/QBDataOutputStream.h>
#include <QBFoundation/QBErrorHandler.h>

#include "support/CpuLevel.h"
#include "support/Require.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

// The classical encoder's text: sixty characters a line, a backquote for 0; other lines stand around it.
std::string plainlyUuencoded(std::string_view bytes) {
    std::string text = "junk\nbegin 644 name\n";
    const auto digit = [](std::size_t value) {
        return value % 64 == 0 ? '`' : static_cast<char>(' ' + value % 64);
    };
    for (; !bytes.empty(); bytes.remove_prefix(std::min<std::size_t>(45, bytes.size()))) {
        const std::string_view line = bytes.substr(0, 45);
        text += digit(line.size());
        for (std::size_t i = 0; i < (line.size() + 2) / 3 * 4; ++i) { // six bits each
            std::size_t pair = 0;
            for (std::size_t at : {i * 6 / 8, i * 6 / 8 + 1})
                pair = pair << 8 | (at < line.size() ? static_cast<unsigned char>(line[at]) : 0U);
            text += digit(pair >> (10 - i * 6 % 8));
        }
        text += '\n';
    }
    return text + "`\nend\nmore\n";
}

struct Result {
    std::string bytes;
    bool hasFailed = false;

    bool operator==(const Result &) const = default;
};

std::string bytesOf(NSData *data) {
    return {static_cast<const char *>(data->bytes()), data->length()};
}

Result resultOf(NSData *data) {
    return {data ? bytesOf(data) : "nil", ERRORHANDLER->clearErrorStack() != nullptr};
}

// --- Base64 ---

bool addGroup(std::string_view group, std::string &bytes) {
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::size_t count = group.ends_with("==") ? 1 : group.ends_with('=') ? 2 : 3;
    std::size_t bits = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        const std::size_t value = i <= count ? alphabet.find(group[i]) : 0;
        if (value == std::string_view::npos)
            return false;
        bits = bits << 6 | value;
    }
    for (std::size_t i = 0; i < count; ++i)
        bytes += static_cast<char>(bits >> (16 - 8 * i));
    return true;
}

// A group that is none ends its piece.
Result plainlyDecoded(std::string_view text, std::size_t piece) {
    Result result;
    std::string group;
    for (; !text.empty(); text.remove_prefix(std::min(piece, text.size())))
        for (const char character : text.substr(0, piece)) {
            if (std::isspace(static_cast<unsigned char>(character)))
                continue;
            group += character;
            if (group.size() < 4)
                continue;
            const bool isGroup = addGroup(group, result.bytes);
            group.clear();
            if (isGroup)
                continue;
            result.hasFailed = true;
            break;
        }
    result.hasFailed = result.hasFailed || !group.empty();
    return result;
}

void writeInPieces(QBBase64OutputFilter *filter, std::string_view text, std::size_t piece) {
    for (; !text.empty(); text.remove_prefix(std::min(piece, text.size())))
        filter->writeBuffer(text.data(), static_cast<std::uint32_t>(std::min(piece, text.size())));
    filter->flush();
}

using MakeFilter = QBBase64OutputFilter *(*)(QBOutputStream *target);

// Converts to a target that collects and to one that tells writes apart.
Result converted(MakeFilter make, std::string_view text, std::size_t piece) {
    QBDataOutputStream *const target = QBDataOutputStream::stream();
    writeInPieces(make(target), text, piece);
    const Result result = resultOf(target->targetData());
    QBArrayOutputStream *const groups = QBArrayOutputStream::stream();
    writeInPieces(make(groups), text, piece);
    Result apart{"", ERRORHANDLER->clearErrorStack() != nullptr};
    for (const id group : *groups->targetArray()) {
        apart.bytes += bytesOf(static_cast<NSData *>(group));
        require(static_cast<NSData *>(group)->length() <= 4, "each group is a write");
    }
    require(result == apart, "whatever the target is");
    return result;
}

QBBase64OutputFilter *encoder(QBOutputStream *target) {
    return QBBase64OutputFilter::streamWithTarget(target);
}

QBBase64OutputFilter *decoder(QBOutputStream *target) {
    return QBBase64OutputFilter::streamWithTarget(target, /*decode=*/YES);
}

void checkBase64(std::string_view text, std::size_t piece) {
    const Result whole = plainlyDecoded(text, SIZE_MAX);
    require(converted(decoder, text, SIZE_MAX) == whole, "base64, whole");
    require(resultOf(NSString::stringWith(text)->decodeBase64()) == whole, "base64 of a string");
    require(converted(decoder, text, piece) == plainlyDecoded(text, piece), "base64, in pieces");

    const Result encoded = converted(encoder, text, SIZE_MAX);
    require(encoded.bytes.size() == (text.size() + 2) / 3 * 4 && !encoded.hasFailed, "whole groups");
    require(converted(encoder, text, piece) == encoded, "encoded in pieces");
    require(plainlyDecoded(encoded.bytes, SIZE_MAX) == Result{std::string(text)}, "they are the bytes");
    require(converted(decoder, encoded.bytes, piece) == Result{std::string(text)}, "base64, there and back");
}

// --- Uuencode ---

// Adds the bytes of a line as their bits come. False at a character outside the table.
bool addLine(std::string_view line, std::string &bytes) {
    std::size_t left = 0;
    std::size_t bits = 0;
    int held = 0;
    for (std::size_t i = 0; i == 0 || left != 0; ++i) {
        const unsigned character = i < line.size() ? static_cast<unsigned char>(line[i]) : ' ';
        if (character < ' ' || character > 127)
            return false;
        const unsigned value = character == '~' ? 62 : (character - ' ') % 64;
        if (i == 0) {
            left = value;
            continue;
        }
        bits = bits << 6 | value;
        held += 6;
        if (held < 8)
            continue;
        held -= 8;
        bytes += static_cast<char>(bits >> held);
        --left;
    }
    return true;
}

Result plainlyUudecoded(std::string_view text) {
    const std::size_t begin = text.starts_with("begin ") ? 0 : text.find("\nbegin ");
    if (begin != std::string_view::npos)
        text.remove_prefix(std::min(text.find('\n', begin + 1), text.size()));
    Result result;
    while (!text.empty() && !result.hasFailed) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        if (line.starts_with("end"))
            break;
        result.hasFailed = !addLine(line, result.bytes);
    }
    return result;
}

void checkUuencode(std::string_view text) {
    require(resultOf(NSString::stringWith(text)->uudecode()) == plainlyUudecoded(text), "uuencoded lines");
    require(resultOf(NSString::stringWith(plainlyUuencoded(text))->uudecode()) == Result{std::string(text)},
            "uuencode, there and back");
}

// --- Hexadecimal digits ---

Result plainlyRead(std::string_view text) {
    std::string digits;
    for (const char character : text) {
        if (std::isxdigit(static_cast<unsigned char>(character)))
            digits += character;
        else if (!std::isspace(static_cast<unsigned char>(character)))
            return {"nil", true};
    }
    if (digits.size() % 2 != 0)
        return {"nil", true};
    Result result;
    for (std::size_t i = 0; i < digits.size(); i += 2)
        result.bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    return result;
}

void checkHex(std::string_view text) {
    NSString *const string = NSString::stringWith(text);
    require(resultOf(string->dataFromHexString()) == plainlyRead(text), "hexadecimal digits");
    NSString *const digits = string->asHexString();
    require(digits->view().size() == 2 * text.size(), "two digits a byte");
    require(plainlyRead(digits->view()) == Result{std::string(text)}, "which are the bytes");
}

} // namespace

// The first byte chooses the vector version, the second is the length of the pieces.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static QBErrorHandler *const handler = QBErrorHandler::init().detach();
    ERRORHANDLER = handler;
    if (size < 2 || data[1] == 0)
        return 0;
    const NSAutoreleasePool pool;
    chooseCpuLevel(data[0]);
    const std::string_view text(reinterpret_cast<const char *>(data) + 2, size - 2);
    checkBase64(text, data[1]);
    checkUuencode(text);
    checkHex(text);
    return 0;
}
