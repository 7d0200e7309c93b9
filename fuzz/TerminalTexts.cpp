// Converts any bytes for a terminal. The first byte chooses its character set.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/OSAdaptor/OSUserIO.h>

#include "support/Require.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

namespace {

struct Terminal {
    const char *characterSet;
    bool hasShifts; // so that what a text becomes depends on what stands before it
};

constexpr Terminal kTerminals[] = {
    {"UTF-8", false},  {"ASCII", false},      {"ISO-8859-1", false}, {"ISO-8859-15", false},
    {"EUC-JP", false}, {"ISO-2022-JP", true}, {"UTF-7", true},       {"UTF-16LE", true},
};

std::string converted(iconv_t handle, const std::string &text) {
    return std::string(defaultConversionCallback(handle, NSString::stringWith(text))->view());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size == 0)
        return 0;
    const NSAutoreleasePool pool;
    const Terminal &terminal = kTerminals[data[0] % std::size(kTerminals)];
    static iconv_t handles[std::size(kTerminals)] = {};
    iconv_t &handle = handles[data[0] % std::size(kTerminals)];
    if (!handle)
        handle = ::iconv_open(terminal.characterSet, "UTF-8");
    const std::string text(reinterpret_cast<const char *>(data) + 1, size - 1);

    const std::string once = converted(handle, text);
    require(converted(handle, text) == once, "each conversion begins anew");
    const std::string none = converted(reinterpret_cast<iconv_t>(-1), text);
    require(none == text, "nothing happens without a conversion");
    if (terminal.hasShifts)
        return 0;
    require(converted(handle, text + "\n").ends_with('\n'), "a text never swallows what stands behind it");
    require(converted(handle, "a" + text) == "a" + once, "nor depends on what stands before it");
    require(once.size() <= 2 * text.size(), "nothing is made up");
    return 0;
}
