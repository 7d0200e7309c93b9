#include "support/ServicesFixture.h"

using QBAutoreleasePoolAdditionsTest = ServicesFixture;

TEST_F(QBAutoreleasePoolAdditionsTest, DescriptionsLeaveThePoolAsItIs) {
    struct Undescribed : NSObject {
        NSString *description() const override { return nullptr; }
    };
    activateChannel("misc");
    NSAutoreleasePool outer;
    CapturedOutput output;
    const id object = Ref<NSObject>::adopt(new Undescribed).autorelease();
    const std::string address = addressOf(object);
    {
        const NSAutoreleasePool inner;
        NSAutoreleasePool::pool1Special();
        EXPECT_EQ(outer.description()->view(), "  NSObject\n");
        debug = 12;
        outer.description();
        outer.showDescription();
    }
    EXPECT_EQ(outer.objectCount(), 1u);
    const std::string shown = output.end();
    EXPECT_NE(shown.find("[misc(12) OK] src/QBAutoreleasePoolAdditions:"), std::string::npos) << shown;
    EXPECT_EQ(shown.substr(shown.find("(NSAuto")),
              "(NSAutoreleasePool): -description -> NSObject (1): " + address + "\npool description:\n  " +
                  address + " (1)\n");
    EXPECT_EQ(shown.rfind("pool description:\n[", 0), 0u) << shown; // of the inner one, which was empty
}

TEST_F(QBAutoreleasePoolAdditionsTest, StatisticsGoOverAllPagesFromTheDefaultPoolOutwards) {
    constexpr unsigned kMany = 3 * NSAutoreleasePool::Page::kCapacity / 2;
    unsigned objects = kMany + 1;
    for (NSAutoreleasePool *pool = NSAutoreleasePool::defaultPool(); pool; pool = pool->parent())
        objects += pool->objectCount();
    NSAutoreleasePool pool;
    const Ref<NSObject> object = NSObject::init();
    for (unsigned i = 0; i < kMany; ++i)
        Ref<NSObject>(object).autorelease();
    NSObject::init().autorelease();
    CapturedOutput output;
    NSAutoreleasePool::showAllPoolStatistics();
    const std::string shown = output.end();
    const std::string first =
        "global pool statistics:\npool: 1\ntotal count (retained): " + std::to_string(kMany) +
        "\ntotal count           : " + std::to_string(kMany + 1) + "\npool: 2\n";
    EXPECT_EQ(shown.substr(0, first.size()), first);
    const std::string last = "total global count           : " + std::to_string(objects) + "\n";
    EXPECT_EQ(shown.substr(shown.size() - last.size()), last);
}

TEST_F(QBAutoreleasePoolAdditionsTest, NewEntriesAreToldFromTheSecondSweepOn) {
    const ChildEnd end = runInChild([] { // in a process where nobody has asked before
        NSAutoreleasePool pool;
        NSString::stringWith("old");
        pool.showNewEntries();
        std::string expected = "new in the pool:\nnew in the pool:\n";
        const std::string exact(100, 'x');
        for (const std::string &text : {exact, exact + "y"})
            expected += "+ " + addressOf(NSString::stringWith(text)) + " NSString:1: '" +
                        (text.size() > 100 ? text.substr(0, 95) + " ..." : text) + "'\n";
        pool.showNewEntries();
        pool.showNewEntries();
        std::fputs(("expected:\n" + expected + "new in the pool:\n").c_str(), stderr);
    });
    EXPECT_EQ(end.status, 0);
    const std::size_t middle = end.standardError.find("expected:\n");
    ASSERT_NE(middle, std::string::npos);
    EXPECT_EQ(end.standardError.substr(0, middle), end.standardError.substr(middle + 10));
}
