#include "Reference.h"

namespace publish {

namespace {

NSDictionary *operation(const qb::Method &method) {
    return NSDictionary::dictionaryWith({
        {"kind"_ns, method.isClassMethod() ? "+"_ns : "-"_ns},
        {"selector"_ns, NSStringFromSelector(method.selector())},
        {"signature"_ns, NSString::stringWith(method.signature())},
    });
}

Ref<NSArray> makeClasses() {
    auto classes = NSMutableArray::init();
    for (Class *cls : qb::allClasses()) {
        NSMutableArray *const operations = NSMutableArray::array();
        for (const auto &method : cls->ownMethods())
            operations->addObject(operation(*method));
        NSMutableDictionary *const entry =
            NSMutableDictionary::dictionaryWith({{"name"_ns, cls->name()}, {"operations"_ns, operations}});
        if (Class *const superclass = cls->superclass())
            entry->setObjectForKey(superclass->name(), "superclass"_ns);
        classes->addObject(entry);
    }
    return classes;
}

Ref<NSArray> makeErrors() {
    auto errors = NSMutableArray::init();
    for (const qb::ErrorNumber &error : qb::kErrorNumbers)
        errors->addObject(NSDictionary::dictionaryWith({
            {"number"_ns, NSString::stringWithRestrictedFormat("%06d", error.number)},
            {"values"_ns, NSString::stringWith(error.values)},
            {"text"_ns, NSString::stringWith(error.format)},
        }));
    return errors;
}

// The list that is kept in `kept`, from the first time on.
NSArray *once(Ref<NSArray> &kept, Ref<NSArray> (*make)()) {
    if (!kept) {
        const NSAutoreleasePool pool;
        kept = make();
    }
    return kept;
}

} // namespace

NSArray *referenceFor(NSString *key) {
    static Ref<NSArray> classes, errors;
    if (key->view() == "classes")
        return once(classes, makeClasses);
    return key->view() == "errors" ? once(errors, makeErrors) : nullptr;
}

} // namespace publish
