// Text.
#ifndef QBFOUNDATION_FOUNDATION_NSSTRING_H
#define QBFOUNDATION_FOUNDATION_NSSTRING_H

#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Foundation/NSRange.h>
#include <QBFoundation/Runtime/Selector.h>
#include <QBFoundation/Runtime/Value.h>

#include <compare>
#include <cstdint>
#include <string_view>

class NSArray;
class NSCalendarDate;
class NSCharacterSet;
class NSMutableString;

/// One UTF-16 unit.
using unichar = std::uint16_t;

/// The encodings that texts are converted from and to.
enum NSStringEncoding : std::uint32_t {
    NSASCIIStringEncoding = 1,
    NSUTF8StringEncoding = 4,
    NSISOLatin1StringEncoding = 5,
    NSUnicodeStringEncoding = 10 // UTF-16
};

/// How texts are searched and compared; values are or-ed together.
enum NSStringCompareOptions : std::uint32_t {
    NSCaseInsensitiveSearch = 1, // characters that differ in case only are equal
    NSLiteralSearch = 2,         // characters are compared as they stand, which is always so
    NSBackwardsSearch = 4,       // the last match instead of the first
    NSAnchoredSearch = 8         // only a match at the beginning, or backwards at the end
};

/// A text that does not change: bytes, which are UTF-8 unless somebody put other bytes in.
///
/// Positions and lengths count UTF-16 units of the leniently decoded text: a byte that is not part of valid
/// UTF-8 counts as one character. NUL bytes are kept; a C string of the text ends at the first. A short text
/// stands behind the object in the same piece of memory. Makers that can't get the memory for the bytes throw
/// std::bad_alloc, those given more than 2^32 - 2 bytes InvalidArgumentException.
///
/// A text is cut between characters only: a position inside a character of two units counts as the one in
/// front of it. Operations that take a position or range throw NSRangeException when it is not inside the
/// text, those that look at another text, but for equality, InvalidArgumentException when it is nil. What
/// returns a text returns an immutable one, the receiver itself when nothing changes; escaping and unescaping
/// for HTML and URLs return it also when it is mutable.
class QB_EXPORT NSString : public NSObject {
public:
    NSString() noexcept;
    ~NSString() override;

    using NSObject::operator new, NSObject::operator delete; // g++ wants both in one class
    static void *operator new(std::size_t size) { return NSObject::operator new(size); }
    static void operator delete(void *memory, std::size_t size) noexcept;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    // --- Creation ---

    /// Returns a string with the bytes of `bytes`, owned.
    static Ref<NSString> initWith(std::string_view bytes);
    /// Returns a string with the bytes of `bytes`, autoreleased.
    static NSString *stringWith(std::string_view bytes) { return initWith(bytes).autorelease(); }
    /// As `initWith`, of the class that was asked: the way of all makers that look at their class.
    static Ref<NSString> initOfClass(Class *asked, std::string_view bytes);

    static NSString *string() { return stringWith({}); }
    static NSString *stringWithString(NSString *other);
    /// Throws InvalidArgumentException when `text` is null, as all makers from C strings do.
    static NSString *stringWithCString(const char *text);
    static NSString *stringWithCString(const char *bytes, std::uint32_t length);
    static NSString *stringWithUTF8String(const char *text);
    /// Returns the text of `length` UTF-16 units; half of a pair alone becomes U+FFFD.
    static NSString *stringWithCharacters(const unichar *characters, std::uint32_t length) {
        return initWithCharacters(characters, length).autorelease();
    }
    static Ref<NSString> init() { return initWith({}); }
    static Ref<NSString> initWithString(NSString *other);
    static Ref<NSString> initWithCString(const char *text);
    static Ref<NSString> initWithCString(const char *bytes, std::uint32_t length);
    static Ref<NSString> initWithUTF8String(const char *text);
    static Ref<NSString> initWithCharacters(const unichar *characters, std::uint32_t length);
    /// Returns a string with the bytes as they are.
    static Ref<NSString> initWithBytes(const void *bytes, std::uint32_t length);
    /// Returns a string with the bytes of `data` as they are; nil gives the empty string.
    static Ref<NSString> initWithData(NSData *data);

