#include <QBFoundation/QBPath.h>

#include <QBFoundation/Foundation/NSCoder.h>
#include <QBFoundation/OSAdaptor/OSDebugPrinter.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/ArchiveFormat.h"
#include "Foundation/Kept.h"
#include "QBPath.Tables.h"

#include <algorithm>
#include <string_view>

namespace {

constexpr const char *kFile = "src/QBPath";
constexpr int kLeastDebugOfCoding = 6;

void traceCoding(int line, const QBPath *path, const char *selector, const char *message) {
    if (debug >= kLeastDebugOfCoding)
        qb::trace(DEBUG_CHANNEL_MISC, {kFile, line, path, selector}, message);
}

NSArray *componentsOf(std::string_view text) {
    const Ref<NSMutableArray> components = NSMutableArray::init();
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('/'), text.size());
        if (end != 0)
            components->addObject(NSString::initWith(text.substr(0, end)).get());
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return NSArray::arrayWith(components->view());
}

NSString *stringOrEmpty(NSString *string) {
    return string ? string : ""_ns;
}

} // namespace

Class *QBPath::cls() {
    static const qb::Method methods[] = {
        qb::maker<"qbPathWithString:">(&QBPath::setUpWithString),
        qb::initialiser<"initWithString:">(&QBPath::setUpWithString),
        qb::classMethod<"qbPathWithArray:isAbsolutePath:isDirectory:">(&QBPath::qbPathWithArrayOfClass),
        qb::method<"stringValue">(&QBPath::stringValue),
        qb::method<"isAbsolutePath">(&QBPath::isAbsolutePath),
        qb::method<"isDirectory">(&QBPath::isDirectory),
        qb::method<"pathArray">(&QBPath::pathArray),
        qb::method<"extension">(&QBPath::extension),
        qb::method<"basename">(&QBPath::basename),
        qb::method<"asQbPath">(&QBPath::asQbPath),
        qb::initialiser<"initWithCoder:">(&QBPath::setUpWithCoder),
        qb::method<"encodeWithCoder:">(&QBPath::encodeWithCoder),
    };
    static Class *const self =
        new Class("QBPath", NSObject::cls(),
                  {methods, qb::tables::pathDerivation(), qb::tables::pathHierarchicalObject()},
                  qb::construct<QBPath>, {"NSCopying", "NSCoding"});
    return self;
}

// --- Creation ---

Ref<QBPath> QBPath::initOfClass(Class *asked, NSString *string) {
    const Ref<NSObject> object = asked->construct();
    auto *const path = static_cast<QBPath *>(object.get());
    return path->setUpWithString(string) ? Ref<QBPath>(path) : Ref<QBPath>();
}

BOOL QBPath::setUpWithString(NSString *string) {
    string_ = string;
    parsed_ = false;
    return YES;
}

QBPath *QBPath::qbPathWithArrayOfClass(Class *asked, NSArray *array, BOOL isAbsolutePath, BOOL isDirectory) {
    std::string text(isAbsolutePath ? "/" : "");
    if (array && array->count() != 0) {
        text += array->componentsJoinedByString("/"_ns)->view();
        text += isDirectory ? "/" : "";
    }
    return initOfClass(asked, NSString::stringWith(text)).autorelease();
}

// --- Queries ---

NSString *QBPath::description() const {
    return string_ ? string_->description() : nullptr;
}

BOOL QBPath::containsData() const {
    return string_ && string_->containsData();
}

BOOL QBPath::isEqual(id other) const {
    if (other == this)
        return YES;
    const qb::Kept kept(other); // whatever it does for its text
    NSString *const text = other ? other->stringValue() : nullptr;
    return text && string_ && string_->isEqual(text);
}

std::uint32_t QBPath::hash() const {
    return string_ ? string_->hash() : 0;
}

BOOL QBPath::isAbsolutePath() const {
    return string_ && string_->view().starts_with('/');
}

BOOL QBPath::isDirectory() const {
    return string_ && string_->view().ends_with('/');
}

NSArray *QBPath::pathArray() const {
    if (!pathArray_)
        pathArray_ = componentsOf(stringOrEmpty(string_)->cString());
    return pathArray_;
}

NSString *QBPath::extension() const {
    parse();
    return extension_;
}

NSString *QBPath::basename() const {
    parse();
    return basename_;
}

void QBPath::parse() const {
    if (parsed_)
        return;
    extension_ = containsData() ? string_->pathExtension() : ""_ns;
    basename_ = containsData() ? string_->stringByDeletingPathExtension() : ""_ns;
    parsed_ = true;
}

// --- Values ---

QBPath *QBPath::asQbPath() const {
    return static_cast<QBPath *>(self());
}

Ref<NSObject> QBPath::copyWithZone(void *) const {
    return self();
}

void QBPath::encodeWithCoder(NSCoder *coder) const {
    traceCoding(__LINE__, this, "encodeWithCoder:", "enter");
    const id string = string_;
    qb::archive::required(coder)->encodeValueOfObjCType("@", &string);
    traceCoding(__LINE__, this, "encodeWithCoder:", "leave");
}

BOOL QBPath::setUpWithCoder(NSCoder *coder) {
    traceCoding(__LINE__, this, "initWithCoder:", "enter");
    id string = nullptr;
    qb::archive::required(coder)->decodeValueOfObjCType("@", &string);
    const bool isText = !string || string->isKindOfClass(NSString::cls());
    const BOOL isSetUp = isText && setUpWithString(static_cast<NSString *>(string));
    traceCoding(__LINE__, this, "initWithCoder:", "leave");
    return isSetUp;
}
