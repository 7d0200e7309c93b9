#include <QBFoundation/OSAdaptor/OSUserIO.h>

#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/OSAdaptor/OSMultipleChoiceDescription.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "OSAdaptor/OSUserIO.Print.h"
#include "OSAdaptor/StandardError.h"
#include "System/Files.h"
#include "System/Iconv.h"
#include "System/Stdio.h"
#include "Text/Utf8.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <strings.h>

namespace sys = qb::sys;

namespace {

constexpr std::size_t kConversionBufferSize = 10240;
// The C library converts ahead what it is given, and begins anew behind each byte that it can't convert.
constexpr std::size_t kWindowBehindBadByte = 16;
constexpr std::size_t kLongestCharacter = 6; // in bytes

const iconv_t kNoConversion = reinterpret_cast<iconv_t>(-1);

constexpr std::size_t kFailed = static_cast<std::size_t>(-1);

// Appends what the handle makes of `text`. Returns false when the conversion gives up.
bool convertAll(iconv_t handle, std::string_view text, std::string &converted) {
    char buffer[kConversionBufferSize];
    char *input = const_cast<char *>(text.data());
    const char *const end = input + text.size();
    std::size_t window = text.size();
    for (;;) {
        const std::size_t given = std::min(window, static_cast<std::size_t>(end - input));
        std::size_t inputLeft = given;
        char *output = buffer;
        std::size_t outputLeft = sizeof buffer;
        const bool isDone = sys::iconv(handle, &input, &inputLeft, &output, &outputLeft) != kFailed;
        const int error = isDone ? 0 : errno;
        converted.append(buffer, static_cast<std::size_t>(output - buffer));
        const bool isEnd = input + inputLeft == end;
        // An incomplete character at the end; or a handle that leaves characters out, which it tells then,
        // and even so when the last character is incomplete.
        if (isDone || error == EINVAL || (error == EILSEQ && inputLeft < (isEnd ? 1 : kLongestCharacter))) {
            if (isEnd)
                return true;
            window = 2 * given;
        } else if (error == EILSEQ) {
            converted += *input++;
            window = kWindowBehindBadByte;
        } else if (error != E2BIG) {
            return false;
        }
    }
}

// The handle is in its initial shift state afterwards, in which the converted text ends.
bool convert(iconv_t handle, std::string_view text, std::string &converted) {
    const bool isConverted = convertAll(handle, text, converted);
    char shift[64];
    char *output = shift;
    std::size_t outputLeft = sizeof shift;
    sys::iconv(handle, nullptr, nullptr, &output, &outputLeft);
    converted.append(shift, static_cast<std::size_t>(output - shift));
    return isConverted;
}

// The handle that `initialize` has opened, and whether it leaves ASCII as it is, which nearly all do: such
// texts are printed without a conversion.
iconv_t ownHandle = kNoConversion;
bool ownHandleKeepsAscii = false;

bool keepsAscii(iconv_t handle) {
    std::string ascii;
    for (char character = 1; character > 0; ++character)
        ascii += character;
    std::string converted;
    return convert(handle, ascii, converted) && converted == ascii;
}

void useConversion(iconv_t handle) {
    if (ownHandle != kNoConversion)
        sys::iconv_close(ownHandle);
    ownHandle = _iconvHandle = handle;
    ownHandleKeepsAscii = handle != kNoConversion && keepsAscii(handle);
}

bool isInitialized = false;

// A handle that the program has set before stays.
void initializeOnFirstUse() {
    if (!isInitialized && _iconvHandle == kNoConversion)
        OSUserIO::initialize();
    isInitialized = true;
}

// Calls `write` with the text in the terminal's character set. The newline that ends a line is none of what
// is converted: a character that is cut off in front of it is cut off at the end.
template <class Write>
void withTerminalText(std::string_view text, qb::Printed as, Write write) {
    initializeOnFirstUse();
    const bool isUnchanged =
        _iconvHandle == kNoConversion ||
        (_iconvHandle == ownHandle && ownHandleKeepsAscii && qb::text::isAscii(text.data(), text.size()));
    if (isUnchanged)
        return write(text.data(), text.size());
    const NSAutoreleasePool pool;
    const std::string_view end = text.substr(text.size() - (as == qb::Printed::line));
    text.remove_suffix(end.size());
    std::string converted = defaultConversionCallback(_iconvHandle, NSString::stringWith(text))->cString();
    converted += end;
    write(converted.data(), converted.size());
}

bool isForUtf8(const char *characterSet) {
    return !*characterSet || strcasecmp(characterSet, "utf8") == 0 || strcasecmp(characterSet, "utf-8") == 0;
}

} // namespace

