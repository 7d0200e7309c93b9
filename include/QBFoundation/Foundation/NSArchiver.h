// Writing archives.
#ifndef QBFOUNDATION_FOUNDATION_NSARCHIVER_H
#define QBFOUNDATION_FOUNDATION_NSARCHIVER_H

#include <QBFoundation/Foundation/NSCoder.h>
#include <QBFoundation/Foundation/NSData.h>

#include <cstdint>
#include <memory>

namespace qb::archive {
class Writer;
}

/// Writes objects, and all that hang on them, to data; each object once, however often it is mentioned.
///
/// An object writes itself in `encodeWithCoder:`; one whose class has no archived form throws
/// InvalidUseOfMethodException. Raises 900005 (what is wrong), once, when objects are met inside each other,
/// for the first time, deeper than 256, or a container holds itself; there is no archive then. Operations
/// that write throw InvalidUseOfMethodException once the archive is finished.
class QB_EXPORT NSArchiver : public NSCoder {
public:
    NSArchiver();
    ~NSArchiver() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Returns the archive of an object, autoreleased; nil with the error raised.
    static NSData *archivedDataWithRootObject(id root) { return archivedDataOfClass(cls(), root); }
    /// Writes the archive of an object to a file, which has its old or its new content whatever happens. NO
    /// with an error raised, when there is no archive or as `writeToFile:atomically:` raises them.
    static BOOL archiveRootObject(id root, NSString *toFile) { return archiveOfClass(cls(), root, toFile); }
    /// Returns an archiver whose archive is appended to `data` when it is finished.
    /// Throws InvalidArgumentException when `data` is nil.
    static Ref<NSArchiver> initForWritingWithMutableData(NSMutableData *data) {
        return qb::init<NSArchiver>(&NSArchiver::setUpForWritingWithMutableData, data);
    }
    /// Returns an archiver with data of its own.
    static Ref<NSArchiver> init() { return qb::init<NSArchiver>(&NSArchiver::setUp); }

    /// Finishes the archive: it is in the data from then on. This and what does it on the way throw
    /// InvalidUseOfMethodException when an object that is just being encoded sends it, or no initialiser ran.
    virtual void finishEncoding();
    /// Finishes the archive and returns the data; nil when there was an error.
    virtual NSMutableData *archiverData();

    void encodeValueOfObjCType(const char *type, const void *at) override;
    void encodeBytes(const void *bytes, std::uint32_t length) override;
    void encodeObject(id object) override;
    void encodeConditionalObject(id object) override;
    /// Writes the object and finishes the archive.
    void encodeRootObject(id object) override;
    using NSCoder::encodeBytes;
    using NSCoder::encodeConditionalObject;
    using NSCoder::encodeObject;
    using NSCoder::encodeValueOfObjCType;

protected:
    virtual BOOL setUpForWritingWithMutableData(NSMutableData *data);
    BOOL setUp() override;

    static NSData *archivedDataOfClass(Class *asked, id root);
    static BOOL archiveOfClass(Class *asked, id root, NSString *toFile);

    /// Returns the archive being written. `selector`: for the exception when it is finished.
    qb::archive::Writer &writer(const char *selector);

private:
    std::unique_ptr<qb::archive::Writer> writer_; // null when the archive is finished
    Ref<NSMutableData> data_;
    bool hasFailed_ = false;
};

/// Writes values that are found again by their keys, each object with keys of its own. The root object has
/// the key "root".
class QB_EXPORT NSKeyedArchiver : public NSArchiver {
public:
    NSKeyedArchiver() = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    static NSData *archivedDataWithRootObject(id root) { return archivedDataOfClass(cls(), root); }
    static BOOL archiveRootObject(id root, NSString *toFile) { return archiveOfClass(cls(), root, toFile); }
    static Ref<NSKeyedArchiver> initForWritingWithMutableData(NSMutableData *data) {
        return qb::init<NSKeyedArchiver>(&NSKeyedArchiver::setUpForWritingWithMutableData, data);
    }
    static Ref<NSKeyedArchiver> init() { return qb::init<NSKeyedArchiver>(&NSKeyedArchiver::setUp); }

    BOOL allowsKeyedCoding() const override { return YES; }
    void encodeValueOfObjCType(const char *type, const void *at, NSString *key) override;
    void encodeBytes(const void *bytes, std::uint32_t length, NSString *key) override;
    void encodeConditionalObject(id object, NSString *key) override;
    void encodeRootObject(id object) override;
    using NSArchiver::encodeBytes;
    using NSArchiver::encodeConditionalObject;
    using NSArchiver::encodeValueOfObjCType;

private:
    void putKey(NSString *key, const char *selector);
};

#endif
