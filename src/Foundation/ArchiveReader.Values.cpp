#include "Foundation/ArchiveReader.h"

#include <QBFoundation/QBNil.h>
#include <QBFoundation/Runtime/Class.h>

#include "Foundation/ArchiveCircles.h"
#include "Foundation/TypeCodes.h"

#include <algorithm>
#include <string>
#include <utility>

// From the archive's values to variables and objects.
namespace qb::archive {

namespace {

constexpr const char *kWrongType = "a value has another type than its class reads";
constexpr const char *kDoesNotFit = "a value does not fit the type that its class reads";

// The root declares the initialiser for its subclasses only, who call it on themselves; a reader calls it on
// the object that it made.
struct Initialiser : NSObject {
    static constexpr BOOL (NSObject::*kMember)(NSCoder *) = &Initialiser::setUpWithCoder;
};

} // namespace

void Reader::allow(NSArray *classes) {
    classes_.clear();
    hasCircle_.reset();
    allowedClasses_ = classes->copy();
    for (id cls : *allowedClasses_)
        classes_.emplace(static_cast<Class *>(cls)->nameView(), static_cast<Class *>(cls));
}

void Reader::takeValue(char code, void *place, NSCoder *coder) {
    std::memset(place, 0, sizeOfTypeCode(code));
    Value value;
    if (!hasFailed_ && nextValue(value))
        convert(value, code, place, coder);
}

void Reader::takeValue(char code, void *place, std::string_view key, NSCoder *coder) {
    std::memset(place, 0, sizeOfTypeCode(code));
    Value value;
    if (!hasFailed_ && keyedValue(key, value))
        convert(value, code, place, coder);
}

id Reader::takeObject(NSCoder *coder) {
    Value value;
    return !hasFailed_ && nextValue(value) ? objectOf(value, coder) : nullptr;
}

std::string_view Reader::takeBytes() {
    Value value;
    return !hasFailed_ && nextValue(value) ? bytesOf(value) : std::string_view();
}

std::string_view Reader::takeBytes(std::string_view key) {
    Value value;
    return !hasFailed_ && keyedValue(key, value) ? bytesOf(value) : std::string_view();
}

std::string_view Reader::bytesOf(const Value &value) {
    if (value.tag != Tag::bytes && value.tag != Tag::nil)
        fail(value.offset, kWrongType);
    return value.bytes;
}

template <class Integer>
void Reader::convertInteger(const Value &value, char code, void *place) {
    const std::uint64_t half = value.number >> 1;
    const auto number = static_cast<std::int64_t>(value.number & 1 ? ~half : half);
    const bool isTruth = code != 'B' || number <= 1;
    if (value.tag == Tag::integer && std::in_range<Integer>(number) && isTruth)
        store(place, static_cast<Integer>(number));
    else if (value.tag == Tag::largeInteger && std::in_range<Integer>(value.number))
        store(place, static_cast<Integer>(value.number));
    else
        fail(value.offset,
             value.tag == Tag::integer || value.tag == Tag::largeInteger ? kDoesNotFit : kWrongType);
}

void Reader::convertReal(const Value &value, char code, void *place) {
    if (value.tag != Tag::real) {
        fail(value.offset, kWrongType);
        return;
    }
    const auto number = load<double>(value.bytes.data());
    const auto shorter = static_cast<float>(number);
    if (code == 'd')
        store(place, number);
    else if (number != number || static_cast<double>(shorter) == number)
        store(place, shorter);
    else
        fail(value.offset, kDoesNotFit);
}

void Reader::convert(const Value &value, char code, void *place, NSCoder *coder) {
    if (visitInteger(code, [&](auto zero) { convertInteger<decltype(zero)>(value, code, place); }))
        return;
    if (code == 'f' || code == 'd')
        convertReal(value, code, place);
    else if (code == '@')
        store(place, objectOf(value, coder));
    else if (value.tag == Tag::nil)
        return;
    else if (code == '*' && value.tag == Tag::bytes && value.bytes.find('\0') == std::string_view::npos)
        store(place, NSString::stringWith(value.bytes)->cString());
    else if (code == ':' && value.tag == Tag::selector)
        store(place, Selector::named(names_[value.number]));
    else if (code == '#' && value.tag == Tag::cls)
        store(place, classOf(value));
    else
        fail(value.offset, kWrongType);
}

Class *Reader::classOf(const Value &value) {
    const std::string_view name = names_[value.number];
    Class *const cls = NSClassFromString(NSString::stringWith(name));
    if (!cls)
        fail(value.offset, "there is no class '%s'", name);
    return cls;
}

id Reader::objectOf(const Value &value, NSCoder *coder) {
    if (value.tag == Tag::nil)
        return nullptr;
    if (value.tag == Tag::nullObject)
        return QBNil::value();
    if (value.tag != Tag::object) {
        fail(value.offset, kWrongType);
        return nullptr;
    }
    const auto index = static_cast<std::uint32_t>(value.number);
    const Record &record = records_[index];
    if (record.cls == kNotWritten)
        return nullptr;
    if (!record.isStarted)
        return makeObject(index, coder, value.offset);
    if (closesCircle(index))
        fail(value.offset, "a container holds itself");
    return hasFailed_ ? nullptr : Ref<NSObject>(record.object).autorelease();
}

// The last reference that a circle needs is read while the container that it leads to is.
bool Reader::closesCircle(std::uint32_t index) {
    const auto isIt = [index](const Frame &frame) { return frame.object == index && frame.isValueClass; };
    if (!frames_.back().isValueClass || std::none_of(frames_.begin(), frames_.end(), isIt))
        return false;
    if (!hasCircle_)
        hasCircle_ =
            haveCircle(records_.size(), [this](std::size_t object) { return containerValuesOf(object); });
    return *hasCircle_;
}

std::string_view Reader::containerValuesOf(std::size_t index) const {
    const Record &record = records_[index];
    const auto cls = record.cls == kNotWritten ? classes_.end() : classes_.find(names_[record.cls - 1]);
    return cls != classes_.end() && isValueClass(cls->second)
               ? bytes_.substr(record.begin, record.end - record.begin)
               : std::string_view();
}

bool Reader::begin(std::uint32_t index, std::uint32_t offset) {
    Record &record = records_[index];
    const std::string_view name = names_[record.cls - 1];
    const auto cls = classes_.find(name);
    if (cls == classes_.end())
        return fail(offset, "the class '%s' is not among those that are accepted", name);
    if (frames_.size() > kDeepestObject)
        return fail(offset, kTooDeep);
    record.isStarted = true;
    Class *const made = cls->second; // also when its constructor names other classes
    record.object = made->construct();
    return openFrame(index, record.begin, record.end, isValueClass(made));
}

void Reader::end(std::uint32_t index, bool isAccepted) {
    const Record &record = records_[index];
    const std::string_view name = names_[record.cls - 1];
    if (!hasFailed_ && !isAccepted)
        fail(record.begin, "an object of class '%s' can't have its values", name);
    else if (!hasFailed_ && !isAtEnd())
        fail(frames_.back().next, "an object of class '%s' has more values than it reads", name);
    frames_.pop_back();
}

// Calls itself through the objects, so that its frame is kept small.
id Reader::makeObject(std::uint32_t index, NSCoder *coder, std::uint32_t offset) {
    try {
        if (!begin(index, offset))
            return nullptr;
        NSObject *const object = records_[index].object.get();
        end(index, (object->*Initialiser::kMember)(coder));
        return hasFailed_ ? nullptr : Ref<NSObject>(object).autorelease();
    } catch (...) {
        hasFailed_ = true; // the exception says what is wrong
        throw;
    }
}

} // namespace qb::archive