    // --- Encodings ---

    /// Returns the text that the data holds in one of the encodings above. Returns nil for another encoding,
    /// and for data that are malformed in it; half of a UTF-16 pair alone becomes U+FFFD instead. Without a
    /// byte-order mark UTF-16 has the low byte first.
    static Ref<NSString> initWithData(NSData *data, std::uint32_t encoding);
    /// The encoding of C strings: NSUTF8StringEncoding.
    static std::uint32_t defaultCStringEncoding() { return NSUTF8StringEncoding; }
    /// Returns the encodings as number objects, autoreleased.
    static NSArray *availableStringEncodings();
    virtual BOOL canBeConvertedToEncoding(std::uint32_t encoding) const;
    /// Returns the text's bytes in that encoding, autoreleased, UTF-16 with a byte-order mark and the low
    /// byte first. Returns nil for an unknown encoding, and when the text has characters that the encoding
    /// has not, unless they may become "?".
    NSData *dataUsingEncoding(std::uint32_t encoding) const {
        return dataUsingEncoding(encoding, /*allowLossyConversion=*/NO);
    }
    virtual NSData *dataUsingEncoding(std::uint32_t encoding, BOOL allowLossyConversion) const;

    /// Returns a string of `length` bytes that `fill(char *)` writes in their place, owned.
    template <class F>
    static Ref<NSString> initFilled(std::size_t length, F &&fill) {
        char *bytes = nullptr;
        Ref<NSString> string = makeUnfilled(length, bytes);
        fill(bytes);
        return string;
    }

    // --- Files ---

    /// Returns the file's bytes as they are. Returns nil after 100039 (path) for a file that is not there,
    /// and 100023 (path, system text) for one that can't be read. Throws InvalidArgumentException for nil.
    static NSString *stringWithContentsOfFile(NSString *path) {
        return initWithContentsOfFile(path).autorelease();
    }
    static Ref<NSString> initWithContentsOfFile(NSString *path);
    /// Writes the bytes as a `QBFileOutputStream` does; NO when that raised an error, which is pending then.
    virtual BOOL writeToFile(NSString *path, BOOL atomically) const;

    // --- Bytes and characters ---

    /// The bytes, behind which a NUL stands.
    std::string_view view() const noexcept { return {bytes_, byteLength_}; }
    /// The bytes as a C string, valid as long as the string and, if it is mutable, until it changes.
    const char *cString() const noexcept { return bytes_; }
    const char *UTF8String() const noexcept { return bytes_; }
    std::uint32_t cStringLength() const noexcept { return byteLength_; }
    /// Copies the bytes and a NUL; `buffer` has room for `cStringLength` + 1 bytes.
    virtual void getCString(char *buffer) const;
    /// Copies as many whole characters as fit into `maxLength` bytes, and a NUL behind them.
    virtual void getCString(char *buffer, std::uint32_t maxLength) const;
    /// As above, of the characters of `range`. `remainingRange`, unless null, takes the range that found no
    /// room.
    virtual void getCString(char *buffer, std::uint32_t maxLength, NSRange range,
                            NSRange *remainingRange) const;
    /// How many UTF-16 units the text has.
    virtual std::uint32_t length() const;
    /// Returns the UTF-16 unit at `index`. Throws NSRangeException when there is none.
    virtual unichar characterAtIndex(std::uint32_t index) const;
    /// Stores all UTF-16 units, or those of `range`, in `buffer`, without a NUL.
    virtual void getCharacters(unichar *buffer) const;
    virtual void getCharacters(unichar *buffer, NSRange range) const;
    /// Whether all bytes are below 0x80, so that bytes, characters and units are the same.
    BOOL isAscii() const;

    // --- Comparison ---

