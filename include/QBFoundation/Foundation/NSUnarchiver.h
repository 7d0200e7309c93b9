// Reading archives.
#ifndef QBFOUNDATION_FOUNDATION_NSUNARCHIVER_H
#define QBFOUNDATION_FOUNDATION_NSUNARCHIVER_H

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSCoder.h>
#include <QBFoundation/Foundation/NSData.h>

#include <cstdint>
#include <memory>

namespace qb::archive {
class Reader;
}

/// Reads what `NSArchiver` has written, and makes the objects.
///
/// Objects are made of the classes that are accepted, and of no other: those of the value model unless
/// `setAllowedClasses:` names others. Each reads itself in `setUpWithCoder`, where it may meet objects that
/// are not complete yet, when objects refer to each other in circles. Raises 900002 (byte offset, what is
/// wrong), once, when the archive is malformed, has an object of another class or one that refuses its
/// values, or has them met inside each other deeper than 256; all that is read is zero and nil from then on.
class QB_EXPORT NSUnarchiver : public NSCoder {
public:
    NSUnarchiver();
    ~NSUnarchiver() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Returns the object whose archive the data is, autoreleased; nil with the error raised.
    static id unarchiveObjectWithData(NSData *data) { return unarchiveOfClass(cls(), data, nullptr); }
    /// As above; accepts those classes, an array of Class (nil: those of the value model).
    static id unarchiveObjectWithData(NSData *data, NSArray *allowedClasses) {
        return unarchiveOfClass(cls(), data, allowedClasses);
    }
    /// As above, from a file; an error is also raised as `dataWithContentsOfFile:` does.
    static id unarchiveObjectWithFile(NSString *path) { return unarchiveFileOfClass(cls(), path); }
    /// Returns a reader of the archive; nil with the error raised when the data is none.
    static Ref<NSUnarchiver> initForReadingWithData(NSData *data) {
        return qb::init<NSUnarchiver>(&NSUnarchiver::setUpForReadingWithData, data);
    }

    /// Returns the classes of the value model that have an archived form, an array of Class, autoreleased: to
    /// name others beside them.
    static NSArray *valueClasses();
    virtual NSArray *allowedClasses() const;
    /// Names the classes that are accepted, an array of Class, instead of those named before. Subclasses are
    /// not meant with them. Throws InvalidArgumentException when it is nil or holds something else.
    virtual void setAllowedClasses(NSArray *classes);
    /// Whether no more values without a key can be had by the object that is being read, or outside of any.
    virtual BOOL isAtEnd() const;

    /// Returns the object that was written as the root.
    virtual id decodeRootObject() { return decodeObject(); }
    void decodeValueOfObjCType(const char *type, void *at) override;
    const void *decodeBytesWithReturnedLength(std::uint32_t *length) override;
    id decodeObject() override;
    using NSCoder::decodeValueOfObjCType;

protected:
    virtual BOOL setUpForReadingWithData(NSData *data);

    static id unarchiveOfClass(Class *asked, NSData *data, NSArray *allowedClasses);
    static id unarchiveFileOfClass(Class *asked, NSString *path);

    /// Returns the archive; throws InvalidUseOfMethodException when there is none.
    qb::archive::Reader &reader() const;
    const void *handOut(std::string_view bytes, std::uint32_t *length) const;

private:
    Ref<NSData> data_;
    std::unique_ptr<qb::archive::Reader> reader_;
};

/// Reads what `NSKeyedArchiver` has written. Values with keys are read in any order, or not at all.
class QB_EXPORT NSKeyedUnarchiver : public NSUnarchiver {
public:
    NSKeyedUnarchiver() = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    static id unarchiveObjectWithData(NSData *data) { return unarchiveOfClass(cls(), data, nullptr); }
    static id unarchiveObjectWithData(NSData *data, NSArray *allowedClasses) {
        return unarchiveOfClass(cls(), data, allowedClasses);
    }
    static id unarchiveObjectWithFile(NSString *path) { return unarchiveFileOfClass(cls(), path); }
    static Ref<NSKeyedUnarchiver> initForReadingWithData(NSData *data) {
        return qb::init<NSKeyedUnarchiver>(&NSKeyedUnarchiver::setUpForReadingWithData, data);
    }

    BOOL allowsKeyedCoding() const override { return YES; }
    BOOL containsValueForKey(NSString *key) const override;
    id decodeRootObject() override;
    void decodeValueOfObjCType(const char *type, void *at, NSString *key) override;
    const void *decodeBytesForKey(NSString *key, std::uint32_t *returnedLength) override;
    using NSUnarchiver::decodeValueOfObjCType;
};

#endif
