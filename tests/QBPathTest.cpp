#include "support/ServicesFixture.h"
#include "support/SmallStack.h"

#include <algorithm>
#include <regex>

using QBPathTest = ServicesFixture;

namespace {

/// A subclass, which derived paths keep.
class SitePath : public QBPath {
public:
    static Class *cls() {
        static Class *const self = new Class("SitePath", QBPath::cls(), {}, qb::construct<SitePath>);
        return self;
    }
    Class *classObject() const override { return cls(); }
};

/// A named object in a tree.
class Node : public NSObject {
public:
    explicit Node(const char *name, Node *above = nullptr) : parent(above), name_(NSString::initWith(name)) {
        if (above)
            above->children_.push_back(this);
    }
    static Class *cls() {
        static const qb::Method methods[] = {
            qb::method<"name">(&Node::name),
            qb::method<"parentObject">(&Node::parentObject),
            qb::method<"childObjectWithName:">(&Node::childObjectWithName),
        };
        static Class *const self = new Class("Node", NSObject::cls(), methods);
        return self;
    }
    Class *classObject() const override { return cls(); }

    NSString *name() const { return name_; }
    id parentObject() const { return parent; }
    id childObjectWithName(NSString *name) const {
        const auto isNamed = [name](const Node *child) { return child->name_->isEqual(name) != NO; };
        const auto child = std::find_if(children_.begin(), children_.end(), isNamed);
        return child == children_.end() ? nullptr : *child;
    }

    Node *parent;

private:
    Ref<NSString> name_;
    std::vector<Node *> children_;
};

QBPath *path(const std::string &text) {
    return QBPath::qbPathWithString(NSString::stringWith(text));
}

} // namespace

TEST_F(QBPathTest, IsTakenApartAtItsSlashesAndItsExtension) {
    const struct {
        const char *text, *components, *basename, *extension;
        bool isAbsolute, isDirectory;
    } rows[] = {{"", "()", "", "", false, false},
                {"//", "()", "/", "", true, true},
                {"/a.b/c.tar.gz", "(a.b, c.tar.gz)", "/a.b/c.tar", "gz", true, false},
                {"//a//b/", "(a, b)", "//a//b", "", true, true},
                {"./../x.y", "(., .., x.y)", "./../x", "y", false, false}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.text);
        QBPath *const tested = path(row.text);
        EXPECT_EQ(describe(tested->pathArray()), row.components);
        EXPECT_EQ(describe(tested->basename()), row.basename);
        EXPECT_EQ(describe(tested->extension()), row.extension);
        EXPECT_EQ(tested->isAbsolutePath(), row.isAbsolute);
        EXPECT_EQ(tested->isDirectory(), row.isDirectory);
    }
    EXPECT_EQ(describe(path({"a/b\0/c", 6})->pathArray()), "(a, b)");
}

TEST_F(QBPathTest, ValuesBecomePathsAndPathsAreEqualByTheirText) {
    NSArray *const names = NSArray::arrayWith({"a"_ns, NSNumber::numberWithInt(1)});
    EXPECT_EQ(describe(names->asQbPath()), "/a/1");
    EXPECT_EQ(describe(NSNumber::numberWithDouble(1.5)->asQbPath()), "1.5");
    EXPECT_EQ(describe(QBPath::qbPathWithArray(names, NO, YES)), "a/1/");
    EXPECT_EQ(describe(QBPath::qbPathWithArray(nullptr, YES, NO)), "/");
    QBPath *const one = "/a"_ns->asQbPath();
    EXPECT_TRUE(one->isEqual(path("/a")) && one->hash() == path("/a")->hash());
    EXPECT_FALSE(one->isEqual(path("/a/")));
}

