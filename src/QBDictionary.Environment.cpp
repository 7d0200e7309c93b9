// Environments as dictionaries.
#include <QBFoundation/Foundation/NSDictionary.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/OSAdaptor/OSEnvironment.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "System/Stdio.h"

#include <cerrno>
#include <cstring>
#include <string_view>

namespace {

constexpr const char *kFile = "src/QBDictAdditions";

constexpr std::size_t kLongestLine = 8192; // bytes, the line end not counted

// Lines of a file, up to an empty one.
class Lines {
public:
    explicit Lines(std::FILE *file) : file_(file) {}

    enum class Step { line, end, failure };

    Step next() {
        const std::size_t length = qb::sys::readLine(bytes_, sizeof bytes_, file_);
        const bool hasEnd = length != 0 && bytes_[length - 1] == '\n';
        line_ = {bytes_, length - hasEnd};
        ++number_;
        if (!hasEnd && errno != 0 && qb::sys::ferror(file_)) { // the flag may be an earlier call's
            qb::raiseError(kFile, __LINE__, qb::kErrorCannotRead, "<unknown>", std::strerror(errno));
            return Step::failure;
        }
        if (line_.size() > kLongestLine)
            return malformed("a line of at most 8192 bytes");
        return line_.empty() ? Step::end : Step::line;
    }
    Step malformed(const char *expected) const {
        qb::raiseError(kFile, __LINE__, qb::kErrorMalformedEnvironment, number_, expected);
        return Step::failure;
    }

    std::string_view line() const { return line_; }

private:
    std::FILE *const file_;
    char bytes_[kLongestLine + 2]; // with the line end and a NUL
    std::string_view line_;
    std::uint32_t number_ = 0;
};

} // namespace

std::span<const qb::Method> NSDictionary::environmentMethods() {
    static const qb::Method methods[] = {
        qb::initialiser<"initWithEnvironment">(&NSDictionary::setUpWithEnvironment),
        qb::maker<"dictionaryWithEnvironment">(&NSDictionary::setUpWithEnvironment),
        qb::initialiser<"initWithEncodedEnvironmentFromFile:">(
            &NSDictionary::setUpWithEncodedEnvironmentFromFile),
        qb::maker<"dictionaryWithEncodedEnvironmentFromFile:">(
            &NSDictionary::setUpWithEncodedEnvironmentFromFile),
    };
    return methods;
}

BOOL NSDictionary::setUpWithEnvironment() {
    for (char **entry = OSEnvironment::getEnvironment(); entry && *entry; ++entry) {
        const std::string_view text = *entry;
        const std::size_t equals = text.find('=');
        if (equals == std::string_view::npos)
            continue;
        const Ref<NSString> name = NSString::initWith(text.substr(0, equals));
        const Ref<NSString> value = NSString::initWith(text.substr(equals + 1));
        storeNew(name, value);
    }
    return YES;
}

BOOL NSDictionary::setUpWithEncodedEnvironmentFromFile(std::FILE *file) {
    if (!file)
        throw InvalidArgumentException(
            "NSDictionary initWithEncodedEnvironmentFromFile: must have a file that is not NULL.");
    Lines lines(file);
    for (;;) {
        const Lines::Step step = lines.next();
        if (step != Lines::Step::line)
            return step == Lines::Step::end;
        const std::size_t equals = lines.line().find('=');
        if (equals == std::string_view::npos)
            return lines.malformed("\"=\"") == Lines::Step::end;
        const Ref<NSString> name = NSString::initWith(lines.line().substr(0, equals));
        const Ref<NSString> value = NSString::initWith(lines.line().substr(equals + 1));
        storeNew(name->urlUnEscape(), value->urlUnEscape());
    }
}
