#include "Foundation/ArchiveReader.h"

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/QBErrorHandler.h>

#include <algorithm>
#include <utility>

// The layout: header, names, records, and the values within them.
namespace qb::archive {

namespace {

constexpr const char *kFile = "src/Foundation/NSUnarchiver";
constexpr std::size_t kLongestNamed = 100;
constexpr unsigned kLastShift = 63; // of the tenth byte of a count, which adds one bit

bool byKey(const std::pair<std::uint32_t, std::uint32_t> &a,
           const std::pair<std::uint32_t, std::uint32_t> &b) {
    return a.first < b.first;
}

} // namespace

Reader::Reader(NSData *data)
    : data_(data), bytes_(static_cast<const char *>(data->bytes()), data->length()) {}

/// Raises the error once. `what`: may have a place "%s" for a name that the archive gives.
bool Reader::fail(std::uint32_t offset, const char *what, std::string_view named) {
    if (!std::exchange(hasFailed_, true)) {
        NSString *const name = NSString::stringWith(named.substr(0, kLongestNamed));
        raiseError(kFile, __LINE__, kErrorMalformedArchive, offset,
                   NSString::stringWithRestrictedFormat(what, name));
    }
    return false;
}

bool Reader::readCount(std::uint32_t &position, std::uint32_t end, std::uint64_t &count) {
    const std::uint32_t begin = position;
    count = 0;
    for (unsigned shift = 0; position < end; shift += 7) {
        const auto byte = static_cast<unsigned char>(bytes_[position++]);
        count |= static_cast<std::uint64_t>(byte & 0x7F) << shift;
        if (byte >= 0x80 && shift < kLastShift)
            continue;
        if ((shift == kLastShift && byte > 1) || (shift > 0 && byte == 0))
            return fail(begin, "a count is not in its shortest form, or larger than 64 bits");
        return true;
    }
    return fail(position, "it ends within a count");
}

bool Reader::readText(std::uint32_t &position, std::uint32_t end, std::string_view &text) {
    const std::uint32_t begin = position;
    std::uint64_t length;
    if (!readCount(position, end, length))
        return false;
    if (length > end - position)
        return fail(begin, "it has less bytes than a length says");
    text = bytes_.substr(position, static_cast<std::size_t>(length));
    position += static_cast<std::uint32_t>(length);
    return true;
}

bool Reader::open() {
    std::uint32_t position = kMagic.size() + 1;
    if (bytes_.size() < position || !bytes_.starts_with(kMagic))
        return fail(0, "it is no archive");
    if (static_cast<unsigned char>(bytes_[kMagic.size()]) != kVersion)
        return fail(kMagic.size(), "it is of another version");
    std::string_view root;
    if (!readNames(position) || !readRecords(position) || !readText(position, data_->length(), root))
        return false;
    if (position != data_->length())
        return fail(position, "something stands behind its end");
    return openFrame(UINT32_MAX, position - static_cast<std::uint32_t>(root.size()), position,
                     /*isValueClass=*/false);
}

bool Reader::readNames(std::uint32_t &position) {
    std::uint64_t count;
    if (!readCount(position, data_->length(), count))
        return false;
    for (; count > 0; --count) {
        const std::uint32_t begin = position;
        std::string_view name;
        if (!readText(position, data_->length(), name))
            return false;
        if (!nameIndexes_.try_emplace(name, static_cast<std::uint32_t>(names_.size())).second)
            return fail(begin, "a name stands twice");
        names_.push_back(name);
    }
    return true;
}

bool Reader::readRecords(std::uint32_t &position) {
    std::uint64_t count;
    if (!readCount(position, data_->length(), count))
        return false;
    for (; count > 0; --count) {
        const std::uint32_t begin = position;
        std::uint64_t cls;
        std::string_view values;
        if (!readCount(position, data_->length(), cls) || !readText(position, data_->length(), values))
            return false;
        if (cls > names_.size() || (cls == kNotWritten && !values.empty()))
            return fail(begin, "an object has no class");
        records_.push_back({static_cast<std::uint32_t>(cls),
                            position - static_cast<std::uint32_t>(values.size()),
                            position,
                            false,
                            {}});
    }
    return true;
}

bool Reader::readValue(std::uint32_t &position, std::uint32_t end, Value &value) {
    value.offset = position;
    const auto tag = static_cast<unsigned char>(bytes_[position++]);
    if (tag >= kTags)
        return fail(value.offset, "a value has an unknown type");
    value.tag = static_cast<Tag>(tag);
    return readBehindTag(position, end, value);
}

bool Reader::readBehindTag(std::uint32_t &position, std::uint32_t end, Value &value) {
    switch (value.tag) {
    case Tag::nil:
    case Tag::nullObject:
        return true;
    case Tag::real:
        if (end - position < sizeof(double))
            return fail(value.offset, "it ends within a value");
        value.bytes = bytes_.substr(position, sizeof(double));
        position += sizeof(double);
        return true;
    case Tag::bytes:
        return readText(position, end, value.bytes);
    default:
        break;
    }
    if (!readCount(position, end, value.number))
        return false;
    if (value.tag == Tag::integer)
        return true;
    if (value.tag == Tag::largeInteger)
        return std::cmp_greater(value.number, INT64_MAX) || fail(value.offset, "a value has the wrong type");
    const std::size_t limit = value.tag == Tag::object ? records_.size() : names_.size();
    return value.number < limit || fail(value.offset, "an index is too large");
}

/// Looks at all values of an object once, so that those with a key can be found and none is malformed later.
bool Reader::openFrame(std::uint32_t object, std::uint32_t begin, std::uint32_t end, bool isValueClass) {
    Frame frame{object, begin, end, isValueClass, {}};
    for (std::uint32_t position = begin; position < end;) {
        Value value;
        if (!readValue(position, end, value))
            return false;
        if (value.tag != Tag::key)
            continue;
        frame.keys.emplace_back(static_cast<std::uint32_t>(value.number), position);
        if (position == end || static_cast<Tag>(bytes_[position]) == Tag::key)
            return fail(position, "a key has no value");
        if (!readValue(position, end, value))
            return false;
    }
    std::sort(frame.keys.begin(), frame.keys.end());
    const auto isSame = [](const auto &a, const auto &b) { return a.first == b.first; };
    const auto twice = std::adjacent_find(frame.keys.begin(), frame.keys.end(), isSame);
    if (twice != frame.keys.end())
        return fail(std::next(twice)->second, "a key stands twice");
    skipKeys(frame);
    frames_.push_back(std::move(frame));
    return true;
}

/// Moves on to the next value without a key.
void Reader::skipKeys(Frame &frame) {
    while (frame.next < frame.end && static_cast<Tag>(bytes_[frame.next]) == Tag::key) {
        Value skipped;
        readValue(frame.next, frame.end, skipped);
        readValue(frame.next, frame.end, skipped);
    }
}

bool Reader::nextValue(Value &value) {
    Frame &frame = frames_.back();
    if (frame.next == frame.end)
        return fail(frame.end, "an object has less values than its class reads");
    readValue(frame.next, frame.end, value);
    skipKeys(frame);
    return true;
}

bool Reader::keyedValue(std::string_view key, Value &value) {
    const auto name = nameIndexes_.find(key);
    if (name == nameIndexes_.end())
        return false;
    const Frame &frame = frames_.back();
    const std::pair<std::uint32_t, std::uint32_t> wanted(name->second, 0);
    const auto found = std::lower_bound(frame.keys.begin(), frame.keys.end(), wanted, byKey);
    if (found == frame.keys.end() || found->first != name->second)
        return false;
    std::uint32_t position = found->second;
    return readValue(position, frame.end, value);
}

bool Reader::hasKey(std::string_view key) const {
    const auto name = nameIndexes_.find(key);
    if (name == nameIndexes_.end() || hasFailed_)
        return false;
    const Frame &frame = frames_.back();
    return std::binary_search(frame.keys.begin(), frame.keys.end(),
                              std::pair<std::uint32_t, std::uint32_t>(name->second, 0), byKey);
}

void Reader::requireKey(std::string_view key) {
    if (!hasFailed_ && !hasKey(key))
        fail(frames_.back().end, "it has no value for the key '%s'", key);
}

} // namespace qb::archive
