#include "support/ServicesFixture.h"

using QBNilTest = ServicesFixture;

TEST_F(QBNilTest, NoValueIsNullOrTheNullObjectOrWhatSaysSo) {
    struct Absent : NSObject {
        BOOL isNil() const override { return YES; }
    } absent;
    EXPECT_TRUE(IsNil(nullptr));
    EXPECT_TRUE(IsNil(QBNil::new_()));
    EXPECT_TRUE(IsNil(&absent));
    EXPECT_FALSE(IsNil(""_ns));
}

TEST_F(QBNilTest, EveryObjectsOperationsAnswerNothing) {
    QBNil *const null = QBNil::new_();
    EXPECT_STREQ(null->cStringValue(), "null");
    EXPECT_EQ(null->stringValue(), nullptr);
    EXPECT_EQ(null->description(), nullptr);
    for (int i = 0; i < 3; ++i)
        null->release();
    EXPECT_EQ(null->copy().get(), null);
    EXPECT_EQ(null->makeMutable(), null);
    EXPECT_NO_THROW(null->subclassResponsibility("copy"_sel));
    null->setDeepObject("v"_ns, "a.b"_ns); // and no error
    null->setObjectForKey("v"_ns, "a"_ns);
    null->removeObjectForKey("a"_ns);
}

TEST_F(QBNilTest, OtherMessagesAreSwallowedAndTracedFromLevel7On) {
    activateChannel("misc");
    CapturedOutput output;
    debug = 6;
    EXPECT_EQ(send<id>(QBNil::new_(), "objectForKey:"_sel, "a"_ns), nullptr);
    const auto invocation = NSInvocation::invocationWithTarget(QBNil::new_(), "doubleValue"_sel);
    invocation->invoke();
    EXPECT_TRUE(!invocation->returnValue().as<id>() && invocation->returnValue().as<double>() == 0);
    EXPECT_EQ(output.text(), "");
    debug = 7;
    EXPECT_EQ(send<double>(QBNil::new_(), "doubleValue"_sel), 0);
    EXPECT_EQ(send<id>(QBNil::new_(), "objectForKey:"_sel, "a"_ns), nullptr);
    EXPECT_EQ(logLines(output.end()),
              "[T] (P) [] [misc(7) OK] src/QBNil:39(QBNil): -forwardInvocation: -> sel==doubleValue\n"
              "[T] (P) [] [misc(7) OK] src/QBNil:39(QBNil): -forwardInvocation: -> sel==objectForKey:\n");
}