    BOOL isEqual(id other) const override;
    virtual BOOL isEqualToString(NSString *other) const;
    std::uint32_t hash() const override;
    /// What `hash` returns unless a subclass overrides it.
    std::uint32_t ownHash() const { return hash_ ? hash_ : NSString::hash(); }
    /// As above when it was asked before; else 0.
    std::uint32_t knownHash() const { return hash_; }
    /// Orders by bytes, which for UTF-8 is the order of code points.
    /// Throws InvalidArgumentException when `other` is no string.
    NSComparisonResult compare(id other) const override;
    friend bool operator==(const NSString &a, const NSString &b) { return a.isEqual(b.self()); }
    friend std::strong_ordering operator<=>(const NSString &a, const NSString &b) {
        return a.compare(b.self()) <=> 0;
    }
    /// Orders by characters, with `NSCaseInsensitiveSearch` whatever their case; bytes that are no valid
    /// UTF-8 stand behind all characters then.
    virtual NSComparisonResult compare(NSString *other, std::uint32_t options) const;
    /// As above, with the characters of `range` instead of the whole text.
    virtual NSComparisonResult compare(NSString *other, std::uint32_t options, NSRange range) const;
    virtual NSComparisonResult caseInsensitiveCompare(NSString *other) const;
    /// Whether both texts are equal but for case; NO for nil.
    virtual BOOL isCaseEqualTo(NSString *other) const;

    // --- What every value answers ---

    BOOL containsData() const override { return byteLength_ != 0; }
    NSString *description() const override;
    NSString *stringValue() const override;
    const char *cStringValue() const override { return bytes_; }
    /// Returns the bytes as they are.
    NSData *asData() const override;
    /// Returns the number that the text is, blanks around it aside: an integer of 32 or 64 bits or a
    /// floating-point number; nil for any other text.
    NSNumber *asNumber() const override;
    NSString *asPhpString() const override;
    Ref<NSObject> copyWithZone(void *zone) const override;
    Ref<NSObject> mutableCopyWithZone(void *zone) const override;
    Ref<NSString> copy() const;
    Ref<NSMutableString> mutableCopy() const;
    void encodeWithCoder(NSCoder *coder) const override;
    void writeOnOutputStream(QBOutputStream *stream) override;
    /// Returns the path that is this text.
    QBPath *asQbPath() const override;

    // --- Formats ---

    /// Returns `format`, filled with the values as printf does, autoreleased; nil for a nil format.
    ///
    /// "%@" takes an object and writes its description, "(null)" for nil; "%%" is one per cent sign. A value
    /// of another kind than its conversion wants, or a missing one, makes the format invalid: the result is
    /// its own text then. A conversion that the format ends in is left out. Widths and precisions count
    /// bytes, also within characters; those of "*" are taken from the values.
    template <class... V>
    static NSString *stringWithFormat(NSString *format, const V &...values) {
        return qb::withArgList(
            [&](const qb::ArgList &list) { return stringWithFormatWithArgList(format, list); }, values...);
    }
    static NSString *stringWithFormatWithArgList(NSString *format, const qb::ArgList &argList) {
        return initWithFormatArguments(format, argList).autorelease();
    }
    template <class... V>
    static Ref<NSString> initWithFormat(NSString *format, const V &...values) {
        return qb::withArgList([&](const qb::ArgList &list) { return initWithFormatArguments(format, list); },
                               values...);
    }
    /// The selector `initWithFormat:arguments:`.
    static Ref<NSString> initWithFormatArguments(NSString *format, const qb::ArgList &arguments);
    /// Returns the text with `format` filled behind it; nil appends nothing.
    template <class... V>
    NSString *stringByAppendingFormat(NSString *format, const V &...values) const {
        return qb::withArgList(
            [&](const qb::ArgList &list) { return stringByAppendingFormatWithArgList(format, list); },
            values...);
    }
    virtual NSString *stringByAppendingFormatWithArgList(NSString *format, const qb::ArgList &argList) const;

    // --- Substrings ---

