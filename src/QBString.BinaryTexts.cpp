// Texts that carry bytes: base64, uuencode, hexadecimal digits.
#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBBase64OutputFilter.h>
#include <QBFoundation/QBDataOutputStream.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/NSString.Tables.h"
#include "Foundation/Required.h"
#include "Text/Hex.h"
#include "Text/Uudecode.h"

#include <string>

namespace {

constexpr const char *kFile = "src/QBStringAdditions";

// The lines of a text, without their ends.
class Lines {
public:
    explicit Lines(std::string_view text) : rest_(text) {}

    bool next() {
        if (rest_.empty())
            return false;
        const std::size_t end = std::min(rest_.find('\n'), rest_.size());
        line_ = rest_.substr(0, end);
        rest_.remove_prefix(std::min(end + 1, rest_.size()));
        if (line_.ends_with('\r'))
            line_.remove_suffix(1);
        ++number_;
        return true;
    }
    bool nextThatBeginsWith(std::string_view prefix) {
        while (next())
            if (line_.starts_with(prefix))
                return true;
        return false;
    }

    std::string_view line() const { return line_; }
    std::uint32_t number() const { return number_; }

private:
    std::string_view rest_;
    std::string_view line_;
    std::uint32_t number_ = 0;
};

// The lines behind the one that names the file, or all when none does.
Lines uuencodedLines(std::string_view text) {
    Lines lines(text);
    return lines.nextThatBeginsWith("begin ") ? lines : Lines(text);
}

} // namespace

std::span<const qb::Method> qb::tables::stringBinaryTexts() {
    static const qb::Method methods[] = {
        qb::method<"decodeBase64">(&NSString::decodeBase64),
        qb::method<"uudecode">(&NSString::uudecode),
        qb::method<"asHexString">(&NSString::asHexString),
        qb::method<"dataFromHexString">(&NSString::dataFromHexString),
    };
    return methods;
}

NSData *NSString::decodeBase64() const {
    const auto capacity = static_cast<std::uint32_t>(std::uint64_t{byteLength_} * 3 / 4);
    const Ref<QBDataOutputStream> stream = QBDataOutputStream::initWithCapacity(capacity);
    if (!stream)
        return nullptr;
    const Ref<QBBase64OutputFilter> filter =
        QBBase64OutputFilter::initWithTargetDecode(stream.get(), /*decode=*/YES);
    filter->writeObject(copy().get()); // whatever an error handler does to this string
    filter->flush();
    return stream->targetData();
}

NSData *NSString::uudecode() const {
    std::string bytes;
    for (Lines lines = uuencodedLines(view()); lines.next() && !lines.line().starts_with("end");) {
        const std::size_t start = bytes.size();
        const std::size_t length = start + qb::text::uudecodedLength(lines.line());
        qb::requireLength(length, "NSString uudecode");
        bytes.resize(length);
        const qb::text::UudecodedLine line = qb::text::uudecodeLine(lines.line(), bytes.data() + start);
        bytes.resize(static_cast<std::size_t>(line.end - bytes.data()));
        if (line.malformed == qb::text::UudecodedLine::kWhole)
            continue;
        qb::raiseError(kFile, __LINE__, qb::kErrorMalformedUuencoded, lines.number(),
                       static_cast<std::uint32_t>(line.malformed + 1));
        break;
    }
    return NSData::dataWithBytes(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

NSString *NSString::asHexString() const {
    return NSData::dataWithBytes(bytes_, byteLength_)->asHexString();
}

NSData *NSString::dataFromHexString() const {
    std::string bytes(byteLength_ / 2, '\0');
    const char *const end = bytes_ + byteLength_;
    const qb::text::HexResult result =
        qb::text::readHex(bytes_, end, reinterpret_cast<unsigned char *>(bytes.data()));
    if (result.next == end && result.isComplete)
        return NSData::dataWithBytes(bytes.data(), static_cast<std::uint32_t>(result.length));
    qb::raiseError(kFile, __LINE__, qb::kErrorMalformedHex, static_cast<std::uint32_t>(result.next - bytes_));
    return nullptr;
}
