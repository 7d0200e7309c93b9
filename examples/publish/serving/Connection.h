// One client: its requests come in, its answers go out, and neither waits for it.
#ifndef PUBLISH_SERVING_CONNECTION_H
#define PUBLISH_SERVING_CONNECTION_H

#include "Answer.h"

#include <chrono>
#include <string>

namespace publish::serving {

class Connection {
public:
    using Clock = std::chrono::steady_clock;

    /// `root`: the `realDirectory` that is served, which outlives the connection.
    Connection(OSSocket *socket, const std::string &root, Clock::time_point now);
    ~Connection();
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    OSSocket *socket() const { return socket_; }
    /// Whether it waits until more can be sent; else it waits for what comes.
    bool isSending() const { return state_ == State::sending; }

    /// Does what can be done without waiting. Returns false when the connection is over.
    bool proceed(Clock::time_point now);
    /// Looks whether the client has taken too long: for a request that has begun there is still an answer.
    /// Returns false when the connection is over.
    bool checkTime(Clock::time_point now);

private:
    enum class Progress { made, blocked, ended };
    enum class State { receiving, sending, parting };

    Progress goOn(Clock::time_point now);

    Progress receive(Clock::time_point now);
    void takeRequest(Clock::time_point now);
    void noteBegun(Clock::time_point now);
    void refuse(Status status, Clock::time_point now);
    void begin(Answer answer, Clock::time_point now);
    Progress send(Clock::time_point now);
    bool fillBlock();
    Progress endAnswer(Clock::time_point now);
    Progress part();
    void noteTaken(Clock::time_point now);

    Ref<OSSocket> socket_;
    const std::string &root_;
    std::string received_; // and not yet answered
    State state_ = State::receiving;
    Answer answer_;
    std::string block_;    // what is to be sent next,
    std::size_t sent_ = 0; // of it
    int untaken_ = 0;      // of what was sent, at the latest look
    Clock::time_point deadline_;
};

} // namespace publish::serving

#endif