    virtual NSString *substringFromIndex(std::uint32_t index) const;
    virtual NSString *substringToIndex(std::uint32_t index) const;
    virtual NSString *substringWithRange(NSRange range) const;
    /// Returns the characters with which both texts begin; options as for `compare:options:`.
    NSString *commonPrefixWithString(NSString *other) const { return commonPrefixWithString(other, 0); }
    virtual NSString *commonPrefixWithString(NSString *other, std::uint32_t options) const;

    // --- Searching ---

    /// Returns where `string` stands first, as options of NSStringCompareOptions want it; {NSNotFound, 0}
    /// when it does not, and for the empty text.
    NSRange rangeOfString(NSString *string) const { return rangeOfString(string, 0); }
    NSRange rangeOfString(NSString *string, std::uint32_t options) const;
    /// As above, of the places inside `range`.
    virtual NSRange rangeOfString(NSString *string, std::uint32_t options, NSRange range) const;
    /// Whether the text begins with, ends with, contains the other; each text does so with the empty one.
    virtual BOOL hasPrefix(NSString *prefix) const;
    virtual BOOL hasSuffix(NSString *suffix) const;
    virtual BOOL containsString(NSString *string) const;
    /// Returns where the first character stands that is in the set; {NSNotFound, 0} when there is none. Of
    /// the options `NSBackwardsSearch` and `NSAnchoredSearch` count.
    NSRange rangeOfCharacterFromSet(NSCharacterSet *set) const { return rangeOfCharacterFromSet(set, 0); }
    NSRange rangeOfCharacterFromSet(NSCharacterSet *set, std::uint32_t options) const;
    virtual NSRange rangeOfCharacterFromSet(NSCharacterSet *set, std::uint32_t options, NSRange range) const;

    // --- Lines ---

    /// Stores where the first line begins that the range touches, where the last one ends with its line end,
    /// and where its line end begins; null for what is not wanted. Line ends are "\n", "\r", "\r\n", U+0085,
    /// U+2028 and U+2029.
    virtual void getLineStart(std::uint32_t *start, std::uint32_t *end, std::uint32_t *contentsEnd,
                              NSRange forRange) const;
    /// Returns the range of the lines that the range touches, line ends included.
    virtual NSRange lineRangeForRange(NSRange range) const;
    /// Returns the text cut to that length, or with `withString` behind it, from `startingAtIndex` on and
    /// again and again, until it has that length. A character of two units is not cut.
    virtual NSString *stringByPaddingToLength(std::uint32_t newLength, NSString *withString,
                                              std::uint32_t startingAtIndex) const;

    // --- Splitting and joining ---

    /// Returns what stands between the separators, one piece more than there are separators, some of them
    /// perhaps empty. The empty separator splits nothing.
    virtual NSArray *componentsSeparatedByString(NSString *separator) const;
    /// As above, split at the first `count` separators only: the last piece is the rest of the text.
    virtual NSArray *componentsSeparatedByString(NSString *separator, std::uint32_t count) const;
    /// As above; each character of the set is a separator.
    virtual NSArray *componentsSeparatedByCharactersInSet(NSCharacterSet *set) const;
    /// Returns the text without the characters of the set at its beginning and its end.
    virtual NSString *stringByTrimmingCharactersInSet(NSCharacterSet *set) const;
    /// Returns the text with the other behind it; nil appends nothing.
    virtual NSString *stringByAppendingString(NSString *string) const;
    /// Returns the text with each `target` replaced; nothing is replaced for the empty one. Nil for
    /// `withString` removes.
    virtual NSString *stringByReplacingOccurrencesOfString(NSString *target, NSString *withString) const;
    virtual NSString *stringByReplacingSubstring(NSString *substring, NSString *withString) const;
    virtual NSString *stringByReplacingCharactersInRange(NSRange range, NSString *withString) const;

    // --- Case ---

    /// Return the text in the other case, character by character, in any language; see Unicode's simple case
    /// mappings. What has no single counterpart stays.
    virtual NSString *uppercaseString() const;
    virtual NSString *lowercaseString() const;
    /// The first character of each word in upper case, the others in lower case; words are what stands
    /// between blanks, tabs and line ends.
    virtual NSString *capitalizedString() const;

    // --- Numbers ---

