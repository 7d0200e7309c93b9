// Strings in the manner of property lists, and as parts of names.
#include <QBFoundation/Foundation/NSString.h>

#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSString.Tables.h"
#include "Foundation/PropertyListText.h"
#include "Foundation/Required.h"
#include "Text/PlistText.h"
#include "Text/Scan.h"

#include <string>

namespace {

using qb::text::kLegalName;

} // namespace

std::span<const qb::Method> qb::tables::stringRepresentation() {
    static const qb::Method methods[] = {
        qb::method<"stringRepresentation">(&NSString::stringRepresentation),
        qb::method<"asLegalNameString">(&NSString::asLegalNameString),
    };
    return methods;
}

NSString *NSString::stringRepresentation() const {
    const std::uint64_t length = qb::text::plistTextLength(bytes_, byteLength_);
    if (length == byteLength_) // a quoted text is longer
        return unchanged();
    qb::requireLength(length, "NSString stringRepresentation");
    std::string text;
    qb::appendPropertyListString(text, view());
    return stringWith(text);
}

NSString *NSString::asLegalNameString() const {
    std::string text(view());
    char *const end = text.data() + text.size();
    const auto nextIllegal = [end](char *from) {
        return from + (qb::text::findNotIn(from, end, kLegalName) - from);
    };
    char *position = nextIllegal(text.data());
    if (position == end)
        return unchanged();
    for (; position != end; position = nextIllegal(position))
        *position = '_';
    return stringWith(text);
}
