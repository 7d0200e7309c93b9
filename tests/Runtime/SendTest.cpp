#include "support/PoolFixture.h"

using SendTest = PoolFixture;

namespace {

/// Counts how often each string has been added.
struct QBTally : ClientClass<QBTally, NSObject, "QBTally"> {
    static Operations operations() {
        using Count = std::uint32_t;
        return {
            qb::maker<"tallyWithLimit:">(&QBTally::setUpWithLimit),
            qb::initialiser<"initWithLimit:">(&QBTally::setUpWithLimit),
            qb::method<"addString:", Count(NSString *)>(&QBTally::addString),
            qb::method<"addString:times:", Count(NSString *, Count)>(&QBTally::addString),
            qb::method<"countForString:">(&QBTally::countForString),
            qb::method<"allStrings">(&QBTally::allStrings),
        };
    }

    static QBTally *tallyWithLimit(std::uint32_t limit) { return initWithLimit(limit).autorelease(); }
    static Ref<QBTally> initWithLimit(std::uint32_t limit) {
        return qb::init<QBTally>(&QBTally::setUpWithLimit, limit);
    }

    std::uint32_t addString(NSString *string) { return addString(string, 1); }
    virtual std::uint32_t addString(NSString *string, std::uint32_t times) {
        const std::uint32_t count = countForString(string) + times;
        counts_->setObjectForKey(NSNumber::numberWithUnsignedInt(count), string);
        return count;
    }
    virtual std::uint32_t countForString(NSString *string) const {
        auto *number = qb::castOrNil<NSNumber>(counts_->objectForKey(string));
        return number ? number->unsignedIntValue() : 0;
    }
    virtual NSArray *allStrings() const { return counts_->allKeys(); }

    /// Answers NO for a limit of UINT32_MAX.
    virtual BOOL setUpWithLimit(std::uint32_t limit) { return limit != UINT32_MAX; }

    const Ref<NSMutableDictionary> counts_ = NSMutableDictionary::init();
};

/// A subclass that repeats the makers it inherits, typed for itself.
struct SharedTally : ClientClass<SharedTally, QBTally, "SharedTally"> {
    static SharedTally *tallyWithLimit(std::uint32_t limit) {
        return qb::init<SharedTally>(&SharedTally::setUpWithLimit, limit).autorelease();
    }
};

const qb::ClassRegistration registration{&SharedTally::cls};

/// Hands every message it does not know to another object.
struct Proxy : NSObject {
    explicit Proxy(id target) : target_(target) {}
    void forwardInvocation(NSInvocation *invocation) override { invocation->invokeWithTarget(target_); }

    Ref<NSObject> target_;
};

/// Answers what it is given.
struct Mirror : ClientClass<Mirror, NSObject, "Mirror"> {
    static Operations operations() {
        return {qb::method<"same:">(&Mirror::same), qb::method<"nameOf:">(&Mirror::nameOf),
                qb::method<"nameOfFirst:">(&Mirror::nameOfFirst)};
    }
    id same(id object) { return object; }
    const char *nameOf(id object) { return object->classObject()->name()->cString(); }
    const char *nameOfFirst(const qb::ArgList &list) { return nameOf(list[0].object()); }
};

/// Results and parameters of each form that C++ has for them.
struct Sheet : ClientClass<Sheet, NSObject, "Sheet"> {
    static Operations operations() {
        return {qb::method<"title">(&Sheet::title), qb::method<"heading">(&Sheet::heading),
                qb::method<"values">(&Sheet::values), qb::method<"isBefore:">(&Sheet::isBefore)};
    }
    ~Sheet() override {
        EXPECT_THROW(send(this, "fly"_sel), InvalidArgumentException);
        EXPECT_EQ(send<id>(proxy, "same:"_sel, self()), this);
        EXPECT_STREQ(send<const char *>(proxy, "nameOf:"_sel, self()), "Sheet");
        const qb::Value values[] = {self(), 1};
        EXPECT_STREQ(send<const char *>(proxy, "nameOfFirst:"_sel, qb::ArgList(values, 2)), "Sheet");
    }
    const Ref<NSString> &title() const { return title_; }
    NSString *const &heading() const { return heading_; }
    qb::ArgList values() const { return qb::ArgList(std::vector<qb::Value>{1, "b"}); }
    BOOL isBefore(const Sheet *other) const { return title_->compare(other->title_) < 0 ? YES : NO; }

