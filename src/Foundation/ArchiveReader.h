// Reading archives.
#ifndef QBFOUNDATION_FOUNDATION_ARCHIVEREADER_H
#define QBFOUNDATION_FOUNDATION_ARCHIVEREADER_H

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSCoder.h>
#include <QBFoundation/Foundation/NSData.h>

#include "Foundation/ArchiveFormat.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace qb::archive {

/// Makes objects from an archive. The first thing that is wrong raises 900002, and from then on every value
/// is zero.
class Reader {
public:
    /// `data` is kept, and must not change.
    explicit Reader(NSData *data);

    /// Finds the names and objects. Returns false, with the error raised, when the archive is malformed.
    bool open();
    /// Names the classes of which objects may be made.
    void allow(NSArray *classes);
    NSArray *allowed() const { return allowedClasses_; }

    /// Reads the next value without a key, or the one with the key, into the variable at `place`; zero when
    /// there is none, which for the next value is an error.
    void takeValue(char code, void *place, NSCoder *coder);
    void takeValue(char code, void *place, std::string_view key, NSCoder *coder);
    id takeObject(NSCoder *coder);
    std::string_view takeBytes();
    std::string_view takeBytes(std::string_view key);
    bool hasKey(std::string_view key) const;
    /// An archive without the key is malformed.
    void requireKey(std::string_view key);
    /// Whether all values without a key are read of the object that is being read, or the root.
    /// There are none any more after a failure.
    bool isAtEnd() const { return hasFailed_ || frames_.back().next == frames_.back().end; }
    bool hasFailed() const { return hasFailed_; }

private:
    struct Value {
        Tag tag = Tag::nil;
        std::uint32_t offset = 0; // where it begins
        std::uint64_t number = 0; // the count behind the tag, if there is one
        std::string_view bytes;   // of bytes and reals
    };
    struct Record {
        std::uint32_t cls; // as it is written
        std::uint32_t begin, end;
        bool isStarted = false;
        Ref<NSObject> object; // null before it is read, and when its class refused
    };
    // An object that is being read, or the root.
    struct Frame {
        std::uint32_t object;
        std::uint32_t next, end; // of the values without a key
        bool isValueClass;
        std::vector<std::pair<std::uint32_t, std::uint32_t>> keys; // index of the name, offset; sorted
    };

    bool fail(std::uint32_t offset, const char *what, std::string_view named = {});
    bool readCount(std::uint32_t &position, std::uint32_t end, std::uint64_t &count);
    bool readText(std::uint32_t &position, std::uint32_t end, std::string_view &text);
    bool readValue(std::uint32_t &position, std::uint32_t end, Value &value);
    bool readBehindTag(std::uint32_t &position, std::uint32_t end, Value &value);
    bool readNames(std::uint32_t &position);
    bool readRecords(std::uint32_t &position);
    bool openFrame(std::uint32_t object, std::uint32_t begin, std::uint32_t end, bool isValueClass);
    void skipKeys(Frame &frame);
    bool nextValue(Value &value);
    bool keyedValue(std::string_view key, Value &value);
    void convert(const Value &value, char code, void *place, NSCoder *coder);
    template <class Integer>
    void convertInteger(const Value &value, char code, void *place);
    void convertReal(const Value &value, char code, void *place);
    std::string_view bytesOf(const Value &value);
    Class *classOf(const Value &value);
    id objectOf(const Value &value, NSCoder *coder);
    id makeObject(std::uint32_t index, NSCoder *coder, std::uint32_t offset);
    bool begin(std::uint32_t index, std::uint32_t offset);
    void end(std::uint32_t index, bool isAccepted);
    bool closesCircle(std::uint32_t index);
    std::string_view containerValuesOf(std::size_t index) const;

    Ref<NSData> data_;
    const std::string_view bytes_;
    Ref<NSArray> allowedClasses_;
    std::unordered_map<std::string_view, Class *> classes_; // those that are allowed
    std::vector<std::string_view> names_;
    std::map<std::string_view, std::uint32_t> nameIndexes_; // no hashes, which names may be chosen for
    std::vector<Record> records_;
    std::vector<Frame> frames_;     // the root's first
    std::optional<bool> hasCircle_; // of containers; not known yet
    bool hasFailed_ = false;
};

} // namespace qb::archive

#endif
