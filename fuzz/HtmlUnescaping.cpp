// Unescapes and escapes any text as HTML, against a search for one entity after the other.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSString.h>

#include "support/Require.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

struct Entity {
    std::string_view text;
    char character;
    bool isWanted;
};

std::string unescaped(std::string_view text, const Entity (&entities)[4]) {
    std::string result(text);
    for (std::size_t i = 0; i < text.size(); ++i)
        for (const Entity &entity : entities)
            if (entity.isWanted && text.substr(i).starts_with(entity.text))
                result[i] = entity.character;
    return result;
}

} // namespace

// The first byte holds the flags.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size == 0)
        return 0;
    const NSAutoreleasePool pool;
    const auto flag = [data](int bit) -> BOOL { return data[0] >> bit & 1; };
    const std::string_view text(reinterpret_cast<const char *>(data) + 1, size - 1);
    NSString *const string = NSString::stringWith(text);
    NSString *const result = string->stringWithUnescapedHtmlLT(flag(0), flag(1), flag(2), flag(3));
    const Entity entities[4] = {{"&lt;", '<', flag(0) == 1},
                                {"&gt;", '>', flag(1) == 1},
                                {"&amp;", '&', flag(2) == 1},
                                {"&quot;", '"', flag(3) == 1}};
    require(result->view() == unescaped(text, entities), "only the \"&\" of each entity is replaced");

    NSString *const escaped = string->stringWithEscapedHtml();
    require((escaped == string) == (text.find_first_of("<>&\"") == std::string_view::npos),
            "the receiver comes back when there is nothing to replace");
    require(escaped->view().find_first_of("<>\"") == std::string_view::npos, "all characters are replaced");
    NSString *const onlySome =
        string->stringWithEscapedHtmlLT(flag(0), flag(1), flag(2), flag(3), nullptr, 0);
    require(onlySome->cStringLength() <= escaped->cStringLength(), "fewer flags replace less");
    return 0;
}