    Ref<NSString> title_ = NSString::initWith("a title on the heap");
    NSString *heading_ = title_;
    Ref<Proxy> proxy = Ref<Proxy>::adopt(new Proxy(Ref<Mirror>::adopt(new Mirror).get()));
};

/// Lets go of the invocation that it is called by, and of its values.
struct Careless : ClientClass<Careless, NSObject, "Careless"> {
    static Operations operations() {
        return {qb::method<"drop:">(&Careless::drop), qb::method<"square">(&Careless::square)};
    }
    NSString *drop(NSString *text) {
        invocation->setArguments({});
        invocation = nullptr;
        return NSString::stringWith(text->view());
    }
    float square() { return root * root; } // on 32 bits with more digits than a float has
    Ref<NSInvocation> invocation;
    volatile float root = 9.99F;
};

std::uint32_t countTwice(id self, NSString *string) {
    return 2 * static_cast<QBTally *>(self)->countForString(string);
}

} // namespace

TEST_F(SendTest, SelectorsReachBothOverloadsAndKeepOwnership) {
    Ref<QBTally> tally = QBTally::initWithLimit(0);
    for (int i = 0; i < 3; ++i) { // the second and third time through the inline cache
        EXPECT_EQ(send<std::uint32_t>(tally.get(), "addString:"_sel, "a"_ns), 4u * i + 1);
        EXPECT_EQ(send<std::uint32_t>(tally.get(), "addString:times:"_sel, "a"_ns, 3u), 4u * i + 4);
    }
    EXPECT_EQ(tally->retainCount(), 1u); // a send borrows its receiver
    EXPECT_EQ(send<std::uint32_t>(tally.get(), NSSelectorFromString("countForString:"_ns), "a"_ns), 12u);
    NSArray *const strings = NSArray::arrayWith({"a"_ns});
    send<void>(strings, "copy"_sel);
    EXPECT_EQ(strings->retainCount(), 1u); // nobody wants the copy
    EXPECT_EQ(send(tally->counts_, "removeAllObjects"_sel), nullptr);
}

TEST_F(SendTest, IntegersConvertByValueAndWrongValuesThrow) {
    QBTally *tally = QBTally::tallyWithLimit(0);
    EXPECT_EQ(send<std::int64_t>(tally, "addString:times:"_sel, "a"_ns, std::int64_t{3}), 3);
    EXPECT_REASON(send<std::uint32_t>(tally, "addString:times:"_sel, "a"_ns, -1),
                  "QBTally addString:times: must have an argument 2 that is a uint32_t.");
    EXPECT_REASON(send<std::uint32_t>(tally, "addString:"_sel, NSNumber::numberWithInt(1)),
                  "QBTally addString: must have an argument 1 that is a NSString *.");
    EXPECT_REASON(send<std::uint32_t>(tally, "addString:"_sel), "QBTally addString: must have 1 argument.");
    EXPECT_REASON(send<NSString *>(tally, "allStrings"_sel),
                  "QBTally allStrings must have a result that is a NSString *.");
    EXPECT_EQ(tally->countForString("a"_ns), 3u);
    EXPECT_EQ(qb::Value(INT64_MIN).as<double>(), -0x1p63);
    EXPECT_EQ(qb::Value(UINT64_MAX << 11).as<double>(), 0x1p64 - 0x1p11);
    EXPECT_EQ(qb::Value(0).as<float>(), 0);
    EXPECT_THROW(static_cast<void>(qb::Value(UINT64_MAX << 10).as<double>()), InvalidArgumentException);
    const auto order = +[](id, id, void *) noexcept { return 0; };
    static_assert(std::is_same_v<qb::FunctionOf<void (*)(int, ...) noexcept>, void(int, ...)>);
    NSArray *const texts = NSArray::arrayWith({"b"_ns, "a"_ns});
    EXPECT_TRUE(send(texts, "sortedArrayUsingFunction:context:"_sel, order, nullptr)->isEqual(texts));
}

