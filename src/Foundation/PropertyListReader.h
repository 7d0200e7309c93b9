// Reading of property-list text.
#ifndef QBFOUNDATION_FOUNDATION_PROPERTYLISTREADER_H
#define QBFOUNDATION_FOUNDATION_PROPERTYLISTREADER_H

#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/Ref.h>

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

namespace qb {

/// Why and where a property list could not be read.
struct PropertyListFailure {
    const char *expected = nullptr; // what should have stood there; null: nothing failed
    std::uint32_t line = 0;         // from 1 on
    std::uint32_t column = 0;       // in characters, from 1 on
};

/// Reads one text: strings, data, arrays and dictionaries, with comments and an optional byte-order mark.
///
/// Nesting is bounded, because each level takes some stack. Keys that stand again and again share one string.
class PropertyListReader {
public:
    /// Deeper nesting is an error.
    static constexpr unsigned kDeepestNesting = 512;

    explicit PropertyListReader(std::string_view text)
        : begin_(text.data()), position_(text.data()), end_(text.data() + text.size()) {}

    /// Returns the value; null when the text is malformed or has more than one value.
    Ref<NSObject> read();
    /// Returns the dictionary whose entries the text holds, without braces; an entry "key;" has the key as
    /// value, too.
    Ref<NSObject> readEntries();
    PropertyListFailure failure() const;
    /// The failure that the value which was read is not `expected`.
    PropertyListFailure otherValue(const char *expected) const { return failureAt(value_, expected); }

private:
    static constexpr std::size_t kSharedKeys = 256;

    /// A key that stands again and again.
    struct SharedKey {
        Ref<NSString> key;
        std::uint32_t bareLength = 0; // 0: it was quoted
        std::uint32_t next = 0;       // the number of the key that stood behind it last
    };

    Ref<NSObject> readValue();
    Ref<NSObject> readArray();
    Ref<NSObject> readDictionary();
    Ref<NSObject> readData();
    Ref<NSString> readKey(const char *expected);
    bool isBareAt(const SharedKey &expected) const;
    bool readEntry();
    bool readEntryValue(const char *start, Ref<NSString> key);
    void addEntry(const char *start, Ref<NSObject> key, Ref<NSObject> value);
    bool readEqualSign();
    bool readText(std::string_view &text, const char *expected);
    bool readQuoted(std::string_view &text);
    bool readEscape();
    void appendUnescaped(const char *start);
    bool readOctal();
    bool readUnicode();
    bool readHexUnit(std::uint32_t &unit);
    Ref<NSObject> takeDictionary(std::size_t firstEntry);

    void skipByteOrderMark();
    /// Skips white space and comments. Returns false when a comment is not closed.
    bool skipBlanks() {
        const bool isAtText = position_ != end_ && *position_ > ' ' && *position_ != '/';
        return isAtText || skipSomeBlanks();
    }
    bool skipSomeBlanks();
    bool skipComment();
    bool accept(char character);
    bool fail(const char *expected);
    PropertyListFailure failureAt(const char *position, const char *expected) const;

    const char *begin_; // behind the byte-order mark
    const char *position_;
    const char *const end_;
    const char *value_ = nullptr; // the beginning of the whole
    unsigned depth_ = 0;
    const char *expected_ = nullptr;
    std::vector<char> unescaped_; // of the quoted string being read
    std::size_t unescapedLength_ = 0;
    std::vector<Ref<NSObject>> unfinished_;  // the elements, keys and values of the containers being read
    std::vector<const char *> keyPositions_; // of the keys in there
    std::vector<id> elements_;               // of the array being made
    std::array<SharedKey, kSharedKeys> keys_;
    SharedKey *lastKey_ = keys_.data();
};

} // namespace qb

#endif
