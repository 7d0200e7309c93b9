// Sends the library's objects and classes any messages with any values of the right kinds, at times when
// memory runs out: most of them make no sense, and none may do worse than to throw.
#include <QBFoundation/QBFoundation.h>

#include "support/Allocations.h"
#include "support/Choices.h"
#include "support/Require.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <new>
#include <string_view>
#include <vector>

namespace {

using qb::Kind;
using qb::Method;
using qb::Type;
using qb::Value;

constexpr const char *kTexts[] = {"",
                                  "a",
                                  "1234",
                                  "-5",
                                  "99999999999999999999",
                                  "1.5e300",
                                  "nan",
                                  "YES",
                                  "a/b/../c",
                                  ".",
                                  "//",
                                  "a.b.c",
                                  "x.REVERSE",
                                  "%s %d %@ %n %c %f",
                                  "YQ==",
                                  "a&amp;&lt;",
                                  "%41%zz+",
                                  "^[a-z",
                                  "(a|b)*\\1",
                                  "begin 644 x",
                                  "2003-02-29T12:00:00",
                                  "i:5;",
                                  "{a=(1,2);}",
                                  "<0fbd77>",
                                  "\xff",
                                  "Gr\xc3\xbc\xc3\x9f",
                                  "\xf0\x9f\x98\x80",
                                  "Europe/Berlin",
                                  "de",
                                  "count",
                                  "isEqual:",
                                  "a\nb",
                                  "objectForKey:",
                                  "@",
                                  "{?=ii}"};

constexpr std::int64_t kSmallNumbers[] = {0, 1, -1, 2, 3, 5, 7, 10, 16, 64, 100, 127, 128, 255, 256, 1000};

constexpr std::int64_t kNumbersAtLimits[] = {
    INT32_MAX, INT32_MIN,  UINT32_MAX,       UINT32_MAX + std::int64_t{1}, INT64_MAX, INT64_MIN,
    INT16_MAX, UINT16_MAX, 1'000'000'000'000};

constexpr double kReals[] = {0.0,
                             0.1,
                             -1.0,
                             1.5,
                             1e10,
                             -1e18,
                             1e308,
                             std::numeric_limits<double>::infinity(),
                             std::numeric_limits<double>::quiet_NaN()};

template <class List>
bool isOneOf(std::string_view name, const List &list) {
    return std::find(std::begin(list), std::end(list), name) != std::end(list);
}

// What counts references, and the classes that work with the process or the system around it: they end it,
// wait, or change what every later input finds.
bool isLeftOut(Class *cls, const Method &method) {
    static constexpr std::string_view kClasses[] = {
        "NSAutoreleasePool", "NSDirectoryEnumerator", "NSFileManager", "OSDynamicLoader", "OSEnvironment",
        "OSFilePath",        "OSNameService",         "OSPipe",        "OSProcess",       "OSSocket",
        "OSUserIO",          "QBFileOutputStream"};
    static constexpr std::string_view kSelectors[] = {"retain", "release", "autorelease",
                                                      "setDefaultTimeZone:"};
    const std::string_view name = method.selector()->view();
    return isOneOf(cls->nameView(), kClasses) || isOneOf(method.owner()->nameView(), kClasses) ||
           isOneOf(name, kSelectors) || name.find("File") != name.npos || name.find("Fatal") != name.npos;
}

bool hasParameter(const Method &method, Kind kind) {
    for (std::uint32_t i = 0; i < method.parameterCount(); ++i)
        if (method.parameterType(i).kind == kind)
            return true;
    return false;
}

// Memory that a caller has to name rightly, and functions, can't be made up: they are null.
bool takesBytes(const Method &method) {
    return hasParameter(method, Kind::cString) && hasParameter(method, Kind::integer);
}

// What only subclasses have and call is given its memory by the operations in front of it.
bool canBeMadeUp(const Method &method) {
    return method.selector()->text()[0] != '_' ||
           !(hasParameter(method, Kind::pointer) || takesBytes(method));
}

bool takesMemoryByNumber(const Method &method) {
    const std::string_view name = method.selector()->view();
    return name.find("apacity") != name.npos || name.find("ength") != name.npos ||
           name.find("ytesInRange") != name.npos;
}

// The operations that an object answers, or a class when `ofClass`.
const std::vector<const Method *> &operationsOf(Class *cls, bool ofClass) {
    static std::map<std::pair<Class *, bool>, std::vector<const Method *>> known;
    std::vector<const Method *> &operations = known[{cls, ofClass}];
    if (operations.empty()) {
        qb::forEachMethod(cls, [&](const Method &method) {
            if (static_cast<bool>(method.isClassMethod()) == ofClass && !isLeftOut(cls, method) &&
                canBeMadeUp(method))
                operations.push_back(&method);
        });
    }
    return operations;
}

class Run {
public:
    explicit Run(Choices choices) : choices_(choices) {}

