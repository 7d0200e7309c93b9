// Text that can change.
#ifndef QBFOUNDATION_FOUNDATION_NSMUTABLESTRING_H
#define QBFOUNDATION_FOUNDATION_NSMUTABLESTRING_H

#include <QBFoundation/Foundation/NSString.h>

/// A text that can change. Its positions are those of `NSString`.
class QB_EXPORT NSMutableString : public NSString {
public:
    NSMutableString() = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    static Ref<NSMutableString> initWith(std::string_view bytes);
    static NSMutableString *stringWith(std::string_view bytes) { return initWith(bytes).autorelease(); }
    static NSMutableString *string() { return stringWith({}); }
    static NSMutableString *stringWithString(NSString *other);
    static NSMutableString *stringWithCString(const char *text);
    static NSMutableString *stringWithCString(const char *bytes, std::uint32_t length);
    /// Returns an empty string with room for `capacity` bytes.
    static NSMutableString *stringWithCapacity(std::uint32_t capacity) {
        return initWithCapacity(capacity).autorelease();
    }
    static Ref<NSMutableString> init() { return initWith({}); }
    static Ref<NSMutableString> initWithCapacity(std::uint32_t capacity);
    static Ref<NSMutableString> initWithString(NSString *other);
    static NSMutableString *stringWithUTF8String(const char *text);
    static NSMutableString *stringWithCharacters(const unichar *characters, std::uint32_t length) {
        return initWithCharacters(characters, length).autorelease();
    }
    static Ref<NSMutableString> initWithCString(const char *text);
    static Ref<NSMutableString> initWithCString(const char *bytes, std::uint32_t length);
    static Ref<NSMutableString> initWithUTF8String(const char *text);
    static Ref<NSMutableString> initWithCharacters(const unichar *characters, std::uint32_t length);
    static Ref<NSMutableString> initWithBytes(const void *bytes, std::uint32_t length);
    static Ref<NSMutableString> initWithData(NSData *data);
    static Ref<NSMutableString> initWithData(NSData *data, std::uint32_t encoding);
    template <class... V>
    static NSMutableString *stringWithFormat(NSString *format, const V &...values) {
        return initWithFormat(format, values...).autorelease();
    }
    template <class... V>
    static Ref<NSMutableString> initWithFormat(NSString *format, const V &...values) {
        return qb::withArgList([&](const qb::ArgList &list) { return initWithFormatArguments(format, list); },
                               values...);
    }
    static NSMutableString *stringWithFormatWithArgList(NSString *format, const qb::ArgList &argList) {
        return initWithFormatArguments(format, argList).autorelease();
    }
    template <class Format, class... V>
    static NSMutableString *stringWithRestrictedFormat(Format format, const V &...values) {
        return made(NSString::stringWithRestrictedFormat(format, values...));
    }
    template <class Format>
    static NSMutableString *stringWithRestrictedFormatAndArglist(Format format, const qb::ArgList &argList) {
        return made(NSString::stringWithRestrictedFormatAndArglist(format, argList));
    }
    static NSMutableString *stringWithRestrictedFormatAndObjects(NSString *format, NSArray *objects) {
        return made(NSString::stringWithRestrictedFormatAndObjects(format, objects));
    }
    static Ref<NSMutableString> initWithFormatArguments(NSString *format, const qb::ArgList &arguments);
    static NSMutableString *stringWithContentsOfFile(NSString *path) {
        return initWithContentsOfFile(path).autorelease();
    }
    static Ref<NSMutableString> initWithContentsOfFile(NSString *path);

    /// Appends; nil appends nothing.
    virtual void appendString(NSString *string);
    /// Appends bytes as they are.
    void append(std::string_view bytes);
    virtual void setString(NSString *string);
    /// Replaces the characters of `range` by `string`; nil removes them.
    /// Throws NSRangeException when the range is not inside the text.
    virtual void replaceCharactersInRange(NSRange range, NSString *withString);
    /// Inserts in front of the character at `atIndex`; nil inserts nothing.
    virtual void insertString(NSString *string, std::uint32_t atIndex);
    virtual void deleteCharactersInRange(NSRange range);
    /// Replaces each `target` inside `range` that the options find, from the front or backwards, none of
    /// which overlaps another. Returns how many there were; none for the empty text.
    virtual std::uint32_t replaceOccurrencesOfString(NSString *target, NSString *withString,
                                                     std::uint32_t options, NSRange range);

    /// Appends `format` filled with the values; see `stringWithFormat:`. Nil appends nothing.
    template <class... V>
    void appendFormat(NSString *format, const V &...values) {
        qb::withArgList([&](const qb::ArgList &list) { appendFormatWithArgList(format, list); }, values...);
    }
    virtual void appendFormatWithArgList(NSString *format, const qb::ArgList &argList);

    /// Appends `format` filled with the values; see `stringWithRestrictedFormat:`.
    template <class... V>
    void appendRestrictedFormat(NSString *format, const V &...values) {
        qb::withArgList([&](const qb::ArgList &list) { appendRestrictedFormatWithArgList(format, list); },
                        values...);
    }
    virtual void appendRestrictedFormatWithArgList(NSString *format, const qb::ArgList &argList);

    Ref<NSObject> copyWithZone(void *zone) const override;
    id makeMutable() const override { return self(); }
    NSString *description() const override;
    NSString *stringValue() const override;

protected:
    virtual BOOL setUpWithCapacity(std::uint32_t capacity);

private:
    static NSMutableString *made(NSString *text) { return text ? stringWithString(text) : nullptr; }
    void replaceRange(NSRange range, NSString *by, const char *selector);
};

template <>
struct std::hash<NSMutableString> : qb::ValueHash {};

#endif
