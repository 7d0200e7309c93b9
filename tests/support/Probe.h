// Elements that answer messages of all kinds.
#ifndef QBFOUNDATION_TESTS_SUPPORT_PROBE_H
#define QBFOUNDATION_TESTS_SUPPORT_PROBE_H

#include <QBFoundation/QBErrorHandler.h>

#include "support/Bytes.h"
#include "support/ClientClass.h"
#include "support/Describe.h"

#include <functional>

/// Answers with a result of each kind that messages have, with zero or nil when its name begins with a dash.
class Probe : public ClientClass<Probe, NSObject, "Probe"> {
public:
    Probe() = default;
    explicit Probe(const char *name) : name_(NSString::stringWithCString(name)) {}

    static qb::MethodTables methods() {
        static const qb::Method table[] = {
            qb::method<"object">(&Probe::object),
            qb::method<"kind">(&Probe::kind),
            qb::method<"made">(&Probe::made),
            qb::method<"truth">(&Probe::truth),
            qb::method<"flag">(&Probe::flag),
            qb::method<"letter">(&Probe::letter),
            qb::method<"big">(&Probe::big),
            qb::method<"real">(&Probe::real),
            qb::method<"text">(&Probe::text),
            qb::method<"place">(&Probe::place),
            qb::method<"message">(&Probe::message),
            qb::method<"range">(&Probe::range),
            qb::method<"nothing">(&Probe::nothing),
            qb::method<"takes:">(&Probe::takes),
            qb::method<"takesText:">(&Probe::takesText),
            qb::method<"takesClass:">(&Probe::takesClass),
            qb::method<"takesPointer:">(&Probe::takesPointer),
            qb::method<"takes:two:">(&Probe::takesTwo),
            qb::method<"takes:two:three:">(&Probe::takesThree),
            qb::method<"takesMore:">(&Probe::takesMore),
            qb::method<"raise">(&Probe::raise),
            qb::method<"act">(&Probe::act),
        };
        return table;
    }
    NSString *description() const override { return name_; }

    /// Returns the probes of those names.
    static NSArray *probes(std::initializer_list<const char *> names) {
        NSMutableArray *const array = NSMutableArray::array();
        for (const char *name : names)
            array->addObject(Ref<Probe>::adopt(new Probe(name)).get());
        return array;
    }

    bool isOn() const { return name_->cString()[0] != '-'; }

    id object() const { return isOn() ? name_.get() : nullptr; }
    Class *kind() const { return isOn() ? cls() : nullptr; }
    Ref<NSString> made() const { return isOn() ? name_ : nullptr; }
    BOOL truth() const { return isOn() ? -128 : 0; }
    bool flag() const { return isOn(); }
    char letter() const { return isOn() ? 'x' : '\0'; }
    std::int64_t big() const { return isOn() ? std::int64_t{1} << 40 : 0; } // with no bit in its lower half
    double real() const { return isOn() ? 0.25 : 0; }
    const char *text() const { return isOn() ? "" : nullptr; }
    const void *place() const { return isOn() ? this : nullptr; }
    SEL message() const { return isOn() ? "object"_sel.selector() : nullptr; }
    NSRange range() const { return NSMakeRange(0, isOn() ? 1 : 0); }
    void nothing() const {}

    /// What it was called with.
    NSString *takes(id one) const { return string(describe(name_.get()) + "<" + describe(one) + ">"); }
    NSString *takesText(NSString *one) const { return takes(one); }
    NSString *takesClass(Class *one) const { return takes(one); }
    NSString *takesPointer(const char *one) const { return one ? "pointer"_ns : "(null)"_ns; }
    NSString *takesTwo(id one, id two) const {
        return string(describe(name_.get()) + "<" + describe(one) + ", " + describe(two) + ">");
    }
    NSString *takesThree(id one, id two, id three) const {
        return string(describe(takesTwo(one, two)) + describe(three));
    }
    NSString *takesMore(id one, const qb::ArgList &more) const {
        return string(describe(takes(one)) + std::to_string(more.count()));
    }
    /// Raises error 990002 (name) unless the name begins with a dash.
    void raise() const {
        if (isOn())
            ERRORHANDLER->raiseErrorInFile("tests/Probe", __LINE__, 990002, name_.get());
    }
    /// Does what the test wants it to do, and answers YES.
    BOOL act() const {
        action(const_cast<Probe *>(this));
        return YES;
    }

    inline static std::function<void(Probe *)> action;

private:
    Ref<NSString> name_ = NSString::string();
};

/// A probe of a class with operations of its own.
struct OtherProbe : ClientClass<OtherProbe, Probe, "OtherProbe"> {
    using ClientClass::ClientClass;
    static qb::MethodTables methods() {
        static const qb::Method table[] = {qb::method<"other">(&OtherProbe::other)};
        return table;
    }
    NSString *other() const { return "other"_ns; }
};

#endif
