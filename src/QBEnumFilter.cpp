#include <QBFoundation/QBEnumFilter.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/OneShotEnumerator.h>
#include <QBFoundation/Runtime/MethodTable.h>
#include <QBFoundation/Runtime/Send.h>

#include "Foundation/NSEnumerator.Tables.h"
#include "Foundation/Required.h"

namespace {

QBEnumFilter *filterOfClass(Class *asked, SEL message, id argument, id argument2) {
    return send<Ref<QBEnumFilter>>(asked, "initWithMessage:argument:argument:"_sel, message, argument,
                                   argument2)
        .autorelease();
}
QBEnumFilter *filterOfClass(Class *asked, SEL message, id argument) {
    return filterOfClass(asked, message, argument, nullptr);
}
QBEnumFilter *filterOfClass(Class *asked, SEL message) {
    return filterOfClass(asked, message, nullptr, nullptr);
}
QBEnumFilter *equalFilterOfClass(Class *asked, id object) {
    return filterOfClass(asked, "isEqual:"_sel, object);
}
QBEnumFilter *caseEqualFilterOfClass(Class *asked, id object) {
    return filterOfClass(asked, "isCaseEqualTo:"_sel, object);
}
QBEnumFilter *notNilFilterOfClass(Class *asked) {
    return filterOfClass(asked, "isNotNil"_sel);
}

// Whether the object's class says itself how it is gone through.
bool isEnumerator(id object) {
    const qb::Method *const method = object->methodForSelector("nextObject"_sel);
    return method && method->owner() != NSObject::cls();
}

} // namespace

Class *QBEnumFilter::cls() {
    using Filter = QBEnumFilter *;
    static const qb::Method methods[] = {
        qb::classMethod<"filterWithMessage:", Filter(Class *, SEL)>(&filterOfClass),
        qb::classMethod<"filterWithMessage:argument:", Filter(Class *, SEL, id)>(&filterOfClass),
        qb::classMethod<"filterWithMessage:argument:argument:", Filter(Class *, SEL, id, id)>(&filterOfClass),
        qb::classMethod<"equalFilter:">(&equalFilterOfClass),
        qb::classMethod<"caseEqualFilter:">(&caseEqualFilterOfClass),
        qb::classMethod<"notNilFilter">(&notNilFilterOfClass),
        qb::initialiser<"initWithMessage:argument:argument:">(&QBEnumFilter::setUpWithMessage),
        qb::method<"source">(&QBEnumFilter::source),
        qb::method<"setSource:">(&QBEnumFilter::setSource),
        qb::method<"_setSource:">(&QBEnumFilter::_setSource),
        qb::method<"filterMsg">(&QBEnumFilter::filterMsg),
        qb::method<"setFilterMsg:">(&QBEnumFilter::setFilterMsg),
        qb::method<"_setFilterMsg:">(&QBEnumFilter::_setFilterMsg),
        qb::method<"argument1">(&QBEnumFilter::argument1),
        qb::method<"argument2">(&QBEnumFilter::argument2),
        qb::method<"setArgument1:">(&QBEnumFilter::setArgument1),
        qb::method<"setArgument2:">(&QBEnumFilter::setArgument2),
        qb::method<"invalidateCaches">(&QBEnumFilter::invalidateCaches),
        qb::method<"doFilter:">(&QBEnumFilter::doFilter),
    };
    static Class *const self =
        new Class("QBEnumFilter", NSEnumerator::cls(), methods, qb::construct<QBEnumFilter>, {"NSCopying"});
    return self;
}

BOOL QBEnumFilter::setUpWithMessage(SEL message, id argument, id argument2) {
    setFilterMsg(message);
    setArgument1(argument);
    setArgument2(argument2);
    return YES;
}

void QBEnumFilter::setSource(id source) {
    if (!source || isEnumerator(source))
        return _setSource(source);
    const auto single = OneShotEnumerator::initWithObject(source);
    _setSource(single);
}

void QBEnumFilter::setFilterMsg(SEL message) {
    _setFilterMsg(message);
    invalidateCaches();
}

Ref<NSObject> QBEnumFilter::copyWithZone(void *) const {
    Ref<NSObject> object = classObject()->construct();
    auto *const filter = static_cast<QBEnumFilter *>(object.get());
    filter->setFilterMsg(filterMsg());
    filter->setSource(source());
    filter->setArgument1(argument1());
    filter->setArgument2(argument2());
    return object;
}

Ref<QBEnumFilter> QBEnumFilter::copy() const {
    return qb::requiredCopy(this, "QBEnumFilter copyWithZone:");
}

// --- Subclasses ---

Class *QBEnumSelectFilter::cls() {
    static Class *const self =
        new Class("QBEnumSelectFilter", QBEnumFilter::cls(), {}, qb::construct<QBEnumSelectFilter>);
    return self;
}

Class *QBEnumRejectFilter::cls() {
    static const qb::Method methods[] = {qb::method<"ok">(&QBEnumRejectFilter::ok)};
    static Class *const self =
        new Class("QBEnumRejectFilter", QBEnumFilter::cls(), methods, qb::construct<QBEnumRejectFilter>);
    return self;
}

Class *QBEnumRejectOnErrorFilter::cls() {
    static Class *const self = new Class("QBEnumRejectOnErrorFilter", QBEnumRejectFilter::cls(), {},
                                         qb::construct<QBEnumRejectOnErrorFilter>);
    return self;
}

Class *QBEnumRejectOnFalseFilter::cls() {
    static Class *const self = new Class("QBEnumRejectOnFalseFilter", QBEnumRejectFilter::cls(), {},
                                         qb::construct<QBEnumRejectOnFalseFilter>);
    return self;
}

// --- Enumerators ---

std::span<const qb::Method> qb::tables::enumeratorFiltering() {
    static const qb::Method methods[] = {
        qb::classMethod<"filterClass">(&NSEnumerator::filterClass),
        qb::method<"filterWithMessage:", QBEnumFilter *(SEL)>(&NSEnumerator::filterWithMessage),
        qb::method<"filterWithMessage:argument:", QBEnumFilter *(SEL, id)>(&NSEnumerator::filterWithMessage),
    };
    return methods;
}

Class *NSEnumerator::filterClass() {
    return QBEnumFilter::cls();
}

QBEnumFilter *NSEnumerator::filterWithMessage(SEL message) {
    return filterWithMessage(message, nullptr);
}

QBEnumFilter *NSEnumerator::filterWithMessage(SEL message, id argument) {
    Class *const wanted = send<Class *>(classObject(), "filterClass"_sel);
    auto *const filter = send<QBEnumFilter *>(wanted, "filterWithMessage:argument:"_sel, message, argument);
    if (filter)
        filter->setSource(this);
    return filter;
}
