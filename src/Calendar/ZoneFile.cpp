#include "ZoneFile.h"

#include "System/Files.h"

#include <cerrno>

namespace qb::calendar {

namespace {

// Ten times the largest file that the zone database has had.
constexpr std::size_t kFileLimit = 49'152;
constexpr std::size_t kHeaderLength = 44;
constexpr std::uint32_t kTypeLimit = 256;

std::uint64_t bigEndian(const char *bytes, unsigned width) {
    std::uint64_t value = 0;
    for (unsigned index = 0; index < width; ++index)
        value = value << 8 | static_cast<unsigned char>(bytes[index]);
    return value;
}

std::int64_t signedBigEndian(const char *bytes, unsigned width) {
    const std::uint64_t value = bigEndian(bytes, width);
    return width == 4 ? static_cast<std::int32_t>(value) : static_cast<std::int64_t>(value);
}

struct Header {
    char version;
    std::uint32_t utcCount;
    std::uint32_t standardCount;
    std::uint32_t leapCount;
    std::uint32_t transitionCount;
    std::uint32_t typeCount;
    std::uint32_t nameLength;

    std::uint64_t blockLength(unsigned timeWidth) const {
        return std::uint64_t{transitionCount} * (timeWidth + 1) + std::uint64_t{typeCount} * 6 + nameLength +
               std::uint64_t{leapCount} * (timeWidth + 4) + standardCount + utcCount;
    }
};

class FileParser {
public:
    FileParser(std::string_view bytes, ZoneData &data) : rest_(bytes), data_(data) {}

    bool parse() {
        Header header;
        if (!takeHeader(header))
            return false;
        if (header.version == '\0')
            return takeBlock(header, 4);
        // The first block serves readers of 32-bit times only.
        std::string_view skipped;
        return take(header.blockLength(4), skipped) && takeHeader(header) && takeBlock(header, 8) &&
               takeFooter();
    }

private:
    bool take(std::uint64_t length, std::string_view &taken) {
        if (length > rest_.size())
            return false;
        taken = rest_.substr(0, static_cast<std::size_t>(length));
        rest_.remove_prefix(taken.size());
        return true;
    }

    bool takeHeader(Header &header) {
        std::string_view bytes;
        if (!take(kHeaderLength, bytes) || bytes.substr(0, 4) != "TZif")
            return false;
        const auto count = [bytes](std::size_t index) {
            return static_cast<std::uint32_t>(bigEndian(bytes.data() + 20 + 4 * index, 4));
        };
        header = {bytes[4], count(0), count(1), count(2), count(3), count(4), count(5)};
        return header.version == '\0' || header.version >= '2';
    }

    bool takeBlock(const Header &header, unsigned timeWidth) {
        if (header.typeCount == 0 || header.typeCount > kTypeLimit || header.leapCount != 0 ||
            header.blockLength(timeWidth) > rest_.size())
            return false;
        std::string_view times, indexes, types, names, flags;
        take(std::uint64_t{header.transitionCount} * timeWidth, times);
        take(header.transitionCount, indexes);
        take(std::uint64_t{header.typeCount} * 6, types);
        take(header.nameLength, names);
        take(std::uint64_t{header.standardCount} + header.utcCount, flags);
        return addTransitions(times, timeWidth) && addTypes(types, names) && addIndexes(indexes);
    }

    bool addTransitions(std::string_view times, unsigned width) {
        data_.transitions.reserve(times.size() / width);
        for (std::size_t position = 0; position < times.size(); position += width) {
            const std::int64_t time = signedBigEndian(times.data() + position, width);
            if (!data_.transitions.empty() && time <= data_.transitions.back())
                return false;
            data_.transitions.push_back(time);
        }
        return true;
    }

    bool addTypes(std::string_view types, std::string_view names) {
        data_.names.assign(names);
        for (std::size_t position = 0; position < types.size(); position += 6) {
            const char *const record = types.data() + position;
            const std::int64_t offset = signedBigEndian(record, 4);
            const std::size_t nameStart = static_cast<unsigned char>(record[5]);
            const std::size_t nameEnd = names.find('\0', nameStart);
            if (offset < -kMaxZoneOffset || offset > kMaxZoneOffset || (record[4] != 0 && record[4] != 1) ||
                nameEnd == std::string_view::npos)
                return false;
            data_.types.push_back({static_cast<std::int32_t>(offset), record[4] == 1,
                                   static_cast<std::uint32_t>(nameStart),
                                   static_cast<std::uint32_t>(nameEnd - nameStart)});
        }
        return true;
    }

    bool addIndexes(std::string_view indexes) {
        for (const char index : indexes) {
            if (static_cast<unsigned char>(index) >= data_.types.size())
                return false;
            data_.typeIndexes.push_back(static_cast<std::uint8_t>(index));
        }
        return true;
    }

    bool takeFooter() {
        if (rest_.empty() || rest_.front() != '\n')
            return false;
        const std::size_t end = rest_.find('\n', 1);
        if (end == std::string_view::npos)
            return false;
        if (end == 1)
            return true;
        data_.rule = parsePosixRule(rest_.substr(1, end - 1));
        return data_.rule.has_value();
    }

    std::string_view rest_;
    ZoneData &data_;
};

class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0)
            sys::close(number_);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    int number() const { return number_; }

private:
    int number_;
};

} // namespace

bool parseZoneFile(std::string_view bytes, ZoneData &data) {
    data = {};
    return FileParser(bytes, data).parse();
}

int readZoneFile(const std::string &path, std::string &bytes) {
    // Not blocking: the TZ variable may name anything, a pipe too.
    const Descriptor file(sys::open(path.c_str(), O_RDONLY | O_NOCTTY | O_NONBLOCK));
    if (file.number() < 0)
        return errno;
    bytes.resize(kFileLimit + 1);
    const ssize_t length = sys::readAll(file.number(), bytes.data(), bytes.size());
    if (length < 0)
        return errno;
    bytes.resize(static_cast<std::size_t>(length));
    return bytes.size() > kFileLimit ? EFBIG : 0;
}

} // namespace qb::calendar
