// Reading text.
#ifndef QBFOUNDATION_QBSTRINGINPUTSTREAM_H
#define QBFOUNDATION_QBSTRINGINPUTSTREAM_H

#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBInputStreamWithKnownLength.h>
#include <QBFoundation/Runtime/Ref.h>

#include <cstdint>

/// Reads a string, which the stream keeps: `readBuffer` its bytes, `readByte` its characters.
///
/// Both move the same position, so that mixing them is of use for ASCII only.
class QB_EXPORT QBStringInputStream : public QBInputStreamWithKnownLength {
public:
    QBStringInputStream() noexcept = default;
    ~QBStringInputStream() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    static QBStringInputStream *streamWithString(NSString *string) {
        return initWithString(string).autorelease();
    }
    static Ref<QBStringInputStream> initWithString(NSString *string) {
        return qb::init<QBStringInputStream>(&QBStringInputStream::setUpWithString, string);
    }

    BOOL isBinary() const override { return NO; }
    /// Returns the UTF-16 unit with the index of the position, 0 to 65535; -1 at the end of the bytes or
    /// characters, whichever comes first.
    QB_EXPORT std::int32_t readByte() override {
        return position_ < asciiEnd_ ? ascii_[position_++] : readCharacter();
    }
    std::int32_t _readBuffer(void *buffer, std::uint32_t length) override;
    std::uint32_t byteLength() const override;
    void reset() override { position_ = 0; }

protected:
    /// The initialiser `initWithString:`.
    virtual BOOL setUpWithString(NSString *string);

private:
    std::int32_t readCharacter();
    bool findCharacter();

    Ref<NSString> sourceString_;
    std::uint32_t position_ = 0;
    // For a text that can't change: where the character is that was looked up last, so that reading on finds
    // the next one without counting from the start.
    bool isConstant_ = false;
    std::uint32_t foundUnit_ = 0;
    std::uint32_t foundByte_ = 0;
    bool isHalfRead_ = false; // its first unit was read, and it has two
    // Characters below `asciiEnd_` are bytes; 0 when the text is not all ASCII or can change.
    std::uint32_t asciiEnd_ = 0;
    const char *ascii_ = nullptr;
};

#endif
