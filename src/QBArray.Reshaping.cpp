// Parts of arrays, other orders, and arrays of other things.
#include <QBFoundation/Foundation/NSArray.h>

#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSArray.Tables.h"

#include <utility>

static NSArray *arrayWithCStringsOfClass(Class *asked, int count, const char *const *texts) {
    NSMutableArray *const strings = NSArray::arrayWithCStrings(count, texts);
    return asked == NSArray::cls() ? strings : NSArray::initOfClass(asked, strings->view()).autorelease();
}

std::span<const qb::Method> qb::tables::arrayReshaping() {
    static const qb::Method methods[] = {
        qb::method<"shift">(&NSArray::shift),
        qb::method<"subarrayFromIndex:">(&NSArray::subarrayFromIndex),
        qb::method<"reversedArray">(&NSArray::reversedArray),
        qb::method<"joinedBy:">(&NSArray::joinedBy),
        qb::method<"dictWithSchema:">(&NSArray::dictWithSchema),
        qb::classMethod<"arrayWithCStrings::">(&arrayWithCStringsOfClass),
    };
    return methods;
}

NSArray *NSArray::shift() const {
    return subarrayFromIndex(1);
}

NSArray *NSArray::subarrayFromIndex(std::uint32_t index) const {
    if (index >= count_)
        return nullptr;
    return index == 0 ? static_cast<NSArray *>(self()) : arrayWith(view().subspan(index));
}

NSArray *NSArray::reversedArray() const {
    return count_ ? reverseObjectEnumerator()->allObjects() : static_cast<NSArray *>(self());
}

NSMutableArray *NSArray::joinedBy(id object) const {
    auto joined = NSMutableArray::initWithCapacity(count_ * 2);
    for (id element : *this) {
        if (joined->containsData())
            joined->addObject(object);
        joined->addObject(element);
    }
    return joined.autorelease();
}

NSDictionary *NSArray::dictWithSchema(NSArray *keys) const {
    if (count_ != (keys ? keys->count() : 0))
        return nullptr;
    return NSDictionary::dictionaryWithObjectsForKeys(static_cast<NSArray *>(self()), keys);
}

NSMutableArray *NSArray::arrayWithCStrings(int count, const char *const *texts) {
    if (count > 0 && !texts)
        throw InvalidArgumentException("NSArray arrayWithCStrings:: must have C strings that are not NULL.");
    auto strings = NSMutableArray::init();
    for (int i = 0; i < count; ++i)
        strings->addObject(NSString::stringWithCString(texts[i]));
    return strings.autorelease();
}