    /// Return the number with which the text begins, blanks in front of it skipped; 0 when there is none, the
    /// nearest value that the type has when it is out of range. Integers are decimal.
    virtual std::int32_t intValue() const;
    virtual std::uint32_t unsignedIntValue() const;
    virtual std::int64_t longLongValue() const;
    virtual std::uint64_t unsignedLongLongValue() const;
    virtual float floatValue() const;
    virtual double doubleValue() const;
    /// Whether the text begins, behind blanks, a sign and zeros, with one of 1 to 9, Y, y, T, t.
    virtual BOOL boolValue() const;

    // --- Paths ---

    /// Whether the text begins with "/".
    virtual BOOL isAbsolutePath() const;
    /// Returns the components, without empty ones; a "/" at the beginning or at the end is one by itself.
    virtual NSArray *pathComponents() const;
    /// Returns the components joined with one "/" between them, and none at the end.
    static NSString *pathWithComponents(NSArray *components);
    /// Returns the last component, slashes at the end aside; "/" for a path of slashes only.
    virtual NSString *lastPathComponent() const;
    /// Returns the path in front of the last component: "" of "a", "/" of "/a".
    virtual NSString *stringByDeletingLastPathComponent() const;
    /// Returns the path with one "/" and the component behind it; the component alone behind the empty path.
    virtual NSString *stringByAppendingPathComponent(NSString *component) const;
    /// Returns what stands behind the last "." of the last component; "" without one, or when only dots
    /// stand in front of it.
    virtual NSString *pathExtension() const;
    /// Returns the path without its extension and the "." in front of it, and without slashes at the end.
    virtual NSString *stringByDeletingPathExtension() const;
    /// Returns the path with "." and the extension behind its last component; the path itself for the empty
    /// extension, and when there is no component.
    virtual NSString *stringByAppendingPathExtension(NSString *extension) const;
    /// Returns the path with "~" or "~name" at its beginning replaced by the home directory of the caller or
    /// of that user; the path itself when it has none, or nobody has that name.
    virtual NSString *stringByExpandingTildeInPath() const;
    /// Returns the path with the caller's home directory at its beginning replaced by "~".
    virtual NSString *stringByAbbreviatingWithTildeInPath() const;
    /// Returns the paths that have each of the strings as a further component, autoreleased.
    virtual NSArray *stringsByAppendingPaths(NSArray *paths) const;
    /// Returns the path as the system wants it, valid as long as `cString`.
    /// Throws InvalidArgumentException when the text has a NUL, which no path can have.
    virtual const char *fileSystemRepresentation() const;
    /// Stores that with its NUL, if `maxLength` bytes are room enough; NO when not, or when it has a NUL.
    virtual BOOL getFileSystemRepresentation(char *buffer, std::uint32_t maxLength) const;
    /// Returns the path with a tilde expanded, empty and "." components removed, and in an absolute path ".."
    /// with the component in front of it. The file system is not asked.
    virtual NSString *stringByStandardizingPath() const;

    // --- Representations ---

    /// Returns the text as property lists write it: as it is when it is of letters, digits and `_ $ . : / -`
    /// only, else in double quotes with escapes; see `QBPropertyListOutputStream`.
    virtual NSString *stringRepresentation() const;
    /// Returns the text with "_" for each byte that is no ASCII letter, digit or underscore, so that it may
    /// be a part of any name. A digit stays a digit, at the beginning too.
    virtual NSString *asLegalNameString() const;

    // --- RestrictedFormat ---