TEST_F(SendTest, NilAnswersZeroAndUnknownSelectorsThrowOrAreForwarded) {
    EXPECT_EQ(send<std::uint32_t>(nullptr, "addString:"_sel, "a"_ns), 0u);
    QBTally *tally = QBTally::tallyWithLimit(0);
    EXPECT_REASON(send(tally, "fly:"_sel, 1), "QBTally fly: must be an operation that the receiver has.");
    auto proxy = Ref<Proxy>::adopt(new Proxy(tally));
    EXPECT_EQ(send<std::uint32_t>(proxy.get(), "addString:times:"_sel, "a"_ns, 7u), 7u);
    EXPECT_EQ(send<std::uint32_t>(QBNil::value(), "addString:times:"_sel, "a"_ns, 7u), 0u);
}

TEST_F(SendTest, MakersMakeObjectsOfTheClassAsked) {
    id made = send<id>(SharedTally::cls(), "tallyWithLimit:"_sel, 1u);
    EXPECT_TRUE(made->isMemberOfClass(SharedTally::cls()));
    Ref<QBTally> owned = send<Ref<QBTally>>(NSClassFromString("SharedTally"_ns), "initWithLimit:"_sel, 2u);
    EXPECT_EQ(owned->retainCount(), 1u);
    EXPECT_EQ(send<id>(SharedTally::cls(), "initWithLimit:"_sel, UINT32_MAX), nullptr);
}

TEST_F(SendTest, InvocationsCarryRunTimeValuesBothWays) {
    QBTally *tally = QBTally::tallyWithLimit(0);
    NSInvocation *invocation = NSInvocation::invocationWithTarget(tally, "addString:times:"_sel);
    invocation->setArguments({"a"_ns, std::uint8_t{200}});
    invocation->invoke();
    EXPECT_EQ(invocation->returnValue().as<std::uint32_t>(), 200u);
    EXPECT_THROW(static_cast<void>(invocation->returnValue().as<std::int8_t>()), InvalidArgumentException);

    NSInvocation *init = NSInvocation::invocationWithTarget(QBTally::cls(), "initWithLimit:"_sel);
    init->setArguments({1u});
    init->invoke();
    const id made = init->returnValue().object();
    EXPECT_EQ(made->retainCount(), 1u); // the invocation's value is its one owner

    const Ref<Proxy> proxy = Ref<Proxy>::adopt(new Proxy(QBTally::cls()));
    const id owned = inOwnPool([&] { return send<id>(proxy, "initWithLimit:"_sel, 1u); });
    EXPECT_EQ(owned->retainCount(), 1u); // the sender's, as without the proxy
    owned->release();

    const Ref<Careless> careless = Ref<Careless>::adopt(new Careless);
    inOwnPool([&] {
        careless->invocation = NSInvocation::invocationWithTarget(careless, "drop:"_sel);
        careless->invocation->setArguments({NSString::stringWith("a text on the heap")});
    });
    careless->invocation->invoke();

    NSInvocation *const chain = NSInvocation::invocationWithTarget("text"_ns, "mutableCopy"_sel);
    chain->invoke();
    chain->setSelector("cStringLength"_sel);
    chain->invokeWithTarget(chain->returnValue().object()); // which only the old result keeps
    EXPECT_EQ(chain->returnValue().integer(), 4);
}

