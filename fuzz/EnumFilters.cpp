// Builds chains of filters over values of all kinds, with any selectors and arguments, and changes them on
// the way. Exceptions and dropped objects are fine; what a filter yields is a living object.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSCalendarDate.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Foundation/NSMutableString.h>
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/Foundation/NSSet.h>
#include <QBFoundation/QBBool.h>
#include <QBFoundation/QBEnumFilter.h>
#include <QBFoundation/QBEnumObjectFilter.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/QBNil.h>
#include <QBFoundation/Runtime/Class.h>
#include <QBFoundation/Runtime/Send.h>

#include "support/Choices.h"
#include "support/Require.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace {

// A value of each kind; `all` holds those made before.
id makeValue(std::size_t kind, NSArray *all) {
    switch (kind) {
    case 0:
        return "Text"_ns;
    case 1:
        return NSMutableString::stringWithString("12.5"_ns);
    case 2:
        return NSNumber::numberWithInt(-7);
    case 3:
        return NSNumber::numberWithDouble(0.5);
    case 4:
        return NSArray::arrayWithArray(all);
    case 5:
        return NSMutableArray::arrayWithArray(all);
    case 6:
        return NSMutableDictionary::dictionaryWithObjectForKey("value"_ns, "key"_ns);
    case 7:
        return NSMutableData::dataWithBytes("bytes", 5);
    case 8:
        return NSCalendarDate::dateWithTimeIntervalSinceReferenceDate(0);
    case 9:
        return NSMutableSet::setWithArray(all);
    case 10:
        return QBNil::value();
    case 11:
        return QBBool::trueBoolean();
    case 12:
        return all->objectEnumerator();
    case 13:
        return QBEnumSelectFilter::notNilFilter();
    default:
        return NSArray::cls();
    }
}
constexpr std::size_t kKinds = 15;

NSMutableArray *allValues() {
    NSMutableArray *const values = NSMutableArray::array();
    for (std::size_t kind = 0; kind < kKinds; ++kind)
        values->addObject(makeValue(kind, NSArray::arrayWithArray(values)));
    return values;
}

// Everything that the values answer, and what none does. References are counted by whoever owns them.
std::vector<SEL> allSelectors(NSArray *values) {
    std::vector<SEL> selectors = {nullptr, "fly"_sel, "fly:"_sel};
    const auto add = [&](const qb::Method &method) {
        const std::string_view name = method.selector()->view();
        if (name != "retain" && name != "release" && name != "autorelease")
            selectors.push_back(method.selector());
    };
    for (id value : *values)
        qb::forEachMethod(value->classObject(), add);
    qb::forEachMethod(NSArray::cls(), add);
    return selectors;
}

const std::vector<Class *> &filterClasses() {
    static const std::vector<Class *> classes = {QBEnumFilter::cls(),
                                                 QBEnumSelectFilter::cls(),
                                                 QBEnumRejectFilter::cls(),
                                                 QBEnumRejectOnErrorFilter::cls(),
                                                 QBEnumRejectOnFalseFilter::cls(),
                                                 QBEnumObjectFilter::cls(),
                                                 QBEnumObjectSelectFilter::cls(),
                                                 QBEnumObjectRejectFilter::cls(),
                                                 QBEnumObjectRejectOnErrorFilter::cls()};
    return classes;
}

class Run {
public:
    explicit Run(Choices choices)
        : choices_(choices), values_(allValues()), selectors_(allSelectors(values_)) {}

    // Messages make containers hold each other, which is no leak of the filters.
    ~Run() {
        for (id value : *values_)
            if (value->respondsToSelector("removeAllObjects"_sel))
                send<void>(value, "removeAllObjects"_sel);
    }
    Run(const Run &) = delete;
    Run &operator=(const Run &) = delete;

    void go() {
        id last = values_->objectEnumerator();
        for (std::size_t left = choices_.below(4); left != 0; --left)
            last = makeFilter(last);
        const Ref<QBEnumFilter> filter = makeFilter(last);
        for (unsigned pulled = 0; pulled < 4 * kKinds; ++pulled) {
            if (choices_.areLeft() && choices_.below(8) == 0)
                change(filter);
            const id yielded = filter->nextObject();
            if (!yielded)
                break;
            require(yielded->retainCount() != 0 && yielded->classObject(), "what is yielded lives");
        }
    }

private:
    id anything() { return choices_.below(4) == 0 ? nullptr : values_->objectAtIndex(index()); }
    std::uint32_t index() { return static_cast<std::uint32_t>(choices_.below(values_->count())); }

    QBEnumFilter *makeFilter(id source) {
        const Ref<NSObject> made = choices_.of(filterClasses())->construct();
        auto *const filter = static_cast<QBEnumFilter *>(made.get());
        filter->setFilterMsg(choices_.of(selectors_));
        filter->setArgument1(anything());
        filter->setArgument2(anything());
        if (auto *const other = qb::castOrNil<QBEnumObjectFilter>(filter))
            other->setFilterTarget(anything());
        filter->setSource(source);
        return static_cast<QBEnumFilter *>(Ref<NSObject>(made).autorelease());
    }

    void change(QBEnumFilter *filter) {
        switch (choices_.below(4)) {
        case 0:
            return filter->_setFilterMsg(choices_.of(selectors_));
        case 1:
            return filter->setArgument1(anything());
        case 2:
            return filter->setSource(makeFilter(anything()));
        default:
            values_->addObject("More"_ns);
        }
    }

    Choices choices_;
    NSMutableArray *values_;
    std::vector<SEL> selectors_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static QBErrorHandler *const handler = ERRORHANDLER = QBErrorHandler::init().detach();
    const NSAutoreleasePool pool;
    try {
        Run(Choices(data, size)).go();
    } catch (const NSException &) { // what the messages throw, and the enumerator of a changed array
    }
    handler->clearErrorStack();
    return 0;
}
