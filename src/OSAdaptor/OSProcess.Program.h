// A program on its way into a process.
#ifndef QBFOUNDATION_OSADAPTOR_OSPROCESS_PROGRAM_H
#define QBFOUNDATION_OSADAPTOR_OSPROCESS_PROGRAM_H

#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/Ref.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

class NSArray;
class NSDictionary;

namespace qb {

inline constexpr const char *kProcessFile = "src/OSAdaptor/OSProcess";
/// The exit status of a process that could not become the program, or has ended before its time.
inline constexpr int kExitWithoutProgram = 17;

/// Why a process could not become the program: what is logged, with the command and the system's text filled
/// in.
struct StartFailure {
    const char *format = nullptr; // null: nothing has failed yet
    int error = 0;                // errno
};

/// A descriptor that becomes one of the program's standard streams; none when `source` is null.
struct Redirection {
    const std::int32_t *source;
    int target;
    const char *failure; // what is logged when the descriptor is none
};
Redirection toStandardInput(const std::int32_t *source);
Redirection toStandardOutput(const std::int32_t *source);
Redirection toStandardError(const std::int32_t *source);

/// What it takes to become a program, made before there is a process for it.
///
/// What goes wrong in the making is told by the process that was to become the program, as all else is that
/// keeps it from that.
class Program {
public:
    Program(NSString *command, NSArray *args, NSDictionary *env);

    /// Makes this process the program: redirects its streams in that order, keeps all other descriptors from
    /// it, and gives signals their default actions. Returns after a failure only, allocates nothing, and
    /// leaves no trace in memory but the environment.
    StartFailure become(std::span<const Redirection> redirections) const noexcept;
    /// Does `become`, or ends the process as `end` does.
    [[noreturn]] void run(std::span<const Redirection> redirections) const noexcept;
    /// Ends the process with an alert, without what its parent has still to write.
    [[noreturn]] void end(const StartFailure &failure) const noexcept;

    /// Returns the command for people; "<nil>" for nil.
    const char *shownCommand() const { return command_ ? command_ : "<nil>"; }
    std::size_t argumentCount() const { return arguments_.size(); }

private:
    std::string_view text(NSObject *value);
    void addArguments(NSString *command, NSArray *args);
    StartFailure addEnvironment(NSDictionary *env);

    const char *command_;
    std::vector<Ref<NSString>> texts_;   // whose bytes the arguments are
    std::vector<std::string> variables_; // "NAME=value", those that are added
    std::vector<char *> arguments_;      // with a null at the end
    bool isCutShort_ = false;            // by a NUL in one: the program would see a part
    std::vector<char *> environment_;    // with a null at the end; empty: the process's own
    StartFailure failure_;               // of the making
};

/// Logs for the category "alert", at level 0, what the format makes of the texts. What that throws is lost,
/// and no write raises a signal any more: it is the last that a process does before it ends with its status.
void logAlert(const char *format, const char *first = "", const char *second = "") noexcept;

/// Logs such a line and ends the process with 17, be it that the logging crashes or does not come to an end.
[[noreturn]] void endWithAlert(const char *format, const char *first = "", const char *second = "") noexcept;

} // namespace qb

#endif
