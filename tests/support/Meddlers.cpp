#include "support/Meddlers.h"

#include "support/ClientClass.h"

#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include <gtest/gtest.h>

#include <exception>
#include <functional>
#include <memory>
#include <utility>

namespace {

int asksLeft = 0;                 // before the action
std::function<void()> action;     // done once
std::function<void()> lastAction; // done once, when a meddler is destroyed after that
BOOL isEqualToAll = NO;

const NSObject *asked = nullptr, *askedAbout = nullptr; // while it does the action

struct Meddler : ClientClass<Meddler, NSObject, "Meddler"> {
    ~Meddler() override {
        EXPECT_TRUE(this != asked && this != askedAbout) << "gone while it is asked";
        if (lastAction)
            std::exchange(lastAction, nullptr)();
    }
    static id make() { return (new Meddler)->autorelease(); }
    static Operations operations() {
        return {qb::method<"name">(&Meddler::stringValue), qb::method<"parentObject">(&Meddler::parentObject),
                qb::method<"childObjectWithName:">(&Meddler::childObjectWithName)};
    }

    BOOL isEqual(id other) const override { return ask(isEqualToAll || other == this, other); }
    std::uint32_t hash() const override { return ask(7u); }
    BOOL isNil() const override { return ask(NO); }
    NSString *stringValue() const override { return ask("meddler"_ns); }
    NSString *description() const override { return ask("meddler"_ns); }
    Ref<NSObject> copyWithZone(void *) const override {
        ask(NO);
        return self();
    }
    void encodeWithCoder(NSCoder *) const override { ask(NO); }
    id parentObject() const { return ask(id{}); }
    id childObjectWithName(NSString *) const { return ask(id{}); }

    template <class Answer>
    Answer ask(Answer answer, const NSObject *about = nullptr) const {
        if (action && asksLeft-- == 0) {
            asked = this;
            askedAbout = about;
            std::exchange(action, nullptr)();
            asked = askedAbout = nullptr;
        }
        return answer;
    }
};

struct Group {
    Ref<NSMutableArray> array = NSMutableArray::init();
    Ref<NSMutableDictionary> dictionary = NSMutableDictionary::init();
    Ref<NSMutableSet> set = NSMutableSet::init();
    Ref<NSObject> single;

    Group() {
        const NSAutoreleasePool pool;
        single = Meddler::make();
        for (int i = 0; i < 2; ++i) {
            array->addObject(Meddler::make());
            set->addObject(Meddler::make());
            dictionary->setObjectForKey(Meddler::make(), Meddler::make());
        }
        const id list = NSArray::arrayWith({Meddler::make(), Meddler::make()});
        array->addObject(NSDictionary::dictionaryWithObjectForKey(list, "list"_ns));
        const id inner = NSDictionary::dictionaryWithObjectForKey(Meddler::make(), "inner"_ns);
        dictionary->setObjectForKey(inner, NSString::stringWith("nested"));
    }
    void empty() const {
        array->removeAllObjects();
        dictionary->removeAllObjects();
        set->removeAllObjects();
    }
    operator Meddlers() const { return {array, dictionary, set, single}; }
};

using Operation = void (*)(const Meddlers &mine, const Meddlers &other);

// Returns whether so many questions were asked before.
bool meddleAfter(int asks, bool isOtherFreed, BOOL areAllEqual, Operation operation) {
    const NSAutoreleasePool pool;
    isEqualToAll = NO;
    const Group mine;
    auto other = std::make_unique<Group>();
    isEqualToAll = areAllEqual;
    asksLeft = asks;
    action = [&] {
        if (!isOtherFreed)
            return mine.empty(), other->empty();
        other = nullptr;
        lastAction = [&mine] { mine.empty(); };
    };
    try {
        operation(mine, *other);
    } catch (const std::exception &) { // as walks say that they were disturbed
    }
    lastAction = nullptr;
    return !std::exchange(action, nullptr);
}

} // namespace

void meddle(Operation operation) {
    for (const bool isOtherFreed : {false, true})
        for (const BOOL areAllEqual : {NO, YES})
            for (int asks = 0; meddleAfter(asks, isOtherFreed, areAllEqual, operation);)
                ++asks;
}
