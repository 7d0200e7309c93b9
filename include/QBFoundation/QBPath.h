// Slash-separated paths, of files and in trees of named objects.
#ifndef QBFOUNDATION_QBPATH_H
#define QBFOUNDATION_QBPATH_H

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Foundation/NSString.h>

/// A path: a text that is taken apart at its slashes. It does not change as long as its text does not.
///
/// A path is absolute when it begins with "/", and one of a directory when it ends with it; the empty path is
/// neither. Nothing asks the file system or looks at "." and "..". Derived paths are of the receiver's class.
/// Paths are equal when their texts are, so that "/a" and "/a/" differ.
class QB_EXPORT QBPath : public NSObject {
public:
    QBPath() = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    // --- Creation ---

    /// Returns a path with that text, which is retained, not copied.
    static QBPath *qbPathWithString(NSString *string) { return initWithString(string).autorelease(); }
    static Ref<QBPath> initWithString(NSString *string) { return initOfClass(cls(), string); }
    /// As `initWithString`, of the class that was asked.
    static Ref<QBPath> initOfClass(Class *asked, NSString *string);
    /// Returns the path of the components, joined with "/", with one in front when it is absolute and one
    /// behind when it is a directory. Without components it is "/" when absolute, else the empty path.
    static QBPath *qbPathWithArray(NSArray *array, BOOL isAbsolutePath, BOOL isDirectory) {
        return qbPathWithArrayOfClass(cls(), array, isAbsolutePath, isDirectory);
    }
    static QBPath *qbPathWithArrayOfClass(Class *asked, NSArray *array, BOOL isAbsolutePath,
                                          BOOL isDirectory);

    // --- Queries ---

    /// Returns the text that the path was made with.
    NSString *stringValue() const override { return string_; }
    NSString *description() const override;
    /// Whether the text has characters.
    BOOL containsData() const override;
    /// Whether both texts are equal; `other` may be of any class that has a `stringValue`.
    BOOL isEqual(id other) const override;
    std::uint32_t hash() const override;
    friend bool operator==(const QBPath &a, const QBPath &b) { return a.isEqual(b.self()); }
    virtual BOOL isAbsolutePath() const;
    virtual BOOL isDirectory() const;
    /// Returns the components (array of NSString), without empty ones. A NUL byte ends the last.
    virtual NSArray *pathArray() const;
    /// Returns the extension of the whole text: "html" of "/a.b/c.html"; "" without one.
    virtual NSString *extension() const;
    /// Returns the text without its extension, directories included: "/a.b/c".
    virtual NSString *basename() const;

    // --- Derived paths ---

    /// Returns the directory path of the components but the last; the receiver when it has none.
    virtual QBPath *pathByRemovingLastPathComponent() const;
    /// Returns the path with another extension; nil and the empty text remove it.
    virtual QBPath *pathByReplacingExtension(NSString *extension) const;
    /// Returns the path with the `stringValue` of `component` behind it, and one "/" between them; the
    /// receiver for nil and the empty text, the component's path when the receiver is empty.
    virtual QBPath *pathByAppendingPathComponent(id component) const;
    /// Returns the path with the components of `path`, taken by its `asQbPath`, behind its own: absolute as
    /// the receiver, a directory as `path`. The receiver for nil.
    virtual QBPath *pathByAppendingPath(id path) const;
    /// Returns the link that leads from the receiver, a file, to `path`, taken by its `asQbPath`: from
    /// "/a/b/c.html" to "/a/d/e.html" it is "../d/e.html". Returns `path` itself unless both are absolute.
    virtual id relativePathTo(id path) const;

    // --- HierarchicalObject ---

    // A hierarchical object is one that answers `name`, `parentObject` (nil at the root) and
    // `childObjectWithName:` (nil when there is no such child). Each throws InvalidArgumentException when an
    // object on the way does not, or when parents go round in a circle.

    /// Returns the absolute path of the names from the root, whose own is the first, to `object`.
    static QBPath *qbPathWithObject(id object) { return qbPathWithObjectOfClass(cls(), object); }
    static QBPath *qbPathWithObjectOfClass(Class *asked, id object);
    /// Returns the object that the path leads to from `start`, an absolute one from its root: ".." goes to
    /// the parent, "." nowhere, any other component to the child of that name. nil when there is none.
    virtual id objectRelativeTo(id start) const;
    /// As above: what is only reached in part is nil here, too.
    virtual id closestObjectRelativeTo(id start) const;
    /// The walk that both take, in a pool of its own that they empty. `exact` makes no difference.
    virtual id _objRelativeTo(id start, BOOL exact) const;

    // --- What every value answers ---

    QBPath *asQbPath() const override;
    Ref<NSObject> copyWithZone(void *zone) const override;
    void encodeWithCoder(NSCoder *coder) const override;

protected:
    /// The initialiser `initWithString:` of this class and its subclasses.
    virtual BOOL setUpWithString(NSString *string);
    BOOL setUpWithCoder(NSCoder *coder) override;

private:
    QBPath *derived(NSString *string) const { return initOfClass(classObject(), string).autorelease(); }
    void parse() const;

    Ref<NSString> string_; // the only state that is written and compared
    mutable Ref<NSArray> pathArray_;
    mutable Ref<NSString> extension_;
    mutable Ref<NSString> basename_;
    mutable bool parsed_ = false; // whether the extension and the basename are there
};

template <>
struct std::hash<QBPath> : qb::ValueHash {};

#endif
