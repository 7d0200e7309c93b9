#include "support/ServicesFixture.h"

using QBPathTest = ServicesFixture;

namespace {

/// A subclass, which derived paths keep.
struct SitePath : ClientClass<SitePath, QBPath, "SitePath"> {};

/// A named object in a tree.
struct Node : ClientClass<Node, NSObject, "Node"> {
    explicit Node(const char *name = "", Node *above = nullptr)
        : parent(above), name_(NSString::initWith(name)) {
        if (above)
            above->children_.push_back(this);
    }
    static Operations operations() {
        return {qb::method<"name">(&Node::name), qb::method<"parentObject">(&Node::parentObject),
                qb::method<"childObjectWithName:">(&Node::childObjectWithName)};
    }

    NSString *name() const { return name_; }
    id parentObject() const { return parent; }
    id childObjectWithName(NSString *name) const {
        const auto isNamed = [name](const Node *child) { return child->name_->isEqual(name) != NO; };
        const auto child = std::find_if(children_.begin(), children_.end(), isNamed);
        return child == children_.end() ? id{QBNil::value()} : *child;
    }

    Node *parent;

    Ref<NSString> name_;
    std::vector<Node *> children_;
};

QBPath *qbPath(const std::string &text) {
    return QBPath::qbPathWithString(NSString::stringWith(text));
}

} // namespace

TEST_F(QBPathTest, IsTakenApartAtItsSlashesAndItsExtension) {
    const std::tuple<const char *, const char *, const char *, const char *, bool, bool> rows[] = {
        {"", "()", "", "", false, false},
        {"//", "()", "/", "", true, true},
        {"/a.b/c.tar.gz", "(a.b, c.tar.gz)", "/a.b/c.tar", "gz", true, false},
        {"//a//b/", "(a, b)", "//a//b", "", true, true},
        {"./../x.y", "(., .., x.y)", "./../x", "y", false, false}};
    for (const auto &[text, components, basename, extension, isAbsolute, isDirectory] : rows) {
        SCOPED_TRACE(text);
        QBPath *const tested = qbPath(text);
        EXPECT_EQ(describe(tested->pathArray()), components);
        EXPECT_EQ(describe(tested->basename()), basename);
        EXPECT_EQ(describe(tested->extension()), extension);
        EXPECT_EQ(tested->isAbsolutePath(), isAbsolute);
        EXPECT_EQ(tested->isDirectory(), isDirectory);
    }
    EXPECT_EQ(describe(qbPath({"a/b\0/c", 6})->pathArray()), "(a, b)");
}

TEST_F(QBPathTest, ValuesBecomePathsAndPathsAreEqualByTheirText) {
    NSArray *const names = NSArray::arrayWith({"a"_ns, number(1)});
    EXPECT_EQ(describe(names->asQbPath()), "/a/1");
    EXPECT_EQ(describe(NSNumber::numberWithDouble(1.5)->asQbPath()), "1.5");
    EXPECT_EQ(describe(QBPath::qbPathWithArray(names, NO, YES)), "a/1/");
    EXPECT_EQ(describe(QBPath::qbPathWithArray(nullptr, YES, NO)), "/");
    QBPath *const one = "/a"_ns->asQbPath();
    EXPECT_TRUE(one->isEqual(qbPath("/a")) && one->hash() == qbPath("/a")->hash());
    EXPECT_FALSE(one->isEqual(qbPath("/a/")));
}

TEST_F(QBPathTest, DerivedPathsAreOfTheReceiversClass) {
    const std::tuple<const char *, const char *, id, const char *> rows[] = {
        {"/a/b.html", "pathByRemovingLastPathComponent", nullptr, "/a/"},
        {"//", "pathByRemovingLastPathComponent", nullptr, "=//"}, // the receiver itself
        {"/x/y.html", "pathByReplacingExtension:", "txt"_ns, "/x/y.txt"},
        {"a/", "pathByAppendingPathComponent:", qbPath("//b/"), "a//b/"},
        {"", "pathByAppendingPathComponent:", "b"_ns, "b"},
        {"a", "pathByAppendingPathComponent:", nullptr, "=a"},
        {"/a", "pathByAppendingPath:", "b/c/"_ns, "/a/b/c/"},
        {"/a/b", "relativePathTo:", qbPath("/a/c"), "c"},
    };
    for (const auto &[text, selector, argument, derived] : rows) {
        const auto receiver = send<Ref<QBPath>>(SitePath::cls(), "initWithString:"_sel, string(text));
        const SEL sel = Selector::named(selector);
        const id result =
            sel->colons() ? send<id>(receiver.get(), sel, argument) : send<id>(receiver.get(), sel);
        EXPECT_TRUE(result == receiver.get() || result->isMemberOfClass(SitePath::cls())) << text;
        EXPECT_EQ((result == receiver.get() ? "=" : "") + describe(result), derived);
    }
}

