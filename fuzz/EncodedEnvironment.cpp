// Reads any bytes as an encoded environment, against a reader of whole texts.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/QBErrorHandler.h>

#include "support/PlainTexts.h"
#include "support/Require.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string_view>

namespace {

constexpr std::size_t kLongestLine = 8192;

// Returns whether the text is an environment, and its entries.
bool readAll(std::string_view text, NSMutableDictionary *entries) {
    while (!text.empty() && text.front() != '\n') {
        const std::string_view line = text.substr(0, text.find('\n'));
        const std::size_t equals = line.find('=');
        if (line.size() > kLongestLine || equals == std::string_view::npos)
            return false;
        NSString *const name = NSString::stringWith(plain::urlUnescaped(line.substr(0, equals)));
        NSString *const value = NSString::stringWith(plain::urlUnescaped(line.substr(equals + 1)));
        entries->setObjectForKey(entries->objectForKey(name, value), name);
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static QBErrorHandler *const handler = ERRORHANDLER = QBErrorHandler::init().detach();
    if (size == 0)
        return 0;
    const NSAutoreleasePool pool;
    std::FILE *const file = fmemopen(const_cast<std::uint8_t *>(data), size, "r");
    NSDictionary *const entries = NSDictionary::dictionaryWithEncodedEnvironmentFromFile(file);
    std::fclose(file);
    NSMutableDictionary *const expected = NSMutableDictionary::dictionary();
    const bool isCorrect = readAll({reinterpret_cast<const char *>(data), size}, expected);
    require((entries != nullptr) == isCorrect, "a malformed line is refused, and no other");
    require((handler->errorState() == ERRORSTATE_OK) == isCorrect, "what is refused is an error");
    require(!entries || entries->isEqual(expected), "all entries are those of the lines");
    handler->clearErrorStack();
    return 0;
}
