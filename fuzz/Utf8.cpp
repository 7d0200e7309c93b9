// Goes over any bytes as UTF-8, character by character against the operations on the whole.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBDataOutputStream.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/QBStringAdditions.h>

#include "support/Require.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

const unsigned char *bytesOf(const std::string &text, std::size_t offset) {
    return reinterpret_cast<const unsigned char *>(text.c_str()) + offset;
}

// A character written by itself is as long as it was, unless it was overlong.
void requireEncoding(unsigned codePoint, int length) {
    QBDataOutputStream *const stream = QBDataOutputStream::stream();
    NSString::writeUtf8CharForUnicodePos(static_cast<std::int32_t>(codePoint), stream);
    require(stream->byteCounter() <= static_cast<unsigned>(length), "the shortest sequence is written");
    const std::string written(static_cast<const char *>(stream->targetData()->bytes()),
                              stream->byteCounter());
    unsigned decoded = 0;
    require(codePoint == 0 || _getUtf8CharacterByteLength(bytesOf(written, 0), &decoded) > 0, "it is valid");
    require(decoded == codePoint, "it is the same character");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static QBErrorHandler *const handler = ERRORHANDLER = QBErrorHandler::init().detach();
    const NSAutoreleasePool pool;
    // C strings, which all operations agree on.
    const std::string text(std::string(reinterpret_cast<const char *>(data), size).c_str());
    NSString *const string = NSString::stringWith(text);
    std::size_t offset = 0;
    std::int32_t characters = 0;
    int length = 0;
    for (unsigned codePoint = 0;
         (length = _getUtf8CharacterByteLength(bytesOf(text, offset), &codePoint)) > 0;
         offset += static_cast<std::size_t>(length), ++characters) {
        require(NSString::_indexOfUtf8Index(characters < 50 ? characters : 0, text.c_str()) ==
                    static_cast<std::int32_t>(characters < 50 ? offset : 0),
                "each character is found at its offset");
        requireEncoding(codePoint, length);
    }
    require((length == 0) == (offset == text.size()), "the walk ends at the end or at an error");
    require(handler->errorState() == ERRORSTATE_OK, "no error so far");

    require(string->utf8CharCount() == characters, "the count is that of the walk");
    require((handler->errorState() == ERRORSTATE_OK) == (length == 0), "a malformed text is an error");
    handler->clearErrorStack();
    require(string->indexOfFirstCorruptUtf8Character() ==
                (length == 0 ? -1 : static_cast<std::int32_t>(offset)),
            "the error is where the walk ended");
    require(string->utf8SubstringFromIndex(0, characters)->view() == std::string_view(text).substr(0, offset),
            "as many characters are the valid beginning");
    require(string->utf8SubstringFromIndex(0, INT32_MAX)->view() == (length == 0 ? text : ""),
            "a malformed part is the empty string");
    const auto correct = static_cast<std::size_t>(string->indexOfFirstCorrectUtf8Character());
    require(correct == text.size() || _getUtf8CharacterByteLength(bytesOf(text, correct), nullptr) > 0,
            "a valid character is at the first correct position");
    handler->clearErrorStack();
    return 0;
}