    void go() {
        while (choices_.areLeft())
            sendToClassOrObject();
    }

private:
    void sendToClassOrObject() {
        const bool isToClass = objects_.empty() || choices_.below(4) == 0;
        const id receiver = isToClass ? static_cast<id>(choices_.of(qb::allClasses())) : keptObject();
        Class *const cls = isToClass ? static_cast<Class *>(receiver) : receiver->classObject();
        const auto &operations = operationsOf(cls, isToClass);
        if (operations.empty())
            return;
        const Method &method = *choices_.of(operations);
        std::vector<Value> values;
        for (std::uint32_t i = 0; i < method.parameterCount(); ++i)
            values.push_back(valueFor(method, method.parameterType(i)));
        try {
            invoke(receiver, method.selector(), std::move(values));
        } catch (const NSException &) { // most messages are nonsense
        } catch (const std::bad_alloc &) {
        }
    }

    void invoke(id receiver, SEL selector, std::vector<Value> values) {
        NSInvocation *const invocation = NSInvocation::invocationWithTarget(receiver, selector);
        invocation->setArguments(std::move(values));
        {
            const bool runsOut = choices_.below(3) == 0;
            const AllocationFault fault(runsOut ? static_cast<unsigned>(choices_.below(8)) : UINT_MAX, 1);
            invocation->invoke();
        }
        const id result = invocation->returnValue().object();
        if (!result)
            return;
        require(result->retainCount() != 0 && result->classObject(), "what is returned lives");
        objects_.emplace_back(result);
    }

    Value valueFor(const Method &method, const Type &type) {
        const bool isSmall = takesMemoryByNumber(method);
        switch (type.kind) {
        case Kind::integer:
            return number(type, isSmall);
        case Kind::character:
            return static_cast<char>(choices_.below(256));
        case Kind::real:
            return choices_.of(kReals);
        case Kind::cString:
            return takesBytes(method) ? nullptr : choices_.of(kTexts);
        case Kind::object:
            return objectOf(type);
        case Kind::selector:
            return Selector::named(choices_.of(kTexts));
        case Kind::classObject:
            return choices_.of(qb::allClasses());
        case Kind::range:
            return NSRange{index(isSmall), index(isSmall)};
        case Kind::argList:
            return qb::ArgList(
                {Value(anyObject()), Value(choices_.of(kSmallNumbers)), Value(choices_.of(kTexts))});
        default:
            return nullptr;
        }
    }

    std::int64_t anyNumber(bool isSmall) {
        return isSmall || choices_.below(4) != 0 ? choices_.of(kSmallNumbers) : choices_.of(kNumbersAtLimits);
    }
    std::uint32_t index(bool isSmall) { return static_cast<std::uint32_t>(anyNumber(isSmall)); }

    // A number that the type holds: the others would only be refused.
    Value number(const Type &type, bool isSmall) {
        const std::int64_t number = anyNumber(isSmall);
        const unsigned spare = 64u - type.width;
        if (type.isSigned)
            return static_cast<std::int64_t>(static_cast<std::uint64_t>(number) << spare) >> spare;
        return static_cast<std::uint64_t>(number) << spare >> spare;
    }

    id objectOf(const Type &type) {
        Class *const cls = type.cls ? type.cls() : NSObject::cls();
        if (cls == NSString::cls() && choices_.below(2) == 0)
            return text();
        for (unsigned attempts = 0; attempts < 8; ++attempts) {
            const id object = anyObject();
            if (object && object->isKindOfClass(cls))
                return object;
        }
        return nullptr;
    }

    id anyObject() {
        switch (choices_.below(objects_.empty() ? 3 : 8)) {
        case 0:
            return choices_.below(2) == 0 ? nullptr : static_cast<id>(QBNil::value());
        case 1:
            return text();
        case 2:
            return NSNumber::numberWithLongLong(anyNumber(/*isSmall=*/false));
        default:
            return keptObject();
        }
    }

    id keptObject() { return objects_[choices_.below(objects_.size())]; }

    NSString *text() { return NSString::stringWithCString(choices_.of(kTexts)); }

    Choices choices_;
    std::vector<Ref<NSObject>> objects_;
};

} // namespace

// Nonsense makes objects hold each other for ever, which is no leak: those are left to the other targets.
extern "C" int __lsan_is_turned_off() {
    return 1;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static QBErrorHandler *const handler = ERRORHANDLER = QBErrorCatalogue::init().detach();
    // Some operations keep what they are given unretained, so nothing goes before the end.
    const NSAutoreleasePool pool;
    Run(Choices(data, size)).go();
    handler->clearErrorStack();
    return 0;
}
