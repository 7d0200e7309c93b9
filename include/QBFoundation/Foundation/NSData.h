// Bytes.
#ifndef QBFOUNDATION_FOUNDATION_NSDATA_H
#define QBFOUNDATION_FOUNDATION_NSDATA_H

#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Foundation/NSRange.h>

#include <cstddef>
#include <cstdint>
#include <span>

class NSMutableData;

/// Bytes that do not change.
class QB_EXPORT NSData : public NSObject {
public:
    NSData() noexcept = default;
    ~NSData() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    // --- Creation ---

    /// Returns data with a copy of the bytes, owned. Throws std::bad_alloc, and InvalidArgumentException from
    /// 4 GiB on.
    static Ref<NSData> initWith(std::span<const std::byte> bytes);
    static NSData *dataWith(std::span<const std::byte> bytes) { return initWith(bytes).autorelease(); }
    static NSData *data() { return init().autorelease(); }
    static NSData *dataWithBytes(const void *bytes, std::uint32_t length) {
        return initWithBytes(bytes, length).autorelease();
    }
    static NSData *dataWithData(NSData *other);
    static Ref<NSData> init();
    static Ref<NSData> initWithData(NSData *other);
    static Ref<NSData> initWithBytes(const void *bytes, std::uint32_t length);
    /// Returns data that takes over memory from `malloc`, which it frees at its end.
    /// Throws InvalidArgumentException when `bytes` is null and `length` is not 0, and for 2^32 - 1 bytes,
    /// and std::bad_alloc; the memory is the caller's then.
    static Ref<NSData> initWithBytesNoCopy(void *bytes, std::uint32_t length) {
        return qb::init<NSData>(&NSData::setUpWithBytesNoCopy, bytes, length);
    }
    static NSData *dataWithBytesNoCopy(void *bytes, std::uint32_t length) {
        return dataWithBytesNoCopyOfClass(cls(), bytes, length);
    }

    // --- Bytes ---

    /// The bytes, never null. Valid as long as the data and, if it is mutable, until it changes.
    const void *bytes() const noexcept { return bytes_ ? bytes_ : static_cast<const void *>(""); }
    std::uint32_t length() const noexcept { return length_; }
    std::span<const std::byte> view() const noexcept { return {bytes_, length_}; }
    /// Copies all bytes to `buffer`.
    virtual void getBytes(void *buffer) const;
    /// Copies the first bytes, `length` of them or as many as there are.
    virtual void getBytes(void *buffer, std::uint32_t length) const;
    /// Copies the bytes of `range`. Throws NSRangeException when the range is not inside the data.
    virtual void getBytes(void *buffer, NSRange range) const;

    /// Returns the bytes of `range`, autoreleased. Throws NSRangeException when the range is not inside the
    /// data.
    virtual NSData *subdataWithRange(NSRange range) const;
    /// Returns where `data` stand first inside `range`; {NSNotFound, 0} when they do not, and for no bytes.
    /// Of NSStringCompareOptions `NSBackwardsSearch` and `NSAnchoredSearch` count. Throws NSRangeException
    /// when the range is not inside the data.
    virtual NSRange rangeOfData(NSData *data, std::uint32_t options, NSRange range) const;

    BOOL isEqual(id other) const override;
    virtual BOOL isEqualToData(NSData *other) const;
    std::uint32_t hash() const override;
    friend bool operator==(const NSData &a, const NSData &b) { return a.isEqual(b.self()); }

    /// As `propertyList` of the string with these bytes.
    virtual id propertyList() const;

    // --- HexString ---

    /// Returns the bytes as lower-case hexadecimal digits, two a byte. Throws InvalidArgumentException when
    /// they pass the length of a string.
    virtual NSString *asHexString() const;

    // --- Files ---

    /// Returns the file's bytes. Returns nil after 100039 (path) for a file that is not there, and 100023
    /// (path, system text) for one that can't be read. Throws InvalidArgumentException when `path` is nil, as
    /// `writeToFile` does.
    static NSData *dataWithContentsOfFile(NSString *path) {
        return initWithContentsOfFile(path).autorelease();
    }
    static Ref<NSData> initWithContentsOfFile(NSString *path) {
        return qb::init<NSData>(&NSData::setUpWithContentsOfFile, path);
    }
    /// Writes the bytes through a `QBFileOutputStream`. Returns NO after its errors.
    virtual BOOL writeToFile(NSString *path, BOOL atomically) const;

    // --- What every value answers ---

