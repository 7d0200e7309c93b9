#include "OSAdaptor/OSProcess.Program.h"

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/OSAdaptor/OSLogger.h>

#include "Foundation/Kept.h"
#include "System/Files.h"
#include "System/Process.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <new>
#include <unistd.h>
#include <unordered_map>

namespace qb {

namespace {

constexpr unsigned kTimeForLastLine = 2; // seconds

constexpr const char *kNoMemory = "malloc() failed!";
constexpr const char *kNoEnvironment = "environment setting for '%s' failed: %s!\n";
constexpr const char *kNoProgram = "execvp() for '%s' failed: %s!\n";

bool hasNul(std::string_view text) {
    return text.find('\0') != std::string_view::npos;
}

// Up to and with the sign between name and value.
std::string_view nameOf(const char *variable) {
    const char *const sign = std::strchr(variable, '=');
    return {variable, sign ? static_cast<std::size_t>(sign - variable + 1) : std::strlen(variable)};
}

} // namespace

Redirection toStandardInput(const std::int32_t *source) {
    return {source, STDIN_FILENO, "could not reset stdin for '%s'\n"};
}

Redirection toStandardOutput(const std::int32_t *source) {
    return {source, STDOUT_FILENO, "could not reset stdout for '%s'\n"};
}

Redirection toStandardError(const std::int32_t *source) {
    return {source, STDERR_FILENO, "could not reset stderr for '%s'\n"};
}

Program::Program(NSString *command, NSArray *args, NSDictionary *env)
    : command_(command ? command->cString() : nullptr) {
    const Ref<NSDictionary> kept = env; // whatever the arguments do for their texts
    try {
        failure_ = {kNoMemory, ENOMEM};
        addArguments(command, args);
        failure_ = {kNoEnvironment, ENOMEM};
        failure_ = addEnvironment(env);
    } catch (const std::bad_alloc &) { // for which the failure stands already
    }
}

std::string_view Program::text(NSObject *value) {
    const Kept kept(value); // whatever it does for its text
    NSString *const text = value->stringValue();
    texts_.push_back(text ? text->copy() : Ref<NSString>(NSString::string())); // unchanged until the start
    return texts_.back()->view();
}

void Program::addArguments(NSString *command, NSArray *args) {
    arguments_.reserve((args ? args->count() : 0) + std::size_t{2});
    const auto add = [&](std::string_view argument) {
        isCutShort_ |= hasNul(argument);
        arguments_.push_back(const_cast<char *>(argument.data()));
    };
    if (command) {
        add(text(command));
        command_ = arguments_.front();
    }
    if (args)
        for (id argument : *args)
            add(text(argument));
    arguments_.push_back(nullptr);
}

StartFailure Program::addEnvironment(NSDictionary *env) {
    if (!env || env->count() == 0)
        return {};
    for (char **variable = sys::environment(); variable && *variable; ++variable)
        environment_.push_back(*variable);
    std::unordered_map<std::string_view, std::size_t> places; // by name
    for (std::size_t i = environment_.size(); i-- > 0;)       // the first of a name counts
        places[nameOf(environment_[i])] = i;
    variables_.reserve(env->count()); // so that none of them moves
    for (const auto &[key, value] : *env) {
        const Ref<NSObject> kept = value; // whatever the key does for its text
        std::string &variable = variables_.emplace_back(text(key));
        variable.append("=").append(text(value));
        if (hasNul(variable))
            return {kNoEnvironment, EINVAL};
        const auto [place, isNew] = places.try_emplace(nameOf(variable.data()), environment_.size());
        if (isNew)
            environment_.push_back(variable.data());
        else
            environment_[place->second] = variable.data();
    }
    environment_.push_back(nullptr);
    return {};
}

StartFailure Program::become(std::span<const Redirection> redirections) const noexcept {
    if (failure_.format)
        return failure_;
    for (const Redirection &redirection : redirections)
        if (redirection.source && sys::dup2(*redirection.source, redirection.target) < 0 &&
            *redirection.source != redirection.target) // which may be closed, and then stays so
            return {redirection.failure, errno};
    // Not before all are in their places: one descriptor may serve two streams.
    for (const Redirection &redirection : redirections)
        if (redirection.source && *redirection.source > STDERR_FILENO)
            sys::close(*redirection.source);
    sys::closeOthersOnExec();
    sys::resetSignals();
    if (!environment_.empty())
        sys::setEnvironment(const_cast<char **>(environment_.data()));
    errno = isCutShort_ ? EINVAL : EFAULT;
    if (command_ && !isCutShort_)
        sys::execvp(command_, arguments_.data());
    return {kNoProgram, errno};
}

void Program::run(std::span<const Redirection> redirections) const noexcept {
    end(become(redirections));
}

void logAlert(const char *format, const char *first, const char *second) noexcept {
    sys::ignoreSignalsOfWriting();
    try {
        OSLogger::loggerForCategory("alert"_ns)
            ->logWithLevelFormat(0, NSString::stringWithCString(format), first, second);
    } catch (...) {
    }
}

static void endAtOnce(int) noexcept {
    sys::_exit(kExitWithoutProgram);
}

// The line may go to a pipe that is full, and that nobody reads before this process has ended.
void endWithAlert(const char *format, const char *first, const char *second) noexcept {
    struct sigaction last {};
    last.sa_handler = endAtOnce;
    sigset_t deadly;
    sigemptyset(&deadly);
    for (const int signal : {SIGALRM, SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL}) {
        sys::sigaction(signal, &last, nullptr);
        sigaddset(&deadly, signal);
    }
    sigprocmask(SIG_UNBLOCK, &deadly, nullptr);
    sys::alarm(kTimeForLastLine);
    logAlert(format, first, second);
    sys::_exit(kExitWithoutProgram);
}

void Program::end(const StartFailure &failure) const noexcept {
    endWithAlert(failure.format, shownCommand(), std::strerror(failure.error));
}

} // namespace qb
