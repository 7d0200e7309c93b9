// Arrays and dictionaries from property-list files and back.
#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/QBPropertyListOutputStream.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/FileContents.h"
#include "Foundation/NSArray.Tables.h"
#include "Foundation/NSDictionary.Tables.h"
#include "Foundation/PropertyListReader.h"
#include "Foundation/PropertyListText.h"
#include "Foundation/Required.h"

#include <string>

namespace {

constexpr const char *kFile = "src/Foundation/PropertyListFile";

// Returns the file's value if it is a `T`, which is called `expected`.
template <class T>
Ref<T> readFile(NSString *path, const char *expected) {
    std::string text;
    if (!qb::readFileContentsOrRaise(path, text, kFile, __LINE__))
        return nullptr;
    qb::PropertyListReader reader(text);
    const Ref<NSObject> value = reader.read();
    if (T *const typed = qb::castOrNil<T>(value))
        return typed;
    const qb::PropertyListFailure failure = value ? reader.otherValue(expected) : reader.failure();
    qb::raiseError(kFile, __LINE__, qb::kErrorMalformedPropertyListFile, path, failure.line, failure.column,
                   failure.expected);
    return nullptr;
}

// Nothing of a value that can't be written whole reaches the file.
BOOL writeFile(id value, NSString *path, BOOL atomically) {
    const qb::SavedErrors earlier;
    const Ref<QBPropertyListOutputStream> text = QBPropertyListOutputStream::init();
    if (text)
        text->writeObject(value);
    return text && !qb::isErrorPending() && text->targetData()->writeToFile(path, atomically);
}

Ref<NSArray> readArray(NSString *path) {
    qb::required(path, "NSArray initWithContentsOfFile:", "a path");
    return readFile<NSArray>(path, "an array");
}

Ref<NSArray> initArrayOfClass(Class *asked, NSString *path) {
    Ref<NSArray> array = readArray(path);
    return !array || asked == NSArray::cls() ? array : NSArray::initOfClass(asked, array->view());
}

NSArray *arrayOfClass(Class *asked, NSString *path) {
    return initArrayOfClass(asked, path).autorelease();
}

// The null object and a client's object may have no text, which reads as an empty one.
void appendText(std::string &target, id object) {
    const NSString *const text = object->stringValue();
    qb::appendPropertyListString(target, text ? text->view() : std::string_view());
}

} // namespace

std::span<const qb::Method> qb::tables::arrayPropertyListFile() {
    static const qb::Method methods[] = {
        qb::classMethod<"arrayWithContentsOfFile:">(&arrayOfClass),
        qb::classMethod<"initWithContentsOfFile:">(&initArrayOfClass),
        qb::method<"writeToFile:atomically:">(&NSArray::writeToFile),
    };
    return methods;
}

std::span<const qb::Method> qb::tables::dictionaryPropertyListFile() {
    static const qb::Method methods[] = {
        qb::method<"writeToFile:atomically:">(&NSDictionary::writeToFile),
        qb::method<"descriptionInStringsFileFormat">(&NSDictionary::descriptionInStringsFileFormat),
    };
    return methods;
}

Ref<NSArray> NSArray::initWithContentsOfFile(NSString *path) {
    return readArray(path);
}

Ref<NSMutableArray> NSMutableArray::initWithContentsOfFile(NSString *path) {
    const Ref<NSArray> array = readArray(path);
    return array ? NSMutableArray::initWithArray(array) : nullptr;
}

BOOL NSArray::writeToFile(NSString *path, BOOL atomically) const {
    qb::required(path, "NSArray writeToFile:atomically:", "a path");
    return writeFile(self(), path, atomically);
}

BOOL NSDictionary::setUpWithContentsOfFile(NSString *path) {
    qb::required(path, "NSDictionary initWithContentsOfFile:", "a path");
    const Ref<NSDictionary> dictionary = readFile<NSDictionary>(path, "a dictionary");
    if (!dictionary)
        return NO;
    ++mutations_;
    table_.swap(dictionary->table_);
    return YES;
}

NSString *NSDictionary::descriptionInStringsFileFormat() const {
    std::string text;
    for (const auto &[key, value] : *this) {
        const Ref<NSObject> keptKey = key, keptValue = value; // whatever they do for their texts
        appendText(text, key);
        text += " = ";
        appendText(text, value);
        text += ";\n";
    }
    return NSString::stringWith(text);
}

BOOL NSDictionary::writeToFile(NSString *path, BOOL atomically) const {
    qb::required(path, "NSDictionary writeToFile:atomically:", "a path");
    return writeFile(self(), path, atomically);
}
