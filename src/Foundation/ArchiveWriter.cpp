#include "Foundation/ArchiveWriter.h"

#include <QBFoundation/QBNil.h>
#include <QBFoundation/Runtime/Class.h>

#include "Foundation/ArchiveCircles.h"
#include "Foundation/ArchiveFormat.h"
#include "Foundation/TypeCodes.h"
#include "Text/Room.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace qb::archive {

namespace {

constexpr std::uint32_t kRoot = UINT32_MAX;

unsigned char byteOf(Tag tag) {
    return static_cast<unsigned char>(tag);
}

void appendCount(std::string &target, std::uint64_t count) {
    for (; count >= 0x80; count >>= 7)
        target += static_cast<char>(count | 0x80);
    target += static_cast<char>(count);
}

void appendText(std::string &target, std::string_view text) {
    appendCount(target, text.size());
    text::append(target, text);
}

} // namespace

// An operation under way. What an exception cuts off is not whole any more, be it out of memory or thrown by
// an object.
class Writer::Operation {
public:
    explicit Operation(Writer &writer) : writer_(writer), exceptionsBefore_(std::uncaught_exceptions()) {
        ++writer_.operations_;
    }
    ~Operation() {
        --writer_.operations_;
        if (std::uncaught_exceptions() > exceptionsBefore_)
            writer_.failure_ = "an object could not write itself";
    }
    Operation(const Operation &) = delete;
    Operation &operator=(const Operation &) = delete;

private:
    Writer &writer_;
    int exceptionsBefore_;
};

Writer::Writer() {
    frames_.push_back({{}, {}, kRoot, false});
}

void Writer::putTag(unsigned char tag) {
    frames_.back().values += static_cast<char>(tag);
}

void Writer::putCount(std::uint64_t count) {
    appendCount(frames_.back().values, count);
}

void Writer::putNamed(unsigned char tag, std::string_view name) {
    const std::uint32_t index = indexOfName(name);
    putTag(tag);
    putCount(index);
}

std::uint32_t Writer::indexOfName(std::string_view name) {
    const auto [found, isNew] =
        nameIndexes_.try_emplace(std::string(name), static_cast<std::uint32_t>(names_.size()));
    if (isNew)
        names_.emplace_back(name);
    return found->second;
}

std::uint32_t Writer::indexOfObject(id object) {
    const auto [found, isNew] = indexes_.try_emplace(object, static_cast<std::uint32_t>(records_.size()));
    if (isNew) {
        records_.push_back({kNotWritten, {}});
        objects_.emplace_back(object);
    }
    return found->second;
}

bool Writer::putKey(std::string_view key) {
    if (failure_)
        return true;
    const Operation operation(*this);
    const std::uint32_t index = indexOfName(key);
    if (!frames_.back().keys.insert(index).second)
        return false;
    putTag(byteOf(Tag::key));
    putCount(index);
    return true;
}

void Writer::putInteger(std::int64_t value) {
    putTag(byteOf(Tag::integer));
    putCount(static_cast<std::uint64_t>(value) << 1 ^ static_cast<std::uint64_t>(value >> 63));
}

void Writer::putReal(double value) {
    putTag(byteOf(Tag::real));
    frames_.back().values.append(reinterpret_cast<const char *>(&value), sizeof value);
}

void Writer::putBytes(std::string_view bytes) {
    if (failure_)
        return;
    const Operation operation(*this);
    putTag(byteOf(Tag::bytes));
    appendText(frames_.back().values, bytes);
}

void Writer::putValue(char code, const void *place, NSCoder *coder) {
    if (failure_)
        return;
    const Operation operation(*this);
    const auto putAnyInteger = [&](auto zero) {
        const auto value = load<decltype(zero)>(place);
        if (std::cmp_less_equal(value, INT64_MAX))
            return putInteger(static_cast<std::int64_t>(value));
        putTag(byteOf(Tag::largeInteger));
        putCount(static_cast<std::uint64_t>(value));
    };
    if (visitInteger(code, putAnyInteger))
        return;
    if (code == 'f')
        return putReal(load<float>(place));
    if (code == 'd')
        return putReal(load<double>(place));
    if (code == '@')
        return putObject(load<id>(place), coder);
    if (!load<const void *>(place))
        return putTag(byteOf(Tag::nil));
    if (code == '*')
        return putBytes(load<const char *>(place));
    if (code == ':')
        return putNamed(byteOf(Tag::selector), load<SEL>(place)->view());
    putNamed(byteOf(Tag::cls), load<Class *>(place)->nameView());
}

void Writer::putConditionalObject(id object) {
    if (failure_)
        return;
    const Operation operation(*this);
    if (!object || object == QBNil::value())
        return putTag(byteOf(object ? Tag::nullObject : Tag::nil));
    const std::uint32_t index = indexOfObject(object);
    putTag(byteOf(Tag::object));
    putCount(index);
}

void Writer::putObject(id object, NSCoder *coder) {
    const Operation operation(*this);
    putConditionalObject(object);
    if (failure_ || !object || object == QBNil::value())
        return;
    const std::uint32_t index = indexes_.find(object)->second;
    if (records_[index].cls == kNotWritten)
        writeObject(index, coder);
    else if (mayCloseCircle(index))
        mayHaveCircle_ = true;
}

// The last reference that a circle needs is written while the container that it leads to is.
bool Writer::mayCloseCircle(std::uint32_t index) const {
    const auto isIt = [index](const Frame &frame) { return frame.object == index && frame.isValueClass; };
    return frames_.back().isValueClass && std::any_of(frames_.begin(), frames_.end(), isIt);
}

std::string_view Writer::containerValuesOf(std::size_t index) const {
    return archive::isValueClass(objects_[index]->classObject()) ? records_[index].values
                                                                 : std::string_view();
}

void Writer::begin(std::uint32_t index) {
    Class *const cls = objects_[index]->classObject();
    records_[index].cls = indexOfName(cls->nameView()) + 1;
    frames_.push_back({{}, {}, index, archive::isValueClass(cls)});
}

void Writer::end() {
    records_[frames_.back().object].values = std::move(frames_.back().values);
    frames_.pop_back();
}

// Calls itself through the objects, so that its frame is kept small.
void Writer::writeObject(std::uint32_t index, NSCoder *coder) {
    if (frames_.size() > kDeepestObject) {
        failure_ = kTooDeep;
        return;
    }
    begin(index);
    objects_[index]->encodeWithCoder(coder);
    end();
}

std::string Writer::finished() {
    const auto valuesOf = [this](std::size_t object) { return containerValuesOf(object); };
    if (mayHaveCircle_ && haveCircle(records_.size(), valuesOf)) {
        failure_ = "a container holds itself";
        return {};
    }
    std::string bytes(kMagic);
    bytes += static_cast<char>(kVersion);
    appendCount(bytes, names_.size());
    for (const std::string &name : names_)
        appendText(bytes, name);
    appendCount(bytes, records_.size());
    for (const Record &record : records_) {
        appendCount(bytes, record.cls);
        appendText(bytes, record.values);
    }
    appendText(bytes, frames_.front().values);
    return bytes;
}

} // namespace qb::archive
