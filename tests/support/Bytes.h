// Values of the library made of those of the standard library, and bytes between both.
#ifndef QBFOUNDATION_TESTS_SUPPORT_BYTES_H
#define QBFOUNDATION_TESTS_SUPPORT_BYTES_H

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/QBArrayOutputStream.h>

#include "Text/RandomText.h"

#include <string>
#include <string_view>
#include <vector>

using Strings = std::vector<std::string>;

/// Data of those bytes that do not change, autoreleased.
inline NSData *dataOf(std::string_view bytes) {
    return NSData::dataWithBytes(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

/// The data's bytes; "nil" for nil.
inline std::string bytesOf(NSData *data) {
    return data ? std::string(static_cast<const char *>(data->bytes()), data->length()) : "nil";
}

/// A string of those bytes, autoreleased.
inline NSString *string(std::string_view bytes) {
    return NSString::stringWith(bytes);
}

/// A number, autoreleased.
inline NSNumber *number(int value) {
    return NSNumber::numberWithInt(value);
}

/// The text's characters as strings.
inline NSMutableArray *letters(std::string_view text) {
    NSMutableArray *const array = NSMutableArray::array();
    for (const char &letter : text)
        array->addObject(string({&letter, 1}));
    return array;
}

/// Writes the text in one piece.
inline void write(QBOutputStream *stream, std::string_view text) {
    stream->writeBuffer(text.data(), static_cast<std::uint32_t>(text.size()));
}

/// Writes the text in pieces of any length below 2 to the power of `bits`, single bytes by the operation for
/// them.
inline void writeInPieces(auto *stream, std::string_view text, Random &random, unsigned bits = 18) {
    for (std::size_t done = 0; done < text.size();) {
        const std::string_view piece = text.substr(done, random.length(bits));
        piece.size() == 1 ? stream->putByte(piece[0]) : write(stream, piece);
        done += piece.size();
    }
}

/// The writes that have reached a target which tells them apart.
inline Strings writesOf(QBArrayOutputStream *stream) {
    Strings writes;
    for (const id write : *stream->targetArray())
        writes.push_back(bytesOf(static_cast<NSData *>(write)));
    return writes;
}

#endif
