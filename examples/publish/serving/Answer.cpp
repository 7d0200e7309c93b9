#include "Answer.h"

#include "../Dates.h"
#include "../Links.h"
#include "SiteFile.h"

#include <algorithm>
#include <ctime>

namespace publish::serving {

namespace {

const char *textOf(Status status) {
    switch (status) {
    case Status::ok:
        return "OK";
    case Status::movedPermanently:
        return "Moved Permanently";
    case Status::notModified:
        return "Not Modified";
    case Status::badRequest:
        return "Bad Request";
    case Status::notFound:
        return "Not Found";
    case Status::methodNotAllowed:
        return "Method Not Allowed";
    case Status::requestTimeout:
        return "Request Timeout";
    case Status::contentTooLarge:
        return "Content Too Large";
    case Status::uriTooLong:
        return "URI Too Long";
    case Status::headTooLarge:
        return "Request Header Fields Too Large";
    case Status::notImplemented:
        return "Not Implemented";
    case Status::serviceUnavailable:
        return "Service Unavailable";
    case Status::versionNotSupported:
        return "HTTP Version Not Supported";
    }
    return "";
}

std::string dateText(std::time_t time) {
    auto *date = NSCalendarDate::dateWithTimeIntervalSince1970(static_cast<NSTimeInterval>(time));
    return std::string(httpText(date)->view());
}

// The head of an answer, a field at a time.
class Head {
public:
    explicit Head(Status status, std::time_t now = std::time(nullptr))
        : text_("HTTP/1.1 " + std::to_string(static_cast<int>(status)) + " " + textOf(status) + "\r\n") {
        add("Date", dateText(now));
        add("X-Content-Type-Options", "nosniff");
    }

    void add(const char *name, std::string_view value) {
        text_.append(name).append(": ").append(value).append("\r\n");
    }
    std::string ended() const { return text_ + "\r\n"; }

private:
    std::string text_;
};

// An answer without a file says what it is in a line of text.
Answer shortAnswer(Status status, Head head, bool wantsBody, bool keepsConnection) {
    const std::string body = std::string(textOf(status)) + "\n";
    head.add("Content-Type", "text/plain; charset=utf-8");
    head.add("Content-Length", std::to_string(body.size()));
    head.add("Connection", keepsConnection ? "keep-alive" : "close");
    Answer answer;
    answer.head = head.ended() + (wantsBody ? body : "");
    answer.keepsConnection = keepsConnection;
    return answer;
}

// What is malformed is no date, and the file is sent.
bool isUnchangedSince(NSString *date, std::time_t modified) {
    NSCalendarDate *const since = date ? httpDateIn(date) : nullptr;
    return since && static_cast<NSTimeInterval>(modified) <= since->timeIntervalSince1970();
}

Answer fileAnswer(const Request &request, const SiteFile &file) {
    const bool isUnchanged = isUnchangedSince(request.modifiedSince, file.modified);
    Answer answer;
    answer.keepsConnection = request.keepsConnection;
    const std::time_t now = std::time(nullptr);
    Head head(isUnchanged ? Status::notModified : Status::ok, now);
    // No date behind the answer's own (RFC 9110, section 8.8.2.1), nor one that no client could ask with.
    if (file.modified >= 0)
        head.add("Last-Modified", dateText(std::min(file.modified, now)));
    if (!isUnchanged) {
        head.add("Content-Type", file.type->view());
        head.add("Content-Length", std::to_string(file.size));
    }
    head.add("Connection", answer.keepsConnection ? "keep-alive" : "close");
    answer.head = head.ended();
    if (isUnchanged || !request.wantsBody) {
        file.content->close();
        return answer;
    }
    answer.content = file.content;
    answer.size = file.size;
    return answer;
}

} // namespace

Answer answerWith(Status status, bool wantsBody) {
    return shortAnswer(status, Head(status), wantsBody, false);
}

Answer answerTo(const Request &request, const std::string &root) {
    if (request.status != Status::ok) {
        Head head(request.status);
        if (request.status == Status::methodNotAllowed)
            head.add("Allow", "GET, HEAD");
        return shortAnswer(request.status, head, request.wantsBody, request.keepsConnection);
    }
    const SiteFile file = openSiteFile(root, request.path);
    if (file.status == Status::ok)
        return fileAnswer(request, file);
    Head head(file.status);
    if (file.status == Status::movedPermanently)
        head.add("Location", "/" + escapedPath(request.path->view()) + "/");
    return shortAnswer(file.status, head, request.wantsBody, request.keepsConnection);
}

} // namespace publish::serving
