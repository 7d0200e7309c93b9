#include <QBFoundation/Foundation/NSMutableString.h>
#include <QBFoundation/Foundation/NSString.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/Conversion.h"
#include "Foundation/NSString.Tables.h"

#include <algorithm>
#include <string_view>

namespace {

using qb::Conversion;
using qb::Kind;
using qb::Value;

constexpr qb::Letters kLengthLetters("hlLqjzt");

bool isAnyPointer(const Value &value) {
    return value.isNull() || value.pointer() || value.object() || value.function();
}

const void *addressOf(const Value &value) {
    if (value.object())
        return value.object();
    return value.function() ? reinterpret_cast<const void *>(value.function()) : value.pointer();
}

// Appends one value. Returns false when it does not serve the conversion.
bool appendValue(qb::text::Builder &target, const Conversion &conversion, const Value &value) {
    if (conversion.letter() == 'p') {
        if (!isAnyPointer(value))
            return false;
        conversion.appendAddress(target, addressOf(value));
        return true;
    }
    if (conversion.letter() != '@')
        return conversion.appendValue(target, value);
    if (!value.object() && !value.isNull())
        return false;
    NSString *const text = value.object() ? value.object()->description() : nullptr;
    conversion.appendText(target, text ? text->view() : "(null)");
    return true;
}

// Reads the conversion from `position` on, with the values of its stars. Returns false when it is invalid.
bool readConversion(std::string_view format, std::size_t &position, Conversion &conversion,
                    const qb::ArgList &values, std::uint32_t &next) {
    while (conversion.read(format, position, kLengthLetters)) {
        if (conversion.letter() != '*')
            return true;
        if (next == values.count() || !conversion.takeStar(values[next++]))
            return false;
    }
    return false;
}

// Appends the filled format. Returns false when it is invalid. A format that ends inside a conversion loses
// that.
bool fill(qb::text::Builder &target, std::string_view format, const qb::ArgList &values) {
    std::uint32_t next = 0;
    for (std::size_t position = 0; position < format.size();) {
        const std::size_t percent = std::min(format.find('%', position), format.size());
        target.append(format.substr(position, percent - position));
        position = percent + 1;
        if (percent == format.size())
            break;
        Conversion conversion;
        if (!readConversion(format, position, conversion, values, next))
            return false;
        if (conversion.letter() == '%')
            target.append(1, '%');
        else if (conversion.letter() != 0 &&
                 (next == values.count() || !appendValue(target, conversion, values[next++])))
            return false;
    }
    return true;
}

Ref<NSString> initWithFormatOfClass(Class *asked, NSString *format, const qb::ArgList &argList) {
    if (!format)
        return {};
    const Ref<NSString> kept = format->copy(); // descriptions may change a mutable one
    qb::text::Builder text;
    return NSString::initOfClass(asked, fill(text, kept->view(), argList) ? text.view() : kept->view());
}
NSString *stringWithFormatOfClass(Class *asked, NSString *format, const qb::ArgList &argList) {
    return initWithFormatOfClass(asked, format, argList).autorelease();
}

} // namespace

std::span<const qb::Method> qb::tables::stringFormat() {
    static const qb::Method methods[] = {
        qb::classMethod<"stringWithFormat:">(&stringWithFormatOfClass),
        qb::classMethod<"stringWithFormat:arguments:">(&stringWithFormatOfClass),
        qb::classMethod<"initWithFormat:">(&initWithFormatOfClass),
        qb::classMethod<"initWithFormat:arguments:">(&initWithFormatOfClass),
        qb::method<"stringByAppendingFormat:">(&NSString::stringByAppendingFormatWithArgList),
    };
    return methods;
}

std::span<const qb::Method> qb::tables::mutableStringFormat() {
    static const qb::Method methods[] = {
        qb::method<"appendFormat:">(&NSMutableString::appendFormatWithArgList),
    };
    return methods;
}

Ref<NSString> NSString::initWithFormatArguments(NSString *format, const qb::ArgList &arguments) {
    return initWithFormatOfClass(NSString::cls(), format, arguments);
}

Ref<NSMutableString> NSMutableString::initWithFormatArguments(NSString *format,
                                                              const qb::ArgList &arguments) {
    return static_cast<NSMutableString *>(
        initWithFormatOfClass(NSMutableString::cls(), format, arguments).get());
}

NSString *NSString::stringByAppendingFormatWithArgList(NSString *format, const qb::ArgList &argList) const {
    return stringByAppendingString(stringWithFormatWithArgList(format, argList));
}

void NSMutableString::appendFormatWithArgList(NSString *format, const qb::ArgList &argList) {
    appendString(NSString::stringWithFormatWithArgList(format, argList));
}