    /// Returns `format`, filled with the values, autoreleased; nil for a nil format.
    ///
    /// Conversions are d i o u x X, e E f g, c and s, with the flags, widths and precisions of printf; the
    /// length letters L Z l q are skipped. "%%" drops itself and the literal text in front of it. A value of
    /// another kind than its conversion wants, a missing one, or an unknown conversion makes the format
    /// invalid: the result is the format's own text then. "%s" takes C strings and strings.
    template <class... V>
    static NSString *stringWithRestrictedFormat(NSString *format, const V &...values) {
        return qb::withArgList(
            [&](const qb::ArgList &list) { return stringWithRestrictedFormatAndArglist(format, list); },
            values...);
    }
    template <class... V>
    static NSString *stringWithRestrictedFormat(const char *format, const V &...values) {
        return qb::withArgList(
            [&](const qb::ArgList &list) { return stringWithRestrictedFormatAndArglist(format, list); },
            values...);
    }
    static NSString *stringWithRestrictedFormatAndArglist(NSString *format, const qb::ArgList &argList);
    static NSString *stringWithRestrictedFormatAndArglist(const char *format, const qb::ArgList &argList);
    /// As `stringWithRestrictedFormat:`, with the values of objects: their `intValue`, `floatValue`,
    /// `cStringValue`. When the objects run out, "%s" makes the format invalid, and the other conversions
    /// write nothing.
    static NSString *stringWithRestrictedFormatAndObjects(NSString *format, NSArray *objects);

    // --- ISODateTime ---

    /// Returns now as 17 digits, autoreleased: year, month, day, hour, minute and second in GMT, then the
    /// milliseconds. Seconds and milliseconds come from two readings of the clock.
    static NSString *currentDateAsISODateTimeStringWithMilliSeconds();
    /// Whether the text, up to its first NUL, is 14 digits; 17 digits.
    BOOL isIsoDateTimeString() const override;
    virtual BOOL isIsoDateTimeStringWithMilliseconds() const;
    /// Returns the date, in GMT, of a text of 14 characters, autoreleased; nil when it has another length.
    ///
    /// Year, month, day, hour, minute and second are the numbers with which their characters begin, see
    /// `intValue`, and are brought into their ranges. Each February has 29 days for that, and its 29th may
    /// become 1 March. A year below 1 is the current one.
    virtual NSCalendarDate *asDateFromISODateTimeString() const;
    /// As above of the first 14 of 17 digits; nil for any other text.
    virtual NSCalendarDate *asDateFromISODateTimeStringWithMilliseconds() const;
    /// Returns the 14 digits of the date that the text's first 14 characters are, with zeros for what is
    /// missing at their end: "20040101000000" for "2004". Nil for the empty text.
    id standardizedISODateTimeString() const override;

    // --- DateParsing ---

    /// Returns the seconds since 1970 of a date of HTTP (RFC 9110, section 5.6.7) in one of its three forms:
    /// "Sun, 06 Nov 1994 08:49:37 GMT", "Sunday, 06-Nov-94 08:49:37 GMT", "Sun Nov  6 08:49:37 1994"; 0 for
    /// any other text.
    ///
    /// The day of the week and the zone are not looked at. Two digits below 70 are a year after 2000. Years
    /// are 1970 to 2037, and days are those that the calendar has.
    virtual std::int32_t ctimeFromHTTPDate() const;

    // --- RegularExpression ---

    /// Whether `pattern`, an extended regular expression, matches anywhere in the text; see
    /// `QBRegularExpression`, which also says when it raises 100229.
    virtual BOOL matches(NSString *pattern) const;

    // --- HTMLEscaping ---

    /// Where escaping goes on: called at a skip character, with its position and the end of the text.
    using SkipFunction = const char *(*)(const char *position, const char *end);

    /// Returns the text with <, >, & and " as entities; the receiver itself when there is nothing to replace,
    /// as all of these operations do.
    virtual NSString *stringWithEscapedHtml() const;
    virtual NSString *stringWithEscapedHtmlLTandGTandAMP() const;
    virtual NSString *stringWithEscapedHtmlQuotes() const;
    virtual NSString *stringWithEscapedHtmlQuotesSkipWith(SkipFunction skipFunction, char on) const;
    /// The general form: replaces the characters whose flags are set. At each byte `on`, `skipWith` (or null)
    /// says where to go on; what it skips stays as it is. The end that it is given is the start plus
    /// `length`.
    virtual NSString *stringWithEscapedHtmlLT(BOOL lt, BOOL gt, BOOL amp, BOOL quot, SkipFunction skipWith,
                                              char on) const;
    /// Replaces the "&" of each entity by its character; the rest of the entity stays: "&lt;" gives "<lt;".
    virtual NSString *stringWithUnescapedHtml() const;
    virtual NSString *stringWithUnescapedHtmlLTandGTandAMP() const;
    virtual NSString *stringWithUnescapedHtmlQuotes() const;
    virtual NSString *stringWithUnescapedHtmlLT(BOOL lt, BOOL gt, BOOL amp, BOOL quot) const;

