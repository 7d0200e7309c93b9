// Arrays as texts: lists, paths, expressions.
#include <QBFoundation/Foundation/NSArray.h>

#include <QBFoundation/OSAdaptor/OSFilePath.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/Kept.h"
#include "Foundation/NSArray.Tables.h"
#include "Foundation/PlainClasses.h"
#include "Text/Room.h"

#include <string>
#include <string_view>
#include <utility>

namespace {

std::string_view textOf(id element) {
    if (qb::isPlainString(element))
        return static_cast<NSString *>(element)->cString();
    const qb::Kept kept(element); // whose text it may be
    const char *const text = element->cStringValue();
    return text ? text : std::string_view();
}

// A string with the NULs inside it.
std::string_view wholeTextOf(id element) {
    auto *const string = qb::castOrNil<NSString>(element);
    return string ? string->view() : textOf(element);
}

} // namespace

std::span<const qb::Method> qb::tables::arrayTexts() {
    static const qb::Method methods[] = {
        qb::method<"stringsJoinedByString:">(&NSArray::stringsJoinedByString),
        qb::method<"pathString">(&NSArray::pathString),
        qb::method<"absolutePathString">(&NSArray::absolutePathString),
        qb::method<"expressionWithOperator:">(&NSArray::expressionWithOperator),
        qb::method<"orExpression">(&NSArray::orExpression),
        qb::method<"andExpression">(&NSArray::andExpression),
    };
    return methods;
}

NSString *NSArray::stringsJoinedByString(NSString *separator) const {
    const Ref<NSString> kept = separator ? separator->copy() : nullptr; // whatever the elements do to it
    const std::string_view between = kept ? kept->cString() : std::string_view();
    std::string text;
    bool isFirst = true;
    for (id element : *this) {
        if (std::exchange(isFirst, false)) {
            text = wholeTextOf(element);
            continue;
        }
        qb::text::append(text, between);
        qb::text::append(text, textOf(element));
    }
    return text.empty() ? ""_ns : NSString::stringWithCString(text.c_str());
}

NSString *NSArray::pathString() const {
    return filterWithSelector("stringValue"_sel)->stringsJoinedByString(OSFilePath::pathSeparatorString());
}

NSString *NSArray::absolutePathString() const {
    return OSFilePath::pathSeparatorString()->stringByAppendingString(pathString());
}

id NSArray::expressionWithOperator(NSString *operatorText) const {
    if (count_ < 2)
        return firstObject();
    return NSString::stringWithRestrictedFormat("(%s)", stringsJoinedByString(operatorText));
}