TEST_F(SendTest, ResultsAndParametersMayBeReferencesAndConstant) {
    const NSAutoreleasePool pool; // whose end finds nothing of a sheet that is gone
    const Ref<Sheet> sheet = Ref<Sheet>::adopt(new Sheet), other = Ref<Sheet>::adopt(new Sheet);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(send<Ref<NSString>>(sheet, "title"_sel), sheet->title_);
        EXPECT_EQ(send<const NSString *>(sheet, "heading"_sel), sheet->heading_);
        EXPECT_STREQ(send<qb::ArgList>(sheet, "values"_sel)[1].as<const char *>(), "b");
        EXPECT_EQ(send<BOOL>(sheet, "isBefore:"_sel, other.get()), NO);
        EXPECT_EQ(send<BOOL>(sheet, "isBefore:"_sel, static_cast<const Sheet *>(other.get())), NO);
    }
    EXPECT_EQ(sheet->title_->retainCount(), 1u);
    NSInvocation *const invocation = NSInvocation::invocationWithTarget(sheet, "title"_sel);
    invocation->invoke();
    EXPECT_EQ(sheet->title_->retainCount(), 2u);
    EXPECT_TRUE(invocation->returnsOwned());

    int numbers[] = {1, 2};
    static const unsigned char constant[] = {1, 2};
    EXPECT_EQ(qb::Value(numbers).as<int *>(), numbers);
    EXPECT_EQ(qb::Value(constant).as<const void *>(), constant);
    EXPECT_THROW(static_cast<void>(qb::Value(constant).as<void *>()), InvalidArgumentException);
    EXPECT_EQ(NSString::cls()->makeMutable(), NSString::cls());
}

TEST_F(SendTest, ResultsAndValuesHaveTheDigitsOfTheirTypes) {
    const Ref<Careless> careless = Ref<Careless>::adopt(new Careless);
    const volatile float square = careless->square();
    EXPECT_EQ(qb::Value(careless->root * careless->root).as<float>(), square);
    NSInvocation *const invocation = NSInvocation::invocationWithTarget(careless, "square"_sel);
    invocation->invoke();
    EXPECT_EQ(invocation->returnValue().as<float>(), square);
    EXPECT_EQ(send<float>(careless, "square"_sel), square);
}

TEST_F(SendTest, VariableValuesAreGatheredOrPassedAsOneList) {
    Class *const strings = NSMutableString::cls();
    const id made = send(strings, "stringWithRestrictedFormat:"_sel, "%d%s"_ns, 1, "b");
    EXPECT_EQ(describe(made), "1b");
    EXPECT_TRUE(made->isMemberOfClass(strings));
    const qb::Value both[] = {1, "b"};
    EXPECT_EQ(describe(send(strings, "stringWithRestrictedFormat:andArglist:"_sel, "%d%s"_ns,
                            qb::ArgList(both, 2))),
              "1b");
}

TEST_F(SendTest, MethodsAddedAtRunTimeAreFoundAtOnceAndInSubclasses) {
    QBTally *tally = SharedTally::tallyWithLimit(0);
    tally->addString("a"_ns, 3);
    if (!tally->respondsToSelector("countTwice:"_sel)) // classes outlive a repeated test
        QBTally::cls()->addMethod("countTwice:"_sel, &countTwice);
    EXPECT_EQ(send<std::uint32_t>(tally, "countTwice:"_sel, "a"_ns), 6u);
    EXPECT_THROW(QBTally::cls()->addMethod("countTwice:"_sel, &countTwice), InvalidArgumentException);
    EXPECT_THROW(QBTally::cls()->addMethod(nullptr, &countTwice), InvalidArgumentException);
    if (!SharedTally::cls()->respondsToSelector("allStrings"_sel)) // the class itself; its objects do
        SharedTally::cls()->addMethod(qb::classMethod<"allStrings">(&NSArray::array));
    EXPECT_EQ(describe(send(SharedTally::cls(), "allStrings"_sel)), "()");
    EXPECT_THROW(SharedTally::cls()->addMethod(qb::classMethod<"tallyWithLimit:">(&NSNumber::numberWithInt)),
                 InvalidArgumentException);
    static int added = 0; // as a repeated test finds it
    qb::forEachMethod(Careless::cls(), [](const qb::Method &method) {
        if (method.owner() == Careless::cls() && added < 100)
            Careless::cls()->addMethod(Selector::named("added" + std::to_string(added++) + ":"), &countTwice);
    });
}

