#include "Foundation/PropertyListReader.h"

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSDictionary.h>

#include "Text/Bytes.h"
#include "Text/Hash.h"
#include "Text/Hex.h"
#include "Text/PlistBlock.h"
#include "Text/Scan.h"
#include "Text/Utf8.h"

#include <algorithm>
#include <array>

namespace qb {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool isOctal(char character) {
    return character >= '0' && character <= '7';
}

// The characters that escapes of one letter stand for; others stand for themselves.
constexpr auto kEscapedCharacters = [] {
    std::array<char, 256> characters{};
    for (std::size_t letter = 0; letter < characters.size(); ++letter)
        characters[letter] = static_cast<char>(letter);
    characters['a'] = '\a';
    characters['b'] = '\b';
    characters['f'] = '\f';
    characters['n'] = '\n';
    characters['r'] = '\r';
    characters['t'] = '\t';
    characters['v'] = '\v';
    return characters;
}();

} // namespace

void PropertyListReader::skipByteOrderMark() {
    if (std::string_view(begin_, static_cast<std::size_t>(end_ - begin_)).starts_with(kByteOrderMark))
        position_ = begin_ += kByteOrderMark.size();
}

Ref<NSObject> PropertyListReader::read() {
    skipByteOrderMark();
    if (!skipBlanks())
        return nullptr;
    value_ = position_;
    Ref<NSObject> value = readValue();
    if (!value || !skipBlanks())
        return nullptr;
    if (position_ != end_) {
        fail("the end of the text");
        return nullptr;
    }
    return value;
}

Ref<NSObject> PropertyListReader::readEntries() {
    skipByteOrderMark();
    for (;;) {
        if (!skipBlanks())
            return nullptr;
        if (position_ == end_)
            return takeDictionary(0);
        const char *const start = position_;
        Ref<NSString> key = readKey("a key");
        if (!key || !skipBlanks())
            return nullptr;
        if (position_ == end_ || *position_ == ';')
            addEntry(start, key, key);
        else if (!readEntryValue(start, std::move(key)))
            return nullptr;
        if (!accept(';') && position_ != end_) {
            fail("';'");
            return nullptr;
        }
    }
}

PropertyListFailure PropertyListReader::failure() const {
    return expected_ ? failureAt(position_, expected_) : PropertyListFailure();
}

PropertyListFailure PropertyListReader::failureAt(const char *position, const char *expected) const {
    const char *const lineStart =
        std::find(std::reverse_iterator(position), std::reverse_iterator(begin_), '\n').base();
    const auto line = static_cast<std::uint32_t>(std::count(begin_, position, '\n') + 1);
    const std::size_t before = text::utf16Units(lineStart, static_cast<std::size_t>(position - lineStart));
    return {expected, line, static_cast<std::uint32_t>(before + 1)};
}

// The first failure is the one that counts.
bool PropertyListReader::fail(const char *expected) {
    if (!expected_)
        expected_ = expected;
    return false;
}

bool PropertyListReader::skipComment() {
    if (position_[1] == '/') {
        position_ = text::findByte(position_, end_, '\n');
        return true;
    }
    const std::string_view rest(position_ + 2, static_cast<std::size_t>(end_ - position_ - 2));
    const std::size_t close = rest.find("*/");
    if (close == std::string_view::npos)
        return fail("a comment that is closed");
    position_ += 2 + close + 2;
    return true;
}

bool PropertyListReader::skipSomeBlanks() {
    for (;;) {
        position_ = text::findNoBlank(position_, end_);
        if (position_ == end_ || *position_ != '/')
            return true;
        if (end_ - position_ < 2 || (position_[1] != '/' && position_[1] != '*'))
            return true;
        if (!skipComment())
            return false;
    }
}

bool PropertyListReader::accept(char character) {
    if (position_ == end_ || *position_ != character)
        return false;
    ++position_;
    return true;
}

Ref<NSObject> PropertyListReader::readValue() {
    if (position_ == end_) {
        fail("a value");
        return nullptr;
    }
    switch (*position_) {
    case '(':
    case '{': {
        if (depth_ == kDeepestNesting) {
            fail("less deep nesting");
            return nullptr;
        }
        ++depth_;
        Ref<NSObject> container = *position_ == '(' ? readArray() : readDictionary();
        --depth_;
        return container;
    }
    case '<':
        return readData();
    default: {
        std::string_view text;
        return readText(text, "a value") ? Ref<NSObject>(NSString::initWith(text)) : nullptr;
    }
    }
}

