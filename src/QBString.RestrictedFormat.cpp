#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSMutableString.h>
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/MethodTable.h>
#include <QBFoundation/Runtime/Send.h>

#include "Foundation/Conversion.h"
#include "Foundation/Kept.h"
#include "Foundation/NSString.Tables.h"
#include "Foundation/RestrictedFormat.h"

#include <string_view>

namespace {

using qb::Conversion;
using qb::Value;

constexpr qb::Letters kSkippedLetters("LZlq");

// Where a conversion's value comes from, and how it is written. `write` returns false when the format is
// invalid.
class ArgListSource {
public:
    explicit ArgListSource(const qb::ArgList &values) : values_(values) {}

    bool write(const Conversion &conversion, qb::text::Builder &target) {
        return next_ != values_.count() && conversion.appendValue(target, values_[next_++]);
    }

private:
    const qb::ArgList &values_;
    std::uint32_t next_ = 0;
};

class ObjectsSource {
public:
    explicit ObjectsSource(NSArray *objects) : objects_(objects) {}

    bool write(const Conversion &conversion, qb::text::Builder &target) {
        const id object = objects_ && next_ < objects_->count() ? objects_->objectAtIndex(next_++) : nullptr;
        const qb::Kept kept(object); // whatever is done to make its text
        if (conversion.letter() == 's')
            return writeText(object, conversion, target);
        if (!object)
            return true;
        if (qb::isIntegerLetter(conversion.letter()))
            conversion.appendInteger(target, integerOf(object));
        else if (qb::isRealLetter(conversion.letter()))
            conversion.appendReal(target, realOf(object));
        else
            conversion.appendCharacter(target, characterOf(object));
        return true;
    }

private:
    static bool writeText(id object, const Conversion &conversion, qb::text::Builder &target) {
        auto *string = qb::castOrNil<NSString>(object);
        const char *const text = object && !string ? object->cStringValue() : nullptr;
        if (!string && !text)
            return false;
        conversion.appendText(target, string ? string->view() : std::string_view(text));
        return true;
    }

    static Value integerOf(id object) {
        if (auto *number = qb::castOrNil<NSNumber>(object)) {
            switch (number->type()) { // a negative one prints as unsigned of its own width
            case NSNumber::Type::boolean:
            case NSNumber::Type::int32:
                return number->intValue();
            case NSNumber::Type::uint64:
                return number->unsignedLongLongValue();
            default:
                return number->longLongValue();
            }
        }
        return object->respondsToSelector("intValue"_sel) ? send<std::int32_t>(object, "intValue"_sel) : 0;
    }

    static double realOf(id object) {
        if (auto *number = qb::castOrNil<NSNumber>(object))
            return number->doubleValue();
        return object->respondsToSelector("floatValue"_sel) ? send<float>(object, "floatValue"_sel) : 0;
    }

    static char characterOf(id object) {
        if (auto *string = qb::castOrNil<NSString>(object))
            return string->cString()[0];
        return static_cast<char>(integerOf(object).integer());
    }

    Ref<NSArray> objects_; // whatever they do for their texts
    std::uint32_t next_ = 0;
};

bool isConversionLetter(char letter) {
    return letter == 'c' || letter == 's' || qb::isIntegerLetter(letter) ||
           (letter >= 'e' && letter <= 'g') || letter == 'E';
}

// Appends the filled format to `target`. Returns false when the format is invalid.
template <class Source>
bool fill(qb::text::Builder &target, std::string_view format, Source source) {
    format = format.substr(0, format.find('\0'));
    for (std::size_t position = 0; position < format.size();) {
        std::size_t percent = position; // literal texts are short: faster than a call that searches
        while (percent < format.size() && format[percent] != '%')
            ++percent;
        const std::string_view literal = format.substr(position, percent - position);
        position = percent + 1;
        Conversion conversion;
        if (percent < format.size() && !conversion.read(format, position, kSkippedLetters))
            return false;
        if (conversion.letter() == '%') // drops itself and the literal text before it
            continue;
        target.append(literal);
        if (conversion.letter() != 0 &&
            !(isConversionLetter(conversion.letter()) && source.write(conversion, target)))
            return false;
    }
    return true;
}

template <class Source>
Ref<NSString> filled(std::string_view format, Source source) {
    qb::text::Builder text;
    return NSString::initWith(fill(text, format, source) ? text.view() : format);
}

// The class operations, which make a string of the class that was asked.
NSString *ofClass(Class *asked, NSString *text) {
    return text && asked != NSString::cls() ? NSString::initOfClass(asked, text->view()).autorelease() : text;
}
NSString *withListOfClass(Class *asked, NSString *format, const qb::ArgList &argList) {
    return ofClass(asked, NSString::stringWithRestrictedFormatAndArglist(format, argList));
}
NSString *withObjectsOfClass(Class *asked, NSString *format, NSArray *objects) {
    return ofClass(asked, NSString::stringWithRestrictedFormatAndObjects(format, objects));
}

} // namespace

std::span<const qb::Method> qb::tables::stringRestrictedFormat() {
    static const qb::Method methods[] = {
        qb::classMethod<"stringWithRestrictedFormat:">(&withListOfClass),
        qb::classMethod<"stringWithRestrictedFormat:andArglist:">(&withListOfClass),
        qb::classMethod<"stringWithRestrictedFormat:andObjects:">(&withObjectsOfClass),
    };
    return methods;
}

std::span<const qb::Method> qb::tables::mutableStringRestrictedFormat() {
    static const qb::Method methods[] = {
        qb::method<"appendRestrictedFormat:">(&NSMutableString::appendRestrictedFormatWithArgList),
    };
    return methods;
}

Ref<NSString> qb::restrictedText(NSString *format, const ArgList &argList) {
    return format ? filled(format->view(), ArgListSource(argList)) : nullptr;
}

NSString *NSString::stringWithRestrictedFormatAndArglist(NSString *format, const qb::ArgList &argList) {
    return qb::restrictedText(format, argList).autorelease();
}

NSString *NSString::stringWithRestrictedFormatAndArglist(const char *format, const qb::ArgList &argList) {
    return format ? filled(format, ArgListSource(argList)).autorelease() : nullptr;
}

NSString *NSString::stringWithRestrictedFormatAndObjects(NSString *format, NSArray *objects) {
    if (!format)
        return nullptr;
    const Ref<NSString> kept = format->copy(); // the objects' texts may change a mutable one
    return filled(kept->view(), ObjectsSource(objects)).autorelease();
}

void NSMutableString::appendRestrictedFormatWithArgList(NSString *format, const qb::ArgList &argList) {
    if (!format)
        return;
    qb::text::Builder text;
    append(fill(text, format->view(), ArgListSource(argList)) ? text.view() : format->view());
}
