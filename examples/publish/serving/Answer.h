// What a request is answered with (RFC 9112).
#ifndef PUBLISH_SERVING_ANSWER_H
#define PUBLISH_SERVING_ANSWER_H

#include "Request.h"

#include <cstdint>
#include <string>

namespace publish::serving {

/// A head, and what is to be read from a file behind it.
struct Answer {
    std::string head;           // with the short body of an answer without a file
    Ref<QBInputStream> content; // null when there is none
    std::uint64_t size = 0;     // of the content, in bytes
    bool keepsConnection = false;
};

/// Answers a request for a file below `root`, a `realDirectory`.
Answer answerTo(const Request &request, const std::string &root);

/// Answers with a status alone, and closes the connection. `wantsBody`: with a line of text, too.
Answer answerWith(Status status, bool wantsBody);

} // namespace publish::serving

#endif
