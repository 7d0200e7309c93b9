// Reads any bytes as the requests of a client of the example's server.
#include "../examples/publish/serving/Request.cpp"

#include "support/Require.h"

#include <cstdint>

using publish::serving::Request;
using publish::serving::Status;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const NSAutoreleasePool pool;
    std::string_view text(reinterpret_cast<const char *>(data), size);
    while (const std::size_t length = publish::serving::lengthOfHead(text)) {
        require(length <= text.size(), "a head lies in what was received");
        const std::string_view head = text.substr(0, length);
        require(head.ends_with("\n\n") || head.ends_with("\n\r\n"), "an empty line ends a head");
        require(publish::serving::lengthOfHead(head.substr(0, length - 1)) == 0,
                "no head is longer than it has to be");
        const Request request = publish::serving::readHead(head);
        require((request.status == Status::ok) == static_cast<bool>(request.path),
                "what is answered has a path");
        if (request.status == Status::ok) {
            require(head.starts_with(request.wantsBody ? "GET " : "HEAD "), "only files are asked for");
            require(request.path->cStringLength() < publish::serving::kLongestTarget,
                    "a path is no longer than its address");
        }
        text.remove_prefix(length);
    }
    return 0;
}
