#include "Connection.h"

#include <algorithm>
#include <climits>
#include <linux/sockios.h>
#include <new>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <utility>

namespace publish::serving {

namespace {

using namespace std::chrono_literals;

constexpr auto kTimeForRequest = 10s; // until a head is whole
constexpr auto kTimeForBlock = 60s;   // until some of an answer is taken
constexpr auto kTimeForParting = 2s;  // until the client, which has everything, ends the connection, too

constexpr std::uint32_t kBlock = 64 * 1024;

// So many blocks are sent before the others have their turn.
constexpr int kStepsInARow = 16;

// Only the sockets' own errors come up here, and they end no more than a connection.
bool wouldBlock() {
    const id number = ERRORHANDLER->errorId();
    return number && number->isEqual(NSNumber::numberWithInt(qb::kErrorSendWouldBlock));
}

} // namespace

Connection::Connection(OSSocket *socket, const std::string &root, Clock::time_point now)
    : socket_(socket), root_(root), deadline_(now + kTimeForRequest) {}

Connection::~Connection() {
    if (answer_.content)
        answer_.content->close();
    socket_->close();
}

bool Connection::proceed(Clock::time_point now) {
    const NSAutoreleasePool pool;
    try {
        const qb::SavedErrors errors(qb::SavedErrors::kDiscard);
        Progress progress = Progress::made;
        for (int step = 0; step < kStepsInARow && progress == Progress::made; ++step)
            progress = goOn(now);
        return progress != Progress::ended;
    } catch (const std::bad_alloc &) { // no more than this connection ends
        return false;
    }
}

Connection::Progress Connection::goOn(Clock::time_point now) {
    switch (state_) {
    case State::receiving:
        return receive(now);
    case State::sending:
        return send(now);
    case State::parting:
        return part();
    }
    return Progress::ended;
}

bool Connection::checkTime(Clock::time_point now) {
    if (state_ != State::receiving || received_.empty())
        noteTaken(now);
    if (now < deadline_)
        return true;
    if (state_ != State::receiving || received_.empty())
        return false;
    try {
        refuse(Status::requestTimeout, now);
    } catch (const std::bad_alloc &) {
        return false;
    }
    return proceed(now);
}

// --- Requests ---

Connection::Progress Connection::receive(Clock::time_point now) {
    char bytes[kLongestHead];
    const std::int32_t count = socket_->receiveWithBuffer(bytes, sizeof bytes, 0, NO);
    if (count <= 0)
        return count == 0 ? Progress::blocked : Progress::ended;
    const bool isBegun = !received_.empty();
    received_.append(bytes, static_cast<std::size_t>(count));
    takeRequest(now);
    if (!isBegun)
        noteBegun(now);
    return Progress::made;
}

// Begins the answer to the request at the front of what was received, if it is whole.
void Connection::takeRequest(Clock::time_point now) {
    // Empty lines in front of a request are none of it (RFC 9112, section 2.2).
    received_.erase(0, std::min(received_.find_first_not_of("\r\n"), received_.size()));
    const std::size_t length = lengthOfHead(received_);
    if ((length == 0 ? received_.size() : length) > kLongestHead)
        return refuse(Status::headTooLarge, now);
    if (length == 0)
        return;
    const Request request = readHead(std::string_view(received_).substr(0, length));
    received_.erase(0, length);
    try {
        begin(answerTo(request, root_), now);
    } catch (const std::bad_alloc &) { // for a short answer there may be enough
        begin(answerWith(Status::serviceUnavailable, request.wantsBody), now);
    }
}

// Gives a request that has just begun, and is not whole, its own time.
void Connection::noteBegun(Clock::time_point now) {
    if (state_ == State::receiving && !received_.empty())
        deadline_ = now + kTimeForRequest;
}

// Answers a request that is not whole.
void Connection::refuse(Status status, Clock::time_point now) {
    begin(answerWith(status, !received_.starts_with("HEAD ")), now);
}

// --- Answers ---

void Connection::begin(Answer answer, Clock::time_point now) {
    answer_ = std::move(answer);
    block_ = answer_.head;
    sent_ = 0;
    state_ = State::sending;
    untaken_ = INT_MAX;
    deadline_ = now + kTimeForBlock;
}

Connection::Progress Connection::send(Clock::time_point now) {
    if (sent_ == block_.size() && answer_.size == 0)
        return endAnswer(now);
    if (!fillBlock())
        return Progress::ended;
    const std::int32_t count =
        socket_->sendBuffer(block_.data() + sent_, static_cast<std::uint32_t>(block_.size() - sent_));
    if (count < 0)
        return wouldBlock() ? Progress::blocked : Progress::ended;
    sent_ += static_cast<std::size_t>(count);
    untaken_ = INT_MAX;
    deadline_ = now + kTimeForBlock;
    return Progress::made;
}

// Puts as much of the content behind what is to be sent as there is room, so that a head does not go alone.
// Returns false when the file has become shorter than was announced.
bool Connection::fillBlock() {
    if (sent_ == block_.size())
        block_.resize(sent_ = 0);
    if (sent_ != 0 || answer_.size == 0 || block_.size() >= kBlock)
        return true;
    const std::size_t used = block_.size();
    const auto room = static_cast<std::uint32_t>(std::min<std::uint64_t>(kBlock - used, answer_.size));
    block_.resize(used + room);
    const std::int32_t count = answer_.content->readBuffer(block_.data() + used, room);
    if (count <= 0)
        return false;
    block_.resize(used + static_cast<std::size_t>(count));
    answer_.size -= static_cast<std::uint64_t>(count);
    return true;
}

// Goes on to the next request, which may have come already.
Connection::Progress Connection::endAnswer(Clock::time_point now) {
    if (answer_.content)
        std::exchange(answer_.content, {})->close();
    state_ = answer_.keepsConnection ? State::receiving : State::parting;
    if (state_ == State::parting)
        ::shutdown(socket_->socketHandle(), SHUT_WR);
    untaken_ = INT_MAX;
    noteTaken(now);
    if (state_ == State::receiving)
        takeRequest(now);
    noteBegun(now);
    return Progress::made;
}

// Gives the client more time when it has taken some of what was sent: megabytes may wait in the system before
// it has room for more again.
void Connection::noteTaken(Clock::time_point now) {
    int bytes = 0;
    if (::ioctl(socket_->socketHandle(), SIOCOUTQ, &bytes) != 0 || bytes >= untaken_)
        return;
    untaken_ = bytes;
    const bool hasAll = bytes == 0 && state_ != State::sending;
    const auto timeWithAll = state_ == State::parting ? kTimeForParting : kTimeForRequest;
    deadline_ = now + (hasAll ? timeWithAll : kTimeForBlock);
}

// Reads on until the client has everything and ends the connection, too: closed with something unread, it
// would lose what is still on its way (RFC 9112, section 9.6).
Connection::Progress Connection::part() {
    char bytes[kLongestHead];
    const std::int32_t count = socket_->receiveWithBuffer(bytes, sizeof bytes, 0, NO);
    return count > 0 ? Progress::made : count == 0 ? Progress::blocked : Progress::ended;
}

} // namespace publish::serving
