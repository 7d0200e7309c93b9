// Escapes and unescapes any text as URLs want it, against plain versions.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSString.h>

#include "support/CpuLevel.h"
#include "support/PlainTexts.h"
#include "support/Require.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// The first byte chooses the vector version.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size == 0)
        return 0;
    const NSAutoreleasePool pool;
    chooseCpuLevel(data[0]);
    const std::string_view text(reinterpret_cast<const char *>(data) + 1, size - 1);
    NSString *const string = NSString::stringWith(text);
    const auto isResult = [string](NSString *result, const std::string &expected) {
        return result->view() == expected && (result == string) == (string->view() == expected);
    };
    require(isResult(string->urlEscape(), plain::urlEscaped(text)), "escaped, or the receiver");
    require(isResult(string->urlUnEscape(), plain::urlUnescaped(text)), "unescaped, or the receiver");
    return 0;
}
