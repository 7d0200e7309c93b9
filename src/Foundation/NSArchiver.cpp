#include <QBFoundation/Foundation/NSArchiver.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/ArchiveWriter.h"
#include "Foundation/Required.h"
#include "Foundation/TypeCodes.h"

#include <string>

namespace {

constexpr const char *kFile = "src/Foundation/NSArchiver";

std::string_view viewOf(const void *bytes, std::uint32_t length) {
    if (!bytes && length != 0)
        throw InvalidArgumentException("NSArchiver encodeBytes:length: must have bytes that are not NULL.");
    return {static_cast<const char *>(bytes), length};
}

} // namespace

Class *NSArchiver::cls() {
    static const qb::Method methods[] = {
        qb::classMethod<"archivedDataWithRootObject:">(&NSArchiver::archivedDataOfClass),
        qb::classMethod<"archiveRootObject:toFile:">(&NSArchiver::archiveOfClass),
        qb::initialiser<"initForWritingWithMutableData:">(&NSArchiver::setUpForWritingWithMutableData),
        qb::method<"finishEncoding">(&NSArchiver::finishEncoding),
        qb::method<"archiverData">(&NSArchiver::archiverData),
    };
    static Class *const self = new Class("NSArchiver", NSCoder::cls(), methods, qb::construct<NSArchiver>);
    return self;
}

NSArchiver::NSArchiver() : writer_(std::make_unique<qb::archive::Writer>()) {}
NSArchiver::~NSArchiver() = default;

BOOL NSArchiver::setUp() {
    data_ = NSMutableData::init();
    return YES;
}

BOOL NSArchiver::setUpForWritingWithMutableData(NSMutableData *data) {
    qb::required(data, "NSArchiver initForWritingWithMutableData:", "data");
    data_ = data;
    return YES;
}

NSData *NSArchiver::archivedDataOfClass(Class *asked, id root) {
    const Ref<NSObject> object = asked->construct();
    auto *archiver = static_cast<NSArchiver *>(object.get());
    archiver->setUp();
    archiver->encodeRootObject(root);
    return archiver->archiverData();
}

BOOL NSArchiver::archiveOfClass(Class *asked, id root, NSString *toFile) {
    NSData *const data = archivedDataOfClass(asked, root);
    return data && data->writeToFile(toFile, /*atomically=*/YES);
}

qb::archive::Writer &NSArchiver::writer(const char *selector) {
    if (!writer_)
        throw InvalidUseOfMethodException(std::string("NSArchiver ") + selector +
                                          " must be sent before finishEncoding.");
    return *writer_;
}

void NSArchiver::finishEncoding() {
    if (!writer_)
        return;
    if (!data_)
        throw InvalidUseOfMethodException(
            "NSArchiver must be made by init or initForWritingWithMutableData:.");
    if (writer_->isWriting())
        throw InvalidUseOfMethodException(
            "NSArchiver finishEncoding must not be sent by an object that is being encoded.");
    const std::string bytes = writer_->failure() ? std::string() : writer_->finished();
    const char *failure = writer_->failure();
    if (bytes.size() + data_->length() >= UINT32_MAX)
        failure = "it would have 4 GiB or more";
    if (!failure)
        data_->appendBytes(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    writer_.reset();
    hasFailed_ = failure != nullptr;
    if (failure)
        qb::raiseError(kFile, __LINE__, qb::kErrorCannotArchive, failure);
}

NSMutableData *NSArchiver::archiverData() {
    finishEncoding();
    return hasFailed_ ? nullptr : Ref<NSMutableData>(data_).autorelease();
}

void NSArchiver::encodeValueOfObjCType(const char *type, const void *at) {
    writer("encodeValueOfObjCType:at:").putValue(qb::typeCode(type, at), at, this);
}

void NSArchiver::encodeBytes(const void *bytes, std::uint32_t length) {
    writer("encodeBytes:length:").putBytes(viewOf(bytes, length));
}

// Objects take this short way, because each level of objects inside each other takes it.
void NSArchiver::encodeObject(id object) {
    writer("encodeObject:").putObject(object, this);
}

void NSArchiver::encodeConditionalObject(id object) {
    writer("encodeConditionalObject:").putConditionalObject(object);
}

void NSArchiver::encodeRootObject(id object) {
    encodeObject(object);
    finishEncoding();
}

Class *NSKeyedArchiver::cls() {
    static Class *const self =
        new Class("NSKeyedArchiver", NSArchiver::cls(), {}, qb::construct<NSKeyedArchiver>);
    return self;
}

void NSKeyedArchiver::putKey(NSString *key, const char *selector) {
    qb::archive::Writer &target = writer(selector);
    if (!key || !target.putKey(key->view()))
        throw InvalidArgumentException(std::string("NSKeyedArchiver ") + selector +
                                       " must have a key that the object has not used yet.");
}

void NSKeyedArchiver::encodeValueOfObjCType(const char *type, const void *at, NSString *key) {
    const char code = qb::typeCode(type, at);
    putKey(key, "encodeValueOfObjCType:at:forKey:");
    writer("encodeValueOfObjCType:at:forKey:").putValue(code, at, this);
}

void NSKeyedArchiver::encodeBytes(const void *bytes, std::uint32_t length, NSString *key) {
    const std::string_view view = viewOf(bytes, length);
    putKey(key, "encodeBytes:length:forKey:");
    writer("encodeBytes:length:forKey:").putBytes(view);
}

void NSKeyedArchiver::encodeConditionalObject(id object, NSString *key) {
    putKey(key, "encodeConditionalObject:forKey:");
    writer("encodeConditionalObject:forKey:").putConditionalObject(object);
}

void NSKeyedArchiver::encodeRootObject(id object) {
    encodeObject(object, "root"_ns);
    finishEncoding();
}