    // --- UTF8Conversion ---

    /// Returns the byte offset of the character with index `count`; 0 for a negative one. Sequences of up to
    /// six bytes are characters. Stops at the end of the text, and raises 100231 (byte offset) at an invalid
    /// sequence, whose offset it returns.
    static std::int32_t _indexOfUtf8Index(std::int32_t count, const char *in);
    /// Returns the number of characters, up to the first invalid sequence, which raises 100231 (byte offset).
    virtual std::int32_t utf8CharCount() const;
    /// Raises 100231 (byte offset) when there is an invalid sequence.
    virtual void verifyUTF8() const { utf8CharCount(); }
    /// Returns `length` characters from `index` on; the empty string when the text is malformed up to
    /// there; that error, 100231 (byte offset), then stands behind those that were pending.
    virtual NSString *utf8SubstringFromIndex(std::int32_t index, std::int32_t length) const;
    /// Returns the byte offset of the first invalid sequence, -1 when there is none. Leaves no error.
    virtual std::int32_t indexOfFirstCorruptUtf8Character() const;
    /// Returns the byte offset of the first valid sequence; the text's length in bytes when there is none.
    virtual std::int32_t indexOfFirstCorrectUtf8Character() const;
    /// Raises 100242 (code point) for each character that lies in one of the `count` ranges, both ends
    /// included; an invalid sequence raises 100231 (byte offset) and ends the check.
    static void verifyUTF8(const char *text, const NSRange *withInvalidRanges, std::uint32_t count);
    virtual void verifyUTF8WithInvalidRanges(const NSRange *ranges, std::uint32_t count) const;
    /// Writes the shortest sequence for `codePoint`, up to 31 bits, at once; a negative one writes nothing.
    static void writeUtf8CharForUnicodePos(std::int32_t codePoint, QBOutputStream *to);

    // --- HTUrlEscaping ---

    /// Returns the text with each byte that is neither a letter, digit or underscore nor punctuation in the
    /// current locale as "%" and two characters, the halves of the byte, each added to "0": a blank gives
    /// "%20", a line end "%0:". So "/", "?", "&", "=", "%" and "+" stay, and what `urlUnEscape` makes of the
    /// result is not always the text.
    virtual NSString *urlEscape() const;
    /// Returns the text with "+" as a blank, and "%" and two hexadecimal digits as their byte. A digit alone
    /// is the upper half of a byte, "%" at the end is dropped, and any other character counts as its code
    /// less 87.
    virtual NSString *urlUnEscape() const;

    // --- moneySupport ---

    /// Returns the amount in cents: "12.34" and "12,34" are 1234, "12" is 1200; "1,5" is 15, as a single
    /// decimal is not filled up. The nearest value of 32 bits when it is out of range.
    virtual std::int32_t intFromMoneyString() const;
    virtual NSNumber *intNumberFromMoneyString() const;

    // --- Base64Coding ---

    /// Returns the bytes of which the text is base64; see `QBBase64OutputFilter`. Raises 50052 at a group
    /// that is none; the result has the bytes in front of it.
    virtual NSData *decodeBase64() const;

    // --- UUdecode ---

    /// Returns the bytes that uuencode made the text of.
    ///
    /// Lines up to one that begins with "begin " are skipped when there is such a line; one that begins with
    /// "end", or the end of the text, ends the data. A line is its count of bytes and their groups of four
    /// characters; blanks that are missing at its end are filled in, and what stands behind the groups is
    /// ignored. A character outside the table ends the data and raises 900006 (line, column). The base64 form
    /// of the program ("begin-base64") is no such text.
    virtual NSData *uudecode() const;

