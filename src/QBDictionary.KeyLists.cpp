// Dictionaries made from keys and values in turn.
#include <QBFoundation/Foundation/NSDictionary.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Foundation/NSSet.h>
#include <QBFoundation/OSAdaptor/OSDebugPrinter.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/QBNil.h>
#include <QBFoundation/Runtime/MethodTable.h>
#include <QBFoundation/Runtime/Send.h>

namespace {

constexpr const char *kFile = "src/QBDictAdditions";

NSDictionary *dictFromArrayOfClass(Class *asked, NSArray *array) {
    return send<NSDictionary *>(asked, "dictFromArray:supportedMultiValues:"_sel, array, nullptr);
}

NSDictionary *dictFromCorrectArrayOfClass(Class *asked, NSArray *array) {
    return send<NSDictionary *>(asked, "dictFromCorrectArray:supportedMultiValues:"_sel, array, nullptr);
}

bool raiseMalformed(std::uint32_t index, const char *expected) {
    qb::raiseError(kFile, __LINE__, qb::kErrorMalformedKeyList, index, expected);
    return false;
}

// Whether each key has a value, and none is there twice but those in `multiValues`. Raises the error if not.
bool isCorrect(NSArray *keysAndValues, NSArray *multiValues) {
    const std::uint32_t count = keysAndValues->count();
    if (count % 2 != 0)
        return raiseMalformed(count, "a value for the last key");
    qb::HashTable keys;
    const Ref<NSSet> multi = NSSet::setWithArray(multiValues);
    for (std::uint32_t i = 0; i < count; i += 2) {
        const Ref<NSObject> key = keysAndValues->objectAtIndex(i);
        if (keys.find(key) && !multi->containsObject(key))
            return raiseMalformed(i, "another key");
        keys.entryFor(key);
    }
    return true;
}

void traceValue(id value) {
    if (!qb::isDebugChannelActive(DEBUG_CHANNEL_MISC))
        return;
    NSString *const text = value->description();
    qb::trace(DEBUG_CHANNEL_MISC,
              {kFile, __LINE__, &NSDictionary::cls, "dictFromArray:supportedMultiValues:"}, "%s==%s", "value",
              text ? text->cString() : "<nil>");
}

} // namespace

std::span<const qb::Method> NSDictionary::keyListMethods() {
    static const qb::Method methods[] = {
        qb::classMethod<"dictFromArray:">(&dictFromArrayOfClass),
        qb::maker<"dictFromArray:supportedMultiValues:">(&NSDictionary::setUpFromArray),
        qb::classMethod<"dictFromCorrectArray:">(&dictFromCorrectArrayOfClass),
        qb::maker<"dictFromCorrectArray:supportedMultiValues:">(&NSDictionary::setUpFromCorrectArray),
        qb::maker<"dictWithKeyValues:">(&NSDictionary::setUpWithKeyValues),
    };
    return methods;
}

BOOL NSDictionary::setUpFromArray(NSArray *array, NSArray *supportedMultiValues) {
    const Ref<NSArray> kept = array; // whatever the keys do
    const Ref<NSSet> multi = NSSet::setWithArray(supportedMultiValues);
    const std::uint32_t count = array ? array->count() : 0;
    for (std::uint32_t i = 0; i < count; i += 2) {
        const Ref<NSObject> key = array->objectAtIndex(i);
        const Ref<NSObject> value = i + 1 < count ? array->objectAtIndex(i + 1) : QBNil::value();
        traceValue(value);
        if (!multi->containsObject(key)) {
            store(key, value);
            continue;
        }
        auto *values = qb::castOrNil<NSMutableArray>(NSDictionary::objectForKey(key));
        if (!values)
            store(key, values = NSMutableArray::array());
        values->addObject(value);
    }
    return YES;
}

BOOL NSDictionary::setUpFromCorrectArray(NSArray *array, NSArray *supportedMultiValues) {
    const Ref<NSArray> keptArray = array, keptMultiValues = supportedMultiValues; // whatever the keys do
    return !array || (isCorrect(array, supportedMultiValues) && setUpFromArray(array, supportedMultiValues));
}

BOOL NSDictionary::setUpWithKeyValues(const qb::ArgList &keysAndValues) {
    if (keysAndValues.count() % 2 != 0)
        throw InvalidArgumentException("NSDictionary dictWithKeyValues: must have a value behind each key.");
    for (std::uint32_t i = 0; i < keysAndValues.count(); i += 2)
        if (const id value = keysAndValues[i + 1].as<id>())
            store(keysAndValues[i].as<id>(), value);
    return YES;
}
