#include "support/PoolFixture.h"

using QBEnumFilterTest = PoolFixture;

namespace {

/// Answers with a result of each kind that messages have, with zero or nil when its name begins with a dash.
struct Probe : ClientClass<Probe, NSObject, "Probe"> {
    Probe() = default;
    explicit Probe(const char *name) : name_(NSString::stringWithCString(name)) {}

    static Operations operations() {
        return {qb::method<"object">(&Probe::object),
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
                qb::method<"act">(&Probe::act)};
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
    NSString *takesTwo(id a, id b) const { return NSString::stringWithFormat("%@<%@, %@>"_ns, name_, a, b); }
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
    /// Does what the test wants it to do, and answers itself.
    Probe *act() {
        action(this);
        return this;
    }

    inline static std::function<void(Probe *)> action;

    Ref<NSString> name_ = NSString::string();
};

/// A client's filter, which lets every object pass.
struct Passing : ClientClass<Passing, QBEnumFilter, "Passing"> {
    id doFilter(id object) override { return object; }
};

/// A client's enumerator, with filters of its own.
struct Single : ClientClass<Single, NSEnumerator, "Single"> {
    static Operations operations() { return {qb::classMethod<"filterClass">(&Single::filterClass)}; }
    static Class *filterClass() { return Passing::cls(); }
    id nextObject() override { return std::exchange(isDone_, true) ? nullptr : "x"_ns; }

