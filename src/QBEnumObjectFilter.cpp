#include <QBFoundation/QBEnumObjectFilter.h>

#include <QBFoundation/Runtime/MethodTable.h>
#include <QBFoundation/Runtime/Send.h>

#include "Foundation/Required.h"

namespace {

QBEnumObjectFilter *filterOfClass(Class *asked, id target, SEL message, id argument) {
    return send<Ref<QBEnumObjectFilter>>(asked, "initWithTarget:message:argument:"_sel, target, message,
                                         argument)
        .autorelease();
}
QBEnumObjectFilter *filterOfClass(Class *asked, id target, SEL message) {
    return filterOfClass(asked, target, message, nullptr);
}

} // namespace

Class *QBEnumObjectFilter::cls() {
    using Filter = QBEnumObjectFilter *;
    static const qb::Method methods[] = {
        qb::classMethod<"filterWithObject:message:", Filter(Class *, id, SEL)>(&filterOfClass),
        qb::classMethod<"filterWithObject:message:argument:", Filter(Class *, id, SEL, id)>(&filterOfClass),
        qb::initialiser<"initWithTarget:message:argument:">(&QBEnumObjectFilter::setUpWithTarget),
        qb::method<"filterTarget">(&QBEnumObjectFilter::filterTarget),
        qb::method<"setFilterTarget:">(&QBEnumObjectFilter::setFilterTarget),
        qb::method<"_setFilterTarget:">(&QBEnumObjectFilter::_setFilterTarget),
    };
    static Class *const self =
        new Class("QBEnumObjectFilter", QBEnumFilter::cls(), methods, qb::construct<QBEnumObjectFilter>);
    return self;
}

QBEnumObjectFilter::QBEnumObjectFilter(Yields yields) noexcept : FilterMakers(yields, SendsTo::target) {}

BOOL QBEnumObjectFilter::setUpWithTarget(id target, SEL message, id argument) {
    setFilterTarget(target);
    return setUpWithMessage(message, argument, nullptr);
}

void QBEnumObjectFilter::setFilterTarget(id target) {
    _setFilterTarget(target);
    invalidateCaches();
}

Ref<NSObject> QBEnumObjectFilter::copyWithZone(void *zone) const {
    Ref<NSObject> object = QBEnumFilter::copyWithZone(zone);
    static_cast<QBEnumObjectFilter *>(object.get())->setFilterTarget(filterTarget());
    return object;
}

Ref<QBEnumObjectFilter> QBEnumObjectFilter::copy() const {
    return qb::requiredCopy(this, "QBEnumObjectFilter copyWithZone:");
}

Class *QBEnumObjectSelectFilter::cls() {
    static Class *const self = new Class("QBEnumObjectSelectFilter", QBEnumObjectFilter::cls(), {},
                                         qb::construct<QBEnumObjectSelectFilter>);
    return self;
}

Class *QBEnumObjectRejectFilter::cls() {
    static const qb::Method methods[] = {qb::method<"ok">(&QBEnumObjectRejectFilter::ok)};
    static Class *const self = new Class("QBEnumObjectRejectFilter", QBEnumObjectFilter::cls(), methods,
                                         qb::construct<QBEnumObjectRejectFilter>);
    return self;
}

Class *QBEnumObjectRejectOnErrorFilter::cls() {
    static Class *const self = new Class("QBEnumObjectRejectOnErrorFilter", QBEnumObjectRejectFilter::cls(),
                                         {}, qb::construct<QBEnumObjectRejectOnErrorFilter>);
    return self;
}