iconv_t _iconvHandle = kNoConversion;

Class *OSUserIO::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"initialize">(&OSUserIO::initialize),
        qb::classMethod<"setOutputConversionCallback:">(&OSUserIO::setOutputConversionCallback),
        qb::classMethod<"print:on:withNewLine:">(&OSUserIO::printOn),
        qb::classMethod<"print:withNewLine:", void(NSString *, BOOL)>(&OSUserIO::print),
        qb::classMethod<"print:", void(NSString *)>(&OSUserIO::print),
        qb::classMethod<"printLn:", void(NSString *)>(&OSUserIO::printLn),
        qb::classMethod<"printLn", void()>(&OSUserIO::printLn),
        qb::classMethod<"eprint:withNewLine:", void(NSString *, BOOL)>(&OSUserIO::eprint),
        qb::classMethod<"eprint:", void(NSString *)>(&OSUserIO::eprint),
        qb::classMethod<"eprintLn:", void(NSString *)>(&OSUserIO::eprintLn),
        qb::classMethod<"eprintLn", void()>(&OSUserIO::eprintLn),
        qb::classMethod<"askUserForStringWithQuestion:">(&OSUserIO::askUserForStringWithQuestion),
        qb::classMethod<"askMultipleChoice:withQuestion:">(&OSUserIO::askMultipleChoice),
    };
    static Class *const self = new Class("OSUserIO", OSObject::cls(), methods);
    return self;
}

void OSUserIO::initialize() {
    isInitialized = true;
    useConversion(kNoConversion);
    if (!sys::setlocale(LC_CTYPE, "")) {
        qb::writeStandardError("The locale is not specified.\n"
                               "Please check the environment variables LANG, LC_CTYPE, or LC_ALL.\n"
                               "All terminal output will be UTF-8 encoded.\n");
        return;
    }
    const char *const characterSet = sys::characterSetName();
    if (isForUtf8(characterSet))
        return;
    const iconv_t handle = sys::iconv_open(characterSet, "UTF-8");
    if (handle == kNoConversion)
        qb::writeStandardError(qb::printed("The conversion to terminal charset %s is not supported: %s\n"
                                           "All terminal output will be UTF-8 encoded.\n",
                                           characterSet, errorDescription()));
    useConversion(handle);
}

void OSUserIO::setOutputConversionCallback(OutputConversionCallback) {}

void OSUserIO::printOn(NSString *string, std::FILE *file, BOOL withNewLine) {
    if (!file)
        throw InvalidArgumentException("OSUserIO print:on:withNewLine: must have a file that is not NULL.");
    // In one piece, so that lines of several processes don't mix.
    std::string text(string ? string->cString() : "");
    if (withNewLine)
        text += '\n';
    qb::printText(text, withNewLine ? qb::Printed::line : qb::Printed::text, file);
}

void qb::printText(std::string_view text, Printed as, std::FILE *file) {
    withTerminalText(text, as,
                     [file](const char *bytes, std::size_t length) { sys::print(bytes, length, file); });
}

void qb::printText(std::string_view text, Printed as, int descriptor) {
    withTerminalText(text, as, [descriptor](const char *bytes, std::size_t length) {
        sys::writeAll(descriptor, bytes, length);
    });
}

NSString *defaultConversionCallback(iconv_t handle, NSString *string) {
    if (handle == kNoConversion || !string)
        return string;
    std::string converted;
    return convert(handle, string->view(), converted) ? NSString::stringWith(converted) : string;
}
