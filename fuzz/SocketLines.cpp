// Reads any bytes from a socket by lines, bytes and peeks, as they come in pieces, against a reader of whole
// texts.
//
// The first two bytes choose how long the pieces are and how they are read.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSData.h>
#include <QBFoundation/OSAdaptor/OSSocket.h>
#include <QBFoundation/OSAdaptor/OSSocketInputStream.h>
#include <QBFoundation/QBErrorHandler.h>

#include "support/Require.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>

namespace {

/// A socket that does not wait, and what is to be read from it.
class Reader {
public:
    Reader() {
        int ends[2];
        require(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0, "there are descriptors");
        ::dup2(ends[0], socket_->socketHandle());
        ::close(ends[0]);
        other_ = ends[1];
        socket_->setNonBlocking();
    }
    ~Reader() { ::close(other_); }
    Reader(const Reader &) = delete;
    Reader &operator=(const Reader &) = delete;

    /// Puts as much of the bytes into the socket as it takes, and cuts it off.
    void feed(std::string_view &bytes, std::size_t length) {
        const ssize_t sent = ::send(other_, bytes.data(), std::min(length, bytes.size()), MSG_DONTWAIT);
        if (sent <= 0)
            return;
        expected_ += bytes.substr(0, static_cast<std::size_t>(sent));
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }

    void readLine() {
        const std::size_t end = expected_.find('\n');
        std::string line = taken(end == std::string::npos ? expected_.size() : end + 1);
        std::erase_if(line, [](char c) { return c == '\n' || c == '\r'; });
        require(socket_->readLine()->view() == line, "a line has all bytes up to its end, and no returns");
    }

    void readBytes(std::uint32_t count) {
        const NSData *const data = socket_->readBytes(count);
        const std::string bytes = taken(std::min<std::size_t>(count, expected_.size()));
        require(std::string_view(static_cast<const char *>(data->bytes()), data->length()) == bytes,
                "bytes are those that were sent");
    }

    void readByte() {
        const int byte = expected_.empty() ? -1 : static_cast<unsigned char>(taken(1).front());
        require(socket_->getInputStream()->readByte() == byte, "a byte is the next one");
    }

    void peek(std::uint32_t count) {
        std::string bytes(count, '\0');
        const int found = socket_->bufferedReceiveWithBuffer(bytes.data(), count, 0, /*performPeek=*/YES);
        require(found >= 0 && (found > 0) == (count > 0 && !expected_.empty()), "a peek sees what is there");
        require(expected_.starts_with(bytes.substr(0, static_cast<std::size_t>(found))),
                "a peek sees what will be read");
    }

    bool isEmpty() const { return expected_.empty(); }

private:
    // Cuts the next bytes off what is to be read.
    std::string taken(std::size_t count) {
        std::string bytes = expected_.substr(0, count);
        expected_.erase(0, count);
        return bytes;
    }

    const Ref<OSSocket> socket_ = OSSocket::initWithSocketType(OSSocket::kUnix);
    int other_ = -1;
    std::string expected_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static QBErrorHandler *const handler = ERRORHANDLER = QBErrorHandler::init().detach();
    if (size < 2)
        return 0;
    const NSAutoreleasePool pool;
    std::minstd_rand random(data[0] * 256U + data[1] + 1U);
    const auto upTo = [&](std::uint32_t most) { return static_cast<std::uint32_t>(random() % (most + 1)); };
    const std::uint32_t longest = 1U << upTo(17);
    std::string_view rest(reinterpret_cast<const char *>(data) + 2, size - 2);
    Reader reader;
    while (!rest.empty() || !reader.isEmpty()) {
        reader.feed(rest, 1 + upTo(longest));
        switch (upTo(4)) {
        case 0:
            reader.readBytes(upTo(longest));
            break;
        case 1:
            reader.readByte();
            break;
        case 2:
            reader.peek(upTo(longest));
            break;
        default:
            reader.readLine();
        }
    }
    require(handler->errorState() == ERRORSTATE_OK, "no bytes are an error");
    return 0;
}
