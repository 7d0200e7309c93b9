#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSMutableString.h>
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/MethodTable.h>
#include <QBFoundation/Runtime/Send.h>

#include "Foundation/Conversion.h"
#include "Foundation/NSString.Tables.h"
#include "Foundation/RestrictedFormat.h"
#include "Text/Room.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

namespace {

using qb::Conversion;
using qb::Value;

constexpr std::string_view kSkippedLetters = "LZlq";

constexpr std::size_t kLargestBuffer = 4096; // that is kept

// Where a conversion's value comes from, and how it is written. `write` returns false when the format is
// invalid.
class ArgListSource {
public:
    explicit ArgListSource(const qb::ArgList &values) : values_(values) {}

    bool write(const Conversion &conversion, std::string &target) {
        return next_ != values_.count() && conversion.appendValue(target, values_[next_++]);
    }

private:
    const qb::ArgList &values_;
    std::uint32_t next_ = 0;
};

class ObjectsSource {
public:
    explicit ObjectsSource(NSArray *objects) : objects_(objects) {}

    bool write(const Conversion &conversion, std::string &target) {
        const id object = objects_ && next_ < objects_->count() ? objects_->objectAtIndex(next_++) : nullptr;
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
    static bool writeText(id object, const Conversion &conversion, std::string &target) {
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

    NSArray *objects_;
    std::uint32_t next_ = 0;
};

bool isConversionLetter(char letter) {
    return letter == 'c' || letter == 's' || qb::isIntegerLetter(letter) ||
           (letter >= 'e' && letter <= 'g') || letter == 'E';
}

// Appends the filled format to `target`. Returns false, with `target` as it was, when the format is invalid.
template <class Source>
bool fill(std::string_view format, Source source, std::string &target) {
    format = format.substr(0, format.find('\0'));
    const std::size_t start = target.size();
    for (std::size_t position = 0; position < format.size();) {
        std::size_t percent = position; // literal texts are short: faster than a call that searches
        while (percent < format.size() && format[percent] != '%')
            ++percent;
        const std::string_view literal = format.substr(position, percent - position);
        position = percent + 1;
        Conversion conversion;
        bool isValid = percent == format.size() || conversion.read(format, position, kSkippedLetters);
        if (conversion.letter() != '%') // "%%" drops itself and the literal text before it
            qb::text::append(target, literal);
        if (conversion.letter() != '%' && conversion.letter() != 0)
            isValid = isValid && isConversionLetter(conversion.letter()) && source.write(conversion, target);
        if (!isValid) {
            target.resize(start);
            return false;
        }
    }
    return true;
}

// One buffer serves text after text. It is taken away while one is made, because objects may fill formats for
// their own texts.
template <class Source>
Ref<NSString> filled(std::string_view format, Source source) {
    static std::string &buffer = *new std::string;
    std::string text = std::exchange(buffer, {});
    text.clear();
    Ref<NSString> result = NSString::initWith(fill(format, source, text) ? std::string_view(text) : format);
    if (text.capacity() <= kLargestBuffer)
        buffer = std::move(text);
    return result;
}

} // namespace

std::span<const qb::Method> qb::tables::stringRestrictedFormat() {
    static const qb::Method methods[] = {
        qb::classMethod<"stringWithRestrictedFormat:", NSString *(NSString *, const qb::ArgList &)>(
            &NSString::stringWithRestrictedFormatAndArglist),
        qb::classMethod<"stringWithRestrictedFormat:andArglist:",
                        NSString *(NSString *, const qb::ArgList &)>(
            &NSString::stringWithRestrictedFormatAndArglist),
        qb::classMethod<"stringWithRestrictedFormat:andObjects:">(
            &NSString::stringWithRestrictedFormatAndObjects),
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
    std::string text;
    append(fill(format->view(), ArgListSource(argList), text) ? std::string_view(text) : format->view());
}