TEST_F(QBPathTest, DerivedPathsAreOfTheReceiversClass) {
    const auto derive = [](const char *text, const char *selector, id argument) {
        const Ref<QBPath> receiver =
            send<Ref<QBPath>>(SitePath::cls(), "initWithString:"_sel, NSString::stringWithCString(text));
        const SEL sel = Selector::named(selector);
        const id result =
            sel->colons() ? send<id>(receiver.get(), sel, argument) : send<id>(receiver.get(), sel);
        EXPECT_TRUE(result == receiver.get() || result->isMemberOfClass(SitePath::cls())) << text;
        return (result == receiver.get() ? "=" : "") + describe(result);
    };
    const char *const remove = "pathByRemovingLastPathComponent";
    const char *const replace = "pathByReplacingExtension:";
    const char *const append = "pathByAppendingPathComponent:";
    const char *const join = "pathByAppendingPath:";
    EXPECT_EQ(derive("/a/b.html", remove, nullptr), "/a/");
    EXPECT_EQ(derive("//", remove, nullptr), "=//");
    EXPECT_EQ(derive("/x/y.html", replace, "txt"_ns), "/x/y.txt");
    EXPECT_EQ(derive("a/", append, path("//b/")), "a//b/");
    EXPECT_EQ(derive("", append, "b"_ns), "b");
    EXPECT_EQ(derive("a", append, nullptr), "=a");
    EXPECT_EQ(derive("/a", join, "b/c/"_ns), "/a/b/c/");
    EXPECT_EQ(derive("/a/b", "relativePathTo:", path("/a/c")), "c");
}

TEST_F(QBPathTest, RelativePathsLeadFromAFileToAnotherPath) {
    const struct {
        const char *from, *to, *way;
    } rows[] = {{"/a/b/c.html", "/a/d/e.html", "../d/e.html"},
                {"/a/b", "/a/b/c", "b/c"},
                {"/a/b/c/d", "/a", "../../.."},
                {"/a/b/c", "/", "../../../"},
                {"/", "/a/b/", "a/b/"},
                {"/", "/", ""}};
    for (const auto &[from, to, way] : rows)
        EXPECT_EQ(describe(path(from)->relativePathTo(NSString::stringWithCString(to))), way) << from << to;
    NSString *const relative = "a/b"_ns;
    EXPECT_EQ(path("/a")->relativePathTo(relative), relative);
}

TEST_F(QBPathTest, LeadsThroughTreesOfNamedObjects) {
    Node root(""), site("site", &root), page("page", &site), other("other", &root), below("below", &other),
        named("site"), child("site", &named);
    const NSAutoreleasePool pool; // which lets go of the nodes before they go
    EXPECT_EQ(describe(QBPath::qbPathWithObject(&page)), "//site/page");
    EXPECT_EQ(QBPath::qbPathWithObject(&page)->objectRelativeTo(&other), &page);
    EXPECT_EQ(describe(QBPath::qbPathWithObject(&child)), "/site/site");
    EXPECT_EQ(QBPath::qbPathWithObject(&named)->objectRelativeTo(&named), &child);
    const struct {
        const char *text;
        Node *start, *object;
    } rows[] = {{"../page/./.", &page, &page},
                {"/other", &page, &other},
                {"none/..", &site, nullptr},
                {"../..", &site, nullptr},
                {"page", nullptr, nullptr}};
    for (const auto &[text, start, object] : rows) {
        EXPECT_EQ(path(text)->objectRelativeTo(start), object) << text;
        EXPECT_EQ(path(text)->closestObjectRelativeTo(start), object) << text;
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
        EXPECT_EQ(path(text)->relativePathTo("/a"_ns)->asQbPath()->pathArray()->count(), 1'000'000u);
        EXPECT_EQ(path(text)->objectRelativeTo(&root), &root);
    }));
}

TEST_F(QBPathTest, IsArchivedWithTraces) {
    activateChannel("misc");
    CapturedOutput output;
    debug = 6;
    NSData *const archive = NSArchiver::archivedDataWithRootObject(path("/a/b"));
    EXPECT_TRUE(path("/a/b")->isEqual(NSUnarchiver::unarchiveObjectWithData(
        archive, NSUnarchiver::valueClasses()->arrayByAddingObject(QBPath::cls()))));
    const std::regex lineNumber("QBPath:[0-9]+");
    const std::string lines = std::regex_replace(logLines(output.end()), lineNumber, "QBPath:L");
    const std::string line = "[T] (P) [] [misc(6) OK] src/QBPath:L(QBPath): -";
    EXPECT_EQ(lines, line + "encodeWithCoder: -> enter\n" + line + "encodeWithCoder: -> leave\n" + line +
                         "initWithCoder: -> enter\n" + line + "initWithCoder: -> leave\n");
}