TEST_F(SendTest, TablesListSelectorSignatureAndOwner) {
    std::string listed;
    qb::forEachMethod(SharedTally::cls(), [&](const qb::Method &method) {
        if (method.owner() == QBTally::cls() && method.selector()->text() != std::string("countTwice:"))
            listed += std::string(method.isClassMethod() ? "+" : "-") + method.selector()->text() + " " +
                      method.signature() + "\n";
    });
    EXPECT_EQ(listed, "+tallyWithLimit: QBTally * (uint32_t)\n"
                      "+initWithLimit: QBTally * (uint32_t)\n"
                      "-addString: uint32_t (NSString *)\n"
                      "-addString:times: uint32_t (NSString *, uint32_t)\n"
                      "-countForString: uint32_t (NSString *)\n"
                      "-allStrings NSArray * ()\n");
    const qb::Method *const method = NSData::data()->methodForSelector("getBytes:"_sel);
    expectAllOrBadAlloc([&] { return method->signature(); });
    EXPECT_THROW(new Class("QBTally", NSObject::cls(), {}), InvalidArgumentException);
    // An order is listed only where it is stated, although the root has the member.
    EXPECT_FALSE(QBTally::tallyWithLimit(0)->respondsToSelector("compare:"_sel));
    EXPECT_THROW(QBTally::tallyWithLimit(0)->compare("a"_ns), InvalidArgumentException);
}

TEST_F(SendTest, TypesAreNamedAsTheyAreChecked) {
    enum class Switch : bool { off, on };
    EXPECT_EQ(qb::nameOf(qb::typeOf<Switch>()), "bool");
    EXPECT_EQ(qb::nameOf(qb::typeOf<const void *>()), "const void *");
    EXPECT_EQ(qb::nameOf(qb::typeOf<const char **>()), "char const* *");
    EXPECT_EQ(qb::nameOf(qb::typeOf<const char *const *>()), "char const* const *");
}

TEST_F(SendTest, NamesOfClassesAreTheirOwnAndNoneOfTheLibrary) {
    std::string name = "MadeAtRunTime";
    static Class *const made = new Class(name.c_str(), NSObject::cls(), {}, nullptr, {name.c_str()});
    name[0] = '#';
    EXPECT_EQ(NSClassFromString("MadeAtRunTime"_ns), made);
    EXPECT_TRUE(made->conformsToProtocol(Protocol::named("MadeAtRunTime")));

    EXPECT_THROW(new Class("OSTime", NSObject::cls(), {}), InvalidArgumentException);
    EXPECT_EQ(NSClassFromString("OSTime"_ns), OSTime::cls());
    struct Impostor : ClientClass<Impostor, NSObject, "QBCopyShop"> {};
    static const qb::ClassRegistration impostor{&Impostor::cls};
    try {
        NSClassFromString("Nobody"_ns);
    } catch (const InvalidArgumentException &) { // once
    }
    EXPECT_EQ(NSClassFromString("QBCopyShop"_ns), QBCopyShop::cls());
}

TEST_F(SendTest, ARegisteredClassIsTriedAgainAndMayAskForOthers) {
    struct Older : ClientClass<Older, NSObject, "Older"> {};
    static const qb::ClassRegistration older{&Older::cls};
    static const qb::ClassRegistration newer{[] {
        static int tries = 0;
        EXPECT_NE(NSClassFromString("Older"_ns), nullptr);
        if (++tries <= 2)
            throw std::bad_alloc();
        static Class *const self = new Class("Newer", NSObject::cls(), {});
        return self;
    }};
    EXPECT_NE(NSClassFromString("Older"_ns), nullptr); // whatever becomes of the newer one
    EXPECT_THROW(NSClassFromString("Newer"_ns), std::bad_alloc);
    EXPECT_NE(NSClassFromString("Newer"_ns), nullptr);
    static const qb::ClassRegistration newest{[] {
        static Class *const self = new Class("Newest", NSClassFromString("Newer"_ns), {});
        return self;
    }};
    EXPECT_EQ(newest.cls()->superclass(), NSClassFromString("Newer"_ns)); // made before it is asked for
}

TEST_F(SendTest, ASelectorThatCannotBeMadeLeavesNothing) {
    for (unsigned skip = 0, hits = 1; hits != 0; ++skip) {
        const std::int64_t before = blocksInUse();
        const AllocationFault fault(skip, /*times=*/1);
        try {
            Selector::named("neverNamed:before:");
        } catch (const std::bad_alloc &) {
        }
        hits = fault.hits();
        EXPECT_TRUE(hits == 0 || blocksInUse() == before) << skip;
    }
}