    bool isDone_ = false;
};

/// Changes a filter's source when it goes.
struct Changer final : ClientClass<Changer, NSObject, "Changer"> {
    ~Changer() override {
        if (filter)
            filter->_setSource(nullptr);
    }
    Ref<QBEnumFilter> filter;
};

QBEnumFilter *filterOfClass(const char *name, SEL message, id argument = nullptr, id argument2 = nullptr) {
    Class *const cls = NSClassFromString(NSString::stringWithCString(name));
    return send<QBEnumFilter *>(cls, "filterWithMessage:argument:argument:"_sel, message, argument,
                                argument2);
}

std::string yielded(QBEnumFilter *filter, NSArray *elements) {
    return describe(elements->objectsFilteredWith(filter));
}

struct Mark {
    virtual ~Mark() = default;
    virtual BOOL isMarked() const { return mark == 7; }
    int mark = 7;
};

/// Has an operation from beside NSObject, one that a subclass overrides, and one in both.
struct Marked : ClientClass<Marked, NSObject, "Marked">, Mark {
    static Operations operations() {
        return {qb::method<"kind">(&Marked::kind), qb::method<"itself">(&Marked::itself),
                qb::method<"isMarked", BOOL()>(static_cast<BOOL (Marked::*)() const>(&Marked::isMarked))};
    }
    virtual NSString *kind() const { return "marked"_ns; }
    Marked *itself() { return this; }
};
struct Remarked final : ClientClass<Remarked, Marked, "Remarked"> {
    NSString *kind() const override { return "remarked"_ns; }
    BOOL isMarked() const override { return mark != 7; }
};

const qb::ClassRegistration registration{&Passing::cls};

NSString *added(id self) {
    return static_cast<Probe *>(self)->takes("added"_ns);
}

} // namespace

TEST_F(QBEnumFilterTest, AnswersOfAllKindsAreZeroOrNot) {
    NSArray *const elements = Probe::probes({"a", "-b", "c"});
    const auto yieldedBy = [&](const char *cls, const char *message) {
        return yielded(filterOfClass(cls, Selector::named(message)), elements);
    };
    for (const char *message : {"object", "kind", "made", "truth", "flag", "letter", "big", "real", "text",
                                "place", "message", "range"}) {
        EXPECT_EQ(yieldedBy("QBEnumSelectFilter", message), "(a, c)") << message;
        EXPECT_EQ(yieldedBy("QBEnumRejectOnFalseFilter", message), "(a, c)") << message;
        EXPECT_EQ(yieldedBy("QBEnumRejectFilter", message), "(-b)") << message;
    }
    EXPECT_EQ(yieldedBy("QBEnumRejectFilter", "nothing"), "(a, -b, c)");
    // Only objects are answers of a mapping filter.
    EXPECT_EQ(yieldedBy("QBEnumFilter", "made"), "(a, c)");
    for (const char *message : {"truth", "big", "text", "nothing"})
        EXPECT_EQ(yieldedBy("QBEnumFilter", message), "()") << message;
}

TEST_F(QBEnumFilterTest, AnOperationGetsAsManyValuesAsItTakes) {
    // What an element answers, and what a target does about the element.
    const std::tuple<const char *, id, id, const char *, const char *> rows[] = {
        {"object", "x"_ns, "y"_ns, "(e)", "(t)"},
        {"takes:", "x"_ns, "y"_ns, "(e<x>)", "(t<e>)"},
        {"takes:two:", nullptr, "y"_ns, "(e<(null), y>)", "(t<e, (null)>)"},
        {"takes:two:three:", "x"_ns, "y"_ns, "()", "(t<e, x>y)"}, // more than an element is sent
        {"takesMore:", "x"_ns, "y"_ns, "(e<x>0)", "(t<e>0)"},
        {"takesText:", "x"_ns, nullptr, "(e<x>)", "()"}, // the element is no text
        {"takesClass:", NSString::cls(), nullptr, "(e<NSString>)", "()"},
        {"takesPointer:", nullptr, nullptr, "((null))", "()"},
        {"fly", nullptr, nullptr, "()", "()"},
    };
    NSArray *const element = Probe::probes({"e"});
    const id target = Probe::probes({"t"})->firstObject();
    for (const auto &[name, argument, argument2, answer, targetAnswer] : rows) {
        SCOPED_TRACE(name);
        const SEL message = Selector::named(name);
        EXPECT_EQ(describe(element->filterWithSelector(message, argument, argument2)), answer);
        EXPECT_EQ(describe(element->filterWithObjectSelector(target, message, argument, argument2)),
                  targetAnswer);
        // Whoever has no such operation, or one that wants other values, is dropped, except on errors.
        const auto kept = [&, argument = argument, argument2 = argument2](const char *cls) {
            return yielded(filterOfClass(cls, message, argument, argument2), element);
        };
        const bool isThere = std::string_view(answer) != "()";
        EXPECT_EQ(kept("QBEnumRejectFilter"), "()");
        EXPECT_EQ(kept("QBEnumSelectFilter"), isThere ? "(e)" : "()");
        EXPECT_EQ(kept("QBEnumRejectOnErrorFilter"), isThere ? "()" : "(e)");
    }
    // Nil serves for any class, a coder's too.
    EXPECT_REASON(NSArray::arrayWithObjects("x"_ns)->filterWithSelector("encodeWithCoder:"_sel),
                  "NSCoder must not be nil where an object is encoded or decoded.");
}

TEST_F(QBEnumFilterTest, EachClassGetsItsOwnOperationWheneverItComes) {
    // Classes are objects of one kind, with operations of their own.
    NSArray *const once = NSArray::arrayWithObjects(Probe::probes({"o"})->firstObject(), QBNil::value(),
                                                    number(0), NSString::cls(), NSArray::cls());
    NSArray *const elements = once->arrayByAddingObjectsFromArray(once);
    EXPECT_EQ(describe(elements->filterWithSelector("stringValue"_sel)),
              "(o, 0, NSString, NSArray, o, 0, NSString, NSArray)");
    EXPECT_EQ(describe(elements->filterWithSelector("array"_sel)), "((), ())"); // a class's operation
}

TEST_F(QBEnumFilterTest, MembersOfBasesAndOfSubclassesAreTheOnesCalled) {
    NSArray *const once = NSArray::arrayWithObjects(Ref<Marked>::adopt(new Marked).get(),
                                                    Ref<Remarked>::adopt(new Remarked).get());
    NSArray *const elements = once->arrayByAddingObjectsFromArray(once);
    EXPECT_EQ(describe(elements->filterWithSelector("kind"_sel)), "(marked, remarked, marked, remarked)");
    NSArray *const marked = elements->filterWithSelector("itself"_sel);
    EXPECT_TRUE(marked->isEqual(elements));
#ifndef __SANITIZE_ADDRESS__ // the compiler's check takes the moved `this` for a Marked
    EXPECT_EQ(describe(marked->objectsFilteredWith(filterOfClass("QBEnumSelectFilter", "isMarked"_sel))
                           ->filterWithSelector("kind"_sel)),
              "(marked, marked)");
#endif
}

TEST_F(QBEnumFilterTest, ChangesCountFromTheNextObjectOn) {
    const Ref<QBEnumFilter> filter = filterOfClass("QBEnumFilter", "takes:"_sel, "x"_ns);
    filter->setSource(Probe::probes({"a", "b", "c", "d", "e", "f"})->objectEnumerator());
    EXPECT_EQ(describe(filter->nextObject()), "a<x>");
    filter->setArgument1("y"_ns);
    EXPECT_EQ(describe(filter->nextObject()), "b<y>");
    filter->_setFilterMsg("object"_sel); // the operation found for the class stays
    EXPECT_EQ(describe(filter->nextObject()), "c<y>");
    filter->invalidateCaches();
    EXPECT_EQ(describe(filter->nextObject()), "d");
    filter->setFilterMsg("addedAtRunTime"_sel);
    EXPECT_EQ(filter->nextObject(), nullptr); // all were dropped
    filter->setSource(Probe::probes({"i"})->objectEnumerator());
    Probe::cls()->addMethod("addedAtRunTime"_sel, &added);
    EXPECT_EQ(describe(filter->nextObject()), "i<added>");
}

TEST_F(QBEnumFilterTest, SourcesAreKeptSharedAndGivenBack) {
    const Ref<NSEnumerator> source = Probe::probes({"a", "b"})->objectEnumerator();
    const std::uint32_t before = source->retainCount();
    const auto filter = QBEnumObjectSelectFilter::initWithTarget("t"_ns, "isEqual:"_sel, "x"_ns);
    filter->setSource(source);
    filter->setArgument2("y"_ns);
    {
        const Ref<QBEnumObjectFilter> copy = filter->copy();
        EXPECT_EQ(source->retainCount(), before + 2);
        EXPECT_TRUE(copy->isMemberOfClass(QBEnumObjectSelectFilter::cls()));
        EXPECT_EQ(
            describe(NSArray::arrayWithObjects(copy->filterTarget(), copy->argument1(), copy->argument2())),
            "(t, x, y)");
    }
    QBEnumFilter *const behind = filterOfClass("QBEnumFilter", "object"_sel);
    behind->setSource(filter);
    behind->nextObject();
    inOwnPool([&] { filter->setSource("alone"_ns); }); // no enumerator: yields itself
    EXPECT_EQ(source->retainCount(), before);
    filter->setFilterTarget("alone"_ns);
    EXPECT_EQ(describe(filter->allObjects()), "(alone)");
}

TEST_F(QBEnumFilterTest, EnumeratorsChooseTheClassOfTheirFilters) {
    const auto single = Ref<Single>::adopt(new Single);
    const id filter = send<id>(single.get(), "filterWithMessage:"_sel, "object"_sel);
    EXPECT_TRUE(filter->isMemberOfClass(Passing::cls()));
    EXPECT_EQ(describe(send<id>(filter, "allObjects"_sel)), "(x)");
    NSArray *const letters = NSArray::arrayWithObjects("a"_ns, "B"_ns, QBNil::value(), "b"_ns);
    EXPECT_EQ(describe(letters->objectsFilteredWith(QBEnumSelectFilter::caseEqualFilter("b"_ns))), "(B, b)");
    EXPECT_EQ(describe(letters->objectsFilteredWith(QBEnumSelectFilter::equalFilter("b"_ns))), "(b)");
    EXPECT_EQ(describe(letters->nonNil()), "(a, B, b)");
}

TEST_F(QBEnumFilterTest, ErrorsAreWhatIsPendingAfterTheMessage) {
    NSArray *const elements = Probe::probes({"-a", "b", "-c"});
    EXPECT_TRUE(Probe::probes({"-a", "-c"})->allOk("raise"_sel));
    expectError(990002, "b", [&] { // which stays pending
        EXPECT_EQ(yielded(filterOfClass("QBEnumRejectOnErrorFilter", "raise"_sel), elements), "(b, -c)");
        EXPECT_FALSE(elements->allOk("truth"_sel));
    });
}

TEST_F(QBEnumFilterTest, AllOfThemOrNot) {
    NSArray *const on = Probe::probes({"a", "b"});
    NSArray *const off = Probe::probes({"-a", "-b"});
    NSArray *const mixed = on->arrayByAddingObjectsFromArray(off);
    EXPECT_TRUE(NSArray::array()->allTrue("truth"_sel) && NSArray::array()->allFalse("truth"_sel));
    EXPECT_TRUE(on->allTrue("truth"_sel) && off->allFalse("truth"_sel));
    EXPECT_FALSE(mixed->allTrue("truth"_sel) || mixed->allFalse("truth"_sel));
    EXPECT_TRUE(mixed->allOkWithObject(on, "isEqual:"_sel));
    EXPECT_FALSE(mixed->allTrueWithObject(on->firstObject(), "isEqual:"_sel));
    EXPECT_EQ(describe(mixed->selectWithObject(on->firstObject(), "isEqual:"_sel)), "(a)");
    EXPECT_EQ(describe(mixed->rejectWithSelector("isEqual:"_sel, on->firstObject())), "(b, -a, -b)");
    const auto rejected = QBEnumRejectFilter::initWithMessage("truth"_sel, nullptr, nullptr);
    mixed->objectEnumeratorFilteredWith(rejected);
    EXPECT_FALSE(rejected->ok()); // used up to the first one that is yielded
    EXPECT_EQ(describe(rejected->allObjects()), "(-b)");
}

TEST_F(QBEnumFilterTest, MessagesMayDoWhatTheyLike) {
    const Ref<NSMutableArray> elements(static_cast<NSMutableArray *>(Probe::probes({"a", "b", "c"})));
    Probe::action = [](Probe *probe) {
        if (describe(probe) == "b")
            throw InvalidArgumentException("b");
    };
    const Ref<QBEnumFilter> filter = filterOfClass("QBEnumSelectFilter", "act"_sel);
    elements->objectEnumeratorFilteredWith(filter);
    EXPECT_EQ(describe(filter->nextObject()), "a");
    EXPECT_REASON(filter->nextObject(), "b");
    EXPECT_EQ(describe(filter->nextObject()), "c"); // and goes on behind it
    // The element destroys all that it comes from: the array's reference to it, the filter's source.
    Probe::action = [&](Probe *) {
        const NSAutoreleasePool pool;
        filter->setSource("other"_ns);
        elements->removeAllObjects();
    };
    filter->setSource(elements->objectEnumerator());
    EXPECT_EQ(describe(filter->nextObject()), "a"); // it was on its way already
    EXPECT_EQ(filter->nextObject(), nullptr);       // and a text has no `act`
    Probe::action = nullptr;
}

TEST_F(QBEnumFilterTest, ATargetMayReplaceItselfAndBeTheAnswer) {
    Ref<Probe> target = Ref<Probe>::adopt(new Probe);
    const auto filter = QBEnumObjectFilter::initWithTarget(target, "act"_sel, nullptr);
    Probe::action = [&](Probe *) { filter->setFilterTarget(nullptr); };
    target = nullptr;
    NSArray *const filtered = NSArray::arrayWith({"a"_ns})->objectsFilteredWith(filter);
    EXPECT_EQ(filtered->objectAtIndex(0)->retainCount(), 1u); // the array's
    Probe::action = nullptr;
}

TEST_F(QBEnumFilterTest, AFilterMayGoBeforeWhatIsKnownOfItsChain) {
    NSArray *const elements = NSArray::arrayWith({"a"_ns, "b"_ns});
    const auto used = [&] {
        QBEnumFilter *const filter = filterOfClass("QBEnumSelectFilter", "isNotNil"_sel);
        filter->setSource(elements->objectEnumerator());
        EXPECT_EQ(describe(filter->nextObject()), "a");
        return filter;
    };
    for (unsigned depth = 0; depth < 100; ++depth) { // what lies deep is destroyed later
        Ref<NSObject> last;
        const NSAutoreleasePool pool;
        const auto changer = Ref<Changer>::adopt(new Changer);
        changer->filter = used();
        last = NSArray::arrayWith({used(), changer.get()});
        for (unsigned i = 0; i < depth; ++i)
            last = NSArray::arrayWith({last.get()});
    }
}

TEST_F(QBEnumFilterTest, FiltersBehindEachOtherMeetNoEndOfTheStack) {
    const auto chain = [](unsigned count, auto makeFilter) {
        id last = Probe::probes({"a", "-b", "c"})->objectEnumerator();
        for (unsigned i = 0; i < count; ++i) {
            QBEnumFilter *const next = makeFilter(i);
            next->setSource(last);
            last = next;
        }
        return static_cast<QBEnumFilter *>(last);
    };
    ASSERT_TRUE(runOnSmallStack([&] {
        const NSAutoreleasePool pool;
        QBEnumFilter *const ours = chain(100'000, [](unsigned i) {
            return i % 2 ? filterOfClass("QBEnumRejectFilter", "isNil"_sel)
                         : filterOfClass("QBEnumSelectFilter", "truth"_sel);
        });
        EXPECT_EQ(describe(ours->allObjects()), "(a, c)");
        // Those of a client ask each other, the first one its array.
        const auto passing = [](unsigned) { return filterOfClass("Passing", nullptr); };
        EXPECT_EQ(describe(chain(QBEnumFilter::kDeepestNesting + 1, passing)->allObjects()), "(a, -b, c)");
        EXPECT_REASON(chain(QBEnumFilter::kDeepestNesting + 2, passing)->nextObject(),
                      "QBEnumFilter nextObject must not have more than 256 enumerators that ask each other.");
    }));
    QBEnumFilter *const last =
        chain(5, [](unsigned) { return filterOfClass("QBEnumSelectFilter", "truth"_sel); });
    auto *const first = static_cast<QBEnumFilter *>(static_cast<QBEnumFilter *>(last->source())->source());
    first->setSource(last->source()); // a circle that `last` is not in
    EXPECT_REASON(last->nextObject(),
                  "QBEnumFilter nextObject must have a source that does not lead back to the filter.");
    first->setSource("x"_ns);
}
