#include "Request.h"

#include <algorithm>
#include <string>

namespace publish::serving {

namespace {

constexpr std::string_view kBlanks = " \t";

// The characters of methods and field names (RFC 9110, section 5.6.2).
constexpr std::string_view kTokenMarks = "!#$%&'*+-.^_`|~";

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

bool isAlphanumeric(char character) {
    return isDigit(character) || (character >= 'a' && character <= 'z') ||
           (character >= 'A' && character <= 'Z');
}

bool isToken(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char character) {
        return isAlphanumeric(character) || kTokenMarks.find(character) != std::string_view::npos;
    });
}

char lower(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

bool isSame(std::string_view text, std::string_view lowerCase) {
    return std::equal(text.begin(), text.end(), lowerCase.begin(), lowerCase.end(),
                      [](char a, char b) { return lower(a) == b; });
}

std::string_view trimmed(std::string_view text) {
    const std::size_t start = text.find_first_not_of(kBlanks);
    if (start == std::string_view::npos)
        return {};
    return text.substr(start, text.find_last_not_of(kBlanks) + 1 - start);
}

// Takes the text up to `mark`, and the mark; everything when there is none.
std::string_view takeUpTo(char mark, std::string_view &rest) {
    const std::size_t end = std::min(rest.find(mark), rest.size());
    const std::string_view text = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return text;
}

// Lines end with a line feed, a carriage return in front of it belongs to the end.
std::string_view takeLine(std::string_view &rest) {
    std::string_view line = takeUpTo('\n', rest);
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

bool listHas(std::string_view list, std::string_view word) {
    while (!list.empty())
        if (isSame(trimmed(takeUpTo(',', list)), word))
            return true;
    return false;
}

// "http://host/path" asks for "/path" (RFC 9112, section 3.2.2).
std::string_view withoutHost(std::string_view target) {
    constexpr std::string_view kScheme = "http://";
    if (!isSame(target.substr(0, kScheme.size()), kScheme))
        return target;
    const std::size_t end = target.find_first_of("/?#", kScheme.size());
    return end != std::string_view::npos && target[end] == '/' ? target.substr(end) : "/";
}

// Whether two hexadecimal digits stand behind each "%".
bool hasWholeEscapes(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789abcdefABCDEF";
    for (std::size_t at = text.find('%'); at != std::string_view::npos; at = text.find('%', at + 1))
        if (at + 2 >= text.size() || kDigits.find(text[at + 1]) == std::string_view::npos ||
            kDigits.find(text[at + 2]) == std::string_view::npos)
            return false;
    return true;
}

// A "+" is no blank in a path.
NSString *unescaped(std::string_view path) {
    std::string text;
    for (const char character : path)
        character == '+' ? text += "%2B" : text += character;
    return NSString::stringWith(text)->urlUnEscape();
}

Status readTarget(std::string_view target, Request &request) {
    if (target.size() > kLongestTarget)
        return Status::uriTooLong;
    target = withoutHost(target);
    target = target.substr(0, target.find_first_of("?#"));
    const bool isPrintable = std::all_of(target.begin(), target.end(),
                                         [](char character) { return character > ' ' && character < 127; });
    if (!target.starts_with('/') || !isPrintable || !hasWholeEscapes(target))
        return Status::badRequest;
    request.path = unescaped(target.substr(1));
    return Status::ok;
}

// What the fields say that matters to a server of files.
struct Fields {
    unsigned hosts = 0;
    unsigned dates = 0;
    bool hasTags = false;
    bool hasBody = false;
    bool closes = false;
    bool keepsAlive = false;
};

bool readField(std::string_view line, Fields &fields, Request &request) {
    if (line.find(':') == std::string_view::npos)
        return false;
    const std::string_view name = takeUpTo(':', line);
    const std::string_view value = trimmed(line);
    const bool isPlain =
        value.find('\r') == std::string_view::npos && value.find('\0') == std::string_view::npos;
    if (!isToken(name) || !isPlain)
        return false;
    if (isSame(name, "host"))
        ++fields.hosts;
    else if (isSame(name, "content-length"))
        fields.hasBody |= value != "0";
    else if (isSame(name, "transfer-encoding"))
        fields.hasBody = true;
    else if (isSame(name, "if-modified-since"))
        request.modifiedSince = ++fields.dates == 1 ? NSString::stringWith(value) : nullptr;
    else if (isSame(name, "if-none-match")) // then the date does not count (RFC 9110, section 13.1.3)
        fields.hasTags = true;
    else if (isSame(name, "connection")) {
        fields.closes |= listHas(value, "close");
        fields.keepsAlive |= listHas(value, "keep-alive");
    }
    return true;
}

// A later minor version counts as 1.1 (RFC 9110, section 2.5).
Status statusOfVersion(std::string_view version) {
    constexpr std::string_view kMajor = "HTTP/1.";
    if (version.starts_with(kMajor) && version.size() == kMajor.size() + 1 && isDigit(version.back()))
        return Status::ok;
    return version.starts_with("HTTP/") ? Status::versionNotSupported : Status::badRequest;
}

Status statusOfMethod(std::string_view method) {
    if (method == "GET" || method == "HEAD")
        return Status::ok;
    constexpr std::string_view kOthers[] = {"POST", "PUT", "DELETE", "CONNECT", "OPTIONS", "TRACE", "PATCH"};
    return std::find(std::begin(kOthers), std::end(kOthers), method) != std::end(kOthers)
               ? Status::methodNotAllowed
               : Status::notImplemented;
}

} // namespace

std::size_t lengthOfHead(std::string_view received) {
    for (std::size_t end = received.find('\n'); end != std::string_view::npos;
         end = received.find('\n', end + 1)) {
        const std::string_view next = received.substr(end + 1, 2);
        if (next.starts_with('\n'))
            return end + 2;
        if (next == "\r\n")
            return end + 3;
    }
    return 0;
}

Request readHead(std::string_view head) {
    Request request;
    std::string_view line = takeLine(head);
    const std::string_view method = takeUpTo(' ', line);
    const std::string_view target = takeUpTo(' ', line);
    const std::string_view version = line;
    request.wantsBody = method != "HEAD";
    request.status = isToken(method) ? statusOfVersion(version) : Status::badRequest;
    if (request.status != Status::ok)
        return request;

    Fields fields;
    while (!(line = takeLine(head)).empty())
        if (!readField(line, fields, request)) {
            request.status = Status::badRequest;
            return request;
        }
    if (fields.hasTags)
        request.modifiedSince = nullptr;
    const bool isNew = version != "HTTP/1.0";
    if (fields.hosts > 1 || (isNew && fields.hosts == 0))
        return request.status = Status::badRequest, request;
    // A body is not read, so that nothing behind it can be told apart from it.
    request.keepsConnection = !fields.hasBody && !fields.closes && (isNew || fields.keepsAlive);
    request.status = statusOfMethod(method);
    if (request.status == Status::ok)
        request.status = fields.hasBody ? Status::contentTooLarge : readTarget(target, request);
    return request;
}

} // namespace publish::serving