Ref<NSObject> PropertyListReader::readArray() {
    const std::size_t first = unfinished_.size();
    ++position_;
    for (;;) {
        if (!skipBlanks())
            return nullptr;
        if (accept(')'))
            break;
        if (position_ == end_) {
            fail("a value or ')'");
            return nullptr;
        }
        Ref<NSObject> element = readValue();
        if (!element || !skipBlanks())
            return nullptr;
        unfinished_.push_back(std::move(element));
        if (!accept(',') && (position_ == end_ || *position_ != ')')) {
            fail("',' or ')'");
            return nullptr;
        }
    }
    elements_.assign(unfinished_.begin() + static_cast<std::ptrdiff_t>(first), unfinished_.end());
    Ref<NSObject> array = NSArray::initWith(elements_);
    unfinished_.resize(first);
    return array;
}

bool PropertyListReader::readEntry() {
    const char *const start = position_;
    Ref<NSString> key = readKey("a key or '}'");
    if (!key || !readEntryValue(start, std::move(key)))
        return false;
    return accept(';') || (position_ != end_ && *position_ == '}') || fail("';' or '}'");
}

// Reads what stands between the key, which begins at `start` and is read, and the end of the entry.
bool PropertyListReader::readEntryValue(const char *start, Ref<NSString> key) {
    if (!readEqualSign())
        return false;
    Ref<NSObject> value = readValue();
    if (!value || !skipBlanks())
        return false;
    addEntry(start, std::move(key), std::move(value));
    return true;
}

void PropertyListReader::addEntry(const char *start, Ref<NSObject> key, Ref<NSObject> value) {
    unfinished_.push_back(std::move(key));
    unfinished_.push_back(std::move(value));
    keyPositions_.push_back(start);
}

// Reads what stands between a key and its value.
bool PropertyListReader::readEqualSign() {
    constexpr std::string_view kUsual = " = ";
    if (std::string_view(position_, static_cast<std::size_t>(end_ - position_)).starts_with(kUsual))
        position_ += kUsual.size();
    else if (!skipBlanks() || (!accept('=') && !fail("'='")))
        return false;
    return skipBlanks();
}

Ref<NSObject> PropertyListReader::readDictionary() {
    const std::size_t first = unfinished_.size();
    ++position_;
    for (;;) {
        if (!skipBlanks())
            return nullptr;
        if (accept('}'))
            return takeDictionary(first);
        if (!readEntry())
            return nullptr;
    }
}

// Makes a dictionary of the keys and values from `first` on.
Ref<NSObject> PropertyListReader::takeDictionary(std::size_t first) {
    auto dictionary = Ref<NSDictionary>::adopt(new NSDictionary);
    HashTable &table = dictionary->table_;
    const std::size_t count = (unfinished_.size() - first) / 2;
    table.reserve(static_cast<std::uint32_t>(count));
    for (std::size_t i = 0; i < count; ++i) {
        Ref<NSObject> *const keyAndValue = &unfinished_[first + 2 * i];
        HashTable::Entry &entry = table.entryFor(keyAndValue[0].get());
        if (entry.value) {
            position_ = keyPositions_[keyPositions_.size() - count + i];
            fail("a key that does not stand in the dictionary already");
            return nullptr;
        }
        entry.value = keyAndValue[1].detach();
    }
    unfinished_.resize(first);
    keyPositions_.resize(keyPositions_.size() - count);
    return dictionary;
}

// Whether that key stands here without quotes, and ends here: no "/" of its own begins a comment.
bool PropertyListReader::isBareAt(const SharedKey &expected) const {
    const std::size_t length = expected.bareLength;
    return length != 0 && length < static_cast<std::size_t>(end_ - position_) &&
           !text::kPlistBare.contains(static_cast<unsigned char>(position_[length])) &&
           text::areEqual(expected.key->cString(), position_, length) &&
           !(position_[length] == '*' && position_[length - 1] == '/');
}

// The keys of one dictionary are mostly those of another one before it, in the same order.
Ref<NSString> PropertyListReader::readKey(const char *expected) {
    SharedKey &likely = keys_[lastKey_->next];
    if (isBareAt(likely)) {
        position_ += likely.bareLength;
        lastKey_ = &likely;
        return likely.key;
    }
    const char *const start = position_;
    std::string_view text;
    if (!readText(text, expected))
        return nullptr;
    const std::size_t place = text::hashBytes(text.data(), text.size()) % kSharedKeys;
    SharedKey &shared = keys_[place];
    if (!shared.key || shared.key->cStringLength() != text.size() ||
        !text::areEqual(shared.key->cString(), text.data(), text.size())) {
        shared.key = NSString::initWith(text);
        shared.key->hash(); // kept in the string, for every dictionary that it stands in
    }
    shared.bareLength = text.data() == start ? static_cast<std::uint32_t>(text.size()) : 0;
    lastKey_->next = static_cast<std::uint32_t>(place);
    lastKey_ = &shared;
    return shared.key;
}