    // --- HexString ---

    /// Returns the bytes as lower-case hexadecimal digits, two a byte.
    virtual NSString *asHexString() const;
    /// Returns the bytes that the hexadecimal digits stand for, in either case, with blanks between them;
    /// nil and 900007 (byte offset) for any other text.
    virtual NSData *dataFromHexString() const;

    // --- PropertyList ---

    /// Returns the value that the text is as a property list: strings, data, arrays, dictionaries.
    ///
    /// nil when the text is malformed, nested more than 512 levels deep, or holds a key twice; then raises
    /// 900001 (line, column, what was expected).
    virtual id propertyList() const;
    /// Returns the dictionary whose entries "key = value;" the text is, without braces; "key;" has the key as
    /// its value. Else as above.
    virtual NSDictionary *propertyListFromStringsFileFormat() const;

protected:
    /// Takes over the text's bytes; the initialiser `initWithCString:length:` of subclasses.
    virtual BOOL setUpWithBytes(const char *bytes, std::uint32_t length);
    BOOL setUpWithCoder(NSCoder *coder) override;
    /// Replaces the bytes by a copy of others, for mutable subclasses.
    void replaceBytes(std::uint32_t from, std::uint32_t length, std::string_view by);
    /// The bytes of `range`. Throws NSRangeException, naming the selector, when it is not inside the text.
    std::string_view viewOfRange(NSRange range, const char *selector) const;
    /// The range of a piece of `view()`, cut between characters.
    NSRange rangeOfView(std::string_view piece) const;
    /// Return the text itself; the first a copy when it is mutable.
    NSString *unchanged() const { return copy().autorelease(); }
    NSString *itself() const { return Ref<NSString>(static_cast<NSString *>(self())).autorelease(); }
    /// `text`, as the text itself when that is the same.
    NSString *converted(std::string_view text) const {
        return text == view() ? unchanged() : stringWith(text);
    }

    static constexpr std::uint32_t kLongestText = UINT32_MAX - 1;

    /// For constants: `text` is not copied, is there for ever, and has a NUL behind it.
    constexpr explicit NSString(std::string_view text) noexcept
        : bytes_(text.data()), byteLength_(static_cast<std::uint32_t>(text.size())) {}

private:
    friend class NSMutableString;
    friend class QBStringOutputStream; // whose buffer becomes a string's

    enum Flags : std::uint8_t {
        kKnowsAscii = 1,
        kIsAscii = 2,
        kOwnsBytes = 4,
        kHasPlace = 8, // unless other texts took the note of the last place, or of the length, over
        kHasLength = 16
    };

    /// A character's beginning, counted both ways.
    struct Place {
        std::uint32_t unit = 0, byte = 0;
    };

    NSString(const char *bytes, std::uint32_t length, std::uint8_t flags) noexcept
        : bytes_(bytes), byteLength_(length), flags_(flags) {}
    static Ref<NSString> makeUnfilled(std::size_t length, char *&bytes);
    void learnAscii() const;
    Place placeOfUnit(std::uint32_t unit) const;
    Place placeOfByte(std::uint32_t byte) const;
    Place lastPlace() const;
    Place notePlace(Place place) const;
    NSString *replacing(NSString *target, NSString *withString, const char *selector) const;
    void reserve(std::uint64_t byteLength);
    void endAt(std::size_t length);
    char *ownBytes() { return const_cast<char *>(bytes_); }

    mutable std::uint32_t hash_ = 0; // 0: not known
    const char *bytes_;
    std::uint32_t byteLength_ = 0;
    std::uint32_t capacity_ = 0; // of bytes that the string owns, the NUL not counted
    mutable std::uint8_t flags_ = 0;
};

/// A constant string: `"text"_ns`. It is never freed.
template <qb::FixedString Text>
NSString *operator""_ns() {
    static NSString *const constant = NSString::initWith(Text.view()).detach();
    return constant;
}

template <>
struct std::hash<NSString> : qb::ValueHash {};

#endif
