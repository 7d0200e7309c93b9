// What a client asks for: the head of an HTTP request (RFC 9112), read without trusting it.
#ifndef PUBLISH_SERVING_REQUEST_H
#define PUBLISH_SERVING_REQUEST_H

#include <QBFoundation/QBFoundation.h>

#include <cstddef>
#include <string_view>

namespace publish::serving {

/// The answers that this server gives (RFC 9110, section 15).
enum class Status {
    ok = 200,
    movedPermanently = 301,
    notModified = 304,
    badRequest = 400,
    notFound = 404,
    methodNotAllowed = 405,
    requestTimeout = 408,
    contentTooLarge = 413,
    uriTooLong = 414,
    headTooLarge = 431,
    notImplemented = 501,
    serviceUnavailable = 503,
    versionNotSupported = 505,
};

/// The longest head, in bytes with the empty line at its end.
constexpr std::size_t kLongestHead = 8192;

/// The longest address of a page, in bytes as it is sent.
constexpr std::size_t kLongestTarget = 2048;

struct Request {
    Status status = Status::badRequest; // ok when the request can be looked after
    bool wantsBody = true;              // not so for HEAD
    bool keepsConnection = false;       // after the answer
    Ref<NSString> path;                 // unescaped and without the slash in front; null unless ok
    Ref<NSString> modifiedSince;        // as it was sent; null unless it was sent once
};

/// Returns the length of the head at the front of what was received, with the empty line that ends it; 0 when
/// its end has not come yet.
std::size_t lengthOfHead(std::string_view received);

/// Reads a whole head.
Request readHead(std::string_view head);

} // namespace publish::serving

#endif
