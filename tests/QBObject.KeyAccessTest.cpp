#include "support/PoolFixture.h"

using QBObjectKeyAccessTest = PoolFixture;

namespace {

/// A client's class: what stands in its table is all that keys need.
struct Page : ClientClass<Page, NSObject, "Page"> {
    static Operations operations() {
        return {
            qb::method<"title">(&Page::title),     qb::method<"setTitle:">(&Page::setTitle),
            qb::method<"parent">(&Page::parent),   qb::method<"setParent:">(&Page::setParent),
            qb::method<"rank">(&Page::rank),       qb::method<"setRank:">(&Page::setRank),
            qb::method<"size">(&Page::size),       qb::method<"setSize:">(&Page::setSize),
            qb::method<"path">(&Page::path),       qb::method<"most">(&Page::most),
            qb::method<"address">(&Page::address), qb::method<"copyOfTitle">(&Page::copyOfTitle),
            qb::method<"close">(&Page::close),
        };
    }

    NSString *title() const { return title_; }
    void setTitle(NSString *title) { title_ = title; }
    id parent() const { return parent_; }
    void setParent(id parent) { parent_ = parent; }
    std::uint8_t rank() const { return rank_; }
    void setRank(std::uint8_t rank) { rank_ = rank; }
    std::int64_t size() const { return size_; }
    void setSize(std::int64_t size) { size_ = size; }
    std::uint64_t most() const { return UINT64_MAX; }
    const char *path() const { return title_ ? "/p" : nullptr; }
    void *address() const { return nullptr; }
    Ref<NSString> copyOfTitle() const { return NSString::initWith(title_->view()); }
    void close() {}

    Ref<NSString> title_;
    id parent_ = nullptr;
    std::uint8_t rank_ = 0;
    std::int64_t size_ = 0;
};

} // namespace

TEST_F(QBObjectKeyAccessTest, KeysAreTheNamesOfTheOperationsInAClientsTable) {
    const auto page = Ref<Page>::adopt(new Page);
    EXPECT_EQ(page->objectForKey("path"_ns), nullptr);
    page->setObjectForKey("Home"_ns, "title"_ns);
    EXPECT_EQ(describe(page->objectForKey("title"_ns)), "Home");
    page->setObjectForKey(" -9223372036854775808"_ns, "size"_ns);
    EXPECT_EQ(describe(page->objectForKey("size"_ns)), "-9223372036854775808");
    NSDictionary *const parent = NSDictionary::dictionaryWith({{"k"_ns, page.get()}});
    page->setObjectForKey(parent, "parent"_ns);
    EXPECT_EQ(page->objectForKey("parent"_ns), parent);
    EXPECT_EQ(describe(page->objectForKey("most"_ns)), "18446744073709551615");
    EXPECT_EQ(describe(page->objectForKey("path"_ns)), "/p");
    EXPECT_EQ(describe(page->objectForKey("copyOfTitle"_ns)), "Home");

    send<void>(page.get(), "setDeepObject:forKey:"_sel, "New"_ns, "parent.k.parent.k.title"_ns);
    EXPECT_EQ(describe(page->deepObjectForKey("parent.k.parent.k.title"_ns)), "New");
    page->removeDeepObjectForKey("parent.k.title"_ns);
    EXPECT_EQ(page->title(), nullptr);
}

TEST_F(QBObjectKeyAccessTest, UnknownKeysAndWrongObjectsRaise) {
    const auto page = Ref<Page>::adopt(new Page);
    page->setRank(7);
    // What is void or a pointer, takes arguments, or belongs to every object is no value.
    for (const char *key : {"keyOfNobody", "", "close", "address", "setTitle:", "retain"})
        EXPECT_ERROR(900010, ("Page " + std::string(key) + " " + key).c_str(),
                     EXPECT_EQ(page->objectForKey(string(key)), nullptr));
    EXPECT_ERROR(900010, "NSDictionary a setA:", NSDictionary::dictionary()->setObjectForKey("1"_ns, "a"_ns));
    EXPECT_ERROR(900011, "Page rank nil", page->removeObjectForKey("rank"_ns));
    for (const char *object : {"256", "-1", "1.5", ""})
        EXPECT_ERROR(900011, "Page rank NSString", page->setObjectForKey(string(object), "rank"_ns));
    EXPECT_ERROR(900011, "Page size NSString", page->setObjectForKey("9223372036854775808"_ns, "size"_ns));
    EXPECT_EQ(page->rank(), 7);
    EXPECT_EQ(Selector::namedIfKnown("keyOfNobody"), nullptr); // keys are not kept
}
