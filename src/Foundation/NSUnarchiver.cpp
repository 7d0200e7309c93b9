#include <QBFoundation/Foundation/NSUnarchiver.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/ArchiveReader.h"
#include "Foundation/TypeCodes.h"

namespace {

std::string_view viewOf(NSString *key) {
    if (!key)
        throw InvalidArgumentException("NSKeyedUnarchiver must have a key that is not nil.");
    return key->view();
}

} // namespace

Class *NSUnarchiver::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"unarchiveObjectWithData:">(
            +[](Class *asked, NSData *data) { return unarchiveOfClass(asked, data, nullptr); }),
        qb::classMethod<"unarchiveObjectWithData:allowedClasses:">(&NSUnarchiver::unarchiveOfClass),
        qb::classMethod<"unarchiveObjectWithFile:">(&NSUnarchiver::unarchiveFileOfClass),
        qb::classMethod<"valueClasses">(&NSUnarchiver::valueClasses),
        qb::initialiser<"initForReadingWithData:">(&NSUnarchiver::setUpForReadingWithData),
        qb::method<"allowedClasses">(&NSUnarchiver::allowedClasses),
        qb::method<"setAllowedClasses:">(&NSUnarchiver::setAllowedClasses),
        qb::method<"isAtEnd">(&NSUnarchiver::isAtEnd),
        qb::method<"decodeRootObject">(&NSUnarchiver::decodeRootObject),
    };
    static Class *const self =
        new Class("NSUnarchiver", NSCoder::cls(), methods, qb::construct<NSUnarchiver>);
    return self;
}

NSUnarchiver::NSUnarchiver() = default;
NSUnarchiver::~NSUnarchiver() = default;

BOOL NSUnarchiver::setUpForReadingWithData(NSData *data) {
    data_ = data ? data->copy() : NSData::init();
    reader_ = std::make_unique<qb::archive::Reader>(data_);
    reader_->allow(valueClasses());
    return reader_->open();
}

id NSUnarchiver::unarchiveOfClass(Class *asked, NSData *data, NSArray *allowedClasses) {
    const Ref<NSObject> object = asked->construct();
    auto *unarchiver = static_cast<NSUnarchiver *>(object.get());
    if (!unarchiver->setUpForReadingWithData(data))
        return nullptr;
    if (allowedClasses)
        unarchiver->setAllowedClasses(allowedClasses);
    return unarchiver->decodeRootObject();
}

id NSUnarchiver::unarchiveFileOfClass(Class *asked, NSString *path) {
    NSData *const data = NSData::dataWithContentsOfFile(path);
    return data ? unarchiveOfClass(asked, data, nullptr) : nullptr;
}

NSArray *NSUnarchiver::valueClasses() {
    NSMutableArray *const classes = NSMutableArray::array();
    for (Class *cls : qb::archive::valueClasses())
        classes->addObject(cls);
    return classes;
}

qb::archive::Reader &NSUnarchiver::reader() const {
    if (!reader_)
        throw InvalidUseOfMethodException("NSUnarchiver must be made by initForReadingWithData:.");
    return *reader_;
}

NSArray *NSUnarchiver::allowedClasses() const {
    return Ref<NSArray>(reader().allowed()).autorelease();
}

void NSUnarchiver::setAllowedClasses(NSArray *classes) {
    bool areClasses = classes != nullptr;
    for (std::uint32_t i = 0; areClasses && i < classes->count(); ++i)
        areClasses = classes->objectAtIndex(i)->isKindOfClass(Class::cls());
    if (!areClasses)
        throw InvalidArgumentException("NSUnarchiver setAllowedClasses: must have an array of classes.");
    reader().allow(classes);
}

BOOL NSUnarchiver::isAtEnd() const {
    return reader().isAtEnd();
}

void NSUnarchiver::decodeValueOfObjCType(const char *type, void *at) {
    reader().takeValue(qb::typeCode(type, at), at, this);
}

const void *NSUnarchiver::handOut(std::string_view bytes, std::uint32_t *length) const {
    if (length)
        *length = static_cast<std::uint32_t>(bytes.size());
    if (bytes.empty())
        return nullptr;
    Ref<NSData>(data_).autorelease(); // the bytes live as long as the pool
    return bytes.data();
}

const void *NSUnarchiver::decodeBytesWithReturnedLength(std::uint32_t *length) {
    return handOut(reader().takeBytes(), length);
}

// Objects take this short way, because each level of objects inside each other takes it.
id NSUnarchiver::decodeObject() {
    return reader().takeObject(this);
}

Class *NSKeyedUnarchiver::cls() {
    static Class *const self =
        new Class("NSKeyedUnarchiver", NSUnarchiver::cls(), {}, qb::construct<NSKeyedUnarchiver>);
    return self;
}

BOOL NSKeyedUnarchiver::containsValueForKey(NSString *key) const {
    return reader().hasKey(viewOf(key));
}

id NSKeyedUnarchiver::decodeRootObject() {
    reader().requireKey("root");
    return decodeObjectForKey("root"_ns);
}

void NSKeyedUnarchiver::decodeValueOfObjCType(const char *type, void *at, NSString *key) {
    reader().takeValue(qb::typeCode(type, at), at, viewOf(key), this);
}

const void *NSKeyedUnarchiver::decodeBytesForKey(NSString *key, std::uint32_t *returnedLength) {
    return handOut(reader().takeBytes(viewOf(key)), returnedLength);
}