    BOOL containsData() const override { return length_ != 0; }
    /// Returns the property-list form: "<0fbd7771 c2735ae0>".
    NSString *description() const override;
    NSData *asData() const override { return static_cast<NSData *>(self()); }
    Ref<NSObject> copyWithZone(void *zone) const override;
    Ref<NSObject> mutableCopyWithZone(void *zone) const override;
    Ref<NSData> copy() const;
    Ref<NSMutableData> mutableCopy() const;
    void encodeWithCoder(NSCoder *coder) const override;
    void writeOnOutputStream(QBOutputStream *stream) override;
    void writeOnPropertyListOutputStream(QBOutputStream *stream) override;

protected:
    static NSData *dataWithBytesNoCopyOfClass(Class *asked, void *bytes, std::uint32_t length);
    /// The initialiser `initWithBytes:length:`.
    virtual BOOL setUpWithBytes(const void *bytes, std::uint32_t length);
    /// The initialiser `initWithBytesNoCopy:length:`.
    virtual BOOL setUpWithBytesNoCopy(void *bytes, std::uint32_t length);
    /// The initialiser `initWithContentsOfFile:`.
    virtual BOOL setUpWithContentsOfFile(NSString *path);
    BOOL setUpWithCoder(NSCoder *coder) override;
    virtual BOOL setUpWithData(NSData *other);
    void reserve(std::uint64_t capacity);
    /// Makes room for `length` bytes, and for more when the data grows.
    void reserveGrowing(std::uint64_t length);
    void append(const void *bytes, std::uint32_t length);
    /// Throws NSRangeException, naming `selector`, unless `range` lies inside the data.
    void requireRange(NSRange range, const char *selector) const;

private:
    friend class NSMutableData;

    std::uint32_t length_ = 0;
    std::uint32_t capacity_ = 0;
    std::byte *bytes_ = nullptr;
};

/// Bytes that can change.
class QB_EXPORT NSMutableData : public NSData {
public:
    NSMutableData() = default;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    static Ref<NSMutableData> init();
    static Ref<NSMutableData> initWith(std::span<const std::byte> bytes);
    static NSMutableData *dataWith(std::span<const std::byte> bytes) { return initWith(bytes).autorelease(); }
    static NSMutableData *data() { return init().autorelease(); }
    static Ref<NSMutableData> initWithBytes(const void *bytes, std::uint32_t length);
    static NSMutableData *dataWithBytes(const void *bytes, std::uint32_t length) {
        return initWithBytes(bytes, length).autorelease();
    }
    static Ref<NSMutableData> initWithBytesNoCopy(void *bytes, std::uint32_t length) {
        return qb::init<NSMutableData>(&NSMutableData::setUpWithBytesNoCopy, bytes, length);
    }
    static NSMutableData *dataWithBytesNoCopy(void *bytes, std::uint32_t length) {
        return static_cast<NSMutableData *>(dataWithBytesNoCopyOfClass(cls(), bytes, length));
    }
    static NSMutableData *dataWithData(NSData *other);
    static NSMutableData *dataWithContentsOfFile(NSString *path) {
        return initWithContentsOfFile(path).autorelease();
    }
    static Ref<NSMutableData> initWithContentsOfFile(NSString *path) {
        return qb::init<NSMutableData>(&NSMutableData::setUpWithContentsOfFile, path);
    }
    /// Returns empty data with room for `capacity` bytes.
    static NSMutableData *dataWithCapacity(std::uint32_t capacity) {
        return initWithCapacity(capacity).autorelease();
    }
    static Ref<NSMutableData> initWithCapacity(std::uint32_t capacity);
    /// Returns `length` zero bytes.
    static NSMutableData *dataWithLength(std::uint32_t length) {
        return initWithLength(length).autorelease();
    }
    static Ref<NSMutableData> initWithLength(std::uint32_t length);
    static Ref<NSMutableData> initWithData(NSData *other);

    /// The bytes, to be changed in place; null when there were none yet. Valid until the length changes.
    void *mutableBytes() noexcept { return bytes_; }

    /// Appends. Throws InvalidArgumentException when `bytes` is null and `length` is not 0, and when the data
    /// would have 2^32 - 1 bytes or more, as all that make it longer do.
    virtual void appendBytes(const void *bytes, std::uint32_t length);
    virtual void appendData(NSData *other);
    /// Cuts the data, or makes it longer by zero bytes.
    virtual void setLength(std::uint32_t length);
    /// Makes the data longer by zero bytes.
    virtual void increaseLengthBy(std::uint32_t extraLength);
    virtual void setData(NSData *other);
    /// Replaces the bytes of `range` by as many of `withBytes`; bytes beyond the end are appended.
    /// Throws NSRangeException when the range begins beyond the end.
    virtual void replaceBytesInRange(NSRange range, const void *withBytes);
    /// Replaces the bytes of `range` by `length` others, so that the data may become longer or shorter.
    /// Throws NSRangeException when the range is not inside the data.
    virtual void replaceBytesInRange(NSRange range, const void *withBytes, std::uint32_t length);
    /// Makes the bytes of `range` zero, as `replaceBytesInRange:withBytes:` replaces them.
    virtual void resetBytesInRange(NSRange range);

    Ref<NSObject> copyWithZone(void *zone) const override;
    id makeMutable() const override { return self(); }

protected:
    virtual BOOL setUpWithCapacity(std::uint32_t capacity);
    virtual BOOL setUpWithLength(std::uint32_t length);
};

template <>
struct std::hash<NSData> : qb::ValueHash {};
template <>
struct std::hash<NSMutableData> : qb::ValueHash {};

#endif