Ref<NSObject> PropertyListReader::readData() {
    const char *const close = text::findByte(position_, end_, '>');
    std::vector<unsigned char> bytes(static_cast<std::size_t>(close - position_) / 2 + 1);
    const text::HexResult result = text::readHex(position_ + 1, close, bytes.data());
    if (result.next != close || close == end_ || !result.isComplete) {
        position_ = result.next;
        fail("hexadecimal digits in pairs and '>'");
        return nullptr;
    }
    position_ = close + 1;
    return NSData::initWithBytes(bytes.data(), static_cast<std::uint32_t>(result.length));
}

// --- Strings ---

// Reads a string, bare or quoted. `text` is valid until the next one is read.
bool PropertyListReader::readText(std::string_view &text, const char *expected) {
    if (position_ != end_ && *position_ == '"')
        return readQuoted(text);
    const char *const start = position_;
    position_ = text::findBareEnd(start, end_);
    text = {start, static_cast<std::size_t>(position_ - start)};
    return !text.empty() || fail(expected);
}

bool PropertyListReader::readQuoted(std::string_view &text) {
    const char *start = ++position_;
    position_ = text::findQuote(start, end_);
    unescapedLength_ = 0;
    while (position_ != end_ && *position_ != '"') {
        appendUnescaped(start);
        ++position_;
        if (!readEscape())
            return false;
        start = position_;
        position_ = text::findQuote(start, end_);
    }
    if (position_ == end_)
        return fail("'\"'");
    text = {start, static_cast<std::size_t>(position_ - start)};
    if (unescapedLength_ != 0) {
        appendUnescaped(start);
        text = {unescaped_.data(), unescapedLength_};
    }
    ++position_;
    return true;
}

// Appends what stands from `start` on as it is, and makes room for a character behind it.
void PropertyListReader::appendUnescaped(const char *start) {
    const auto length = static_cast<std::size_t>(position_ - start);
    const std::size_t needed = unescapedLength_ + length + text::kLongestSequence;
    if (needed > unescaped_.size())
        unescaped_.resize(2 * needed);
    text::copyBytes(unescaped_.data() + unescapedLength_, start, length);
    unescapedLength_ += length;
}

bool PropertyListReader::readEscape() {
    if (position_ == end_)
        return fail("a character behind '\\'");
    if (isOctal(*position_))
        return readOctal();
    if (*position_ == 'U' || *position_ == 'u')
        return readUnicode();
    unescaped_[unescapedLength_++] = kEscapedCharacters[static_cast<unsigned char>(*position_++)];
    return true;
}

// One byte as up to three octal digits.
bool PropertyListReader::readOctal() {
    unsigned byte = 0;
    const char *const start = position_;
    while (position_ != end_ && position_ - start < 3 && isOctal(*position_))
        byte = byte * 8 + static_cast<unsigned>(*position_++ - '0');
    if (byte > 0xFF) {
        position_ = start;
        return fail("an octal number of at most 377");
    }
    unescaped_[unescapedLength_++] = static_cast<char>(byte);
    return true;
}

bool PropertyListReader::readHexUnit(std::uint32_t &unit) {
    unit = 0;
    for (int i = 0; i < 4; ++i, ++position_) {
        const int digit = position_ == end_ ? -1 : text::hexDigitValue(*position_);
        if (digit < 0)
            return fail("four hexadecimal digits");
        unit = unit * 16 + static_cast<std::uint32_t>(digit);
    }
    return true;
}

// A UTF-16 unit; two that make one character stand one behind the other.
bool PropertyListReader::readUnicode() {
    std::uint32_t codePoint = 0;
    ++position_;
    if (!readHexUnit(codePoint))
        return false;
    if (codePoint >= 0xD800 && codePoint < 0xDC00) {
        std::uint32_t second = 0;
        if (end_ - position_ < 2 || position_[0] != '\\' || (position_[1] | 0x20) != 'u')
            return fail("the second half of a surrogate pair");
        position_ += 2;
        if (!readHexUnit(second))
            return false;
        if (second < 0xDC00 || second > 0xDFFF)
            return fail("the second half of a surrogate pair");
        codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (second - 0xDC00);
    } else if (codePoint >= 0xDC00 && codePoint <= 0xDFFF) {
        return fail("the first half of a surrogate pair");
    }
    unescapedLength_ += text::encode(codePoint, unescaped_.data() + unescapedLength_);
    return true;
}

} // namespace qb