TEST_F(QBPathTest, RelativePathsLeadFromAFileToAnotherPath) {
    const char *const rows[][3] = {{"/a/b/c.html", "/a/d/e.html", "../d/e.html"},
                                   {"/a/b", "/a/b/c", "b/c"},
                                   {"/a/b/c/d", "/a", "../../.."},
                                   {"/a/b/c", "/", "../../../"},
                                   {"/", "/a/b/", "a/b/"},
                                   {"/", "/", ""}};
    for (const auto &[from, to, way] : rows)
        EXPECT_EQ(describe(qbPath(from)->relativePathTo(NSString::stringWithCString(to))), way) << from << to;
    NSString *const relative = "a/b"_ns;
    EXPECT_EQ(qbPath("/a")->relativePathTo(relative), relative);
}

TEST_F(QBPathTest, LeadsThroughTreesOfNamedObjects) {
    Node root(""), site("site", &root), page("page", &site), other("other", &root), below("below", &other),
        named("site"), child("site", &named);
    const NSAutoreleasePool pool; // which lets go of the nodes before they go
    EXPECT_EQ(describe(QBPath::qbPathWithObject(&page)), "//site/page");
    EXPECT_EQ(QBPath::qbPathWithObject(&page)->objectRelativeTo(&other), &page);
    EXPECT_EQ(describe(QBPath::qbPathWithObject(&child)), "/site/site");
    EXPECT_EQ(QBPath::qbPathWithObject(&named)->objectRelativeTo(&named), &child);
    const std::tuple<const char *, Node *, Node *> rows[] = {
        {"../page/./.", &page, &page}, {"/other", &page, &other}, {"none/..", &site, nullptr},
        {"none", &site, nullptr},      {"../..", &site, nullptr}, {"page", nullptr, nullptr}};
    for (const auto &[text, start, object] : rows) {
        EXPECT_EQ(qbPath(text)->objectRelativeTo(start), object) << text;
        EXPECT_EQ(qbPath(text)->closestObjectRelativeTo(start), object) << text;
    }
    root.parent = &page;
    EXPECT_REASON(QBPath::qbPathWithObject(&below),
                  "QBPath qbPathWithObject: must have an object whose parents do not go round in a circle.");
}

TEST_F(QBPathTest, PathsOfAMillionComponentsAreWalkedOnASmallStack) {
    EXPECT_TRUE(runOnSmallStack([] {
        Node root("");
        const NSAutoreleasePool pool;
        std::string text;
        for (int i = 0; i < 1'000'000; ++i)
            text += "/.";
        EXPECT_EQ(qbPath(text)->relativePathTo("/a"_ns)->asQbPath()->pathArray()->count(), 1'000'000u);
        EXPECT_EQ(qbPath(text)->objectRelativeTo(&root), &root);
    }));
}

TEST_F(QBPathTest, IsArchivedWithTraces) {
    const std::string traces = traced("misc", /*level=*/6, [] {
        NSData *const archive = NSArchiver::archivedDataWithRootObject(qbPath("/a/b"));
        EXPECT_TRUE(qbPath("/a/b")->isEqual(NSUnarchiver::unarchiveObjectWithData(
            archive, NSUnarchiver::valueClasses()->arrayByAddingObject(QBPath::cls()))));
    });
    EXPECT_EQ(traces, "src/QBPath:L(QBPath): -encodeWithCoder: -> enter\n"
                      "src/QBPath:L(QBPath): -encodeWithCoder: -> leave\n"
                      "src/QBPath:L(QBPath): -initWithCoder: -> enter\n"
                      "src/QBPath:L(QBPath): -initWithCoder: -> leave\n");
}
